// Fuzzes the list file reader: the header matching, the blocks, the value fields.
// The first input byte picks the version index and the event blocks; the rest is the file.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz_input.h"
#include "modeloutput/list_file_reader.h"
#include "modeloutput/output_variable_set.h"
#include "modeloutput/tellura_output.h"
#include "records/tellura_event_block.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    int version = 1 + data[0] % 6;
    std::vector<sb::tellura_event_block> blocks;
    for (int i = 0; i < 1 + (data[0] >> 4) % 3; ++i) {
        sb::tellura_event_block block;
        block.lastYear = static_cast<int16_t>(1990 + 5 * i);
        block.outputInterval = (data[0] & 8) ? 1.0f : 12.0f;
        blocks.push_back(block);
    }
    return sb_fuzz::readScratch("output.lis", data + 1, size - 1, [&](const std::string& path) {
        sb::output_variable_set variables;
        sb::tellura_outputs outputs;
        sb::message_sink errors;
        sb::readListFile(variables, path, version, blocks, outputs, errors);
    });
}
