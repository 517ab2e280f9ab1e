#pragma once
// The daily-step release's text outputs: the year summaries ("year_summary.out",
// and "summary.out" in the same form) and the daily output file.
#include <string>

namespace sb {

struct tellura_outputs;

// Fixed-range columns "time" (1-8), "N2Oflux", "NOflux", "N2flux", "CH4", "NIT"
// (14 characters each) and "ANNPPT" (13). The header must match exactly (case
// counts); each row fills n2oflux, noflux, n2flux, ch4, nit and ppt of the
// year's annual record. Ends with "Year Summary: %ld years read, from %ld to %ld.\n".
bool readYearSummary(const std::string& path, tellura_outputs& outputs, std::string& errors);

// Blank-separated columns named by the header. "time", "dayofyr", "tmax",
// "tmin", "N2Oflux", "NOflux" and "CO2resp" must stand in this order; "ppt",
// "CH4" and "NIT" may stand between them and are read too (the daily table has
// columns for them); any other name is a column mismatch. Each row appends one
// daily record. Ends with "DAILY.OUT: %ld days read, from %ld to %ld.\n".
bool readDailyOutput(const std::string& path, tellura_outputs& outputs, std::string& errors);

}  // namespace sb
