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
    size_t from = 0;
    return position(name, from);
}

int table_columns::position(std::string_view name, size_t& next) const {
    const size_t count = columns_.size();
    for (size_t k = 0, i = next; k < count; ++k, ++i) {
        if (i >= count) i = 0;
        if (columns_[i].first == name) {
            next = i + 1;
            return columns_[i].second;
        }
    }
    unknownColumn(table_, name, "was not looked up for");
}

}  // namespace sb
