#include "modeloutput/list_file_layout.h"

namespace sb {

list_file_layout list_file_layout::forVersion(int versionIndex) {
    if (versionIndex == 2) return {7, 15, 10, 8};
    return {11, 16, 17, 17};
}

int list_file_layout::columnCount(size_t lengthAsRead) const {
    if (lengthAsRead <= headerOffset) return 0;
    size_t count = (lengthAsRead - headerOffset) / pitch;
    if (count * pitch + headerOffset < lengthAsRead) ++count;  // a partial last column counts
    return static_cast<int>(count);
}

size_t listTimeFieldLast(int versionIndex) {
    if (versionIndex == 1) return 4;
    if (versionIndex == 2) return 7;
    return 11;
}

}  // namespace sb
