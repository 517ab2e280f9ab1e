#pragma once
// The session of one save: opens it with the save's own message, keeps nothing
// unless the save commits, and tells whether the commit reached the file. A
// commit can still fail (disk full, the file locked by another program); the
// save then reports it instead of claiming success, and nothing of it is kept.
//
//   store_session s(db, errors);
//   if (!s.ok()) return false;
//   ... every step; on any failure `return false` (the destructor rolls back)
//   return s.commit();
#include <string>

#include "app/message_sink.h"
#include "db/database.h"

namespace sb {

class store_session {
public:
    // Appends `failure` and the store's reason when the session cannot be opened.
    store_session(database& db, message_sink& errors,
                  const char* failure = "ERROR, unable to create session on database.\n");
    store_session(const store_session&) = delete;
    store_session& operator=(const store_session&) = delete;

    bool ok() const { return session_.ok(); }
    // Keeps the work; false with a message when the commit failed (nothing kept).
    bool commit();
    // Keeps the work only when `keep` is true; the result is true only when it was kept.
    bool commitIf(bool keep) {
        if (keep) return commit();
        session_.rollback();
        return false;
    }
    // Gives the work up: nothing of the save is kept.
    void rollback() { session_.rollback(); }

private:
    database& db_;
    message_sink& errors_;
    session session_;
};

// Appends the store's reason for a failed session or commit, as its own line.
void appendStoreReason(const std::string& reason, std::string& errors);

}  // namespace sb
