#include "modelinput/run_directory.h"

#include <algorithm>
#include <filesystem>

#include "app/text_format.h"
#include "app/release_profile_catalogue.h"
#include "modelinput/fixed_file.h"
#include "modelinput/profile_values.h"
#include "modelinput/schedule_file.h"
#include "modelinput/site_file.h"
#include "app/text_file.h"
#include "records/soil_layer_file.h"

namespace sb {

namespace {

constexpr std::array<daily_output_file, kDailyOutputFileCount> kDailyOutputFiles{{
    {"bio.out", "daily above and below ground live carbon"},
    {"soiln.out", "daily soil ammonium and nitrate by layer"},
    {"soiltavg.out", "daily average soil temperature by layer"},
    {"soiltmax.out", "daily maximum soil temperature by layer"},
    {"soiltmin.out", "daily minimum soil temperature by layer"},
    {"stemp_dx.out", "daily soil temperature every few cm (HUGE)!"},
    {"vswc.out", "daily volumetric soilwater content by layer"},
    {"watrbal.out", "daily water balance"},
    {"wfps.out", "daily water filled pore space by layer"},
    {"co2.out", "daily CO2 concentrations by layer"},
    {"wflux.out", "daily water flux through the bottom of soil layers"},
    {"resp.out", "daily respiration"},
    {"year_summary.out", "yearly trace gas fluxes"},
    {"livec.out", "daily live carbon"},
    {"deadc.out", "daily dead carbon"},
    {"soilc.out", "daily soil carbon"},
    {"sysc.out", "daily system carbon"},
    {"tgmonth.out", "monthly trace gas fluxes"},
    {"dN2lyr.out", "daily denitrification N2 fluxes by layer"},
    {"dN2Olyr.out", "daily denitrification N2O fluxes by layer"},
    {"dels.out", "daily delta 13C/14C values"},
    {"dc_sip.csv", "daily evap, tran, resp, system C, and NPP"},
    {"harvest.csv", "state of the system at time of harvest"},
    {"cflows.out", "daily carbon flows due to decompostion"},
    {"year_cflows.out", "annual accumulators of decomp carbon flows"},
    {"daily.out", "daily ET, defac, soil temp, snow, and therm units"},
    {"nflux.out", "daily trace gases, nitrification, denitrification"},
    {"summary.out", "daily climate, trace gas, and CO resp"},
}};

void checkRunDirectory(const std::string& directory, message_sink& errors) {
    std::error_code error;
    std::filesystem::path folder = directory.empty() ? std::filesystem::path(".") : std::filesystem::path(directory);
    if (!std::filesystem::is_directory(folder, error))
        errors.errorf("ERROR, run directory \"%s\" does not exist.\n", directory.c_str());
}

// Writers that report nothing themselves are reported here, so that a user
// sees which files the model will not find.
bool reportUnwritten(bool written, const std::string& path, message_sink& errors) {
    if (!written) errors.errorf("ERROR, unable to write file \"%s\".\n", path.c_str());
    return written;
}

// A writer that reports missing values but not a file it could not write.
template <class Write>
bool writeParameterFile(const std::string& path, message_sink& errors, Write write) {
    message_sink problems;
    bool written = write(problems);
    bool valuesMissing = problems.hasErrors();
    errors.add(problems);
    return valuesMissing ? false : reportUnwritten(written, path, errors);
}

bool writeDailyFiles(const record_sources& sources, const std::string& directory, const outfile_flags& outfileSelected,
                     message_sink& errors) {
    bool ok = true;
    if (sources.soil) {
        ok = writeSoilsIn(*sources.soil, sources.soil->layerDepths(), directory + "soils.in", errors);
    } else {
        errors.errorf("ERROR, can't find soil, ID=%ld SoilID=%ld.\n", static_cast<long>(sources.record.id()),
                      static_cast<long>(sources.record.soilId()));
        ok = false;
    }
    ok = writeSitepar(sources, directory + "sitepar.in", errors) && ok;
    return writeOutfiles(directory + "outfiles.in", sources.profile, outfileSelected, errors) && ok;
}

// The files the record keeps beside its schedule, and those the release
// needs for the record's options (nscale.dat for N input scaling): a needed
// file the record does not hold would stop the model, so it fails here.
bool saveRecordFiles(const tellura_control_record& record, const release_profile& profile, const std::string& directory,
                     message_sink& errors) {
    bool ok = true;
    for (const record_file& file : record.files)
        ok = reportUnwritten(writeTextFile(directory + file.name, file.content), directory + file.name, errors) && ok;
    for (const profile_extra_file& extra : profile.extraFiles) {
        if (record.row.number(extra.column) != extra.value) continue;
        bool held = std::any_of(record.files.begin(), record.files.end(),
                                [&](const record_file& file) { return iequals(file.name, extra.file); });
        if (held) continue;
        errors.errorf(
            "ERROR, record %ld sets %s to %g, for which %s needs the file \"%s\" beside the schedule; the "
            "record holds no such file (import it with the set-up's run files).\n",
            static_cast<long>(record.id()), extra.column.c_str(), extra.value, profile.where(0).c_str(),
            extra.file.c_str());
        ok = false;
    }
    return ok;
}

}  // namespace

const std::array<daily_output_file, kDailyOutputFileCount>& dailyOutputFiles() { return kDailyOutputFiles; }

std::string runDirectoryOf(const std::string& modelExecutable) {
    size_t separator = modelExecutable.find_last_of("/\\");
    return separator == std::string::npos ? std::string() : modelExecutable.substr(0, separator + 1);
}

const char* scheduleFileName(int version) {
    if (version == 1) return "sb.evt";
    if (version >= 2 && version <= 6) return "sb.sch";
    return "ERROR";  // a visible sign of a bad version code
}

const char* fixedFileName(int version) { return version == 6 ? "sbfix.100" : "fix.100"; }

bool prepareRunDirectory(const tellura_control_record& record, const release_profile& profile,
                         const std::string& modelExecutable, const outfile_flags& outfileSelected,
                         const option_lists& options, const tellura_soils& soils,
                         const tellura_weather_stations& stations, message_sink& errors) {
    const int version = profile.version;
    const std::string directory = runDirectoryOf(modelExecutable);
    checkRunDirectory(directory, errors);
    bool ok = true;
    if (version == 6) ok = reportUnwritten(writeIni(directory + "sb.ini"), directory + "sb.ini", errors);
    const std::string fixedPath = directory + fixedFileName(version);
    ok = writeParameterFile(
             fixedPath, errors,
             [&](message_sink& problems) { return writeFixedFile(record, profile, fixedPath, soils, problems); }) &&
         ok;
    const std::string sitePath = directory + "sbsite.100";
    ok = writeParameterFile(sitePath, errors,
                            [&](message_sink& problems) {
                                return writeSiteFile(record, profile, sitePath, soils, stations, problems);
                            }) &&
         ok;
    const std::string schedulePath = directory + scheduleFileName(version);
    ok = reportUnwritten(writeScheduleFile(record, options.list(option_kind::crop), options.list(option_kind::tree),
                                           profile, schedulePath, directory, stations, errors),
                         schedulePath, errors) &&
         ok;
    ok = options.writeRunFiles(directory, profile, errors) && ok;
    if (version == kDailyStepVersion) {
        const record_sources sources{record, soils.find(record.soilId()), stations.find(record.weatherId()), profile};
        ok = writeDailyFiles(sources, directory, outfileSelected, errors) && ok;
    }
    return saveRecordFiles(record, profile, directory, errors) && ok;
}

bool prepareRunDirectory(const tellura_control_record& record, int version, const std::string& modelExecutable,
                         const outfile_flags& outfileSelected, const option_lists& options, const tellura_soils& soils,
                         const tellura_weather_stations& stations, message_sink& errors) {
    const release_profile& profile = shippedReleaseProfile(version);
    if (profile.name.empty()) {
        errors.errorf("ERROR, no release profile \"%s\" is installed for version %d.\n",
                      defaultReleaseProfileName(version), version);
        release_profile bare = profile;
        bare.version = version;
        prepareRunDirectory(record, bare, modelExecutable, outfileSelected, options, soils, stations, errors);
        return false;
    }
    return prepareRunDirectory(record, profile, modelExecutable, outfileSelected, options, soils, stations, errors);
}

bool writeIni(const std::string& path) {
    // Written as the model's Windows text files are: CR LF line ends.
    return writeTextFile(path,
                         "UserName=Soilbench\r\n"
                         "SiteFilesPath=.\\\r\n"
                         "MgmtFilesPath=.\\\r\n"
                         "CurrentWorkPath=.\\\r\n"
                         "ProjectPathsCount=0\r\n");
}

std::string outfilesText(const release_profile& profile, const outfile_flags& flags) {
    std::string out = profile.outfilesHeader + "\n";
    for (const profile_outfile_row& row : profile.outfiles) {
        bool on =
            row.setting >= 1 && row.setting <= kDailyOutputFileCount && flags[static_cast<size_t>(row.setting - 1)];
        appendf(out, "%d             %-18s# %s\n", on ? 1 : 0, row.file.c_str(), row.description.c_str());
    }
    return out;
}

bool writeOutfiles(const std::string& path, const release_profile& profile, const outfile_flags& flags,
                   message_sink& errors) {
    if (!writeTextFile(path, outfilesText(profile, flags))) {
        errors.errorf("ERROR, unable to open 'outfiles' file \"%s\".\n", path.c_str());
        return false;
    }
    return true;
}

}  // namespace sb
