#include "app/text_file.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace sb::text_file {

bool writeTextFile(const std::string& path, std::string_view text) {
    // A new file is much cheaper to write than an old one truncated in place,
    // and run directories are rewritten before every run.
    std::error_code ec;
    if (std::filesystem::is_regular_file(std::filesystem::symlink_status(path, ec))) std::filesystem::remove(path, ec);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) return false;
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.close();
    return !file.fail();
}

bool readTextFile(const std::string& path, std::string& text) {
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec)) return false;
    std::ifstream file(path, std::ios::binary);
    if (!file) return false;
    std::ostringstream buffer;
    buffer << file.rdbuf();
    text = buffer.str();
    return !file.bad();
}

std::vector<std::string> splitLines(std::string_view text) {
    std::vector<std::string> lines;
    forEachLine(text, [&](std::string_view line) { lines.emplace_back(line); });
    return lines;
}

std::vector<std::string_view> splitTokenViews(std::string_view text) {
    std::vector<std::string_view> tokens;
    size_t i = 0;
    auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (i < text.size()) {
        while (i < text.size() && blank(text[i])) ++i;
        size_t start = i;
        while (i < text.size() && !blank(text[i])) ++i;
        if (i > start) tokens.push_back(text.substr(start, i - start));
    }
    return tokens;
}

std::vector<std::string> splitTokens(std::string_view text) {
    std::vector<std::string> tokens;
    for (std::string_view token : splitTokenViews(text)) tokens.emplace_back(token);
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

}  // namespace sb::text_file
