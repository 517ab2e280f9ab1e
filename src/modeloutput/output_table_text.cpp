#include "modeloutput/output_table_text.h"

#include <cstdlib>

#include "app/text_format.h"
#include "modeloutput/output_series.h"

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
            else if (row->isMissing(c)) continue;  // a value the model did not give: an empty field
            else if (fields[static_cast<size_t>(c)].type == kTypeSingle) out += floatText(row->number(c));
            else out += strprintf("%.0f", row->number(c));
        }
        out += '\n';
    }
    return out;
}

std::string outputCsv(const tellura_outputs& outputs, table_id table) {
    return recordsCsv(outputRows(outputs, table), tableDef(table));
}

void appendAnnualOutputText(const tellura_outputs& outputs, std::string& recordText) {
    if (!recordText.empty() && !outputs.annual.empty()) recordText += outputCsv(outputs, table_id::output_annual);
}

}  // namespace sb
