// Fuzzes the binary output reader: framing detection, physical and length-marked
// records, layout choice and filling. A small layout of 36-byte records and the
// shipped layouts (those of the sample files among them) are known; the first
// input byte picks the event blocks.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz_input.h"
#include "modeloutput/binary_layout.h"
#include "modeloutput/binary_output_reader.h"
#include "modeloutput/tellura_output.h"
#include "records/tellura_event_block.h"

namespace {

const sb::binary_layout_catalogue& catalogue() {
    static sb::binary_layout_catalogue layouts = [] {
        sb::binary_layout_catalogue c;
        const std::string layout =
            "block\tindex\tname\nplot1\t1\tagcacc\nplot1\t2\tstrcis(1,1)\nplot1\t3\tsomsc\n"
            "plot2\t1\taglcn\nplot2\t2\tbgcjmth(1)\nplot2\t3\tbgcjmth(2)\nplot3\t1\tfrstc\nplot3\t2\tcrpval\n";
        sb::message_sink errors;
        sb_fuzz::readScratch("layout.tsv", reinterpret_cast<const uint8_t*>(layout.data()), layout.size(),
                             [&](const std::string& path) { c.addFile(path, errors); });
        c.loadShipped(SB_FUZZ_LAYOUTS_DIR, errors);
        return c;
    }();
    return layouts;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    std::vector<sb::tellura_event_block> blocks;
    for (int i = 0; i < 1 + data[0] % 3; ++i) {
        sb::tellura_event_block block;
        block.lastYear = static_cast<int16_t>(1990 + 3 * i);
        block.outputInterval = (data[0] & 4) ? 1.0f : 12.0f;
        blocks.push_back(block);
    }
    return sb_fuzz::readScratch("output.bin", data + 1, size - 1, [&](const std::string& path) {
        sb::tellura_outputs outputs;
        sb::message_sink errors;
        sb::readBinaryOutput(path, 4, catalogue(), blocks, outputs, errors);
    });
}
