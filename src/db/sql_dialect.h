#pragma once
// Everything that differs between stores lives here: turning the project's own
// SQL text (back-quoted tables, bracketed columns, "DELETE * FROM", Jet DDL
// types and "with primary") into the store's text, naming the store's driver,
// and what a store needs around transactions. Callers never see which store
// they work on.
//
// Two stores: SQLite, the embedded default (a project is one file), and
// PostgreSQL for projects that several people share on a server. There:
// - quoted identifiers are case-sensitive while project SQL matches names without
//   regard to case ("[Soil Id]" finds "Soil ID", a bare ID finds "ID"), so every
//   name is given its catalogue spelling;
// - rows have no implicit order, so each table carries a "rowid" column filled
//   in insertion order and every SELECT is ordered by it last: table order, and
//   the order within equal sort keys, are those of SQLite;
// - a failed statement spoils the whole transaction, so statements whose failure
//   callers ride over run inside a savepoint;
// - one result is streamed at a time per connection;
// - concurrent saves of the same rows wait for each other on an advisory lock
//   instead of the whole-file write lock of SQLite.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "db/db_status.h"

class QSqlDatabase;

namespace sb {

class native_insert;

class sql_dialect {
public:
    virtual ~sql_dialect() = default;
    virtual const char* driverName() const = 0;  // Qt SQL driver, e.g. "QSQLITE"
    // SELECT / DELETE / CREATE TABLE / CREATE INDEX / ALTER TABLE ADD COLUMN / DROP TABLE in project
    // form -> store form.
    virtual std::string translate(std::string_view projectSql) const = 0;
    // "INSERT INTO <table> (<cols>) VALUES (?, ...)" for a prepared insert. An insert
    // that stores no row (its key is taken) is reported by the caller as a duplicate.
    virtual std::string insertText(std::string_view table, const std::vector<std::string>& columns) const = 0;
    // The same insert taking `rows` rows at once ("VALUES (?, ...), (?, ...)").
    virtual std::string insertText(std::string_view table, const std::vector<std::string>& columns, int rows) const = 0;
    // How many rows of `columns` columns a bulk insert sends in one statement: 1 where
    // a row costs little on its own, more where each statement costs a round trip.
    virtual int insertGroupRows(int columns) const {
        (void)columns;
        return 1;
    }
    virtual std::string quoteIdentifier(std::string_view name) const = 0;

    // Connection options for the driver (time to wait on a busy file or a server, read-only mode).
    virtual std::string connectOptions(bool readOnly) const = 0;
    // A second way to open a write-protected file when the first fails (a shared-memory
    // journal that cannot be made beside it): false when the store has none.
    virtual bool readOnlyFallback(const std::string& path, std::string& databaseName, std::string& options) const = 0;
    // Statements run on every fresh writable connection (journal mode, sync level, waits).
    virtual std::vector<std::string> connectionSetup() const = 0;
    // Starts the outermost transaction of a session. On a file store it takes the write
    // lock at once so that two programs saving the same project queue instead of
    // failing late; on a server it takes no lock beyond the rows it touches.
    virtual std::string beginText() const = 0;
    // Marks a new project as ours, and reads the mark back (one integer).
    virtual std::string markProjectText() const = 0;
    virtual std::string readMarkText() const = 0;
    virtual long long projectMark() const = 0;
    // The store's failure (native code as the driver gives it, and its text) as one
    // of our status codes.
    virtual status_code classifyError(std::string_view nativeCode, std::string_view text) const = 0;
    // The store's failure text as shown to users: no prefixes, no code, no trailing newline.
    virtual std::string errorDescription(std::string_view storeText) const;

    // A failed statement spoils the whole transaction: statements whose failure the
    // caller rides over are run inside a savepoint.
    virtual bool failureSpoilsTransaction() const { return false; }
    // The driver streams one result at a time per connection: a result still being read
    // is taken in whole before another statement runs.
    virtual bool oneOpenResult() const { return false; }
    // Makes this transaction wait, until it ends, for any other transaction holding the
    // same key; empty where a transaction already excludes all other writers.
    virtual std::string saveLockText(uint64_t key) const;
    // The same key held shared (saves holding it shared do not wait for each other),
    // and a try for it whole that does not wait: one row, true when it was taken.
    virtual std::string sharedSaveLockText(uint64_t key) const;
    virtual std::string trySaveLockText(uint64_t key) const;
    // Makes a new database on a server, and removes one; empty for a store whose
    // projects are files.
    virtual std::string createDatabaseText(std::string_view name) const;
    virtual std::string dropDatabaseText(std::string_view name) const;
    // Starts a transaction that only reads, and sees the project as it stood when
    // it began whatever others save meanwhile.
    virtual std::string snapshotText() const = 0;
    // The store's own prepared statement for `insertText`, bound without the driver's
    // per-value conversions; null where rows go through the driver alone.
    virtual std::unique_ptr<native_insert> nativeInsert(QSqlDatabase& db, const std::string& insertText) const;

    static std::unique_ptr<sql_dialect> sqlite();
    static std::unique_ptr<sql_dialect> postgresql();
};

}  // namespace sb
