// Run Multiple Records: progress texts, counting, cancelling between records
// and ending running models.
#include "run/run_controller.h"
#include "run_controller_fixture.h"

#include <cstdlib>
#include <filesystem>
#include <regex>
#include <unistd.h>

namespace {

using namespace sbtest;

const std::string kReadTwentyYears = "240 records read, from years 1990 to 2009.\n";

struct run_set {
    sb::run_set_result result;
    std::string runLog;
    sb::message_sink errors;
};

run_set runRecords(run_project& project, sb::run_observer& observer, sb::run_set_options options = {}) {
    sb::run_controller controller(project.db(), project.settings());
    run_set run;
    const size_t before = observer.count();  // an observer may see several run sets
    run.result = controller.runMultipleRecords(options, observer, run.runLog);
    for (size_t m = before; m < observer.count(); ++m)
        run.errors.add(observer.messages()[m].severity, observer.messages()[m].text);
    return run;
}

sb::run_set_options withJobs(int jobs) {
    sb::run_set_options options;
    options.jobs = jobs;
    return options;
}

// The last line of a run set's log, with its three numbers.
void expectElapsedLine(const std::string& runLog, long failCount) {
    std::smatch m;
    static const std::regex kLast(
        "(?:^|\n)Elapsed: ([0-9]+\\.[0-9]{3}) seconds, ave=([0-9]+\\.[0-9]{3}) Fail count=([0-9]+)\n$");
    ASSERT_TRUE(std::regex_search(runLog, m, kLast)) << runLog;
    EXPECT_EQ(std::atol(m[3].str().c_str()), failCount);
}

std::string runLogOf(const run_project& project, int32_t id) {
    return std::to_string(id) + ":\"" + project.model() + "\" -s sb -n sb\nProcess Finished\n";
}

std::vector<pid_t> helperPids(const std::string& runLog) {
    std::vector<pid_t> pids;
    static const std::regex kHelper("helper process ([0-9]+)");
    for (std::sregex_iterator it(runLog.begin(), runLog.end(), kHelper), end; it != end; ++it)
        pids.push_back(static_cast<pid_t>(std::atol((*it)[1].str().c_str())));
    return pids;
}

TEST(RunSet, ShowsProgressRunNumbersAndTheLogOfEachRecord) {
    run_project project(3);
    recording_observer observer;
    run_set run = runRecords(project, observer);
    EXPECT_EQ(observer.progress,
              (std::vector<std::string>{"Running TELLURA #1 Record=1 ID=1", "Running TELLURA #2 Record=2 ID=2",
                                        "Running TELLURA #3 Record=3 ID=3"}));
    EXPECT_EQ(observer.status, (std::vector<std::string>{"Run      1, Good=     1 ", "Run      2, Good=     2 ",
                                                         "Run      3, Good=     3 "}));
    EXPECT_EQ(observer.lastDone, 3);
    EXPECT_EQ(observer.lastTotal, 3);
    EXPECT_EQ(run.errors, kReadTwentyYears + kReadTwentyYears + kReadTwentyYears);
    EXPECT_EQ(run.result.runNumber, 3);
    EXPECT_EQ(run.result.good, 3);
    EXPECT_EQ(run.result.failed, 0);
    EXPECT_FALSE(run.result.cancelled);
    // Each record's log follows its ID and a colon, in run order.
    size_t at1 = run.runLog.find(runLogOf(project, 1)), at2 = run.runLog.find(runLogOf(project, 2)),
           at3 = run.runLog.find(runLogOf(project, 3));
    EXPECT_EQ(at1, 0u) << run.runLog;
    EXPECT_TRUE(at1 < at2 && at2 < at3 && at3 != std::string::npos) << run.runLog;
    expectElapsedLine(run.runLog, 0);
    for (int32_t id = 1; id <= 3; ++id) EXPECT_EQ(project.storedOutputRows(id), 240) << id;
}

// A cancel given once two records are reported: one at a time stops after
// those two; three at once start none after it and store every record started.
TEST(RunSet, CancelStopsStartingRecordsAndStoresThoseStarted) {
    for (int jobs : {1, 3}) {
        SCOPED_TRACE(jobs);
        run_project project(9, 10);
        recording_observer observer;
        observer.cancelAfter = 2;
        run_set run = runRecords(project, observer, withJobs(jobs));
        EXPECT_TRUE(run.result.cancelled);
        EXPECT_TRUE(jobs == 1 ? run.result.runNumber == 2 : run.result.runNumber >= 3) << run.result.runNumber;
        EXPECT_EQ(static_cast<long>(observer.progress.size()), run.result.runNumber);
        for (long reported : observer.reportedAtStart) EXPECT_LT(reported, 2);
        EXPECT_EQ(run.result.good, run.result.runNumber);
        EXPECT_EQ(observer.lastDone, run.result.runNumber);
        for (int32_t id = 1; id <= 9; ++id)  // ten years of months; records 7 to 9 end a year earlier
            EXPECT_EQ(project.storedOutputRows(id), id <= run.result.runNumber ? (id <= 6 ? 120 : 108) : 0) << id;
        expectElapsedLine(run.runLog, 0);
    }
}

// Asks to end the running models once this many of them hang (their consoles
// name their helpers), whatever the load on the machine; notes when it asked.
class end_when_hanging : public recording_observer {
public:
    end_when_hanging(std::string runsFolder, int models) : runsFolder_(std::move(runsFolder)), models_(models) {}
    double requestedAt = -1;
    sb::cancel_request cancelRequested() override {
        if (requestedAt < 0) {
            int hanging = 0;
            std::error_code ec;
            for (const auto& entry : std::filesystem::recursive_directory_iterator(runsFolder_, ec))
                if (entry.path().filename() == "Soilbench.con" &&
                    readFile(entry.path()).find("helper process ") != std::string::npos)
                    ++hanging;
            if (hanging < models_) return sb::cancel_request::none;
            requestedAt = monotonicSeconds();
        }
        return sb::cancel_request::end_running;
    }

private:
    std::string runsFolder_;
    int models_;
};

TEST(RunSet, EndRunningEndsHangingModelsAndTheirHelpersAtOnce) {
    for (int jobs : {1, 2}) {
        SCOPED_TRACE(jobs);
        run_project project(3, 10);
        project.settings().runTimeout = 60000;
        end_when_hanging observer(project.settings().runsFolder, jobs);
        standin_mode mode("hang");
        run_set run = runRecords(project, observer, withJobs(jobs));
        ASSERT_GE(observer.requestedAt, 0) << run.runLog;
        EXPECT_LT(monotonicSeconds() - observer.requestedAt, 3.0);
        EXPECT_TRUE(run.result.cancelled);
        EXPECT_EQ(run.result.runNumber, jobs);
        EXPECT_EQ(run.result.failed, jobs);
        EXPECT_EQ(run.result.good, 0);
        EXPECT_THAT(run.errors.text(), HasSubstr("Process Cancelled/Error\n"));
        // The console of each ended model was still read: it names its helper.
        std::vector<pid_t> helpers = helperPids(run.runLog);
        EXPECT_EQ(static_cast<int>(helpers.size()), jobs) << run.runLog;
        for (pid_t helper : helpers) EXPECT_TRUE(sbtest::processEnds(helper)) << helper;
        expectElapsedLine(run.runLog, jobs);
    }
}

}  // namespace
