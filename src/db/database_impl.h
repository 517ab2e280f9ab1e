#pragma once
// The connection behind a database object, shared by the database and its row
// sets. Only the database layer includes this.
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

#include <array>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "db/database.h"
#include "db/native_insert.h"
#include "db/project_location.h"
#include "db/sql_dialect.h"

namespace sb {

QString qs(std::string_view text);
db_status statusOf(status_code code, std::string description);

struct database_impl {
    project_location location;
    std::string shown;  // the location as messages name it (no password)
    QString connection;
    QSqlDatabase db;
    std::unique_ptr<sql_dialect> dialect;
    bool readOnly = false;
    int depth = 0;
    // The save locks the open transaction holds (by key), and whether it holds the
    // whole project instead: a server keeps room for only so many locks.
    std::unordered_set<uint64_t> saveLocks;
    bool wholeProjectLocked = false;
    bool doomed = false;  // an inner session gave up: the outermost one rolls back
    // A statement failed where the store then refuses the rest of the transaction.
    bool spoiled = false;
    bool guarding = false;
    std::string spoiledBy;
    // The row set whose result the connection is still streaming, where the driver
    // streams only one at a time.
    rowset* streaming = nullptr;
    // Per table: the prepared insert (reused by every row set of the table) and where
    // each catalogue column stands in "SELECT *" (the store's order may differ).
    std::array<std::unique_ptr<QSqlQuery>, kTableCount> inserts;
    // Per table: the store's own statement for the same insert, where it has one
    // (made with the prepared insert; ended before the connection closes).
    std::array<std::unique_ptr<native_insert>, kTableCount> nativeInserts;
    // Per table: the insert of a group of rows in one statement, where the store takes groups.
    std::array<std::unique_ptr<QSqlQuery>, kTableCount> groupInserts;
    std::array<std::vector<int>, kTableCount> columnMaps;

    explicit database_impl(project_location where);
    ~database_impl() { closeConnection(); }

    db_status statusFrom(const QSqlError& error) const;
    bool openConnection(bool readOnlyMode, db_status& status);
    bool openConnection(const std::string& name, const std::string& options, db_status& status);
    void closeConnection();

    // Before anything else is sent: the result still streaming is taken in whole.
    void releaseStream();
    // True (with the status) when the connection is gone: a server that went away.
    bool connectionLost(db_status& status);
    // A statement as it stands; a failure inside a transaction may spoil it.
    db_status rawRun(const std::string& storeSql);
    // Runs `statement`; inside a transaction of a store where a failure spoils it,
    // within a savepoint, so that the caller may ride over the failure.
    template <class Statement>
    db_status guarded(Statement statement) {
        if (depth == 0 || !dialect->failureSpoilsTransaction()) return statement();
        db_status status = rawRun("SAVEPOINT sb_statement");
        if (!status.ok()) return status;
        const bool outer = guarding;
        guarding = true;  // a failure here is undone at the savepoint, not spoiling the rest
        status = statement();
        guarding = outer;
        db_status end = rawRun(status.ok() ? "RELEASE SAVEPOINT sb_statement" : "ROLLBACK TO SAVEPOINT sb_statement");
        return status.ok() ? end : status;
    }
    db_status run(const std::string& storeSql) {
        return guarded([&] { return rawRun(storeSql); });
    }
    void noteFailure(const db_status& status);

    void forgetPreparedStatements();
    bool columnMap(table_id table, db_status& status);
    // The columns the store's table has, in the store's order.
    db_status storeColumns(table_id table, QSqlRecord& columns);
    QSqlQuery* preparedInsert(table_id table, db_status& status);
    // The insert of `rows` rows at once (the dialect's group size); null when it cannot be made.
    QSqlQuery* preparedGroupInsert(table_id table, int rows);
};

}  // namespace sb
