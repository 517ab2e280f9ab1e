// The fixed parameter file: version rules, the set-by-name dispatcher and the importer.
#include <gtest/gtest.h>

#include "app/text_format.h"
#include "golden_setup.h"
#include "modelinput/fixed_file.h"
#include "app/text_file.h"
#include "test_support.h"

using namespace sb;

namespace {

bool hasLine(const std::string& text, const std::string& line) {
    return ("\n" + text).find("\n" + line + "\n") != std::string::npos;
}
bool hasName(const std::string& text, const std::string& name) {
    return text.find("     " + name + "\n") != std::string::npos;
}

class FixedFileTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(sbtest::loadGoldenSetup(setup)); }
    std::string text(int version) const { return fixedFileText(setup.record.row, version, &setup.soils.soils.front()); }
    control_record_row& row() { return setup.record.row; }
    sbtest::golden_setup setup;
    sbtest::temp_dir dir;
};

// The golden files pin every line of the golden record; here the forms other values choose.
TEST_F(FixedFileTest, TemperatureAndYesNoForms) {
    // TEFF(4) set: the four-value form for every release.
    EXPECT_TRUE(hasName(text(1), "TEFF(4)"));
    row().setNumber("TEFF(4)", 0);
    EXPECT_FALSE(hasName(text(1), "TEFF(4)"));
    EXPECT_TRUE(hasName(text(3), "TEFF(4)"));  // releases 3 to 5 always read four
    for (int i = 1; i <= 4; ++i) row().setNumber("TEFF(" + std::to_string(i) + ")", 0);
    EXPECT_TRUE(hasName(text(2), "TEFF(1)"));  // TMAX zero too: still the TEFF form
    row().setNumber("TMAX", 30.5);
    std::string tmax = text(2);
    for (const char* name : {"TMAX", "TOPT", "TSHL", "TSHR"}) EXPECT_TRUE(hasName(tmax, name)) << name;
    EXPECT_EQ(tmax.find("TEFF"), std::string::npos);
    EXPECT_LT(tmax.find("TMAX"), tmax.find("TMELT(1)"));
    EXPECT_LT(tmax.find("TMELT(2)"), tmax.find("TOPT"));
    row().setFlag(row().column("TEXEPP(1)"), false);
    EXPECT_TRUE(hasLine(text(3), "0.00000        TEXEPP(1)"));
}

TEST_F(FixedFileTest, DispatcherTriesStationThenSoilThenFixed) {
    sb::message_sink messages;
    tellura_soil soil;
    tellura_weather_station station;
    EXPECT_TRUE(setParameterByName("PRECIP(3)", 4.5, row(), &soil, &station, 1, messages));
    EXPECT_EQ(station.means[2].precip, 4.5f);
    EXPECT_FALSE(setParameterByName("AGPPA", 4.5, row(), &soil, &station, 1, messages));  // only climate with a station
    EXPECT_TRUE(setParameterByName("ADEP(2)", 25, row(), &soil, nullptr, 1, messages));
    EXPECT_EQ(soil.layers[1].depth(), 25);
    EXPECT_TRUE(setParameterByName("AWTL(1)", 0.5, row(), &soil, nullptr, 1, messages));
    EXPECT_FLOAT_EQ(soil.layers[0].number("Transpiration Loss Weighing Factor"), 0.5f);
    EXPECT_FALSE(setParameterByName("ADEP(2)", 25, row(), nullptr, nullptr, 1, messages));  // no soil: not found
    EXPECT_TRUE(setParameterByName("AGPPA", 4.5, row(), &soil, nullptr, 1, messages));
    EXPECT_EQ(row().number("AGPPA"), 4.5);
}

TEST_F(FixedFileTest, ImportFileFormat) {
    sbtest::writeFile(dir.file("fix.100"),
                      "X     Fixed_values\r\n"
                      "*** a comment line that names AGPPA\r\n"
                      "-40.00000         'AGPPA'     \r\n"
                      "7.70000       AGPPB  trailing words\r\n"
                      "12345678901230 BGPPA\r\n"
                      "\r\n"
                      "1.00000           'ANIMPT'\r\n");
    tellura_control_record back;
    back.row.setNumber("ANIMPT", 9);
    sb::message_sink messages;
    ASSERT_TRUE(importFixedFile(back, dir.file("fix.100"), nullptr, 2, messages));
    EXPECT_FLOAT_EQ(back.row.number("AGPPA"), -40.0f);
    EXPECT_FLOAT_EQ(back.row.number("AGPPB"), 7.7f);
    EXPECT_FLOAT_EQ(back.row.number("BGPPA"), 123456789012.0f);  // the value is the first 12 characters
    EXPECT_EQ(back.row.number("ANIMPT"), 9);                     // after the empty line: not read

    sb::message_sink missing;
    EXPECT_FALSE(importFixedFile(back, dir.file("none.100"), nullptr, 2, missing));
    EXPECT_EQ(missing, "ERROR, can't open file " + dir.file("none.100") + ".\n");
}

}  // namespace
