#pragma once
// The text outputs of the daily-step release (daily.out, summary.out,
// year_summary.out) and the six comma-separated files of release 6.
#include "standin_values.h"

#include <string>

namespace standin {

int daysInYear(int year);
// The day's time with two decimals, cut (not rounded) so that the last days
// of a year do not read as the next year.
double dayTime(int year, int day);

// Trace-gas numbers of one day: nitrogen fluxes follow the fertilizer given so
// far and the soil's clay, respiration the soil carbon and the season.
struct day_values {
    double tmax, tmin, n2oflux, noflux, n2flux, ch4, nit, co2resp;
};
day_values dayValues(const run_inputs& inputs, const standin_values& values, int year, int day);

// Writes the daily-step release's files that outfiles.in selects.
bool writeDailyReleaseFiles(const run_inputs& inputs, const standin_values& values, std::string& errors);
// Writes "<prefix>.cropC.csv" and the five other files of release 6.
bool writeRelease6Files(const run_inputs& inputs, const standin_values& values, const std::string& prefix,
                        std::string& errors);

}  // namespace standin
