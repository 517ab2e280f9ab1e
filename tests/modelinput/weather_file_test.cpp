// Weather files of F/C blocks and the coverage check before a run.
#include <gtest/gtest.h>

#include "modelinput/weather_file.h"
#include "test_support.h"

using namespace sb;

namespace {

tellura_weather_station monthlyStation(int firstYear, int lastYear) {
    tellura_weather_station station;
    station.id = 5;
    for (int year = firstYear; year <= lastYear; ++year)
        for (int month = 1; month <= 12; ++month) {
            weather_month_record& m = station.monthlyYear(year).monthRecord(month);
            m.precip = static_cast<float>(month);
            m.tmn2m = -1.25f;
            m.tmx2m = 20.5f;
        }
    return station;
}

weather_day_record day(int year, int month, int d, float precip) {
    weather_day_record r;
    r.year = static_cast<int16_t>(year);
    r.month = static_cast<int16_t>(month);
    r.day = static_cast<int16_t>(d);
    r.precip = precip;
    r.tmn2m = -2.5f;
    r.tmx2m = 10.25f;
    r.solrad = 300;
    r.rhumid = 55.5f;
    r.windsp = 3.125f;
    return r;
}

TEST(WeatherFile, MonthlyLinesWithAMissingMonth) {
    tellura_weather_station station = monthlyStation(1990, 1990);
    station.monthly[0].months.pop_back();  // December missing
    std::string text = weatherFileText(station, 2);
    EXPECT_EQ(text,
              "prec  1990   1.00   2.00   3.00   4.00   5.00   6.00   7.00   8.00   9.00  10.00  11.00   0.00\n"
              "tmin  1990  -1.25  -1.25  -1.25  -1.25  -1.25  -1.25  -1.25  -1.25  -1.25  -1.25  -1.25   0.00\n"
              "tmax  1990  20.50  20.50  20.50  20.50  20.50  20.50  20.50  20.50  20.50  20.50  20.50   0.00\n");
    EXPECT_EQ(weatherFileText(station, 1), text);
    EXPECT_EQ(weatherFileText(station, 5), text);
}

TEST(WeatherFile, DailyLinesAndTheDayCounter) {
    tellura_weather_station station;
    station.dailyYear(2001).days = {day(2001, 1, 1, 0.5f), day(2001, 1, 3, 0)};  // 2 January missing
    station.dailyYear(2002).days = {day(2002, 12, 31, 1)};
    EXPECT_EQ(weatherFileText(station, 4),
              "1 1 2001 1 10.250 -2.500 0.500 300.000 55.500 3.125\n"
              "3 1 2001 2 10.250 -2.500 0.000 300.000 55.500 3.125\n"
              "31 12 2002 1 10.250 -2.500 1.000 300.000 55.500 3.125\n");
    EXPECT_EQ(weatherFileText(station, 6), weatherFileText(station, 4));
    EXPECT_EQ(weatherFileText(station, 3), "");  // monthly releases: no monthly data, nothing
}

// The year after a block is needed too; a daily release checks its daily data,
// release 6 its monthly data.
TEST(WeatherCoverage, EachMissingYearIsWarnedOfAtMostTenTimesPerBlock) {
    tellura_weather_station station = monthlyStation(2000, 2005);
    station.dailyYear(2000).days = {day(2000, 1, 1, 0)};
    const std::string situation =
        " will run with existing daily weather data. Check if these reflect your modeling "
        "situation.\nData must exist through the year after event block.\n";
    const struct {
        int lastYear, version, block;
        std::string messages;
    } cases[] = {
        {2005, 3, 2,
         "WARNING, no monthly historical weather data for year 2006 in block 2. Tellura" + situation +
             "Tellura will run with exisiting daily weather data. Check if these reflect your modeling situation.\n"},
        {2004, 1, 1, ""},
        {2000, 4, 3, "WARNING, no daily historical weather data for year 2001 in block 3. Diurna" + situation},
        {2000, 6, 3, ""},
    };
    for (const auto& c : cases) {
        sb::message_sink messages;
        EXPECT_TRUE(checkWeatherCoverage(station, 2000, c.lastYear, c.version, c.block, messages));
        EXPECT_EQ(messages.text(), c.messages) << "release " << c.version;
    }
    tellura_weather_station empty;
    empty.monthlyYear(1995);  // a year record without months counts as missing
    sb::message_sink messages;
    checkWeatherCoverage(empty, 1990, 2010, 2, 1, messages);
    size_t count = 0;
    for (size_t at = 0; (at = messages.text().find("WARNING, ", at)) != std::string::npos; ++at) ++count;
    EXPECT_EQ(count, 10u);
    EXPECT_NE(messages.text().find("for year 1999 in block 1."), std::string::npos);
    EXPECT_EQ(messages.text().find("for year 2000 in block 1."), std::string::npos);
    EXPECT_EQ(messages.text().find("Data must exist"), std::string::npos);
}

}  // namespace
