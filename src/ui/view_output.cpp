#include "ui/view_output.h"

#include <QChart>
#include <QChartView>
#include <QFile>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineSeries>
#include <QListWidget>
#include <QPainter>
#include <QPrinter>
#include <QPushButton>
#include <QSplitter>
#include <QTableView>
#include <QVBoxLayout>
#include <QValueAxis>

#include "modeloutput/output_series.h"
#include "modeloutput/output_table_text.h"
#include "modeloutput/record_outputs.h"
#include "modeloutput/tellura_output.h"
#include "records/tellura_control_record.h"
#include "ui/dialog_errors.h"
#include "ui/doc_soilbench.h"
#include "ui/output_table_model.h"

namespace sb {
namespace {

// What a new chart shows before the user picks: total soil carbon and live
// above-ground carbon for annual and monthly rows, the trace gases for daily
// ones. When those hold nothing but zeros (the daily-step release's annual
// rows carry only its year summary), the first two variables that hold data.
QStringList defaultVariables(table_id table, const output_table_model& model) {
    const QStringList preferred = table == table_id::output_daily
                                      ? QStringList{QStringLiteral("CO2resp"), QStringLiteral("N2Oflux")}
                                      : QStringList{QStringLiteral("somtc"), QStringLiteral("aglivc")};
    const auto& fields = tableDef(table).fields();
    auto holdsData = [&](int column) {
        if (column < 0) return false;
        for (const table_record& row : model.rows())
            if (!row.isMissing(column) && row.number(column) != 0.0) return true;
        return false;
    };
    for (const QString& name : preferred)
        if (holdsData(tableDef(table).fieldIndex(name.toStdString()))) return preferred;
    QStringList withData;
    const output_key_columns& keys = outputKeyColumns(table);
    for (size_t c = 0; c < fields.size() && withData.size() < 2; ++c)
        if (!keys.holds(static_cast<int>(c)) && holdsData(static_cast<int>(c)))
            withData << QString::fromStdString(fields[c].name);
    return withData.isEmpty() ? preferred : withData;
}

}  // namespace

view_output::view_output(doc_soilbench& doc, table_id table, QWidget* parent)
    : QWidget(parent), doc_(doc), table_(table) {
    setObjectName(QStringLiteral("view_output"));
    setWindowTitle(titleFor(table));
    model_ = new output_table_model(table, this);

    variables_ = new QListWidget(this);
    variables_->setObjectName(QStringLiteral("variables"));
    const auto& fields = tableDef(table).fields();
    for (size_t c = 0; c < fields.size(); ++c) {
        if (outputKeyColumns(table).holds(static_cast<int>(c))) continue;  // the variables only
        auto* item = new QListWidgetItem(QString::fromStdString(fields[c].name), variables_);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Unchecked);
    }

    auto* chart = new QChart();
    chart->legend()->setVisible(true);
    chart->legend()->setAlignment(Qt::AlignBottom);
    chartView_ = new QChartView(chart, this);
    chartView_->setRenderHint(QPainter::Antialiasing);
    chartView_->setRubberBand(QChartView::RectangleRubberBand);
    chartView_->setMinimumHeight(240);

    tableView_ = new QTableView(this);
    tableView_->setModel(model_);
    tableView_->verticalHeader()->setDefaultSectionSize(20);

    auto* exportChartButton = new QPushButton(QStringLiteral("Export Chart..."), this);
    auto* exportTableButton = new QPushButton(QStringLiteral("Export Table..."), this);
    auto* resetZoom = new QPushButton(QStringLiteral("Reset Zoom"), this);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(resetZoom);
    buttons->addStretch();
    buttons->addWidget(exportChartButton);
    buttons->addWidget(exportTableButton);

    auto* right = new QSplitter(Qt::Vertical, this);
    right->addWidget(chartView_);
    right->addWidget(tableView_);
    right->setStretchFactor(0, 3);
    right->setStretchFactor(1, 2);
    auto* split = new QSplitter(Qt::Horizontal, this);
    split->addWidget(variables_);
    split->addWidget(right);
    split->setStretchFactor(1, 4);
    split->setSizes({140, 600});

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(split);
    layout->addLayout(buttons);

    connect(variables_, &QListWidget::itemChanged, this, [this] {
        userChose_ = true;
        rebuildChart();
    });
    connect(resetZoom, &QPushButton::clicked, this, [this] { chartView_->chart()->zoomReset(); });
    connect(exportChartButton, &QPushButton::clicked, this, &view_output::exportChartAsk);
    connect(exportTableButton, &QPushButton::clicked, this, &view_output::exportTableAsk);
    connect(&doc_, &doc_soilbench::currentChanged, this, &view_output::reload);
    connect(&doc_, &doc_soilbench::refreshed, this, &view_output::reload);
    reload();
}

QString view_output::titleFor(table_id table) {
    switch (table) {
        case table_id::output_monthly:
            return QStringLiteral("Monthly Output");
        case table_id::output_daily:
            return QStringLiteral("Daily Output");
        default:
            return QStringLiteral("Annual Output");
    }
}

QStringList view_output::chosenVariables() const {
    QStringList names;
    for (int i = 0; i < variables_->count(); ++i)
        if (variables_->item(i)->checkState() == Qt::Checked) names << variables_->item(i)->text();
    return names;
}

void view_output::chooseVariables(const QStringList& names) {
    userChose_ = true;
    checkVariables(names);
    rebuildChart();
}

void view_output::checkVariables(const QStringList& names) {
    QSignalBlocker block(variables_);
    for (int i = 0; i < variables_->count(); ++i) {
        auto* item = variables_->item(i);
        item->setCheckState(names.contains(item->text(), Qt::CaseInsensitive) ? Qt::Checked : Qt::Unchecked);
    }
}

int view_output::seriesCount() const { return static_cast<int>(chartView_->chart()->series().size()); }

void view_output::reload() {
    outputs_.clear();
    message_sink errors;
    if (doc_.currentRow() >= 0) {
        tellura_control_record record;
        // Outputs that could not all be read are not shown in part.
        if (!loadControlRecordWithOutputs(doc_.db(), doc_.currentId(), record, outputs_, errors)) outputs_.clear();
    }
    std::vector<table_record> rows;
    for (const table_record* row : outputRows(outputs_, table_)) rows.push_back(*row);
    model_->setRows(std::move(rows));
    setWindowTitle(QStringLiteral("%1 - ID %2").arg(titleFor(table_)).arg(doc_.currentId()));
    // Until the user picks, each record's chart shows variables that hold its data.
    if (!userChose_) {
        checkVariables(defaultVariables(table_, *model_));
        for (int i = 0; i < variables_->count(); ++i)
            if (variables_->item(i)->checkState() == Qt::Checked) {
                variables_->scrollToItem(variables_->item(i), QAbstractItemView::PositionAtTop);
                break;
            }
    }
    rebuildChart();
}

void view_output::rebuildChart() {
    QChart* chart = chartView_->chart();
    chart->removeAllSeries();
    for (auto* axis : chart->axes()) {
        chart->removeAxis(axis);
        delete axis;  // the chart gives up ownership; a kept axis would still be drawn by a pending layout
    }
    chart->setTitle(QStringLiteral("%1, record ID %2").arg(titleFor(table_)).arg(doc_.currentId()));

    auto* xAxis = new QValueAxis;
    xAxis->setTitleText(QStringLiteral("Year"));
    xAxis->setLabelFormat(QStringLiteral("%.0f"));
    auto* yAxis = new QValueAxis;
    chart->addAxis(xAxis, Qt::AlignBottom);
    chart->addAxis(yAxis, Qt::AlignLeft);
    double minX = 0, maxX = 1, minY = 0, maxY = 1;
    bool any = false;
    std::vector<std::string> names;
    for (const QString& name : chosenVariables()) names.push_back(name.toStdString());
    std::vector<output_series> series;
    message_sink unknown;  // the names offered are the table's own variables
    outputSeries(outputs_, table_, names, series, unknown);
    for (const output_series& s : series) {
        auto* line = new QLineSeries;
        line->setName(QString::fromStdString(s.name));
        for (const auto& [x, y] : s.points) {
            line->append(x, y);
            if (!any) {
                minX = maxX = x;
                minY = maxY = y;
                any = true;
            }
            minX = std::min(minX, x);
            maxX = std::max(maxX, x);
            minY = std::min(minY, y);
            maxY = std::max(maxY, y);
        }
        chart->addSeries(line);
        line->attachAxis(xAxis);
        line->attachAxis(yAxis);
    }
    // An empty chart shows its frame and legend but no made-up scale.
    xAxis->setLabelsVisible(any);
    yAxis->setLabelsVisible(any);
    if (maxX == minX) maxX = minX + 1;
    if (maxY == minY) maxY = minY + 1;
    xAxis->setRange(minX, maxX);
    yAxis->setRange(minY, maxY);
    yAxis->applyNiceNumbers();
}

bool view_output::exportChart(const QString& path) { return chartView_->grab().save(path, "PNG"); }

bool view_output::exportTable(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
    const std::string csv = outputCsv(outputs_, table_);
    return file.write(csv.data(), static_cast<qint64>(csv.size())) == static_cast<qint64>(csv.size()) && file.flush();
}

void view_output::exportChartAsk() {
    const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Export Chart"), QStringLiteral("chart.png"),
                                                      QStringLiteral("PNG Image (*.png)"));
    if (!path.isEmpty() && !exportChart(path))
        showErrorsIfAny(this, "ERROR, unable to write \"" + path.toStdString() + "\".\n");
}

void view_output::exportTableAsk() {
    const QString path =
        QFileDialog::getSaveFileName(this, QStringLiteral("Export Table"), QStringLiteral("output.csv"),
                                     QStringLiteral("Comma Separated Values (*.csv)"));
    if (!path.isEmpty() && !exportTable(path))
        showErrorsIfAny(this, "ERROR, unable to write \"" + path.toStdString() + "\".\n");
}

void view_output::print(QPrinter& printer) {
    QPainter painter(&printer);
    chartView_->render(&painter);
}

}  // namespace sb
