#include "records/store_session.h"

#include "db/database_maker.h"
#include "db/db_status.h"
#include "db/table_catalogue.h"

namespace sb {

void appendStoreReason(const std::string& reason, std::string& errors) {
    if (reason.empty()) return;
    errors += reason;
    if (reason.back() != '\n') errors += '\n';
}

store_session::store_session(database& db, std::string& errors, const char* failure)
    : db_(db), errors_(errors), session_(db) {
    if (session_.ok()) return;
    errors_ += failure;
    appendStoreReason(session_.storeError(), errors_);
}

bool store_session::commit() {
    if (!session_.ok()) return false;
    const bool outermost = db_.sessionDepth() == 1;
    if (session_.commit()) return true;
    // An inner part of a larger save only hands its work on; the outer save says why it failed.
    if (outermost) {
        errors_ += "ERROR, unable to commit changes to the database";
        errors_ += session_.storeError().empty() ? ".\n" : ": " + session_.storeError() + "\n";
    }
    return false;
}

bool ensureTableMade(database& db, table_id table, const char* cannotOpen, std::string& errors) {
    db_status status;
    if (db.openTable(table, "ID = -1", "", status)) return true;
    if (status.code != kStatusNoTable) {
        errors += cannotOpen;
        appendStatusText(status, errors);
        return false;
    }
    store_session s(db, errors);
    if (!s.ok()) return false;
    database_maker maker(db);
    const bool made = maker.createTable(tableDef(table), errors) && maker.createIndexes(tableDef(table), errors);
    return s.commitIf(made);
}

}  // namespace sb
