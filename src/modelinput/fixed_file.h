#pragma once
// The fixed parameter file ("fix.100", "sbfix.100" for release 6): the model-wide
// parameters held as columns of the record's Control Records row, plus the
// soil's layer depths and transpiration weights; and its importer with the
// set-by-name dispatcher shared with the other parameter files.
#include <cstdint>
#include <string>
#include <string_view>

#include "app/message_sink.h"
#include "app/release_profile.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"

namespace sb {

// How the temperature effect on production is given: 1 the TMAX/TOPT/TSHL/TSHR
// form, 2 TEFF(1..3), 3 TEFF(1..4). The record keeps no selector, so it is
// read from the values: the TMAX form when every TEFF is zero and TMAX is
// not, TEFF(4) when it is non-zero.
int temperatureForm(const control_record_row& row);

struct record_sources;

// The text of the fixed file under a release profile: its title line, then
// the profile's [fix.100] lines. Missing values are reported (naming the
// profile line) and their lines left out.
std::string fixedFileText(const record_sources& sources, message_sink& errors);
// The same for a Control Records row alone under the version's shipped
// profile (the file as Soilbench writes it); a missing soil writes zero depths
// and weights (version 4 writes its own fixed depths anyway).
std::string fixedFileText(const control_record_row& row, int version, const tellura_soil* soil);
// False when a value is missing or the file cannot be written (the latter is
// not reported here).
bool writeFixedFile(const tellura_control_record& record, const release_profile& profile, const std::string& path,
                    const tellura_soils& soils, message_sink& errors);

// A fixed parameter by its file name with the version's rules (DEC5, P2CO2,
// PCEMIC/PCEMIC1, PSECOC1/PSECOC2, the VARAT matrices, TEXEPP(1) as a flag).
// Returns whether the name was found.
bool setFixedParameterByName(control_record_row& row, std::string_view name, double value, int version,
                             message_sink& messages);

// The Control Records column a fixed file name is read into (and written
// from) for a version, by the same rules; "" when no fixed parameter has it.
std::string fixedParameterColumn(std::string_view name, int version);

// Routes a name to the station (climate names, when a station is given: any
// other name is then not found), then to the soil (when given), then to the
// fixed parameters.
bool setParameterByName(std::string_view name, double value, control_record_row& row, tellura_soil* soil,
                        tellura_weather_station* station, int version, message_sink& messages);

// Reads a fixed file under a release profile: the title line is passed over,
// "*" lines are comments, an empty line ends it; the value is in the first 12
// characters, the name from the 15th on. Each value goes to its place for the
// profile's version; a name of a "keep" line, and a name no place takes, is
// kept with the record. "ERROR, can't open file %s.\n" when it cannot be
// opened; a name given twice is reported with its line and fails the import.
// Every other message a line gives is followed by "File: \"<path>\", line
// <n>\n", and the result is then false (the values of the other lines are
// still read).
bool importFixedFile(tellura_control_record& record, const std::string& path, tellura_soil* soil,
                     const release_profile& profile, message_sink& messages);
// The same under the version's shipped profile.
bool importFixedFile(tellura_control_record& record, const std::string& path, tellura_soil* soil, int version,
                     message_sink& messages);

}  // namespace sb
