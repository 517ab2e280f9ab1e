// The run controller on one record: the checks before a run, and a run through
// the stand-in model to outputs stored in the project.
#include "run/run_controller.h"
#include "run_controller_fixture.h"
#include "standin_fixture.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <regex>
#include <unistd.h>

#include "modeloutput/tellura_output.h"
#include "app/program_version.h"
#include "records/tellura_control_record.h"
#include "run/run_folder.h"

namespace {

using namespace sbtest;

const char* const kNoSoil = "ERROR, No soil record to run.\n";
const char* const kNoStation = "ERROR, No weather record to run.\n";
const char* const kCropNotInList = "ERROR, Initial Crop is not in crop list.\n";
const char* const kTreeNotInList = "ERROR, Initial Tree is not in tree list.\n";
const char* const kNotExponential =
    "ERROR, Organic Matter Decomposition Model must be exponential for \"Tellura 4 Original\" version.\n";
const char* const kErrorDetected = "ERROR, Tellura error detected.\n";

bool matches(const std::string& text, const char* pattern) { return std::regex_match(text, std::regex(pattern)); }

// --- Precheck ------------------------------------------------------------------

// Each fault alone, then five at once: every check runs, each message in its
// order; the decomposition rule is the original release's alone.
TEST(Precheck, EachFaultIsReportedAndEveryCheckRunsInOrder) {
    run_project project{1};
    sb::run_controller controller(project.db(), project.settings());
    sb::message_sink errors;
    ASSERT_TRUE(controller.loadProjectData(errors)) << errors;
    sb::tellura_control_record imported;
    ASSERT_TRUE(sb::loadControlRecord(project.db(), 1, imported, errors)) << errors;
    using change = std::function<void(sb::tellura_control_record&)>;
    auto set = [](const char* column, double value) { return [=](auto& r) { r.row.setNumber(column, value); }; };
    auto name = [](const char* column, const char* value) { return [=](auto& r) { r.row.setText(column, value); }; };
    auto firstEvent = [](int type, const char* item) {
        return [=](sb::tellura_control_record& r) {
            for (auto& event : r.blocks.at(0).events)
                if (event.type == type) {
                    event.item = item;
                    break;
                }
        };
    };
    const std::string inBlockOne = " selected in event for year 1, month 4.\nError occured in block number 1\n";
    enum { exact, holds, lacks };
    const struct precheck_case {
        const char* what;
        std::vector<change> changes;
        int version, compare;
        std::string expected;
    } cases[] = {
        {"as imported", {}, sb::kDiurna45, exact, ""},
        {"no soil", {set("Soil ID", 999)}, sb::kDiurna45, exact, kNoSoil},
        {"no station", {set("Weather ID", 999)}, sb::kDiurna45, exact, kNoStation},
        {"list names in another case",
         {name("Initial Crop", "wwht"), name("Initial Tree", "popl")},
         sb::kDiurna45,
         exact,
         ""},
        {"crop not in the list", {name("Initial Crop", "BARLY")}, sb::kDiurna45, exact, kCropNotInList},
        {"tree not in the list", {name("Initial Tree", "OAK")}, sb::kDiurna45, exact, kTreeNotInList},
        {"unknown crop",
         {firstEvent(sb::kEventCrop, "NOPE")},
         sb::kDiurna45,
         exact,
         "ERROR, unknown crop \"NOPE\"" + inBlockOne},
        {"all at once",
         {set("Soil ID", 999), set("Weather ID", 999), name("Initial Crop", "BARLY"), name("Initial Tree", "OAK"),
          firstEvent(sb::kEventFert, "N1000")},
         sb::kDiurna45,
         exact,
         std::string(kNoSoil) + kNoStation + kCropNotInList + kTreeNotInList + "ERROR, unknown fertilizer \"N1000\"" +
             inBlockOne},
        {"original release, linear decomposition",
         {set("Organic Matter Decomposition Model", 1)},
         sb::kTellura4Original,
         holds,
         kNotExponential},
        {"daily release, linear decomposition",
         {set("Organic Matter Decomposition Model", 1)},
         sb::kDiurna45,
         exact,
         ""},
        {"original release, exponential decomposition",
         {set("Organic Matter Decomposition Model", 2)},
         sb::kTellura4Original,
         lacks,
         "Decomposition"},
    };
    for (const precheck_case& c : cases) {
        SCOPED_TRACE(c.what);
        sb::tellura_control_record record = imported;
        for (const change& apply : c.changes) apply(record);
        errors.clear();
        const bool passed = sb::precheck(record, c.version, controller.soils(), controller.stations(),
                                         controller.optionLists(), errors);
        if (c.compare == exact) {
            EXPECT_EQ(passed, c.expected.empty());
            EXPECT_EQ(errors.text(), c.expected);
        } else if (c.compare == holds) {
            EXPECT_FALSE(passed);
            EXPECT_THAT(errors.text(), HasSubstr(c.expected));
        } else {
            EXPECT_THAT(errors.text(), Not(HasSubstr(c.expected)));
        }
    }
}

// --- One record ----------------------------------------------------------------

class RunOneRecord : public ::testing::Test {
protected:
    run_project project{1, 10};

    bool run(std::string& runLog, sb::message_sink& errors, const sb::run_choices& choices = {}) {
        sb::run_controller controller(project.db(), project.settings());
        return controller.runOneRecord(1, choices, runLog, errors);
    }
};

// What `sha256sum` says of a file: a digest made apart from ours.
std::string sha256sum(const std::string& path) {
    std::string line = sbtest::runInDirectory("/", "sha256sum '" + path + "'");
    return line.substr(0, line.find(' '));
}

TEST_F(RunOneRecord, GoodRunsAreRecordedWithWhatProducedThem) {
    struct good_run {
        bool keepFolders;
        const char* crop;  // the record's initial crop: other inputs, another digest
    };
    const good_run kRuns[] = {{false, "WWHT"}, {true, "WWHT"}, {true, "MAIZ"}};
    for (const good_run& r : kRuns) {
        project.settings().keepRunFolders = r.keepFolders;
        project.setText(1, "Initial Crop", r.crop);
        std::string runLog;
        sb::message_sink errors;
        ASSERT_TRUE(run(runLog, errors)) << errors;
        // A good run's folder goes once its outputs are stored, unless folders are kept.
        EXPECT_EQ(std::filesystem::exists(project.lastRunFolder(1) + "sb.sch"), r.keepFolders);
    }
    const std::vector<sb::run_history_entry> runs = project.history(1);
    ASSERT_EQ(runs.size(), 3u);
    for (const sb::run_history_entry& entry : runs) {
        EXPECT_EQ(entry.state, sb::run_state::good);
        EXPECT_TRUE(
            matches(entry.started, "20[0-9]{2}-[01][0-9]-[0-3][0-9]T[0-2][0-9]:[0-5][0-9]:[0-6][0-9]\\.[0-9]{3}Z"))
            << entry.started;
        EXPECT_LE(entry.started, entry.ended);
        EXPECT_EQ(entry.model, project.model());
        EXPECT_EQ(entry.modelSha256, sha256sum(project.model()));
        EXPECT_EQ(entry.releaseProfile, "diurna45");
        EXPECT_EQ(entry.inputsSha256.size(), 64u);
        EXPECT_EQ(entry.processId, getpid());
        EXPECT_FALSE(entry.host.empty());
        EXPECT_EQ(entry.soilbenchVersion, sb::programVersion());
        EXPECT_TRUE(
            matches(entry.runFolder, (project.settings().runsFolder + "/[^/]+-1-[0-9]{8}-[0-9]{6}(-[0-9]+)?/").c_str()))
            << entry.runFolder;
    }
    EXPECT_LT(runs[0].started, runs[1].started);
    // Same inputs, same digest; another crop, another digest.
    EXPECT_EQ(runs[0].inputsSha256, runs[1].inputsSha256);
    EXPECT_NE(runs[1].inputsSha256, runs[2].inputsSha256);
    EXPECT_THAT(sbtest::readFile(runs[2].runFolder + "sb.sch"), HasSubstr("MAIZ"));
}

// Every way a run can end badly keeps the outputs stored before and the
// folder the run wrote into, names the folder, and notes the end in the history.
TEST_F(RunOneRecord, FailedRunsKeepTheEarlierOutputsAndTheirFolders) {
    struct failed_run {
        const char* mode;
        uint32_t timeoutMs;
        double cancelAfterSeconds;  // < 0: never
        sb::run_state state;
        const char* message;
        const char* phrase;
    };
    const failed_run kRuns[] = {
        {"error", 60000, -1, sb::run_state::failed, kErrorDetected, "failed"},
        {"silent", 60000, -1, sb::run_state::failed, "ERROR in read_console - console file is empty.\n", "failed"},
        {"garbage", 60000, -1, sb::run_state::failed, "ERROR, unable to open LIS file: ", "failed"},
        {"crash", 60000, -1, sb::run_state::crashed, "ERROR, process ended by signal 11 (Segmentation fault).\n",
         "crashed"},
        {"crash=abort", 60000, -1, sb::run_state::crashed, "ERROR, process ended by signal 6 (Aborted).\n", "crashed"},
        {"hang", 60000, 0.3, sb::run_state::cancelled, "Process Cancelled/Error\n", "was cancelled"},
        {"hang", 300, -1, sb::run_state::timedOut,
         "Process interrupted at user-defined time limit. See \"File\" | \"Configure\" | \"Run timeout, "
         "milliseconds\".\n",
         "timed out"},
    };
    project.settings().outfileSelected[12] = true;  // year_summary.out, read even when the list utility fails
    std::string runLog;
    sb::message_sink errors;
    ASSERT_TRUE(run(runLog, errors)) << errors;
    EXPECT_EQ(errors, "120 records read, from years 1990 to 1999.\nYear Summary: 10 years read, from 1990 to 1999.\n");
    const std::vector<std::string> before = project.storedOutputs();
    ASSERT_EQ(before.size(), 130u);
    for (const failed_run& f : kRuns) {
        SCOPED_TRACE(std::string(f.mode) + " -> " + sb::runStateText(f.state));
        project.settings().runTimeout = f.timeoutMs;
        sb::run_controller controller(project.db(), project.settings());
        sb::tellura_control_record record;
        sb::tellura_outputs outputs;
        runLog.clear(), errors.clear();
        ASSERT_TRUE(controller.loadAndCheck(1, record, errors)) << errors;
        const double started = monotonicSeconds();
        auto cancelNow = [&] {
            return f.cancelAfterSeconds >= 0 && monotonicSeconds() - started > f.cancelAfterSeconds;
        };
        {
            standin_mode mode(f.mode);
            EXPECT_FALSE(controller.runLoadedRecord(record, outputs, {}, runLog, errors, cancelNow));
        }
        EXPECT_LT(monotonicSeconds() - started, 10.0);
        EXPECT_FALSE(record.runDone);
        EXPECT_THAT(errors.text(), HasSubstr(f.message));
        EXPECT_EQ(project.storedOutputs(), before) << "the earlier outputs are kept whole";

        const sb::run_history_entry last = project.history(1).back();
        EXPECT_EQ(last.state, f.state);
        EXPECT_THAT(last.message, HasSubstr(f.message));
        const std::string folder = last.runFolder;
        EXPECT_THAT(errors.text(),
                    HasSubstr("ERROR, the run of record 1 " + std::string(f.phrase) +
                              ": its earlier outputs are kept, and what it wrote is in \"" + folder + "\".\n"));
        // The folder is the user's to inspect: the inputs are there, and nothing removes it.
        EXPECT_TRUE(std::filesystem::exists(folder + "sb.sch")) << folder;
        EXPECT_FALSE(std::filesystem::exists(folder + sb::run_folder::kOwnerFile));
    }
    project.settings().runTimeout = 60000;
    runLog.clear(), errors.clear();
    ASSERT_TRUE(run(runLog, errors)) << errors;
    EXPECT_EQ(project.history(1).size(), std::size(kRuns) + 2);
}

// A release tells success only by its console: a release whose good runs end
// with another line than the stand-in prints has not succeeded, whatever its
// exit status, and the earlier run's outputs stay as they were.
TEST_F(RunOneRecord, ARunWhoseConsoleLacksItsReleasesSuccessLineFails) {
    std::string runLog;
    sb::message_sink errors;
    ASSERT_TRUE(run(runLog, errors)) << errors;
    ASSERT_EQ(project.storedOutputRows(1), 120);
    const std::vector<std::string> good = project.storedOutputs();
    std::string text = sbtest::readFile(std::string(SB_SHARE_DIR) + "/profiles/diurna45.profile");
    const std::string shipped = "success = Execution success.";
    ASSERT_THAT(text, HasSubstr(shipped));
    text.replace(text.find(shipped), shipped.size(), "success = Simulation complete.");
    std::filesystem::create_directory(project.file("profiles"));
    sbtest::writeFile(project.file("profiles/diurna45.profile"), text);
    project.settings().profileFolder = project.file("profiles");
    errors.clear();
    EXPECT_FALSE(run(runLog, errors));
    EXPECT_THAT(errors.text(),
                HasSubstr("ERROR, the model's console lacks its success line \"Simulation complete.\" (release "
                          "profile \"diurna45\" (" +
                          project.file("profiles/diurna45.profile") + ")): the run failed.\n"));
    EXPECT_EQ(project.storedOutputs(), good);
}

// Files that would make a stale result look like this run's, and the
// list utility in a folder of its own: each record reads only what its own
// run wrote, or fails.
TEST_F(RunOneRecord, ListFileIsReadWhereTheListUtilityWroteItAndOnlyWhenNew) {
    std::string runLog;
    sb::message_sink errors;
    ASSERT_TRUE(run(runLog, errors)) << errors;
    const std::vector<std::string> good = project.storedOutputs();
    sbtest::writeFile(project.modelFolder() + "/sb.lis", "       time     somsc\n  1990.00  1.0\n");

    // A list utility installed apart from the model gives the same outputs.
    sbtest::temp_dir tools;
    std::filesystem::create_symlink(binDir() + "/tellura-standin", tools.file("list100-standin"));
    project.settings().list100Executables[3] = tools.file("list100-standin");
    runLog.clear(), errors.clear();
    ASSERT_TRUE(run(runLog, errors)) << errors;
    EXPECT_EQ(project.storedOutputs(), good);

    // A list utility that only puts back an old list file (its time kept) fails the record.
    sbtest::writeFile(tools.file("old.lis"), sbtest::readFile(project.modelFolder() + "/sb.lis"));
    sbtest::writeFile(tools.file("stale-list"), "#!/bin/sh\ncp -p \"" + tools.file("old.lis") + "\" sb.lis\n");
    std::filesystem::permissions(tools.file("stale-list"), std::filesystem::perms::owner_all);
    std::filesystem::last_write_time(tools.file("old.lis"),
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    project.settings().list100Executables[3] = tools.file("stale-list");
    runLog.clear(), errors.clear();
    EXPECT_FALSE(run(runLog, errors));
    const std::string folder = project.lastRunFolder(1);
    EXPECT_THAT(errors.text(), HasSubstr("ERROR, the list file \"" + folder +
                                         "sb.lis\" is older than this run: the list utility "
                                         "did not write it.\n"));
    EXPECT_EQ(project.storedOutputs(), good);
}

// With no model configured nothing is written, neither in the current folder
// (where an empty path would put the run directory) nor in the runs folder.
TEST_F(RunOneRecord, NoProgramConfiguredWritesNothingAnywhere) {
    struct missing_program {
        const char* model;
        const char* list;
        const char* message;
    };
    const missing_program kCases[] = {
        {"", "list100-standin",
         "ERROR, no model executable is configured for \"Diurna 4.5\": nothing was run. See \"File\" | "
         "\"Configure\".\n"},
        {"tellura-standin", "  ",
         "ERROR, no list utility is configured for \"Diurna 4.5\": nothing was run. See \"File\" | \"Configure\", "
         "or read binary output.\n"},
    };
    sbtest::temp_dir cwd;
    const std::string userFile = cwd.file("crop.100");
    sbtest::writeFile(userFile, "the user's own crop file\n");
    const std::string saved = std::filesystem::current_path();
    std::filesystem::current_path(cwd.path());
    for (const missing_program& c : kCases) {
        SCOPED_TRACE(c.message);
        project.settings().modelExecutables[3] = *c.model ? project.modelFolder() + "/" + c.model : "";
        project.settings().list100Executables[3] = c.list;
        std::string runLog;
        sb::message_sink errors;
        EXPECT_FALSE(run(runLog, errors));
        EXPECT_EQ(errors.text(), c.message);
        recording_observer observer;
        sb::run_controller controller(project.db(), project.settings());
        errors.clear();
        sb::run_set_result result = controller.runMultipleRecords({}, observer, runLog);
        errors.add(observer);
        EXPECT_TRUE(result.refused);
        EXPECT_EQ(result.runNumber, 0);
        EXPECT_EQ(errors.text(), c.message);
    }
    std::filesystem::current_path(saved);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(cwd.path()), {}), 1);
    EXPECT_EQ(sbtest::readFile(userFile), "the user's own crop file\n");
    EXPECT_FALSE(std::filesystem::exists(project.settings().runsFolder));
    EXPECT_EQ(project.storedOutputRows(1), 0);
}

}  // namespace
