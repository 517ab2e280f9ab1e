// What the fuzz targets share: readers that take a path get the input as a
// file of their own (one per process, so that parallel runs do not meet).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <unistd.h>

namespace sb_fuzz {

// "/tmp/sb_fuzz_<pid>_<name>" holding exactly the bytes; "" when it cannot be written.
inline std::string writeScratch(const char* name, const uint8_t* data, size_t size) {
    std::string path = "/tmp/sb_fuzz_" + std::to_string(getpid()) + "_" + name;
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return "";
    bool written = std::fwrite(data, 1, size, file) == size;
    if (std::fclose(file) != 0 || !written) return "";
    return path;
}

// The shape of every target whose reader takes a path: the input as a scratch
// file named `name`, given to `read` (a lambda taking the path); nothing is
// read when the file cannot be written.
template <class Reader>
int readScratch(const char* name, const uint8_t* data, size_t size, Reader read) {
    const std::string path = writeScratch(name, data, size);
    if (!path.empty()) read(path);
    return 0;
}

}  // namespace sb_fuzz
