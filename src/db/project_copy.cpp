#include "db/project_copy.h"

#include <array>
#include <filesystem>

#include "app/text_format.h"
#include "db/database.h"
#include "db/database_maker.h"
#include "db/project_location.h"

namespace sb {

namespace {

constexpr long long kProgressEvery = 1000;  // rows between progress reports

using row_counts = std::array<long long, kTableCount>;  // -1: no such table

row_counts countAll(database& db) {
    row_counts counts{};
    for (int i = 0; i < kTableCount; ++i)
        if (!db.countRows(static_cast<table_id>(i), counts[static_cast<size_t>(i)]).ok())
            counts[static_cast<size_t>(i)] = -1;
    return counts;
}

// The same project named twice (a file by another path, a URL by another spelling
// of the same server and database).
bool sameProject(const std::string& a, const std::string& b) {
    project_location la, lb;
    std::string problem;
    if (!project_location::parse(a, la, problem) || !project_location::parse(b, lb, problem)) return false;
    if (la.onServer() != lb.onServer()) return false;
    if (la.onServer())
        return la.host() == lb.host() && la.port() == lb.port() && la.databaseName() == lb.databaseName();
    std::error_code ec;
    return std::filesystem::weakly_canonical(la.path(), ec) == std::filesystem::weakly_canonical(lb.path(), ec);
}

// The target opened: an existing project (refused when it holds rows and may not
// be replaced), or one made afresh (`made`).
std::unique_ptr<database> openTarget(const std::string& target, bool replace, bool& made, message_sink& errors) {
    made = false;
    switch (database::probe(target, errors)) {
        case database::presence::failed:
            return nullptr;
        case database::presence::absent:
            if (!database::create(target, errors)) return nullptr;
            made = true;
            return database::open(target, errors);
        case database::presence::present:
            break;
    }
    message_sink openErrors;
    auto db = database::open(target, openErrors);
    // A database made for the project on a server (empty, not yet marked) is taken as it is.
    if (!db && looksLikeUrl(target)) {
        message_sink makeErrors;
        if (database::create(target, makeErrors)) {
            openErrors.clear();
            db = database::open(target, openErrors);
        }
    }
    errors.add(openErrors);
    if (!db || replace) return db;
    for (long long rows : countAll(*db))
        if (rows > 0) {
            errors.error("ERROR, the target project " + db->path() +
                         " already holds data; copy-project replaces it only when told to (--force).\n");
            return nullptr;
        }
    return db;
}

// One table into the target: made afresh, filled in the source's order, then keyed
// (a key is made faster over rows already in place).
bool copyTable(database& from, database& to, table_id table, long long sourceRows, copy_progress& progress,
               const copy_progress_callback& report, message_sink& errors) {
    const database_maker_table& def = tableDef(table);
    database_maker maker(to);
    db_status status = to.execute(std::string("DROP TABLE IF EXISTS [") + def.name() + "]");
    if (!status.ok()) {
        errors.errorf("ERROR, unable to remove table [%s] from the target.\n", def.name().c_str());
        appendStatusText(status, errors);
        return false;
    }
    if (!maker.createTable(def, errors)) return false;
    progress.table = tableName(table);
    progress.tableRows = 0;
    progress.tableTotal = std::max(sourceRows, 0LL);
    if (sourceRows < 0) {
        errors.warningf("WARNING, the source project has no table [%s]; the copy holds it empty.\n",
                        def.name().c_str());
    } else {
        auto rows = from.openTable(table, "", "", status);
        auto into = rows ? to.openTable(table, "", "", status) : nullptr;
        if (!rows || !into) {
            errors.errorf("ERROR, unable to open table [%s] to copy it.\n", def.name().c_str());
            appendStatusText(status, errors);
            return false;
        }
        for (status = rows->moveFirst(); status.ok(); status = rows->moveNext()) {
            db_status inserted = into->insert(rows->row());
            if (!inserted.ok()) {
                errors.errorf("ERROR, unable to copy row %lld of table [%s].\n", progress.tableRows + 1,
                              def.name().c_str());
                appendStatusText(inserted, errors);
                return false;
            }
            ++progress.tableRows;
            ++progress.rows;
            if (report && progress.tableRows % kProgressEvery == 0) report(progress);
        }
        if (status.failed()) {
            errors.errorf("ERROR, unable to read table [%s] of the source.\n", def.name().c_str());
            appendStatusText(status, errors);
            return false;
        }
    }
    if (report) report(progress);
    return maker.createIndexes(def, errors);
}

bool copyAll(database& from, database& to, const row_counts& counts, const copy_options& options, long long& rowsCopied,
             message_sink& errors) {
    copy_progress progress;
    for (long long rows : counts) progress.total += std::max(rows, 0LL);
    session unit(to);
    if (!unit.ok()) {
        errors.error("ERROR, unable to create session on database.\n" +
                     (unit.storeError().empty() ? std::string() : unit.storeError() + "\n"));
        return false;
    }
    for (int i = 0; i < kTableCount; ++i)
        if (!copyTable(from, to, static_cast<table_id>(i), counts[static_cast<size_t>(i)], progress, options.progress,
                       errors)) {
            return false;  // the unit rolls back
        }
    if (!unit.commit()) {
        errors.error("ERROR, unable to commit changes to the database: " + unit.storeError() + "\n");
        return false;
    }
    rowsCopied = progress.rows;
    return true;
}

}  // namespace

bool copyProject(const std::string& source, const std::string& target, const copy_options& options,
                 long long& rowsCopied, message_sink& errors) {
    rowsCopied = 0;
    if (sameProject(source, target)) {
        errors.error("ERROR, the source and the target are the same project.\n");
        return false;
    }
    auto from = database::open(source, errors);
    if (!from) return false;
    // Other users may go on saving in the source: the copy takes it as it stood at the start.
    read_snapshot snapshot(*from);
    if (!snapshot.ok()) {
        errors.error("ERROR, unable to read the source project " + from->path() + ": " + snapshot.storeError() + "\n");
        return false;
    }
    const row_counts counts = countAll(*from);
    bool made = false;
    auto to = openTarget(target, options.replace, made, errors);
    if (!to) return false;
    if (copyAll(*from, *to, counts, options, rowsCopied, errors)) return true;
    if (made) {
        to.reset();
        database::remove(target, errors);
    }
    return false;
}

}  // namespace sb
