#pragma once
// Value lines of the model's ".100" parameter files.
//
// Every writer appends exactly one line to `out`. The column layout is what
// the model's Fortran readers expect, so the printf formats are fixed:
//
//   kind                     with name                        without name
//   small integer, boolean   "%-2d             %s\n"          "%-2d\n"
//   signed boolean           "%-2d            %s\n"           "%-2d\n"   (1 / -1)
//   real                     "%-10.5f     %s\n"               "%-10.5f\n"
//   real, width/precision    "%-*.*f     %s\n"                "%-*.*f\n"
//   large integer            "%-10d     %s\n"                 "%-10d\n"
//   large integer, short gap "%-10d    %s\n"                  "%-10d\n"  (name in column 15)
//   array elements           "%-10.5f     %s(%d)\n", "(%d,%d)", "(%d,%d,%d)"
//
// The short-gap integer and the signed boolean are used by particular site
// and fixed-file fields; keep them as they are.
//
// A real gets more decimals than its format's when those would not read back
// as the value itself (30.539165 is written so, not as 30.53917): the model
// must read every value exactly as the project holds it.
#include <cstdint>
#include <string>
#include <string_view>

namespace sb {

// Booleans are held in records as 16-bit values: 65535 is true, anything else false.
constexpr uint16_t kTrue16 = 65535;
constexpr uint16_t kFalse16 = 0;

void writeSmallInt(std::string& out, int value, std::string_view name);
void writeSmallInt(std::string& out, int value);

// Writes 1 for 65535, 0 for any other value.
void writeBoolean(std::string& out, uint16_t value, std::string_view name);
void writeBoolean(std::string& out, uint16_t value);

// Writes 1 for 65535, -1 for any other value.
void writeSignedBoolean(std::string& out, uint16_t value, std::string_view name);
void writeSignedBoolean(std::string& out, uint16_t value);

void writeReal(std::string& out, double value, std::string_view name);
void writeReal(std::string& out, double value);

void writeRealWidth(std::string& out, double value, int width, int precision, std::string_view name);
void writeRealWidth(std::string& out, double value, int width, int precision);

void writeLargeInt(std::string& out, int32_t value, std::string_view name);
void writeLargeInt(std::string& out, int32_t value);

void writeLargeIntShortGap(std::string& out, int32_t value, std::string_view name);
void writeLargeIntShortGap(std::string& out, int32_t value);

// One element of an array, subscripts 1-based as the model spells them.
void writeElement(std::string& out, double value, std::string_view name, int i);
void writeElement(std::string& out, double value, std::string_view name, int i, int j);
void writeElement(std::string& out, double value, std::string_view name, int i, int j, int k);

// Whole arrays. T may be any arithmetic type (16-bit integer arrays are
// written as reals, like every other element).
// name(1) .. name(n)
template <class T>
void writeArray1(std::string& out, const T* values, int n, std::string_view name) {
    for (int i = 0; i < n; ++i) writeElement(out, static_cast<double>(values[i]), name, i + 1);
}

// Row-major: name(1,1), name(1,2), .. name(rows,cols); values[(i-1)*cols + j-1].
template <class T>
void writeArray2(std::string& out, const T* values, int rows, int cols, std::string_view name) {
    for (int i = 1; i <= rows; ++i)
        for (int j = 1; j <= cols; ++j)
            writeElement(out, static_cast<double>(values[(i - 1) * cols + j - 1]), name, i, j);
}

// One column with the second subscript fixed: name(1,col) .. name(rows,col).
template <class T>
void writeArray2Column(std::string& out, const T* values, int rows, int cols, int col, std::string_view name) {
    for (int i = 1; i <= rows; ++i)
        writeElement(out, static_cast<double>(values[(i - 1) * cols + col - 1]), name, i, col);
}

// Row-major: i outermost, k innermost; values[((i-1)*d2 + j-1)*d3 + k-1].
template <class T>
void writeArray3(std::string& out, const T* values, int d1, int d2, int d3, std::string_view name) {
    for (int i = 1; i <= d1; ++i)
        for (int j = 1; j <= d2; ++j)
            for (int k = 1; k <= d3; ++k)
                writeElement(out, static_cast<double>(values[((i - 1) * d2 + j - 1) * d3 + k - 1]), name, i, j, k);
}

}  // namespace sb
