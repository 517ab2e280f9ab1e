#include "modeloutput/output_column_definition.h"

#include "app/text_format.h"
#include "modeloutput/list_file_layout.h"
#include "modeloutput/output_value_parse.h"

namespace sb {

namespace {
constexpr size_t kMaxValueText = 24;
}

std::string_view output_column_definition::valueText(std::string_view row, int versionIndex) const {
    if (column < 0) return {};
    list_file_layout layout = list_file_layout::forVersion(versionIndex);
    size_t first = layout.valueFirst(column);
    size_t last = first + layout.pitch - 1;
    if (last > row.size()) {
        // The last column of a row may lack its trailing blanks; its number is
        // still whole when the row ends inside the column's blank tail.
        if (first > row.size()) return {};
        last = row.size();
    }
    std::string_view text = fieldRange(row, first, last);
    return text.substr(0, kMaxValueText);
}

bool output_column_definition::nameMatches(bool checkName, std::string_view expectedName, bool& error,
                                           message_sink& errors) const {
    if (!checkName || iequals(name, expectedName)) return true;
    errors.errorf(
        "ERROR, column output_column_definition.extract_tellura_lis requested column \"%s\" "
        "doesn't match \"%s\".\n",
        name.c_str(), std::string(expectedName).c_str());
    error = true;
    return false;
}

int output_column_definition::extractUnsigned(std::string_view row, int versionIndex, bool checkName,
                                              std::string_view expectedName, bool& error, unsigned& value,
                                              message_sink& errors) const {
    if (column < 0) return 0;
    if (!nameMatches(checkName, expectedName, error, errors)) return 0;
    return parseOutputUnsigned(valueText(row, versionIndex), value) == parse_result::ok ? 1 : 0;
}

int output_column_definition::extractFloat(std::string_view row, int versionIndex, bool checkName,
                                           std::string_view expectedName, bool& error, float& value,
                                           message_sink& errors) const {
    if (column < 0) return 0;
    if (!nameMatches(checkName, expectedName, error, errors)) return 0;
    return parseOutputFloat(valueText(row, versionIndex), value) == parse_result::ok ? 1 : 0;
}

}  // namespace sb
