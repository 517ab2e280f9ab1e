#pragma once
// A test folder with a profile of its own and the stand-in model linked into a
// model folder, for tests that run the real soilbench program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "cli_runner.h"
#include "test_support.h"

namespace fs = std::filesystem;
using sbtest::runSoilbench;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

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

    // A project (this test's, or the one named) with the shipped demo set-up
    // imported as record 2 and the stand-in configured as the daily-step release.
    void makeRunnableProject(std::string where = "") {
        if (where.empty()) where = project;
        configureStandIn(where);
        auto imported = run({"import", "run-files", where, demoSetup(), "--schedule", "demo.sch", "--id", "2"});
        ASSERT_EQ(imported.exitCode, 0) << imported.err;
    }
    // A new project and the stand-in configured as the daily-step release.
    void configureStandIn(std::string where = "") {
        ASSERT_EQ(run({"new", where.empty() ? project : where}).exitCode, 0);
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

// Records 101.. copied from the demo record 2, the n-th ending `n % lengths`
// years earlier and using the n-th of `fertilizers` (none: the demo's), so that
// outputs stored under another record's ID show.
void addDemoCopies(const std::string& path, int count, int lengths, const std::vector<std::string>& fertilizers = {});

// Every row of the five output tables, one text per row, sorted.
std::vector<std::string> storedOutputs(const std::string& path);

// A soilbench program started in the background, ended (SIGKILL) if it still runs when the test ends.
class started_program {
public:
    started_program(const std::vector<std::string>& args, const std::map<std::string, std::string>& env)
        : pid_(sbtest::startSoilbench(args, env, output_.file("out"), output_.file("err"))) {}
    ~started_program() {
        if (pid_ > 0) kill(pid_, SIGKILL), finish();
    }
    int finish() {
        int status = sbtest::finishSoilbench(pid_);
        pid_ = -1;
        return status;
    }
    void signal(int number) const { kill(pid_, number); }
    pid_t pid() const { return pid_; }
    std::string err() const { return sbtest::readFile(output_.file("err")); }

private:
    sbtest::temp_dir output_;
    pid_t pid_;
};
