#pragma once
// Character positions of the list file that the model's list utility writes
// (1-based, inclusive). Version index 2's utility writes a narrower layout.
#include <cstddef>

namespace sb {

struct list_file_layout {
    size_t timeLast;      // time field: characters 1 to timeLast
    size_t pitch;         // width of one value column
    size_t headerOffset;  // first character of header name 0
    size_t valueOffset;   // first character of value 0 in a row

    // Header name / row value of column i (from 0): [first, first + pitch - 1].
    size_t headerFirst(int i) const { return headerOffset + pitch * static_cast<size_t>(i); }
    size_t valueFirst(int i) const { return valueOffset + pitch * static_cast<size_t>(i); }
    // Columns of a header of this length, counting a partial last column.
    int columnCount(size_t lengthAsRead) const;

    static list_file_layout forVersion(int versionIndex);
};

// The time field of a row: characters 1 to 4 for index 1, 1 to 7 for index 2,
// 1 to 11 for every other index.
size_t listTimeFieldLast(int versionIndex);

}  // namespace sb
