#include <gtest/gtest.h>

#include "app/text_format.h"
#include "records/tellura_weather_station.h"
#include "records_test_project.h"

namespace {

using namespace sb;
using sbtest::records_project;

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
    std::string messages;
    EXPECT_TRUE(importMonthlyWeatherFile(path, s, messages));
    EXPECT_EQ(messages, "5 rows imported.\nImported 36 records from \"" + path + "\".\n");
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
    EXPECT_FALSE(importMonthlyWeatherFile("/nonexistent/w.wth", s, messages));
    EXPECT_EQ(messages, "ERROR, unable to open weather file: \"/nonexistent/w.wth\"\n");
}

TEST(DailyWeatherImport, ModelLayoutWithOptionalDrivers) {
    tellura_weather_station s = station(2);
    std::string messages;
    EXPECT_TRUE(
        importDailyWeatherText("1 1 2001 1 10.5 -2.5 0.3\r\n"
                               "2\t1\t2001\t2\t11.0\t-1.0\t0.0\t250.5\t60.0\t2.5\n"
                               "31 12 2002 365 5 1 0",
                               "d.wth", s, messages));
    EXPECT_EQ(messages, "3 days read, from years 2001 to 2002.\n");
    ASSERT_EQ(s.daily.size(), 2u);
    ASSERT_EQ(s.daily[0].days.size(), 2u);
    const weather_day_record& d = s.daily[0].days[1];
    EXPECT_EQ(d.year, 2001);
    EXPECT_EQ(d.month, 1);
    EXPECT_EQ(d.day, 2);
    EXPECT_FLOAT_EQ(d.tmx2m, 11.0f);  // the file gives tmax before tmin
    EXPECT_FLOAT_EQ(d.tmn2m, -1.0f);
    EXPECT_FLOAT_EQ(d.solrad, 250.5f);
    EXPECT_FLOAT_EQ(d.rhumid, 60.0f);
    EXPECT_FLOAT_EQ(d.windsp, 2.5f);
    EXPECT_FLOAT_EQ(s.daily[0].days[0].precip, 0.3f);
    EXPECT_EQ(s.daily[1].days[0].month, 12);
}

// A bad line is named, with the layout the line should have, and the file adds
// nothing. A day, month or year far out of range (found by fuzzing) is refused,
// never cast into a small number (such a cast is undefined; the sanitizer stops on it).
TEST(DailyWeatherImport, BadLinesAreNamedAndImportingTwiceDoesNotDoubleDays) {
    const std::string good = "1 1 2001 1 10 0 0\n";
    const struct {
        std::string text;
        std::vector<const char*> badLines;  // lines 2, 3, ...
    } cases[] = {
        {good + "1 13 2001 1 10 0 0\n1 1 2001\nx y z\n", {"1 13 2001 1 10 0 0", "1 1 2001", "x y z"}},
        {good + "1e300 1 1952 1 6.70 0.00 0.03\n", {"1e300 1 1952 1 6.70 0.00 0.03"}},
        {good + "1 4.44444e+102 1952 1 6.70 0.00 0.03\n", {"1 4.44444e+102 1952 1 6.70 0.00 0.03"}},
        {good + "1 1 196217 1 6.70 0.00 0.03\n", {"1 1 196217 1 6.70 0.00 0.03"}},
        {good + "-1e300 -1e300 1952 1 6.70 0.00 0.03\n", {"-1e300 -1e300 1952 1 6.70 0.00 0.03"}},
    };
    for (const auto& c : cases) {
        tellura_weather_station s = station(2);
        std::string messages, expected;
        for (size_t n = 0; n < c.badLines.size(); ++n)
            expected += strprintf(
                "ERROR, line %zu of daily weather file \"d.wth\" is not \"day month year day-of-year "
                "tmax tmin precipitation [solrad rhumid windsp]\": \"%s\"\n",
                n + 2, c.badLines[n]);
        EXPECT_FALSE(importDailyWeatherText(c.text, "d.wth", s, messages));
        EXPECT_EQ(messages, expected + "Nothing imported from \"d.wth\".\n");
        EXPECT_TRUE(s.daily.empty()) << c.text;
    }
    tellura_weather_station s = station(2);
    std::string messages;
    importDailyWeatherText(good, "d.wth", s, messages);
    importDailyWeatherText("1 1 2001 1 12 0 0\n", "d.wth", s, messages);
    ASSERT_EQ(s.daily.size(), 1u);
    ASSERT_EQ(s.daily[0].days.size(), 1u);
    EXPECT_FLOAT_EQ(s.daily[0].days[0].tmx2m, 12.0f);
    messages.clear();
    importDailyWeatherText("", "empty.wth", s, messages);
    EXPECT_EQ(messages, "0 days read, from years 999999 to -999999.\n");
}

TEST(DailyWeatherImport, RealModelFilesGiveEveryDay) {
    SB_REQUIRE_SAMPLES();
    struct sample {
        const char* file;
        long days;
        size_t years;
        int first, last;
    };
    // The 2012 file lacks 1987 and 1996-1999 and has no line end after its last day.
    for (const sample& f : {sample{"diurna-2012/inputs/weather.wth", 19724, 54, 1952, 2010},
                            sample{"diurna45-2008-inputs/TEST_Daily.wth", 1826, 5, 2002, 2006}}) {
        tellura_weather_station s = station(1);
        std::string messages;
        std::string path = sbtest::samplesDir() + "/" + f.file;
        EXPECT_TRUE(importDailyWeatherFile(path, s, messages)) << messages;
        EXPECT_EQ(messages, strprintf("%ld days read, from years %d to %d.\n", f.days, f.first, f.last));
        EXPECT_EQ(s.daily.size(), f.years);
        size_t total = 0;
        for (const weather_daily_year& y : s.daily) total += y.days.size();
        EXPECT_EQ(static_cast<long>(total), f.days);
    }
}

TEST(ClimateMeans, SetByTheirSiteFileNames) {
    const struct {
        const char* name;
        size_t month;
        float weather_month_means::*field;
    } cases[] = {{"PRECIP(1)", 0, &weather_month_means::precip},
                 {"prcstd(12)", 11, &weather_month_means::prcstd},
                 {"PrcSkw(6)", 5, &weather_month_means::prcskw},
                 {"TMN2M(2)", 1, &weather_month_means::tmn2m},
                 {"TMX2M(12)", 11, &weather_month_means::tmx2m}};
    tellura_weather_station s = station(3);
    std::string errors;
    float value = 0;
    for (const auto& c : cases) {
        EXPECT_TRUE(s.setClimateMean(c.name, value += 1.25f, errors)) << c.name;
        EXPECT_EQ(s.means[c.month].*c.field, value) << c.name;
    }
    EXPECT_TRUE(s.hasMeans);
    EXPECT_EQ(errors, "");
    EXPECT_FALSE(s.setClimateMean("SAND", 0.4, errors));
    EXPECT_TRUE(s.setClimateMean("PRECIP(13)", 1, errors));  // a climate name, refused element
    EXPECT_EQ(errors, "ERROR, exceeds array size: PRECIP\n");
}

TEST(ClimateMeans, TextAndDeleteQuestion) {
    tellura_weather_station s = station(12, "College Station");
    for (int m = 0; m < 12; ++m) s.means[static_cast<size_t>(m)] = {float(m + 1), 0.5f, 0.25f, -float(m), 20.5f};
    std::string text;
    appendClimateMeansText(s, text);
    EXPECT_EQ(text,
              "Weather ID\t12\tCollege Station\n"
              "Precipitation\t1\t2\t3\t4\t5\t6\t7\t8\t9\t10\t11\t12\n"
              "Precipitation STD\t0.5\t0.5\t0.5\t0.5\t0.5\t0.5\t0.5\t0.5\t0.5\t0.5\t0.5\t0.5\n"
              "Precipitation Skew\t0.25\t0.25\t0.25\t0.25\t0.25\t0.25\t0.25\t0.25\t0.25\t0.25\t0.25\t0.25\n"
              "Temperature Min\t0\t-1\t-2\t-3\t-4\t-5\t-6\t-7\t-8\t-9\t-10\t-11\n"
              "Temperature Max\t20.5\t20.5\t20.5\t20.5\t20.5\t20.5\t20.5\t20.5\t20.5\t20.5\t20.5\t20.5\n");
    weather_day_record d;
    d.year = 1998, d.month = 3, d.day = 7;
    EXPECT_EQ(deleteDailyRecordQuestion(12, d), "Delete 12 1998-03-07 ?");
}

// --- Storage ---------------------------------------------------------------

using WeatherStorage = sbtest::project_test;

TEST_F(WeatherStorage, StationsMeansAndHistoryReadBack) {
    tellura_weather_station s = station(8, "Akron");
    for (int m = 0; m < 12; ++m) s.means[static_cast<size_t>(m)] = {float(m) + 0.5f, 1, 2, -3, float(20 + m)};
    s.hasMeans = true;
    importMonthlyWeatherFile("/nonexistent", s, errors);
    errors.clear();
    s.monthlyYear(1990).monthRecord(1).precip = 4.5f;
    s.monthlyYear(1990).monthRecord(2).solrad = 300;
    s.monthlyYear(1991).monthRecord(12).windsp = 3.25f;
    importDailyWeatherText("1 1 2000 1 10 0 1\n2 1 2000 2 11 1 0 200 50 3\n1 1 2001 1 9 -1 0\n", "d", s, errors);
    errors.clear();
    ASSERT_TRUE(saveWeatherStation(project.db(), s, errors)) << errors;
    ASSERT_TRUE(saveWeatherStation(project.db(), station(2, "No means"), errors)) << errors;
    ASSERT_TRUE(saveMonthlyHistory(project.db(), s, errors)) << errors;
    ASSERT_TRUE(saveDailyHistory(project.db(), s, errors)) << errors;

    tellura_weather_stations list;
    ASSERT_TRUE(loadWeatherStations(project.db(), list, errors)) << errors;
    ASSERT_EQ(list.stations.size(), 2u);
    EXPECT_EQ(list.stations[0].id, 2);
    EXPECT_FALSE(list.stations[0].hasMeans);
    tellura_weather_station* read = list.find(8);
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->description, "Akron");
    EXPECT_TRUE(read->hasMeans);
    EXPECT_EQ(read->means, s.means);
    ASSERT_TRUE(loadMonthlyHistory(project.db(), *read, errors)) << errors;
    ASSERT_TRUE(loadDailyHistory(project.db(), *read, errors)) << errors;
    EXPECT_EQ(read->monthly, s.monthly);
    EXPECT_EQ(read->daily, s.daily);

    // Saving again replaces, it does not add.
    s.monthly.pop_back();
    s.daily.pop_back();
    ASSERT_TRUE(saveMonthlyHistory(project.db(), s, errors)) << errors;
    ASSERT_TRUE(saveDailyHistory(project.db(), s, errors)) << errors;
    ASSERT_TRUE(loadMonthlyHistory(project.db(), *read, errors));
    ASSERT_TRUE(loadDailyHistory(project.db(), *read, errors));
    EXPECT_EQ(read->monthly, s.monthly);
    EXPECT_EQ(read->daily, s.daily);

    ASSERT_TRUE(deleteWeatherStation(project.db(), 8, errors)) << errors;
    ASSERT_TRUE(loadWeatherStations(project.db(), list, errors));
    EXPECT_EQ(list.stations.size(), 1u);
    ASSERT_TRUE(loadDailyHistory(project.db(), s, errors));
    EXPECT_TRUE(s.daily.empty());
}

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
    EXPECT_EQ(errors, "ERROR, weather station 99 not found.\n");

    tellura_weather_station s = station(5);
    s.monthlyYear(1990).monthRecord(12).precip = 1;
    s.monthlyYear(1990).monthRecord(13).precip = 2;
    errors.clear();
    ASSERT_TRUE(saveWeatherStation(project.db(), s, errors));
    ASSERT_TRUE(saveMonthlyHistory(project.db(), s, errors)) << errors;
    tellura_weather_station read = station(5);
    EXPECT_FALSE(loadMonthlyHistory(project.db(), read, errors));
    EXPECT_EQ(errors, "ERROR, month out of bounds in table [Weather Historical Monthly]\n");
    ASSERT_EQ(read.monthly.size(), 1u);
    ASSERT_EQ(read.monthly[0].months.size(), 1u);
    EXPECT_EQ(read.monthly[0].months[0].month, 12);

    weather_day_record d;
    d.year = 2000;
    s.daily.push_back({2000, {d, d}});
    errors.clear();
    EXPECT_FALSE(saveDailyHistory(project.db(), s, errors));
    EXPECT_EQ(errors.rfind("ERROR, unable to insert into table [Weather Historical Daily]\n", 0), 0u) << errors;
    project.dropTable(table_id::weather_historical_daily);
    errors.clear();
    s.daily[0].days.pop_back();
    EXPECT_FALSE(saveDailyHistory(project.db(), s, errors));
    EXPECT_EQ(errors.rfind("ERROR, unable to delete from [Weather Historical Daily]\n"
                           "Unable to open table [Weather Historical Daily]\n",
                           0),
              0u)
        << errors;
}

}  // namespace
