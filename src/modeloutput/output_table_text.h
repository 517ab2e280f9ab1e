#pragma once
// Stored outputs as comma-separated text (for scripts, spreadsheets, R or
// Python): one header line of column names, then one line per record. Column
// names holding commas ("clittr(1,1)") are quoted; values are written with
// the float precision they are stored at, a missing value as an empty field.
#include <string>
#include <vector>

#include "modeloutput/tellura_output.h"

namespace sb {

std::string recordsCsv(const std::vector<const table_record*>& rows, const database_maker_table& table);
// One output table of a record, every column from the ID on, rows in time order.
std::string outputCsv(const tellura_outputs& outputs, table_id table);

// A record's text form (the clipboard's plain text) ends with the record's annual
// outputs as comma-separated lines, when it holds any. An empty text stays empty:
// without its weather station a record has no text form.
void appendAnnualOutputText(const tellura_outputs& outputs, std::string& recordText);

}  // namespace sb
