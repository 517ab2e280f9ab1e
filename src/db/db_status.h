#pragma once
// Status codes of database operations and their readable text. The codes are
// the project format's published status values; a store's own failures are
// mapped onto them where they can be told apart, the rest get codes of ours.
#include <cstdint>
#include <string>
#include <vector>

#include "app/message_sink.h"

namespace sb {

using status_code = uint32_t;

constexpr status_code kStatusOk = 0;
constexpr status_code kStatusEndOfRowset = 0x00040EC6;  // "Reached start or end of rowset..."
constexpr status_code kStatusUnspecified = 0x80004005;
constexpr status_code kStatusNoInterface = 0x80004002;
constexpr status_code kStatusCommandError = 0x80040E14;
constexpr status_code kStatusIntegrityViolation = 0x80040E2F;  // duplicate key, constraint
constexpr status_code kStatusNoTable = 0x80040E37;
constexpr status_code kStatusNoColumn = 0x80040E55;
constexpr status_code kStatusAuthenticationFailed = 0x80040E4D;  // a server refused the login
constexpr status_code kStatusCantConvert = 0x80040E07;
// Codes of ours, reported through the "Other error" line.
constexpr status_code kStatusValueOutOfRange = 0x8004F001;  // value the column type refuses
constexpr status_code kStatusNotADatabase = 0x8004F002;
constexpr status_code kStatusReadOnly = 0x8004F003;
constexpr status_code kStatusBusy = 0x8004F004;
constexpr status_code kStatusServerUnreachable = 0x8004F005;  // no connection, or it was lost
constexpr status_code kStatusStoreError = 0x8004F0FF;

struct db_status {
    status_code code = kStatusOk;
    // The store's own descriptions, each shown on its own line after the message.
    std::vector<std::string> descriptions;

    bool ok() const { return code == kStatusOk; }
    bool endOfRowset() const { return code == kStatusEndOfRowset; }
    bool failed() const { return (code & 0x80000000u) != 0; }
};

// Appends the message for the status code, then each description followed by "\n".
void appendStatusText(const db_status& status, std::string& errors);
// The same text as one message: the store's reason for an error, or for a
// warning when what failed was only warned about.
void appendStatusText(const db_status& status, message_sink& messages,
                      message_severity severity = message_severity::error);

// After a loop over a row set: true when it ended at the end of the rows;
// otherwise (a damaged file, a lost connection) appends "ERROR, unable to read
// table [<table>]\n" and the status text, so that a read cut short is never
// taken for all there is.
bool readToTheEnd(const db_status& last, const char* table, message_sink& errors);

}  // namespace sb
