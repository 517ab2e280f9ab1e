#pragma once
// The columns of one table that a reader or writer uses, found by name once.
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "db/table_catalogue.h"

namespace sb {

// Made once (a function-local static) with the names the code uses. Each name
// is checked against the catalogue then: a misspelt one stops the program at
// its first use, naming the table and the column, where it would otherwise
// read or write position -1 on every row. Afterwards `columns["Block Number"]`
// is that column's position; the name is matched exactly among the few given,
// not through the catalogue's case-folding lookup, so it costs little per row.
class table_columns {
public:
    table_columns(table_id table, std::initializer_list<std::string_view> names);
    int operator[](std::string_view name) const;

private:
    table_id table_;
    std::vector<std::pair<std::string, int>> columns_;  // name as the code writes it, position
};

}  // namespace sb
