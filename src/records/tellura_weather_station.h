#pragma once
// Weather stations with their monthly climate means and their historical
// monthly and daily weather.
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace sb {

struct weather_month_means {  // one `Weather Averages` row
    float precip = 0, prcstd = 0, prcskw = 0, tmn2m = 0, tmx2m = 0;
};

struct weather_month_record {  // one `Weather Historical Monthly` row
    int16_t month = 1;
    float precip = 0, prcstd = 0, prcskw = 0, tmn2m = 0, tmx2m = 0, solrad = 0, rhumid = 0, windsp = 0;
};

struct weather_day_record {  // one `Weather Historical Daily` row
    int16_t year = 0, month = 1, day = 1;
    float precip = 0, tmn2m = 0, tmx2m = 0, solrad = 0, rhumid = 0, windsp = 0;
};

struct weather_monthly_year {
    int16_t year = 0;
    std::vector<weather_month_record> months;
};

struct weather_daily_year {
    int16_t year = 0;
    std::vector<weather_day_record> days;
};

class TelluraWeatherStations {
public:
    int32_t id = 0;
    std::string description;
    std::array<weather_month_means, 12> means;
    bool hasMeans = false;
    std::vector<weather_monthly_year> monthly;  // in load order
    std::vector<weather_daily_year> daily;      // in load order
};

class tellura_weather_station_list {
public:
    std::vector<TelluraWeatherStations> stations;
    TelluraWeatherStations* find(int32_t id);
    const TelluraWeatherStations* find(int32_t id) const;
};

}  // namespace sb
