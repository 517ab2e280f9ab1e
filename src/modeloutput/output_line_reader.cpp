#include "modeloutput/output_line_reader.h"

#include <cstdlib>
#include <sys/types.h>

namespace sb {

output_line_reader::~output_line_reader() {
    close();
    std::free(buffer_);
}

bool output_line_reader::open(const std::string& path) {
    close();
    file_ = std::fopen(path.c_str(), "rb");
    lineNumber_ = 0;
    bytes_ = 0;
    return file_ != nullptr;
}

void output_line_reader::close() {
    if (file_) std::fclose(file_);
    file_ = nullptr;
}

bool output_line_reader::next() {
    if (!file_) return false;
    // POSIX getline grows its own buffer and keeps NUL bytes of a damaged file.
    ssize_t n = ::getline(&buffer_, &capacity_, file_);
    if (n < 0) return false;
    bytes_ += n;
    size_t length = static_cast<size_t>(n);
    hadLineEnd_ = length > 0 && buffer_[length - 1] == '\n';
    if (hadLineEnd_) --length;
    if (length > 0 && buffer_[length - 1] == '\r') --length;
    line_ = std::string_view(buffer_, length);
    ++lineNumber_;
    return true;
}

}  // namespace sb
