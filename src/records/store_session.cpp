#include "records/store_session.h"

namespace sb {

store_session::store_session(database& db, std::string& errors, const char* failure)
    : db_(db), errors_(errors), session_(db) {
    if (!session_.ok()) errors_ += failure;
    // Why, where the store says more than "no" (a lost server, a locked file).
    if (!session_.ok() && !session_.storeError().empty() && !db.readOnly()) errors_ += session_.storeError() + "\n";
}

bool store_session::finish() {
    if (finished_ || !session_.ok()) return session_.ok();
    finished_ = true;
    const bool outermost = db_.sessionDepth() == 1;
    session_.close();
    if (!outermost || db_.lastCommitError().empty()) return true;
    errors_ += "ERROR, unable to commit changes to the database: " + db_.lastCommitError() + "\n";
    return false;
}

}  // namespace sb
