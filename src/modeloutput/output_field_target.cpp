#include "modeloutput/output_field_target.h"

#include <charconv>
#include <cmath>

#include "app/text_format.h"

namespace sb {

namespace {
// "name(k)" with k from 1 to 12 -> k and the root; 0 otherwise.
int monthSubscript(std::string_view name, std::string_view& root) {
    size_t open = name.find('(');
    if (open == std::string_view::npos || name.back() != ')') return 0;
    std::string_view digits = name.substr(open + 1, name.size() - open - 2);
    int k = 0;
    auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), k);
    if (ec != std::errc() || end != digits.data() + digits.size() || k < 1 || k > 12) return 0;
    root = name.substr(0, open);
    return k;
}
}  // namespace

output_field_target resolveOutputField(const database_maker_table& table, std::string_view name, bool monthly) {
    output_field_target target;
    std::string_view trimmed = trim(name);
    int column = table.fieldIndex(trimmed);
    if (column >= 0 && !table.isText(column)) {
        target.column = column;
        target.expectedName = table.fields()[static_cast<size_t>(column)].name;
        return target;
    }
    if (!monthly) return target;
    std::string_view root;
    int month = monthSubscript(trimmed, root);
    // Only the model's month arrays (agcmth, bgcjmth, fcmth, ...) are indexed by
    // month; tminrl(1) and the like are indexed by element and stay unplaced.
    if (month == 0 || root.size() < 3 || !iequals(root.substr(root.size() - 3), "mth")) return target;
    column = table.fieldIndex(root);
    if (column < 0 || table.isText(column)) return target;
    target.column = column;
    target.month = month;
    target.expectedName = strprintf("%s(%d)", table.fields()[static_cast<size_t>(column)].name.c_str(), month);
    return target;
}

void storeOutputValue(table_record& record, int column, float value) {
    int type = record.def().fields()[static_cast<size_t>(column)].type;
    if (type == kTypeSingle || type == kTypeDouble) record.setNumber(column, static_cast<double>(value));
    else record.setNumber(column, std::nearbyint(static_cast<double>(value)));
}

}  // namespace sb
