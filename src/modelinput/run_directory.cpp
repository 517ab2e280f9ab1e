#include "modelinput/run_directory.h"

#include <filesystem>

#include "app/text_format.h"
#include "modelinput/fixed_file.h"
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

// Row 12 of the monthly releases' selection.
constexpr daily_output_file kMonthlyRespiration{"mresp.out", "weekly maintenance respiration"};
constexpr int kRespirationRow = 12;
constexpr int kMonthlyRowCount = 18;

// The ten option files in the order they are written.
constexpr std::array<option_kind, kOptionKindCount> kOptionFileOrder{
    option_kind::crop,         option_kind::cultivation, option_kind::harvest, option_kind::graze,
    option_kind::irrigation,   option_kind::fertilizer,  option_kind::omad,    option_kind::tree,
    option_kind::tree_removal, option_kind::fire};

void checkRunDirectory(const std::string& directory, std::string& errors) {
    std::error_code error;
    std::filesystem::path folder = directory.empty() ? std::filesystem::path(".") : std::filesystem::path(directory);
    if (!std::filesystem::is_directory(folder, error))
        appendf(errors, "ERROR, run directory \"%s\" does not exist.\n", directory.c_str());
}

// Writers that report nothing themselves are reported here, so that a user
// sees which files the model will not find.
bool reportUnwritten(bool written, const std::string& path, std::string& errors) {
    if (!written) appendf(errors, "ERROR, unable to write file \"%s\".\n", path.c_str());
    return written;
}

bool writeOptionFiles(const option_lists& options, const std::string& directory, int version, std::string& errors) {
    bool ok = true;
    for (option_kind kind : kOptionFileOrder)
        ok = options.list(kind).write(directory + optionMember(kind).runFile, errors, version) && ok;
    return ok;
}

bool writeDailyFiles(const tellura_control_record& record, const std::string& directory,
                     const outfile_flags& outfileSelected, const tellura_soil_list& soils, std::string& errors) {
    bool ok = true;
    if (const TelluraSoils* soil = soils.find(record.soilId())) {
        ok = writeSoilsIn(*soil, soil->layerDepths(), directory + "soils.in", errors);
    } else {
        appendf(errors, "ERROR, can't find soil, ID=%ld SoilID=%ld.\n", static_cast<long>(record.id()),
                static_cast<long>(record.soilId()));
        ok = false;
    }
    ok = writeSitepar(record.site, directory + "sitepar.in", 4, errors) && ok;
    return writeOutfiles(directory + "outfiles.in", 4, outfileSelected, errors) && ok;
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

bool prepareRunDirectory(const tellura_control_record& record, int version, const std::string& modelExecutable,
                         const outfile_flags& outfileSelected, const option_lists& options,
                         const tellura_soil_list& soils, const tellura_weather_station_list& stations,
                         std::string& errors) {
    const std::string directory = runDirectoryOf(modelExecutable);
    checkRunDirectory(directory, errors);
    bool ok = true;
    if (version == 6) ok = reportUnwritten(writeIni(directory + "sb.ini"), directory + "sb.ini", errors);
    const std::string fixedPath = directory + fixedFileName(version);
    ok = reportUnwritten(writeFixedFile(record, version, fixedPath, soils), fixedPath, errors) && ok;
    const std::string sitePath = directory + "sbsite.100";
    ok = reportUnwritten(writeSiteFile(record, version, sitePath, soils, stations, errors), sitePath, errors) && ok;
    const std::string schedulePath = directory + scheduleFileName(version);
    ok = reportUnwritten(writeScheduleFile(record, options.list(option_kind::crop), options.list(option_kind::tree),
                                           version, schedulePath, directory, stations, errors),
                         schedulePath, errors) &&
         ok;
    ok = writeOptionFiles(options, directory, version, errors) && ok;
    if (version == 4) ok = writeDailyFiles(record, directory, outfileSelected, soils, errors) && ok;
    return ok;
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

std::string outfilesText(int version, const outfile_flags& flags) {
    std::string out = "Output (0/1)  file_name         description\n";
    int rows = version == 4 ? kDailyOutputFileCount : kMonthlyRowCount;
    for (int row = 1; row <= rows; ++row) {
        daily_output_file entry = kDailyOutputFiles[static_cast<size_t>(row - 1)];
        if (row == kRespirationRow && version != 4) entry = kMonthlyRespiration;
        appendf(out, "%d             %-18s# %s\n", flags[static_cast<size_t>(row - 1)] ? 1 : 0, entry.file,
                entry.description);
    }
    return out;
}

bool writeOutfiles(const std::string& path, int version, const outfile_flags& flags, std::string& errors) {
    if (!writeTextFile(path, outfilesText(version, flags))) {
        appendf(errors, "ERROR, unable to open 'outfiles' file \"%s\".\n", path.c_str());
        return false;
    }
    return true;
}

}  // namespace sb
