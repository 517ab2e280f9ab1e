// Any bytes as a binary layout file: messages, never a crash; a layout that
// loads answers look-ups.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_input.h"
#include "modeloutput/binary_layout.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return sb_fuzz::readScratch("layout.tsv", data, size, [&](const std::string& path) {
        sb::binary_layout_catalogue catalogue;
        sb::message_sink errors;
        if (!catalogue.addFile(path, errors)) return;
        const sb::binary_layout& layout = catalogue.layouts().front();
        catalogue.find(layout.version, layout.recordBytes());
        catalogue.noLayoutMessage(path, layout.version, layout.recordBytes() + 4);
    });
}
