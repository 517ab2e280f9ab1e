// Project-level commands: new, copy-project, list, show, copy, delete.
#include <unistd.h>

#include <filesystem>
#include <iostream>

#include "app/text_format.h"
#include "cli_context.h"
#include "cli_options.h"
#include "modeloutput/output_table_text.h"
#include "modeloutput/record_outputs.h"
#include "modeloutput/tellura_output.h"
#include "db/project_copy.h"
#include "db/project_location.h"
#include "records/id_list_filter.h"
#include "records/new_project.h"
#include "records/record_ids.h"
#include "records/tellura_control_record.h"
#include "records/tellura_weather_station.h"

namespace sbcli {

bool record_selection::filter(std::string& clause) const {
    clause = where;
    if (ids.empty()) return true;
    sb::message_sink errors;
    const bool ok = sb::id_list_filter::selectionClause(ids, clause, errors);
    report(errors);
    return ok;
}

int cmdNew(const new_options& opt) {
    sb::message_sink errors;
    // A database on a server is never replaced (making one refuses a database holding tables).
    sb::project_location where;
    std::string problem;
    const bool onServer = sb::project_location::parse(opt.project, where, problem) && where.onServer();
    std::error_code ec;
    const bool exists = !onServer && std::filesystem::exists(std::filesystem::symlink_status(opt.project, ec));
    if (!allowedToReplace(exists, opt.force, "\"" + opt.project + "\" exists already", "another name",
                          "replace it with a new empty project", errors))
        return finish(false, errors);
    auto db = sb::createNewProject(opt.project, errors);
    if (db) std::cout << "Created project " << db->path() << " with one default record (ID 1).\n";
    return finish(db != nullptr && errors.empty(), errors);
}

namespace {

// Copy progress on standard error: one line redrawn on a terminal, a line per table otherwise.
class copy_progress_line {
public:
    copy_progress_line() : terminal_(isatty(STDERR_FILENO) != 0) {}
    ~copy_progress_line() {
        if (terminal_ && drawn_) std::cerr << "\n";
    }
    void operator()(const sb::copy_progress& p) {
        const bool tableDone = p.tableRows == p.tableTotal;
        if (!terminal_) {
            if (tableDone && p.table != lastTable_)
                std::cerr << sb::strprintf("Copied [%s]: %lld rows\n", p.table, p.tableRows);
            if (tableDone) lastTable_ = p.table;
            return;
        }
        const int percent = p.total > 0 ? static_cast<int>(100 * p.rows / p.total) : 100;
        std::cerr << sb::strprintf("\r%3d%%  [%s] %lld/%lld rows%-20s", percent, p.table, p.tableRows, p.tableTotal, "")
                  << std::flush;
        drawn_ = true;
    }

private:
    bool terminal_;
    bool drawn_ = false;
    const char* lastTable_ = nullptr;
};

}  // namespace

int cmdCopyProject(const copy_project_options& opt) {
    sb::message_sink errors;
    sb::copy_options options;
    options.replace = opt.force;
    long long rows = 0;
    bool ok = false;
    {
        copy_progress_line line;
        options.progress = [&line](const sb::copy_progress& p) { line(p); };
        ok = sb::copyProject(opt.source, opt.target, options, rows, errors);
    }
    if (ok)
        std::cout << sb::strprintf("Copied project %s to %s: %lld rows in %d tables.\n",
                                   sb::project_location::shown(opt.source).c_str(),
                                   sb::project_location::shown(opt.target).c_str(), rows, sb::kTableCount);
    return finish(ok, errors);
}

int cmdList(const list_options& opt) {
    auto db = openProject(opt.project);
    if (!db) return kExitFailed;
    std::string filter;
    if (!opt.selection.filter(filter)) return kExitUsage;
    sb::db_status status;
    auto table = db->openTable(sb::table_id::control_records, filter, "", status);
    if (!table) {
        sb::message_sink errors;
        errors.error("ERROR, unable to open table [Control Records].\n");
        sb::appendStatusText(status, errors);
        return finish(false, errors);
    }
    const auto& row = table->row();
    const int id = row.column("ID"), description = row.column("Description"), soil = row.column("Soil ID"),
              weather = row.column("Weather ID");
    long number = 0;
    std::cout << "  No.    ID   Soil Weather  Description\n";
    sb::db_status s = table->moveFirst();
    for (; s.ok(); s = table->moveNext()) {
        std::cout << sb::strprintf("%5ld %5ld %6d %7d  %s\n", ++number, static_cast<long>(row.integer(id)),
                                   row.integer(soil), row.integer(weather), row.text(description).c_str());
    }
    if (!s.endOfRowset()) {
        sb::message_sink errors;
        errors.error("ERROR, unable to read [Control Records].\n");
        sb::appendStatusText(s, errors);
        return finish(false, errors);
    }
    return kExitOk;
}

int cmdShow(const show_options& opt) {
    auto db = openProject(opt.project);
    if (!db) return kExitFailed;
    sb::message_sink errors;
    sb::tellura_control_record record;
    sb::tellura_outputs outputs;
    if (!sb::loadControlRecordWithOutputs(*db, opt.id, record, outputs, errors)) return finish(false, errors);
    sb::tellura_weather_stations stations;
    sb::loadWeatherStations(*db, stations, errors);
    std::string text = sb::controlRecordText(record, stations);
    sb::appendAnnualOutputText(outputs, text);
    if (text.empty())
        errors.warningf(
            "WARNING, weather station %ld of record %ld is not in the project, so the record has no "
            "text form.\n",
            static_cast<long>(record.weatherId()), static_cast<long>(record.id()));
    std::cout << text;
    return finish(true, errors);
}

int cmdCopy(const copy_options& opt) {
    auto db = openProject(opt.project);
    if (!db) return kExitFailed;
    sb::message_sink errors;
    if (!allowedToReplace(sb::controlRecordExists(*db, opt.to), opt.force,
                          sb::strprintf("record %d exists already", opt.to), "another --to", "replace it", errors))
        return finish(false, errors);
    bool ok = sb::copyRecord(*db, opt.id, opt.to, errors);
    if (ok) std::cout << "Copied record " << opt.id << " to ID " << opt.to << ".\n";
    return finish(ok, errors);
}

int cmdDelete(const delete_options& opt) {
    auto db = openProject(opt.project);
    if (!db) return kExitFailed;
    sb::message_sink errors;
    bool ok = sb::deleteControlRecord(*db, opt.id, errors);
    if (ok) std::cout << "Deleted record " << opt.id << ".\n";
    return finish(ok, errors);
}

}  // namespace sbcli
