// Any bytes as each of the ten option files ("crop.100", "cult.100", ...)
// read into that member's records, then written back for a release the
// input's size picks.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "records/option_list.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    for (int kind = 0; kind < sb::kOptionKindCount; ++kind) {
        auto list = sb::makeOptionList(static_cast<sb::option_kind>(kind));
        std::string errors, status;
        list->importText(text, "fuzz.100", errors, status);
        std::string written;
        list->writeText(written, 1 + static_cast<int>(size % 6));
    }
    return 0;
}
