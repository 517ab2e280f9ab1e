// Any bytes as a binary layout file: messages, never a crash; a layout that
// loads answers look-ups.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_input.h"
#include "modeloutput/binary_layout.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string path = sb_fuzz::writeScratch("layout.tsv", data, size);
    if (path.empty()) return 0;
    sb::binary_layout_catalogue catalogue;
    std::string errors;
    if (!catalogue.addFile(path, errors)) return 0;
    const sb::binary_layout& layout = catalogue.layouts().front();
    catalogue.find(layout.version, layout.recordBytes());
    catalogue.noLayoutMessage(path, layout.version, layout.recordBytes() + 4);
    return 0;
}
