#pragma once
// Every input file of one run, read and checked as the model would before it
// starts simulating. Any problem is reported with a line containing "error".
#include "parameter_file.h"
#include "schedule_file.h"

#include <map>
#include <string>

namespace standin {

struct run_file_names {
    std::string schedule = "sb.sch";
    std::string site = "sbsite.100";
    std::string fixed = "fix.100";
};

struct run_inputs {
    int release = 0;
    schedule_file schedule;
    parameter_file site;
    parameter_file fixed;
    std::map<std::string, parameter_file> options;  // by file name, e.g. "crop.100"
    std::map<int, double> precipitationByYear;      // from the weather files, cm
    bool outfileSelected[29] = {};                  // daily-step release, numbered from 1
    int soilLayers = 0;

    // Reads every file the release needs from the current directory.
    // `impliedDecimals`: output intervals read as the real daily-step releases read them.
    bool read(int release, const run_file_names& names, std::string& errors, bool impliedDecimals = false);
    bool outfileWanted(const std::string& fileName) const;
    double siteValue(const char* name, double fallback) const;
    double optionValue(const char* file, const std::string& item, const char* field, double fallback) const;
};

// Works out the release from the schedule when the caller did not name it:
// 0 when the shape fits no release.
int releaseFromSchedule(const schedule_file& schedule, bool eventFile);

}  // namespace standin
