#include "strict_outputs.h"

#include "standin_text.h"
#include "text_outputs.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <memory>

namespace standin {
namespace {

// One column of a text output: its name and the width its header gives it
// (from the end of the previous name to the end of this one).
struct text_column {
    std::string name;
    int width = 0;
};

std::vector<text_column> headerColumns(const std::string& header) {
    std::vector<text_column> columns;
    size_t at = 0, previousEnd = 0;
    while (at < header.size()) {
        while (at < header.size() && (header[at] == ' ' || header[at] == '\t' || header[at] == '\r')) ++at;
        size_t start = at;
        while (at < header.size() && header[at] != ' ' && header[at] != '\t' && header[at] != '\r') ++at;
        if (at > start) columns.push_back({header.substr(start, at - start), static_cast<int>(at - previousEnd)});
        previousEnd = at;
    }
    return columns;
}

std::string fixed(int width, int decimals, double value) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%*.*f", width, decimals, value);
    return buffer;
}

// A column's value on one day: the stand-in's trace-gas numbers where the
// name is one of them, otherwise a steady number of the name and the season.
double columnValue(const std::string& name, const day_values& day, double ppt, int dayOfYear) {
    std::string key = lower(name);
    if (key == "tmax") return day.tmax;
    if (key == "tmin") return day.tmin;
    if (key == "ppt") return ppt;
    if (key == "n2oflux") return day.n2oflux;
    if (key == "noflux") return day.noflux;
    if (key == "n2flux") return day.n2flux;
    if (key == "ch4") return day.ch4;
    if (key == "nit") return day.nit;
    if (key == "co2resp") return day.co2resp;
    double season = std::sin((dayOfYear - 100) * 2 * 3.14159265 / 365.0);
    return (nameHash(name) % 1000) / 100.0 * (1.0 + 0.25 * season);
}

// The reference header as the release writes it, without trailing blanks.
std::string headerText(const std::string& header) { return header.substr(0, header.find_last_not_of(" \r") + 1); }

// The text files start with the first block's output starting year.
int firstOutputYear(const run_inputs& inputs) {
    return std::max(inputs.schedule.startYear, inputs.schedule.blocks.front().outputStartYear);
}

using file_ptr = std::unique_ptr<FILE, int (*)(FILE*)>;

bool writeDailyFile(const std::string& name, const std::string& header, const run_inputs& inputs,
                    const standin_values& values, bool dropZeros, std::string& errors) {
    file_ptr file(std::fopen(name.c_str(), "w"), &std::fclose);
    if (!file) return errors += "stand-in model: error: cannot write " + name + "\n", false;
    std::vector<text_column> columns = headerColumns(header);
    std::fprintf(file.get(), "%s\n", headerText(header).c_str());
    for (int year = firstOutputYear(inputs); year <= inputs.schedule.lastYear; ++year) {
        double yearPpt = values.precipitation(year) / daysInYear(year);
        for (int day = 1; day <= daysInYear(year); ++day) {
            day_values v = dayValues(inputs, values, year, day);
            std::string row;
            for (size_t c = 0; c < columns.size(); ++c) {
                if (c == 0) row += fixed(columns[0].width, 4, dayTime(year, day));
                else if (c == 1) row += fixed(5, 0, day);  // the day of the year: "%5d"
                else row += fixed(columns[c].width, 4, columnValue(columns[c].name, v, yearPpt, day));
            }
            if (dropZeros) row = withoutLeadingZeros(row);
            std::fprintf(file.get(), "%s\n", row.c_str());
        }
    }
    return true;
}

bool writeYearSummary(const std::string& header, const run_inputs& inputs, const standin_values& values,
                      std::string& errors) {
    file_ptr file(std::fopen("year_summary.out", "w"), &std::fclose);
    if (!file) return errors += "stand-in model: error: cannot write year_summary.out\n", false;
    std::vector<text_column> columns = headerColumns(header);
    std::fprintf(file.get(), "%s\n", headerText(header).c_str());
    for (int year = firstOutputYear(inputs); year <= inputs.schedule.lastYear; ++year) {
        day_values v = dayValues(inputs, values, year, 180);
        std::string row = fixed(8, 2, year + 0.92);
        for (size_t c = 1; c < columns.size(); ++c) {
            double value = lower(columns[c].name) == "annppt" ? values.precipitation(year)
                                                              : 365 * columnValue(columns[c].name, v, 0, 180);
            row += fixed(columns[c].width, 6, value);
        }
        std::fprintf(file.get(), "%s\n", row.c_str());
    }
    return true;
}

}  // namespace

bool layoutCounts(const std::string& path, array_counts& counts, std::string& errors) {
    std::vector<std::string> lines;
    if (!readLines(path, lines)) return errors += "stand-in model: error: cannot read " + path + "\n", false;
    counts = {0, 0, 0};
    for (const std::string& line : lines) {
        std::vector<std::string> fields = splitBlanks(line);
        std::optional<long> index = fields.size() == 3 ? parseInteger(fields[1]) : std::nullopt;
        if (!index) continue;
        int* count = fields[0] == "plot1" ? &counts.count1 : fields[0] == "plot2" ? &counts.count2 : &counts.count3;
        *count = std::max(*count, static_cast<int>(*index));
    }
    if (counts.count1 > 0) return true;
    errors += "stand-in model: error: " + path + " holds no variable of array 1\n";
    return false;
}

std::string withoutLeadingZeros(std::string line) {
    for (size_t i = 0; i + 1 < line.size(); ++i) {
        bool numberStart = i == 0 || line[i - 1] == ' ';
        bool negative = line[i] == '-' && i + 2 < line.size() && line[i + 1] == '0' && line[i + 2] == '.';
        if (numberStart && line[i] == '0' && line[i + 1] == '.') line[i] = ' ';
        if (numberStart && negative) line[i] = ' ', line[i + 1] = '-';
    }
    return line;
}

bool writeStrictBinary(const run_inputs& inputs, const release_behaviour& release, const reference_setup& reference,
                       const std::string& path, std::string& console, std::string& errors) {
    array_counts counts{};
    binary_layout layout;
    if (!layoutCounts(reference.layoutFile, counts, errors) || !layout.readFile(reference.layoutFile, counts, errors))
        return false;
    std::vector<std::vector<float>> records = binaryRecords(inputs, layout, counts, true);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << encodeBinaryFile(records, release.framing);
    if (!out) return errors += "stand-in model: error: cannot write " + path + "\n", false;
    console += std::to_string(records.size()) + " output records of " + std::to_string(counts.recordBytes()) +
               " bytes written to " + path + "\n";
    return true;
}

bool writeStrictTextFiles(const run_inputs& inputs, const release_behaviour& release, const reference_setup& reference,
                          std::string& errors) {
    standin_values values(inputs);
    bool ok = true;
    for (const auto& [name, header] : reference.textHeaders) {
        if (name == "year_summary.out") {
            if (inputs.outfileWanted(name)) ok = writeYearSummary(header, inputs, values, errors) && ok;
        } else {
            ok = writeDailyFile(name, header, inputs, values, release.dropLeadingZero, errors) && ok;
        }
    }
    return ok;
}

void writeRefusedBinary(const release_behaviour& release, const std::string& path) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << encodeBinaryFile({}, release.framing);
}

}  // namespace standin
