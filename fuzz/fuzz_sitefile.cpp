// Any bytes as a site file ("sbsite.100") and as a fixed file ("fix.100"):
// messages, never a crash, whatever the names and values on its lines.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_input.h"
#include "modelinput/fixed_file.h"
#include "modelinput/site_file.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return sb_fuzz::readScratch("site.100", data, size, [&](const std::string& path) {
        sb::message_sink messages;
        sb::tellura_control_record record;
        sb::tellura_soil soil;
        sb::tellura_weather_station station;
        sb::importSiteFile(path, record, &soil, &station, messages);
        sb::importSiteFile(path, record, nullptr, nullptr, messages);
        // The fixed file's names depend on the release; the input's size picks one.
        sb::importFixedFile(record, path, &soil, 1 + static_cast<int>(size % 6), messages);
    });
}
