// Any bytes as one of the ten option files ("crop.100", "cult.100", ...) read
// into that member's records, then written back. The first byte picks the
// member (its value modulo 10, in option_kind order) and the release to write.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "records/option_list.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    auto list = sb::makeOptionList(static_cast<sb::option_kind>(data[0] % sb::kOptionKindCount));
    sb::message_sink errors;
    std::string status;
    list->importText(std::string_view(reinterpret_cast<const char*>(data + 1), size - 1), "fuzz.100", errors, status);
    std::string written;
    list->writeText(written, 1 + data[0] / sb::kOptionKindCount % 6);
    return 0;
}
