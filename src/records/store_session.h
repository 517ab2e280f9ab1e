#pragma once
// The session of one record save: opens it with the save's own message, and on
// finishing tells whether the work reached the file. A commit can still fail
// (disk full, the file locked by another program); the save then reports it
// instead of claiming success, and nothing of it is kept.
#include <string>

#include "db/database.h"

namespace sb {

class store_session {
public:
    // Appends `failure` when the session cannot be opened.
    store_session(database& db, std::string& errors,
                  const char* failure = "ERROR, unable to create session on database.\n");
    ~store_session() { finish(); }
    store_session(const store_session&) = delete;
    store_session& operator=(const store_session&) = delete;

    bool ok() const { return session_.ok(); }
    // Ends the session; false (with a message) when the outermost commit failed.
    bool finish();
    // Gives the work up: nothing of the save is kept.
    void abandon() {
        finished_ = true;
        session_.abandon();
    }

private:
    database& db_;
    std::string& errors_;
    session session_;
    bool finished_ = false;
};

}  // namespace sb
