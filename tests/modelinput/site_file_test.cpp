// The site file and sitepar.in: version rules, exact lines, and the importers.
#include <gtest/gtest.h>

#include "golden_setup.h"
#include "modelinput/profile_values.h"
#include "modelinput/site_file.h"
#include "app/text_file.h"
#include "test_support.h"

using namespace sb;

namespace {

bool hasLine(const std::string& text, const std::string& line) {
    return ("\n" + text).find("\n" + line + "\n") != std::string::npos;
}

class SiteFileTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(sbtest::loadGoldenSetup(setup)); }
    const tellura_soil* soil() const { return &setup.soils.soils.front(); }
    const tellura_weather_station* station() const { return setup.stations.find(7); }
    std::string text(int version) const { return siteFileText(setup.record, version, soil(), station()); }
    record_sources sources() const { return {setup.record, soil(), station(), shippedReleaseProfile(4)}; }
    std::string sitepar() const {
        sb::message_sink errors;
        std::string out = siteparText(sources(), errors);
        EXPECT_EQ(errors.text(), "");
        return out;
    }
    sbtest::golden_setup setup;
    sbtest::temp_dir dir;
};

TEST_F(SiteFileTest, MissingSoilAndStationAreWarnedAndWrittenAsZero) {
    setup.record.row.setNumber("Soil ID", 77);
    setup.record.row.setNumber("Weather ID", 78);
    sb::message_sink errors;
    ASSERT_TRUE(writeSiteFile(setup.record, shippedReleaseProfile(3), dir.file("sbsite.100"), setup.soils,
                              setup.stations, errors));
    EXPECT_EQ(errors.text(),
              "WARNING, soil 77 of record 42 not found, site file soil values written as zero.\n"
              "WARNING, weather station 78 of record 42 not found, site file climate values written as zero.\n");
    std::string site = sbtest::readFile(dir.file("sbsite.100"));
    EXPECT_TRUE(hasLine(site, "0.00000        PRECIP(1)"));
    EXPECT_TRUE(hasLine(site, "0.00000        SAND"));

    setup.record.row.setNumber("Weather ID", 12);  // a station without monthly means
    errors.clear();
    writeSiteFile(setup.record, shippedReleaseProfile(3), dir.file("sbsite.100"), setup.soils, setup.stations, errors);
    EXPECT_NE(errors.text().find("WARNING, weather station 12 has no monthly climate means, site file climate values "
                                 "written as zero.\n"),
              std::string::npos)
        << errors;
}

// A pair as wide as the field or wider is not padded.
TEST_F(SiteFileTest, SiteparPairWiderThanItsFieldIsNotPadded) {
    setup.record.site.setNumber("TBOTMN", -1234.5);
    setup.record.site.setNumber("TBOTMX", 12345.5);
    EXPECT_NE(sitepar().find("\n-1234.5 12345.5min and max"), std::string::npos);
}

TEST_F(SiteFileTest, SiteparMonthsOutOfOrder) {
    std::string text = sitepar();
    size_t at = text.find("\n5  0\n");
    ASSERT_NE(at, std::string::npos);
    text.replace(at, 6, "\n6  1\n");
    sbtest::writeFile(dir.file("sitepar.in"), text);
    tellura_control_record back;
    back.site.setFlag(back.site.column("WATERTABLE(7)"), false);
    sb::message_sink messages;
    importSitepar(dir.file("sitepar.in"), back, shippedReleaseProfile(4), messages);
    EXPECT_NE(messages.text().find("ERROR, WATERTABLE month out of order in site parameters file.\n"),
              std::string::npos);
    EXPECT_FALSE(back.site.flag(back.site.column("WATERTABLE(7)")));  // nothing stored after the bad month
    EXPECT_EQ(back.site.number("CLDCOV(12)"), 52);                    // later lines still in place

    sb::message_sink missing;
    EXPECT_FALSE(importSitepar(dir.file("none.in"), back, shippedReleaseProfile(4), missing));
    EXPECT_EQ(missing, "ERROR, cannot open site parameters file \"" + dir.file("none.in") + "\"\n");
}

// Every release's site file read back (soil names to the soil, climate names
// to the station) writes itself again to the byte.
TEST_F(SiteFileTest, SiteFileRoundTripsThroughImportForEveryVersion) {
    for (int version = 1; version <= 6; ++version) {
        sbtest::writeFile(dir.file("site.100"), text(version));
        tellura_control_record back;
        tellura_soil soilBack;
        tellura_weather_station stationBack;
        sb::message_sink messages;
        ASSERT_TRUE(importSiteFile(dir.file("site.100"), back, &soilBack, &stationBack, messages));
        EXPECT_EQ(messages.text(), "Imported site data from \"" + dir.file("site.100") + "\"\n");
        EXPECT_EQ(back.site.number("ID"), tellura_control_record().site.number("ID"));  // the header is no ID line
        back.setId(42);
        EXPECT_EQ(siteFileText(back, version, &soilBack, &stationBack), text(version)) << "version " << version;
    }
    // Without a soil and a station their names are passed over; a file without
    // climate lines leaves a station without means.
    sbtest::writeFile(dir.file("noclimate.100"), "X  no climate\n1.0    SAND\n");
    tellura_control_record back;
    tellura_weather_station none;
    sb::message_sink messages;
    ASSERT_TRUE(importSiteFile(dir.file("site.100"), back, nullptr, nullptr, messages));
    EXPECT_FLOAT_EQ(back.row.number("Latitude"), 40.5f);
    importSiteFile(dir.file("noclimate.100"), back, nullptr, &none, messages);
    EXPECT_FALSE(none.hasMeans);

    sb::message_sink missing;
    EXPECT_FALSE(importSiteFile(dir.file("none.100"), back, nullptr, nullptr, missing));
    EXPECT_EQ(missing, "ERROR, cannot open site file \"" + dir.file("none.100") + "\"\n");
}

}  // namespace
