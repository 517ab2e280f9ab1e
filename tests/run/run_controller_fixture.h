#pragma once
// A project with runnable records for the run controller's tests: the shipped
// demo set-up (daily-step release) imported as record 1 and copied to as many
// records as asked, and settings that run the stand-in model from a model
// folder of the test's own.
#include <gmock/gmock.h>

#include "test_support.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/app_soilbench.h"
#include "db/database.h"
#include "records/tellura_control_record.h"
#include "run/run_history.h"
#include "run/run_observer.h"

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

namespace sbtest {

// Where a test project lives: where this run keeps projects (a file, or the
// test server), or always in a file.
enum class project_store { of_this_run, file };

class run_project {
public:
    // Records 1..records, each the demo record with its own fertiliser, crop
    // and length (at most `years` years when given, at least 10 keeps every
    // record's outputs distinct); version 4 with the stand-in.
    explicit run_project(int records = 1, int years = 0, project_store store = project_store::of_this_run);

    sb::database& db() { return *db_; }
    sb::app_soilbench& settings() { return settings_; }
    const sb::app_soilbench& settings() const { return settings_; }
    // The stand-in's links in the model folder.
    std::string model() const { return settings_.modelExecutables[3]; }
    std::string list100() const { return settings_.list100Executables[3]; }
    const std::string& modelFolder() const { return modelFolder_; }
    std::string file(const std::string& name) const { return dir_.file(name); }

    // Every row of the five output tables, one text line per row, sorted.
    std::vector<std::string> storedOutputs();
    // The rows of one record's outputs, counted over the five tables.
    long storedOutputRows(int32_t id);
    // The record's runs, oldest first.
    std::vector<sb::run_history_entry> history(int32_t id);
    // The folder the record's last run left (its path from the run history).
    std::string lastRunFolder(int32_t id);

    // Changes one record (or a text or number column of its row by name) and
    // saves it. A saved record's row goes to the end of the table.
    void change(int32_t id, const std::function<void(sb::tellura_control_record&)>& edit);
    void setText(int32_t id, const char* column, const std::string& value);
    void setNumber(int32_t id, const char* column, double value);
    // Saves every record again in ID order, so that table order is ID order.
    void saveInIdOrder();

private:
    temp_dir dir_;
    int records_;
    std::unique_ptr<sb::database> db_;
    sb::app_soilbench settings_;
    std::string modelFolder_;
};

// Sets a stand-in test mode for the processes started until it goes.
class standin_mode {
public:
    explicit standin_mode(const std::string& mode);
    ~standin_mode();
    standin_mode(const standin_mode&) = delete;
    standin_mode& operator=(const standin_mode&) = delete;
};

// Records what a run of many records shows and answers cancel requests as told.
class recording_observer : public sb::run_observer {
public:
    std::vector<std::string> progress;  // "Running TELLURA #..."
    std::vector<long> reportedAtStart;  // records reported when each progress text came
    std::vector<std::string> status;    // "Run ..., Good=... "
    long lastDone = 0, lastTotal = 0;
    // Once this many records are reported, cancelRequested() asks to finish the running records.
    long cancelAfter = -1;

    void progressText(const std::string& text) override;
    void statusText(const std::string& text) override { status.push_back(text); }
    void recordsDone(long done, long, long, long total) override {
        lastDone = done;
        lastTotal = total;
    }
    sb::cancel_request cancelRequested() override;
};

// Seconds on a monotonic clock.
double monotonicSeconds();
// The text with every number of the form 12.345 (the times) replaced by "#.###".
std::string maskTimes(const std::string& text);

}  // namespace sbtest
