// Runs of many records through the stand-in model (a program of ours that
// writes outputs in the model's formats; it is not the model):
//  - BM_RunSet: a run set of SB_BENCH_RECORDS records (default 200) with the
//    stand-in sleeping a fixed time per run (SB_STANDIN_MODE=slow=<s>), one
//    record at a time and several at once. With a fixed model time the gain
//    of running at once shows how little of a record's time is our own.
//  - BM_SlurmRunSet: the same run set as one Slurm job array (the cluster
//    SLURM_CONF names, e.g. one started by tests/support/slurm-test-cluster),
//    followed and stored as tasks end. Against BM_RunSet with as many jobs as
//    the cluster has cores, the difference per record is Slurm's overhead.
//  - the workbench's own work per record, phase by phase: load and check,
//    write the run directory, read the list file, store the outputs.
//  - BM_RecordStatuses: telling the state of every record of a run project.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "app/text_format.h"
#include "db/database.h"
#include "modelinput/run_directory.h"
#include "modelinput/run_files_import.h"
#include "modeloutput/list_file_reader.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/output_variable_set.h"
#include "records/new_project.h"
#include "records/tellura_control_record.h"
#include "run/run_controller.h"
#include "run/slurm_batch.h"

namespace fs = std::filesystem;

namespace {

constexpr int kVersion = sb::kDiurna45;  // the shipped demo set-up is a daily-step set-up

int recordCount() {
    const char* text = std::getenv("SB_BENCH_RECORDS");
    return text && std::atoi(text) > 0 ? std::atoi(text) : 200;
}

// A project of `records` copies of the shipped demo record (20 years, monthly
// list output) and settings that run the stand-in from a model folder of its own.
class bench_project {
public:
    explicit bench_project(int records) : folder_(fs::temp_directory_path() / "soilbench-bench-run") {
        fs::remove_all(folder_);
        fs::create_directories(folder_ / "model");
        db_ = sb::createNewProject((folder_ / "runs.sbproj").string(), errors_);
        if (!db_) return;
        const std::string demo = std::string(SB_BIN_DIR) + "/../share/soilbench/demo/";
        if (!sb::importRunFiles(*db_, demo, "demo.sch", kVersion, 1, errors_)) return;
        sb::tellura_control_record record;
        sb::loadControlRecord(*db_, 1, record, errors_);
        std::string storeError;
        db_->beginSession(storeError);
        for (int id = 2; id <= records; ++id) {
            record.setId(id);
            sb::saveControlRecord(*db_, record, errors_);
        }
        db_->commitSession(storeError);
        settings_ = sb::app_soilbench((folder_ / "profile.ini").string());
        settings_.version = kVersion;
        settings_.modelExecutables[kVersion - 1] = link("tellura-standin");
        settings_.list100Executables[kVersion - 1] = link("list100-standin");
        settings_.runVisible = false;
        settings_.runTimeout = 120000;
        settings_.outputPath = (folder_ / "daily-output").string() + "/";
        settings_.runsFolder = (folder_ / "runs").string();
        settings_.saveDailyFirstYear = 1;
        settings_.saveDailyLastYear = 0;
    }
    ~bench_project() {
        db_.reset();
        fs::remove_all(folder_);
    }
    bool ok() const { return db_ && !errors_.hasErrors(); }
    std::string errors() const { return errors_.text(); }
    sb::database& db() { return *db_; }
    const sb::app_soilbench& settings() const { return settings_; }
    fs::path folder() const { return folder_; }

private:
    std::string link(const char* name) {
        fs::path path = folder_ / "model" / name;
        fs::create_symlink(std::string(SB_BIN_DIR) + "/tellura-standin", path);
        return path.string();
    }

    fs::path folder_;
    sb::message_sink errors_;
    std::unique_ptr<sb::database> db_;
    sb::app_soilbench settings_;
};

class quiet_observer : public sb::run_observer {};

// Args: model time in milliseconds, records at once.
void BM_RunSet(benchmark::State& state) {
    const int records = recordCount();
    bench_project project(records);
    if (!project.ok()) {
        state.SkipWithError(project.errors().c_str());
        return;
    }
    const double modelSeconds = static_cast<double>(state.range(0)) / 1000.0;
    setenv("SB_STANDIN_MODE", sb::strprintf("slow=%g", modelSeconds).c_str(), 1);
    long failed = 0;
    for (auto _ : state) {
        sb::run_controller controller(project.db(), project.settings());
        sb::run_set_options options;
        options.jobs = static_cast<int>(state.range(1));
        quiet_observer observer;
        std::string runLog;
        sb::run_set_result result = controller.runMultipleRecords(options, observer, runLog);
        failed += result.failed;
    }
    unsetenv("SB_STANDIN_MODE");
    if (failed) state.SkipWithError("some records failed");
    const double runs = static_cast<double>(records) * static_cast<double>(state.iterations());
    state.counters["records"] = records;
    state.counters["records_per_s"] = benchmark::Counter(runs, benchmark::Counter::kIsRate);
    state.counters["s_per_record"] =
        benchmark::Counter(runs, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_RunSet)
    ->ArgNames({"model_ms", "jobs"})
    ->Args({200, 1})
    ->Args({200, 2})
    ->Args({0, 1})
    ->Args({0, 2})
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kSecond);

// `soilbench status` on a run project: every record good, so each one's input
// files are written and digested to tell whether it is stale.
void BM_RecordStatuses(benchmark::State& state) {
    const int records = recordCount();
    bench_project project(records);
    if (!project.ok()) {
        state.SkipWithError(project.errors().c_str());
        return;
    }
    {
        sb::run_controller controller(project.db(), project.settings());
        sb::run_set_options options;
        options.jobs = 2;
        quiet_observer observer;
        std::string runLog;
        if (controller.runMultipleRecords(options, observer, runLog).good != records) {
            state.SkipWithError(observer.text().c_str());
            return;
        }
    }
    long notGood = 0;
    for (auto _ : state) {
        sb::run_controller controller(project.db(), project.settings());
        std::vector<sb::record_status> statuses;
        sb::message_sink errors;
        if (!controller.recordStatuses("", {}, statuses, errors)) state.SkipWithError(errors.text().c_str());
        for (const sb::record_status& status : statuses) notGood += status.state != sb::record_state::good;
    }
    if (notGood) state.SkipWithError("a record that ran is not good");
    const double done = static_cast<double>(records) * static_cast<double>(state.iterations());
    state.counters["records"] = records;
    state.counters["s_per_record"] =
        benchmark::Counter(done, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_RecordStatuses)->Iterations(3)->UseRealTime()->Unit(benchmark::kMillisecond);

// Args: model time in milliseconds, queue look interval in milliseconds.
void BM_SlurmRunSet(benchmark::State& state) {
    if (!std::getenv("SLURM_CONF")) {
        state.SkipWithError("SLURM_CONF names no cluster (tests/support/slurm-test-cluster start INFO makes one)");
        return;
    }
    const int records = recordCount();
    bench_project project(records);
    if (!project.ok()) {
        state.SkipWithError(project.errors().c_str());
        return;
    }
    setenv("SB_STANDIN_MODE", sb::strprintf("slow=%g", static_cast<double>(state.range(0)) / 1000.0).c_str(), 1);
    sb::slurm_options slurm;
    slurm.sharedFolder = (project.folder() / "shared").string();
    slurm.taskProgram = std::string(SB_BIN_DIR) + "/soilbench";
    slurm.pollMs = static_cast<int>(state.range(1));
    long failed = 0;
    std::string lastErrors;
    for (auto _ : state) {
        sb::run_controller controller(project.db(), project.settings());
        sb::slurm_batch batch(project.db(), controller, slurm);
        quiet_observer observer;
        std::string runLog;
        failed += batch.run({}, observer, runLog).failed;
        lastErrors = observer.text();
    }
    unsetenv("SB_STANDIN_MODE");
    if (failed) state.SkipWithError(("some records failed: " + lastErrors.substr(0, 400)).c_str());
    const double runs = static_cast<double>(records) * static_cast<double>(state.iterations());
    state.counters["records"] = records;
    state.counters["records_per_s"] = benchmark::Counter(runs, benchmark::Counter::kIsRate);
    state.counters["s_per_record"] =
        benchmark::Counter(runs, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_SlurmRunSet)
    ->ArgNames({"model_ms", "poll_ms"})
    ->Args({200, 1000})
    ->Args({0, 1000})
    ->Args({0, 200})
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kSecond);

// One record's phases outside the model, on the demo record.
class phases : public benchmark::Fixture {
public:
    void SetUp(benchmark::State& state) override {
        project_ = std::make_unique<bench_project>(1);
        if (!project_->ok()) {
            state.SkipWithError(project_->errors().c_str());
            return;
        }
        controller_ = std::make_unique<sb::run_controller>(project_->db(), project_->settings());
        std::string runLog;
        sb::message_sink errors;
        // One real run leaves the run directory with the model's list file.
        if (!controller_->runOneRecord(1, {}, runLog, errors)) state.SkipWithError(errors.text().c_str());
        runDirectory_ = (project_->folder() / "model").string() + "/";
    }
    void TearDown(benchmark::State&) override {
        controller_.reset();
        project_.reset();
    }

protected:
    std::unique_ptr<bench_project> project_;
    std::unique_ptr<sb::run_controller> controller_;
    std::string runDirectory_;
};

BENCHMARK_F(phases, LoadAndCheck)(benchmark::State& state) {
    for (auto _ : state) {
        sb::tellura_control_record record;
        sb::message_sink errors;
        if (!controller_->loadAndCheck(1, record, errors)) state.SkipWithError(errors.text().c_str());
    }
}

BENCHMARK_F(phases, PrepareRunDirectory)(benchmark::State& state) {
    sb::tellura_control_record record;
    sb::message_sink errors;
    controller_->loadAndCheck(1, record, errors);
    const std::string exe = runDirectory_ + "tellura-standin";
    for (auto _ : state) {
        if (!sb::prepareRunDirectory(record, kVersion, exe, controller_->settings().outfileSelected,
                                     controller_->optionLists(), controller_->soils(), controller_->stations(), errors))
            state.SkipWithError(errors.text().c_str());
    }
}

BENCHMARK_F(phases, ReadListFile)(benchmark::State& state) {
    sb::tellura_control_record record;
    sb::tellura_outputs outputs;
    sb::message_sink errors;
    controller_->loadAndCheck(1, record, errors);
    for (auto _ : state) {
        sb::output_variable_set variables;
        outputs.clear();
        if (!sb::readListFile(variables, runDirectory_ + "sb.lis", kVersion, record.blocks, outputs, errors))
            state.SkipWithError(errors.text().c_str());
        errors.clear();
    }
    state.counters["rows"] = static_cast<double>(outputs.monthlyCount());
}

BENCHMARK_F(phases, StoreOutputs)(benchmark::State& state) {
    sb::tellura_outputs outputs;
    sb::message_sink errors;
    sb::loadOutputs(project_->db(), 1, outputs, errors);
    for (auto _ : state) {
        if (!sb::saveOutputs(project_->db(), 1, outputs, errors)) state.SkipWithError(errors.text().c_str());
    }
    state.counters["rows"] = static_cast<double>(outputs.monthlyCount());
}

}  // namespace

BENCHMARK_MAIN();
