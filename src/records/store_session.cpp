#include "records/store_session.h"

#include "db/db_status.h"

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

}  // namespace sb
