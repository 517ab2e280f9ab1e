#include "app/number_text.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace sb {

namespace {

template <class Real>
std::string toChars(Real value) {
    char text[64];  // the longest shortest double is 24 characters ("-2.2250738585072014e-308")
    const auto result = std::to_chars(text, text + sizeof text, value);
    return std::string(text, result.ptr);
}

// `format` ("%.*f" or "%.*g") at the first precision from `from` to `to` whose
// text reads back as `wanted`; the text at `to` when none does (a NaN never
// reads back as itself).
std::string firstReadingBack(const char* format, double value, int from, int to, float wanted) {
    char text[400];  // the widest fixed form of a double: 309 digits, a sign and 60 decimals
    for (int precision = from;; ++precision) {
        std::snprintf(text, sizeof text, format, precision, value);
        if (precision >= to || std::strtof(text, nullptr) == wanted) return text;
    }
}

}  // namespace

std::string shortestText(double value) { return toChars(value); }

std::string shortestSingleText(float value) { return toChars(value); }

std::string singleDigits(float value, int minDigits) {
    constexpr int kSingleDigits = 9;  // nine significant digits always read back as the same 32-bit real
    return firstReadingBack("%.*g", static_cast<double>(value), minDigits, kSingleDigits, value);
}

std::string exactDecimals(double value, int minDecimals) {
    if (!std::isfinite(value)) {
        char text[16];
        std::snprintf(text, sizeof text, "%.*f", minDecimals, value);
        return text;
    }
    // Fixed notation may need more decimals than nine significant digits for
    // small numbers; 60 reach below the smallest 32-bit real that is not zero.
    return firstReadingBack("%.*f", value, minDecimals, 60, static_cast<float>(value));
}

}  // namespace sb
