#include "ui/view_control_records.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QPrinter>
#include <QTableView>
#include <QTextDocument>
#include <QVBoxLayout>

#include "ui/control_record_table_model.h"
#include "ui/doc_soilbench.h"

namespace sb {

view_control_records::view_control_records(doc_soilbench& doc, QWidget* parent) : QWidget(parent), doc_(doc) {
    setObjectName(QStringLiteral("view_control_records"));
    setWindowTitle(QStringLiteral("%1 - %2").arg(QString::fromLatin1(doc_soilbench::kDocumentName), doc.title()));
    table_ = new QTableView(this);
    table_->setModel(&doc.records());
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    table_->verticalHeader()->setDefaultSectionSize(20);
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->setColumnWidth(1, 260);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(table_);

    connect(&doc_, &doc_soilbench::currentChanged, this, &view_control_records::showCurrent);
    connect(table_->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this](const QModelIndex& index) {
        if (!index.isValid() || index.row() == doc_.currentRow()) return;
        message_sink ignored;  // a row on screen has been read already
        doc_.moveToNumber(index.row() + 1, ignored);
    });
    connect(table_, &QTableView::doubleClicked, this, &view_control_records::editRequested);
    showCurrent(doc_.currentRow());
}

void view_control_records::showCurrent(int row) {
    if (row < 0) return;
    const QModelIndex index = doc_.records().index(row, 0);
    if (table_->currentIndex().row() != row) table_->setCurrentIndex(index);
    table_->scrollTo(index);
}

QString view_control_records::printHtml() const {
    auto& model = doc_.records();
    QString html = QStringLiteral("<h3>Control Records</h3><p>%1</p><table border=1 cellspacing=0 cellpadding=2><tr>")
                       .arg(doc_.shownPath().toHtmlEscaped());
    for (int c = 0; c < model.columnCount(); ++c)
        html += QStringLiteral("<th>%1</th>").arg(model.headerData(c, Qt::Horizontal, Qt::DisplayRole).toString());
    html += QStringLiteral("</tr>");
    for (int r = 0; r < model.rowCount(); ++r) {
        html += QStringLiteral("<tr>");
        for (int c = 0; c < model.columnCount(); ++c)
            html += QStringLiteral("<td>%1</td>").arg(model.data(model.index(r, c)).toString().toHtmlEscaped());
        html += QStringLiteral("</tr>");
    }
    return html + QStringLiteral("</table>");
}

void view_control_records::print(QPrinter& printer) {
    QTextDocument document;
    document.setHtml(printHtml());
    document.print(&printer);
}

}  // namespace sb
