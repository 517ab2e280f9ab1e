#include "run/run_history.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <string_view>
#include <type_traits>
#include <unistd.h>

#include "app/text_format.h"
#include "db/database.h"
#include "db/table_columns.h"
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

// The columns, looked up once by name.
const table_columns& historyColumns() {
    static const table_columns c(
        kTable, {"ID", "Started", "Ended", "State", "Message", "Run Folder", "Model", "Model SHA256", "Release Profile",
                 "Inputs SHA256", "Soilbench Version", "Host", "Process ID", "First Error"});
    return c;
}

// Each column with the member that holds it, for reading and writing alike;
// the state is stored as its word and goes apart.
template <class Entry, class Visit>  // Entry: run_history_entry, const when writing
void entryMembers(Entry& e, Visit&& visit) {
    visit("ID", e.id);
    visit("Started", e.started);
    visit("Ended", e.ended);
    visit("Message", e.message);
    visit("Run Folder", e.runFolder);
    visit("Model", e.model);
    visit("Model SHA256", e.modelSha256);
    visit("Release Profile", e.releaseProfile);
    visit("Inputs SHA256", e.inputsSha256);
    visit("Soilbench Version", e.soilbenchVersion);
    visit("Host", e.host);
    visit("Process ID", e.processId);
    visit("First Error", e.firstError);
}

// At most the column's length in characters, cut at a character boundary.
void setFitted(table_record& row, int column, const std::string& value) {
    const size_t limit = static_cast<size_t>(row.def().fields()[static_cast<size_t>(column)].size);
    size_t characters = 0, at = 0;
    for (; at < value.size(); ++at) {
        if ((static_cast<unsigned char>(value[at]) & 0xC0) == 0x80) continue;
        if (characters == limit) break;
        ++characters;
    }
    row.setText(column, value.substr(0, at));
}

table_record rowOf(const run_history_entry& entry) {
    const table_columns& c = historyColumns();
    table_record row(kTable);
    entryMembers(entry, [&](std::string_view name, const auto& member) {
        if constexpr (std::is_same_v<std::decay_t<decltype(member)>, std::string>) setFitted(row, c[name], member);
        else row.setNumber(c[name], member);
    });
    setFitted(row, c["State"], runStateText(entry.state));
    return row;
}

run_history_entry entryOf(const table_record& row) {
    const table_columns& c = historyColumns();
    run_history_entry entry;
    entryMembers(entry, c.reading(row));
    entry.state = stateFromText(row.text(c["State"]));
    return entry;
}

}  // namespace

void run_history_entry::setMessages(const message_sink& messages) {
    message = messages.text();
    const sb::message* first = messages.firstError();
    firstError = first ? first->text : std::string();
}

bool appendRunHistory(database& db, const run_history_entry& entry, message_sink& errors) {
    store_session s(db, errors);
    if (!s.ok()) return false;
    db_status status;
    auto rows = db.openTable(kTable, "ID = -1", "", status);
    if (rows) status = rows->insert(rowOf(entry));
    if (!rows || status.failed()) {
        errors.errorf("ERROR, unable to add to the run history of record %ld.\n", static_cast<long>(entry.id));
        appendStatusText(status, errors);
        return false;
    }
    rows.reset();
    return s.commit();
}

bool replaceRunHistory(database& db, const run_history_entry& started, const run_history_entry& entry,
                       message_sink& errors) {
    store_session s(db, errors);
    if (!s.ok()) return false;
    std::string host = started.host;
    for (size_t at = host.find('\''); at != std::string::npos; at = host.find('\'', at + 2)) host.insert(at, 1, '\'');
    const db_status status = db.execute(
        strprintf("DELETE FROM `%s` WHERE [ID] = %ld AND [Started] = '%s' AND [Host] = '%s' AND [Process ID] = %ld",
                  tableName(kTable), static_cast<long>(started.id), started.started.c_str(), host.c_str(),
                  static_cast<long>(started.processId)));
    if (status.failed()) {
        errors.errorf("ERROR, unable to update the run history of record %ld.\n", static_cast<long>(started.id));
        appendStatusText(status, errors);
        return false;
    }
    return s.commitIf(appendRunHistory(db, entry, errors));
}

bool readLastRuns(database& db, std::map<int32_t, run_history_entry>& lastRuns, message_sink& errors) {
    db_status status;
    auto rows = db.openTable(kTable, "", "", status);
    if (!rows && status.code == kStatusNoTable) return true;  // a project from before the history: nothing run
    if (!rows) {
        errors.error("ERROR, unable to open the run history.\n");
        appendStatusText(status, errors);
        return false;
    }
    const table_columns& c = historyColumns();
    db_status s;
    for (s = rows->moveFirst(); s.ok(); s = rows->moveNext()) {
        const table_record& row = rows->row();
        const int32_t id = row.integer(c["ID"]);
        auto known = lastRuns.find(id);
        // The stamps are UTC in one fixed form: their text order is their time order.
        if (known == lastRuns.end()) lastRuns.emplace(id, entryOf(row));
        else if (known->second.started < row.text(c["Started"])) known->second = entryOf(row);
    }
    return readToTheEnd(s, tableName(kTable), errors);
}

bool readRunHistory(database& db, int32_t id, std::vector<run_history_entry>& entries, message_sink& errors) {
    db_status status;
    auto rows = db.openTable(kTable, strprintf("[ID] = %ld", static_cast<long>(id)), "", status);
    if (!rows) {
        errors.error("ERROR, unable to open the run history.\n");
        appendStatusText(status, errors);
        return false;
    }
    db_status s;
    for (s = rows->moveFirst(); s.ok(); s = rows->moveNext()) entries.push_back(entryOf(rows->row()));
    if (!readToTheEnd(s, tableName(kTable), errors)) return false;
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
