#include "modelinput/weather_file.h"

#include <algorithm>
#include <array>

#include "app/text_format.h"
#include "app/text_file.h"

namespace sb {

namespace {

constexpr int kMaxCoverageWarnings = 10;

// The three monthly lines of one year: a keyword, the year and twelve values,
// missing months written as 0.00.
template <class Member>
void appendMonthlyLine(std::string& out, const char* keyword, const weather_monthly_year& year, Member member) {
    std::array<float, 12> values{};
    for (const weather_month_record& month : year.months)
        if (month.month >= 1 && month.month <= 12) values[static_cast<size_t>(month.month - 1)] = month.*member;
    appendf(out, "%s  %4d", keyword, year.year);
    for (float value : values) appendf(out, "%7.2f", value);
    out += '\n';
}

void appendMonthlyText(std::string& out, const TelluraWeatherStations& station) {
    for (const weather_monthly_year& year : station.monthly) {
        appendMonthlyLine(out, "prec", year, &weather_month_record::precip);
        appendMonthlyLine(out, "tmin", year, &weather_month_record::tmn2m);
        appendMonthlyLine(out, "tmax", year, &weather_month_record::tmx2m);
    }
}

// The daily model reads day, month, year, day of year, then maximum and
// minimum temperature, precipitation and the three extra drivers.
void appendDailyText(std::string& out, const TelluraWeatherStations& station) {
    for (const weather_daily_year& year : station.daily) {
        int counter = 1;  // restarts every year; a missing day shifts the later ones
        for (const weather_day_record& day : year.days) {
            appendf(out, "%d %d %d", day.day, day.month, day.year);
            appendf(out, " %d %.3f %.3f %.3f %.3f %.3f %.3f\n", counter++, day.tmx2m, day.tmn2m, day.precip, day.solrad,
                    day.rhumid, day.windsp);
        }
    }
}

bool hasMonthlyYear(const TelluraWeatherStations& station, int year) {
    return std::any_of(station.monthly.begin(), station.monthly.end(),
                       [year](const weather_monthly_year& y) { return y.year == year && !y.months.empty(); });
}

bool hasDailyYear(const TelluraWeatherStations& station, int year) {
    return std::any_of(station.daily.begin(), station.daily.end(),
                       [year](const weather_daily_year& y) { return y.year == year && !y.days.empty(); });
}

}  // namespace

tellura_weather_recorded_for_block::tellura_weather_recorded_for_block(const TelluraWeatherStations& station)
    : station_(&station) {}

void tellura_weather_recorded_for_block::addBlockYears(int32_t firstYear, int32_t lastYear) {
    firstYear_ = std::min(firstYear_, firstYear);
    lastYear_ = std::max(lastYear_, lastYear);
}

std::string tellura_weather_recorded_for_block::filePath(const std::string& runDirectory) const {
    return strprintf("%ssb%06d.wth", runDirectory.c_str(), station_->id);
}

bool tellura_weather_recorded_for_block::write(const std::string& path, int version, std::string& errors) const {
    if (!writeTextFile(path, weatherFileText(*station_, version))) {
        appendf(errors, "ERROR, can't open file \"%s\".\n", path.c_str());
        return false;
    }
    return true;
}

std::string weatherFileName(int32_t stationId) { return strprintf("sb%06d.wth", stationId); }

bool usesDailyWeather(int version) { return version == 4 || version == 6; }

std::string weatherFileText(const TelluraWeatherStations& station, int version) {
    std::string out;
    if (usesDailyWeather(version)) appendDailyText(out, station);
    else appendMonthlyText(out, station);
    return out;
}

bool checkWeatherCoverage(const TelluraWeatherStations& station, int firstYear, int lastYear, int version,
                          int blockNumber, std::string& messages) {
    const bool daily = version == 4;
    int warnings = 0;
    for (int year = firstYear; year <= lastYear + 1 && warnings < kMaxCoverageWarnings; ++year) {
        if (daily ? hasDailyYear(station, year) : hasMonthlyYear(station, year)) continue;
        ++warnings;
        if (daily) {
            appendf(messages, "WARNING, no daily historical weather data for year %d in block %d.", year, blockNumber);
            messages +=
                " Diurna will run with existing daily weather data. Check if these reflect your modeling situation.\n";
        } else {
            appendf(messages, "WARNING, no monthly historical weather data for year %d in block %d.", year,
                    blockNumber);
            messages +=
                " Tellura will run with existing daily weather data. Check if these reflect your modeling situation.\n";
        }
        if (year == lastYear + 1) {
            messages += "Data must exist through the year after event block.\n";
            if (!daily)
                messages +=
                    "Tellura will run with exisiting daily weather data. Check if these reflect your modeling "
                    "situation.\n";
        }
    }
    return true;
}

void checkBlockWeatherCoverage(const TelluraWeatherStations& station, const tellura_event_block& block, int version,
                               std::string& messages) {
    checkWeatherCoverage(station, block.firstYear, block.lastYear, version, block.blockNumber, messages);
}

}  // namespace sb
