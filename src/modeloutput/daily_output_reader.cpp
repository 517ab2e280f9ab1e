#include <filesystem>

#include "app/text_format.h"

#include "app/text_file.h"
#include "modeloutput/output_line_reader.h"
#include "modeloutput/output_time.h"
#include "modeloutput/output_value_parse.h"
#include "modeloutput/tellura_output.h"
#include "modeloutput/text_output_readers.h"

namespace sb {

namespace {

// The columns that must stand in this order, and those that may stand between them
// (after "time" and "dayofyr", which lead every row).
const char* const kRequiredDaily[] = {"time", "dayofyr", "tmax", "tmin", "N2Oflux", "NOflux", "CO2resp"};
const char* const kOptionalDaily[] = {"ppt", "CH4", "NIT"};

bool isOptional(std::string_view name) {
    for (const char* optional : kOptionalDaily)
        if (name == optional) return true;
    return false;
}

// The daily table column of each header position; false
// with the columns message at the first name out of place.
struct daily_column {
    std::string name;
    int column;  // -1 for time and dayofyr
};

bool mapHeader(std::string_view header, const std::string& path, std::vector<daily_column>& columns,
               std::string& errors) {
    const auto& table = tableDef(table_id::output_daily);
    std::vector<std::string_view> names = splitTokenViews(header);
    size_t next = 0;  // the next required name
    for (std::string_view name : names) {
        if (next < std::size(kRequiredDaily) && name == kRequiredDaily[next]) {
            ++next;
        } else if (next < 2 || !isOptional(name)) {
            // Rows are read as time and day first, so nothing may stand before either.
            const char* expected = next < std::size(kRequiredDaily) ? kRequiredDaily[next] : "";
            appendf(errors, "ERROR in columns of \"%s\": read \"%s\", expected \"%s\".\n",
                    std::filesystem::path(path).filename().string().c_str(), std::string(name).c_str(), expected);
            return false;
        }
        bool key = name == kRequiredDaily[0] || name == kRequiredDaily[1];
        columns.push_back({std::string(name), key ? -1 : table.fieldIndex(name)});
    }
    if (next < std::size(kRequiredDaily)) {
        appendf(errors, "ERROR in columns of \"%s\": read \"\", expected \"%s\".\n",
                std::filesystem::path(path).filename().string().c_str(), kRequiredDaily[next]);
        return false;
    }
    return true;
}

}  // namespace

bool readDailyOutput(const std::string& path, tellura_outputs& outputs, std::string& errors) {
    output_line_reader reader;
    if (!reader.open(path)) {
        errors += "ERROR, can't open daily output file \"" + path + "\".\n";
        return false;
    }
    std::vector<daily_column> columns;
    if (!mapHeader(reader.next() ? reader.line() : std::string_view(), path, columns, errors)) {
        reader.withinLimit(errors);
        return false;
    }
    bad_value_log badValues("daily output file");
    output_year_span span;
    auto& daily = outputs.daily;
    while (reader.next()) {
        std::vector<std::string_view> fields = splitTokenViews(reader.line());
        if (fields.empty()) continue;
        double time = 0;
        unsigned day = 0;
        if (fields.size() < 2 || parseOutputDouble(fields[0], time) != parse_result::ok ||
            parseOutputUnsigned(fields[1], day) != parse_result::ok || day < 1 || day > 366) {
            appendf(errors, "ERROR, daily output file line %ld has no valid time and day of year; line skipped.\n",
                    reader.lineNumber());
            continue;
        }
        int year = annualYear(time);
        daily.emplace_back();
        TelluraOutputDaily& out = daily.back();
        out.setYearDay(year, static_cast<int>(day));
        for (size_t i = 2; i < fields.size() && i < columns.size(); ++i) {
            float value = 0;
            parse_result r = parseOutputFloat(fields[i], value);
            if (r == parse_result::ok) out.setNumber(columns[i].column, value);
            else badValues.note(reader.lineNumber(), fields[i], columns[i].name, errors);
        }
        span.see(year);
        ++span.count;
    }
    badValues.finish(errors);
    appendf(errors, "DAILY.OUT: %ld days read, from %ld to %ld.\n", span.count, span.low, span.high);
    return reader.withinLimit(errors);
}

}  // namespace sb
