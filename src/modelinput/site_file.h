#pragma once
// The site parameter file "sbsite.100" (climate means of the record's weather
// station, the soil, and the record's site initial values) and the daily-step
// site parameters "sitepar.in", with their importers. Which names the files
// hold, in which order, is the release profile's.
#include <string>

#include "app/message_sink.h"
#include "app/release_profile.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"

namespace sb {

struct record_sources;

// The text of "sbsite.100": its title line, then the profile's [site.100]
// lines. Missing values are reported (naming the profile line).
std::string siteFileText(const record_sources& sources, message_sink& errors);
// The same under the version's shipped profile. A missing soil or station
// (nullptr) writes their values as zero.
std::string siteFileText(const tellura_control_record& record, int version, const tellura_soil* soil,
                         const tellura_weather_station* station);

// Writes "sbsite.100", looking up the record's soil and station. A missing soil
// or station, or a station without climate means, is warned about and written
// as zeros. False when a value is missing (reported) or the file cannot be
// written (not reported: the run directory preparation reports files it could
// not write).
bool writeSiteFile(const tellura_control_record& record, const release_profile& profile, const std::string& path,
                   const tellura_soils& soils, const tellura_weather_stations& stations, message_sink& errors);

// The text of "sitepar.in": the profile's [sitepar.in] lines.
std::string siteparText(const record_sources& sources, message_sink& errors);
// Writes "sitepar.in"; on failure "ERROR, unable to open 'outfiles' file \"%s\".\n".
bool writeSitepar(const record_sources& sources, const std::string& path, message_sink& errors);
// How many lines the profile's sitepar.in has.
int siteparLineCount(const release_profile& profile);

// Reads a site file by parameter name into the record's Site Data row (and
// SITLAT/SITLNG into the record). Soil names go to `soil` and climate names
// to `station` when they are given. A name of one of the profile's "keep"
// lines, and a name no place takes, is kept with the record. False when the
// file cannot be read, a name is given twice (reported with its line) or any
// line gave a message (each followed by the file and line).
bool importSiteFile(const std::string& path, tellura_control_record& record, tellura_soil* soil,
                    tellura_weather_station* station, message_sink& messages, const release_profile* profile = nullptr);

// Reads "sitepar.in" by position, line for line as the profile lays it out; a
// file with another line count than the profile's is warned about.
bool importSitepar(const std::string& path, tellura_control_record& record, const release_profile& profile,
                   message_sink& messages);

}  // namespace sb
