#pragma once
// The daily-step release's text outputs: the year summaries ("year_summary.out",
// and "summary.out" in the same form) and the daily output file.
#include <map>
#include <string>

#include "app/message_sink.h"

namespace sb {

struct tellura_outputs;

// Fixed-range columns "time" (1-8), "N2Oflux", "NOflux", "N2flux", "CH4", "NIT"
// (14 characters each) and "ANNPPT" (13). The header must match exactly (case
// counts); each row fills n2oflux, noflux, n2flux, ch4, nit and ppt of the
// year's annual record. Ends with "Year Summary: %ld years read, from %ld to %ld.\n".
bool readYearSummary(const std::string& path, tellura_outputs& outputs, message_sink& errors);

// A daily text output (daily.out, summary.out of the daily-step releases):
// blank-separated columns named by its header, "time" and "dayofyr" first
// (a header name the aliases map to another counts as that one: "jday" for
// "dayofyr"). Every column the daily output table has (tmax, tmin, ppt,
// N2Oflux, NOflux, CH4, NIT, CO2resp) fills the day's record, which rows of
// several files share; a value a file read before gave stays; other columns
// are passed over. Ends with "<FILE>: %ld days read, from %ld to %ld.\n"
// ("DAILY.OUT: ...").
bool readDailyOutput(const std::string& path, const std::map<std::string, std::string>& aliases,
                     tellura_outputs& outputs, message_sink& errors);
bool readDailyOutput(const std::string& path, tellura_outputs& outputs, message_sink& errors);
// Whether the file's header has a day of the year column: summary.out is a
// daily file in the releases, a year summary in some builds.
bool isDailyOutputFile(const std::string& path, const std::map<std::string, std::string>& aliases);

// The year summary values of every year with all its days read from daily
// files, where no year summary gave them: N2Oflux, NOflux, CH4 and NIT summed
// and turned from g/ha into g/m2, ppt summed (as the releases' own
// year_summary.out holds them).
void addAnnualSumsOfDailyValues(tellura_outputs& outputs);

}  // namespace sb
