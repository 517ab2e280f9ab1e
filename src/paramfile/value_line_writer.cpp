#include "paramfile/value_line_writer.h"

#include "app/number_text.h"
#include "app/text_format.h"

namespace sb {

namespace {

int booleanDigit(uint16_t value) { return value == kTrue16 ? 1 : 0; }
int signedBooleanDigit(uint16_t value) { return value == kTrue16 ? 1 : -1; }

// Names are string_views; printf needs the length passed with "%.*s".
int len(std::string_view name) { return static_cast<int>(name.size()); }

// A real with the usual decimals, or more when those would not read back as
// the value itself (see exactDecimals).
std::string real(double value, int decimals = 5) { return exactDecimals(value, decimals); }

}  // namespace

void writeSmallInt(std::string& out, int value, std::string_view name) {
    appendf(out, "%-2d             %.*s\n", value, len(name), name.data());
}
void writeSmallInt(std::string& out, int value) { appendf(out, "%-2d\n", value); }

void writeBoolean(std::string& out, uint16_t value, std::string_view name) {
    writeSmallInt(out, booleanDigit(value), name);
}
void writeBoolean(std::string& out, uint16_t value) { writeSmallInt(out, booleanDigit(value)); }

void writeSignedBoolean(std::string& out, uint16_t value, std::string_view name) {
    appendf(out, "%-2d            %.*s\n", signedBooleanDigit(value), len(name), name.data());
}
void writeSignedBoolean(std::string& out, uint16_t value) { writeSmallInt(out, signedBooleanDigit(value)); }

void writeReal(std::string& out, double value, std::string_view name) {
    appendf(out, "%-10s     %.*s\n", real(value).c_str(), len(name), name.data());
}
void writeReal(std::string& out, double value) { appendf(out, "%-10s\n", real(value).c_str()); }

void writeRealWidth(std::string& out, double value, int width, int precision, std::string_view name) {
    appendf(out, "%-*s     %.*s\n", width, real(value, precision).c_str(), len(name), name.data());
}
void writeRealWidth(std::string& out, double value, int width, int precision) {
    appendf(out, "%-*s\n", width, real(value, precision).c_str());
}

void writeLargeInt(std::string& out, int32_t value, std::string_view name) {
    appendf(out, "%-10d     %.*s\n", static_cast<int>(value), len(name), name.data());
}
void writeLargeInt(std::string& out, int32_t value) { appendf(out, "%-10d\n", static_cast<int>(value)); }

void writeLargeIntShortGap(std::string& out, int32_t value, std::string_view name) {
    appendf(out, "%-10d    %.*s\n", static_cast<int>(value), len(name), name.data());
}
void writeLargeIntShortGap(std::string& out, int32_t value) { writeLargeInt(out, value); }

void writeElement(std::string& out, double value, std::string_view name, int i) {
    appendf(out, "%-10s     %.*s(%d)\n", real(value).c_str(), len(name), name.data(), i);
}
void writeElement(std::string& out, double value, std::string_view name, int i, int j) {
    appendf(out, "%-10s     %.*s(%d,%d)\n", real(value).c_str(), len(name), name.data(), i, j);
}
void writeElement(std::string& out, double value, std::string_view name, int i, int j, int k) {
    appendf(out, "%-10s     %.*s(%d,%d,%d)\n", real(value).c_str(), len(name), name.data(), i, j, k);
}

}  // namespace sb
