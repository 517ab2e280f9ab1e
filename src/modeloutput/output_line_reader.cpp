#include "modeloutput/output_line_reader.h"

#include <cstring>

#include "app/text_file.h"
#include "app/text_format.h"

namespace sb {

output_line_reader::~output_line_reader() { close(); }

bool output_line_reader::open(const std::string& path) {
    close();
    file_ = std::fopen(path.c_str(), "rb");
    path_ = path;
    lineNumber_ = 0;
    tooLong_ = false;
    data_.clear();
    position_ = 0;
    return file_ != nullptr;
}

void output_line_reader::close() {
    if (file_) std::fclose(file_);
    file_ = nullptr;
}

// Takes the stream's next piece into `data_`; false at its end.
bool output_line_reader::fill() {
    data_.resize(1 << 16);
    size_t got = std::fread(data_.data(), 1, data_.size(), file_);
    data_.resize(got);
    position_ = 0;
    return got > 0;
}

bool output_line_reader::next() {
    if (!file_ || tooLong_) return false;
    // Read in pieces and cut at line ends, so that a line without end stops at
    // the limit; NUL bytes of a damaged file stay in the line.
    buffer_.clear();
    hadLineEnd_ = false;
    while (!hadLineEnd_) {
        if (position_ >= data_.size() && !fill()) break;
        const char* start = data_.data() + position_;
        const size_t available = data_.size() - position_;
        const void* end = std::memchr(start, '\n', available);
        const size_t take = end ? static_cast<size_t>(static_cast<const char*>(end) - start) + 1 : available;
        buffer_.append(start, take);
        position_ += take;
        hadLineEnd_ = end != nullptr;
        if (buffer_.size() > kMaxLineLength + 2) break;  // longer than any line may be, with its CR LF
    }
    if (buffer_.empty()) return false;
    size_t length = buffer_.size() - (hadLineEnd_ ? 1 : 0);
    if (length > 0 && buffer_[length - 1] == '\r') --length;
    ++lineNumber_;
    if (length > kMaxLineLength) {
        tooLong_ = true;
        return false;
    }
    line_ = std::string_view(buffer_.data(), length);
    return true;
}

bool output_line_reader::withinLimit(message_sink& errors) const {
    if (!tooLong_) return true;
    errors.errorf("ERROR, line %ld of \"%s\" is longer than %zu characters.\n", lineNumber_, path_.c_str(),
                  kMaxLineLength);
    return false;
}

}  // namespace sb
