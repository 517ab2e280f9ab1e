// A target with a planted fault (reads past its input on "SB!"), for the test
// that a bounded fuzz run fails when it finds something. Not a reader of ours.
#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<uint8_t> copy(data, data + size);
    if (size >= 3 && copy[0] == 'S' && copy[1] == 'B' && copy[2] == '!') return copy[size];
    return 0;
}
