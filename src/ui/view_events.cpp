#include "ui/view_events.h"

#include <QPainter>
#include <QPrinter>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "records/tellura_control_record.h"
#include "ui/doc_soilbench.h"

namespace sb {
namespace {
const char* const kWeatherChoices = " MSFC";  // by weather choice code 1..4
}

view_events::view_events(doc_soilbench& doc, QWidget* parent) : QWidget(parent), doc_(doc) {
    setObjectName(QStringLiteral("view_events"));
    tree_ = new QTreeWidget(this);
    tree_->setHeaderLabels({QStringLiteral("Block / Event"), QStringLiteral("Years / Date"), QStringLiteral("Item"),
                            QStringLiteral("Parameters"), QStringLiteral("Weather")});
    tree_->setColumnWidth(0, 220);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(tree_);
    auto* edit = new QPushButton(QStringLiteral("Edit Event Blocks..."), this);
    connect(edit, &QPushButton::clicked, this, &view_events::editRequested);
    layout->addWidget(edit, 0, Qt::AlignLeft);
    connect(&doc_, &doc_soilbench::currentChanged, this, &view_events::reload);
    connect(&doc_, &doc_soilbench::refreshed, this, &view_events::reload);
    reload();
}

void view_events::reload() {
    tree_->clear();
    setWindowTitle(QStringLiteral("Events - ID %1").arg(doc_.currentId()));
    if (doc_.currentRow() < 0) return;
    tellura_control_record record;
    message_sink errors;
    if (!loadControlRecord(doc_.db(), doc_.currentId(), record, errors)) return;
    for (const tellura_event_block& block : record.blocks) {
        auto* b = new QTreeWidgetItem(tree_);
        b->setText(0, QStringLiteral("%1: %2").arg(block.blockNumber).arg(QString::fromStdString(block.description)));
        b->setText(
            1,
            QStringLiteral("%1 - %2, repeating %3").arg(block.firstYear).arg(block.lastYear).arg(block.repeatingYears));
        const int choice = block.weatherChoice >= 1 && block.weatherChoice <= 4 ? block.weatherChoice : 0;
        b->setText(4, QStringLiteral("%1 %2").arg(QChar(kWeatherChoices[choice])).arg(block.weatherId));
        for (const tellura_event& e : block.events) {
            auto* item = new QTreeWidgetItem(b);
            item->setText(0, QString::fromLatin1(eventTypeName(e.type)));
            item->setText(1, QStringLiteral("year %1, %2/%3").arg(e.year).arg(e.month).arg(e.day));
            item->setText(2, QString::fromStdString(e.item));
            item->setText(3, QStringLiteral("%1  %2").arg(e.parameter1).arg(e.parameter2));
        }
        b->setExpanded(true);
    }
}

void view_events::print(QPrinter& printer) {
    QPainter painter(&printer);
    tree_->render(&painter);
}

}  // namespace sb
