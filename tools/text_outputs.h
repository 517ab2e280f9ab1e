#pragma once
// The text outputs of the daily-step release (daily.out, summary.out,
// year_summary.out) and the six comma-separated files of release 6.
#include "standin_values.h"

#include <string>

namespace standin {

// Writes the daily-step release's files that outfiles.in selects.
bool writeDailyReleaseFiles(const run_inputs& inputs, const standin_values& values, std::string& errors);
// Writes "<prefix>.cropC.csv" and the five other files of release 6.
bool writeRelease6Files(const run_inputs& inputs, const standin_values& values, const std::string& prefix,
                        std::string& errors);

}  // namespace standin
