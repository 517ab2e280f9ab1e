// The schedule: header options, event line forms per release, weather
// gathering, and reading schedules back (ours and the model's own).
#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

#include "golden_setup.h"
#include "modelinput/profile_values.h"
#include "modelinput/schedule_file.h"
#include "app/text_file.h"
#include "test_support.h"

using namespace sb;

namespace {

bool hasLine(const std::string& text, const std::string& line) {
    return ("\n" + text).find("\n" + line + "\n") != std::string::npos;
}

tellura_event event(int year, int month, int day, int type, std::string item = {}) {
    tellura_event e;
    e.year = static_cast<int16_t>(year);
    e.month = static_cast<uint8_t>(month);
    e.day = static_cast<uint8_t>(day);
    e.type = static_cast<uint8_t>(type);
    e.item = std::move(item);
    return e;
}

tellura_event_block block(int first, int last, int choice = kWeatherMean, int32_t station = 0) {
    tellura_event_block b;
    b.firstYear = static_cast<int16_t>(first);
    b.lastYear = static_cast<int16_t>(last);
    b.outputStartingYear = static_cast<int16_t>(first);
    b.weatherChoice = static_cast<uint8_t>(choice);
    b.weatherId = station;
    return b;
}

class ScheduleTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(sbtest::loadGoldenSetup(setup)); }
    std::string text(int version) {
        return scheduleFileText(setup.record, setup.options.list(option_kind::crop),
                                setup.options.list(option_kind::tree), version, errors);
    }
    sbtest::golden_setup setup;
    sbtest::temp_dir dir;
    sb::message_sink errors;
};

// The golden files pin the header of the golden record; here the forms other values choose.
TEST_F(ScheduleTest, HeaderOptionsTurnedOffAndOn) {
    setup.record.row.setNumber("CO2SYS", 0);
    setup.record.row.setNumber("PHSYS", 0);
    setup.record.row.setNumber("STSYS", 2);
    setup.record.row.setNumber("STSTART", 1999);
    setup.record.row.setNumber("STAMT", 2.5);
    setup.record.row.setFlag(setup.record.row.column("Simulate Microcosm"), true);
    std::string changed = text(4);
    EXPECT_TRUE(hasLine(changed, "1             Microcosm"));
    EXPECT_TRUE(hasLine(changed, "-1            CO2 Systems"));
    EXPECT_TRUE(hasLine(changed, "-1            pH Shift"));
    EXPECT_TRUE(
        hasLine(changed, "2              Soil warming\n1999          Soil Warming Year\n2.50000        Soil Warming"));
}

TEST_F(ScheduleTest, InitialCropAndTree) {
    setup.record.row.setText("Initial Crop", "");
    setup.record.row.setText("Initial Tree", "");
    EXPECT_TRUE(hasLine(text(2), "C6            Initial Crop\n              Initial Tree"));  // the first crop
    EXPECT_EQ(errors.text(), "");
    setup.record.row.setText("Initial Crop", "NOPE");
    setup.record.row.setText("Initial Tree", "GONE");
    std::string sch = text(2);
    EXPECT_TRUE(hasLine(sch, "C6            Initial Crop"));
    EXPECT_EQ(errors.text(),
              "WARNING, initial crop \"NOPE\" not found in the crop list, \"C6\" written instead.\n"
              "WARNING, initial tree \"GONE\" not found in the tree list, no initial tree written.\n");
    setup.options.list(option_kind::crop).clear();
    setup.options.list(option_kind::crop).addRecord("LONGCROPNAME");
    setup.record.row.setText("Initial Crop", "");
    EXPECT_TRUE(hasLine(text(2), "LONGCROP      Initial Crop"));  // cut to 8
    setup.options.list(option_kind::crop).clear();
    EXPECT_TRUE(hasLine(text(2), "G3            Initial crop"));
}

TEST_F(ScheduleTest, OutputIntervalAndWeatherChoiceForms) {
    tellura_event_block b = block(2000, 2001, kWeatherFile, 7);
    b.outputInterval = 1;
    setup.record.blocks = {b, block(2002, 2003, kWeatherContinue, 7), block(2004, 2004, 9)};
    std::string v5 = text(5);
    EXPECT_TRUE(hasLine(v5, "1             Output interval\nF             Weather choice\nsb000007.wth\n-999 -999 X"));
    EXPECT_TRUE(hasLine(v5, "C             Weather choice\n-999 -999 X"));
    EXPECT_TRUE(hasLine(v5, "12            Output interval\n-999 -999 X"));  // unknown choice: no weather line
    EXPECT_TRUE(hasLine(text(1), "0.08333       Output interval"));
}

TEST_F(ScheduleTest, LongItemsAreCutAndReported) {
    tellura_event_block b = block(2000, 2000);
    b.events = {event(1, 1, 1, kEventOmad, "ABCDEFGHIJKLMNOPQRSTUVWXY")};
    setup.record.blocks = {b};
    EXPECT_NE(text(3).find("01  01 OMAD ABCDEFGHIJKLMNOPQRST\n"), std::string::npos);
    EXPECT_EQ(errors.text(),
              "WARNING, item \"ABCDEFGHIJKLMNOPQRSTUVWXY\" of a OMAD event in block 1 cut to "
              "\"ABCDEFGHIJKLMNOPQRST\".\n");
}

TEST_F(ScheduleTest, WeatherGatheringMakesOneFilePerStation) {
    setup.record.blocks = {block(1961, 1963, kWeatherFile, 7), block(1964, 1965, kWeatherMean),
                           block(1966, 1970, kWeatherFile, 7), block(1971, 1971, kWeatherContinue, 99)};
    std::vector<tellura_weather_recorded_for_block> gathered =
        gatherBlockWeather(setup.record.blocks, setup.stations, errors);
    ASSERT_EQ(gathered.size(), 1u);
    EXPECT_EQ(gathered[0].stationId(), 7);
    EXPECT_EQ(gathered[0].firstYear(), 1961);
    EXPECT_EQ(gathered[0].lastYear(), 1970);
    EXPECT_EQ(errors.text(), "ERROR, weather station not found for event block.\n");

    errors.clear();
    std::string runDir = dir.path() + "/";
    ASSERT_TRUE(writeScheduleFile(setup.record, setup.options.list(option_kind::crop),
                                  setup.options.list(option_kind::tree), shippedReleaseProfile(2), runDir + "sb.sch",
                                  runDir, setup.stations, errors));
    EXPECT_TRUE(std::filesystem::is_regular_file(runDir + "sb000007.wth"));
    EXPECT_FALSE(std::filesystem::exists(runDir + "sb000099.wth"));
    EXPECT_EQ(errors.text(), "ERROR, weather station not found for event block.\n");
}

TEST_F(ScheduleTest, ReadingReportsBrokenSchedules) {
    const std::string header = "1950 starting year\nYear Month Option\n1  Block #  x\n";
    const std::string block = header + "1950 Last year\n1 r\n1950 o\n12 m\n1 i\nM  Weather choice\n";
    const struct {
        std::string text;
        const char* errors;
    } cases[] = {
        {"1950 starting year\n", "ERROR, no \"Year Month Option\" line in schedule file \"a.sch\".\n"},
        {block + "01 01 CROP C6\n", "ERROR, block 1 of schedule file \"a.sch\" has no \"-999 -999 X\" end.\n"},
        {header + "70000 Last year\n",
         "ERROR, line 4 of schedule file \"a.sch\": last year 70000 is out of range (-32768 to 32767).\n"},
        {block + "01 01 PLTM\n70000 01 CROP C6\n-999 -999 X\n",
         "ERROR, line 11 of schedule file \"a.sch\": year 70000 is out of range (-32768 to 32767).\n"},
    };
    tellura_control_record record;
    schedule_references references;
    for (const auto& c : cases) {
        errors.clear();
        EXPECT_FALSE(readScheduleText(c.text, "a.sch", 3, record, references, errors)) << c.text;
        EXPECT_EQ(errors, c.errors);
    }
    errors.clear();
    EXPECT_TRUE(
        readScheduleText(block + "01 01 PLOW\n01 02 PLTM\n-999 -999 X\n", "c.sch", 3, record, references, errors));
    EXPECT_EQ(errors.text(), "ERROR, unknown operation name: \"PLOW\" Year=1 Month=1.\n");
    ASSERT_EQ(record.blocks.size(), 1u);
    ASSERT_EQ(record.blocks[0].events.size(), 1u);
    EXPECT_EQ(record.blocks[0].events[0].type, kEventPltm);
    EXPECT_FALSE(readScheduleFile(dir.file("none.sch"), 2, record, references, errors));
    EXPECT_NE(errors.text().find("ERROR, can't open file \"" + dir.file("none.sch") + "\".\n"), std::string::npos);
}

TEST(ScheduleSamples, ReadsTheModelsOwnSchedules) {
    SB_REQUIRE_SAMPLES();
    tellura_control_record record;
    schedule_references references;
    sb::message_sink errors;
    ASSERT_TRUE(
        readScheduleFile(sbtest::samplesDir() + "/diurna-2012/inputs/example.sch", 4, record, references, errors))
        << errors;
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(references.siteFile, "site2012.100");
    ASSERT_EQ(record.blocks.size(), 4u);
    EXPECT_EQ(record.blocks[0].description, "Initial grass");
    EXPECT_EQ(record.blocks[0].firstYear, 1);
    EXPECT_EQ(record.blocks[1].firstYear, 1920);
    EXPECT_EQ(record.blocks[3].lastYear, 2006);
    EXPECT_EQ(references.weatherFiles[0], "weather.wth");
    ASSERT_EQ(record.blocks[0].events.size(), 13u);
    EXPECT_EQ(record.blocks[0].events[0].item, "G3N");  // item on the next line
    EXPECT_EQ(record.blocks[0].events[1].month, 1);
    EXPECT_EQ(record.blocks[0].events[2].month, 2);  // day 46 = 15 February
    EXPECT_EQ(record.blocks[0].events[2].day, 15);
    ASSERT_EQ(record.blocks[1].events.size(), 11u);  // blank lines between events
    EXPECT_EQ(record.blocks[1].events[1].item, "N30.0");
    EXPECT_EQ(record.initialCrop(), "G3N");

    tellura_control_record grass;
    errors.clear();
    ASSERT_TRUE(readScheduleFile(sbtest::samplesDir() + "/diurna45-2008-inputs/sch_TESTgrass.sch", 4, grass, references,
                                 errors))
        << errors;
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(grass.row.number("Ninput"), 2);
    EXPECT_EQ(grass.row.number("Nstart"), 1900);
    EXPECT_EQ(grass.initialCrop(), "TMC3");
    ASSERT_EQ(grass.blocks.size(), 1u);
    EXPECT_EQ(grass.blocks[0].repeatingYears, 8);
    EXPECT_EQ(references.weatherFiles[0], "TEST_Daily.wth");
    EXPECT_EQ(grass.blocks[0].events.size(), 33u);    // eight years of four events, and a fire
    EXPECT_EQ(grass.blocks[0].events[31].item, "M");  // "FIRE" with its item on the next line
}

}  // namespace
