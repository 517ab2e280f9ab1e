#include "modelinput/weather_file.h"

#include <algorithm>
#include <array>

#include "app/number_text.h"
#include "app/text_format.h"
#include "app/text_file.h"

namespace sb {

namespace {

constexpr int kMaxCoverageWarnings = 10;

// The columns the daily releases of the version table read.
const std::vector<std::string> kDailyColumns = {"day",  "month",  "year",   "doy",    "tmax",
                                                "tmin", "precip", "solrad", "rhumid", "windsp"};

float dayValue(const weather_day_record& day, const std::string& column) {
    if (column == "tmax") return day.tmx2m;
    if (column == "tmin") return day.tmn2m;
    if (column == "precip") return day.precip;
    if (column == "solrad") return day.solrad;
    if (column == "rhumid") return day.rhumid;
    if (column == "windsp") return day.windsp;
    return 0.0f;
}

// The three monthly lines of one year: a keyword, the year and twelve values,
// missing months written as 0.00.
template <class Member>
void appendMonthlyLine(std::string& out, const char* keyword, const weather_monthly_year& year, Member member) {
    std::array<float, 12> values{};
    for (const weather_month_record& month : year.months)
        if (month.month >= 1 && month.month <= 12) values[static_cast<size_t>(month.month - 1)] = month.*member;
    appendf(out, "%s  %4d", keyword, year.year);
    for (float value : values) {
        // Seven characters as a rule; a value that needs more decimals to stay
        // exact keeps a blank before it.
        std::string text = exactDecimals(value, 2);
        out += text.size() < 7 ? std::string(7 - text.size(), ' ') + text : " " + text;
    }
    out += '\n';
}

void appendMonthlyText(std::string& out, const tellura_weather_station& station) {
    for (const weather_monthly_year& year : station.monthly) {
        appendMonthlyLine(out, "prec", year, &weather_month_record::precip);
        appendMonthlyLine(out, "tmin", year, &weather_month_record::tmn2m);
        appendMonthlyLine(out, "tmax", year, &weather_month_record::tmx2m);
    }
}

// One line per day, in the columns the release reads: the dates as whole
// numbers, the values with three decimals (or more where three would not
// give the value back).
void appendDailyText(std::string& out, const tellura_weather_station& station,
                     const std::vector<std::string>& columns) {
    for (const weather_daily_year& year : station.daily) {
        int counter = 1;  // restarts every year; a missing day shifts the later ones
        for (const weather_day_record& day : year.days) {
            std::string line;
            for (const std::string& column : columns) {
                if (!line.empty()) line += ' ';
                if (column == "day") line += std::to_string(day.day);
                else if (column == "month") line += std::to_string(day.month);
                else if (column == "year") line += std::to_string(day.year);
                else if (column == "doy") line += std::to_string(counter);
                else line += exactDecimals(dayValue(day, column), 3);
            }
            out += line + "\n";
            ++counter;
        }
    }
}

bool hasMonthlyYear(const tellura_weather_station& station, int year) {
    return std::any_of(station.monthly.begin(), station.monthly.end(),
                       [year](const weather_monthly_year& y) { return y.year == year && !y.months.empty(); });
}

bool hasDailyYear(const tellura_weather_station& station, int year) {
    return std::any_of(station.daily.begin(), station.daily.end(),
                       [year](const weather_daily_year& y) { return y.year == year && !y.days.empty(); });
}

}  // namespace

tellura_weather_recorded_for_block::tellura_weather_recorded_for_block(const tellura_weather_station& station)
    : station_(&station) {}

void tellura_weather_recorded_for_block::addBlockYears(int32_t firstYear, int32_t lastYear) {
    firstYear_ = std::min(firstYear_, firstYear);
    lastYear_ = std::max(lastYear_, lastYear);
}

std::string tellura_weather_recorded_for_block::filePath(const std::string& runDirectory) const {
    return strprintf("%ssb%06d.wth", runDirectory.c_str(), station_->id);
}

bool tellura_weather_recorded_for_block::write(const std::string& path, const std::vector<std::string>& dailyColumns,
                                               message_sink& errors) const {
    if (!writeTextFile(path, weatherFileText(*station_, dailyColumns))) {
        errors.errorf("ERROR, can't open file \"%s\".\n", path.c_str());
        return false;
    }
    return true;
}

std::string weatherFileName(int32_t stationId) { return strprintf("sb%06d.wth", stationId); }

bool usesDailyWeather(int version) { return version == 4 || version == 6; }

std::string weatherFileText(const tellura_weather_station& station, const std::vector<std::string>& dailyColumns) {
    std::string out;
    if (!dailyColumns.empty()) appendDailyText(out, station, dailyColumns);
    else appendMonthlyText(out, station);
    return out;
}

std::string weatherFileText(const tellura_weather_station& station, int version) {
    return weatherFileText(station, usesDailyWeather(version) ? kDailyColumns : std::vector<std::string>());
}

bool checkWeatherCoverage(const tellura_weather_station& station, int firstYear, int lastYear, int version,
                          int blockNumber, message_sink& messages) {
    const bool daily = version == 4;
    int warnings = 0;
    for (int year = firstYear; year <= lastYear + 1 && warnings < kMaxCoverageWarnings; ++year) {
        if (daily ? hasDailyYear(station, year) : hasMonthlyYear(station, year)) continue;
        ++warnings;
        if (daily) {
            messages.warningf(
                "WARNING, no daily historical weather data for year %d in block %d. Diurna will run with "
                "existing daily weather data. Check if these reflect your modeling situation.\n",
                year, blockNumber);
        } else {
            messages.warningf(
                "WARNING, no monthly historical weather data for year %d in block %d. Tellura will run "
                "with existing daily weather data. Check if these reflect your modeling situation.\n",
                year, blockNumber);
        }
        if (year == lastYear + 1) {
            messages.warning("Data must exist through the year after event block.\n");
            if (!daily)
                messages.warning(
                    "Tellura will run with exisiting daily weather data. Check if these reflect your modeling "
                    "situation.\n");
        }
    }
    return true;
}

void checkBlockWeatherCoverage(const tellura_weather_station& station, const tellura_event_block& block, int version,
                               message_sink& messages) {
    checkWeatherCoverage(station, block.firstYear, block.lastYear, version, block.blockNumber, messages);
}

}  // namespace sb
