#pragma once
// How many times each control record has been saved, kept beside it in the
// `Record Changes` table. A record read with its count and saved later can
// tell whether someone else saved it in between: the save still replaces the
// record whole, and the user is told whose work it replaced.
#include <cstdint>
#include <string>

#include "app/message_sink.h"

namespace sb {

class database;

// The project keeps no counts (a project made before they were kept).
constexpr int64_t kChangesUnknown = -1;

// The record's count as stored: 0 for a record never saved since counts were
// kept, kChangesUnknown where the project keeps none.
int64_t loadChangeCount(database& db, int32_t id);

// Inside the save's session: waits for any other save of the same record to end
// (on a shared server), warns when the record was saved by someone else since
// `readCount` was read, and stores the next count. Returns the count stored, or
// kChangesUnknown where none is kept (or `readCount` is and nothing is checked).
int64_t claimRecordSave(database& db, int32_t id, int64_t readCount, message_sink& errors);

// Inside the deleting session: the record's count goes with it.
bool deleteRecordChanges(database& db, int32_t id, message_sink& errors);

}  // namespace sb
