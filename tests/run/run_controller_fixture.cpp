#include "run_controller_fixture.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <regex>

#include "app/text_format.h"
#include "modelinput/run_files_import.h"
#include "records/new_project.h"
#include "records/tellura_control_record.h"

namespace sbtest {
namespace {

namespace fs = std::filesystem;

constexpr int kVersion = 4;  // the demo set-up is a daily-step set-up

std::string linkStandin(const std::string& folder, const char* name) {
    std::string link = folder + "/" + name;
    fs::create_symlink(binDir() + "/tellura-standin", link);
    return link;
}

// Every record the same set-up but for the fertiliser, the crop and the last
// year, so that each record's outputs are its own and a record stored under
// another's ID shows.
void makeDistinct(sb::tellura_control_record& record, int id, int years) {
    static const char* const kFertilizers[] = {"N45", "N90", "N135"};
    static const char* const kCrops[] = {"WWHT", "MAIZ"};
    const int index = id - 1;
    const char* crop = kCrops[(index / 3) % 2];
    record.row.setText("Description", sb::strprintf("Run controller test record %d", id));
    record.row.setText("Initial Crop", crop);
    for (auto& block : record.blocks) {
        if (years > 0)
            block.lastYear = static_cast<int16_t>(std::min<int>(block.lastYear, block.firstYear + years - 1));
        block.lastYear = static_cast<int16_t>(block.lastYear - (index / 6) % 9);
        for (auto& event : block.events) {
            if (event.type == sb::kEventCrop) event.item = crop;
            if (event.type == sb::kEventFert) { event.item = kFertilizers[index % 3]; }
        }
    }
}

std::string rowText(const sb::table_record& row) {
    std::string text = sb::tableName(row.table());
    for (int c = 0; c < row.columnCount(); ++c)
        text += row.isText(c) ? "|" + row.text(c) : sb::strprintf("|%.17g", row.number(c));
    return text;
}

constexpr sb::table_id kOutputTables[] = {sb::table_id::output, sb::table_id::output_annual,
                                          sb::table_id::output_monthly, sb::table_id::output_daily,
                                          sb::table_id::output_soil_layers};

}  // namespace

run_project::run_project(int records, int years, project_store store)
    : records_(records), settings_(dir_.file("profile.ini")) {
    sb::message_sink errors;
    const std::string file = dir_.file("runs.sbproj");
    db_ = sb::createNewProject(store == project_store::file ? file : projectLocation(file), errors);
    if (!db_) {
        ADD_FAILURE() << errors;
        std::abort();
    }
    // The import replaces the new project's default record 1.
    EXPECT_TRUE(sb::importRunFiles(*db_, std::string(SB_SHARE_DIR) + "/demo/", "demo.sch", kVersion, 1, errors))
        << errors;
    sb::tellura_control_record base;
    EXPECT_TRUE(sb::loadControlRecord(*db_, 1, base, errors)) << errors;
    for (int id = 1; id <= records; ++id) {
        sb::tellura_control_record record = base;
        record.setId(id);
        makeDistinct(record, id, years);
        EXPECT_TRUE(sb::saveControlRecord(*db_, record, errors)) << errors;
    }

    modelFolder_ = dir_.file("model");
    fs::create_directories(modelFolder_);
    settings_.version = kVersion;
    settings_.modelExecutables[kVersion - 1] = linkStandin(modelFolder_, "tellura-standin");
    settings_.list100Executables[kVersion - 1] = linkStandin(modelFolder_, "list100-standin");
    settings_.runVisible = false;
    settings_.runTimeout = 60000;
    settings_.outputPath = dir_.file("daily-output") + "/";
    settings_.runsFolder = dir_.file("runs");
    settings_.saveDailyFirstYear = 1;
    settings_.saveDailyLastYear = 0;  // keep no daily files
}

std::vector<std::string> run_project::storedOutputs() {
    std::vector<std::string> rows;
    for (sb::table_id table : kOutputTables) {
        sb::db_status status;
        auto set = db_->openTable(table, "", "", status);
        if (!set) {
            ADD_FAILURE() << "cannot open " << sb::tableName(table);
            continue;
        }
        for (sb::db_status s = set->moveFirst(); s.ok(); s = set->moveNext()) rows.push_back(rowText(set->row()));
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

long run_project::storedOutputRows(int32_t id) {
    long count = 0;
    for (sb::table_id table : kOutputTables) {
        sb::db_status status;
        auto set = db_->openTable(table, sb::strprintf("ID = %ld", static_cast<long>(id)), "", status);
        if (!set) continue;
        for (sb::db_status s = set->moveFirst(); s.ok(); s = set->moveNext()) ++count;
    }
    return count;
}

std::vector<sb::run_history_entry> run_project::history(int32_t id) {
    std::vector<sb::run_history_entry> entries;
    sb::message_sink errors;
    EXPECT_TRUE(sb::readRunHistory(*db_, id, entries, errors)) << errors;
    return entries;
}

std::string run_project::lastRunFolder(int32_t id) {
    auto entries = history(id);
    return entries.empty() ? "" : entries.back().runFolder;
}

void run_project::change(int32_t id, const std::function<void(sb::tellura_control_record&)>& edit) {
    sb::message_sink errors;
    sb::tellura_control_record record;
    ASSERT_TRUE(sb::loadControlRecord(*db_, id, record, errors)) << errors;
    edit(record);
    ASSERT_TRUE(sb::saveControlRecord(*db_, record, errors)) << errors;
}

void run_project::setText(int32_t id, const char* column, const std::string& value) {
    change(id, [&](sb::tellura_control_record& record) { EXPECT_TRUE(record.row.setText(column, value)) << column; });
}

void run_project::setNumber(int32_t id, const char* column, double value) {
    change(id, [&](sb::tellura_control_record& record) { EXPECT_TRUE(record.row.setNumber(column, value)) << column; });
}

void run_project::saveInIdOrder() {
    for (int32_t id = 1; id <= records_; ++id) change(id, [](sb::tellura_control_record&) {});
}
standin_mode::standin_mode(const std::string& mode) { setenv("SB_STANDIN_MODE", mode.c_str(), 1); }
standin_mode::~standin_mode() { unsetenv("SB_STANDIN_MODE"); }

void recording_observer::progressText(const std::string& text) {
    progress.push_back(text);
    reportedAtStart.push_back(lastDone);
}

sb::cancel_request recording_observer::cancelRequested() {
    return cancelAfter >= 0 && lastDone >= cancelAfter ? sb::cancel_request::finish_running : sb::cancel_request::none;
}

double monotonicSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

std::string maskTimes(const std::string& text) {
    static const std::regex kTime("(Elapsed: |ave=)-?[0-9]+\\.[0-9]{3}");
    return std::regex_replace(text, kTime, "$1#.###");
}

}  // namespace sbtest
