#include "app/name_pattern.h"

#include <charconv>

namespace sb {

namespace {

struct subscript_range {
    int first = 0;
    int last = 0;
};

bool readInt(std::string_view text, int& value) {
    if (text.empty()) return false;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return ec == std::errc() && end == text.data() + text.size() && value >= 0;
}

// "3" or "1..5".
bool readRange(std::string_view text, subscript_range& range) {
    size_t dots = text.find("..");
    if (dots == std::string_view::npos) {
        if (!readInt(text, range.first)) return false;
        range.last = range.first;
        return true;
    }
    return readInt(text.substr(0, dots), range.first) && readInt(text.substr(dots + 2), range.last) &&
           range.first <= range.last;
}

void expandFrom(const std::string& base, const std::vector<subscript_range>& ranges, size_t at, std::string prefix,
                std::vector<std::string>& out) {
    if (at == ranges.size()) {
        out.push_back(base + "(" + prefix + ")");
        return;
    }
    for (int i = ranges[at].first; i <= ranges[at].last; ++i) {
        std::string next = prefix.empty() ? std::to_string(i) : prefix + "," + std::to_string(i);
        expandFrom(base, ranges, at + 1, next, out);
    }
}

// "NAME(1,2)" -> "NAME" and {1, 2}; false without subscripts.
bool splitSubscripts(const std::string& name, std::string& base, std::vector<int>& subscripts) {
    size_t open = name.find('(');
    if (open == std::string::npos || name.back() != ')') return false;
    base = name.substr(0, open);
    subscripts.clear();
    std::string_view inside(name.data() + open + 1, name.size() - open - 2);
    while (true) {
        size_t comma = inside.find(',');
        int value = 0;
        if (!readInt(inside.substr(0, comma), value)) return false;
        subscripts.push_back(value);
        if (comma == std::string_view::npos) return true;
        inside.remove_prefix(comma + 1);
    }
}

}  // namespace

size_t namePatternRun(const std::vector<std::string>& names, size_t first, std::string& pattern) {
    pattern = names.at(first);
    std::string base, nextBase;
    std::vector<int> start, previous, next;
    if (!splitSubscripts(names[first], base, start)) return 1;
    previous = start;
    size_t place = start.size();  // the subscript that counts up; size(): not known yet
    size_t count = 1;
    while (first + count < names.size() && splitSubscripts(names[first + count], nextBase, next) && nextBase == base &&
           next.size() == start.size()) {
        size_t differing = next.size(), differences = 0;
        for (size_t i = 0; i < next.size(); ++i)
            if (next[i] != previous[i]) {
                differing = i;
                ++differences;
            }
        if (differences != 1 || next[differing] != previous[differing] + 1) break;
        if (place != start.size() && differing != place) break;
        place = differing;
        previous = next;
        ++count;
    }
    if (count == 1) return 1;
    pattern = base + "(";
    for (size_t i = 0; i < start.size(); ++i) {
        if (i > 0) pattern += ",";
        pattern += std::to_string(start[i]);
        if (i == place) pattern += ".." + std::to_string(previous[i]);
    }
    pattern += ")";
    return count;
}

std::vector<std::string> expandNamePattern(std::string_view pattern) {
    if (pattern.find("..") == std::string_view::npos) return {std::string(pattern)};
    size_t open = pattern.find('(');
    if (open == std::string_view::npos || pattern.back() != ')') return {};
    std::vector<subscript_range> ranges;
    std::string_view inside = pattern.substr(open + 1, pattern.size() - open - 2);
    while (true) {
        size_t comma = inside.find(',');
        subscript_range range;
        if (!readRange(inside.substr(0, comma), range)) return {};
        ranges.push_back(range);
        if (comma == std::string_view::npos) break;
        inside.remove_prefix(comma + 1);
    }
    std::vector<std::string> out;
    expandFrom(std::string(pattern.substr(0, open)), ranges, 0, {}, out);
    return out;
}

}  // namespace sb
