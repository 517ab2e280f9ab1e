#include "run/run_history.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <unistd.h>

#include "app/text_format.h"
#include "db/database.h"
#include "db/database_maker.h"
#include "records/store_session.h"

namespace sb {
namespace {

constexpr table_id kTable = table_id::run_history;

const run_state kStates[] = {run_state::good, run_state::failed, run_state::cancelled, run_state::timedOut,
                             run_state::crashed};

run_state stateFromText(const std::string& text) {
    for (run_state state : kStates)
        if (text == runStateText(state)) return state;
    return run_state::failed;
}

// At most the column's length in characters, cut at a character boundary.
void setFitted(table_record& row, const char* column, const std::string& value) {
    const int col = row.column(column);
    const size_t limit = static_cast<size_t>(row.def().fields()[static_cast<size_t>(col)].size);
    size_t characters = 0, at = 0;
    for (; at < value.size(); ++at) {
        if ((static_cast<unsigned char>(value[at]) & 0xC0) == 0x80) continue;
        if (characters == limit) break;
        ++characters;
    }
    row.setText(col, value.substr(0, at));
}

table_record rowOf(const run_history_entry& entry) {
    table_record row(kTable);
    row.setNumber("ID", entry.id);
    setFitted(row, "Started", entry.started);
    setFitted(row, "Ended", entry.ended);
    setFitted(row, "State", runStateText(entry.state));
    setFitted(row, "Message", entry.message);
    setFitted(row, "Run Folder", entry.runFolder);
    setFitted(row, "Model", entry.model);
    setFitted(row, "Model SHA256", entry.modelSha256);
    setFitted(row, "Release Profile", entry.releaseProfile);
    setFitted(row, "Inputs SHA256", entry.inputsSha256);
    setFitted(row, "Soilbench Version", entry.soilbenchVersion);
    setFitted(row, "Host", entry.host);
    row.setNumber("Process ID", entry.processId);
    return row;
}

run_history_entry entryOf(const table_record& row) {
    run_history_entry entry;
    entry.id = row.integer(row.column("ID"));
    entry.started = row.text("Started");
    entry.ended = row.text("Ended");
    entry.state = stateFromText(row.text("State"));
    entry.message = row.text("Message");
    entry.runFolder = row.text("Run Folder");
    entry.model = row.text("Model");
    entry.modelSha256 = row.text("Model SHA256");
    entry.releaseProfile = row.text("Release Profile");
    entry.inputsSha256 = row.text("Inputs SHA256");
    entry.soilbenchVersion = row.text("Soilbench Version");
    entry.host = row.text("Host");
    entry.processId = row.integer(row.column("Process ID"));
    return entry;
}

}  // namespace

bool ensureRunHistoryTable(database& db, std::string& errors) {
    return ensureTableMade(db, kTable, "ERROR, unable to open the run history.\n", errors);
}

bool appendRunHistory(database& db, const run_history_entry& entry, std::string& errors) {
    store_session s(db, errors);
    if (!s.ok()) return false;
    db_status status;
    auto rows = db.openTable(kTable, "ID = -1", "", status);
    if (rows) status = rows->insert(rowOf(entry));
    if (!rows || status.failed()) {
        appendf(errors, "ERROR, unable to add to the run history of record %ld.\n", static_cast<long>(entry.id));
        appendStatusText(status, errors);
        return false;
    }
    rows.reset();
    return s.commit();
}

bool replaceRunHistory(database& db, const run_history_entry& started, const run_history_entry& entry,
                       std::string& errors) {
    store_session s(db, errors);
    if (!s.ok()) return false;
    std::string host = started.host;
    for (size_t at = host.find('\''); at != std::string::npos; at = host.find('\'', at + 2)) host.insert(at, 1, '\'');
    const db_status status = db.execute(
        strprintf("DELETE FROM `%s` WHERE [ID] = %ld AND [Started] = '%s' AND [Host] = '%s' AND [Process ID] = %ld",
                  tableName(kTable), static_cast<long>(started.id), started.started.c_str(), host.c_str(),
                  static_cast<long>(started.processId)));
    if (status.failed()) {
        appendf(errors, "ERROR, unable to update the run history of record %ld.\n", static_cast<long>(started.id));
        appendStatusText(status, errors);
        return false;
    }
    return s.commitIf(appendRunHistory(db, entry, errors));
}

bool readLastRuns(database& db, std::map<int32_t, run_history_entry>& lastRuns, std::string& errors) {
    db_status status;
    auto rows = db.openTable(kTable, "", "", status);
    if (!rows && status.code == kStatusNoTable) return true;  // a project from before the history: nothing run
    if (!rows) {
        errors += "ERROR, unable to open the run history.\n";
        appendStatusText(status, errors);
        return false;
    }
    db_status s;
    for (s = rows->moveFirst(); s.ok(); s = rows->moveNext()) {
        const table_record& row = rows->row();
        const int32_t id = row.integer(row.column("ID"));
        auto known = lastRuns.find(id);
        // The stamps are UTC in one fixed form: their text order is their time order.
        if (known == lastRuns.end()) lastRuns.emplace(id, entryOf(row));
        else if (known->second.started < row.text("Started")) known->second = entryOf(row);
    }
    return readToTheEnd(s, tableName(kTable), errors);
}

bool readRunHistory(database& db, int32_t id, std::vector<run_history_entry>& entries, std::string& errors) {
    db_status status;
    auto rows = db.openTable(kTable, strprintf("[ID] = %ld", static_cast<long>(id)), "", status);
    if (!rows) {
        errors += "ERROR, unable to open the run history.\n";
        appendStatusText(status, errors);
        return false;
    }
    for (db_status s = rows->moveFirst(); s.ok(); s = rows->moveNext()) entries.push_back(entryOf(rows->row()));
    // The stamps are UTC in one fixed form: their text order is their time order.
    std::stable_sort(entries.begin(), entries.end(),
                     [](const run_history_entry& a, const run_history_entry& b) { return a.started < b.started; });
    return true;
}

std::string historyTimeNow() {
    using namespace std::chrono;
    const auto now = system_clock::now();
    const std::time_t seconds = system_clock::to_time_t(now);
    const long millis = static_cast<long>(duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S", &utc);
    return strprintf("%s.%03ldZ", stamp, millis);
}

std::string hostName() {
    char name[256] = {};
    if (gethostname(name, sizeof name - 1) != 0) return "unknown";
    return name;
}

}  // namespace sb
