#include "records/record_changes.h"

#include "app/text_format.h"
#include "db/database.h"

namespace sb {

namespace {

constexpr table_id kTable = table_id::record_changes;

std::string lockName(int32_t id) { return strprintf("control record %ld", static_cast<long>(id)); }

bool deleteCount(database& db, int32_t id, message_sink& errors) {
    if (db.execute(strprintf("DELETE FROM `%s` WHERE ID = %ld", tableName(kTable), static_cast<long>(id))).ok())
        return true;
    errors.errorf("ERROR, unable to delete from [%s]\n", tableName(kTable));
    return false;
}

}  // namespace

int64_t loadChangeCount(database& db, int32_t id) {
    db_status status;
    auto rows = db.openTable(kTable, strprintf("ID = %ld", static_cast<long>(id)), "", status);
    if (!rows) return kChangesUnknown;
    if (!rows->moveFirst().ok()) return 0;
    return static_cast<int64_t>(rows->row().number("Change Count"));
}

int64_t claimRecordSave(database& db, int32_t id, int64_t readCount, message_sink& errors) {
    // Holding the record's lock first, the count read next is the last one saved.
    db_status locked = db.holdSaveLock(lockName(id));
    if (!locked.ok()) {
        errors.errorf("ERROR, another save of control record ID=%ld did not end in time.\n", static_cast<long>(id));
        appendStatusText(locked, errors);
        return kChangesUnknown;
    }
    const int64_t stored = loadChangeCount(db, id);
    if (stored == kChangesUnknown) return kChangesUnknown;
    if (readCount != kChangesUnknown && stored != readCount)
        errors.warningf(
            "WARNING, control record ID=%ld was saved by another user since it was read; this save replaces "
            "that one.\n",
            static_cast<long>(id));
    // The count wraps within its 32-bit column; only a change of it matters.
    const int64_t next = stored >= 2147483647 ? 1 : stored + 1;
    table_record row(kTable);
    row.setNumber("ID", id);
    row.setNumber("Change Count", static_cast<double>(next));
    db_status status;
    auto rows = db.openTable(kTable, "", "", status);
    if (!deleteCount(db, id, errors) || !rows || !rows->insert(row).ok()) {
        errors.errorf("ERROR, unable to store the change count of control record ID=%ld.\n", static_cast<long>(id));
        return kChangesUnknown;
    }
    return next;
}

bool deleteRecordChanges(database& db, int32_t id, message_sink& errors) {
    db_status locked = db.holdSaveLock(lockName(id));
    if (loadChangeCount(db, id) == kChangesUnknown) return locked.ok();
    return deleteCount(db, id, errors) && locked.ok();
}

}  // namespace sb
