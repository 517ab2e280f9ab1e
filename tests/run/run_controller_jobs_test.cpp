// Several records at once must give what one after another gives: the same
// stored outputs, run log and messages. And the blocks a run set runs.
#include "run/run_controller.h"
#include "run_controller_fixture.h"

#include <regex>
#include <set>

#include "modeloutput/output_tables.h"
#include "modeloutput/tellura_output.h"
#include "records/tellura_control_record.h"

namespace {

using namespace sbtest;

struct run_set {
    sb::run_set_result result;
    std::string runLog;
    sb::message_sink errors;
    recording_observer observer;
};

void runRecords(run_project& project, run_set& run, sb::run_set_options options) {
    sb::run_controller controller(project.db(), project.settings());
    run.result = controller.runMultipleRecords(options, run.observer, run.runLog);
    run.errors.add(run.observer);
}

sb::run_set_options withJobs(int jobs) {
    sb::run_set_options options;
    options.jobs = jobs;
    return options;
}

// A text as it would read from any project folder and at any speed: the
// model folder and each record's run folder by a name of their own.
std::string comparable(const std::string& text, const run_project& project) {
    std::string result = text;
    const std::string folder = project.modelFolder();
    for (size_t at = result.find(folder); at != std::string::npos; at = result.find(folder, at))
        result.replace(at, folder.size(), "<model>");
    const std::regex runFolder(project.settings().runsFolder + "/[^/]+-([0-9]+)-[0-9]{8}-[0-9]{6}(-[0-9]+)?/");
    return maskTimes(std::regex_replace(result, runFolder, "<run $1>/"));
}

// The record's single block split in two at `splitYear`; the earlier part
// gets number `firstNumber` (1 keeps them in time order, 2 puts the later
// part first in the schedule, which the model refuses).
void splitBlock(run_project& project, int32_t id, int splitYear, int firstNumber, const char* laterCrop) {
    project.change(id, [&](sb::tellura_control_record& record) {
        ASSERT_EQ(record.blocks.size(), 1u);
        sb::tellura_event_block later = record.blocks[0];
        record.blocks[0].lastYear = static_cast<int16_t>(splitYear - 1);
        record.blocks[0].blockNumber = static_cast<int16_t>(firstNumber);
        later.blockNumber = static_cast<int16_t>(3 - firstNumber);
        later.firstYear = later.outputStartingYear = static_cast<int16_t>(splitYear);
        for (auto& event : later.events)
            if (event.type == sb::kEventCrop) event.item = laterCrop;
        record.blocks.push_back(later);
    });
}

// 50 records, among them a model that refuses its schedule (10) and two
// records that fail their precheck (17, 33), with the year summary read too.
void makeManyRecords(run_project& project) {
    splitBlock(project, 10, 1994, 2, "MAIZ");
    project.setNumber(17, "Soil ID", 999);
    project.setText(33, "Initial Crop", "BARLY");
    project.saveInIdOrder();
    project.settings().outfileSelected[12] = true;  // year_summary.out
}

// Each record's monthly soil and live carbon, as one text.
std::string carbonOf(run_project& project, int32_t id) {
    sb::tellura_outputs outputs;
    sb::message_sink errors;
    sb::loadOutputs(project.db(), id, outputs, errors);
    std::string text;
    for (const auto* month : outputs.monthlyInOrder())
        text += std::to_string(month->number("somsc")) + "," + std::to_string(month->number("aglivc")) + " ";
    return text;
}

void expectSameStoredOutputs(run_project& one, run_project& other) {
    std::vector<std::string> a = one.storedOutputs(), b = other.storedOutputs();
    ASSERT_EQ(a.size(), b.size());
    for (size_t i = 0; i < a.size(); ++i) ASSERT_EQ(a[i], b[i]) << "stored row " << i;
}

TEST(RunSetJobs, FourAtOnceGiveWhatOneAfterAnotherGives) {
    constexpr int kRecords = 50;
    // Where projects live on a server, one after another runs on a file and four at
    // once on the server: the two stores must then hold the same, row for row.
    run_project oneByOne(kRecords, 10, project_store::file), fourAtOnce(kRecords, 10);
    makeManyRecords(oneByOne);
    makeManyRecords(fourAtOnce);
    run_set one, four;
    runRecords(oneByOne, one, withJobs(1));
    runRecords(fourAtOnce, four, withJobs(4));

    // What one after another gives is what it should be.
    EXPECT_EQ(one.result.runNumber, kRecords);
    EXPECT_EQ(one.result.good, kRecords - 3);
    EXPECT_EQ(one.result.failed, 3);
    EXPECT_THAT(one.errors.text(), HasSubstr("ERROR, Tellura error detected.\n"));
    EXPECT_THAT(one.errors.text(), HasSubstr("ERROR, No soil record to run.\nPrecheck warning, 17\n"));
    EXPECT_THAT(one.errors.text(), HasSubstr("ERROR, Initial Crop is not in crop list.\nPrecheck warning, 33\n"));
    std::set<std::string> distinct;
    for (int32_t id = 1; id <= kRecords; ++id) {
        if (id == 10 || id == 17 || id == 33) {
            EXPECT_EQ(oneByOne.storedOutputRows(id), 0) << id;
            continue;
        }
        EXPECT_GT(oneByOne.storedOutputRows(id), 0) << id;
        EXPECT_TRUE(distinct.insert(carbonOf(oneByOne, id)).second) << "record " << id << " is like another";
    }

    // And four at once give the same, row for row and line for line.
    EXPECT_EQ(four.result.runNumber, one.result.runNumber);
    EXPECT_EQ(four.result.good, one.result.good);
    EXPECT_EQ(four.result.failed, one.result.failed);
    EXPECT_EQ(four.observer.progress, one.observer.progress);
    EXPECT_EQ(four.observer.status, one.observer.status);
    EXPECT_EQ(comparable(four.errors.text(), fourAtOnce), comparable(one.errors.text(), oneByOne));
    EXPECT_EQ(comparable(four.runLog, fourAtOnce), comparable(one.runLog, oneByOne));
    expectSameStoredOutputs(oneByOne, fourAtOnce);
}

// --- Blocks to run -------------------------------------------------------------

// The blocks chosen run alone, in the order chosen (a later block first is
// written so, and the model refuses it); the stored record keeps its blocks.
TEST(RunSetBlocks, ChosenBlocksAloneRunInTheOrderChosen) {
    run_project project{1, 10};
    splitBlock(project, 1, 1995, 1, "MAIZ");
    project.settings().keepRunFolders = true;
    const struct blocks_case {
        std::vector<int> order;
        long good;
        std::vector<int> storedYears;
        std::vector<std::string> inOrder, absent;  // in the schedule written
    } cases[] = {
        {{2, 1}, 0, {}, {"1999          Last year", "CROP MAIZ", "1994          Last year", "CROP WWHT"}, {}},
        {{2},
         1,
         {1995, 1996, 1997, 1998, 1999},
         {"1995          starting year", "CROP MAIZ"},
         {"1994          Last year", "CROP WWHT"}},
        {{},
         1,
         {1990, 1991, 1992, 1993, 1994, 1995, 1996, 1997, 1998, 1999},
         {"1994          Last year", "CROP WWHT", "1999          Last year", "CROP MAIZ"},
         {}},
    };
    for (const blocks_case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.order));
        run_set run;
        sb::run_set_options options;
        options.blockOrder = c.order;
        runRecords(project, run, options);
        EXPECT_EQ(run.result.good, c.good) << run.errors;
        EXPECT_EQ(run.result.failed, 1 - c.good);
        sb::tellura_outputs outputs;
        sb::message_sink errors;
        ASSERT_TRUE(sb::loadOutputs(project.db(), 1, outputs, errors)) << errors;
        std::set<int> years;
        for (const auto* month : outputs.monthlyInOrder()) years.insert(month->year());
        EXPECT_EQ(std::vector<int>(years.begin(), years.end()), c.storedYears);
        const std::string schedule = readFile(project.lastRunFolder(1) + "sb.sch");
        size_t at = 0;
        for (const std::string& part : c.inOrder) {
            at = schedule.find(part, at);
            EXPECT_NE(at, std::string::npos) << part << " in order in\n" << schedule;
        }
        for (const std::string& part : c.absent) EXPECT_THAT(schedule, Not(HasSubstr(part)));
    }
    sb::tellura_control_record record;
    sb::message_sink errors;
    ASSERT_TRUE(sb::loadControlRecord(project.db(), 1, record, errors)) << errors;
    ASSERT_EQ(record.blocks.size(), 2u);
    EXPECT_EQ(record.blocks[0].lastYear, 1994);
}

}  // namespace
