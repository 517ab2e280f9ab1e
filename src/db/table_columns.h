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

    // A member read from or written to a column in the member's own type:
    // text, a 32-bit real or a whole number.
    static void read(const table_record& row, int column, std::string& value) { value = row.text(column); }
    static void read(const table_record& row, int column, float& value) { value = row.single(column); }
    template <std::integral Integer>
    static void read(const table_record& row, int column, Integer& value) {
        value = static_cast<Integer>(row.integer(column));
    }
    static void write(table_record& row, int column, const std::string& value) { row.setText(column, value); }
    template <class Number>
    requires std::is_arithmetic_v<Number>
    static void write(table_record& row, int column, Number value) { row.setNumber(column, value); }

    // For a type's one list of (column, member) pairs, walked by a function
    // that calls visit(name, member) for each: reading(row) fills the members,
    // writing(row) the columns, so a reader and its writer cannot disagree.
    // Each visitor looks for the next name after the one it found last, so a
    // list walked in the order the names were given costs one comparison a
    // column.
    auto reading(const table_record& row) const {
        return [this, &row, next = size_t{0}](std::string_view name, auto& member) mutable {
            read(row, position(name, next), member);
        };
    }
    auto writing(table_record& row) const {
        return [this, &row, next = size_t{0}](std::string_view name, const auto& member) mutable {
            write(row, position(name, next), member);
        };
    }

private:
    // The position of `name`, looked for from `next` on; `next` is left after it.
    int position(std::string_view name, size_t& next) const;

    table_id table_;
    std::vector<std::pair<std::string, int>> columns_;  // name as the code writes it, position
};

}  // namespace sb
