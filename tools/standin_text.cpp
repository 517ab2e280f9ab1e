#include "standin_text.h"

#include <cctype>
#include <cstdlib>
#include <fstream>
#include <sys/stat.h>

namespace standin {

std::string lower(std::string_view text) {
    std::string out(text);
    for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

static bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view trimBlanks(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

std::vector<std::string> splitBlanks(std::string_view text) {
    std::vector<std::string> tokens;
    size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && isBlank(text[i])) ++i;
        size_t start = i;
        while (i < text.size() && !isBlank(text[i])) ++i;
        if (i > start) tokens.emplace_back(text.substr(start, i - start));
    }
    return tokens;
}

std::optional<double> parseNumber(std::string_view token) {
    std::string text(trimBlanks(token));
    if (text.empty()) return std::nullopt;
    char* end = nullptr;
    double value = std::strtod(text.c_str(), &end);
    if (end != text.c_str() + text.size()) return std::nullopt;
    return value;
}

std::optional<long> parseInteger(std::string_view token) {
    std::string text(trimBlanks(token));
    if (text.empty()) return std::nullopt;
    char* end = nullptr;
    long value = std::strtol(text.c_str(), &end, 10);
    if (end != text.c_str() + text.size()) return std::nullopt;
    return value;
}

bool readLines(const std::string& path, std::vector<std::string>& lines) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
    }
    return true;
}

bool fileExists(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

unsigned nameHash(std::string_view name) {
    unsigned hash = 2166136261u;  // FNV-1a
    for (char c : name) {
        hash ^= static_cast<unsigned char>(std::tolower(static_cast<unsigned char>(c)));
        hash *= 16777619u;
    }
    return hash;
}

}  // namespace standin
