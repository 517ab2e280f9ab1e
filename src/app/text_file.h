#pragma once
// Whole-file reading and writing, and splitting text into lines and words, for
// every reader and writer of the model's text files. Writers build a file's
// text in memory and write it in one go, so a file that cannot be created
// leaves nothing half-written behind.
#include <string>
#include <string_view>
#include <vector>

namespace sb {
namespace text_file {

// Creates (replaces) the file with exactly these bytes; false when it cannot be
// created or written.
bool writeTextFile(const std::string& path, std::string_view text);
// The whole file; false when it cannot be opened (or is a folder).
bool readTextFile(const std::string& path, std::string& text);
// The lines of a text, without their LF or CR LF ends; a last line without a
// line end counts.
std::vector<std::string> splitLines(std::string_view text);
template <class Visit>
void forEachLine(std::string_view text, Visit visit) {
    size_t pos = 0;
    while (pos < text.size()) {
        size_t end = text.find('\n', pos);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(pos, end - pos);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        visit(line);
        pos = end + 1;
    }
}
// Blank-separated tokens (space, tab, CR, LF).
std::vector<std::string> splitTokens(std::string_view text);
// The same as views into the text.
std::vector<std::string_view> splitTokenViews(std::string_view text);
// The standard real conversion: leading number of the text, 0 when there is none.
double toReal(std::string_view text);
// Integer conversion: leading integer of the text, 0 when there is none.
long toInteger(std::string_view text);

}  // namespace text_file
using namespace text_file;
}  // namespace sb
