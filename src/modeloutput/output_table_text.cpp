#include "modeloutput/output_table_text.h"

#include "app/number_text.h"
#include "app/text_format.h"
#include "modeloutput/output_series.h"

namespace sb {
namespace {

// SINGLE values with six significant digits at least, as "%g" writes them
// ("0.1", "100000"), and more only where they are needed to read back.
constexpr int kCsvDigits = 6;

std::string csvField(const std::string& text) {
    if (text.find_first_of(",\"\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + "\"";
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
            else if (fields[static_cast<size_t>(c)].type == kTypeSingle)
                out += singleDigits(static_cast<float>(row->number(c)), kCsvDigits);
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
