// Stored outputs: export as CSV, plot as a PNG chart.
#include <fstream>
#include <iostream>

#include "app/text_format.h"
#include "chart_png.h"
#include "cli_context.h"
#include "cli_options.h"
#include "modeloutput/output_series.h"
#include "modeloutput/output_table_text.h"
#include "modeloutput/output_tables.h"
#include "records/record_ids.h"

namespace sbcli {
namespace {

// The outputs of a record that must be there: a wrong ID is an error, not an empty table.
bool readStoredOutputs(const std::string& project, int id, sb::tellura_outputs& outputs, sb::message_sink& errors) {
    auto db = openProject(project);
    if (!db) return false;
    if (!sb::controlRecordExists(*db, id)) {
        errors.errorf("ERROR, can't find record, ID=%d, in [Control Records].\n", id);
        return false;
    }
    return sb::loadOutputs(*db, id, outputs, errors);
}

}  // namespace

int cmdExport(const export_options& opt) {
    sb::message_sink errors;
    sb::tellura_outputs outputs;
    if (!readStoredOutputs(opt.project, opt.id, outputs, errors)) return finish(false, errors);
    sb::table_id table = sb::table_id::output;
    sb::outputTableFromWord(opt.table, table);  // the parser let only the table words through
    const std::string csv = sb::outputCsv(outputs, table);
    if (opt.csv.empty()) {
        std::cout << csv;
        return finish(true, errors);
    }
    std::ofstream out(opt.csv, std::ios::binary);
    out << csv;
    if (!out.flush()) {
        errors.errorf("ERROR, unable to write \"%s\".\n", opt.csv.c_str());
        return finish(false, errors);
    }
    return finish(true, errors);
}

int cmdPlot(const plot_options& opt) {
    sb::message_sink errors;
    sb::tellura_outputs outputs;
    if (!readStoredOutputs(opt.project, opt.id, outputs, errors)) return finish(false, errors);
    chart_request request;
    request.title = sb::strprintf("Record %d, %s output", opt.id, opt.table.c_str());
    request.table = opt.table;
    // Names hold commas of their own ("clittr(1,1)"): split only outside parentheses.
    std::string name;
    int depth = 0;
    for (char c : opt.vars + ",") {
        if (c == '(') ++depth;
        if (c == ')') --depth;
        if (c == ',' && depth <= 0) {
            if (!sb::trim(name).empty()) request.variables.push_back(std::string(sb::trim(name)));
            name.clear();
        } else {
            name += c;
        }
    }
    bool ok = renderOutputChart(outputs, request, opt.png, errors);
    if (ok) std::cout << "Wrote " << opt.png << "\n";
    return finish(ok, errors);
}

}  // namespace sbcli
