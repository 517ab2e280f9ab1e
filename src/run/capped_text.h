#pragma once
// A text that may grow without bound (a model's console output, the run log
// of thousands of records) kept to its first and last bytes: once it is longer
// than both together, the middle is cut and the text says so, and how much.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace sb {

class capped_text {
public:
    capped_text(size_t headBytes, size_t tailBytes) : headLimit_(headBytes), tailLimit_(tailBytes) {}

    void append(std::string_view text);
    uint64_t size() const { return total_; }
    bool empty() const { return total_ == 0; }

    // The whole text when nothing was cut; otherwise the head up to its last
    // line end, a line naming `what` and the bytes cut, and the tail from its
    // first whole line:
    //   "[... 12345 bytes of the model's console output cut here ...]\n"
    std::string text(const char* what) const;

private:
    size_t headLimit_, tailLimit_;
    std::string head_, tail_;
    uint64_t total_ = 0;
};

}  // namespace sb
