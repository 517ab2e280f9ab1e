#pragma once
// Weather files of the event blocks that read historical weather (choices F
// and C): one file per station, "sb%06d.wth" in the run directory, covering
// every block that uses the station. Monthly releases get three lines per
// year (prec, tmin, tmax); the daily releases (codes 4 and 6) one line per day.
#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "app/message_sink.h"
#include "records/tellura_event_block.h"
#include "records/tellura_weather_station.h"

namespace sb {

// One station used by F/C blocks, with the span of years over those blocks
// and the historical data that goes into its file.
class tellura_weather_recorded_for_block {
public:
    explicit tellura_weather_recorded_for_block(const tellura_weather_station& station);

    int32_t stationId() const { return station_->id; }
    const tellura_weather_station& station() const { return *station_; }
    int32_t firstYear() const { return firstYear_; }
    int32_t lastYear() const { return lastYear_; }

    // Widens the span to cover one more block.
    void addBlockYears(int32_t firstYear, int32_t lastYear);

    // "%ssb%06d.wth" with the run directory (its trailing separator included).
    std::string filePath(const std::string& runDirectory) const;
    // Writes every year record the station holds, one line per day in these
    // columns (a release profile's weather columns), or the monthly lines when
    // there are none; false (with the message) when the file cannot be created.
    bool write(const std::string& path, const std::vector<std::string>& dailyColumns, message_sink& errors) const;

private:
    const tellura_weather_station* station_;
    int32_t firstYear_ = INT32_MAX;
    int32_t lastYear_ = INT32_MIN;
};

// "sb%06d.wth": the name a schedule gives the weather file of a station.
std::string weatherFileName(int32_t stationId);

// Daily releases (4 Diurna, 6) read one line per day; the others monthly lines.
bool usesDailyWeather(int version);

// Text of the weather file: daily lines in the given columns ("day", "month",
// "year", "doy" (a counter that restarts every year), "tmax", "tmin", "precip",
// "solrad", "rhumid", "windsp"), or monthly prec/tmin/tmax lines when there are none.
std::string weatherFileText(const tellura_weather_station& station, const std::vector<std::string>& dailyColumns);
// The same as a version writes it: monthly prec/tmin/tmax lines, or daily lines
// "day month year counter tmax tmin prec solrad rhumid windsp".
std::string weatherFileText(const tellura_weather_station& station, int version);

// Warns about every year from firstYear to lastYear + 1 that the station lacks
// (monthly data, or daily data for version 4), at most 10 per block. Always true.
bool checkWeatherCoverage(const tellura_weather_station& station, int firstYear, int lastYear, int version,
                          int blockNumber, message_sink& messages);
// The same for one block, in the form block validation takes (weather_coverage_check).
void checkBlockWeatherCoverage(const tellura_weather_station& station, const tellura_event_block& block, int version,
                               message_sink& messages);

}  // namespace sb
