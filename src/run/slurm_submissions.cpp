#include "run/slurm_submissions.h"

#include <algorithm>

#include "app/text_format.h"
#include "db/database.h"
#include "db/table_columns.h"
#include "records/store_session.h"

namespace sb {
namespace {

constexpr table_id kTable = table_id::slurm_submissions;

void appendCannotOpen(const db_status& status, message_sink& errors) {
    errors.error("ERROR, unable to open the Slurm submissions of the project.\n");
    appendStatusText(status, errors);
}

// The columns, looked up once by name.
const table_columns& submissionColumns() {
    static const table_columns c(kTable, {"ID", "Job", "Task", "Folder", "Submitted", "Host"});
    return c;
}

// Each column with the member that holds it, for reading and writing alike;
// the job goes apart: its number can exceed 32 bits.
template <class Entry, class Visit>  // Entry: slurm_task_entry, const when writing
void entryMembers(Entry& e, Visit&& visit) {
    visit("ID", e.id);
    visit("Task", e.task);
    visit("Folder", e.folder);
    visit("Submitted", e.submitted);
    visit("Host", e.host);
}

}  // namespace

bool recordSlurmTasks(database& db, const std::vector<slurm_task_entry>& entries, message_sink& errors) {
    store_session s(db, errors);
    if (!s.ok()) return false;
    const table_columns& c = submissionColumns();
    db_status status;
    auto rows = db.openTable(kTable, "ID = -1", "", status);
    for (size_t i = 0; rows && status.ok() && i < entries.size(); ++i) {
        table_record row(kTable);
        row.setNumber(c["Job"], static_cast<double>(entries[i].job));
        entryMembers(entries[i], c.writing(row));
        status = rows->insert(row);
    }
    if (!rows || status.failed()) {
        appendCannotOpen(status, errors);
        return false;
    }
    rows.reset();
    return s.commit();
}

bool readSlurmTasks(database& db, std::vector<slurm_task_entry>& entries, message_sink& errors) {
    db_status status;
    auto rows = db.openTable(kTable, "", "", status);
    if (!rows) {
        if (status.code == kStatusNoTable) return true;  // nothing was ever submitted
        appendCannotOpen(status, errors);
        return false;
    }
    const table_columns& c = submissionColumns();
    db_status s;
    for (s = rows->moveFirst(); s.ok(); s = rows->moveNext()) {
        const table_record& row = rows->row();
        slurm_task_entry entry;
        entry.job = static_cast<long>(row.number(c["Job"]));
        entryMembers(entry, c.reading(row));
        entries.push_back(std::move(entry));
    }
    if (!readToTheEnd(s, tableName(kTable), errors)) return false;
    std::sort(entries.begin(), entries.end(), [](const slurm_task_entry& a, const slurm_task_entry& b) {
        return a.job != b.job ? a.job < b.job : a.task < b.task;
    });
    return true;
}

bool slurmTaskNoted(database& db, long job, int32_t id) {
    db_status status;
    auto rows = db.openTable(kTable, strprintf("[Job] = %ld AND ID = %ld", job, static_cast<long>(id)), "", status);
    return rows && rows->moveFirst().ok();
}

bool forgetSlurmTask(database& db, long job, int32_t id, message_sink& errors) {
    db_status status = db.execute(
        strprintf("DELETE FROM `%s` WHERE [Job] = %ld AND ID = %ld", tableName(kTable), job, static_cast<long>(id)));
    if (status.ok()) return true;
    errors.errorf("ERROR, unable to remove record %ld of Slurm job %ld from the project's submissions.\n",
                  static_cast<long>(id), job);
    appendStatusText(status, errors);
    return false;
}

}  // namespace sb
