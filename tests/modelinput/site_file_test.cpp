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
    const TelluraSoils* soil() const { return &setup.soils.soils.front(); }
    const TelluraWeatherStations* station() const { return setup.stations.find(7); }
    std::string text(int version) const { return siteFileText(setup.record, version, soil(), station()); }
    record_sources sources() const { return {setup.record, soil(), station(), shippedReleaseProfile(4)}; }
    std::string sitepar() const {
        std::string errors;
        std::string out = siteparText(sources(), errors);
        EXPECT_EQ(errors, "");
        return out;
    }
    sbtest::golden_setup setup;
    sbtest::temp_dir dir;
};

TEST_F(SiteFileTest, VersionRulesForSoilAndOrganicMatter) {
    std::string v4 = text(4);
    EXPECT_TRUE(hasLine(v4, "9              NLAYER"));  // whatever the soil says (12 here)
    EXPECT_TRUE(hasLine(v4, "0.12500        ROCK"));
    EXPECT_TRUE(hasLine(v4, "8.00000        PRECRO"));
    EXPECT_NE(v4.find("     SOM2CI(2,2)\n"), std::string::npos);
    EXPECT_NE(v4.find("     RCES2(2,3)\n"), std::string::npos);
    EXPECT_EQ(v4.find("W1LIG"), std::string::npos);
    EXPECT_EQ(v4.find("*** Enhanced extend parameters"), std::string::npos);

    std::string v3 = text(3);
    EXPECT_TRUE(hasLine(v3, "12             NLAYER"));
    EXPECT_NE(v3.find("ROCK"), std::string::npos);
    EXPECT_NE(v3.find("FRACRO"), std::string::npos);
    EXPECT_NE(v3.find("     SOM2CI(1)\n"), std::string::npos);
    EXPECT_NE(v3.find("     RCES2(3)\n"), std::string::npos);
    EXPECT_EQ(v3.find("SOM2CI(2,"), std::string::npos);

    std::string v1 = text(1);
    EXPECT_EQ(v1.find("ROCK"), std::string::npos);
    EXPECT_EQ(v1.find("PRECRO"), std::string::npos);
    EXPECT_NE(v1.find("     W3LIG\n"), std::string::npos);
    EXPECT_NE(v1.find("*** Enhanced extend parameters\n"), std::string::npos);
    for (int version : {2, 3, 4, 5, 6}) EXPECT_EQ(text(version).find("Enhanced"), std::string::npos) << version;
}

TEST_F(SiteFileTest, LayerArraysAlwaysHaveTenSlots) {
    TelluraSoils small = *soil();
    small.layerCount = 3;
    small.setNumber("Number of Layers", 3);
    std::string site = siteFileText(setup.record, 2, &small, station());
    for (const char* name : {"AWILT(10)", "AFIEL(10)", "MINERL(10,3)", "RWCF(10)"})
        EXPECT_NE(site.find(std::string("     ") + name + "\n"), std::string::npos) << name;
    EXPECT_EQ(site.find("AWILT(11)"), std::string::npos);
    // Slots past the soil's count carry what the soil holds there.
    EXPECT_TRUE(hasLine(site, "10.12500       AWILT(10)"));
}

TEST_F(SiteFileTest, MissingSoilAndStationAreWarnedAndWrittenAsZero) {
    setup.record.row.setNumber("Soil ID", 77);
    setup.record.row.setNumber("Weather ID", 78);
    std::string errors;
    ASSERT_TRUE(writeSiteFile(setup.record, shippedReleaseProfile(3), dir.file("sbsite.100"), setup.soils,
                              setup.stations, errors));
    EXPECT_EQ(errors,
              "WARNING, soil 77 of record 42 not found, site file soil values written as zero.\n"
              "WARNING, weather station 78 of record 42 not found, site file climate values written as zero.\n");
    std::string site = sbtest::readFile(dir.file("sbsite.100"));
    EXPECT_TRUE(hasLine(site, "0.00000        PRECIP(1)"));
    EXPECT_TRUE(hasLine(site, "0.00000        SAND"));

    setup.record.row.setNumber("Weather ID", 12);  // a station without monthly means
    errors.clear();
    writeSiteFile(setup.record, shippedReleaseProfile(3), dir.file("sbsite.100"), setup.soils, setup.stations, errors);
    EXPECT_NE(errors.find("WARNING, weather station 12 has no monthly climate means, site file climate values "
                          "written as zero.\n"),
              std::string::npos)
        << errors;
}

TEST_F(SiteFileTest, SiteparLines) {
    std::string text = sitepar();
    EXPECT_EQ(text.find("timstep"), std::string::npos);
    EXPECT_EQ(
        text.rfind("1              1 = Use extra weather drivers (solrad, rhumid, windsp), 0 = don't use (for PET)\n",
                   0),
        0u);
    EXPECT_TRUE(hasLine(text, "0.5 12.25      min and max temperature for bottom soil layer (degrees C)"));
    EXPECT_TRUE(hasLine(text, "3  1"));   // WATERTABLE(3) set
    EXPECT_TRUE(hasLine(text, "12 52"));  // CLDCOV(12)
    EXPECT_TRUE(
        hasLine(text, "5 300          JDAYEND - turn off respiration restraint on denit between these Julian dates"));
    setup.record.site.setNumber("DMPFLUX", 0.000008);
    EXPECT_TRUE(hasLine(sitepar(), "0.000008       DMPFLUX"));
    // A pair as wide as the field or wider is not padded.
    setup.record.site.setNumber("TBOTMN", -1234.5);
    setup.record.site.setNumber("TBOTMX", 12345.5);
    EXPECT_NE(sitepar().find("\n-1234.5 12345.5min and max"), std::string::npos);

    std::string errors;
    EXPECT_FALSE(writeSitepar(sources(), dir.file("x/sitepar.in"), errors));
    EXPECT_EQ(errors, "ERROR, unable to open 'outfiles' file \"" + dir.file("x/sitepar.in") + "\".\n");
}

TEST_F(SiteFileTest, SiteparReadsBackByPosition) {
    setup.record.site.setNumber("DMPFLUX", 0.000008);
    sbtest::writeFile(dir.file("sitepar.in"), sitepar());
    tellura_control_record back;
    std::string messages;
    ASSERT_TRUE(importSitepar(dir.file("sitepar.in"), back, shippedReleaseProfile(4), messages));
    EXPECT_EQ(messages, "Imported site parameters from \"" + dir.file("sitepar.in") + "\"\n");
    std::vector<std::string> columns{"USEXDRVRS",
                                     "SUBLIMSCALE",
                                     "REFLEC",
                                     "ALBEDO",
                                     "FSWCINIT",
                                     "DMPFLUX",
                                     "HOURS_RAIN",
                                     "DRAINLAG",
                                     "HPOTDEEP",
                                     "KSATDEEP",
                                     "TBOTMN",
                                     "TIMLAG",
                                     "NCOEFF",
                                     "JDAYSTART",
                                     "JDAYEND",
                                     "N2Oadjust_fc",
                                     "N2Oadjust_wp",
                                     "Maximum Daily Nitrification",
                                     "Snow Effect Soil Surface Temp",
                                     "NO3 Mineralization",
                                     "wfpsdnitadj",
                                     "n2n2oadj"};
    for (int month = 1; month <= 12; ++month) {
        columns.push_back("WATERTABLE(" + std::to_string(month) + ")");
        columns.push_back("CLDCOV(" + std::to_string(month) + ")");
    }
    for (const std::string& column : columns)
        EXPECT_FLOAT_EQ(back.site.number(column), setup.record.site.number(column)) << column;
    // The bottom temperatures get the decimals they need to stay exact.
    EXPECT_FLOAT_EQ(back.site.number("TBOTMX"), 12.25f);
}

TEST_F(SiteFileTest, SiteparMonthsOutOfOrder) {
    std::string text = sitepar();
    size_t at = text.find("\n5  0\n");
    ASSERT_NE(at, std::string::npos);
    text.replace(at, 6, "\n6  1\n");
    sbtest::writeFile(dir.file("sitepar.in"), text);
    tellura_control_record back;
    back.site.setFlag(back.site.column("WATERTABLE(7)"), false);
    std::string messages;
    importSitepar(dir.file("sitepar.in"), back, shippedReleaseProfile(4), messages);
    EXPECT_NE(messages.find("ERROR, WATERTABLE month out of order in site parameters file.\n"), std::string::npos);
    EXPECT_FALSE(back.site.flag(back.site.column("WATERTABLE(7)")));  // nothing stored after the bad month
    EXPECT_EQ(back.site.number("CLDCOV(12)"), 52);                    // later lines still in place

    std::string missing;
    EXPECT_FALSE(importSitepar(dir.file("none.in"), back, shippedReleaseProfile(4), missing));
    EXPECT_EQ(missing, "ERROR, cannot open site parameters file \"" + dir.file("none.in") + "\"\n");
}

TEST_F(SiteFileTest, SiteImportRoutesNamesByOwner) {
    std::string site = text(3) + "";
    sbtest::writeFile(dir.file("site.100"), site);
    tellura_control_record back;
    std::string messages;
    ASSERT_TRUE(importSiteFile(dir.file("site.100"), back, nullptr, nullptr, messages));
    EXPECT_EQ(messages, "Imported site data from \"" + dir.file("site.100") + "\"\n");
    EXPECT_FLOAT_EQ(back.site.number("SOM1CI(2,1)"), setup.record.site.number("SOM1CI(2,1)"));
    // The one-dimensional forms are the first row.
    EXPECT_FLOAT_EQ(back.site.number("SOM2CI(1,2)"), setup.record.site.number("SOM2CI(1,2)"));
    EXPECT_FLOAT_EQ(back.site.number("RCES2(1,3)"), setup.record.site.number("RCES2(1,3)"));
    EXPECT_FLOAT_EQ(back.row.number("Latitude"), 40.5f);
    EXPECT_EQ(back.site.number("ID"), tellura_control_record().site.number("ID"));  // the header is no ID line

    // Soil and climate values go to a soil and a station only when given.
    TelluraSoils soil;
    TelluraWeatherStations station;
    messages.clear();
    ASSERT_TRUE(importSiteFile(dir.file("site.100"), back, &soil, &station, messages));
    EXPECT_FLOAT_EQ(soil.number("Fraction of Sand"), 0.5f);
    EXPECT_FLOAT_EQ(soil.number("Fraction of Rock"), 0.125f);
    EXPECT_FLOAT_EQ(soil.layers[9].number("Wilting Point"), 10.125f);
    EXPECT_FLOAT_EQ(soil.layers[2].number("Mineral S"), 3.625f);
    EXPECT_FLOAT_EQ(station.means[11].tmx2m, 22.25f);
    EXPECT_TRUE(station.hasMeans);

    // A file without climate lines leaves a station without means.
    sbtest::writeFile(dir.file("noclimate.100"), "X  no climate\n1.0    SAND\n");
    TelluraWeatherStations none;
    importSiteFile(dir.file("noclimate.100"), back, &soil, &none, messages);
    EXPECT_FALSE(none.hasMeans);

    std::string missing;
    EXPECT_FALSE(importSiteFile(dir.file("none.100"), back, nullptr, nullptr, missing));
    EXPECT_EQ(missing, "ERROR, cannot open site file \"" + dir.file("none.100") + "\"\n");
}

TEST_F(SiteFileTest, SiteFileRoundTripsThroughImportForEveryVersion) {
    for (int version = 1; version <= 6; ++version) {
        sbtest::writeFile(dir.file("site.100"), text(version));
        tellura_control_record back;
        back.setId(42);
        TelluraSoils soilBack;
        TelluraWeatherStations stationBack;
        std::string messages;
        importSiteFile(dir.file("site.100"), back, &soilBack, &stationBack, messages);
        EXPECT_EQ(siteFileText(back, version, &soilBack, &stationBack), text(version)) << "version " << version;
    }
}

}  // namespace
