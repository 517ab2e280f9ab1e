#pragma once
// Stored outputs as comma-separated text (for scripts, spreadsheets, R or
// Python): one header line of column names, then one line per record. Column
// names holding commas ("clittr(1,1)") are quoted; values are written with
// the float precision they are stored at.
#include <string>
#include <vector>

#include "modeloutput/tellura_output.h"

namespace sb {

std::string recordsCsv(const std::vector<const table_record*>& rows, const database_maker_table& table);
std::string annualOutputCsv(const tellura_outputs& outputs);
std::string monthlyOutputCsv(const tellura_outputs& outputs);
std::string dailyOutputCsv(const tellura_outputs& outputs);
std::string soilLayerOutputCsv(const tellura_outputs& outputs);
std::string endOfRunOutputCsv(const tellura_outputs& outputs);

// A record's text form (the clipboard's plain text) ends with the record's annual
// outputs as comma-separated lines, when it holds any. An empty text stays empty:
// without its weather station a record has no text form.
void appendAnnualOutputText(const tellura_outputs& outputs, std::string& recordText);

}  // namespace sb
