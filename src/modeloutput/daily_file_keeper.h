#pragma once
// Keeps the daily output files of chosen years: for each year of the range a
// folder "<output folder>/<year in four digits>" is made and the run's daily
// files are moved into it under the user's output prefix ("<prefix>daily.out").
// A run writes one set of daily files, so the files land in the first year's
// folder and later folders of the range are made empty, ready for the runs that
// fill them. A file the model was not asked to write is simply not there.
#include <string>

#include "app/message_sink.h"

namespace sb {

// The run's files that are kept: "daily.out", "nflux.out", "summary.out", "mresp.out".
extern const char* const kKeptDailyFiles[4];

bool moveDailyFiles(const std::string& runDirectory, const std::string& outputFolder, const std::string& outputPrefix,
                    int firstYear, int lastYear, message_sink& errors);

}  // namespace sb
