// The run controller on one record: the checks before a run, and a run through
// the stand-in model to outputs stored in the project.
#include "run/run_controller.h"
#include "run_controller_fixture.h"

#include <filesystem>
#include <regex>

#include "modeloutput/output_tables.h"
#include "modeloutput/tellura_output.h"
#include "records/tellura_control_record.h"

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

class Precheck : public ::testing::Test {
protected:
    run_project project{1};

    // Loads record 1 as it is stored now and checks it for `version`.
    bool check(int version, std::string& errors) {
        sb::run_controller controller(project.db(), project.settings());
        std::string loadErrors;
        EXPECT_TRUE(controller.loadProjectData(loadErrors)) << loadErrors;
        sb::tellura_control_record record;
        EXPECT_TRUE(sb::readControlRecord(project.db(), 1, record, loadErrors)) << loadErrors;
        return sb::precheck(record, version, controller.soils(), controller.stations(), controller.optionLists(),
                            errors);
    }
    bool check(std::string& errors) { return check(project.settings().version, errors); }

    void setFirstEventItem(int type, const std::string& item) {
        std::string errors;
        sb::tellura_control_record record;
        ASSERT_TRUE(sb::readControlRecord(project.db(), 1, record, errors)) << errors;
        for (auto& event : record.blocks.at(0).events)
            if (event.type == type) {
                event.item = item;
                break;
            }
        ASSERT_TRUE(sb::writeControlRecord(record, project.db(), errors)) << errors;
    }
};

TEST_F(Precheck, ImportedRecordPassesSilently) {
    std::string errors;
    EXPECT_TRUE(check(errors));
    EXPECT_EQ(errors, "");
}

TEST_F(Precheck, RecordWithoutSoilOrStationFails) {
    project.setNumber(1, "Soil ID", 999);
    std::string errors;
    EXPECT_FALSE(check(errors));
    EXPECT_EQ(errors, kNoSoil);

    project.setNumber(1, "Soil ID", 1);
    project.setNumber(1, "Weather ID", 999);
    errors.clear();
    EXPECT_FALSE(check(errors));
    EXPECT_EQ(errors, kNoStation);
}

TEST_F(Precheck, InitialCropAndTreeMustBeInTheirListsIgnoringCase) {
    project.setText(1, "Initial Crop", "wwht");
    project.setText(1, "Initial Tree", "popl");
    std::string errors;
    EXPECT_TRUE(check(errors)) << errors;
    EXPECT_EQ(errors, "");

    project.setText(1, "Initial Crop", "BARLY");
    errors.clear();
    EXPECT_FALSE(check(errors));
    EXPECT_EQ(errors, kCropNotInList);

    project.setText(1, "Initial Crop", "WWHT");
    project.setText(1, "Initial Tree", "OAK");
    errors.clear();
    EXPECT_FALSE(check(errors));
    EXPECT_EQ(errors, kTreeNotInList);
}

TEST_F(Precheck, OriginalReleaseNeedsTheExponentialDecompositionModel) {
    project.setNumber(1, "Organic Matter Decomposition Model", 1);
    std::string errors;
    EXPECT_FALSE(check(sb::kTellura4Original, errors));
    EXPECT_NE(errors.find(kNotExponential), std::string::npos) << errors;
    // The rule is the original release's alone.
    errors.clear();
    EXPECT_TRUE(check(sb::kDiurna45, errors)) << errors;
    EXPECT_EQ(errors.find("Decomposition"), std::string::npos) << errors;
    // With the exponential model the message goes away.
    project.setNumber(1, "Organic Matter Decomposition Model", 2);
    errors.clear();
    check(sb::kTellura4Original, errors);
    EXPECT_EQ(errors.find("Decomposition"), std::string::npos) << errors;
}

TEST_F(Precheck, BlockWithAnUnknownCropFails) {
    setFirstEventItem(sb::kEventCrop, "NOPE");
    std::string errors;
    EXPECT_FALSE(check(errors));
    EXPECT_EQ(errors,
              "ERROR, unknown crop \"NOPE\" selected in event for year 1, month 4.\n"
              "Error occured in block number 1\n");
}

TEST_F(Precheck, EveryCheckRunsAndReportsInOrder) {
    project.setNumber(1, "Soil ID", 999);
    project.setNumber(1, "Weather ID", 999);
    project.setText(1, "Initial Crop", "BARLY");
    project.setText(1, "Initial Tree", "OAK");
    setFirstEventItem(sb::kEventFert, "N1000");
    std::string errors;
    EXPECT_FALSE(check(errors));
    EXPECT_EQ(errors, std::string(kNoSoil) + kNoStation + kCropNotInList + kTreeNotInList +
                          "ERROR, unknown fertilizer \"N1000\" selected in event for year 1, month 4.\n"
                          "Error occured in block number 1\n");
}

// --- One record ----------------------------------------------------------------

class RunOneRecord : public ::testing::Test {
protected:
    run_project project{1, 10};

    bool run(std::string& runLog, std::string& errors, const sb::run_choices& choices = {}) {
        sb::run_controller controller(project.db(), project.settings());
        return controller.runOneRecord(1, choices, runLog, errors);
    }
};

TEST_F(RunOneRecord, StoresTheOutputsItReadAndLogsTheRun) {
    sb::run_controller controller(project.db(), project.settings());
    sb::tellura_control_record record;
    sb::tellura_outputs outputs;
    std::string runLog, errors;
    ASSERT_TRUE(controller.loadAndCheck(1, record, errors)) << errors;
    ASSERT_TRUE(controller.runLoadedRecord(record, outputs, {}, runLog, errors)) << errors;
    EXPECT_EQ(errors, "108 records read, from years 1990 to 1998.\n");
    EXPECT_TRUE(record.runDone);

    // The run log: the model's command line, its console, then the list utility's.
    const std::string modelStep = "\"" + project.model() + "\" -s sb -n sb\nProcess Finished\n";
    const std::string listStep = "\"" + project.list100() + "\" sb sb sb_outvars.txt\nProcess Finished\n";
    EXPECT_EQ(runLog.rfind(modelStep, 0), 0u) << runLog;
    size_t listAt = runLog.find(listStep);
    ASSERT_NE(listAt, std::string::npos) << runLog;
    EXPECT_NE(runLog.find("Execution success.\n"), std::string::npos);
    EXPECT_EQ(runLog.substr(listAt + listStep.size()), "Stand-in list100: 108 records listed.\n");

    // What is stored is what was read, row for row.
    sb::tellura_outputs stored;
    ASSERT_TRUE(sb::readOutputs(project.db(), 1, stored, errors)) << errors;
    auto read = outputs.monthlyInOrder();
    auto back = stored.monthlyInOrder();
    ASSERT_EQ(back.size(), 108u);
    ASSERT_EQ(read.size(), back.size());
    for (size_t i = 0; i < read.size(); ++i) ASSERT_TRUE(*read[i] == *back[i]) << "monthly row " << i;
    EXPECT_EQ(back.front()->year(), 1990);
    EXPECT_EQ(back.back()->year(), 1998);
}

TEST_F(RunOneRecord, RunLogEndsWithTheElapsedTime) {
    std::string runLog, errors;
    ASSERT_TRUE(run(runLog, errors)) << errors;
    EXPECT_TRUE(
        matches(runLog, "[^]*Stand-in list100: 108 records listed\\.\nTotal Elapsed: [0-9]+\\.[0-9]{3} seconds\n"))
        << runLog;
    EXPECT_EQ(sb::runReport(errors, runLog), errors + "\n" + runLog);
}

TEST_F(RunOneRecord, NewOutputsReplaceTheOldOnes) {
    std::string runLog, errors;
    ASSERT_TRUE(run(runLog, errors)) << errors;
    ASSERT_EQ(project.storedOutputRows(1), 108);
    // Five years fewer: the rows of the dropped years must go too.
    sb::tellura_control_record record;
    ASSERT_TRUE(sb::readControlRecord(project.db(), 1, record, errors));
    record.blocks[0].lastYear = 1994;
    ASSERT_TRUE(sb::writeControlRecord(record, project.db(), errors));
    errors.clear();
    ASSERT_TRUE(run(runLog, errors)) << errors;
    EXPECT_EQ(errors, "48 records read, from years 1990 to 1993.\n");
    EXPECT_EQ(project.storedOutputRows(1), 48);
}

TEST_F(RunOneRecord, FailedPrecheckWritesNothingAndStillReportsTheTime) {
    project.setNumber(1, "Soil ID", 999);
    std::string runLog, errors;
    EXPECT_FALSE(run(runLog, errors));
    EXPECT_EQ(errors, kNoSoil);
    EXPECT_TRUE(matches(runLog, "Total Elapsed: [0-9]+\\.[0-9]{3} seconds\n")) << runLog;
    // Nothing but the two program links in the model folder.
    long files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(project.modelFolder())) {
        (void)entry;
        ++files;
    }
    EXPECT_EQ(files, 2);
    EXPECT_EQ(project.storedOutputRows(1), 0);
}

TEST_F(RunOneRecord, FailedModelRunsAreReportedAndLeaveNoOldOutputsStanding) {
    struct failure {
        const char* mode;
        const char* message;
    };
    const failure kFailures[] = {
        {"error", kErrorDetected},
        {"silent", "ERROR in read_console - console file is empty.\n"},
        {"crash", "ERROR, process ended by signal 11"},
    };
    for (const failure& f : kFailures) {
        SCOPED_TRACE(f.mode);
        std::string runLog, errors;
        ASSERT_TRUE(run(runLog, errors)) << errors;
        ASSERT_EQ(project.storedOutputRows(1), 108);
        errors.clear();
        runLog.clear();
        {
            standin_mode mode(f.mode);
            EXPECT_FALSE(run(runLog, errors));
        }
        EXPECT_NE(errors.find(f.message), std::string::npos) << errors;
        // The model step failed: no list utility, nothing read, and the earlier
        // outputs no longer stand as if they were this run's.
        EXPECT_EQ(runLog.find("sb_outvars.txt"), std::string::npos) << runLog;
        EXPECT_EQ(project.storedOutputRows(1), 0);
        EXPECT_TRUE(matches(runLog, "[^]*Total Elapsed: [0-9]+\\.[0-9]{3} seconds\n")) << runLog;
    }
}

TEST_F(RunOneRecord, HangingModelCanBeEndedWhileItRuns) {
    sb::run_controller controller(project.db(), project.settings());
    sb::tellura_control_record record;
    sb::tellura_outputs outputs;
    std::string runLog, errors;
    ASSERT_TRUE(controller.loadAndCheck(1, record, errors)) << errors;
    standin_mode mode("hang");
    const double started = monotonicSeconds();
    auto endAfterHalfASecond = [started] { return monotonicSeconds() - started > 0.5; };
    EXPECT_FALSE(controller.runLoadedRecord(record, outputs, {}, runLog, errors, endAfterHalfASecond));
    EXPECT_LT(monotonicSeconds() - started, 3.0);
    EXPECT_EQ(errors, "Process Cancelled/Error\n");
    EXPECT_NE(runLog.find("stand-in model: hang mode"), std::string::npos) << runLog;
}

TEST_F(RunOneRecord, OutputsReadBeforeAFailureAreStored) {
    // The year summary and the daily file are read even though the list
    // utility fails on the spoiled binary file.
    project.settings().outfileSelected[12] = true;  // year_summary.out
    project.settings().outfileSelected[25] = true;  // daily.out
    std::string runLog, errors;
    {
        standin_mode mode("garbage");
        EXPECT_FALSE(run(runLog, errors));
    }
    EXPECT_NE(errors.find(kErrorDetected), std::string::npos) << errors;
    EXPECT_NE(errors.find("ERROR, unable to open LIS file: " + project.modelFolder() + "/sb.lis"), std::string::npos)
        << errors;
    sb::tellura_outputs stored;
    ASSERT_TRUE(sb::readOutputs(project.db(), 1, stored, errors)) << errors;
    EXPECT_EQ(stored.monthlyCount(), 0u);
    EXPECT_EQ(stored.annual.size(), 10u);
    EXPECT_EQ(stored.daily.size(), 3652u);
}

}  // namespace
