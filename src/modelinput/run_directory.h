#pragma once
// Writing the complete set of model input files for one control record into
// the run directory (the folder of the version's model executable): the ini
// file (release 6), fixed, site and schedule files with their weather files,
// the ten option files and, for the daily-step release, soils.in, sitepar.in
// and the output-file selection outfiles.in.
#include <array>
#include <string>

#include "app/message_sink.h"
#include "app/release_profile.h"
#include "records/option_lists.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"

namespace sb {

constexpr int kDailyOutputFileCount = 28;
using outfile_flags = std::array<bool, kDailyOutputFileCount>;

struct daily_output_file {
    const char* file;
    const char* description;
};
// The 28 optional daily output files, in the order of the settings' flags.
const std::array<daily_output_file, kDailyOutputFileCount>& dailyOutputFiles();

// The folder part of an executable path with its trailing separator ("/" or
// "\"); empty when the path has no folder part (the current folder).
std::string runDirectoryOf(const std::string& modelExecutable);

// The schedule's name for a version: "sb.evt" (1), "sb.sch" (2..6), "ERROR" otherwise.
const char* scheduleFileName(int version);
// "sbfix.100" for release 6, "fix.100" otherwise.
const char* fixedFileName(int version);

// Writes every file for a release profile (its version decides which files),
// appending problems to `errors`; one failing file does not stop the others.
// False when any file could not be written or a value a profile line needs is
// missing; also when the profile needs a file beside the schedule that the
// record does not hold.
bool prepareRunDirectory(const tellura_control_record& record, const release_profile& profile,
                         const std::string& modelExecutable, const outfile_flags& outfileSelected,
                         const option_lists& options, const tellura_soils& soils,
                         const tellura_weather_stations& stations, message_sink& errors);
// The same with the version's shipped profile (the files as Soilbench writes them).
bool prepareRunDirectory(const tellura_control_record& record, int version, const std::string& modelExecutable,
                         const outfile_flags& outfileSelected, const option_lists& options, const tellura_soils& soils,
                         const tellura_weather_stations& stations, message_sink& errors);

// "sb.ini" with CR LF line ends; nothing is reported when it cannot be created.
bool writeIni(const std::string& path);
// "outfiles.in": the profile's header and rows, each switched on by its setting.
bool writeOutfiles(const std::string& path, const release_profile& profile, const outfile_flags& flags,
                   message_sink& errors);
std::string outfilesText(const release_profile& profile, const outfile_flags& flags);

}  // namespace sb
