// Record states: never run, failed, good, and stale when what a run would use
// now differs from what the last good run used.
#include "run/record_status.h"
#include "run/run_controller.h"
#include "run_controller_fixture.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>

#include "records/option_list.h"
#include "records/option_record.h"
#include "records/option_lists.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"

namespace {

using namespace sbtest;
using sb::record_state;
namespace fs = std::filesystem;

constexpr int32_t kOwnSoilAndStation = 900;  // record 2's, so that changing record 1's leaves it alone

// "1:good 2:stale ", in ID order (a saved record moves to the end of the table).
std::string states(run_project& project) {
    sb::run_controller controller(project.db(), project.settings());
    std::vector<sb::record_status> all;
    sb::message_sink errors;
    std::string text;
    EXPECT_TRUE(controller.recordStatuses("", {}, all, errors)) << errors;
    std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.id < b.id; });
    for (const sb::record_status& status : all)
        text += std::to_string(status.id) + ":" + sb::recordStateWord(status.state) + " ";
    return text;
}

sb::run_set_result runAll(run_project& project, const std::vector<record_state>& only = {},
                          const std::string& filter = "") {
    sb::run_controller controller(project.db(), project.settings());
    recording_observer observer;
    sb::run_set_options options;
    options.only = only;
    options.filter = filter;
    std::string runLog;
    return controller.runMultipleRecords(options, observer, runLog);
}

// Record 2 gets a soil and a weather station of its own, copies of record 1's.
void separateRecordTwo(run_project& project) {
    sb::message_sink errors;
    sb::tellura_control_record record;
    ASSERT_TRUE(sb::loadControlRecord(project.db(), 2, record, errors)) << errors;
    sb::tellura_soils soils;
    ASSERT_TRUE(soils.load(project.db(), errors)) << errors;
    sb::tellura_soil soil = *soils.find(record.soilId());
    soil.setSoilId(kOwnSoilAndStation);
    for (int layer = 0; layer < soil.layerCount; ++layer)
        soil.layers[static_cast<size_t>(layer)].setNumber("Soil ID", kOwnSoilAndStation);
    ASSERT_TRUE(sb::saveSoil(project.db(), soil, errors)) << errors;
    sb::tellura_weather_stations stations;
    ASSERT_TRUE(sb::loadWeatherStations(project.db(), stations, errors)) << errors;
    sb::tellura_weather_station station = *stations.find(record.weatherId());
    ASSERT_TRUE(sb::loadDailyHistory(project.db(), station, errors)) << errors;
    ASSERT_TRUE(sb::loadMonthlyHistory(project.db(), station, errors)) << errors;
    station.id = kOwnSoilAndStation;
    ASSERT_TRUE(sb::saveWeatherStation(project.db(), station, errors) &&
                sb::saveDailyHistory(project.db(), station, errors) &&
                sb::saveMonthlyHistory(project.db(), station, errors))
        << errors;
    record.row.setNumber("Soil ID", kOwnSoilAndStation);
    record.row.setNumber("Weather ID", kOwnSoilAndStation);
    for (auto& block : record.blocks) block.weatherId = kOwnSoilAndStation;  // the weather file's station
    ASSERT_TRUE(sb::saveControlRecord(project.db(), record, errors)) << errors;
}

void changeSoilOfRecordOne(run_project& project) {
    sb::message_sink errors;
    sb::tellura_soils soils;
    ASSERT_TRUE(soils.load(project.db(), errors)) << errors;
    sb::tellura_control_record record;
    ASSERT_TRUE(sb::loadControlRecord(project.db(), 1, record, errors)) << errors;
    sb::tellura_soil soil = *soils.find(record.soilId());
    soil.layers[0].setValue("Field Capacity", soil.layers[0].value("Field Capacity") + 0.01);
    ASSERT_TRUE(sb::saveSoil(project.db(), soil, errors)) << errors;
}

void changeWeatherOfRecordOne(run_project& project) {
    sb::message_sink errors;
    sb::tellura_weather_stations stations;
    ASSERT_TRUE(sb::loadWeatherStations(project.db(), stations, errors)) << errors;
    sb::tellura_weather_station& station = *stations.find(1);
    ASSERT_TRUE(sb::loadDailyHistory(project.db(), station, errors)) << errors;
    ASSERT_FALSE(station.daily.empty());
    station.daily.front().days.front().precip += 1.5f;
    ASSERT_TRUE(sb::saveDailyHistory(project.db(), station, errors)) << errors;
}

void changeOptionEntry(run_project& project, const char* name) {
    sb::message_sink errors;
    sb::option_lists lists;
    ASSERT_TRUE(lists.loadAll(project.db(), errors)) << errors;
    sb::option_record* entry = lists.find(sb::option_kind::fertilizer, name);
    ASSERT_TRUE(entry) << name;
    ASSERT_TRUE(entry->setField("feramt(1)", entry->value("feramt(1)") + 1, errors)) << errors;
    ASSERT_TRUE(lists.list(sb::option_kind::fertilizer).saveToDatabase(project.db(), errors)) << errors;
}

// Another model executable: a copy of the stand-in with one byte more.
void changeModel(run_project& project) {
    const std::string copy = project.file("model/tellura-standin-2");
    fs::copy_file(fs::canonical(project.model()), copy);
    std::ofstream(copy, std::ios::app) << '\n';
    fs::permissions(copy, fs::perms::owner_all);
    project.settings().modelExecutables[3] = copy;
}

// Record 1's runs as stored before release profiles had names: under a version's name.
std::function<void(run_project&)> storedAs(const std::string& release) {
    return [release](run_project& p) {
        const std::string sql = "UPDATE [Run History] SET [Release Profile] = '" + release + "' WHERE [ID] = 1";
        ASSERT_TRUE(p.db().execute(sql).ok());
    };
}

struct stale_case {
    const char* name;
    std::function<void(run_project&)> change;
    const char* expected;
};

// What makes a record stale, and what leaves it good.
TEST(RecordStates, GoodRunsTurnStaleWhenWhatTheyUsedChanges) {
    const stale_case cases[] = {
        {"nothing changed", [](run_project&) {}, "1:good 2:good "},
        {"a site value", [](run_project& p) { p.change(1, [](auto& r) { r.site.setNumber("SOM1CI(1,1)", 123); }); },
         "1:stale 2:good "},
        {"a fixed parameter", [](run_project& p) { p.setNumber(2, "CO2PPM(1)", 412); }, "1:good 2:stale "},
        {"its soil", changeSoilOfRecordOne, "1:stale 2:good "},
        {"its weather", changeWeatherOfRecordOne, "1:stale 2:good "},
        {"its schedule", [](run_project& p) { p.change(1, [](auto& r) { r.blocks.front().lastYear -= 1; }); },
         "1:stale 2:good "},
        // Every run writes each option list whole, so an entry record 2 does
        // not use still changes the files its model reads.
        {"an option entry it uses", [](run_project& p) { changeOptionEntry(p, "N45"); }, "1:stale 2:stale "},
        {"the model executable", changeModel, "1:stale 2:stale "},
        {"stored as its release's name", storedAs("Diurna 4.5"), "1:good 2:good "},
        {"stored as another release's name", storedAs("Tellura 4.5"), "1:stale 2:good "},
    };
    for (const stale_case& c : cases) {
        SCOPED_TRACE(c.name);
        run_project project(2, 2);
        separateRecordTwo(project);
        EXPECT_EQ(states(project), "1:never 2:never ");
        ASSERT_EQ(runAll(project).good, 2);
        EXPECT_EQ(states(project), "1:good 2:good ");
        c.change(project);
        EXPECT_EQ(states(project), c.expected);
    }
}

}  // namespace
