#include "modelinput/run_files_import.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "app/text_format.h"
#include "app/text_file.h"
#include "modelinput/fixed_file.h"
#include "modelinput/profile_values.h"
#include "modelinput/run_directory.h"
#include "modelinput/schedule_file.h"
#include "modelinput/site_file.h"
#include "modelinput/weather_file.h"
#include "app/text_file.h"
#include "records/record_ids.h"
#include "records/soil_layer_file.h"
#include "records/store_session.h"

namespace sb {

namespace {

std::string joinPath(const std::string& directory, const std::string& name) {
    return (std::filesystem::path(directory) / name).string();
}

bool readWeatherFile(const std::string& path, int version, tellura_weather_station& station, message_sink& messages) {
    return usesDailyWeather(version) ? readDailyWeatherFile(path, station, messages)
                                     : readMonthlyWeatherFile(path, station, messages);
}

// Each weather file the blocks name becomes a station: the first one the
// record's own, the others new ones. A C block continues the file before it.
void readWeather(const std::string& directory, const schedule_references& references, int version, imported_run& run,
                 message_sink& messages) {
    std::map<std::string, int32_t> stationOfFile;
    int32_t current = run.station.id;
    for (size_t b = 0; b < run.record.blocks.size(); ++b) {
        tellura_event_block& block = run.record.blocks[b];
        const std::string file = b < references.weatherFiles.size() ? references.weatherFiles[b] : std::string();
        if (block.weatherChoice == kWeatherFile && !file.empty()) {
            auto found = stationOfFile.find(file);
            if (found == stationOfFile.end()) {
                const std::string path = joinPath(directory, file);
                if (stationOfFile.empty()) {
                    run.hasWeather = readWeatherFile(path, version, run.station, messages);
                    found = stationOfFile.emplace(file, run.station.id).first;
                } else {
                    tellura_weather_station& station = run.otherStations.emplace_back();
                    station.id = run.station.id + static_cast<int32_t>(run.otherStations.size());
                    station.description = "Imported from " + file;
                    readWeatherFile(path, version, station, messages);
                    found = stationOfFile.emplace(file, station.id).first;
                }
            }
            current = found->second;
        }
        if (block.weatherChoice == kWeatherFile || block.weatherChoice == kWeatherContinue) block.weatherId = current;
    }
}

void readDailyFiles(const std::string& directory, const release_profile& profile, imported_run& run,
                    message_sink& messages) {
    readSoilLayerFile(joinPath(directory, "soils.in"), run.soil, messages);
    importSitepar(joinPath(directory, "sitepar.in"), run.record, profile, messages);
}

// The files the profile's release needs beside the schedule, as the set-up has them.
void readExtraFiles(const std::string& directory, const release_profile& profile, imported_run& run,
                    message_sink& messages) {
    for (const profile_extra_file& extra : profile.extraFiles) {
        record_file file{extra.file, {}};
        const std::string path = joinPath(directory, extra.file);
        std::error_code ec;
        if (!std::filesystem::exists(path, ec)) continue;  // a schedule that does not name it
        if (!readTextFile(path, file.content, messages, strprintf("ERROR, can't open file \"%s\".\n", path.c_str())))
            continue;
        run.record.files.push_back(std::move(file));
        messages.notef("Kept \"%s\" with the record.\n", extra.file.c_str());
    }
}

// The description of a record whose schedule does not name it: the site
// file's own title (the text after its header name), or the schedule's file
// name when the site file has none.
std::string describeRun(const std::string& sitePath, const std::string& scheduleFile) {
    std::string text, title;
    message_sink unread;  // a site file that cannot be read is reported by its import
    std::error_code ec;
    if (std::filesystem::is_regular_file(sitePath, ec) && readTextFile(sitePath, text, unread, "")) {
        std::string_view header = trim(std::string_view(text).substr(0, text.find_first_of("\r\n")));
        size_t blank = header.find(' ');
        if (blank != std::string_view::npos) title = std::string(trim(header.substr(blank)));
    }
    return (title.empty() ? scheduleFile : title).substr(0, 80);
}

bool saveHistory(database& db, const tellura_weather_station& station, message_sink& errors) {
    bool ok = saveMonthlyHistory(db, station, errors);
    return saveDailyHistory(db, station, errors) && ok;
}

// Every part of the run is one save: the record, its soil, its stations and the
// option lists are stored together or not at all.
bool saveRun(database& db, imported_run& run, message_sink& errors) {
    store_session whole(db, errors);
    if (!whole.ok()) return false;
    // A record of that ID is replaced whole: nothing of it (its outputs above
    // all) may pass for the imported set-up's.
    bool ok = !controlRecordExists(db, run.record.id()) || deleteControlRecord(db, run.record.id(), errors);
    ok = saveSoil(db, run.soil, errors) && ok;
    ok = saveWeatherStation(db, run.station, errors) && ok;
    if (run.hasWeather) ok = saveHistory(db, run.station, errors) && ok;
    for (const tellura_weather_station& station : run.otherStations) {
        ok = saveWeatherStation(db, station, errors) && ok;
        ok = saveHistory(db, station, errors) && ok;
    }
    for (int kind = 0; kind < kOptionKindCount; ++kind)
        ok = run.options.list(static_cast<option_kind>(kind)).saveToDatabase(db, errors) && ok;
    ok = saveControlRecord(db, run.record, errors) && ok;
    return whole.commitIf(ok);
}

}  // namespace

bool readRunFiles(const std::string& directory, const std::string& scheduleFile, const release_profile& profile,
                  int32_t recordId, int32_t soilId, int32_t stationId, imported_run& run, message_sink& messages) {
    const int version = profile.version;
    run.record.setId(recordId);
    run.soil.setSoilId(soilId);
    run.soil.setName(strprintf("Imported from %s", scheduleFile.c_str()).substr(0, 50));
    run.station.id = stationId;
    run.station.description = strprintf("Imported from %s", scheduleFile.c_str());
    run.record.row.setNumber("Soil ID", soilId);
    run.record.row.setNumber("Weather ID", stationId);
    run.record.row.setText("Description", "");  // the schedule's "#ID" line may name the set-up

    bool ok = importFixedFile(run.record, joinPath(directory, fixedFileName(version)), &run.soil, profile, messages);
    schedule_references references;
    if (!readScheduleFile(joinPath(directory, scheduleFile), profile, run.record, references, messages)) return false;
    if (references.siteFile.empty()) messages.error("ERROR, the schedule names no site file.\n");
    else
        ok = importSiteFile(joinPath(directory, references.siteFile), run.record, &run.soil, &run.station, messages,
                            &profile) &&
             ok;
    if (run.record.description().empty())
        run.record.row.setText("Description", describeRun(joinPath(directory, references.siteFile), scheduleFile));
    std::string status;
    ok = run.options.readRunFiles(directory, messages, status) && ok;
    messages.note(status);
    if (version == kDailyStepVersion) readDailyFiles(directory, profile, run, messages);
    readWeather(directory, references, version, run, messages);
    readExtraFiles(directory, profile, run, messages);
    return ok;
}

bool readRunFiles(const std::string& directory, const std::string& scheduleFile, int version, int32_t recordId,
                  int32_t soilId, int32_t stationId, imported_run& run, message_sink& messages) {
    return readRunFiles(directory, scheduleFile, shippedReleaseProfile(version), recordId, soilId, stationId, run,
                        messages);
}

std::string scheduledSiteFile(const std::string& directory, const std::string& scheduleFile, int version) {
    tellura_control_record scratch;
    schedule_references references;
    message_sink ignored;
    readScheduleFile(joinPath(directory, scheduleFile), version, scratch, references, ignored);
    return references.siteFile;
}

bool importRunFiles(database& db, const std::string& directory, const std::string& scheduleFile,
                    const release_profile& profile, int32_t newId, message_sink& errors) {
    imported_run run;
    run.options.loadAll(db, errors);
    // Read and check every file first: a directory with any error stores nothing.
    message_sink read;
    const bool readWhole = readRunFiles(directory, scheduleFile, profile, newId, nextFreeSoilId(db, newId),
                                        nextFreeStationId(db, newId), run, read);
    errors.add(read);
    if (!readWhole) return false;
    if (read.hasErrors()) {
        errors.errorf("ERROR, nothing imported from \"%s\": the files above have errors.\n", directory.c_str());
        return false;
    }
    return saveRun(db, run, errors);
}

bool importRunFiles(database& db, const std::string& directory, const std::string& scheduleFile, int version,
                    int32_t newId, message_sink& errors) {
    return importRunFiles(db, directory, scheduleFile, shippedReleaseProfile(version), newId, errors);
}

}  // namespace sb
