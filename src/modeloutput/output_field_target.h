#pragma once
// Where a model variable lands in an output record. Variables are placed by
// name: the record's column of the same name (case ignored). A monthly record
// also takes a month array element such as "bgcjmth(3)" into its plain column
// "bgcjmth" when the subscript is the record's own month: the model keeps its
// "...mth" values as twelve-element arrays, one element per month.
#include <string>
#include <string_view>

#include "db/table_record.h"

namespace sb {

struct output_field_target {
    int column = -1;           // -1: the variable is not a column of this record kind
    int month = 0;             // 1..12 for a month-subscripted variable, else 0
    std::string expectedName;  // the column's name as the variable must be spelt

    bool placed() const { return column >= 0; }
    // True when the value belongs in a record of this month.
    bool takesMonth(int recordMonth) const { return month == 0 || month == recordMonth; }
};

output_field_target resolveOutputField(const database_maker_table& table, std::string_view name, bool monthly);

// Writes a model value into a record column: integer columns (crpval) take the
// nearest whole number, value columns keep 32-bit float precision.
void storeOutputValue(table_record& record, int column, float value);

}  // namespace sb
