// Imports into a project and the option-list export.
#include <filesystem>
#include <functional>
#include <iostream>

#include "app/text_format.h"
#include "cli_context.h"
#include "cli_options.h"
#include "modelinput/profile_match.h"
#include "modelinput/run_files_import.h"
#include "modelinput/site_file.h"
#include "records/option_lists.h"
#include "records/record_ids.h"
#include "records/site_archive.h"
#include "records/store_session.h"
#include "records/soil_layer_file.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"

namespace sbcli {
namespace {

// The schedule of a run directory when none is named: the only ".sch" or ".evt" file.
bool findSchedule(const std::string& dir, std::string& schedule, sb::message_sink& errors) {
    std::vector<std::string> found;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(dir, ec)) {
        std::string ext = sb::toLower(entry.path().extension().string());
        if (entry.is_regular_file() && (ext == ".sch" || ext == ".evt")) found.push_back(entry.path().filename());
    }
    if (ec) {
        errors.errorf("ERROR, cannot read run directory \"%s\": %s.\n", dir.c_str(), ec.message().c_str());
        return false;
    }
    if (found.size() != 1) {
        errors.errorf("ERROR, %s schedule file (.sch or .evt) in \"%s\": name one with --schedule.\n",
                      found.empty() ? "no" : "more than one", dir.c_str());
        return false;
    }
    schedule = found.front();
    return true;
}

// The station to import into: the stored one with its history, or a new one.
sb::tellura_weather_station stationFor(sb::database& db, int32_t id, const std::string& description,
                                       sb::message_sink& errors) {
    sb::tellura_weather_stations stations;
    sb::loadWeatherStations(db, stations, errors);
    if (const sb::tellura_weather_station* stored = stations.find(id)) {
        sb::tellura_weather_station station = *stored;
        sb::loadMonthlyHistory(db, station, errors);
        sb::loadDailyHistory(db, station, errors);
        if (!description.empty()) station.description = description;
        return station;
    }
    sb::tellura_weather_station station;
    station.id = id;
    station.description = description.empty() ? sb::strprintf("Station %ld", static_cast<long>(id)) : description;
    return station;
}

const sb::option_member* memberOrReport(const std::string& kind) {
    const sb::option_member* member = sb::optionMemberByCliName(kind);
    if (!member)
        std::cerr << "ERROR, unknown option list \"" << kind
                  << "\": use crop, cult, fert, fire, graz, harv, irri, omad, tree or trem.\n";
    return member;
}

// The profile a set-up is read with: the one named, else the one its files
// match (of the version asked for, or of any version), else the configured
// profile of the version asked for (or the configured version). The
// recognition's verdict is printed.
const sb::release_profile* importProfile(const import_run_files_options& opt, const std::string& schedule,
                                         const sb::app_soilbench& settings, sb::message_sink& errors) {
    static sb::release_profile_catalogue profiles;
    profiles = loadReleaseProfiles(settings, errors);
    const int configured = opt.version ? opt.version : settings.version;
    if (!opt.profile.empty()) return sb::chooseReleaseProfile(profiles, opt.profile, configured, errors);
    std::vector<const sb::release_profile*> candidates;
    for (const sb::release_profile& profile : profiles.profiles())
        if (!opt.version || profile.version == opt.version) candidates.push_back(&profile);
    const std::string siteFile = sb::scheduledSiteFile(opt.dir, schedule, configured);
    sb::message_sink verdict;
    const sb::release_profile* match =
        sb::recogniseReleaseProfile(opt.dir, siteFile, candidates, settings.releaseProfile(configured), verdict);
    std::cout << verdict;
    if (match) return match;
    return sb::chooseReleaseProfile(profiles, settings.releaseProfile(configured), configured, errors);
}

}  // namespace

int cmdImportRunFiles(const import_run_files_options& opt) {
    auto db = openProject(opt.project);
    if (!db) return kExitFailed;
    sb::message_sink errors;
    std::string schedule = opt.schedule;
    if (schedule.empty() && !findSchedule(opt.dir, schedule, errors)) return finish(false, errors);
    sb::app_soilbench settings = loadUserSettings();
    int32_t id = opt.id ? *opt.id : sb::nextFreeRecordId(*db);
    if (!allowedToReplace(sb::controlRecordExists(*db, id), opt.force,
                          sb::strprintf("record %ld exists already", static_cast<long>(id)), "another --id",
                          "replace it", errors))
        return finish(false, errors);
    const sb::release_profile* profile = importProfile(opt, schedule, settings, errors);
    if (!profile) return finish(false, errors);
    bool ok = sb::importRunFiles(*db, opt.dir, schedule, *profile, id, errors);
    if (ok)
        std::cout << "Imported " << opt.dir << " as record " << id << " (" << sb::versionDisplayName(profile->version)
                  << ", release profile \"" << profile->name << "\").\n";
    return finish(ok, errors);
}

// The three weather imports differ only in how the file is read into the
// station and which of its rows are then saved.
using station_import = std::function<bool(sb::tellura_weather_station&, sb::message_sink&)>;
using station_save = std::function<bool(sb::database&, const sb::tellura_weather_station&, sb::message_sink&)>;

// The file is read whole and checked first; then the station and its history
// are stored in one save, so a failure anywhere leaves the station as it was.
int importIntoStation(const import_weather_options& opt, const station_import& read, const station_save& save) {
    auto db = openProject(opt.project);
    if (!db) return kExitFailed;
    sb::message_sink errors;
    sb::tellura_weather_station station = stationFor(*db, opt.station, opt.description, errors);
    if (errors.hasErrors() || !read(station, errors)) return finish(false, errors);
    sb::store_session whole(*db, errors);
    bool ok = whole.ok() && sb::saveWeatherStation(*db, station, errors) && save(*db, station, errors);
    return finish(whole.commitIf(ok), errors);
}

int cmdImportWeatherDaily(const import_weather_options& opt) {
    return importIntoStation(
        opt,
        [&](sb::tellura_weather_station& station, sb::message_sink& errors) {
            return sb::readDailyWeatherFile(opt.file, station, errors);
        },
        sb::saveDailyHistory);
}

int cmdImportWeatherMonthly(const import_weather_options& opt) {
    return importIntoStation(
        opt,
        [&](sb::tellura_weather_station& station, sb::message_sink& errors) {
            return sb::readMonthlyWeatherFile(opt.file, station, errors);
        },
        sb::saveMonthlyHistory);
}

int cmdImportWeatherAverages(const import_weather_options& opt) {
    // Only the climate names of the site file are taken: the record read into is thrown away.
    return importIntoStation(
        opt,
        [&](sb::tellura_weather_station& station, sb::message_sink& errors) {
            sb::tellura_control_record scratch;
            sb::tellura_weather_station read = station;
            read.hasMeans = false;
            if (!sb::importSiteFile(opt.file, scratch, nullptr, &read, errors)) return false;
            if (!read.hasMeans) {
                errors.errorf("ERROR, no climate means (PRECIP, PRCSTD, PRCSKW, TMN2M, TMX2M) in \"%s\".\n",
                              opt.file.c_str());
                return false;
            }
            station = std::move(read);
            return true;
        },
        [](sb::database&, const sb::tellura_weather_station&, sb::message_sink&) { return true; });
}

int cmdImportOptionList(const option_list_options& opt) {
    const sb::option_member* member = memberOrReport(opt.kind);
    if (!member) return kExitUsage;
    auto db = openProject(opt.project);
    if (!db) return kExitFailed;
    sb::message_sink errors;
    std::string status;
    sb::option_lists lists;
    sb::option_list& list = lists.list(member->kind);
    if (!list.loadFromDatabase(*db, errors)) return finish(false, errors);
    // The file must read cleanly and hold at least one record before the list is replaced.
    sb::import_counts counts = list.importFile(opt.file, errors, status);
    if (!counts.clean()) {
        if (!counts.unread && counts.badLines == 0)
            errors.errorf("ERROR, no option records in \"%s\".\n", opt.file.c_str());
        errors.errorf("Nothing imported: the %s list is as it was.\n", opt.kind.c_str());
        return finish(false, errors);
    }
    bool ok = list.saveToDatabase(*db, errors);
    if (ok) std::cout << status;
    return finish(ok, errors);
}

int cmdExportOptionList(const option_list_options& opt) {
    const sb::option_member* member = memberOrReport(opt.kind);
    if (!member) return kExitUsage;
    auto db = openProject(opt.project);
    if (!db) return kExitFailed;
    sb::message_sink errors;
    sb::option_lists lists;
    sb::option_list& list = lists.list(member->kind);
    bool ok = list.loadFromDatabase(*db, errors) && list.write(opt.file, errors, opt.version);
    if (ok) std::cout << "Wrote " << list.size() << " records to " << opt.file << ".\n";
    return finish(ok, errors);
}

int cmdImportSoilLayers(const import_soil_layers_options& opt) {
    auto db = openProject(opt.project);
    if (!db) return kExitFailed;
    sb::message_sink errors;
    sb::tellura_soils soils;
    if (!soils.load(*db, errors)) return finish(false, errors);
    sb::tellura_soil soil;
    if (const sb::tellura_soil* stored = soils.find(opt.soil)) {
        soil = *stored;
    } else {
        soil.setSoilId(opt.soil);
        soil.setName(sb::strprintf("Soil %d", opt.soil));
    }
    // A file that does not read cleanly leaves the soil, stored and in memory, as it was.
    bool ok = sb::readSoilLayerFile(opt.file, soil, errors) && sb::saveSoil(*db, soil, errors);
    if (ok) std::cout << "Imported " << soil.layerCount << " layers into soil " << opt.soil << ".\n";
    return finish(ok, errors);
}

int cmdExportArchive(const archive_options& opt) {
    auto db = openProject(opt.project);
    if (!db) return kExitFailed;
    sb::message_sink messages, errors;
    std::string filter;
    if (!opt.selection.filter(filter)) return kExitUsage;
    bool ok = sb::exportSiteArchive(*db, filter, opt.file, messages, errors);
    std::cout << messages;
    return finish(ok, errors);
}

int cmdImportArchive(const archive_options& opt) {
    auto db = openProject(opt.project);
    if (!db) return kExitFailed;
    sb::message_sink messages, errors;
    bool ok = sb::importSiteArchive(*db, opt.file, messages, errors);
    std::cout << messages;
    return finish(ok, errors);
}

}  // namespace sbcli
