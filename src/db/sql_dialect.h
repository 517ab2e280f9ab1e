#pragma once
// Everything that differs between stores lives here: turning the project's own
// SQL text (back-quoted tables, bracketed columns, "DELETE * FROM", Jet DDL
// types and "with primary") into the store's text, and naming the store's driver.
// SQLite is the embedded default; a PostgreSQL dialect can be added beside it
// without touching any caller.
//
// What a PostgreSQL dialect would supply (callers stay as they are):
// - driverName "QPSQL"; connectOptions with the server's connect timeout; create
//   would make the named database through a maintenance connection instead of a file;
// - ddl types SMALLINT, INTEGER, REAL, SMALLINT for BYTE (with a CHECK 0..255),
//   BOOLEAN or SMALLINT for BIT, VARCHAR(n) for TEXT(n), and no STRICT suffix;
// - quoted identifiers are case-sensitive there while project SQL matches names
//   without regard to case ("[Soil Id]" must find "Soil ID"): translate would map
//   every identifier to its catalogue spelling, or the schema would be made in
//   one case and every quoted name folded to it;
// - quoteIdentifier with double quotes (the SQLite dialect uses grave accents
//   because SQLite turns an unknown double-quoted name into a string);
// - beginText "BEGIN" (readers never block writers there), the project mark kept in
//   a COMMENT ON DATABASE, and classifyError keyed on SQLSTATE (23505 unique
//   violation, 42P01 undefined table, 42703 undefined column, 25006 read-only).
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "db/db_status.h"

namespace sb {

class sql_dialect {
public:
    virtual ~sql_dialect() = default;
    virtual const char* driverName() const = 0;  // Qt SQL driver, e.g. "QSQLITE"
    // SELECT / DELETE / CREATE TABLE / CREATE INDEX in project form -> store form.
    virtual std::string translate(std::string_view projectSql) const = 0;
    // "INSERT INTO <table> (<cols>) VALUES (?, ...)" for a prepared insert.
    virtual std::string insertText(std::string_view table, const std::vector<std::string>& columns) const = 0;
    virtual std::string quoteIdentifier(std::string_view name) const = 0;

    // Connection options for the driver (time to wait on a busy file, read-only mode).
    virtual std::string connectOptions(bool readOnly) const = 0;
    // A second way to open a write-protected file when the first fails (a shared-memory
    // journal that cannot be made beside it): false when the store has none.
    virtual bool readOnlyFallback(const std::string& path, std::string& databaseName, std::string& options) const = 0;
    // Statements run on every fresh writable connection (journal mode, sync level).
    virtual std::vector<std::string> connectionSetup() const = 0;
    // Starts the outermost transaction of a session; it must take the write lock at
    // once so that two programs saving the same project queue instead of failing late.
    virtual std::string beginText() const = 0;
    // Marks a new file as a project of ours, and reads the mark back (one integer).
    virtual std::string markProjectText() const = 0;
    virtual std::string readMarkText() const = 0;
    virtual long long projectMark() const = 0;
    // The store's failure (native code as the driver gives it, and its text) as one
    // of our status codes.
    virtual status_code classifyError(std::string_view nativeCode, std::string_view text) const = 0;

    static std::unique_ptr<sql_dialect> sqlite();
};

}  // namespace sb
