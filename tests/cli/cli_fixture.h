#pragma once
// A test folder with a profile of its own and the stand-in model linked into a
// model folder, for tests that run the real soilbench program.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "cli_runner.h"
#include "test_support.h"

namespace fs = std::filesystem;
using sbtest::runSoilbench;

class CliTest : public ::testing::Test {
public:
    void SetUp() override {
        project = dir.file("p.sbproj");
        env["SOILBENCH_PROFILE"] = dir.file("profile.ini");
        env["QT_QPA_PLATFORM"] = "offscreen";
        // Run folders go under the test's folder ("soilbench/runs"), also for an older program.
        env["XDG_DATA_HOME"] = dir.path();
        fs::create_directories(dir.file("model"));
        fs::create_symlink(sbtest::binDir() + "/tellura-standin", dir.file("model/tellura-standin"));
        fs::create_symlink(sbtest::binDir() + "/tellura-standin", dir.file("model/list100-standin"));
    }

    sbtest::cli_result run(std::vector<std::string> args) { return runSoilbench(args, env); }

    // A project with the shipped demo set-up imported as record 2 and the
    // stand-in configured as the daily-step release.
    void makeRunnableProject() {
        configureStandIn();
        auto imported = run({"import", "run-files", project, demoSetup(), "--schedule", "demo.sch", "--id", "2"});
        ASSERT_EQ(imported.exitCode, 0) << imported.err;
    }
    // A new project and the stand-in configured as the daily-step release.
    void configureStandIn() {
        ASSERT_EQ(run({"new", project}).exitCode, 0);
        for (const std::string& setting : std::vector<std::string>{
                 "Settings/TELLURAVersion=4", "Settings/RunTimeout=60000",
                 "Files/Diurna 4.5=" + dir.file("model/tellura-standin"),
                 "Files/Diurna 4.5 LIST100=" + dir.file("model/list100-standin"), "Settings/SaveDailyLastYear=0"})
            ASSERT_EQ(run({"config", "--set", setting}).exitCode, 0) << setting;
    }

    static std::string demoSetup() { return std::string(SB_SHARE_DIR) + "/demo"; }

    sbtest::temp_dir dir;
    std::string project;
    std::map<std::string, std::string> env;
};
