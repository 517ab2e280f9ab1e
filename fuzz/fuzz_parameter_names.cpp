// Any text as a parameter name, as the site, fixed and option files give it:
// its canonical spelling, what it belongs to, and setting it by that name.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "modelinput/fixed_file.h"
#include "modelinput/parameter_names.h"
#include "modelinput/soil_site_names.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view name(reinterpret_cast<const char*>(data), size);
    std::string canonical = sb::canonicalParameterName(name);
    sb::isClimateName(canonical);
    sb::isSoilSiteName(canonical);
    sb::siteColumnOfName(canonical);
    sb::message_sink messages;
    sb::tellura_control_record record;
    sb::tellura_soil soil;
    sb::tellura_weather_station station;
    station.setClimateMean(name, 1.5, messages);
    sb::setSoilBySiteName(soil, canonical, 1.5, messages);
    for (int version = 1; version <= 6; ++version) {
        sb::setParameterByName(canonical, 1.5, record.row, &soil, &station, version, messages);
        sb::setParameterByName(name, 1.5, record.row, nullptr, nullptr, version, messages);
    }
    return 0;
}
