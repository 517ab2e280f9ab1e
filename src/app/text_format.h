#pragma once
// printf-style text building. The model's files and the user's messages are
// laid out as printf formats, so we keep printf semantics (C locale) instead
// of re-expressing every format with streams.
#include <cstdarg>
#include <string>
#include <string_view>

namespace sb {

std::string strprintf(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string vstrprintf(const char* format, va_list args);

// Appends formatted text to a growing error or log text.
void appendf(std::string& text, const char* format, ...) __attribute__((format(printf, 2, 3)));

// Names of records and parameters are compared without regard to case.
bool iequals(std::string_view a, std::string_view b);
bool istartsWith(std::string_view text, std::string_view prefix);
std::string toLower(std::string_view text);
std::string toUpper(std::string_view text);

// Blanks (space, tab, CR, LF) removed from both ends.
std::string_view trim(std::string_view text);

// The text as it may stand on one line of a model file: every control character
// (line breaks, tabs, NUL, DEL, ...) becomes a blank, so that a name or a
// description can never break the lines the model reads by position.
std::string oneLine(std::string_view text);

}  // namespace sb
