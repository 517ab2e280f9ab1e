#pragma once
// The management schedule ("sb.sch", "sb.evt" for release 1): simulation years,
// start-up options, initial crop and tree, then the event blocks with their
// events. Writing it also writes one weather file per station that F/C blocks
// read. Reading it back gives the record's run-control values and blocks.
#include <string>
#include <vector>

#include "app/message_sink.h"
#include "app/release_profile.h"
#include "modelinput/weather_file.h"
#include "paramfile/tellura_input_list.h"
#include "records/tellura_control_record.h"
#include "records/tellura_weather_station.h"

namespace sb {

// Day of the year of a date in a non-leap year (1 January is 1).
int dayOfYear(int month, int day);
// Month and day of a day of the year in a non-leap year; days past 365 fall in December.
void monthAndDay(int dayOfYear, int& month, int& day);

// The schedule's text for the profile's version, its output intervals in the
// profile's form. Problems (an unknown initial crop or tree, an item cut to 20
// characters) are appended to `errors`.
std::string scheduleFileText(const tellura_control_record& record, const tellura_input_list& crops,
                             const tellura_input_list& trees, const release_profile& profile, message_sink& errors);
// The same with the version's own interval form (whole months for 3 to 5, years otherwise).
std::string scheduleFileText(const tellura_control_record& record, const tellura_input_list& crops,
                             const tellura_input_list& trees, int version, message_sink& errors);

// One entry per station read by F/C blocks, spanning all their years. A block
// whose station is missing gives "ERROR, weather station not found for event block.\n".
std::vector<tellura_weather_recorded_for_block> gatherBlockWeather(const std::vector<tellura_event_block>& blocks,
                                                                   const tellura_weather_stations& stations,
                                                                   message_sink& errors);

// Writes the schedule and the weather files of its blocks into `runDirectory`
// (which ends in a separator, or is empty for the current folder). False when
// the schedule itself cannot be written.
bool writeScheduleFile(const tellura_control_record& record, const tellura_input_list& crops,
                       const tellura_input_list& trees, const release_profile& profile, const std::string& path,
                       const std::string& runDirectory, const tellura_weather_stations& stations, message_sink& errors);

// What a schedule names besides the record's values.
struct schedule_references {
    std::string siteFile;                   // "Site file name"
    std::vector<std::string> weatherFiles;  // per block: the file line after an F (or C) choice
};

// Reads a schedule written for `version` into the record: its description
// (from the "#ID name" line), run-control columns, initial crop and tree, and
// blocks with their events (replacing the record's). Blocks start the year
// after the previous one ends, the first at the starting year. A block whose
// weather file is "sb%06d.wth" gets that station ID.
bool readScheduleFile(const std::string& path, const release_profile& profile, tellura_control_record& record,
                      schedule_references& references, message_sink& errors);
bool readScheduleFile(const std::string& path, int version, tellura_control_record& record,
                      schedule_references& references, message_sink& errors);
bool readScheduleText(const std::string& text, const std::string& path, int version, tellura_control_record& record,
                      schedule_references& references, message_sink& errors);

}  // namespace sb
