#include "ui/output_table_model.h"

#include "modeloutput/tellura_output.h"

namespace sb {

output_table_model::output_table_model(table_id table, QObject* parent)
    : QAbstractTableModel(parent), table_(table), idColumn_(outputKeyColumns(table).id) {}

void output_table_model::setRows(std::vector<table_record> rows) {
    beginResetModel();
    rows_ = std::move(rows);
    endResetModel();
}

int output_table_model::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int output_table_model::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(tableDef(table_).fields().size()) - 1;
}

QVariant output_table_model::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    if (role == Qt::TextAlignmentRole) return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole) return {};
    const table_record& row = rows_[static_cast<size_t>(index.row())];
    const int column = tableColumn(index.column());
    if (row.isMissing(column)) return QString();  // the model did not give it: empty, not 0
    const double v = row.number(column);
    return outputKeyColumns(table_).holds(column) ? QString::number(static_cast<long long>(v))
                                                  : QString::number(v, 'g', 7);
}

QVariant output_table_model::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole) return {};
    if (orientation == Qt::Vertical) return section + 1;
    return QString::fromStdString(tableDef(table_).fields()[static_cast<size_t>(tableColumn(section))].name);
}

}  // namespace sb
