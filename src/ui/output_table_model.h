#pragma once
// Rows of one output table (annual, monthly or daily) of one record as a
// table: every column of the catalogue but the record's ID.
#include <QAbstractTableModel>
#include <vector>

#include "db/table_record.h"

namespace sb {

class output_table_model : public QAbstractTableModel {
    Q_OBJECT
public:
    explicit output_table_model(table_id table, QObject* parent = nullptr);

    void setRows(std::vector<table_record> rows);
    const std::vector<table_record>& rows() const { return rows_; }
    table_id table() const { return table_; }
    // Catalogue column behind a model column: every column in catalogue order, the ID left out.
    int tableColumn(int modelColumn) const { return modelColumn < idColumn_ ? modelColumn : modelColumn + 1; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    table_id table_;
    int idColumn_;
    std::vector<table_record> rows_;
};

}  // namespace sb
