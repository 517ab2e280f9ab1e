// The real releases' own set-ups, imported and run under their own release
// profiles with the stand-in imitating each release strictly: the release
// accepts the run directory Soilbench writes, its console's success line is
// seen, and the run stores every simulated month, the last one included.
#include "standin_fixture.h"

#include <cstdlib>
#include <filesystem>

#include "app/release_profile_catalogue.h"
#include "db/database.h"
#include "modelinput/run_files_import.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/tellura_output.h"
#include "records/new_project.h"
#include "run/run_controller.h"
#include "run/run_history.h"
#include "test_support.h"

namespace {

namespace fs = std::filesystem;

struct release_run {
    const char* release;  // the stand-in's strict mode
    const char* inputs;   // under the samples folder
    const char* schedule;
    const char* profile;
    bool binary;          // read the binary file, else the list utility's file
    int lastMonth;        // year * 100 + month of the last simulated month
    const char* missing;  // an annual column the list utility skips, or ""
};

class RealReleaseRuns : public ::testing::TestWithParam<release_run> {};

TEST_P(RealReleaseRuns, TheReleaseAcceptsWhatSoilbenchWritesAndTheRunStoresOutputs) {
    SB_REQUIRE_SAMPLES();
    const release_run& c = GetParam();
    sbtest::temp_dir dir;
    sb::message_sink errors;
    auto db = sb::createNewProject(dir.file("releases.sbproj"), errors);
    const sb::release_profile* profile = sb::release_profile_catalogue::shipped().find(c.profile);
    ASSERT_TRUE(db && profile) << errors;
    const std::string inputs = sbtest::samplesDir() + "/" + c.inputs;
    ASSERT_TRUE(sb::importRunFiles(*db, inputs, c.schedule, *profile, 1, errors)) << errors;

    sb::app_soilbench settings(dir.file("profile.ini"));
    fs::create_directories(dir.file("model"));
    for (const char* program : {"tellura-standin", "list100-standin"})
        fs::create_symlink(sbtest::binDir() + "/tellura-standin", dir.file("model") + "/" + program);
    settings.version = 4;
    settings.modelExecutables[3] = dir.file("model") + "/tellura-standin";
    settings.list100Executables[3] = dir.file("model") + "/list100-standin";
    settings.releaseProfiles[3] = c.profile;
    settings.readBinaryOutput = c.binary;
    settings.runVisible = false;
    settings.runsFolder = dir.file("runs");  // not the user's runs folder
    settings.runTimeout = 600000;
    settings.saveDailyLastYear = 0;
    setenv("SB_STANDIN_STRICT", c.release, 1);
    setenv("SB_STANDIN_REFERENCE", inputs.c_str(), 1);
    sb::run_controller controller(*db, settings);
    std::string runLog;
    errors.clear();
    const bool ran = controller.runOneRecord(1, {}, runLog, errors);
    unsetenv("SB_STANDIN_STRICT");
    unsetenv("SB_STANDIN_REFERENCE");
    ASSERT_TRUE(ran) << errors << runLog;
    EXPECT_THAT(runLog, HasSubstr("Execution success."));

    sb::tellura_outputs stored;
    ASSERT_TRUE(sb::loadOutputs(*db, 1, stored, errors)) << errors;
    ASSERT_FALSE(stored.monthlyInOrder().empty());
    const sb::monthly_output* last = stored.monthlyInOrder().back();
    EXPECT_EQ(last->year() * 100 + last->month(), c.lastMonth);
    EXPECT_FALSE(stored.daily.empty());
    std::vector<sb::run_history_entry> history;
    ASSERT_TRUE(sb::readRunHistory(*db, 1, history, errors)) << errors;
    ASSERT_EQ(history.size(), 1u);
    EXPECT_EQ(history[0].releaseProfile, c.profile);
    if (*c.missing) {
        // The list utility skipped the name: stored as missing, never as 0.
        ASSERT_FALSE(stored.annual.empty());
        const sb::annual_output& year = stored.annual.back();
        EXPECT_TRUE(year.isMissing(year.column(c.missing))) << c.missing;
        EXPECT_THAT(errors.text(), HasSubstr("WARNING, the list utility does not know "));
    }
}

INSTANTIATE_TEST_SUITE_P(Samples, RealReleaseRuns,
                         ::testing::Values(release_run{"2012", "diurna-2012/inputs", "example.sch", "diurna-2012", true,
                                                       200612, ""},
                                           release_run{"2008", "diurna45-2008-inputs", "sch_TESTgrass.sch",
                                                       "diurna-2008", false, 200512, "bgcjacc"}));

}  // namespace
