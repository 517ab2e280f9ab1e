#include "modeloutput/output_table_text.h"

#include <cstdlib>

#include "app/text_format.h"

namespace sb {
namespace {

std::string csvField(const std::string& text) {
    if (text.find_first_of(",\"\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + "\"";
}

// The shortest text that reads back as the same float.
std::string floatText(double value) {
    float f = static_cast<float>(value);
    for (int precision = 6; precision < 9; ++precision) {
        std::string text = strprintf("%.*g", precision, static_cast<double>(f));
        if (static_cast<float>(std::strtod(text.c_str(), nullptr)) == f) return text;
    }
    return strprintf("%.9g", static_cast<double>(f));
}

template <class Record>
std::vector<const table_record*> pointers(const std::vector<Record>& records) {
    std::vector<const table_record*> rows;
    rows.reserve(records.size());
    for (const auto& r : records) rows.push_back(&r);
    return rows;
}

}  // namespace

std::string recordsCsv(const std::vector<const table_record*>& rows, const database_maker_table& table) {
    std::string out;
    const auto& fields = table.fields();
    for (size_t c = 0; c < fields.size(); ++c) {
        if (c) out += ',';
        out += csvField(fields[c].name);
    }
    out += '\n';
    for (const table_record* row : rows) {
        for (int c = 0; c < row->columnCount(); ++c) {
            if (c) out += ',';
            if (row->isText(c)) out += csvField(row->text(c));
            else if (fields[static_cast<size_t>(c)].type == kTypeSingle) out += floatText(row->number(c));
            else out += strprintf("%.0f", row->number(c));
        }
        out += '\n';
    }
    return out;
}

std::string annualOutputCsv(const tellura_outputs& outputs) {
    return recordsCsv(pointers(outputs.annual), tableDef(table_id::output_annual));
}

void appendAnnualOutputText(const tellura_outputs& outputs, std::string& recordText) {
    if (!recordText.empty() && !outputs.annual.empty()) recordText += annualOutputCsv(outputs);
}

std::string monthlyOutputCsv(const tellura_outputs& outputs) {
    std::vector<const table_record*> rows;
    for (const TelluraOutputMonthly* m : outputs.monthlyInOrder()) rows.push_back(m);
    return recordsCsv(rows, tableDef(table_id::output_monthly));
}

std::string dailyOutputCsv(const tellura_outputs& outputs) {
    return recordsCsv(pointers(outputs.daily), tableDef(table_id::output_daily));
}

std::string soilLayerOutputCsv(const tellura_outputs& outputs) {
    return recordsCsv(pointers(outputs.soilLayers), tableDef(table_id::output_soil_layers));
}

std::string endOfRunOutputCsv(const tellura_outputs& outputs) {
    std::vector<const table_record*> rows;
    if (outputs.hasEndOfRun) rows.push_back(&outputs.endOfRun);
    return recordsCsv(rows, tableDef(table_id::output));
}

}  // namespace sb
