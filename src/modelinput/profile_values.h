#pragma once
// Where each name of a record's fix.100, site file and sitepar.in lives in the
// project, under a release profile: the writers take a profile line's value
// from there, the importers put a file's value there. A name's place is the
// column the version reads it into (the fixed parameters of the Control
// Records row, the soil and its layers, the station's climate means, the Site
// Data row); a name with no place, and a "keep" line's name, is kept with
// the record.
#include <string>
#include <vector>

#include "app/message_sink.h"
#include "app/release_profile.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"

namespace sb {

// The three single-record parameter files, by the names the profiles and the
// kept values give them.
inline constexpr const char* kFixedFile = "fix.100";
inline constexpr const char* kSiteFile = "site.100";
inline constexpr const char* kSiteparFile = "sitepar.in";

// What one record's files are written from.
struct record_sources {
    const tellura_control_record& record;
    const tellura_soil* soil;                // nullptr: the soil's values are written as zero
    const tellura_weather_station* station;  // nullptr: the climate means are written as zero
    const release_profile& profile;
};

// The value of a database place by its file name; false when the project has
// no place of that name (for `file`: kFixedFile, kSiteFile or kSiteparFile).
// NLAYER of the site file is the profile's rule, see modelLayerCount().
bool placeValue(const record_sources& sources, const std::string& file, const std::string& name, double& value);

// The value a profile line writes (its place, the record's kept value or the
// line's fallback, as chooseValueSource() orders them); false with a message
// naming the record and the profile line when it has none.
bool profileLineValue(const record_sources& sources, const std::string& file, const profile_line& line, double& value,
                      message_sink& errors);

// A single-record parameter file's lines in the profile's order (kFixedFile or
// kSiteFile): text lines as they stand, value lines with their values (as
// whole numbers on "int" lines). False when a value is missing (reported, its
// line left out).
bool appendParameterFile(std::string& out, const record_sources& sources, const std::string& file,
                         message_sink& errors);

// The shipped profile of the files as Soilbench writes them for a version (an
// empty profile when it is not installed).
const release_profile& shippedReleaseProfile(int version);

// Whether a "when"/"unless" line is written for this record.
bool lineApplies(const profile_line& line, const control_record_row& row);

// The thicknesses (cm) of the model's layers, ADEP(1..10) as the profile's
// fix.100 writes them for this record.
std::vector<double> modelLayerThicknesses(const record_sources& sources, message_sink& errors);

// NLAYER as the profile's rule gives it. For "soils.in": the number of fix.100
// layers whose depths reach the bottom of the soil (soils.in), each ending on a
// soil layer boundary; false with a message saying why the release would refuse
// the soil when there is no such number.
bool modelLayerCount(const record_sources& sources, int& layers, message_sink& errors);

// Importing: stores a value read from `file` under the profile: a "keep" line's
// name, and a name that `store` does not take, is kept with the record.
// `store` puts the value into its place and says whether it took it.
template <class Store>
void importProfileValue(tellura_control_record& record, const release_profile* profile, const std::string& file,
                        const std::string& name, double value, Store store);

// The profile line of a file name (case ignored); nullptr when the profile has none.
const profile_line* findProfileLine(const release_profile& profile, const std::string& file, const std::string& name);

template <class Store>
void importProfileValue(tellura_control_record& record, const release_profile* profile, const std::string& file,
                        const std::string& name, double value, Store store) {
    const profile_line* line = profile ? findProfileLine(*profile, file, name) : nullptr;
    if ((line && line->keep) || !store()) record.kept.set(file, name, value);
}

}  // namespace sb
