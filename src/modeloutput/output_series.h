#pragma once
// A record's stored outputs of one table in time order, and chosen variables
// of it over time: what the command line's PNG charts, the desktop's table
// and chart and the CSV export all show, taken the same way.
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/message_sink.h"
#include "modeloutput/tellura_output.h"

namespace sb {

// The command line's words for the output tables: "annual", "monthly",
// "daily", "layers" and "end" (the end-of-run state). False for any other.
bool outputTableFromWord(std::string_view word, table_id& table);
const char* outputTableWord(table_id table);

// The rows of one output table, in time order (monthly rows by year, then month).
std::vector<const table_record*> outputRows(const tellura_outputs& outputs, table_id table);

// When a row's values hold, in fractional years: mid-month and mid-day, so
// that each point sits inside its period.
double outputTime(const table_record& row, table_id table);

struct output_series {
    std::string name;                               // the column's name in the catalogue
    std::vector<std::pair<double, double>> points;  // (time in years, value)
};

// The named variables of an annual, monthly or daily table over time, one
// series each, in the order asked (names are matched ignoring case). A name
// that is no variable of the table is reported and skipped. A row missing the
// value (the model gave none) gives no point.
bool outputSeries(const tellura_outputs& outputs, table_id table, const std::vector<std::string>& names,
                  std::vector<output_series>& series, message_sink& errors);

}  // namespace sb
