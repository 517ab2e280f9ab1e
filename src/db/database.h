#pragma once
// The one door to the project database. A project is one SQLite file (the
// embedded store) or a database on a PostgreSQL server (see project_location).
// Every other part reaches the database only through this layer, with SQL text
// in the project's own dialect (back-quoted table names, bracketed column names,
// "DELETE * FROM"); the store's dialect is produced in sql_dialect.
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/message_sink.h"
#include "db/db_status.h"
#include "db/table_catalogue.h"
#include "db/table_record.h"

namespace sb {

class project_location;
class rowset;
class sql_dialect;
struct database_impl;

// Each database object has a connection of its own, so different objects may be
// used from different threads at the same time; one object (and its row sets)
// stays on the thread that opened it. Close row sets before their database.
class database {
public:
    ~database();
    database(const database&) = delete;
    database& operator=(const database&) = delete;

    // Makes a new empty project at the location. A file there is replaced; one that
    // cannot be removed gives the access / not found / unable-to-remove message and
    // a false result, but creation is still attempted. On a server the database is
    // made when it does not exist, and an existing one is used only when it holds
    // no tables: a shared project is never replaced.
    static bool create(const std::string& location, message_sink& errors);
    // Opens a project shared (other programs may have it open too); null on failure
    // with "ERROR, unable to open database: <location>\n" and the status text. A
    // database that is not a project of ours is refused here.
    static std::unique_ptr<database> open(const std::string& location, message_sink& errors);

    // Whether a project location names something that exists: a file, or a database
    // on a server that answers. `failed` (with the message appended) when a server
    // cannot tell.
    enum class presence { absent, present, failed };
    static presence probe(const std::string& location, message_sink& errors);
    // Removes what `create` made at the location (a copy that failed takes back the
    // target it made): the file, or the database on its server.
    static bool remove(const std::string& location, message_sink& errors);

    // The location as messages show it (a file path, or a URL without its password).
    const std::string& path() const;
    const project_location& location() const;
    const sql_dialect& dialect() const;
    // A write-protected project file, or one in a write-protected folder, is opened
    // for reading; every save then fails at its session with a message saying so,
    // and nothing in the file changes.
    bool readOnly() const;

    // Runs a statement in project dialect (DELETE ... / DDL) on the current session.
    // Inside a session a DELETE first waits for any other connection's session that
    // deletes the same rows, so that two saves replacing them take turns.
    db_status execute(std::string_view sql);
    // Inside a session: other connections' sessions asking for the same name wait
    // until this one ends. A no-op on a store whose sessions exclude each other anyway.
    db_status holdSaveLock(std::string_view name);

    // "SELECT * FROM `name`" + " WHERE " filter + " ORDER BY " order; empty parts are left out.
    static std::string selectText(std::string_view table, std::string_view filter, std::string_view order);
    // The number of rows in the table; fails like openTable when there is no such table.
    db_status countRows(table_id table, long long& count);

    // Opens a table as a scrollable row set positioned before its first row.
    // On failure returns null and fills the status.
    std::unique_ptr<rowset> openTable(table_id table, std::string_view filter, std::string_view order,
                                      db_status& status);

    // Sessions nest: only the outermost one begins and commits the transaction,
    // so a whole record save (row, site data, blocks, soil) is one unit.
    bool beginSession(std::string& storeError);
    // Ends the innermost session keeping its work. The outermost one commits: false
    // (with the store's reason) when the commit fails or an inner session of the unit
    // was rolled back; the whole unit is then rolled back. An inner one hands its
    // work on to the unit and is false only when the unit is already given up.
    bool commitSession(std::string& storeError);
    // Ends the innermost session keeping nothing: the whole unit is rolled back.
    void rollbackSession();
    int sessionDepth() const;
    // A reading transaction at depth 0 (see read_snapshot); ended by endSnapshot.
    bool beginSnapshot(std::string& storeError);
    void endSnapshot();

    database_impl& impl() { return *impl_; }

private:
    explicit database(std::unique_ptr<database_impl> impl);
    std::unique_ptr<database_impl> impl_;
};

// A unit of write work that keeps nothing unless committed: a save that stops
// half-way (an error, an early return, an exception) leaves the project as it was.
// Opening fails when the store cannot start a transaction (the project busy past
// the wait, a read-only file); callers then append "ERROR, unable to create session
// on database.\n" and storeError(). A process killed before the commit leaves the
// old state too.
class session {
public:
    explicit session(database& db);
    ~session();  // rolls back unless committed
    session(const session&) = delete;
    session& operator=(const session&) = delete;
    bool ok() const { return ok_; }
    // Why the session could not be opened, or why its commit failed.
    const std::string& storeError() const { return storeError_; }
    // Keeps the work; false (see storeError()) when the store refused it, and then
    // nothing of the unit is kept. A session that is not open cannot commit.
    bool commit();
    // Gives up the work: the whole unit is rolled back.
    void rollback();

private:
    database& db_;
    bool ok_ = false;
    bool open_ = false;
    std::string storeError_;
};

// While it is open, everything read sees the project as it stood when the first
// row was read, whatever other users save meanwhile. Nothing is saved inside it.
class read_snapshot {
public:
    explicit read_snapshot(database& db) : db_(db) { ok_ = db_.beginSnapshot(storeError_); }
    ~read_snapshot() {
        if (ok_) db_.endSnapshot();
    }
    read_snapshot(const read_snapshot&) = delete;
    read_snapshot& operator=(const read_snapshot&) = delete;
    bool ok() const { return ok_; }
    const std::string& storeError() const { return storeError_; }

private:
    database& db_;
    bool ok_ = false;
    std::string storeError_;
};

struct rowset_impl;

// A scrollable row set over one SELECT, bound to a record of the table's kind:
// moving fills the record, insert writes it as a new row.
class rowset {
public:
    rowset(database& db, table_id table, std::string selectText);
    virtual ~rowset();

    const std::string& selectText() const { return select_; }
    table_id table() const { return table_; }

    // Each move fills row() and returns ok, or the end-of-rowset status at either end.
    db_status moveFirst();
    db_status moveNext();
    db_status movePrevious();
    db_status moveLast();

    table_record& row() { return *row_; }
    const table_record& row() const { return *row_; }
    void setRow(const table_record& record);

    // Inserts row() as a new row of the table (prepared once, reused).
    db_status insert();
    db_status insert(const table_record& record);
    // Inserts the records in order, as insert() would one by one. A record that is
    // that fails is passed to `refused` with its status; the rest follow while
    // `refused` returns true. Inside a session, on a store where each statement is
    // a round trip, the rows go in groups; a group holding a row that cannot be
    // stored is taken back whole and sent again row by row, so that each refusal
    // is told exactly as insert() tells it.
    void insertAll(const std::vector<const table_record*>& records,
                   const std::function<bool(size_t index, const db_status& status)>& refused);

    void close();

protected:
    explicit rowset(database& db, table_id table, std::string selectText, std::unique_ptr<table_record> bound);

private:
    friend class database;
    friend struct database_impl;
    db_status prepare();  // compiles the SELECT; reports a missing table or column
    db_status restart();  // runs the SELECT from its start
    bool fetchOne(db_status& status);
    db_status moveTo(long target);
    void readRow(table_record& record) const;
    // True when records[first, first + count) were all stored by one statement.
    bool insertGroup(const std::vector<const table_record*>& records, size_t first, int count);
    void takeRest();  // the rest of a streaming result, before another statement is sent
    void stopStreaming();

    database& db_;
    table_id table_;
    std::string select_;
    std::unique_ptr<table_record> row_;
    std::unique_ptr<rowset_impl> impl_;
};

// The row set of one table kind, bound to that table's accessor record type.
template <class Record>
class rowset_of {
public:
    explicit rowset_of(std::unique_ptr<rowset> rs) : rs_(std::move(rs)) {}
    bool isOpen() const { return rs_ != nullptr; }
    rowset& base() { return *rs_; }
    db_status moveFirst() { return rs_->moveFirst(); }
    db_status moveNext() { return rs_->moveNext(); }
    db_status movePrevious() { return rs_->movePrevious(); }
    db_status moveLast() { return rs_->moveLast(); }
    // The current row in the accessor's type (a copy built from the generic row).
    Record record() const {
        Record r;
        static_cast<table_record&>(r) = rs_->row();
        return r;
    }
    db_status insert(const Record& r) { return rs_->insert(r); }

private:
    std::unique_ptr<rowset> rs_;
};

}  // namespace sb
