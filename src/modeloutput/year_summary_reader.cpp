#include <filesystem>

#include "app/message_sink.h"
#include "app/text_format.h"
#include "modeloutput/output_line_reader.h"
#include "modeloutput/output_time.h"
#include "modeloutput/output_value_parse.h"
#include "modeloutput/tellura_output.h"
#include "modeloutput/text_output_readers.h"

namespace sb {

namespace {

struct summary_column {
    const char* header;  // as the model writes it
    const char* column;  // annual output column; nullptr for the time
    size_t first, last;  // characters, 1-based inclusive
};

const summary_column kSummaryColumns[] = {
    {"time", nullptr, 1, 8}, {"N2Oflux", "n2oflux", 9, 22}, {"NOflux", "noflux", 23, 36}, {"N2flux", "n2flux", 37, 50},
    {"CH4", "ch4", 51, 64},  {"NIT", "nit", 65, 78},        {"ANNPPT", "ppt", 79, 91},
};

std::string fileNameOf(const std::string& path) { return std::filesystem::path(path).filename().string(); }

bool headerMatches(std::string_view header, const std::string& path, message_sink& errors) {
    for (const auto& column : kSummaryColumns) {
        std::string read(trim(fieldRange(header, column.first, column.last)));
        if (read != column.header) {
            errors.errorf("ERROR in columns of \"%s\": read \"%s\", expected \"%s\".\n", fileNameOf(path).c_str(),
                          read.c_str(), column.header);
            return false;
        }
    }
    return true;
}

}  // namespace

bool readYearSummary(const std::string& path, tellura_outputs& outputs, message_sink& errors) {
    output_line_reader reader;
    if (!reader.open(path)) {
        errors.error("ERROR, can't open annual summary file \"" + path + "\".\n");
        return false;
    }
    if (!reader.next() || !headerMatches(reader.line(), path, errors)) {
        if (!reader.withinLimit(errors)) return false;
        if (reader.lineNumber() == 0)
            errors.errorf("ERROR in columns of \"%s\": read \"\", expected \"time\".\n", fileNameOf(path).c_str());
        return false;
    }
    const auto& table = tableDef(table_id::output_annual);
    int columns[std::size(kSummaryColumns)];
    for (size_t i = 0; i < std::size(kSummaryColumns); ++i)
        columns[i] = kSummaryColumns[i].column ? table.fieldIndex(kSummaryColumns[i].column) : -1;
    bad_value_log badValues("annual summary file");
    output_year_span span;
    while (reader.next()) {
        std::string_view line = reader.line();
        if (trim(line).empty()) continue;
        double time = 0;
        if (parseOutputDouble(fieldRange(line, 1, 8), time) != parse_result::ok) {
            errors.errorf("ERROR, annual summary file line %ld: time \"%s\" is not a number; line skipped.\n",
                          reader.lineNumber(), std::string(trim(fieldRange(line, 1, 8))).c_str());
            continue;
        }
        int year = annualYear(time);
        annual_output& annual = outputs.annualFor(year);
        for (size_t i = 1; i < std::size(kSummaryColumns); ++i) {
            const auto& column = kSummaryColumns[i];
            if (column.last > line.size()) continue;  // a range past the line's end leaves the value
            float value = 0;
            std::string_view text = fieldRange(line, column.first, column.last);
            parse_result r = parseOutputFloat(text, value);
            if (r == parse_result::ok) annual.setNumber(columns[i], value);
            else if (r != parse_result::empty) badValues.note(reader.lineNumber(), text, column.header, errors);
        }
        span.see(year);
        ++span.count;
    }
    badValues.finish(errors);
    errors.notef("Year Summary: %ld years read, from %ld to %ld.\n", span.count, span.low, span.high);
    return reader.withinLimit(errors);
}

}  // namespace sb
