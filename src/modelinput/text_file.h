#pragma once
// Whole-file reading and writing for the model input writers and readers.
// Writers build a file's text in memory and write it in one go, so a file
// that cannot be created leaves nothing half-written behind.
#include <string>
#include <string_view>
#include <vector>

namespace sb {
// Kept apart from other text helpers of the program.
namespace input_text {

// Creates (replaces) the file with exactly these bytes; false when it cannot be
// created or written.
bool writeTextFile(const std::string& path, std::string_view text);
// The whole file; false when it cannot be opened.
bool readTextFile(const std::string& path, std::string& text);
// The lines of a text, without their LF or CR LF ends.
std::vector<std::string> splitLines(std::string_view text);
// Blank-separated tokens (space, tab, CR, LF).
std::vector<std::string> splitTokens(std::string_view text);
// The standard real conversion: leading number of the text, 0 when there is none.
double toReal(std::string_view text);
// Integer conversion: leading integer of the text, 0 when there is none.
long toInteger(std::string_view text);

}  // namespace input_text
using namespace input_text;
}  // namespace sb
