// Which files a run directory gets per release, the ini and output-selection
// files byte for byte, and what happens when files cannot be written.
#include <gtest/gtest.h>

#include "golden_setup.h"
#include "modelinput/run_directory.h"
#include "test_support.h"

using namespace sb;

namespace {

class RunDirectoryTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(sbtest::loadGoldenSetup(setup)); }
    bool prepare(int version, const std::string& executable, sb::message_sink& errors) {
        return sbtest::prepare(setup, version, executable, errors);
    }
    sbtest::golden_setup setup;
    sbtest::temp_dir dir;
};

TEST_F(RunDirectoryTest, EachReleaseGetsItsOwnSetOfFiles) {
    // No weather files here: every block uses the mean weather.
    for (tellura_event_block& block : setup.record.blocks) block.weatherChoice = kWeatherMean;
    // (The golden files show every release's set with weather files.)
    const std::vector<std::pair<int, std::vector<std::string>>> cases{
        {4, {"fix.100", "sbsite.100", "sb.sch", "soils.in", "sitepar.in", "outfiles.in"}},
        {7, {"ERROR"}},  // a bad code leaves a visible sign (and no parameter files: no profile has it)
    };
    for (const auto& [version, files] : cases) {
        sbtest::temp_dir run;
        sb::message_sink errors;
        prepare(version, run.file("tellura.exe"), errors);
        EXPECT_EQ(sbtest::filesIn(run.path()), sbtest::withOptionFiles(files)) << "version " << version;
    }
}

TEST_F(RunDirectoryTest, MissingSoilStillWritesEveryOtherFileAndAnEmptyListAnEmptyFile) {
    setup.record.row.setNumber("Soil ID", 99);
    setup.options.list(option_kind::fire).clear();
    sb::message_sink errors;
    EXPECT_FALSE(prepare(4, dir.file("model"), errors));
    EXPECT_NE(errors.text().find("ERROR, can't find soil, ID=42 SoilID=99.\n"), std::string::npos) << errors;
    EXPECT_NE(errors.text().find("WARNING, soil 99 of record 42 not found, site file soil values written as zero.\n"),
              std::string::npos)
        << errors;
    EXPECT_EQ(sbtest::filesIn(dir.path()), sbtest::withOptionFiles({"fix.100", "outfiles.in", "sb.sch", "sb000007.wth",
                                                                    "sb000012.wth", "sbsite.100", "sitepar.in"}));
    EXPECT_EQ(sbtest::readFile(dir.file("fire.100")), "");
    // The fixed file still has the daily release's own depths.
    EXPECT_NE(sbtest::readFile(dir.file("fix.100")).find("30.00000       ADEP(10)\n"), std::string::npos);
}

TEST_F(RunDirectoryTest, MissingRunDirectoryIsReportedWithoutStopping) {
    std::string missing = dir.file("no such folder") + "/";
    sb::message_sink errors;
    EXPECT_FALSE(prepare(6, missing + "tellura.exe", errors));
    EXPECT_EQ(errors.text().rfind("ERROR, run directory \"" + missing + "\" does not exist.\n", 0), 0u) << errors;
    // Every file was attempted and reported, to the last option file and the weather files.
    for (const char* file : {"sb.ini", "sbfix.100", "sbsite.100", "sb.sch"})
        EXPECT_NE(errors.text().find("ERROR, unable to write file \"" + missing + file + "\".\n"), std::string::npos)
            << file;
    EXPECT_NE(errors.text().find("fire.100"), std::string::npos);
    EXPECT_NE(errors.text().find("ERROR, can't open file \"" + missing + "sb000007.wth\".\n"), std::string::npos);
}

TEST_F(RunDirectoryTest, UnwritableRunDirectoryIsReported) {
    // A file standing where the folder should be cannot be written into, even by root.
    sbtest::writeFile(dir.file("blocked"), "");
    sb::message_sink errors;
    EXPECT_FALSE(prepare(4, dir.file("blocked") + "/model", errors));
    EXPECT_NE(errors.text().find("ERROR, unable to open 'outfiles' file \"" + dir.file("blocked") + "/sitepar.in\".\n"),
              std::string::npos)
        << errors;
    EXPECT_NE(
        errors.text().find("ERROR, unable to open 'outfiles' file \"" + dir.file("blocked") + "/outfiles.in\".\n"),
        std::string::npos);
}

}  // namespace
