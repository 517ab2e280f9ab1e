#pragma once
// File | Import | Run Files: a run directory of the model (fixed file, a
// schedule naming its site file and weather file, the option files, and for
// the daily-step release soils.in and sitepar.in) read into a project as one
// control record with its own soil and weather station.
#include <cstdint>
#include <string>
#include <vector>

#include "app/message_sink.h"
#include "app/release_profile.h"
#include "records/option_lists.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"

namespace sb {

class database;

// What a run directory holds, read into memory.
struct imported_run {
    tellura_control_record record;
    tellura_soil soil;
    tellura_weather_station station;  // the record's: climate means and the first weather file
    bool hasWeather = false;          // a weather file was read into `station`
    // One more station per further weather file the blocks name (IDs following `station`'s).
    std::vector<tellura_weather_station> otherStations;
    option_lists options;
};

// Reads the run directory's files, as the release profile lays them out, into
// `run`: the record gets ID `recordId`, the soil `soilId`, the station
// `stationId`; blocks that read a weather file refer to the station made
// from that file (a C block to the station of the file read before it). The
// option lists are read over what `run.options` already holds. Every value
// read is kept: in its place, or with the record (option values with their
// option); the files the profile's release needs beside the schedule are kept
// with the record too. Messages (and the importers' "Imported ..." lines) go
// to `messages`; false when the schedule could not be read or a file gives a
// name twice within one record.
bool readRunFiles(const std::string& directory, const std::string& scheduleFile, const release_profile& profile,
                  int32_t recordId, int32_t soilId, int32_t stationId, imported_run& run, message_sink& messages);
// The same under the version's shipped profile.
bool readRunFiles(const std::string& directory, const std::string& scheduleFile, int version, int32_t recordId,
                  int32_t soilId, int32_t stationId, imported_run& run, message_sink& messages);

// The site file a schedule names ("" when it names none or cannot be read).
std::string scheduledSiteFile(const std::string& directory, const std::string& scheduleFile, int version);

// Reads the run directory and stores it in the project as record `newId`
// with a new soil and a new weather station (the next free IDs, past every ID
// a record names), and the option lists updated with the directory's option
// files, read as the release profile lays them out, all in one save. The
// record is described by its site file's title and its schedule. Every file is
// read first: when any of them gives an error, nothing is stored. A record
// stored under `newId` is replaced, outputs and all: callers ask first.
bool importRunFiles(database& db, const std::string& directory, const std::string& scheduleFile,
                    const release_profile& profile, int32_t newId, message_sink& errors);
// The same under the version's shipped profile.
bool importRunFiles(database& db, const std::string& directory, const std::string& scheduleFile, int version,
                    int32_t newId, message_sink& errors);

}  // namespace sb
