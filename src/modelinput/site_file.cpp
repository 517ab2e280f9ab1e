#include "modelinput/site_file.h"

#include <array>
#include <utility>

#include "app/number_text.h"
#include "app/text_format.h"
#include "db/database_maker.h"
#include "modelinput/parameter_names.h"
#include "modelinput/profile_values.h"
#include "modelinput/soil_site_names.h"
#include "app/text_file.h"
#include "paramfile/tellura_input_list.h"
#include "paramfile/value_line_writer.h"

namespace sb {

std::string siteFileText(const record_sources& sources, message_sink& errors) {
    std::string out;
    out.reserve(16384);
    appendf(out, "X  Archived site file record. ID=%ld\n", static_cast<long>(sources.record.id()));
    appendParameterFile(out, sources, kSiteFile, errors);
    return out;
}

std::string siteFileText(const tellura_control_record& record, int version, const tellura_soil* soil,
                         const tellura_weather_station* station) {
    message_sink ignored;
    return siteFileText({record, soil, station, shippedReleaseProfile(version)}, ignored);
}

bool writeSiteFile(const tellura_control_record& record, const release_profile& profile, const std::string& path,
                   const tellura_soils& soils, const tellura_weather_stations& stations, message_sink& errors) {
    const tellura_soil* soil = soils.find(record.soilId());
    const tellura_weather_station* station = stations.find(record.weatherId());
    if (!soil)
        errors.warningf("WARNING, soil %ld of record %ld not found, site file soil values written as zero.\n",
                        static_cast<long>(record.soilId()), static_cast<long>(record.id()));
    if (!station)
        errors.warningf(
            "WARNING, weather station %ld of record %ld not found, site file climate values written as zero.\n",
            static_cast<long>(record.weatherId()), static_cast<long>(record.id()));
    else if (!station->hasMeans)
        errors.warningf(
            "WARNING, weather station %ld has no monthly climate means, site file climate values written as zero.\n",
            static_cast<long>(station->id));
    message_sink problems;
    std::string text = siteFileText({record, soil, station, profile}, problems);
    errors.add(problems);
    return problems.empty() && writeTextFile(path, text);
}

// ---------------------------------------------------------------------------
// sitepar.in

namespace {

constexpr size_t kPairWidth = 15;

// The value of one name of a sitepar.in line, by the same rules as every
// other profile line.
bool siteparValue(const record_sources& sources, const profile_sitepar_line& entry, size_t index,
                  const std::string& name, double& value, message_sink& errors) {
    profile_line line;
    line.name = name;
    line.keep = entry.keep;
    line.line = entry.line;
    if (index < entry.fallback.size()) line.fallback = entry.fallback[index];
    return profileLineValue(sources, kSiteparFile, line, value, errors);
}

// The value text padded to `width`, then the comment after `gap` blanks. A
// pair without a comment stands alone; single values keep their width.
void appendValueLine(std::string& out, const std::string& value, size_t width, const char* gap,
                     const std::string& comment, bool padAlone = true) {
    out += value;
    if (value.size() < width && (padAlone || !comment.empty())) out.append(width - value.size(), ' ');
    if (!comment.empty()) out += gap + comment;
    out += "\n";
}

bool appendSiteparLine(std::string& out, const record_sources& sources, const profile_sitepar_line& entry,
                       message_sink& errors) {
    if (entry.form == sitepar_form::months) {
        bool ok = true;
        for (int month = 1; month <= 12; ++month) {
            double value = 0;
            ok = siteparValue(sources, entry, 0, subscripted(entry.names[0], month), value, errors) && ok;
            appendf(out, "%-2d %d\n", month, static_cast<int>(value));
        }
        return ok;
    }
    std::vector<double> values;
    for (size_t i = 0; i < entry.names.size(); ++i) {
        double value = 0;
        if (!siteparValue(sources, entry, i, entry.names[i], value, errors)) return false;
        values.push_back(value);
    }
    switch (entry.form) {
        case sitepar_form::integer:
            appendValueLine(out, strprintf("%d", static_cast<int>(values[0])), 2, "             ", entry.comment);
            break;
        case sitepar_form::whole:
            appendValueLine(out, strprintf("%d", static_cast<int>(values[0])), 10, "     ", entry.comment);
            break;
        case sitepar_form::real:
            appendValueLine(out, exactDecimals(values[0], entry.decimals), 10, "     ", entry.comment);
            break;
        case sitepar_form::pair:
            appendValueLine(out, exactDecimals(values[0], 1) + " " + exactDecimals(values[1], 1), kPairWidth, "",
                            entry.comment, false);
            break;
        case sitepar_form::pair_integer:
            appendValueLine(out, strprintf("%d %d", static_cast<int>(values[0]), static_cast<int>(values[1])),
                            kPairWidth, "", entry.comment, false);
            break;
        case sitepar_form::months:
            break;
    }
    return true;
}

}  // namespace

std::string siteparText(const record_sources& sources, message_sink& errors) {
    std::string out;
    for (const profile_sitepar_line& entry : sources.profile.sitepar) appendSiteparLine(out, sources, entry, errors);
    return out;
}

bool writeSitepar(const record_sources& sources, const std::string& path, message_sink& errors) {
    message_sink problems;
    std::string text = siteparText(sources, problems);
    errors.add(problems);
    if (!problems.empty()) return false;
    if (!writeTextFile(path, text)) {
        errors.errorf("ERROR, unable to open 'outfiles' file \"%s\".\n", path.c_str());
        return false;
    }
    return true;
}

// ---------------------------------------------------------------------------
// Importers

namespace {

// One record of a site file: every value line is routed by its name; a
// "keep" line's name, and a name no place takes, is kept with the record.
class site_file_target : public tellura_input {
public:
    site_file_target(tellura_control_record& record, tellura_soil* soil, tellura_weather_station* station,
                     const release_profile* profile, bool& climateRead)
        : record_(record), soil_(soil), station_(station), profile_(profile), climateRead_(climateRead) {}

    bool setField(std::string_view fieldName, double value, message_sink& errors) override {
        const profile_line* line = profile_ ? findProfileLine(*profile_, kSiteFile, std::string(fieldName)) : nullptr;
        if (line && line->keep) return keepValue(fieldName, value);
        std::string name = canonicalParameterName(fieldName);
        if (isClimateName(name)) {
            if (!station_ || !station_->setClimateMean(name, value, errors)) return false;
            climateRead_ = true;
            return true;
        }
        if (isSoilSiteName(name)) return soil_ && setSoilBySiteName(*soil_, name, value, errors);
        if (name == "SITLAT") return record_.row.setNumber("Latitude", value);
        if (name == "SITLNG") return record_.row.setNumber("Longitude", value);
        if (name == "ID") return false;  // the key is the record's own
        return record_.site.setNumber(siteColumnOfName(name), value);
    }
    bool keepValue(std::string_view fieldName, double value) override {
        record_.kept.set(kSiteFile, fieldName, value);
        return true;
    }
    void writeValues(std::string&, int) const override {}

private:
    tellura_control_record& record_;
    tellura_soil* soil_;
    tellura_weather_station* station_;
    const release_profile* profile_;
    bool& climateRead_;
};

class site_file_reader : public tellura_input_list {
public:
    site_file_reader(tellura_control_record& record, tellura_soil* soil, tellura_weather_station* station,
                     const release_profile* profile)
        : record_(record), soil_(soil), station_(station), profile_(profile) {}
    std::unique_ptr<tellura_input> makeRecord() const override {
        return std::make_unique<site_file_target>(record_, soil_, station_, profile_, climateRead);
    }
    // Set when a climate mean went to the station.
    mutable bool climateRead = false;

private:
    tellura_control_record& record_;
    tellura_soil* soil_;
    tellura_weather_station* station_;
    const release_profile* profile_;
};

}  // namespace

bool importSiteFile(const std::string& path, tellura_control_record& record, tellura_soil* soil,
                    tellura_weather_station* station, message_sink& messages, const release_profile* profile) {
    std::string text;
    if (!readTextFile(path, text, messages, strprintf("ERROR, cannot open site file \"%s\"\n", path.c_str())))
        return false;
    site_file_reader reader(record, soil, station, profile);
    std::string status;
    import_counts counts = reader.importText(text, path, messages, status);
    if (reader.climateRead) station->hasMeans = true;
    messages.notef("Imported site data from \"%s\"\n", path.c_str());
    return counts.badLines == 0 && counts.duplicates == 0;
}

namespace {

// Reads sitepar.in line by line in the order of the profile's layout.
class sitepar_reader {
public:
    sitepar_reader(const std::vector<std::string>& lines, tellura_control_record& record,
                   const release_profile& profile, message_sink& messages)
        : lines_(lines), record_(record), profile_(profile), messages_(messages) {}

    void read() {
        for (const profile_sitepar_line& entry : profile_.sitepar) {
            if (entry.form == sitepar_form::months) months(entry);
            else values(entry);
        }
    }

private:
    std::vector<std::string> take(size_t count) {
        if (next_ >= lines_.size()) return {};
        std::vector<std::string> tokens = splitTokens(lines_[next_++]);
        if (tokens.size() > count) tokens.resize(count);
        return tokens;
    }
    void store(const profile_sitepar_line& entry, const std::string& name, double value) {
        site_data_row& site = record_.site;
        int column = site.column(name);
        if (entry.keep || column < 0 || iequals(name, "ID")) {
            record_.kept.set(kSiteparFile, name, value);
            return;
        }
        if (site.def().fields()[static_cast<size_t>(column)].type == kTypeBit) site.setFlag(column, value != 0.0);
        else site.setNumber(column, value);
    }
    void values(const profile_sitepar_line& entry) {
        std::vector<std::string> tokens = take(entry.names.size());
        for (size_t i = 0; i < tokens.size(); ++i) store(entry, entry.names[i], toReal(tokens[i]));
    }
    // Twelve "month value" lines; storing stops at the first month out of
    // sequence, but all twelve lines are consumed so later values stay in place.
    void months(const profile_sitepar_line& entry) {
        const std::string& base = entry.names[0];
        bool inOrder = true;
        for (int month = 1; month <= 12; ++month) {
            std::vector<std::string> tokens = take(2);
            if (!inOrder) continue;
            if (tokens.size() < 2 || toInteger(tokens[0]) != month) {
                messages_.errorf("ERROR, %s month out of order in site parameters file.\n", base.c_str());
                inOrder = false;
                continue;
            }
            store(entry, subscripted(base, month), static_cast<double>(toInteger(tokens[1])));
        }
    }

    const std::vector<std::string>& lines_;
    size_t next_ = 0;
    tellura_control_record& record_;
    const release_profile& profile_;
    message_sink& messages_;
};

}  // namespace

int siteparLineCount(const release_profile& profile) {
    int count = 0;
    for (const profile_sitepar_line& entry : profile.sitepar) count += entry.form == sitepar_form::months ? 12 : 1;
    return count;
}

bool importSitepar(const std::string& path, tellura_control_record& record, const release_profile& profile,
                   message_sink& messages) {
    std::string text;
    if (!readTextFile(path, text, messages,
                      strprintf("ERROR, cannot open site parameters file \"%s\"\n", path.c_str())))
        return false;
    std::vector<std::string> lines = splitLines(text);
    while (!lines.empty() && trim(lines.back()).empty()) lines.pop_back();
    if (static_cast<int>(lines.size()) != siteparLineCount(profile))
        messages.warningf("WARNING, \"%s\" has %zu lines; %s reads %d.\n", path.c_str(), lines.size(),
                          profile.where(0).c_str(), siteparLineCount(profile));
    sitepar_reader(lines, record, profile, messages).read();
    messages.notef("Imported site parameters from \"%s\"\n", path.c_str());
    return true;
}

}  // namespace sb
