#pragma once
// The columns of one table that a reader or writer uses, found by name once.
#include <concepts>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "db/table_catalogue.h"
#include "db/table_record.h"

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

    // A member read from or written to the named column in the member's own
    // type: text, a 32-bit real or a whole number.
    void read(const table_record& row, std::string_view name, std::string& value) const;
    void read(const table_record& row, std::string_view name, float& value) const;
    template <std::integral Integer>
    void read(const table_record& row, std::string_view name, Integer& value) const {
        value = static_cast<Integer>(row.integer((*this)[name]));
    }
    void write(table_record& row, std::string_view name, const std::string& value) const;
    template <class Number>
    requires std::is_arithmetic_v<Number>
    void write(table_record& row, std::string_view name, Number value) const { row.setNumber((*this)[name], value); }

    // For a type's one list of (column, member) pairs, walked by a function
    // that calls visit(name, member) for each: reading(row) fills the members,
    // writing(row) the columns, so a reader and its writer cannot disagree.
    auto reading(const table_record& row) const {
        return [this, &row](std::string_view name, auto& member) { read(row, name, member); };
    }
    auto writing(table_record& row) const {
        return [this, &row](std::string_view name, const auto& member) { write(row, name, member); };
    }

private:
    table_id table_;
    std::vector<std::pair<std::string, int>> columns_;  // name as the code writes it, position
};

}  // namespace sb
