// Any bytes as each of the comma-separated result files: messages, never a crash.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_input.h"
#include "modeloutput/csv_output_reader.h"
#include "modeloutput/tellura_output.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return sb_fuzz::readScratch("output.csv", data, size, [&](const std::string& path) {
        for (const sb::csv_output_file& file : sb::csvOutputFiles()) {
            sb::tellura_outputs outputs;
            sb::message_sink errors;
            sb::readCsvOutputFile(file, path, outputs, errors);
        }
    });
}
