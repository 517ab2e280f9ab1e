#include "modelinput/profile_match.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "app/text_file.h"
#include "app/text_format.h"
#include "modelinput/parameter_names.h"
#include "modelinput/site_file.h"

namespace sb {

namespace {

std::string inDirectory(const std::string& directory, const std::string& file) {
    return (std::filesystem::path(directory) / file).string();
}

// The name of a value line of a ".100" file ("0.4   'PRDX(1)'" -> "PRDX(1)"),
// empty for anything else. The fixed file and the site file put the name
// after the value; lines starting with "*" are comments.
std::string valueLineName(std::string_view line) {
    std::vector<std::string> tokens = splitTokens(line);
    if (tokens.size() < 2 || tokens[0].front() == '*') return {};
    return canonicalParameterName(tokens[1]);
}

std::vector<std::string> singleRecordNames(const std::string& path) {
    std::string text;
    std::vector<std::string> names;
    if (!readTextFileIfReadable(path, text)) return names;
    std::vector<std::string> lines = splitLines(text);
    for (size_t i = 1; i < lines.size(); ++i) {
        if (trim(lines[i]).empty()) break;
        std::string name = valueLineName(lines[i]);
        if (!name.empty()) names.push_back(name);
    }
    return names;
}

std::vector<setup_layout::option_record_names> optionRecords(const std::string& path) {
    std::vector<setup_layout::option_record_names> records;
    std::string text;
    if (!readTextFileIfReadable(path, text)) return records;
    int number = 0;
    forEachLine(text, [&](std::string_view line) {
        ++number;
        if (trim(line).empty()) return;
        if (std::isalpha(static_cast<unsigned char>(line.front()))) {
            records.push_back({std::string(splitTokenViews(line).front()), number, {}});
            return;
        }
        std::string name = valueLineName(line);
        if (!records.empty() && !name.empty()) records.back().names.push_back(name);
    });
    return records;
}

// The names a profile section expects, in order; lines written only for some
// records ("when"/"unless") are expected only where the set-up has them.
std::vector<std::string> expectedNames(const std::vector<profile_line>& lines, const std::vector<std::string>& given) {
    std::vector<std::string> names;
    for (const profile_line& line : lines) {
        if (line.isText()) continue;
        std::string name = canonicalParameterName(line.name);
        if (!line.condition.empty() && std::find(given.begin(), given.end(), name) == given.end()) continue;
        names.push_back(name);
    }
    return names;
}

// The model reads values by their place, not by their names, and the
// releases' own files spell one name in several ways, even between records of
// one file: with and without its subscript ("CO2IPR", "CO2IPR(1)"), shortened
// ("FRTCIN" for "FRTCINDX"), with another plant index ("CO2ICE(2,1,1)" in one
// tree, "CO2ICE(1,1,1)" in the next). A layout is therefore compared by the
// names' bases, a base and its shortened form (five letters at least) being one.
bool sameName(const std::string& a, const std::string& b) {
    std::string baseA = a.substr(0, a.find('(')), baseB = b.substr(0, b.find('('));
    if (baseA == baseB) return true;
    const std::string& shorter = baseA.size() < baseB.size() ? baseA : baseB;
    const std::string& longer = baseA.size() < baseB.size() ? baseB : baseA;
    return shorter.size() >= 5 && longer.compare(0, shorter.size(), shorter) == 0;
}

// The first difference between two name orders; empty when they agree.
std::string firstDifference(const std::vector<std::string>& given, const std::vector<std::string>& expected) {
    size_t common = std::min(given.size(), expected.size());
    for (size_t i = 0; i < common; ++i)
        if (!sameName(given[i], expected[i]))
            return strprintf("value %zu is \"%s\" where the profile has \"%s\"", i + 1, given[i].c_str(),
                             expected[i].c_str());
    if (given.size() != expected.size())
        return strprintf("%zu values where the profile has %zu", given.size(), expected.size());
    return {};
}

void compareNames(const std::string& file, const std::vector<std::string>& given, const release_profile& profile,
                  const std::string& section, std::vector<std::string>& differences) {
    const std::vector<profile_line>* lines = profile.lines(section);
    if (given.empty() || !lines) return;
    std::string difference = firstDifference(given, expectedNames(*lines, given));
    if (!difference.empty()) differences.push_back(file + ": " + difference);
}

}  // namespace

setup_layout readSetupLayout(const std::string& directory, const std::string& siteFile) {
    setup_layout layout;
    layout.fixedNames = singleRecordNames(inDirectory(directory, "fix.100"));
    if (!siteFile.empty()) layout.siteNames = singleRecordNames(inDirectory(directory, siteFile));
    for (const std::string& file : profileParameterFiles()) {
        if (file == "fix.100" || file == "site.100") continue;
        std::vector<setup_layout::option_record_names> records = optionRecords(inDirectory(directory, file));
        if (!records.empty()) layout.optionFiles.emplace_back(file, std::move(records));
    }
    std::string sitepar;
    if (readTextFileIfReadable(inDirectory(directory, "sitepar.in"), sitepar)) {
        std::vector<std::string> lines = splitLines(sitepar);
        while (!lines.empty() && trim(lines.back()).empty()) lines.pop_back();
        layout.siteparLines = static_cast<int>(lines.size());
    }
    return layout;
}

std::vector<std::string> profileDifferences(const setup_layout& setup, const release_profile& profile) {
    std::vector<std::string> differences;
    compareNames("fix.100", setup.fixedNames, profile, "fix.100", differences);
    compareNames("the site file", setup.siteNames, profile, "site.100", differences);
    for (const auto& [file, records] : setup.optionFiles) {
        const std::vector<profile_line>* lines = profile.lines(file);
        if (!lines) continue;
        for (const auto& record : records) {
            // An empty record (a header at the end of a file) is no layout.
            if (record.names.empty()) continue;
            std::string difference = firstDifference(record.names, expectedNames(*lines, record.names));
            if (difference.empty()) continue;
            differences.push_back(strprintf("%s record \"%s\" (line %d): %s", file.c_str(), record.option.c_str(),
                                            record.line, difference.c_str()));
            break;
        }
    }
    if (setup.siteparLines >= 0 && profile.version == kDailyStepVersion &&
        setup.siteparLines != siteparLineCount(profile))
        differences.push_back(
            strprintf("sitepar.in: %d lines where the profile has %d", setup.siteparLines, siteparLineCount(profile)));
    return differences;
}

const release_profile* recogniseReleaseProfile(const std::string& directory, const std::string& siteFile,
                                               const std::vector<const release_profile*>& candidates,
                                               const std::string& preferred, message_sink& messages) {
    setup_layout setup = readSetupLayout(directory, siteFile);
    const release_profile* match = nullptr;
    std::string report;
    for (const release_profile* profile : candidates) {
        std::vector<std::string> differences = profileDifferences(setup, *profile);
        if (differences.empty()) {
            if (!match || profile->name == preferred) match = profile;
            continue;
        }
        appendf(report, "  %s (%s):\n", profile->name.c_str(), profile->title.c_str());
        for (const std::string& difference : differences) report += "    " + difference + "\n";
    }
    if (match) {
        messages.notef("The set-up in %s matches release profile \"%s\" (%s).\n", directory.c_str(),
                       match->name.c_str(), match->title.c_str());
        return match;
    }
    messages.warningf("WARNING, the set-up in %s matches no release profile; what differs from each:\n%s",
                      directory.c_str(), report.c_str());
    return nullptr;
}

}  // namespace sb
