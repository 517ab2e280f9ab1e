#include <cmath>
#include <filesystem>
#include <map>

#include "app/message_sink.h"
#include "app/text_format.h"

#include "app/text_file.h"
#include "modeloutput/output_line_reader.h"
#include "modeloutput/output_time.h"
#include "modeloutput/output_value_parse.h"
#include "modeloutput/tellura_output.h"
#include "modeloutput/text_output_readers.h"

namespace sb {

namespace {

constexpr const char* kTime = "time";
constexpr const char* kDay = "dayofyr";

std::string fileNameOf(const std::string& path) { return std::filesystem::path(path).filename().string(); }

// Each header position: the daily table column it fills (-1: none, a column
// of the file we have no place for), or the time and the day.
struct daily_header {
    std::vector<std::string> names;  // as the file gives them, aliases applied
    std::vector<int> columns;
    int time = -1, day = -1;
};

daily_header readHeader(std::string_view line, const std::map<std::string, std::string>& aliases) {
    const auto& table = tableDef(table_id::output_daily);
    daily_header header;
    for (std::string_view token : splitTokenViews(line)) {
        std::string name(token);
        auto alias = aliases.find(name);
        if (alias != aliases.end()) name = alias->second;
        int position = static_cast<int>(header.names.size());
        if (name == kTime) header.time = position;
        if (name == kDay) header.day = position;
        bool key = name == kTime || name == kDay || name == "ID" || name == "Year" || name == "Julian Day";
        header.columns.push_back(key ? -1 : table.fieldIndex(name));
        header.names.push_back(std::move(name));
    }
    return header;
}

}  // namespace

bool isDailyOutputFile(const std::string& path, const std::map<std::string, std::string>& aliases) {
    output_line_reader reader;
    return reader.open(path) && reader.next() && readHeader(reader.line(), aliases).day >= 0;
}

bool readDailyOutput(const std::string& path, const std::map<std::string, std::string>& aliases,
                     tellura_outputs& outputs, message_sink& errors) {
    output_line_reader reader;
    if (!reader.open(path)) {
        errors.error("ERROR, can't open daily output file \"" + path + "\".\n");
        return false;
    }
    daily_header header = readHeader(reader.next() ? reader.line() : std::string_view(), aliases);
    // Rows are read as the time and the day of the year first, so nothing may
    // stand before either; any other columns follow.
    const size_t wrong = header.time != 0 ? 0 : header.day != 1 ? 1 : 2;
    if (wrong < 2) {
        errors.errorf("ERROR in columns of \"%s\": read \"%s\", expected \"%s\".\n", fileNameOf(path).c_str(),
                      wrong < header.names.size() ? header.names[wrong].c_str() : "", wrong == 0 ? kTime : kDay);
        reader.withinLimit(errors);
        return false;
    }
    bad_value_log badValues("daily output file");
    output_year_span span;
    while (reader.next()) {
        std::vector<std::string_view> fields = splitTokenViews(reader.line());
        if (fields.empty()) continue;
        double time = 0;
        unsigned day = 0;
        if (fields.size() < 2 || parseOutputDouble(fields[0], time) != parse_result::ok ||
            parseOutputUnsigned(fields[1], day) != parse_result::ok || day < 1 || day > 366) {
            errors.errorf("ERROR, daily output file line %ld has no valid time and day of year; line skipped.\n",
                          reader.lineNumber());
            continue;
        }
        int year = annualYear(time);
        daily_output& out = outputs.dailyFor(year, static_cast<int>(day));
        for (size_t i = 2; i < fields.size() && i < header.columns.size(); ++i) {
            int column = header.columns[i];
            // A column two files hold is taken from the first file read.
            if (column < 0 || !out.isMissing(column)) continue;
            float value = 0;
            parse_result r = parseOutputFloat(fields[i], value);
            if (r == parse_result::ok) out.setNumber(column, value);
            else badValues.note(reader.lineNumber(), fields[i], header.names[i], errors);
        }
        span.see(year);
        ++span.count;
    }
    badValues.finish(errors);
    errors.notef("%s: %ld days read, from %ld to %ld.\n", toUpper(fileNameOf(path)).c_str(), span.count, span.low,
                 span.high);
    return reader.withinLimit(errors);
}

bool readDailyOutput(const std::string& path, tellura_outputs& outputs, message_sink& errors) {
    return readDailyOutput(path, {}, outputs, errors);
}

void addAnnualSumsOfDailyValues(tellura_outputs& outputs) {
    // The daily files give the trace gas fluxes in g/ha, the year summaries in g/m2.
    static const struct {
        const char* daily;
        const char* annual;
        double scale;
    } kSums[] = {{"N2Oflux", "n2oflux", 1e-4},
                 {"NOflux", "noflux", 1e-4},
                 {"CH4", "ch4", 1e-4},
                 {"NIT", "nit", 1e-4},
                 {"ppt", "ppt", 1.0}};
    const auto& dailyTable = tableDef(table_id::output_daily);
    const auto& annualTable = tableDef(table_id::output_annual);
    std::map<int, std::vector<const daily_output*>> years;
    for (const daily_output& day : outputs.daily) years[day.year()].push_back(&day);
    for (const auto& [year, days] : years) {
        if (days.size() < 365) continue;  // a part of a year sums to no year's value
        for (const auto& sum : kSums) {
            int from = dailyTable.fieldIndex(sum.daily), to = annualTable.fieldIndex(sum.annual);
            double total = 0;
            bool complete = true;
            for (const daily_output* day : days) {
                complete = complete && !day->isMissing(from);
                if (complete) total += day->number(from);
            }
            if (!complete) continue;
            annual_output& annual = outputs.annualFor(year);
            if (annual.isMissing(to)) annual.setNumber(to, total * sum.scale);
        }
    }
}

}  // namespace sb
