// Any bytes as the daily model's "sitepar.in": messages, never a crash.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_input.h"
#include "modelinput/site_file.h"
#include "records/tellura_control_record.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string path = sb_fuzz::writeScratch("sitepar.in", data, size);
    if (path.empty()) return 0;
    sb::tellura_control_record record;
    std::string messages;
    sb::importSitepar(path, record, messages);
    return 0;
}
