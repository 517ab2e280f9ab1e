#include "app/text_format.h"

#include <cctype>
#include <cstdio>
#include <vector>

namespace sb {

std::string vstrprintf(const char* format, va_list args) {
    va_list copy;
    va_copy(copy, args);
    char small[256];
    int needed = std::vsnprintf(small, sizeof small, format, copy);
    va_end(copy);
    if (needed < 0) return {};
    if (static_cast<size_t>(needed) < sizeof small) return std::string(small, needed);
    std::vector<char> big(static_cast<size_t>(needed) + 1);
    std::vsnprintf(big.data(), big.size(), format, args);
    return std::string(big.data(), needed);
}

std::string strprintf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::string out = vstrprintf(format, args);
    va_end(args);
    return out;
}

void appendf(std::string& text, const char* format, ...) {
    va_list args;
    va_start(args, format);
    text += vstrprintf(format, args);
    va_end(args);
}

static unsigned char lowerChar(char c) {
    return static_cast<unsigned char>(std::tolower(static_cast<unsigned char>(c)));
}

bool iequals(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (lowerChar(a[i]) != lowerChar(b[i])) return false;
    return true;
}

bool istartsWith(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() && iequals(text.substr(0, prefix.size()), prefix);
}

std::string toLower(std::string_view text) {
    std::string out(text);
    for (char& c : out) c = static_cast<char>(lowerChar(c));
    return out;
}

std::string toUpper(std::string_view text) {
    std::string out(text);
    for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return out;
}

std::string_view trim(std::string_view text) {
    auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!text.empty() && blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && blank(text.back())) text.remove_suffix(1);
    return text;
}

std::string oneLine(std::string_view text) {
    std::string line(text);
    for (char& c : line)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
    return line;
}

}  // namespace sb
