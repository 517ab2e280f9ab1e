#include "paramfile/field_setter.h"

#include <cctype>
#include <climits>
#include <cmath>
#include <utility>

#include "app/text_format.h"

namespace sb {

namespace {

// atoi() semantics (leading blanks, optional sign, digits, stops at anything
// else) without its undefined behaviour: too many digits saturate.
int readSubscript(std::string_view text, size_t pos) {
    while (pos < text.size() && std::isspace(static_cast<unsigned char>(text[pos]))) ++pos;
    bool negative = false;
    if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) negative = text[pos++] == '-';
    long long value = 0;
    for (; pos < text.size() && std::isdigit(static_cast<unsigned char>(text[pos])); ++pos) {
        value = value * 10 + (text[pos] - '0');
        if (value > INT_MAX) value = static_cast<long long>(INT_MAX) + 1;
    }
    if (negative) value = -value;
    if (value > INT_MAX) return INT_MAX;
    if (value < INT_MIN) return INT_MIN;
    return static_cast<int>(value);
}

// "FIELD(" at the start of the line's name, case ignored.
bool matchesSubscripted(std::string_view lineName, std::string_view field) {
    return lineName.size() > field.size() && istartsWith(lineName, field) && lineName[field.size()] == '(';
}

// Splits the text after "FIELD(" at ',' and ')' the way strtok would (empty
// pieces are skipped) and reads up to three subscripts; missing ones are 0.
void readThreeSubscripts(std::string_view text, int subscripts[3]) {
    int count = 0;
    size_t pos = 0;
    while (count < 3) {
        while (pos < text.size() && (text[pos] == ',' || text[pos] == ')' || text[pos] == '(')) ++pos;
        if (pos >= text.size()) break;
        size_t end = text.find_first_of(",)(", pos);
        if (end == std::string_view::npos) end = text.size();
        subscripts[count++] = readSubscript(text.substr(pos, end - pos), 0);
        pos = end;
    }
    for (; count < 3; ++count) subscripts[count] = 0;
}

}  // namespace

bool field_setter::matchScalar(std::string_view field) {
    if (!iequals(lineName_, field)) return false;
    found_ = true;
    return true;
}

long long field_setter::clampTo(long long low, long long high) const {
    if (std::isnan(value_)) return 0;
    double truncated = std::trunc(value_);
    if (truncated <= static_cast<double>(low)) return low;
    if (truncated >= static_cast<double>(high)) return high;
    return static_cast<long long>(truncated);
}

bool field_setter::real(std::string_view field, double& target) {
    if (!matchScalar(field)) return false;
    target = value_;
    return true;
}

bool field_setter::real(std::string_view field, float& target) {
    if (!matchScalar(field)) return false;
    store(target);
    return true;
}

bool field_setter::int8(std::string_view field, int8_t& target) {
    if (!matchScalar(field)) return false;
    store(target);
    return true;
}

bool field_setter::int16(std::string_view field, int16_t& target) {
    if (!matchScalar(field)) return false;
    store(target);
    return true;
}

bool field_setter::int32(std::string_view field, int32_t& target) {
    if (!matchScalar(field)) return false;
    store(target);
    return true;
}

bool field_setter::boolean(std::string_view field, uint16_t& target) {
    if (!matchScalar(field)) return false;
    target = value_ == 0.0 ? 0 : 65535;
    return true;
}

int field_setter::locate1(std::string_view field, int size) {
    if (!matchesSubscripted(lineName_, field)) return kNoMatch;
    found_ = true;
    int i = readSubscript(lineName_, field.size() + 1);
    if (i < 1) {
        errors_.errorf("ERROR, array subscript below 1: %.*s\n", static_cast<int>(lineName_.size()), lineName_.data());
        return -1;
    }
    if (i > size) {
        errors_.error("ERROR, exceeds array size: " + std::string(field) + "\n");
        return -1;
    }
    return i - 1;
}

int field_setter::locate2(std::string_view field, int rows, int cols) {
    if (!matchesSubscripted(lineName_, field)) return kNoMatch;
    found_ = true;
    // The second subscript is taken 2 characters after the first one's start
    // for one-digit first subscripts and 3 otherwise: the files write both
    // without blanks before the comma.
    size_t first = field.size() + 1;
    int i = readSubscript(lineName_, first);
    size_t second = first + (i < 10 ? 2 : 3);
    int j = second < lineName_.size() ? readSubscript(lineName_, second) : 0;
    if (i < 1 || j < 1) {
        errors_.errorf("ERROR, array subscript below 1: %.*s\n", static_cast<int>(lineName_.size()), lineName_.data());
        return -1;
    }
    if (i > rows || j > cols) {
        errors_.errorf("ERROR, exceeds array size: \"%.*s\" %d x %d (%d x %d)\n", static_cast<int>(field.size()),
                       field.data(), i, j, rows, cols);
        return -1;
    }
    return (i - 1) * cols + j - 1;
}

int field_setter::locate3(std::string_view field, int d1, int d2, int d3, bool reversed, int planeOffset) {
    if (!matchesSubscripted(lineName_, field)) return kNoMatch;
    found_ = true;
    int s[3];
    readThreeSubscripts(lineName_.substr(field.size() + 1), s);
    // Bounds in the order the file spells the subscripts.
    int bounds[3] = {d1, d2, d3};
    if (reversed) std::swap(bounds[0], bounds[2]);
    if (s[0] < 1 || s[1] < 1 || s[2] < 1) {
        errors_.errorf("ERROR, array subscript below 1: %.*s\n", static_cast<int>(lineName_.size()), lineName_.data());
        return -1;
    }
    if (s[0] > bounds[0] || s[1] > bounds[1] || s[2] > bounds[2]) {
        errors_.errorf("ERROR, exceeds array size: %.*s %d x %d x %d (%d x %d x %d)\n", static_cast<int>(field.size()),
                       field.data(), s[0], s[1], s[2], bounds[0], bounds[1], bounds[2]);
        return -1;
    }
    int i = reversed ? s[2] : s[0];
    int k = reversed ? s[0] : s[2];
    return (reversed ? planeOffset : 0) + ((i - 1) * d2 + (s[1] - 1)) * d3 + k - 1;
}

}  // namespace sb
