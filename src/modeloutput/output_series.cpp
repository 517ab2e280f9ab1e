#include "modeloutput/output_series.h"

#include "app/text_format.h"

namespace sb {
namespace {

struct table_word {
    const char* word;
    table_id table;
};

constexpr table_word kTableWords[] = {
    {"annual", table_id::output_annual}, {"monthly", table_id::output_monthly},
    {"daily", table_id::output_daily},   {"layers", table_id::output_soil_layers},
    {"end", table_id::output},
};

template <class Record>
void appendAll(const std::vector<Record>& records, std::vector<const table_record*>& rows) {
    rows.reserve(records.size());
    for (const auto& r : records) rows.push_back(&r);
}

}  // namespace

bool outputTableFromWord(std::string_view word, table_id& table) {
    for (const table_word& t : kTableWords)
        if (word == t.word) {
            table = t.table;
            return true;
        }
    return false;
}

const char* outputTableWord(table_id table) {
    for (const table_word& t : kTableWords)
        if (t.table == table) return t.word;
    return "";
}

std::vector<const table_record*> outputRows(const tellura_outputs& outputs, table_id table) {
    std::vector<const table_record*> rows;
    switch (table) {
        case table_id::output_annual:
            appendAll(outputs.annual, rows);
            break;
        case table_id::output_monthly:
            for (const monthly_output* m : outputs.monthlyInOrder()) rows.push_back(m);
            break;
        case table_id::output_daily:
            appendAll(outputs.daily, rows);
            break;
        case table_id::output_soil_layers:
            appendAll(outputs.soilLayers, rows);
            break;
        default:
            if (outputs.hasEndOfRun) rows.push_back(&outputs.endOfRun);
            break;
    }
    return rows;
}

double outputTime(const table_record& row, table_id table) {
    const output_key_columns& keys = outputKeyColumns(table);
    const double year = keys.first >= 0 ? row.number(keys.first) : 0.0;  // the end of the run has no time
    switch (table) {
        case table_id::output_monthly:
            return year + (row.number(keys.second) - 0.5) / 12.0;
        case table_id::output_daily:
            return year + (row.number(keys.second) - 0.5) / 365.0;
        default:
            return year;
    }
}

bool outputSeries(const tellura_outputs& outputs, table_id table, const std::vector<std::string>& names,
                  std::vector<output_series>& series, message_sink& errors) {
    const database_maker_table& def = tableDef(table);
    const std::vector<const table_record*> rows = outputRows(outputs, table);
    bool ok = true;
    for (const std::string& name : names) {
        const int column = def.fieldIndex(name);
        if (column < 0 || outputKeyColumns(table).holds(column)) {
            errors.errorf("ERROR, \"%s\" is not a variable of the %s output.\n", name.c_str(), outputTableWord(table));
            ok = false;
            continue;
        }
        output_series s{def.fields()[static_cast<size_t>(column)].name, {}};
        s.points.reserve(rows.size());
        for (const table_record* row : rows)
            if (!row->isMissing(column))  // no point where the model gave no value
                s.points.emplace_back(outputTime(*row, table), row->number(column));
        series.push_back(std::move(s));
    }
    return ok;
}

}  // namespace sb
