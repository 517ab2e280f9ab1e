#pragma once
// Numbers in the model's text outputs. The model writes Fortran fixed-width
// fields (".0000" without a leading zero, "1.0E+05", "NaN", "Infinity" or a
// field of asterisks on overflow). We parse in the C locale whatever the user's
// locale, and never store a value that is not a finite 32-bit float: a SINGLE
// column cannot hold it and a chart could not draw it.
#include <string>
#include <string_view>

#include "app/message_sink.h"

namespace sb {

enum class parse_result { ok, empty, not_a_number, not_finite };

// Leading and trailing blanks are ignored; the whole rest must be the number.
parse_result parseOutputFloat(std::string_view field, float& value);
parse_result parseOutputDouble(std::string_view field, double& value);
// The "%u" reading of the list file's integer columns.
parse_result parseOutputUnsigned(std::string_view field, unsigned& value);

// Collects the values a reader had to leave unset, so that a file full of
// overflowed fields gives a handful of lines rather than thousands.
class bad_value_log {
public:
    explicit bad_value_log(const char* fileKind, const char* unit = "line") : fileKind_(fileKind), unit_(unit) {}
    // "WARNING, <kind> <unit> %ld: value \"%s\" of \"%s\" is not a finite number; left unset.\n"
    void note(long where, std::string_view text, std::string_view name, message_sink& errors);
    // "WARNING, <kind>: %ld further values were not finite numbers and were left unset.\n"
    void finish(message_sink& errors) const;
    long count() const { return count_; }

    static constexpr long kShown = 5;

private:
    const char* fileKind_;
    const char* unit_;
    long count_ = 0;
};

// Cuts characters [first, last] (1-based, inclusive) from a line; when the range
// starts past the end the result is empty, when it runs past the end it is cut short.
std::string_view fieldRange(std::string_view line, size_t first, size_t last);

}  // namespace sb
