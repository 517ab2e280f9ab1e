#pragma once
// The stored outputs of the current record, one view per kind (annual,
// monthly, daily): the table of rows, and a chart of the chosen variables
// over time with a legend, rubber-band zoom and export to PNG and CSV.
#include <QWidget>
#include <string>

#include "db/table_catalogue.h"
#include "modeloutput/tellura_output.h"
#include "ui/printable_view.h"

class QChart;
class QChartView;
class QListWidget;
class QTableView;

namespace sb {

class doc_soilbench;
class output_table_model;

class view_output : public QWidget, public printable_view {
    Q_OBJECT
public:
    // `table` is output_annual, output_monthly or output_daily.
    view_output(doc_soilbench& doc, table_id table, QWidget* parent = nullptr);

    static QString titleFor(table_id table);
    output_table_model& model() { return *model_; }
    QChartView* chartView() const { return chartView_; }
    QStringList chosenVariables() const;
    // The user's choice: kept from record to record.
    void chooseVariables(const QStringList& names);
    int seriesCount() const;

    bool exportChart(const QString& path);
    bool exportTable(const QString& path);
    void print(QPrinter& printer) override;

public slots:
    // Reads the current record's outputs again.
    void reload();
    void rebuildChart();

private:
    void checkVariables(const QStringList& names);
    void exportChartAsk();
    void exportTableAsk();

    doc_soilbench& doc_;
    table_id table_;
    tellura_outputs outputs_;  // the current record's, as shown and exported
    output_table_model* model_;
    QListWidget* variables_;
    QChartView* chartView_ = nullptr;
    QTableView* tableView_;
    bool userChose_ = false;
};

}  // namespace sb
