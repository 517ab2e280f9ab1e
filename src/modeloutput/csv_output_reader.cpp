#include "modeloutput/csv_output_reader.h"

#include <filesystem>

#include "app/text_file.h"
#include "app/text_format.h"
#include "modeloutput/output_line_reader.h"
#include "modeloutput/output_time.h"
#include "modeloutput/output_value_parse.h"
#include "modeloutput/tellura_output.h"

namespace sb {

namespace {

constexpr unsigned A = kCsvAnnual;
constexpr unsigned E = kCsvEndOfRun;

struct resolved_field {
    int annualColumn = -1;
    int endOfRunColumn = -1;
};

std::vector<resolved_field> resolveFields(const csv_output_file& file) {
    std::vector<resolved_field> out;
    for (const auto& field : file.fields) {
        resolved_field r;
        if (field.targets & A) r.annualColumn = tableDef(table_id::output_annual).fieldIndex(field.name);
        if (field.targets & E) r.endOfRunColumn = tableDef(table_id::output).fieldIndex(field.name);
        out.push_back(r);
    }
    return out;
}

}  // namespace

// The files' own layouts: after the time, the fields below in this order; a
// field beyond the list is skipped. The last header line names the columns.
const std::vector<csv_output_file>& csvOutputFiles() {
    static const std::vector<csv_output_file> files = {
        {"sb.cropC.csv",
         1,
         {{"agcacc", A},
          {"aglcis(1)", A},
          {"aglcis(2)", A},
          {"bgcacc", A},
          {"bglivc", A},
          {"cgrain", A},
          {"cinput", A},
          {"cprodc", A},
          {"creta", A},
          {"sdrema", A},
          {"shrema", A},
          {"stdedc", A}}},
        {"sb.soilC.csv",
         1,
         {{"somsc", A},
          {"somtc", A},
          {"som1c(1)", A},
          {"som1c(2)", A},
          {"som2c(1)", A},
          {"som2c(2)", A},
          {"som3c", A},
          {"totc", A}}},
        {"sb.CO2.csv", 13, {{"resp(1)", A}, {"resp(2)", A}, {"totsysc", A}}},
        {"sb.ForestC.csv",
         13,
         {{"rleavc", A}, {"frootc", A}, {"fbrchc", A}, {"rlwodc", A}, {"crootc", A}, {"frstc", A}, {"woode(1)", A}}},
        // The mineral pools of the last year are also the run's end-of-run state.
        {"sb.nps.csv",
         1,
         {{"aminrl(1)", A | E},
          {"aminrl(2)", A | E},
          {"aminrl(3)", A | E},
          {"fertac(1)", A},
          {"fertac(2)", A},
          {"fertac(3)", A}}},
        {"sb.wt.csv",
         13,
         {{"petann", A}, {"prcann", A}, {"runoff", A}, {"avh2o(1)", A}, {"avh2o(2)", A}, {"avh2o(3)", A}}},
    };
    return files;
}

bool readCsvOutputFile(const csv_output_file& file, const std::string& path, tellura_outputs& outputs,
                       message_sink& errors) {
    output_line_reader reader;
    if (!reader.open(path)) {
        errors.error("ERROR, unable to open output file: " + path + "\n");
        return false;
    }
    for (int i = 0; i < file.headerLines; ++i)
        if (!reader.next()) break;
    std::vector<resolved_field> columns = resolveFields(file);
    bad_value_log badValues(file.fileName);
    output_year_span span;
    while (reader.next()) {
        if (trim(reader.line()).empty()) continue;
        std::vector<std::string_view> fields = splitFieldViews(reader.line(), ',');
        double time = 0;
        if (parseOutputDouble(fields[0], time) != parse_result::ok) {
            errors.errorf("ERROR, %s line %ld: time \"%s\" is not a number; line skipped.\n", file.fileName,
                          reader.lineNumber(), std::string(trim(fields[0]).substr(0, 40)).c_str());
            continue;
        }
        int year = annualYear(time);
        annual_output& annual = outputs.annualFor(year);
        for (size_t i = 1; i < fields.size() && i - 1 < columns.size(); ++i) {
            float value = 0;
            parse_result r = parseOutputFloat(fields[i], value);
            if (r == parse_result::empty) continue;
            if (r != parse_result::ok) {
                badValues.note(reader.lineNumber(), fields[i], file.fields[i - 1].name, errors);
                continue;
            }
            const resolved_field& target = columns[i - 1];
            if (target.annualColumn >= 0) annual.setNumber(target.annualColumn, value);
            if (target.endOfRunColumn >= 0) outputs.endOfRunRecord().setNumber(target.endOfRunColumn, value);
        }
        span.see(year);
        ++span.count;
    }
    badValues.finish(errors);
    errors.notef("%ld years read, from %ld to %ld.\n", span.count, span.low, span.high);
    return reader.withinLimit(errors);
}

bool readCsvOutputs(const std::string& runDirectory, tellura_outputs& outputs, message_sink& errors) {
    // A missing file only reports; the run has failed only when none could be read.
    bool any = false;
    for (const auto& file : csvOutputFiles()) {
        std::string path = (std::filesystem::path(runDirectory) / file.fileName).string();
        any = readCsvOutputFile(file, path, outputs, errors) || any;
    }
    return any;
}

}  // namespace sb
