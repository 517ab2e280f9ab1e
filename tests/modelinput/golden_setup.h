#pragma once
// The golden test record (tests/data/golden/record.txt) loaded into the
// objects a run directory is prepared from.
#include <string>
#include <vector>

#include "db/database.h"
#include "modelinput/run_directory.h"
#include "records/option_lists.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"

namespace sbtest {

struct golden_setup {
    sb::tellura_control_record record;
    sb::tellura_soils soils;
    sb::tellura_weather_stations stations;
    sb::option_lists options;
    sb::outfile_flags outfiles{};
};

std::string goldenDir();
// Fails the current test (and returns false) when record.txt cannot be read.
bool loadGoldenSetup(golden_setup& setup);

// The record `id` of a project, with its soils, stations (daily weather too)
// and option lists; false when the record cannot be read.
bool loadProjectSetup(sb::database& db, int32_t id, golden_setup& setup, sb::message_sink& errors);
// prepareRunDirectory for a set-up.
bool prepare(const golden_setup& setup, int version, const std::string& executable, sb::message_sink& errors);

// The names of the files in a folder, sorted.
std::vector<std::string> filesIn(const std::string& folder);
// The ten option files every run directory gets, added to `names` and sorted.
std::vector<std::string> withOptionFiles(std::vector<std::string> names);

}  // namespace sbtest
