#include "text_outputs.h"

#include <cmath>
#include <cstdio>
#include <memory>
#include <vector>

namespace standin {
namespace {

using file_ptr = std::unique_ptr<FILE, int (*)(FILE*)>;

file_ptr openOutput(const std::string& path, std::string& errors) {
    file_ptr file(std::fopen(path.c_str(), "w"), &std::fclose);
    if (!file) errors += "stand-in model: error: cannot write " + path + "\n";
    return file;
}

}  // namespace

int daysInYear(int year) {
    bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return leap ? 366 : 365;
}

double dayTime(int year, int day) { return year + std::floor(100.0 * (day - 1) / daysInYear(year)) / 100.0; }

day_values dayValues(const run_inputs& inputs, const standin_values& values, int year, int day) {
    double clay = inputs.siteValue("clay", 0.2);
    double season = std::sin((day - 100) * 2 * 3.14159265 / 365.0);
    double nitrogen = values.fertilizerUpTo(year);
    day_values v{};
    v.tmax = 18.0 + 12.0 * season;
    v.tmin = v.tmax - 11.0;
    v.n2oflux = 0.01 + 0.0005 * nitrogen + 0.02 * clay;
    v.noflux = 0.5 * v.n2oflux + 0.001 * (day % 7);
    v.n2flux = 0.3 * v.n2oflux;
    v.ch4 = 0.4 - 0.1 * clay;
    v.nit = 0.05 + 0.001 * nitrogen;
    output_time when{static_cast<float>(year), 0, false};
    v.co2resp = values.value("somsc", when) / 1000.0 * (2.0 + season);
    return v;
}

namespace {

// "time" in characters 1-8, five names of 14 characters, "ANNPPT" in 13.
const char* const kSummaryHeader = "%8s%14s%14s%14s%14s%14s%13s\n";
const char* const kSummaryRow = "%8.2f%14.6f%14.6f%14.6f%14.6f%14.6f%13.6f\n";

void writeSummaryHeader(FILE* file) {
    std::fprintf(file, kSummaryHeader, "time", "N2Oflux", "NOflux", "N2flux", "CH4", "NIT", "ANNPPT");
}

bool writeDailyFiles(const run_inputs& inputs, const standin_values& values, std::string& errors) {
    bool wantDaily = inputs.outfileWanted("daily.out");
    bool wantSummary = inputs.outfileWanted("summary.out");
    file_ptr daily(nullptr, &std::fclose), summary(nullptr, &std::fclose);
    if (wantDaily && !(daily = openOutput("daily.out", errors))) return false;
    if (wantSummary && !(summary = openOutput("summary.out", errors))) return false;
    if (daily)
        std::fprintf(daily.get(), "%10s%9s%9s%9s%13s%13s%13s\n", "time", "dayofyr", "tmax", "tmin", "N2Oflux", "NOflux",
                     "CO2resp");
    if (summary) writeSummaryHeader(summary.get());
    for (int year = inputs.schedule.startYear; year <= inputs.schedule.lastYear; ++year) {
        double ppt = values.precipitation(year);
        for (int day = 1; day <= daysInYear(year); ++day) {
            day_values v = dayValues(inputs, values, year, day);
            if (daily)
                std::fprintf(daily.get(), "%10.4f%9d%9.2f%9.2f%13.4f%13.4f%13.4f\n", static_cast<double>(year), day,
                             v.tmax, v.tmin, v.n2oflux, v.noflux, v.co2resp);
            if (summary)
                std::fprintf(summary.get(), kSummaryRow, dayTime(year, day), v.n2oflux, v.noflux, v.n2flux, v.ch4,
                             v.nit, ppt * day / daysInYear(year));
        }
    }
    return true;
}

bool writeYearSummary(const run_inputs& inputs, const standin_values& values, std::string& errors) {
    file_ptr file = openOutput("year_summary.out", errors);
    if (!file) return false;
    writeSummaryHeader(file.get());
    for (int year = inputs.schedule.startYear; year <= inputs.schedule.lastYear; ++year) {
        day_values v = dayValues(inputs, values, year, 180);
        std::fprintf(file.get(), kSummaryRow, year + 0.92, 365 * v.n2oflux, 365 * v.noflux, 365 * v.n2flux, 365 * v.ch4,
                     365 * v.nit, values.precipitation(year));
    }
    return true;
}

// One comma-separated file of release 6: header lines (the last one names the
// columns), then one row per year with the time first.
struct csv_file {
    const char* suffix;
    int headerLines;
    std::vector<const char*> columns;
};

const csv_file kCsvFiles[] = {
    {".cropC.csv",
     1,
     {"agcacc", "aglcis(1)", "aglcis(2)", "bgcacc", "bglivc", "cgrain", "cinput", "cprodc", "creta", "sdrema", "shrema",
      "stdedc"}},
    {".soilC.csv", 1, {"somsc", "somtc", "som1c(1)", "som1c(2)", "som2c(1)", "som2c(2)", "som3c", "totc"}},
    {".CO2.csv", 13, {"resp(1)", "resp(2)", "totsysc"}},
    {".ForestC.csv", 13, {"rleavc", "frootc", "fbrchc", "rlwodc", "crootc", "frstc", "woode(1)"}},
    {".nps.csv", 1, {"aminrl(1)", "aminrl(2)", "aminrl(3)", "fertac(1)", "fertac(2)", "fertac(3)"}},
    {".wt.csv", 13, {"petann", "prcann", "runoff", "avh2o(1)", "avh2o(2)", "avh2o(3)"}},
};

int blockOfYear(const schedule_file& schedule, int year) {
    for (size_t i = 0; i < schedule.blocks.size(); ++i)
        if (year <= schedule.blocks[i].lastYear) return static_cast<int>(i);
    return static_cast<int>(schedule.blocks.size()) - 1;
}

bool writeCsv(const csv_file& csv, const run_inputs& inputs, const standin_values& values, const std::string& prefix,
              std::string& errors) {
    std::string path = prefix + csv.suffix;
    file_ptr file = openOutput(path, errors);
    if (!file) return false;
    for (int line = 1; line < csv.headerLines; ++line)
        std::fprintf(file.get(), "# stand-in model output (not the model), header line %d of %d\n", line,
                     csv.headerLines);
    std::fprintf(file.get(), "time");
    for (const char* column : csv.columns) std::fprintf(file.get(), ",%s", column);
    std::fprintf(file.get(), "\n");
    for (int year = inputs.schedule.startYear; year <= inputs.schedule.lastYear; ++year) {
        output_time when{static_cast<float>(year), blockOfYear(inputs.schedule, year), false};
        std::fprintf(file.get(), "%.4f", static_cast<double>(when.time));
        for (const char* column : csv.columns) std::fprintf(file.get(), ",%.4f", values.value(column, when));
        std::fprintf(file.get(), "\n");
    }
    return true;
}

}  // namespace

bool writeDailyReleaseFiles(const run_inputs& inputs, const standin_values& values, std::string& errors) {
    bool ok = writeDailyFiles(inputs, values, errors);
    if (inputs.outfileWanted("year_summary.out")) ok = writeYearSummary(inputs, values, errors) && ok;
    return ok;
}

bool writeRelease6Files(const run_inputs& inputs, const standin_values& values, const std::string& prefix,
                        std::string& errors) {
    bool ok = true;
    for (const csv_file& csv : kCsvFiles) ok = writeCsv(csv, inputs, values, prefix, errors) && ok;
    return ok;
}

}  // namespace standin
