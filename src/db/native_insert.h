#pragma once
// An insert bound straight to the store's own prepared statement. Bulk stores
// (a run's outputs: tens of thousands of rows) spend most of their time in the
// driver's per-value conversions otherwise. Only the database layer uses it; a
// store without one inserts every row through the driver.
#include <memory>
#include <string>

class QSqlDatabase;

namespace sb {

class table_record;

class native_insert {
public:
    virtual ~native_insert() = default;
    // Stores the record as one new row, its values converted exactly as the
    // driver converts them. False when no row was stored and the transaction is
    // still open: the caller then runs the row through the driver, which stores
    // it or says why not in the driver's own words. `transactionLost` is set when
    // the store ended the transaction itself (a full disk, an I/O failure) and
    // `failure` holds its code and text: nothing more may be sent in the session.
    virtual bool run(const table_record& record, bool& transactionLost, std::string& failureCode,
                     std::string& failure) = 0;
};

// SQLite's own statement for `insertText` on the connection; null when the
// driver does not give its connection handle or the statement cannot be made
// (the driver's insert then reports why).
std::unique_ptr<native_insert> sqliteNativeInsert(QSqlDatabase& db, const std::string& insertText);

}  // namespace sb
