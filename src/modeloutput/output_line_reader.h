#pragma once
// Line-by-line reading of the model's text outputs. Lines are read whole up to
// the text limit (app/text_file.h): the model's own readers used fixed buffers
// (256 to 2048 characters) that split a long line into pieces which were then
// misread as further rows; a whole line is either parsed correctly by its fixed
// ranges or reported. A line past the limit (a damaged file, a device) ends the
// reading with a message instead of filling memory. The line end (LF or CR LF;
// files written on Windows keep their CR) is not part of the text.
#include <cstdio>
#include <string>
#include <string_view>

#include "app/message_sink.h"

namespace sb {

class output_line_reader {
public:
    output_line_reader() = default;
    ~output_line_reader();
    output_line_reader(const output_line_reader&) = delete;
    output_line_reader& operator=(const output_line_reader&) = delete;

    bool open(const std::string& path);
    bool isOpen() const { return file_ != nullptr; }
    void close();

    // False at the end of the file, and at a line longer than the limit (then
    // tooLong() tells). A last line without a line end still counts. The line
    // stays valid until the next call.
    bool next();
    std::string_view line() const { return line_; }
    // The length the model's reader saw: the text plus one for the line end, if any.
    size_t lengthAsRead() const { return line_.size() + (hadLineEnd_ ? 1 : 0); }
    long lineNumber() const { return lineNumber_; }
    bool tooLong() const { return tooLong_; }
    // True when the reading was not cut by a line past the limit; otherwise
    // appends "ERROR, line %ld of \"%s\" is longer than %zu characters.\n".
    bool withinLimit(message_sink& errors) const;

private:
    bool fill();

    std::FILE* file_ = nullptr;
    std::string path_;
    std::string data_;     // read from the file, not yet handed out
    size_t position_ = 0;  // where in data_ the next line starts
    std::string buffer_;   // the current line
    std::string_view line_;
    bool hadLineEnd_ = false;
    bool tooLong_ = false;
    long lineNumber_ = 0;
};

}  // namespace sb
