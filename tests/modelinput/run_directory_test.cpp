// Which files a run directory gets per release, the ini and output-selection
// files byte for byte, and what happens when files cannot be written.
#include <gtest/gtest.h>

#include <filesystem>

#include "golden_setup.h"
#include "modelinput/profile_values.h"
#include "modelinput/run_directory.h"
#include "test_support.h"

using namespace sb;

namespace {

std::vector<std::string> filesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> sorted(std::vector<std::string> names) {
    std::sort(names.begin(), names.end());
    return names;
}

const std::vector<std::string> kOptionFiles{"crop.100", "cult.100", "fert.100", "fire.100", "graz.100",
                                            "harv.100", "irri.100", "omad.100", "tree.100", "trem.100"};

std::vector<std::string> withOptionFiles(std::vector<std::string> names) {
    names.insert(names.end(), kOptionFiles.begin(), kOptionFiles.end());
    return sorted(names);
}

class RunDirectoryTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(sbtest::loadGoldenSetup(setup)); }
    bool prepare(int version, const std::string& executable, std::string& errors) {
        return prepareRunDirectory(setup.record, version, executable, setup.outfiles, setup.options, setup.soils,
                                   setup.stations, errors);
    }
    sbtest::golden_setup setup;
    sbtest::temp_dir dir;
};

TEST_F(RunDirectoryTest, EachReleaseGetsItsOwnSetOfFiles) {
    // No weather files here: every block uses the mean weather.
    for (tellura_event_block& block : setup.record.blocks) block.weatherChoice = kWeatherMean;
    const std::vector<std::pair<int, std::vector<std::string>>> cases{
        {1, {"fix.100", "sbsite.100", "sb.evt"}},
        {2, {"fix.100", "sbsite.100", "sb.sch"}},
        {3, {"fix.100", "sbsite.100", "sb.sch"}},
        {4, {"fix.100", "sbsite.100", "sb.sch", "soils.in", "sitepar.in", "outfiles.in"}},
        {5, {"fix.100", "sbsite.100", "sb.sch"}},
        {6, {"sb.ini", "sbfix.100", "sbsite.100", "sb.sch"}},
        {7, {"ERROR"}},  // a bad code leaves a visible sign (and no parameter files: no profile has it)
    };
    for (const auto& [version, files] : cases) {
        sbtest::temp_dir run;
        std::string errors;
        prepare(version, run.file("tellura.exe"), errors);
        EXPECT_EQ(filesIn(run.path()), withOptionFiles(files)) << "version " << version;
    }
}

TEST_F(RunDirectoryTest, RunDirectoryIsTheExecutablesFolder) {
    EXPECT_EQ(runDirectoryOf("/opt/tellura/bin/tellx"), "/opt/tellura/bin/");
    EXPECT_EQ(runDirectoryOf("tellura\\tellx.exe"), "tellura\\");
    EXPECT_EQ(runDirectoryOf("tellx"), "");
    EXPECT_STREQ(scheduleFileName(0), "ERROR");
    EXPECT_STREQ(fixedFileName(6), "sbfix.100");
    EXPECT_STREQ(fixedFileName(5), "fix.100");
}

TEST_F(RunDirectoryTest, IniFileHasCrLfLineEnds) {
    ASSERT_TRUE(writeIni(dir.file("sb.ini")));
    EXPECT_EQ(sbtest::readFile(dir.file("sb.ini")),
              "UserName=Soilbench\r\nSiteFilesPath=.\\\r\nMgmtFilesPath=.\\\r\nCurrentWorkPath=.\\\r\n"
              "ProjectPathsCount=0\r\n");
    EXPECT_FALSE(writeIni(dir.file("missing/sb.ini")));
}

TEST_F(RunDirectoryTest, OutfilesRowsFollowTheProfileAndTheirSettings) {
    outfile_flags flags{};
    flags[0] = flags[11] = flags[27] = true;
    std::string daily = outfilesText(shippedReleaseProfile(4), flags);
    std::vector<std::string> lines;
    for (size_t start = 0, end; (end = daily.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(daily.substr(start, end - start));
    ASSERT_EQ(lines.size(), 29u);
    EXPECT_EQ(lines[0], "Output (0/1)  file_name         description");
    EXPECT_EQ(lines[1], "1             bio.out           # daily above and below ground live carbon");
    EXPECT_EQ(lines[12], "1             resp.out          # daily respiration");
    EXPECT_EQ(lines[13], "0             year_summary.out  # yearly trace gas fluxes");
    EXPECT_EQ(lines[28], "1             summary.out       # daily climate, trace gas, and CO resp");

    // A release with other rows: each row follows its own setting; a row no
    // setting belongs to is written off.
    release_profile release;
    release.outfilesHeader = "Output (0/1)    file_name       description";
    release.outfiles = {{12, "mresp.out", "daily maintenance respiration"}, {0, "gresp.out", "growth"}};
    flags[20] = true;
    EXPECT_EQ(outfilesText(release, flags),
              "Output (0/1)    file_name       description\n"
              "1             mresp.out         # daily maintenance respiration\n"
              "0             gresp.out         # growth\n");

    std::string errors;
    EXPECT_FALSE(writeOutfiles(dir.file("none/outfiles.in"), release, flags, errors));
    EXPECT_EQ(errors, "ERROR, unable to open 'outfiles' file \"" + dir.file("none/outfiles.in") + "\".\n");
}

TEST_F(RunDirectoryTest, MissingSoilStillWritesEveryOtherFile) {
    setup.record.row.setNumber("Soil ID", 99);
    std::string errors;
    EXPECT_FALSE(prepare(4, dir.file("model"), errors));
    EXPECT_NE(errors.find("ERROR, can't find soil, ID=42 SoilID=99.\n"), std::string::npos) << errors;
    EXPECT_NE(errors.find("WARNING, soil 99 of record 42 not found, site file soil values written as zero.\n"),
              std::string::npos)
        << errors;
    for (const char* file : {"fix.100", "sbsite.100", "sb.sch", "sitepar.in", "outfiles.in", "crop.100"})
        EXPECT_TRUE(std::filesystem::is_regular_file(dir.file(file))) << file;
    EXPECT_FALSE(std::filesystem::exists(dir.file("soils.in")));
    // The fixed file still has the daily release's own depths.
    EXPECT_NE(sbtest::readFile(dir.file("fix.100")).find("30.00000       ADEP(10)\n"), std::string::npos);
}

TEST_F(RunDirectoryTest, EmptyOptionListGivesAnEmptyFile) {
    setup.options.list(option_kind::fire).clear();
    std::string errors;
    prepare(2, dir.file("model"), errors);
    EXPECT_EQ(sbtest::readFile(dir.file("fire.100")), "");
    EXPECT_NE(sbtest::readFile(dir.file("crop.100")), "");
}

TEST_F(RunDirectoryTest, MissingRunDirectoryIsReportedWithoutStopping) {
    std::string missing = dir.file("no such folder") + "/";
    std::string errors;
    EXPECT_FALSE(prepare(6, missing + "tellura.exe", errors));
    EXPECT_EQ(errors.rfind("ERROR, run directory \"" + missing + "\" does not exist.\n", 0), 0u) << errors;
    // Every file was attempted and reported, to the last option file and the weather files.
    for (const char* file : {"sb.ini", "sbfix.100", "sbsite.100", "sb.sch"})
        EXPECT_NE(errors.find("ERROR, unable to write file \"" + missing + file + "\".\n"), std::string::npos) << file;
    EXPECT_NE(errors.find("fire.100"), std::string::npos);
    EXPECT_NE(errors.find("ERROR, can't open file \"" + missing + "sb000007.wth\".\n"), std::string::npos);
}

TEST_F(RunDirectoryTest, UnwritableRunDirectoryIsReported) {
    // A file standing where the folder should be cannot be written into, even by root.
    sbtest::writeFile(dir.file("blocked"), "");
    std::string errors;
    EXPECT_FALSE(prepare(4, dir.file("blocked") + "/model", errors));
    EXPECT_NE(errors.find("ERROR, unable to open 'outfiles' file \"" + dir.file("blocked") + "/sitepar.in\".\n"),
              std::string::npos)
        << errors;
    EXPECT_NE(errors.find("ERROR, unable to open 'outfiles' file \"" + dir.file("blocked") + "/outfiles.in\".\n"),
              std::string::npos);
}

}  // namespace
