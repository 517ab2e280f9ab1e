// A failed import keeps all that was there: every line is checked before
// anything is taken, and a file with one bad line (a "nan", a cut line,
// garbage, nothing at all) leaves the station or the soil exactly as it was.
#include <gtest/gtest.h>

#include <functional>

#include "app/text_format.h"
#include "records/soil_layer_file.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"
#include "test_support.h"

namespace {

using namespace sb;

// A station with a day and a month of history, and a soil with two layers: what must survive.
tellura_weather_station heldStation() {
    tellura_weather_station s;
    s.id = 3;
    s.daily.push_back({1990, {weather_day_record{}}});
    s.daily[0].days[0].year = 1990, s.daily[0].days[0].month = 1, s.daily[0].days[0].day = 1;
    s.daily[0].days[0].tmx2m = 7.5f;
    s.monthlyYear(1990).monthRecord(1).precip = 3.25f;
    return s;
}

tellura_soil heldSoil() {
    tellura_soil soil;
    soil.setSoilId(4);
    sb::message_sink errors;
    EXPECT_TRUE(readSoilLayerText("0 10 1.3 0.3 0.1\n10 25 1.4 0.3 0.1\n", "held.in", soil, errors)) << errors;
    return soil;
}

bool sameStation(const tellura_weather_station& a, const tellura_weather_station& b) {
    if (a.daily.size() != b.daily.size() || a.monthly.size() != b.monthly.size()) return false;
    for (size_t y = 0; y < a.daily.size(); ++y)
        if (a.daily[y].days.size() != b.daily[y].days.size() || a.daily[y].days[0].tmx2m != b.daily[y].days[0].tmx2m)
            return false;
    return a.monthly.empty() || a.monthly[0].months[0].precip == b.monthly[0].months[0].precip;
}

enum class target { daily, monthly, soil };

struct bad_file {
    const char* what;
    target into;
    std::string text;
    const char* message;  // the start of the message that names the file and line
};

const std::string kGoodDay = "2 1 1990 2 5.0 -1.0 0.0\n";
const std::string kGoodMonth = "prec  1991 1 2 3 4 5 6 7 8 9 10 11 12\n";

const bad_file kBadFiles[] = {
    {"a nan among good days", target::daily, kGoodDay + "3 1 1990 3 nan -3 0.0\n" + kGoodDay,
     "ERROR, line 2 of daily weather file \"f\""},
    {"an infinite value", target::daily, "3 1 1990 3 1e999 -3 0.0\n", "ERROR, line 1 of daily weather file \"f\""},
    {"a line cut short", target::daily, kGoodDay + "4 1 19",
     "ERROR, line 2 of daily weather file \"f\" is not \"day month year day-of-year tmax tmin precipitation "
     "[solrad rhumid windsp]\": \"4 1 19\"\nNothing imported from \"f\".\n"},
    {"a day far out of range", target::daily, "1e300 1 1952 1 6.70 0.00 0.03\n",
     "ERROR, line 1 of daily weather file \"f\""},
    {"a year that does not fit", target::daily, "1 1 99999 1 5 1 0\n", "ERROR, line 1 of daily weather file \"f\""},
    {"garbage", target::daily, "\x01\x02garbage\xff\n", "ERROR, line 1 of daily weather file \"f\""},
    {"a nan month", target::monthly, kGoodMonth + "prec  1992 1 2 nan 4 5 6 7 8 9 10 11 12\n",
     "ERROR, a year (0 to 9999) and twelve monthly values expected in weather file: \"prec  1992"},
    {"an unknown keyword", target::monthly, kGoodMonth + "snow  1991 1 2 3 4 5 6 7 8 9 10 11 12\n",
     "ERROR, unknown text in weather file: \"snow  1991"},
    {"a month line cut short", target::monthly, "tmax  1991 1 2 3", "ERROR, a year (0 to 9999)"},
    {"an empty layer file", target::soil, "", "ERROR, no soil layers in soil file \"f\".\n"},
    {"blank lines only", target::soil, "\n  \n\t\n", "ERROR, no soil layers in soil file \"f\".\n"},
    {"garbage layers", target::soil, "garbage\x01 here\n", "ERROR, line 1 of soil layer file \"f\": \"garbage"},
    {"a nan layer value", target::soil, "0 10 1.3 nan 0.1\n", "ERROR, line 1 of soil layer file \"f\": \"nan\""},
    {"a layer without its depth", target::soil, "0 10 1.3\n10\n", "ERROR, line 2 of soil layer file \"f\" has no"},
    {"depths going up", target::soil, "0 20 1.3\n20 10 1.3\n", "ERROR, line 2 of soil layer file \"f\": the lower"},
    {"a depth beyond 16 bits", target::soil, "0 40000 1.3\n", "ERROR, line 1 of soil layer file \"f\": the lower"},
};

TEST(FailedImports, ABadLineLeavesTheStationOrSoilAsItWas) {
    sbtest::temp_dir dir;
    for (const bad_file& bad : kBadFiles) {
        SCOPED_TRACE(bad.what);
        const std::string path = dir.file("f");
        sbtest::writeFile(path, bad.text);
        sb::message_sink messages;
        tellura_weather_station station = heldStation();
        tellura_soil soil = heldSoil();
        bool imported = false;
        switch (bad.into) {
            case target::daily:
                imported = readDailyWeatherText(bad.text, "f", station, messages);
                break;
            case target::monthly:
                imported = readMonthlyWeatherFile(path, station, messages);
                break;
            case target::soil:
                imported = readSoilLayerText(bad.text, "f", soil, messages);
                break;
        }
        EXPECT_FALSE(imported);
        EXPECT_NE(messages.text().find(bad.message), std::string::npos) << messages;
        EXPECT_TRUE(sameStation(station, heldStation()));
        const tellura_soil held = heldSoil();
        EXPECT_EQ(soil.layerDepths(), held.layerDepths());
        EXPECT_FLOAT_EQ(soil.layers[1].value("Bulk Density"), 1.4f);
        EXPECT_EQ(soil.value("Number of Layers"), 2);
    }
}

}  // namespace
