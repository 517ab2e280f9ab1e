#include "run/capped_text.h"

#include "app/text_format.h"

namespace sb {

void capped_text::append(std::string_view text) {
    total_ += text.size();
    if (head_.size() < headLimit_) {
        const size_t take = std::min(text.size(), headLimit_ - head_.size());
        head_.append(text.substr(0, take));
        text.remove_prefix(take);
    }
    if (text.empty() || tailLimit_ == 0) return;
    tail_.append(text);
    // Trimmed in batches, so that many small pieces do not move the tail each
    // time. One byte more than the tail is kept: it tells whether the tail
    // starts at a line start.
    if (tail_.size() > 2 * tailLimit_ + 1) tail_.erase(0, tail_.size() - tailLimit_ - 1);
}

std::string capped_text::text(const char* what) const {
    std::string_view tail = tail_;
    if (total_ <= head_.size() + tailLimit_) return head_ + std::string(tail);
    // Cut at line ends where there are any, so that no line is shown half.
    std::string_view head = head_;
    const size_t headEnd = head.rfind('\n');
    if (headEnd != std::string_view::npos) head = head.substr(0, headEnd + 1);
    if (!tail.empty()) {
        tail.remove_prefix(tail.size() - tailLimit_ - 1);  // the byte before the tail
        const size_t tailStart = tail.find('\n');
        tail.remove_prefix(tailStart != std::string_view::npos && tailStart + 1 < tail.size() ? tailStart + 1 : 1);
    }
    const uint64_t cut = total_ - head.size() - tail.size();
    std::string result(head);
    if (!result.empty() && result.back() != '\n') result += '\n';
    appendf(result, "[... %llu bytes of %s cut here ...]\n", static_cast<unsigned long long>(cut), what);
    result += tail;
    return result;
}

}  // namespace sb
