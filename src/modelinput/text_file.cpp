#include "modelinput/text_file.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace sb::input_text {

bool writeTextFile(const std::string& path, std::string_view text) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) return false;
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.close();
    return !file.fail();
}

bool readTextFile(const std::string& path, std::string& text) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return false;
    std::ostringstream buffer;
    buffer << file.rdbuf();
    text = buffer.str();
    return true;
}

std::vector<std::string> splitLines(std::string_view text) {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        lines.emplace_back(line);
        start = end + 1;
    }
    return lines;
}

std::vector<std::string> splitTokens(std::string_view text) {
    std::vector<std::string> tokens;
    size_t i = 0;
    auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (i < text.size()) {
        while (i < text.size() && blank(text[i])) ++i;
        size_t start = i;
        while (i < text.size() && !blank(text[i])) ++i;
        if (i > start) tokens.emplace_back(text.substr(start, i - start));
    }
    return tokens;
}

double toReal(std::string_view text) {
    std::string copy(text);
    return std::strtod(copy.c_str(), nullptr);
}

long toInteger(std::string_view text) {
    std::string copy(text);
    return std::strtol(copy.c_str(), nullptr, 10);
}

}  // namespace sb::input_text
