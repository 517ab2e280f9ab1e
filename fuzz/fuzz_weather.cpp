// Any bytes as a daily and as a monthly weather file: messages, never a crash.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz_input.h"
#include "records/tellura_weather_station.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    sb::message_sink errors;
    sb::tellura_weather_station daily;
    sb::readDailyWeatherText(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz.wth", daily, errors);
    return sb_fuzz::readScratch("monthly.wth", data, size, [&](const std::string& path) {
        sb::tellura_weather_station monthly;
        sb::readMonthlyWeatherFile(path, monthly, errors);
    });
}
