#include "modelinput/profile_values.h"

#include <cmath>
#include <cstdlib>

#include "app/release_profile_catalogue.h"
#include "app/text_format.h"
#include "db/database_maker.h"
#include "modelinput/fixed_file.h"
#include "modelinput/parameter_names.h"
#include "modelinput/soil_site_names.h"
#include "paramfile/value_line_writer.h"

namespace sb {

namespace {

constexpr int kModelLayerSlots = 10;

// "NAME(i)" / "NAME(i,j)": the base and its subscripts; no subscripts for a plain name.
std::string splitName(const std::string& canonical, std::vector<int>& subscripts) {
    subscripts.clear();
    size_t open = canonical.find('(');
    if (open == std::string::npos) return canonical;
    size_t at = open + 1;
    while (at < canonical.size()) {
        subscripts.push_back(std::atoi(canonical.c_str() + at));
        at = canonical.find_first_of(",)", at);
        if (at == std::string::npos || canonical[at] == ')') break;
        ++at;
    }
    return canonical.substr(0, open);
}

bool climateValue(const tellura_weather_station* station, const std::string& base, int month, double& value) {
    static const struct {
        const char* name;
        float weather_month_means::*member;
    } kSeries[] = {{"PRECIP", &weather_month_means::precip},
                   {"PRCSTD", &weather_month_means::prcstd},
                   {"PRCSKW", &weather_month_means::prcskw},
                   {"TMN2M", &weather_month_means::tmn2m},
                   {"TMX2M", &weather_month_means::tmx2m}};
    if (month < 1 || month > 12) return false;
    for (const auto& series : kSeries)
        if (base == series.name) {
            value = station ? station->means[static_cast<size_t>(month - 1)].*series.member : 0.0;
            return true;
        }
    return false;
}

bool soilValue(const tellura_soil* soil, const std::string& base, const std::vector<int>& subscripts, double& value) {
    const tellura_soil none;
    const tellura_soil& from = soil ? *soil : none;
    if (subscripts.empty()) {
        if (!soilColumnOfSiteName(base)) return false;
        value = soilSiteValue(from, base);
        return true;
    }
    int layer = subscripts[0];
    if (layer < 1 || layer > kMaxSoilLayers) return false;
    if (base == "MINERL") {
        if (subscripts.size() != 2 || subscripts[1] < 1 || subscripts[1] > 3) return false;
        value = soilMineralValue(from, layer, subscripts[1]);
        return true;
    }
    if (subscripts.size() != 1) return false;
    for (const char* name : {"AWILT", "AFIEL", "AWTL", "RWCF", "ADEP"})
        if (base == name) {
            value = soilLayerValue(from, base, layer);
            return true;
        }
    return false;
}

bool fixedPlaceValue(const record_sources& sources, const std::string& canonical, double& value) {
    std::vector<int> subscripts;
    std::string base = splitName(canonical, subscripts);
    if (base == "ADEP" || base == "AWTL") return soilValue(sources.soil, base, subscripts, value);
    const control_record_row& row = sources.record.row;
    // TEXEPP(1) is a yes/no column: the file carries it as 1 or 0.
    if (canonical == "TEXEPP(1)") {
        value = row.flag(row.column("TEXEPP(1)")) ? 1.0 : 0.0;
        return true;
    }
    std::string column = fixedParameterColumn(canonical, sources.profile.version);
    if (column.empty() || row.column(column) < 0) return false;
    value = row.number(column);
    return true;
}

bool sitePlaceValue(const record_sources& sources, const std::string& canonical, double& value) {
    std::vector<int> subscripts;
    std::string base = splitName(canonical, subscripts);
    if (isClimateName(canonical))
        return subscripts.size() == 1 && climateValue(sources.station, base, subscripts[0], value);
    const control_record_row& row = sources.record.row;
    if (canonical == "SITLAT" || canonical == "SITLNG") {
        value = row.number(canonical == "SITLAT" ? "Latitude" : "Longitude");
        return true;
    }
    if (isSoilSiteName(canonical)) return soilValue(sources.soil, base, subscripts, value);
    const site_data_row& site = sources.record.site;
    int column = site.column(siteColumnOfName(canonical));
    if (column < 0 || canonical == "ID") return false;
    value = site.number(column);
    return true;
}

bool siteparPlaceValue(const record_sources& sources, const std::string& name, double& value) {
    const site_data_row& site = sources.record.site;
    int column = site.column(name);
    if (column < 0 || iequals(name, "ID")) return false;
    // Yes/no columns (the extra drivers, the water table months) are 1 or 0 in the file.
    value = site.def().fields()[static_cast<size_t>(column)].type == kTypeBit ? (site.flag(column) ? 1.0 : 0.0)
                                                                              : site.number(column);
    return true;
}

// A "from" line names the database column itself: of the Control Records row
// for the fixed file, of the Site Data row for the others.
bool namedColumnValue(const record_sources& sources, const std::string& file, const std::string& column,
                      double& value) {
    const table_record& row = file == kFixedFile ? static_cast<const table_record&>(sources.record.row)
                                                 : static_cast<const table_record&>(sources.record.site);
    int at = row.column(column);
    if (at < 0 || row.isText(at)) return false;
    value = row.def().fields()[static_cast<size_t>(at)].type == kTypeBit ? (row.flag(at) ? 1.0 : 0.0) : row.number(at);
    return true;
}

}  // namespace

bool placeValue(const record_sources& sources, const std::string& file, const std::string& name, double& value) {
    if (file == kSiteparFile) return siteparPlaceValue(sources, name, value);
    std::string canonical = canonicalParameterName(name);
    if (file == kFixedFile) return fixedPlaceValue(sources, canonical, value);
    if (file == kSiteFile) return sitePlaceValue(sources, canonical, value);
    return false;
}

bool lineApplies(const profile_line& line, const control_record_row& row) {
    if (line.condition.empty()) return true;
    int form = temperatureForm(row);
    bool holds = line.condition == "tmax-form" ? form == 1 : form == 3;
    return holds != line.negated;
}

bool profileLineValue(const record_sources& sources, const std::string& file, const profile_line& line, double& value,
                      message_sink& errors) {
    // NLAYER follows the profile's rule, whatever the record or the soil says.
    if (file == kSiteFile && line.column.empty() && canonicalParameterName(line.name) == "NLAYER") {
        int layers = 0;
        if (!modelLayerCount(sources, layers, errors)) return false;
        value = layers;
        return true;
    }
    double placed = 0;
    bool hasPlace = line.column.empty() ? placeValue(sources, file, line.name, placed)
                                        : namedColumnValue(sources, file, line.column, placed);
    const double* kept = sources.record.kept.find(file, line.name);
    switch (chooseValueSource(line, hasPlace, kept != nullptr)) {
        case value_source::place:
            value = placed;
            return true;
        case value_source::kept:
            value = *kept;
            return true;
        case value_source::fallback:
            value = *line.fallback;
            return true;
        case value_source::none:
            break;
    }
    errors.errorf("ERROR, record %ld has no value for \"%s\", which %s writes into %s.\n",
                  static_cast<long>(sources.record.id()), line.name.c_str(), sources.profile.where(line.line).c_str(),
                  file.c_str());
    return false;
}

// The lines of a single-record parameter file in a profile's order: text
// lines as they stand, value lines with their values (as whole numbers on
// "int" lines). False when a value is missing (reported, the line left out).
bool appendParameterFile(std::string& out, const record_sources& sources, const std::string& file,
                         message_sink& errors) {
    const std::vector<profile_line>* lines = sources.profile.lines(file);
    if (!lines) {
        errors.errorf("ERROR, release profile \"%s\" (%s) has no [%s] section.\n", sources.profile.name.c_str(),
                      sources.profile.path.c_str(), file.c_str());
        return false;
    }
    bool ok = true;
    for (const profile_line& line : *lines) {
        if (line.isText()) {
            out += line.text + "\n";
            continue;
        }
        if (!lineApplies(line, sources.record.row)) continue;
        double value = 0;
        if (!profileLineValue(sources, file, line, value, errors)) {
            ok = false;
            continue;
        }
        if (line.integer) writeSmallInt(out, static_cast<int>(value), line.name);
        else writeReal(out, value, line.name);
    }
    return ok;
}

const release_profile& shippedReleaseProfile(int version) {
    static const release_profile none;
    const release_profile* profile = release_profile_catalogue::shipped().find(defaultReleaseProfileName(version));
    return profile ? *profile : none;
}

const profile_line* findProfileLine(const release_profile& profile, const std::string& file, const std::string& name) {
    const std::vector<profile_line>* lines = profile.lines(file);
    if (!lines) return nullptr;
    std::string canonical = canonicalParameterName(name);
    for (const profile_line& line : *lines)
        if (!line.isText() && canonicalParameterName(line.name) == canonical) return &line;
    return nullptr;
}

std::vector<double> modelLayerThicknesses(const record_sources& sources, message_sink& errors) {
    std::vector<double> thicknesses;
    for (int layer = 1; layer <= kModelLayerSlots; ++layer) {
        const profile_line* line = findProfileLine(sources.profile, kFixedFile, subscripted("ADEP", layer));
        double value = 0;
        if (line && !profileLineValue(sources, kFixedFile, *line, value, errors)) value = 0;
        thicknesses.push_back(value);
    }
    return thicknesses;
}

bool modelLayerCount(const record_sources& sources, int& layers, message_sink& errors) {
    switch (sources.profile.nlayer) {
        case nlayer_rule::fixed:
            layers = sources.profile.nlayerCount;
            return true;
        case nlayer_rule::soil:
            layers = sources.soil ? static_cast<int>(soilSiteValue(*sources.soil, "NLAYER")) : 0;
            return true;
        case nlayer_rule::soils_in:
            break;
    }
    const long id = static_cast<long>(sources.record.id());
    if (!sources.soil || sources.soil->layerCount == 0) {
        errors.errorf("ERROR, record %ld: NLAYER follows soils.in for %s, but the record's soil has no layers.\n", id,
                      sources.profile.where(0).c_str());
        return false;
    }
    std::vector<int> bottoms = sources.soil->layerDepths();
    std::vector<double> thicknesses = modelLayerThicknesses(sources, errors);
    std::string depths;
    double depth = 0;
    for (int layer = 1; layer <= kModelLayerSlots; ++layer) {
        depth += thicknesses[static_cast<size_t>(layer - 1)];
        appendf(depths, "%s%g", depths.empty() ? "" : " ", depth);
        bool onBoundary = false;
        for (int bottom : bottoms) onBoundary = onBoundary || std::fabs(bottom - depth) < 1e-6;
        if (!onBoundary) break;
        if (std::fabs(depth - bottoms.back()) < 1e-6) {
            layers = layer;
            return true;
        }
    }
    std::string soilBottoms;
    for (int bottom : bottoms) appendf(soilBottoms, "%s%d", soilBottoms.empty() ? "" : " ", bottom);
    errors.errorf(
        "ERROR, record %ld: the layers of fix.100 (ADEP, ending at %s cm) do not end on the layers of soil %ld "
        "(ending at %s cm): the release refuses such a soil (\"Soil structures in fix.100 and soils.in are not "
        "compatible.\").\n",
        id, depths.c_str(), static_cast<long>(sources.soil->soilId()), soilBottoms.c_str());
    return false;
}

}  // namespace sb
