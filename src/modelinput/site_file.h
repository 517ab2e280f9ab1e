#pragma once
// The site parameter file "sbsite.100" (climate means of the record's weather
// station, the soil, and the record's site initial values) and the daily-step
// site parameters "sitepar.in", with their importers.
#include <string>

#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"

namespace sb {

// The text of "sbsite.100" for a version. A missing soil or station (nullptr)
// writes their values as zero.
std::string siteFileText(const tellura_control_record& record, int version, const TelluraSoils* soil,
                         const TelluraWeatherStations* station);

// Writes "sbsite.100", looking up the record's soil and station. A missing soil
// or station, or a station without climate means, is warned about and written
// as zeros. False only when the file cannot be written (no message: the run
// directory preparation reports files it could not write).
bool writeSiteFile(const tellura_control_record& record, int version, const std::string& path,
                   const tellura_soil_list& soils, const tellura_weather_station_list& stations, std::string& errors);

// The text of "sitepar.in" from the record's Site Data row.
std::string siteparText(const TelluraSiteData& site, int version);
// Writes "sitepar.in"; on failure "ERROR, unable to open 'outfiles' file \"%s\".\n".
bool writeSitepar(const TelluraSiteData& site, const std::string& path, int version, std::string& errors);

// Reads a site file by parameter name into the record's Site Data row (and
// SITLAT/SITLNG into the record). Soil names go to `soil` and climate names
// to `station` when they are given, and are passed over otherwise. False when
// the file cannot be read or any line gave a message (each followed by the
// file and line).
bool importSiteFile(const std::string& path, tellura_control_record& record, TelluraSoils* soil,
                    TelluraWeatherStations* station, std::string& messages);

// Reads "sitepar.in" by position, in the written order. A "timstep" first line
// and the four soil region lines of older releases are recognised by their
// comments and read too.
bool importSitepar(const std::string& path, tellura_control_record& record, std::string& messages);

}  // namespace sb
