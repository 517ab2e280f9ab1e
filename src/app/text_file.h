#pragma once
// Whole-file reading and writing, and splitting text into lines and words, for
// every reader and writer of the model's text files. Writers build a file's
// text in memory and write it in one go, so a file that cannot be created
// leaves nothing half-written behind.
#include <string>
#include <string_view>
#include <vector>

#include "app/message_sink.h"

namespace sb {
namespace text_file {

// Every text file we read keeps within these: a longer line or a bigger file is
// not a file of the model (a binary file, a device, a file cut or damaged), and
// reading stops there instead of filling memory.
constexpr size_t kMaxLineLength = 1 << 20;
constexpr long long kMaxTextFileBytes = 256LL * 1024 * 1024;

// Creates (replaces) the file with exactly these bytes; false when it cannot be
// created or written. The bytes go to a new file that then takes the name, so a
// symbolic link standing there is replaced, never written through, and a reader
// never sees half a file. A device or pipe of that name is written to in place.
// `created`, when given, tells whether the file could be made at all (false) or
// only its writing failed (true).
bool writeTextFile(const std::string& path, std::string_view text, bool* created = nullptr);
// The whole file. False when it cannot be opened (or is a folder): `cannotOpen`
// is appended to `errors`; or when it breaks a limit above: "ERROR, line %ld of
// \"%s\" is longer than %zu characters.\n" or "ERROR, \"%s\" is larger than %lld
// bytes.\n" is appended, and `text` is left empty.
bool readTextFile(const std::string& path, std::string& text, message_sink& errors, std::string_view cannotOpen);
// The same without a message, for looking into a file that may well not be
// there (recognising a set-up's layout): false when it cannot be read whole.
bool readTextFileIfReadable(const std::string& path, std::string& text);
// The same limits on a text already in memory (`path` names it in the message).
bool checkTextLimits(std::string_view text, const std::string& path, message_sink& errors);
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
// The fields of one line between separators, as views into it; an empty line is
// one empty field, and a separator at either end gives an empty field there.
std::vector<std::string_view> splitFieldViews(std::string_view line, char separator);
// Blank-separated tokens (space, tab, CR, LF).
std::vector<std::string> splitTokens(std::string_view text);
// The same as views into the text.
std::vector<std::string_view> splitTokenViews(std::string_view text);
// The standard real conversion: leading number of the text, 0 when there is none.
double toReal(std::string_view text);
// Integer conversion: leading integer of the text, 0 when there is none.
long toInteger(std::string_view text);
// A whole token as a finite decimal number: false for "nan", "inf", hexadecimal,
// an out-of-range magnitude, and a number followed by anything else.
bool readFiniteNumber(std::string_view token, double& value);
// A whole token as a decimal integer within [low, high]; false otherwise.
bool readWholeNumber(std::string_view token, long long low, long long high, long long& value);

}  // namespace text_file
using namespace text_file;
}  // namespace sb
