// Any bytes as the daily-step release's text outputs: the year summary (and
// "summary.out" in its form) and the daily output file.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_input.h"
#include "modeloutput/tellura_output.h"
#include "modeloutput/text_output_readers.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return sb_fuzz::readScratch("output.out", data, size, [&](const std::string& path) {
        sb::message_sink errors;
        sb::tellura_outputs summary;
        sb::readYearSummary(path, summary, errors);
        sb::tellura_outputs daily;
        sb::readDailyOutput(path, daily, errors);
    });
}
