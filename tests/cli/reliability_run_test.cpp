// Runs under faults, through the real soilbench program: two programs at once
// on one model folder, and a program killed or terminated while its model runs.
// With SOILBENCH_UNDER_TEST naming an older build, these show what it got wrong.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <iterator>
#include <sstream>
#include <unistd.h>

#include "app/text_file.h"
#include "app/text_format.h"
#include "cli_fixture.h"
#include "db/database.h"

namespace {

constexpr int kRecords = 12;

// Processes a test saw started; any still running when it ends are killed.
struct process_guard {
    std::vector<pid_t> pids;
    ~process_guard() {
        for (pid_t pid : pids) kill(pid, SIGKILL);
    }
};

// No process of the group is left running.
bool groupGone(pid_t group) {
    for (const auto& entry : fs::directory_iterator("/proc")) {
        std::string stat = sbtest::readFile(entry.path().string() + "/stat");
        size_t end = stat.rfind(')');
        if (end == std::string::npos) continue;
        std::istringstream fields(stat.substr(end + 2));
        std::string state;
        long parent = 0, pgrp = 0;
        fields >> state >> parent >> pgrp;
        if (pgrp == group && state != "Z" && state != "X") return false;
    }
    return true;
}

class ReliabilityRuns : public CliTest {
public:
    void SetUp() override {
        CliTest::SetUp();
        makeRunnableProject();
        addDemoCopies(project, kRecords, 6, {"N45", "N90", "N135"});
    }

    // The rows that one of the two has and the other has not.
    static long rowsDiffering(const std::vector<std::string>& a, const std::vector<std::string>& b) {
        std::vector<std::string> only;
        std::set_symmetric_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(only));
        return static_cast<long>(only.size());
    }

    std::vector<std::string> runArgs(const std::string& path) const {
        return {"run", path, "--ids", "101-112", "--jobs", "1"};
    }

    // The hanging stand-in's console, wherever its run put it: its own and its helper's process IDs.
    bool hangingModel(std::string& console, pid_t& model, pid_t& helper) const {
        std::error_code ec;
        for (const auto& entry : fs::recursive_directory_iterator(dir.path(), ec)) {
            if (entry.path().filename() != "Soilbench.con") continue;
            std::string text = sbtest::readFile(entry.path());
            size_t at = text.find("hang mode, process "), helperAt = text.find("helper process ");
            if (at == std::string::npos || helperAt == std::string::npos) continue;
            model = std::atoi(text.c_str() + at + 19);
            helper = std::atoi(text.c_str() + helperAt + 15);
            console = entry.path();
            return true;
        }
        return false;
    }
};

// --- Concurrency ------------------------------------------------------------------

// Two programs at once on one model folder (two projects, then one project
// twice) store exactly what one program alone stores, every row of every output table.
TEST_F(ReliabilityRuns, TwoProgramsOnOneModelFolderStoreWhatOneAloneStores) {
    const std::string second = dir.file("second.sbproj");
    fs::copy_file(project, second);
    auto alone = run(runArgs(project));
    ASSERT_EQ(alone.exitCode, 0) << alone.err;
    const std::vector<std::string> expected = storedOutputs(project);
    ASSERT_GT(expected.size(), 1000u);

    const std::string first = dir.file("first.sbproj");
    fs::copy_file(second, first);
    {
        started_program a(runArgs(first), env), b(runArgs(second), env);
        EXPECT_EQ(a.finish(), 0) << a.err();
        EXPECT_EQ(b.finish(), 0) << b.err();
    }
    EXPECT_EQ(rowsDiffering(storedOutputs(first), expected), 0);
    EXPECT_EQ(rowsDiffering(storedOutputs(second), expected), 0);
    {
        started_program a(runArgs(first), env), b(runArgs(first), env);
        EXPECT_EQ(a.finish(), 0) << a.err();
        EXPECT_EQ(b.finish(), 0) << b.err();
    }
    EXPECT_EQ(rowsDiffering(storedOutputs(first), expected), 0);
}

// --- Resuming a killed batch -------------------------------------------------------

struct history_counts {
    long good = 0, unfinished = 0;
};

std::string thisHost() {
    char name[256] = {};
    gethostname(name, sizeof name - 1);
    return name;
}

history_counts countHistory(const std::string& path) {
    history_counts counts;
    sb::message_sink errors;
    auto db = sb::database::open(path, errors);
    sb::db_status status;
    auto rows = db ? db->openTable(sb::table_id::run_history, "", "", status) : nullptr;
    for (sb::db_status s = rows ? rows->moveFirst() : status; rows && s.ok(); s = rows->moveNext()) {
        if (rows->row().text("Ended").empty()) ++counts.unfinished;
        else if (rows->row().text("State") == "good") ++counts.good;
    }
    return counts;
}

// A batch killed half-way keeps every record it finished, shows the one it was
// running as failed and the rest as never run; running just those then leaves
// the project exactly as one uninterrupted run does.
TEST_F(ReliabilityRuns, KilledBatchResumesWithTheRecordsNotDone) {
    const std::string alone = dir.file("alone.sbproj");
    fs::copy_file(project, alone);
    {  // a project made before runs were kept in it: opening it adds the tables
        sb::message_sink errors;
        auto db = sb::database::open(alone, errors);
        ASSERT_TRUE(db) << errors;
        ASSERT_TRUE(db->execute("DROP TABLE [Run History]").ok() && db->execute("DROP TABLE [Slurm Submissions]").ok());
    }
    ASSERT_EQ(run(runArgs(alone)).exitCode, 0);
    EXPECT_EQ(countHistory(alone).good, kRecords);
    const std::vector<std::string> expected = storedOutputs(alone);

    std::map<std::string, std::string> slow = env;
    slow["SB_STANDIN_MODE"] = "slow=0.3";
    started_program program(runArgs(project), slow);
    const pid_t killed = program.pid();
    ASSERT_TRUE(sbtest::within(60, [&] {
        history_counts counts = countHistory(project);
        return counts.good >= 3 && counts.unfinished == 1;
    })) << program.err();
    program.signal(SIGKILL);
    ASSERT_EQ(program.finish(), 128 + SIGKILL);
    // The kill most likely lands while a model runs; between one record's
    // commit and the next one's start there is no unfinished run.
    const history_counts atKill = countHistory(project);
    ASSERT_LE(atKill.unfinished, 1);
    ASSERT_LT(atKill.good, kRecords - 1);

    auto status = run({"status", project, "--ids", "101-112", "--format", "tsv"});
    ASSERT_EQ(status.exitCode, 0) << status.err;
    long good = 0, never = 0;
    std::string failedLines;
    std::istringstream lines(status.out);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "ID\tState\tStarted\tEnded\tMessage");
    while (std::getline(lines, line)) {
        std::vector<std::string_view> cells = sb::splitFieldViews(line, '\t');
        ASSERT_EQ(cells.size(), 5u) << line;
        if (cells[1] == "good") ++good;
        else if (cells[1] == "never") ++never;
        else
            failedLines += sb::strprintf("%.*s|%.*s|%.*s\n", static_cast<int>(cells[1].size()), cells[1].data(),
                                         static_cast<int>(cells[3].size()), cells[3].data(),
                                         static_cast<int>(cells[4].size()), cells[4].data());
    }
    EXPECT_EQ(good, atKill.good);
    EXPECT_EQ(never, kRecords - atKill.unfinished - atKill.good);
    EXPECT_EQ(failedLines, atKill.unfinished == 0
                               ? ""
                               : sb::strprintf("failed||ERROR, the run started by process %ld on %s did not finish.\n",
                                               static_cast<long>(killed), thisHost().c_str()));

    auto resumed = run({"run", project, "--ids", "101-112", "--only", "never,failed", "--jobs", "2"});
    EXPECT_EQ(resumed.exitCode, 0) << resumed.err;
    EXPECT_THAT(resumed.out, HasSubstr(sb::strprintf("%ld records run: %ld good, 0 failed.\n", kRecords - atKill.good,
                                                     kRecords - atKill.good)));
    auto after = run({"status", project, "--ids", "101-112"});
    EXPECT_EQ(after.exitCode, 0) << after.err;
    EXPECT_EQ(after.out.substr(after.out.rfind('\n', after.out.size() - 2) + 1),
              "12 records: 0 never run, 0 failed, 12 good, 0 stale.\n");
    EXPECT_EQ(rowsDiffering(storedOutputs(project), expected), 0);
    EXPECT_EQ(expected.size(), storedOutputs(project).size());
}

// The words of --only, with and without --ids, and what an unknown one gets. The
// new project's default record 1 fails its precheck whenever it is run.
TEST_F(ReliabilityRuns, OnlyRunsTheRecordsInTheStatesNamed) {
    struct only_case {
        const char* only;
        const char* ids;
        int exitCode;
        const char* expected;  // on standard output, or standard error for a usage error
    } const cases[] = {
        {"stale,good", "", 0, "0 records run: 0 good, 0 failed.\n"},
        {"never", "", 1, "14 records run: 13 good, 1 failed.\n"},
        {"never,stale", "", 0, "0 records run: 0 good, 0 failed.\n"},
        {"failed", "", 1, "1 records run: 0 good, 1 failed.\n"},
        {"good", "105,107", 0, "2 records run: 2 good, 0 failed.\n"},
        {"failed,bad", "", 2,
         "ERROR, \"bad\" is not a record state: give never, failed, stale, good or running, comma-separated.\n"},
    };
    for (const only_case& c : cases) {
        SCOPED_TRACE(c.only);
        std::vector<std::string> args = {"run", project, "--only", c.only};
        if (*c.ids) args.insert(args.end(), {"--ids", c.ids});
        auto result = run(args);
        EXPECT_EQ(result.exitCode, c.exitCode) << result.err;
        const std::string& shown = c.exitCode == 2 ? result.err : result.out;
        EXPECT_THAT(shown, HasSubstr(c.expected));
    }
}

// --- Killed process ----------------------------------------------------------------

// However the program ends while a model runs, the model and everything it
// started end with it (the hanging stand-in's helper has left its process
// group, as a daemon would). The folder of a killed run goes at the next start;
// a terminated run is reported cancelled and keeps its folder.
TEST_F(ReliabilityRuns, EndingTheProgramEndsTheModelAndEverythingItStarted) {
    for (int signal : {SIGKILL, SIGTERM}) {
        SCOPED_TRACE(strsignal(signal));
        process_guard guard;
        std::map<std::string, std::string> hanging = env;
        hanging["SB_STANDIN_MODE"] = "hang";
        started_program program({"run", project, "--ids", "101", "--jobs", "1"}, hanging);
        std::string console;
        pid_t model = 0, helper = 0;
        ASSERT_TRUE(sbtest::within(30, [&] { return hangingModel(console, model, helper); })) << program.err();
        guard.pids = {model, helper};
        program.signal(signal);
        EXPECT_EQ(program.finish(), signal == SIGKILL ? 128 + SIGKILL : 1);
        EXPECT_TRUE(sbtest::within(
            5, [&] { return sbtest::processGone(model) && sbtest::processGone(helper) && groupGone(model); }));

        const fs::path folder = fs::path(console).parent_path();
        auto next = run({"run", project, "--ids", "102", "--jobs", "1"});
        EXPECT_EQ(next.exitCode, 0) << next.err;
        EXPECT_EQ(fs::exists(folder), signal == SIGTERM) << folder;
        if (signal == SIGTERM) {
            EXPECT_THAT(program.err(),
                        HasSubstr("ERROR, the run of record 101 was cancelled: its earlier outputs are kept"));
        }
    }
}

}  // namespace
