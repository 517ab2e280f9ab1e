#include <gtest/gtest.h>

#include "app/text_format.h"
#include "records/tellura_weather_station.h"
#include "records_test_project.h"

namespace {

using namespace sb;

tellura_weather_station station(int32_t id, std::string description = "Test") {
    tellura_weather_station s;
    s.id = id;
    s.description = std::move(description);
    return s;
}

// The keyword is known by its fourth letter; values of seven characters, which
// leave no blank between them, are read by column.
TEST(MonthlyWeatherImport, KeywordByItsFourthLetterAndTouchingValuesByColumn) {
    sbtest::temp_dir dir;
    std::string path = dir.file("monthly.wth");
    sbtest::writeFile(
        path,
        "prec  1990   1.00   2.00   3.00   4.00   5.00   6.00   7.00   8.00   9.00  10.00  11.00  12.00\r\n"
        "TMIN  1990  -1.00  -2.00  -3.00  -4.00  -5.00  -6.00  -7.00  -8.00  -9.00 -10.00 -11.00 -12.00\r\n"
        "tmax  1990  21.00  22.00  23.00  24.00  25.00  26.00  27.00  28.00  29.00  30.00  31.00  32.00\r\n"
        "RAIC  1991 1 2 3 4 5 6 7 8 9 10 11 12\n"
        "\n" +
            strprintf("prec  1995%7.2f%7.2f%7.2f%7.2f%7.2f%7.2f%7.2f%7.2f%7.2f%7.2f%7.2f%7.2f\n", 1234.5, 2345.25, 1.,
                      2., 3., 4., 5., 6., 7., 8., 9., 10.));
    tellura_weather_station s = station(4);
    sb::message_sink messages;
    EXPECT_TRUE(readMonthlyWeatherFile(path, s, messages));
    EXPECT_EQ(messages.text(), "5 rows imported.\nImported 36 records from \"" + path + "\".\n");
    ASSERT_EQ(s.monthly.size(), 3u);
    EXPECT_EQ(s.monthly[0].year, 1990);
    ASSERT_EQ(s.monthly[0].months.size(), 12u);
    EXPECT_FLOAT_EQ(s.monthly[0].months[11].precip, 12.0f);
    EXPECT_FLOAT_EQ(s.monthly[0].months[11].tmn2m, -12.0f);
    EXPECT_FLOAT_EQ(s.monthly[0].months[0].tmx2m, 21.0f);
    EXPECT_FLOAT_EQ(s.monthly[1].months[4].precip, 5.0f);  // "RAIC" is precipitation too
    EXPECT_FLOAT_EQ(s.monthly[1].months[4].tmx2m, 0.0f);
    EXPECT_FLOAT_EQ(s.monthly[2].months[0].precip, 1234.5f);
    EXPECT_FLOAT_EQ(s.monthly[2].months[1].precip, 2345.25f);
    EXPECT_FLOAT_EQ(s.monthly[2].months[11].precip, 10.0f);
    messages.clear();
    EXPECT_FALSE(readMonthlyWeatherFile("/nonexistent/w.wth", s, messages));
    EXPECT_EQ(messages.text(), "ERROR, unable to open weather file: \"/nonexistent/w.wth\"\n");
}

// Tab or blank separated, the last three drivers optional, tmax before tmin.
TEST(DailyWeatherImport, ModelLayoutAndTheDayCount) {
    tellura_weather_station s = station(2);
    sb::message_sink messages;
    EXPECT_TRUE(readDailyWeatherText("1 1 2001 1 10.5 -2.5 0.3\r\n2\t1\t2002\t2\t11.0\t-1.0\t0.0\t250.5\t60.0\t2.5",
                                     "d.wth", s, messages));
    EXPECT_EQ(messages.text(), "2 days read, from years 2001 to 2002.\n");
    ASSERT_EQ(s.daily.size(), 2u);
    EXPECT_FLOAT_EQ(s.daily[0].days[0].precip, 0.3f);
    EXPECT_FLOAT_EQ(s.daily[1].days[0].tmx2m, 11.0f);
    EXPECT_FLOAT_EQ(s.daily[1].days[0].windsp, 2.5f);
}

// --- Storage ---------------------------------------------------------------

using WeatherStorage = sbtest::project_test;

TEST_F(WeatherStorage, TheStationListReplacesAllStationsButKeepsHistory) {
    tellura_weather_station old = station(1, "Old");
    old.hasMeans = true;
    old.dailyYear(2000).days.push_back({2000, 1, 1, 1, 2, 3, 4, 5, 6});
    ASSERT_TRUE(saveWeatherStation(project.db(), old, errors));
    ASSERT_TRUE(saveDailyHistory(project.db(), old, errors));
    tellura_weather_stations list;
    list.stations = {station(3, "Three"), station(2, "Two")};
    list.stations[1].setClimateMean("TMX2M(7)", 31.5, errors);
    ASSERT_TRUE(saveWeatherStations(project.db(), list, errors)) << errors;
    tellura_weather_stations read;
    ASSERT_TRUE(loadWeatherStations(project.db(), read, errors)) << errors;
    ASSERT_EQ(read.stations.size(), 2u);
    EXPECT_EQ(read.stations[0].description, "Two");
    EXPECT_TRUE(read.stations[0].hasMeans);
    EXPECT_FLOAT_EQ(read.stations[0].means[6].tmx2m, 31.5f);
    EXPECT_FALSE(read.stations[1].hasMeans);
    ASSERT_TRUE(loadDailyHistory(project.db(), old, errors));
    EXPECT_EQ(old.daily.size(), 1u);
}

// An unknown station, a month out of bounds and a day twice are refused, naming the table.
TEST_F(WeatherStorage, BadHistoryIsRefused) {
    tellura_weather_station unknown = station(99);
    unknown.monthlyYear(1990).monthRecord(1).precip = 1;
    EXPECT_FALSE(saveMonthlyHistory(project.db(), unknown, errors));
    EXPECT_EQ(errors.text(), "ERROR, weather station 99 not found.\n");

    tellura_weather_station s = station(5);
    s.monthlyYear(1990).monthRecord(12).precip = 1;
    s.monthlyYear(1990).monthRecord(13).precip = 2;
    errors.clear();
    ASSERT_TRUE(saveWeatherStation(project.db(), s, errors));
    ASSERT_TRUE(saveMonthlyHistory(project.db(), s, errors)) << errors;
    tellura_weather_station read = station(5);
    EXPECT_FALSE(loadMonthlyHistory(project.db(), read, errors));
    EXPECT_EQ(errors.text(), "ERROR, month out of bounds in table [Weather Historical Monthly]\n");
    ASSERT_EQ(read.monthly.size(), 1u);
    ASSERT_EQ(read.monthly[0].months.size(), 1u);
    EXPECT_EQ(read.monthly[0].months[0].month, 12);

    weather_day_record d;
    d.year = 2000;
    s.daily.push_back({2000, {d, d}});
    errors.clear();
    EXPECT_FALSE(saveDailyHistory(project.db(), s, errors));
    EXPECT_EQ(errors.text().rfind("ERROR, unable to insert into table [Weather Historical Daily]\n", 0), 0u) << errors;
    project.dropTable(table_id::weather_historical_daily);
    errors.clear();
    s.daily[0].days.pop_back();
    EXPECT_FALSE(saveDailyHistory(project.db(), s, errors));
    EXPECT_EQ(errors.text().rfind("ERROR, unable to delete from [Weather Historical Daily]\n"
                                  "Unable to open table [Weather Historical Daily]\n",
                                  0),
              0u)
        << errors;
}

}  // namespace
