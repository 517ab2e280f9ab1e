#pragma once
// The management schedule ("sb.sch", or "sb.evt" for the oldest release) as the
// stand-in model reads it: simulation years, initial crop, and the event blocks.
#include <string>
#include <vector>

namespace standin {

struct schedule_event {
    int year = 0;          // year within the block
    int monthOrDay = 0;    // month, or day of the year for the daily-step release
    std::string command;   // CROP, FERT, ...
    std::string item;      // option name for commands that take one
    double parameter = 0;  // EROD amount
};

struct schedule_block {
    int number = 0;
    int firstYear = 0;  // not written in the file: the year after the previous block
    int lastYear = 0;
    int repeats = 1;
    int outputStartYear = 0;
    double intervalMonths = 12;  // output interval converted to months
    char weatherChoice = 'M';
    std::string weatherFile;  // for choice F
    std::vector<schedule_event> events;

    bool monthlyOutput() const { return intervalMonths < 11.5; }
};

struct schedule_file {
    int startYear = 0;
    int lastYear = 0;
    std::string siteFile;
    std::string initialCrop;
    std::string initialTree;
    int nScalingOption = 0;  // 2: N inputs scaled by the nscale.dat file
    std::vector<schedule_block> blocks;
    // What the file's shape says about the release that it was written for.
    bool hasIdLine = false;       // "#ID name" first line: releases 3 to 6
    bool hasPhShift = false;      // releases 3 to 5
    bool dayOfYearDates = false;  // "%04d %03d" dates: the daily-step release
    bool itemsOnOwnLine = false;  // release 2

    // With `impliedDecimals` the output interval is read as the real releases
    // read it: years, a number without a decimal point having three implied
    // decimals ("1" is 0.001 years).
    bool read(const std::string& path, std::string& errors, bool impliedDecimals = false);
};

// Commands that name an option, and the option file that must hold it.
const char* optionFileOfCommand(const std::string& command);
bool commandTakesItem(const std::string& command);

}  // namespace standin
