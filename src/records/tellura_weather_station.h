#pragma once
// Weather stations with their monthly climate means and their historical
// monthly and daily weather.
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "app/message_sink.h"

namespace sb {

class database;

struct weather_month_means {  // one `Weather Averages` row
    float precip = 0, prcstd = 0, prcskw = 0, tmn2m = 0, tmx2m = 0;
    bool operator==(const weather_month_means&) const = default;
};

struct weather_month_record {  // one `Weather Historical Monthly` row
    int16_t month = 1;
    float precip = 0, prcstd = 0, prcskw = 0, tmn2m = 0, tmx2m = 0, solrad = 0, rhumid = 0, windsp = 0;
    bool operator==(const weather_month_record&) const = default;
};

struct weather_day_record {  // one `Weather Historical Daily` row
    int16_t year = 0, month = 1, day = 1;
    float precip = 0, tmn2m = 0, tmx2m = 0, solrad = 0, rhumid = 0, windsp = 0;
    bool operator==(const weather_day_record&) const = default;
};

struct weather_monthly_year {
    int16_t year = 0;
    std::vector<weather_month_record> months;
    bool operator==(const weather_monthly_year&) const = default;
    weather_month_record& monthRecord(int month);  // found or added
};

struct weather_daily_year {
    int16_t year = 0;
    std::vector<weather_day_record> days;
    bool operator==(const weather_daily_year&) const = default;
};

class tellura_weather_station {
public:
    int32_t id = 0;
    std::string description;
    std::array<weather_month_means, 12> means;
    bool hasMeans = false;
    std::vector<weather_monthly_year> monthly;  // in load order
    std::vector<weather_daily_year> daily;      // in load order

    weather_monthly_year& monthlyYear(int year);  // found or added at the end
    weather_daily_year& dailyYear(int year);      // found or added at the end
    // Sets a climate mean by its site-file name: PRECIP(m), PRCSTD(m), PRCSKW(m),
    // TMN2M(m), TMX2M(m), case ignored. False when the name is none of them; a
    // month outside 1..12 is reported and nothing is stored.
    bool setClimateMean(std::string_view name, double value, message_sink& errors);
};

class tellura_weather_stations {
public:
    std::vector<tellura_weather_station> stations;
    tellura_weather_station* find(int32_t id);
    const tellura_weather_station* find(int32_t id) const;
};

// --- Storage ---------------------------------------------------------------

// Every station with its climate means (no history).
bool loadWeatherStations(database& db, tellura_weather_stations& list, message_sink& errors);
// The station row and its twelve `Weather Averages` rows, replacing the stored ones.
bool saveWeatherStation(database& db, const tellura_weather_station& station, message_sink& errors);
// Replaces every station and all climate means with the list (the station editor's
// save); history rows are kept, also of stations no longer in the list.
bool saveWeatherStations(database& db, const tellura_weather_stations& list, message_sink& errors);
// The station and everything stored under its ID.
bool deleteWeatherStation(database& db, int32_t stationId, message_sink& errors);

// History of one station, replacing what the station holds in memory.
bool loadMonthlyHistory(database& db, tellura_weather_station& station, message_sink& errors);
bool loadDailyHistory(database& db, tellura_weather_station& station, message_sink& errors);
// Replace the station's stored history with the one it holds in memory; after
// any failure the stored history stays as it was.
bool saveMonthlyHistory(database& db, const tellura_weather_station& station, message_sink& errors);
bool saveDailyHistory(database& db, const tellura_weather_station& station, message_sink& errors);

// --- Weather files -----------------------------------------------------------

// The model's monthly weather file: "prec 1990 v1 .. v12", "tmin ...", "tmax ...".
bool readMonthlyWeatherFile(const std::string& path, tellura_weather_station& station, message_sink& errors);
// The model's daily weather file: day, month, year, day of year, tmax, tmin,
// precipitation, then optionally solar radiation, relative humidity, wind speed.
bool readDailyWeatherFile(const std::string& path, tellura_weather_station& station, message_sink& errors);
bool readDailyWeatherText(std::string_view text, const std::string& path, tellura_weather_station& station,
                          message_sink& errors);

// --- Text form -----------------------------------------------------------------

// "Weather ID\t%ld\t%s\n" and one row of twelve monthly means per series.
void appendClimateMeansText(const tellura_weather_station& station, std::string& text);
// The question asked before one daily record is deleted.
std::string deleteDailyRecordQuestion(int32_t stationId, const weather_day_record& day);

}  // namespace sb
