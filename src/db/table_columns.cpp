#include "db/table_columns.h"

#include <cstdio>
#include <cstdlib>

namespace sb {

namespace {

[[noreturn]] void unknownColumn(table_id table, std::string_view name, const char* why) {
    std::fprintf(stderr, "Soilbench: column [%.*s] %s table [%s]\n", static_cast<int>(name.size()), name.data(), why,
                 tableName(table));
    std::abort();
}

}  // namespace

table_columns::table_columns(table_id table, std::initializer_list<std::string_view> names) : table_(table) {
    const database_maker_table& def = tableDef(table);
    for (std::string_view name : names) {
        const int position = def.fieldIndex(name);
        if (position < 0) unknownColumn(table, name, "is not a column of");
        columns_.emplace_back(std::string(name), position);
    }
}

int table_columns::operator[](std::string_view name) const {
    for (const auto& [known, position] : columns_)
        if (known == name) return position;
    unknownColumn(table_, name, "was not looked up for");
}

void table_columns::read(const table_record& row, std::string_view name, std::string& value) const {
    value = row.text((*this)[name]);
}

void table_columns::read(const table_record& row, std::string_view name, float& value) const {
    value = row.single((*this)[name]);
}

void table_columns::write(table_record& row, std::string_view name, const std::string& value) const {
    row.setText((*this)[name], value);
}

}  // namespace sb
