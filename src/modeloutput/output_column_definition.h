#pragma once
// One output variable that the list utility is asked to extract, and the
// list-file column it was found in.
#include <cstdint>
#include <string>
#include <string_view>

#include "app/message_sink.h"

namespace sb {

class output_column_definition {
public:
    output_column_definition() = default;
    explicit output_column_definition(std::string variableName) : name(std::move(variableName)) {}

    std::string name;     // exactly as the model spells it, e.g. "som1c(1)"
    int32_t column = -1;  // -1 until matched; 0 is the first value column after the time

    bool matched() const { return column >= 0; }

    // Reads this column's value from a data row. Both return 0 and leave the
    // value unchanged when the column was not matched, the range lies past the
    // end of the row or the text is not a number; 1 when a value was stored.
    // With checkName the definition must be the variable the caller expects; on
    // a mismatch the error message is written and the error flag set.
    int extractUnsigned(std::string_view row, int versionIndex, bool checkName, std::string_view expectedName,
                        bool& error, unsigned& value, message_sink& errors) const;
    int extractFloat(std::string_view row, int versionIndex, bool checkName, std::string_view expectedName, bool& error,
                     float& value, message_sink& errors) const;

    // The row text of this column (at most 24 characters; empty when unmatched
    // or out of the row).
    std::string_view valueText(std::string_view row, int versionIndex) const;

private:
    bool nameMatches(bool checkName, std::string_view expectedName, bool& error, message_sink& errors) const;
};

}  // namespace sb
