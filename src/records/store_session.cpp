#include "records/store_session.h"

#include "db/db_status.h"

namespace sb {

void appendStoreReason(const std::string& reason, std::string& errors) {
    if (reason.empty()) return;
    errors += reason;
    if (reason.back() != '\n') errors += '\n';
}

store_session::store_session(database& db, message_sink& errors, const char* failure)
    : db_(db), errors_(errors), session_(db) {
    if (session_.ok()) return;
    std::string text = failure;
    appendStoreReason(session_.storeError(), text);
    errors_.error(std::move(text));
}

bool store_session::commit() {
    if (!session_.ok()) return false;
    const bool outermost = db_.sessionDepth() == 1;
    if (session_.commit()) return true;
    // An inner part of a larger save only hands its work on; the outer save says why it failed.
    if (outermost) {
        errors_.error(std::string("ERROR, unable to commit changes to the database") +
                      (session_.storeError().empty() ? ".\n" : ": " + session_.storeError() + "\n"));
    }
    return false;
}

}  // namespace sb
