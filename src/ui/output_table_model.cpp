#include "ui/output_table_model.h"

#include <QStringList>

namespace sb {

output_table_model::output_table_model(table_id table, QObject* parent) : QAbstractTableModel(parent), table_(table) {}

void output_table_model::setRows(std::vector<table_record> rows) {
    beginResetModel();
    rows_ = std::move(rows);
    endResetModel();
}

int output_table_model::keyColumnCount() const { return table_ == table_id::output_annual ? 1 : 2; }

double output_table_model::timeOf(int row) const {
    const table_record& r = rows_[static_cast<size_t>(row)];
    const double year = r.number(1);
    switch (table_) {
        case table_id::output_monthly:
            return year + (r.number(2) - 0.5) / 12.0;
        case table_id::output_daily:
            return year + (r.number(2) - 0.5) / 365.0;
        default:
            return year;
    }
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
    const double v = rows_[static_cast<size_t>(index.row())].number(tableColumn(index.column()));
    return index.column() < keyColumnCount() ? QString::number(static_cast<long long>(v)) : QString::number(v, 'g', 7);
}

QVariant output_table_model::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole) return {};
    if (orientation == Qt::Vertical) return section + 1;
    return QString::fromStdString(tableDef(table_).fields()[static_cast<size_t>(tableColumn(section))].name);
}

QString output_table_model::toCsv() const {
    auto quoted = [](QString s) {
        if (s.contains(',') || s.contains('"')) s = '"' + s.replace('"', QStringLiteral("\"\"")) + '"';
        return s;
    };
    QString out;
    QStringList line;
    for (int c = 0; c < columnCount(); ++c) line << quoted(headerData(c, Qt::Horizontal, Qt::DisplayRole).toString());
    out += line.join(',') + '\n';
    for (int r = 0; r < rowCount(); ++r) {
        line.clear();
        for (int c = 0; c < columnCount(); ++c) line << data(index(r, c)).toString();
        out += line.join(',') + '\n';
    }
    return out;
}

}  // namespace sb
