// Any bytes as the daily model's "sitepar.in": messages, never a crash.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_input.h"
#include "app/model_version.h"
#include "modelinput/profile_values.h"
#include "modelinput/site_file.h"
#include "records/tellura_control_record.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return sb_fuzz::readScratch("sitepar.in", data, size, [&](const std::string& path) {
        sb::tellura_control_record record;
        sb::message_sink messages;
        sb::importSitepar(path, record, sb::shippedReleaseProfile(sb::kDiurna45), messages);
    });
}
