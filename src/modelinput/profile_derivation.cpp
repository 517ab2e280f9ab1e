#include "modelinput/profile_derivation.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>

#include "app/name_pattern.h"
#include "app/number_text.h"
#include "app/release_profile.h"
#include "app/text_file.h"
#include "app/text_format.h"
#include "modelinput/parameter_names.h"
#include "modelinput/profile_values.h"
#include "modelinput/run_directory.h"
#include "modelinput/schedule_file.h"
#include "records/option_layout.h"
#include "records/option_member.h"

namespace sb {

namespace {

namespace fs = std::filesystem;

std::string inFolder(const std::string& folder, const std::string& file) { return (fs::path(folder) / file).string(); }

std::string unquoted(std::string name) {
    name.erase(std::remove(name.begin(), name.end(), '\''), name.end());
    return name;
}

std::string baseOf(const std::string& name) { return toUpper(name.substr(0, name.find('('))); }

// One value line of a derived section, before runs of names are joined.
struct derived_line {
    std::string text;  // a text line; empty for a value line
    std::string name;
    bool keep = false;
    std::optional<double> fallback;
};

// Joins runs of names into patterns, where every line of the run is alike.
void appendLines(std::string& out, const std::vector<derived_line>& lines) {
    for (size_t i = 0; i < lines.size();) {
        if (!lines[i].text.empty()) {
            out += "text " + lines[i].text + "\n";
            ++i;
            continue;
        }
        std::vector<std::string> names;
        for (size_t j = i; j < lines.size() && lines[j].text.empty() && lines[j].keep == lines[i].keep &&
                           lines[j].fallback.has_value() == lines[i].fallback.has_value();
             ++j)
            names.push_back(lines[j].name);
        std::string pattern;
        size_t run = namePatternRun(names, 0, pattern);
        out += pattern;
        if (lines[i].keep) out += " keep";
        if (lines[i].fallback) {
            out += " =";
            for (size_t k = i; k < i + run; ++k) out += " " + exactDecimals(*lines[k].fallback, 1);
        }
        out += "\n";
        i += run;
    }
}

// The daily-step model's layers are fix.100's (ADEP), not soils.in's: the
// arrays of one value per model layer cannot be the soil's layer values, so
// a set-up's own values stay with the record.
bool isModelLayerArray(const std::string& file, const std::string& base) {
    if (file == kFixedFile) return base == "ADEP" || base == "AWTL";
    return base == "AWILT" || base == "AFIEL" || base == "MINERL" || base == "RWCF";
}

bool deriveSingleRecord(const profile_derivation& from, const std::string& file, const std::string& path,
                        bool dailyStep, std::string& out, message_sink& errors) {
    std::string text;
    if (!readTextFile(path, text, errors, strprintf("ERROR, cannot read \"%s\".\n", path.c_str()))) return false;
    release_profile version;
    version.version = from.version;
    tellura_control_record record;
    record_sources sources{record, nullptr, nullptr, version};
    std::vector<derived_line> lines;
    std::vector<std::string> all = splitLines(text);
    for (size_t i = 1; i < all.size(); ++i) {
        std::string_view line = trim(all[i]);
        if (line.empty()) break;
        if (line.front() == '*') {
            lines.push_back({std::string(line), {}, false, {}});
            continue;
        }
        std::vector<std::string> tokens = splitTokens(line);
        if (tokens.size() < 2) continue;
        derived_line entry{{}, unquoted(tokens[1]), false, {}};
        const std::string base = baseOf(entry.name);
        double ignored = 0;
        entry.keep = dailyStep && isModelLayerArray(file, base);
        bool placed = canonicalParameterName(entry.name) == "NLAYER" || placeValue(sources, file, entry.name, ignored);
        // The layers' depths define the model's layers: the sample's are the
        // release's own. A name without a place in the project gets the
        // sample's value for records that never read one.
        if ((entry.keep && base == "ADEP") || !placed) entry.fallback = toReal(tokens[0]);
        lines.push_back(std::move(entry));
    }
    out += "\n[" + file + "]\n";
    appendLines(out, lines);
    return true;
}

// An option file's layout: the names of its most common record length, from
// the first record of that length; names without a column get that record's
// values as fallbacks.
bool deriveOptionFile(const profile_derivation& from, const option_member& member, std::string& out,
                      message_sink& errors) {
    std::string text;
    const std::string path = inFolder(from.directory, member.runFile);
    if (!readTextFile(path, text, errors, strprintf("ERROR, cannot read \"%s\".\n", path.c_str()))) return false;
    std::vector<std::vector<std::pair<std::string, double>>> records;
    forEachLine(text, [&](std::string_view line) {
        if (trim(line).empty()) return;
        if (std::isalpha(static_cast<unsigned char>(line.front()))) {
            records.emplace_back();
            return;
        }
        std::vector<std::string> tokens = splitTokens(line);
        if (!records.empty() && tokens.size() >= 2) records.back().emplace_back(unquoted(tokens[1]), toReal(tokens[0]));
    });
    std::map<size_t, int> lengths;
    for (const auto& record : records) ++lengths[record.size()];
    auto common = std::max_element(lengths.begin(), lengths.end(),
                                   [](const auto& a, const auto& b) { return a.second < b.second; });
    out += "\n[" + std::string(member.runFile) + "]\n";
    if (common == lengths.end()) return true;
    const auto& sample = *std::find_if(records.begin(), records.end(),
                                       [&](const auto& record) { return record.size() == common->first; });
    const option_layout& layout = option_layout::of(member.kind);
    std::vector<derived_line> lines;
    for (const auto& [name, value] : sample) {
        derived_line entry{{}, name, false, {}};
        if (layout.writtenColumn(name, from.version) < 0) entry.fallback = value;
        lines.push_back(std::move(entry));
    }
    appendLines(out, lines);
    return true;
}

// sitepar.in, told line by line from the comments its lines carry.
struct sitepar_kind {
    const char* keyword;  // in the comment, lower case
    const char* form;
    const char* names;
};
const sitepar_kind kSiteparKinds[] = {
    {"timstep", "int", "TIMSTEP"},
    {"extra weather drivers", "int", "USEXDRVRS"},
    {"sublimscale", "real", "SUBLIMSCALE"},
    {"reflec", "real", "REFLEC"},
    {"albedo", "real", "ALBEDO"},
    {"fswcinit", "real", "FSWCINIT"},
    {"dmpflux", "real:6", "DMPFLUX"},
    {"hours_rain", "whole", "HOURS_RAIN"},
    {"rainfall event and drainage", "whole", "DRAINLAG"},
    {"watertable", "months", "WATERTABLE"},
    {"hpotdeep", "whole", "HPOTDEEP"},
    {"ksatdeep", "real", "KSATDEEP"},
    {"cloud cover", "months", "CLDCOV"},
    {"bottom soil layer", "pair", "TBOTMN TBOTMX"},
    {"damping factor", "real", "DMP"},
    {"timlag", "real", "TIMLAG"},
    {"limitation coefficient for nitrify", "real", "NCOEFF"},
    {"layers composing", "pair-int", "LYRMIN LYRMAX"},
    {"julian dates", "pair-int", "JDAYSTART JDAYEND"},
    {"n2oadjust_fc", "real", "N2Oadjust_fc"},
    {"n2oadjust_wp", "real", "N2Oadjust_wp"},
    {"n2o adjustment", "real", "N2OADJ"},
    {"proportion of nitrified n that is lost as n2o", "real", "N2OADJ"},
    {"maximum daily nitrification", "real", "\"Maximum Daily Nitrification\""},
    {"snow effect", "int", "\"Snow Effect Soil Surface Temp\""},
    {"netmn to no3", "real", "\"NO3 Mineralization\""},
    {"wfpsdnitadj", "real", "wfpsdnitadj"},
    {"n2n2oadj", "real", "n2n2oadj"},
};

bool deriveSitepar(const std::string& path, std::string& out, message_sink& errors) {
    std::string text;
    if (!readTextFile(path, text, errors, strprintf("ERROR, cannot read \"%s\".\n", path.c_str()))) return false;
    std::vector<std::string> lines = splitLines(text);
    out += "\n[sitepar.in]\n";
    int region = 0;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (trim(lines[i]).empty()) continue;
        size_t slash = lines[i].find('/');
        std::string comment = slash == std::string::npos ? std::string() : std::string(trim(lines[i].substr(slash)));
        std::string lower = toLower(comment);
        const sitepar_kind* kind = nullptr;
        for (const sitepar_kind& candidate : kSiteparKinds)
            if (lower.find(candidate.keyword) != std::string::npos) {
                kind = &candidate;
                break;
            }
        if (!kind) {
            errors.errorf("ERROR, \"%s\" line %zu: no parameter is known by its comment \"%s\".\n", path.c_str(), i + 1,
                          comment.c_str());
            return false;
        }
        std::string names = kind->names;
        if (std::string(kind->keyword) == "layers composing") {
            ++region;
            names = strprintf("LYRMIN(%d) LYRMAX(%d)", region, region);
        }
        std::string extra;
        // The damping factor has no column: the record keeps it, the sample's is the default.
        if (std::string(kind->names) == "DMP")
            extra = " keep = " + exactDecimals(toReal(splitTokens(lines[i]).front()), 1);
        out += std::string(kind->form) + " " + names + extra + (comment.empty() ? "" : " : " + comment) + "\n";
        if (std::string(kind->form) == "months") i += 11;  // the other eleven months carry no comment
    }
    return true;
}

// The settings of outfiles.in's rows: a row takes the setting of the file of
// its name; a row whose file Soilbench does not know by name (a weekly
// variant, a shortened name) takes the setting of its place, unless another
// row has that setting by name.
std::vector<int> outfileSettings(const std::vector<std::string>& files) {
    std::vector<int> settings(files.size(), 0);
    std::vector<bool> claimed(kDailyOutputFileCount + 1, false);
    for (size_t row = 0; row < files.size(); ++row) {
        for (int n = 1; n <= kDailyOutputFileCount; ++n)
            if (files[row] == dailyOutputFiles()[static_cast<size_t>(n - 1)].file) settings[row] = n;
        if (files[row] == "mresp.out") settings[row] = 12;  // the respiration row of the releases that write it
        claimed[static_cast<size_t>(settings[row])] = true;
    }
    for (size_t row = 0; row < files.size(); ++row) {
        int place = static_cast<int>(row) + 1;
        if (settings[row] == 0 && place <= kDailyOutputFileCount && !claimed[static_cast<size_t>(place)]) {
            settings[row] = place;
            claimed[static_cast<size_t>(place)] = true;
        }
    }
    return settings;
}

bool deriveOutfiles(const std::string& path, std::string& out, message_sink& errors) {
    std::string text;
    if (!readTextFile(path, text, errors, strprintf("ERROR, cannot read \"%s\".\n", path.c_str()))) return false;
    std::vector<std::string> lines = splitLines(text);
    out += "\n[outfiles.in]\n";
    if (lines.empty()) return true;
    out += "header " + std::string(trim(lines[0])) + "\n";
    std::vector<std::string> files, descriptions;
    for (size_t i = 1; i < lines.size(); ++i) {
        std::vector<std::string> tokens = splitTokens(lines[i]);
        if (tokens.size() < 2) continue;
        size_t hash = lines[i].find('#');
        files.push_back(tokens[1]);
        descriptions.emplace_back(hash == std::string::npos ? std::string_view() : trim(lines[i].substr(hash + 1)));
    }
    std::vector<int> settings = outfileSettings(files);
    for (size_t row = 0; row < files.size(); ++row)
        out += (settings[row] ? strprintf("Outfile%d", settings[row]) : std::string("off")) + " " + files[row] + " " +
               descriptions[row] + "\n";
    return true;
}

// The interval form the schedule's own blocks use.
std::string intervalForm(const std::string& schedule, int version) {
    std::string text;
    readTextFileIfReadable(schedule, text);
    bool decimalPoint = false;
    forEachLine(text, [&](std::string_view line) {
        if (toLower(line).find("output interval") == std::string::npos) return;
        std::vector<std::string> tokens = splitTokens(line);
        if (!tokens.empty() && tokens[0].find('.') != std::string::npos) decimalPoint = true;
    });
    if (decimalPoint) return "years-decimal";
    return version >= 3 && version <= 5 ? "months" : "years";
}

// The weather file's columns, from the first file an F block reads.
std::string weatherColumns(const profile_derivation& from) {
    tellura_control_record record;
    schedule_references references;
    message_sink ignored;
    readScheduleFile(inFolder(from.directory, from.scheduleFile), from.version, record, references, ignored);
    for (const std::string& file : references.weatherFiles) {
        std::string text;
        if (file.empty() || !readTextFileIfReadable(inFolder(from.directory, file), text)) continue;
        std::vector<std::string> first = splitTokens(splitLines(text).front());
        if (!first.empty() && std::isalpha(static_cast<unsigned char>(first[0][0]))) return "monthly";
        return first.size() >= 10 ? "day month year doy tmax tmin precip solrad rhumid windsp"
                                  : "day month year doy tmax tmin precip";
    }
    return "monthly";
}

std::vector<std::string> layoutLines(const std::string& path) {
    std::vector<std::string> entries;
    std::string text;
    if (!readTextFileIfReadable(path, text)) return entries;
    forEachLine(text, [&](std::string_view line) {
        std::vector<std::string> tokens = splitTokens(line);
        if (tokens.size() == 3 && std::isdigit(static_cast<unsigned char>(tokens[1][0])))
            entries.push_back(tokens[0] + " " + tokens[1] + " " + toLower(tokens[2]));
    });
    std::sort(entries.begin(), entries.end());
    return entries;
}

// The shipped layout file that holds the same positions as the outputs' own.
std::string matchingLayout(const profile_derivation& from) {
    std::vector<std::string> own = layoutLines(inFolder(from.outputs, "binary-layout.tsv"));
    std::error_code ec;
    if (own.empty() || from.layoutsFolder.empty()) return "by-size";
    for (const auto& entry : fs::directory_iterator(from.layoutsFolder, ec))
        if (entry.path().extension() == ".tsv" && layoutLines(entry.path().string()) == own)
            return entry.path().filename().string();
    return "by-size";
}

std::string binaryFraming(const std::string& outputs) {
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(outputs, ec)) {
        if (entry.path().extension() != ".bin") continue;
        std::ifstream in(entry.path(), std::ios::binary);
        int first = in.get();
        return first == 75 ? "markers" : "lengths";  // a length-framed file never starts with 75
    }
    return "any";
}

std::string headerOf(const std::string& path) {
    std::string text;
    if (!readTextFileIfReadable(path, text)) return {};
    std::vector<std::string> lines = splitLines(text);
    return lines.empty() ? std::string() : lines[0];
}

void appendOutputKeys(const profile_derivation& from, std::string& out) {
    if (from.outputs.empty()) {
        out += "binary-layout = by-size\nbinary-framing = any\n";
        return;
    }
    out += "binary-layout = " + matchingLayout(from) + "\n";
    out += "binary-framing = " + binaryFraming(from.outputs) + "\n";
    std::string daily;
    for (const char* file : {"summary.out", "daily.out"})
        if (fs::exists(inFolder(from.outputs, file))) daily += std::string(daily.empty() ? "" : " ") + file;
    if (!daily.empty()) out += "daily-files = " + daily + "\n";
    for (const char* file : {"summary.out", "daily.out"}) {
        std::vector<std::string> header = splitTokens(headerOf(inFolder(from.outputs, file)));
        if (std::find(header.begin(), header.end(), "jday") != header.end()) {
            out += "daily-alias = jday dayofyr\n";
            break;
        }
    }
    if (fs::exists(inFolder(from.outputs, "year_summary.out"))) out += "annual-files = year_summary.out\n";
}

void appendReleaseKeys(const profile_derivation& from, bool dailyStep, std::string& out) {
    out += "[release]\n";
    out += "title = " + from.title + "\n";
    out += strprintf("version = %d\n", from.version);
    out += "output-interval = " + intervalForm(inFolder(from.directory, from.scheduleFile), from.version) + "\n";
    out += std::string("nlayer = ") + (dailyStep ? "soils.in" : "soil") + "\n";
    out += "weather = " + weatherColumns(from) + "\n";
    // A release that reads N input scaling (option 2) stops without this file.
    if (fs::exists(inFolder(from.directory, "nscale.dat"))) out += "extra-file = nscale.dat when Ninput 2\n";
    out += "success = " + from.successLine + "\n";
    for (const std::string& line : from.failureLines) out += "failure = " + line + "\n";
    if (!from.listSkipText.empty()) out += "list-skip = " + from.listSkipText + "\n";
    appendOutputKeys(from, out);
}

}  // namespace

bool deriveReleaseProfile(const profile_derivation& from, std::string& text, message_sink& errors) {
    tellura_control_record record;
    schedule_references references;
    if (!readScheduleFile(inFolder(from.directory, from.scheduleFile), from.version, record, references, errors))
        return false;
    const bool dailyStep = fs::exists(inFolder(from.directory, "soils.in"));
    text = "# " + from.title + ": derived from the release's own set-up in " + from.directory + " (schedule " +
           from.scheduleFile + ")" + (from.outputs.empty() ? std::string() : " and its outputs in " + from.outputs) +
           ".\n# See README.md beside this file for the format.\n\n";
    appendReleaseKeys(from, dailyStep, text);
    bool ok = deriveSingleRecord(from, kFixedFile, inFolder(from.directory, "fix.100"), dailyStep, text, errors);
    ok = deriveSingleRecord(from, kSiteFile, inFolder(from.directory, references.siteFile), dailyStep, text, errors) &&
         ok;
    if (from.version == kDailyStepVersion) {
        ok = deriveSitepar(inFolder(from.directory, "sitepar.in"), text, errors) && ok;
        ok = deriveOutfiles(inFolder(from.directory, "outfiles.in"), text, errors) && ok;
    }
    for (int kind = 0; kind < kOptionKindCount; ++kind)
        ok = deriveOptionFile(from, optionMember(static_cast<option_kind>(kind)), text, errors) && ok;
    return ok;
}

}  // namespace sb
