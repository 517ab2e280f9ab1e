#include "run_inputs.h"

#include "standin_text.h"

#include <vector>

namespace standin {
namespace {

const char* const kOptionFiles[] = {"crop.100", "cult.100", "harv.100", "graz.100", "irri.100",
                                    "fert.100", "omad.100", "tree.100", "trem.100", "fire.100"};

bool fail(std::string& errors, const std::string& what) {
    errors += "stand-in model: error: " + what + "\n";
    return false;
}

// Every option that the schedule names must exist in its option file.
bool checkScheduledItems(const run_inputs& inputs, std::string& errors) {
    bool ok = true;
    auto check = [&](const char* file, const std::string& item, const std::string& where) {
        const parameter_file& options = inputs.options.at(file);
        if (!options.find(item)) ok = fail(errors, where + ": option \"" + item + "\" not found in " + file);
    };
    if (!inputs.schedule.initialCrop.empty()) check("crop.100", inputs.schedule.initialCrop, "initial crop");
    for (const schedule_block& block : inputs.schedule.blocks)
        for (const schedule_event& event : block.events)
            if (const char* file = optionFileOfCommand(event.command))
                check(file, event.item, "block " + std::to_string(block.number) + " " + event.command);
    return ok;
}

// Monthly files: "prec  YEAR v1..v12" lines (also tmin, tmax); daily files:
// "day month year doy tmax tmin precip ..." lines.
bool readWeather(const std::string& file, bool daily, run_inputs& inputs, std::string& errors) {
    std::vector<std::string> lines;
    if (!readLines(file, lines)) return fail(errors, "cannot read weather file " + file);
    std::map<int, double> totals;
    for (size_t i = 0; i < lines.size(); ++i) {
        std::vector<std::string> tokens = splitBlanks(lines[i]);
        if (tokens.empty()) continue;
        bool ok = true;
        size_t first = daily ? 0 : 1;
        for (size_t t = first; t < tokens.size(); ++t) ok = ok && parseNumber(tokens[t]).has_value();
        ok = ok && (daily ? tokens.size() >= 7 : tokens.size() == 14);
        if (!ok) return fail(errors, "malformed weather line " + file + " line " + std::to_string(i + 1));
        if (daily) {
            totals[static_cast<int>(*parseNumber(tokens[2]))] += *parseNumber(tokens[6]);
        } else if (tokens[0] == "prec") {
            int year = static_cast<int>(*parseNumber(tokens[1]));
            for (size_t t = 2; t < 14; ++t) totals[year] += *parseNumber(tokens[t]);
        }
    }
    for (const auto& [year, total] : totals) inputs.precipitationByYear[year] = total;
    return true;
}

bool readOutfiles(run_inputs& inputs, std::string& errors) {
    std::vector<std::string> lines;
    if (!readLines("outfiles.in", lines)) return fail(errors, "cannot read outfiles.in");
    if (lines.empty() || lines[0].rfind("Output (0/1)", 0) != 0)
        return fail(errors, "outfiles.in has no \"Output (0/1)\" header");
    static const char* const kNames[] = {"",
                                         "bio.out",
                                         "soiln.out",
                                         "soiltavg.out",
                                         "soiltmax.out",
                                         "soiltmin.out",
                                         "stemp_dx.out",
                                         "vswc.out",
                                         "watrbal.out",
                                         "wfps.out",
                                         "co2.out",
                                         "wflux.out",
                                         "resp.out",
                                         "year_summary.out",
                                         "livec.out",
                                         "deadc.out",
                                         "soilc.out",
                                         "sysc.out",
                                         "tgmonth.out",
                                         "dN2lyr.out",
                                         "dN2Olyr.out",
                                         "dels.out",
                                         "dc_sip.csv",
                                         "harvest.csv",
                                         "cflows.out",
                                         "year_cflows.out",
                                         "daily.out",
                                         "nflux.out",
                                         "summary.out"};
    for (size_t i = 1; i < lines.size() && i <= 28; ++i) {
        std::vector<std::string> tokens = splitBlanks(lines[i]);
        std::optional<long> flag = tokens.empty() ? std::nullopt : parseInteger(tokens[0]);
        if (!flag || tokens.size() < 2 || (*flag != 0 && *flag != 1))
            return fail(errors, "malformed outfiles.in line " + std::to_string(i + 1));
        std::string name = tokens[1].substr(0, tokens[1].find('#'));
        for (int number = 1; number <= 28; ++number)
            if (name == kNames[number]) inputs.outfileSelected[number] = *flag == 1;
    }
    return true;
}

bool readSoils(run_inputs& inputs, std::string& errors) {
    std::vector<std::string> lines;
    if (!readLines("soils.in", lines)) return fail(errors, "cannot read soils.in");
    for (size_t i = 0; i < lines.size(); ++i) {
        std::vector<std::string> tokens = splitBlanks(lines[i]);
        if (tokens.empty()) continue;
        bool numeric = tokens.size() >= 10;
        for (const std::string& token : tokens) numeric = numeric && parseNumber(token).has_value();
        if (!numeric) return fail(errors, "malformed soils.in line " + std::to_string(i + 1));
        ++inputs.soilLayers;
    }
    if (inputs.soilLayers == 0) return fail(errors, "soils.in holds no soil layer");
    return true;
}

bool readSitepar(std::string& errors) {
    std::vector<std::string> lines;
    if (!readLines("sitepar.in", lines)) return fail(errors, "cannot read sitepar.in");
    size_t values = 0;
    for (size_t i = 0; i < lines.size(); ++i) {
        std::vector<std::string> tokens = splitBlanks(lines[i]);
        if (tokens.empty()) continue;
        if (!parseNumber(tokens[0])) return fail(errors, "malformed sitepar.in line " + std::to_string(i + 1));
        ++values;
    }
    if (values == 0) return fail(errors, "sitepar.in is empty");
    return true;
}

}  // namespace

int releaseFromSchedule(const schedule_file& schedule, bool eventFile) {
    if (eventFile) return 1;
    if (schedule.dayOfYearDates) return 4;
    if (schedule.itemsOnOwnLine || !schedule.hasIdLine) return 2;
    return schedule.hasPhShift ? 3 : 6;
}

bool run_inputs::read(int releaseCode, const run_file_names& names, std::string& errors, bool impliedDecimals) {
    release = releaseCode;
    bool ok = schedule.read(names.schedule, errors, impliedDecimals);
    ok = site.read(names.site, true, errors) && ok;
    ok = fixed.read(names.fixed, true, errors) && ok;
    for (const char* file : kOptionFiles) ok = options[file].read(file, false, errors) && ok;
    if (release == 4) {
        ok = readSoils(*this, errors) && ok;
        ok = readSitepar(errors) && ok;
        ok = readOutfiles(*this, errors) && ok;
    }
    if (!ok) return false;
    if (!site.records().front().value("clay")) return fail(errors, names.site + " has no CLAY value");
    ok = checkScheduledItems(*this, errors);
    bool dailyWeather = release == 4 || release == 6;
    for (const schedule_block& block : schedule.blocks)
        if (!block.weatherFile.empty()) ok = readWeather(block.weatherFile, dailyWeather, *this, errors) && ok;
    return ok;
}

bool run_inputs::outfileWanted(const std::string& fileName) const {
    static const std::map<std::string, int> kNumbers = {
        {"year_summary.out", 13}, {"daily.out", 26}, {"summary.out", 28}};
    auto it = kNumbers.find(fileName);
    return it != kNumbers.end() && outfileSelected[it->second];
}

double run_inputs::siteValue(const char* name, double fallback) const {
    return site.records().front().value(name).value_or(fallback);
}

double run_inputs::optionValue(const char* file, const std::string& item, const char* field, double fallback) const {
    auto list = options.find(file);
    const parameter_record* record = list == options.end() ? nullptr : list->second.find(item);
    return record ? record->value(field).value_or(fallback) : fallback;
}

}  // namespace standin
