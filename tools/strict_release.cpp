#include "strict_release.h"

#include "schedule_file.h"
#include "standin_text.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <set>

namespace standin {
namespace {

// What the two releases print, word for word, as observed on the real programs.
const release_behaviour kReleases[] = {
    {2012, "Execution success.", binary_framing::oneByteMarkers, true, true, true, true, nullptr,
     "run-time error F6103: READ(%s) - invalid REAL"},
    {2008, " Execution success.", binary_framing::fourByteMarkers, false, false, false, false,
     "STOP    The nscale.dat file is missing!", "Fortran runtime error: Bad real number in item 1 of list input"},
};

const char* const kOptionFiles[] = {"crop.100", "cult.100", "fert.100", "fire.100", "graz.100",
                                    "harv.100", "irri.100", "omad.100", "tree.100", "trem.100"};
const char* const kTextOutputs[] = {"daily.out", "summary.out", "nflux.out", "year_summary.out"};

bool fail(std::string& errors, const std::string& what) {
    errors += "stand-in model: error: " + what + "\n";
    return false;
}

// A Fortran list-directed read of a real takes the first item of the line.
bool startsWithReal(const std::string& line) {
    std::vector<std::string> tokens = splitBlanks(line);
    if (tokens.empty()) return false;
    std::string item = tokens[0].substr(0, tokens[0].find(','));
    return parseNumber(item).has_value();
}

std::string unquoted(const std::string& token) {
    std::string name;
    for (char c : token)
        if (c != '\'' && c != '"') name += c;
    return name;
}

// "FAVAIL(1)" -> "favail": the release compares names without subscripts.
std::string baseName(const std::string& name) { return lower(name.substr(0, name.find('('))); }

size_t linesWithoutTrailingBlanks(const std::vector<std::string>& lines) {
    size_t count = lines.size();
    while (count > 0 && trimBlanks(lines[count - 1]).empty()) --count;
    return count;
}

// Trailing blank lines are not part of a file's layout.
std::vector<reference_line> classifyLines(const std::vector<std::string>& lines) {
    std::vector<reference_line> result;
    for (size_t i = 0; i < linesWithoutTrailingBlanks(lines); ++i) {
        std::vector<std::string> tokens = splitBlanks(lines[i]);
        bool value = startsWithReal(lines[i]);
        result.push_back({value, value && tokens.size() > 1 ? unquoted(tokens[1]) : ""});
    }
    return result;
}

// Values per option: the most common run of value lines between header lines
// (a sample file may hold one short record, which the release would misread).
size_t valuesPerOption(const std::vector<std::string>& lines) {
    std::map<size_t, int> runs;
    size_t run = 0;
    bool inRecord = false;
    for (const std::string& line : lines) {
        if (trimBlanks(line).empty()) continue;
        if (startsWithReal(line)) {
            ++run;
            continue;
        }
        if (inRecord) ++runs[run];
        inRecord = true;
        run = 0;
    }
    if (inRecord) ++runs[run];
    size_t best = 0;
    int bestCount = 0;
    for (const auto& [length, count] : runs)
        if (length > 0 && count >= bestCount) best = length, bestCount = count;
    return best;
}

std::string firstSchedule(const std::string& dir) {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(dir, error))
        if (entry.path().extension() == ".sch") names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names.empty() ? "" : names.front();
}

std::string derivedOutputsDir(std::string inputs) {
    while (inputs.size() > 1 && inputs.back() == '/') inputs.pop_back();
    for (const char* suffix : {"/inputs", "-inputs"}) {
        size_t length = std::string(suffix).size();
        if (inputs.size() > length && inputs.compare(inputs.size() - length, length, suffix) == 0)
            return inputs.substr(0, inputs.size() - length) + (suffix[0] == '/' ? "/outputs" : "-outputs");
    }
    return "";
}

// Reads a run directory file against the reference layout.
class release_reader {
public:
    release_reader(const release_behaviour& release, std::string& console, std::string& errors)
        : release_(release), console_(console), errors_(errors) {}

    bool readLayout(const std::string& file, const std::vector<reference_line>& layout, bool checkNames,
                    std::map<std::string, double>& values) {
        std::vector<std::string> lines;
        if (!readLines(file, lines)) return fail(errors_, "cannot read " + file);
        size_t at = 0;
        for (const reference_line& expected : layout) {
            if (!expected.value) {
                if (at++ >= lines.size()) return endOfFile(file, "its header lines");
                continue;
            }
            while (at < lines.size() && trimBlanks(lines[at]).empty()) ++at;
            if (at >= lines.size()) return endOfFile(file, expected.name);
            const std::string& line = lines[at++];
            if (!startsWithReal(line)) return invalidReal(file);
            std::vector<std::string> tokens = splitBlanks(line);
            std::string found = tokens.size() > 1 ? baseName(unquoted(tokens[1])) : "";
            if (checkNames && !found.empty() && found != baseName(expected.name)) {
                console_ += "There is an error in your " + file + " file.\nThe data for " + found +
                            " was read when the data for " + baseName(expected.name) +
                            " was expected.\nStop - Program terminated.\n";
                return false;
            }
            values[lower(expected.name)] = *parseNumber(tokens[0].substr(0, tokens[0].find(',')));
        }
        return true;
    }

    // The release looks for an option record from the top of the file: it reads
    // a header line, then the record's values as reals, taken or skipped.
    bool readOption(const std::string& file, const std::string& option, size_t valuesEach) {
        std::vector<std::string> lines;
        if (!readLines(file, lines)) return fail(errors_, "cannot read " + file);
        size_t at = 0;
        for (;;) {
            while (at < lines.size() && trimBlanks(lines[at]).empty()) ++at;
            if (at >= lines.size()) return fail(errors_, "option \"" + option + "\" not found in " + file);
            bool wanted = lower(splitBlanks(lines[at++])[0]) == lower(option);
            for (size_t i = 0; i < valuesEach; ++i) {
                while (at < lines.size() && trimBlanks(lines[at]).empty()) ++at;
                if (at >= lines.size()) return endOfFile(file, option);
                if (!startsWithReal(lines[at++])) return invalidReal(file);
            }
            if (wanted) return true;
        }
    }

    bool invalidReal(const std::string& file) {
        console_ += release_.invalidRealMessage(file) + "\n";
        return false;
    }

private:
    bool endOfFile(const std::string& file, const std::string& wanted) {
        return fail(errors_, file + " ended while the release was reading " + wanted);
    }

    const release_behaviour& release_;
    std::string& console_;
    std::string& errors_;
};

struct run_state {
    schedule_file schedule;
    std::map<std::string, double> fixed, site;
};

// Every layer of the water model (ADEP(1) to ADEP(NLAYER) in fix.100) must be
// made of whole soils.in layers, and soils.in must end where the last one does.
bool soilsCompatible(const run_state& run, const reference_setup& reference, std::string& console,
                     std::string& errors) {
    std::vector<std::string> lines;
    if (!readLines("soils.in", lines)) return fail(errors, "cannot read soils.in");
    std::vector<double> bottoms;
    for (size_t i = 0; i < lines.size(); ++i) {
        std::vector<std::string> tokens = splitBlanks(lines[i]);
        if (tokens.empty()) continue;
        bool numeric = tokens.size() >= reference.soilColumns;
        for (const std::string& token : tokens) numeric = numeric && parseNumber(token).has_value();
        if (!numeric) return fail(errors, "soils.in line " + std::to_string(i + 1) + " is not a soil layer");
        bottoms.push_back(*parseNumber(tokens[1]));
    }
    auto nlayer = run.site.find("nlayer");
    if (nlayer == run.site.end()) return fail(errors, "the reference site file has no NLAYER");
    int layers = static_cast<int>(std::lround(nlayer->second));
    double depth = 0;
    bool ok = layers >= 1 && !bottoms.empty();
    for (int layer = 1; ok && layer <= layers; ++layer) {
        auto adep = run.fixed.find("adep(" + std::to_string(layer) + ")");
        ok = adep != run.fixed.end();
        depth += ok ? adep->second : 0;
        ok = ok && std::any_of(bottoms.begin(), bottoms.end(), [&](double b) { return std::fabs(b - depth) < 1e-3; });
    }
    if (ok && std::fabs(bottoms.back() - depth) < 1e-3) return true;
    console += "Soil structures in fix.100 and soils.in are not compatible.\n";
    return false;
}

bool siteparReadable(const release_behaviour& release, const reference_setup& reference, release_reader& reader,
                     std::string& console, std::string& errors, bool& extraDrivers) {
    std::vector<std::string> lines;
    if (!readLines("sitepar.in", lines)) return fail(errors, "cannot read sitepar.in");
    size_t count = linesWithoutTrailingBlanks(lines);
    if (release.siteparExactCount && count != reference.siteparLines) {
        console += "ERROR:  Incorrect number of lines in sitepar.in file.\nEnding simulation!\n";
        return false;
    }
    if (count < reference.siteparLines)
        return fail(errors, "sitepar.in has " + std::to_string(count) + " lines; the release reads " +
                                std::to_string(reference.siteparLines));
    for (size_t i = 0; i < reference.siteparLines; ++i)
        if (!startsWithReal(lines[i])) return reader.invalidReal("sitepar.in");
    extraDrivers = parseNumber(splitBlanks(lines[0])[0]).value_or(0) == 1;
    return true;
}

bool optionsReadable(const run_state& run, const reference_setup& reference, release_reader& reader) {
    std::vector<std::pair<std::string, std::string>> wanted;  // file, option
    if (!run.schedule.initialCrop.empty()) wanted.push_back({"crop.100", run.schedule.initialCrop});
    if (!run.schedule.initialTree.empty()) wanted.push_back({"tree.100", run.schedule.initialTree});
    for (const schedule_block& block : run.schedule.blocks)
        for (const schedule_event& event : block.events)
            if (const char* file = optionFileOfCommand(event.command)) wanted.push_back({file, event.item});
    std::set<std::pair<std::string, std::string>> done;
    for (const auto& item : wanted) {
        if (!done.insert(item).second) continue;
        auto count = reference.optionValueLines.find(item.first);
        if (count == reference.optionValueLines.end()) continue;
        if (!reader.readOption(item.first, item.second, count->second)) return false;
    }
    return true;
}

bool weatherReadable(const run_state& run, const reference_setup& reference, bool extraDrivers, std::string& errors) {
    size_t columns = reference.weatherColumns + (extraDrivers ? 3 : 0);  // solrad, rhumid, windsp
    std::set<std::string> files;
    for (const schedule_block& block : run.schedule.blocks)
        if (!block.weatherFile.empty()) files.insert(block.weatherFile);
    for (const std::string& file : files) {
        std::vector<std::string> lines;
        if (!readLines(file, lines)) return fail(errors, "cannot read weather file " + file);
        for (size_t i = 0; i < lines.size(); ++i) {
            std::vector<std::string> tokens = splitBlanks(lines[i]);
            if (tokens.empty()) continue;
            bool ok = tokens.size() >= columns;
            for (size_t t = 0; ok && t < columns; ++t) ok = parseNumber(tokens[t]).has_value();
            if (!ok)
                return fail(errors, "weather file " + file + " line " + std::to_string(i + 1) + " has not the " +
                                        std::to_string(columns) + " numeric columns the release reads");
        }
    }
    return true;
}

}  // namespace

std::string release_behaviour::invalidRealMessage(const std::string& file) const {
    std::string text = invalidReal;
    size_t at = text.find("%s");
    return at == std::string::npos ? text : text.replace(at, 2, file);
}

const release_behaviour* releaseBehaviour(int year) {
    for (const release_behaviour& release : kReleases)
        if (release.year == year) return &release;
    return nullptr;
}

bool reference_setup::load(const std::string& inputs, const std::string& outputs, std::string& errors) {
    inputsDir = inputs;
    outputsDir = outputs.empty() ? derivedOutputsDir(inputs) : outputs;
    std::string dir = inputsDir + "/";
    std::string scheduleName = firstSchedule(inputsDir);
    if (scheduleName.empty()) return fail(errors, "no schedule (.sch) in the reference set-up " + inputsDir);
    schedule_file schedule;
    if (!schedule.read(dir + scheduleName, errors, true)) return false;
    std::vector<std::string> lines;
    auto need = [&](const std::string& name) {
        lines.clear();
        return readLines(dir + name, lines) || fail(errors, "cannot read reference file " + dir + name);
    };
    if (!need("fix.100")) return false;
    fixLines = classifyLines(lines);
    if (!need(schedule.siteFile)) return false;
    siteLines = classifyLines(lines);
    for (const char* file : kOptionFiles)
        if (readLines(dir + file, lines = {})) optionValueLines[file] = valuesPerOption(lines);
    if (!need("sitepar.in")) return false;
    siteparLines = linesWithoutTrailingBlanks(lines);
    if (!need("soils.in") || lines.empty()) return false;
    soilColumns = splitBlanks(lines[0]).size();
    for (const schedule_block& block : schedule.blocks)
        if (!block.weatherFile.empty() && weatherColumns == 0) {
            if (!need(block.weatherFile)) return false;
            for (const std::string& line : lines)
                if (!splitBlanks(line).empty()) {
                    weatherColumns = splitBlanks(line).size();
                    break;
                }
        }
    layoutFile = outputsDir + "/binary-layout.tsv";
    if (!fileExists(layoutFile)) return fail(errors, "no binary-layout.tsv in the reference outputs " + outputsDir);
    for (const char* name : kTextOutputs)
        if (readLines(outputsDir + "/" + name, lines = {}) && !lines.empty()) textHeaders[name] = lines[0];
    return true;
}

bool readAsRelease(const release_behaviour& release, const reference_setup& reference, const std::string& scheduleFile,
                   std::string& console, std::string& errors) {
    run_state run;
    if (!run.schedule.read(scheduleFile, errors, true)) return false;
    release_reader reader(release, console, errors);
    if (!reader.readLayout("fix.100", reference.fixLines, true, run.fixed)) return false;
    if (!reader.readLayout(run.schedule.siteFile, reference.siteLines, false, run.site)) return false;
    if (!soilsCompatible(run, reference, console, errors)) return false;
    bool extraDrivers = false;
    if (!siteparReadable(release, reference, reader, console, errors, extraDrivers)) return false;
    if (run.schedule.nScalingOption == 2 && !fileExists("nscale.dat")) {
        if (release.nscaleMissing) {
            console += std::string(release.nscaleMissing) + "\n";
            return false;
        }
        return fail(errors, "N input scaling option 2 needs nscale.dat, which is missing");
    }
    if (!optionsReadable(run, reference, reader)) return false;
    return weatherReadable(run, reference, extraDrivers, errors);
}

}  // namespace standin
