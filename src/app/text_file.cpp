#include "app/text_file.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <unistd.h>

#include "app/text_format.h"

namespace sb::text_file {

namespace {

struct file_closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using file_handle = std::unique_ptr<std::FILE, file_closer>;

// Checks the lines from `lineStart` on, moving it past each whole line; the
// number (from 1) of a line longer than the limit, or 0. An unfinished last
// line counts as too long only once it cannot end within the limit, unless
// `atEnd` says no more text follows.
long overlongLine(std::string_view text, size_t& lineStart, long& lineNumber, bool atEnd) {
    while (true) {
        size_t end = text.find('\n', lineStart);
        size_t stop = end == std::string_view::npos ? text.size() : end;
        size_t length = stop - lineStart;
        if (length > 0 && text[stop - 1] == '\r' && (end != std::string_view::npos || atEnd)) --length;
        size_t allowed = end == std::string_view::npos && !atEnd ? kMaxLineLength + 1 : kMaxLineLength;
        if (length > allowed) return lineNumber;
        if (end == std::string_view::npos) return 0;
        ++lineNumber;
        lineStart = end + 1;
    }
}

void appendLineTooLong(long line, const std::string& path, message_sink& errors) {
    errors.errorf("ERROR, line %ld of \"%s\" is longer than %zu characters.\n", line, path.c_str(), kMaxLineLength);
}

}  // namespace

namespace {

bool writeInPlace(const std::string& path, std::string_view text, bool* created) {
    file_handle file(std::fopen(path.c_str(), "wb"));
    if (created) *created = file != nullptr;
    if (!file) return false;
    bool written = std::fwrite(text.data(), 1, text.size(), file.get()) == text.size();
    return std::fclose(file.release()) == 0 && written;
}

}  // namespace

bool writeTextFile(const std::string& path, std::string_view text, bool* created) {
    namespace fs = std::filesystem;
    std::error_code ec;
    const fs::file_status status = fs::symlink_status(path, ec);
    // A device or a pipe named by the user is written to as it is, never replaced.
    if (fs::exists(status) && !fs::is_regular_file(status) && !fs::is_symlink(status))
        return writeInPlace(path, text, created);
    // A new file beside the old one, renamed over it: the rename replaces the
    // name itself, so a symbolic link there is replaced rather than followed.
    std::string temporary = path + ".sbnew";
    fs::remove(temporary, ec);
    file_handle file(std::fopen(temporary.c_str(), "wbx"));
    if (created) *created = file != nullptr;
    if (!file) return false;
    bool written = std::fwrite(text.data(), 1, text.size(), file.get()) == text.size();
    written = std::fclose(file.release()) == 0 && written;
    if (written) {
        fs::rename(temporary, path, ec);
        written = !ec;
    }
    if (!written) fs::remove(temporary, ec);
    return written;
}

bool readTextFileIfReadable(const std::string& path, std::string& text) {
    message_sink ignored;
    return readTextFile(path, text, ignored, "");
}

bool readTextFile(const std::string& path, std::string& text, message_sink& errors, std::string_view cannotOpen) {
    text.clear();
    std::error_code ec;
    file_handle file(std::filesystem::is_directory(path, ec) ? nullptr : std::fopen(path.c_str(), "rb"));
    if (!file) {
        errors.error(std::string(cannotOpen));
        return false;
    }
    // Read in pieces, checking the limits as the text grows: a device or a file
    // without line ends is stopped after one line's worth of bytes.
    char buffer[1 << 16];
    size_t lineStart = 0;
    long lineNumber = 1;
    while (size_t got = std::fread(buffer, 1, sizeof buffer, file.get())) {
        text.append(buffer, got);
        if (long line = overlongLine(text, lineStart, lineNumber, false)) {
            text.clear();
            appendLineTooLong(line, path, errors);
            return false;
        }
        if (static_cast<long long>(text.size()) > kMaxTextFileBytes) {
            text.clear();
            errors.errorf("ERROR, \"%s\" is larger than %lld bytes.\n", path.c_str(), kMaxTextFileBytes);
            return false;
        }
    }
    if (std::ferror(file.get())) {
        text.clear();
        errors.error(std::string(cannotOpen));
        return false;
    }
    if (long line = overlongLine(text, lineStart, lineNumber, true)) {
        text.clear();
        appendLineTooLong(line, path, errors);
        return false;
    }
    return true;
}

bool checkTextLimits(std::string_view text, const std::string& path, message_sink& errors) {
    size_t lineStart = 0;
    long lineNumber = 1;
    if (long line = overlongLine(text, lineStart, lineNumber, true)) {
        appendLineTooLong(line, path, errors);
        return false;
    }
    return true;
}

std::vector<std::string> splitLines(std::string_view text) {
    std::vector<std::string> lines;
    forEachLine(text, [&](std::string_view line) { lines.emplace_back(line); });
    return lines;
}

std::vector<std::string_view> splitFieldViews(std::string_view line, char separator) {
    std::vector<std::string_view> fields;
    size_t start = 0;
    for (;;) {
        size_t end = line.find(separator, start);
        fields.push_back(line.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
        if (end == std::string_view::npos) return fields;
        start = end + 1;
    }
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

bool readFiniteNumber(std::string_view token, double& value) {
    if (token.empty()) return false;
    // Digits, sign, point and exponent only: strtod would also take "nan", "inf" and hexadecimal.
    for (char c : token)
        if (!std::strchr("0123456789+-.eE", c)) return false;
    std::string copy(token);
    char* end = nullptr;
    double v = std::strtod(copy.c_str(), &end);
    if (end != copy.c_str() + copy.size() || !std::isfinite(v)) return false;
    value = v;
    return true;
}

bool readWholeNumber(std::string_view token, long long low, long long high, long long& value) {
    const char* first = token.data();
    const char* last = token.data() + token.size();
    if (first != last && *first == '+') ++first;
    long long v = 0;
    auto [end, ec] = std::from_chars(first, last, v);
    if (ec != std::errc() || end != last || first == last || v < low || v > high) return false;
    value = v;
    return true;
}

}  // namespace sb::text_file
