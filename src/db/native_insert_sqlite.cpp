// SQLite's prepared insert reached through the connection Qt opened (the same
// library and connection, so the same transaction).
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QString>
#include <QVariant>

#include <sqlite3.h>

#include <cstring>
#include <vector>

#include "db/native_insert.h"
#include "db/table_record.h"

namespace sb {

namespace {

// How the driver stores each column's value (see storeValue in rowset.cpp).
enum class bound_as { text, real, bit, integer };

bool isAscii(const std::string& text) {
    for (unsigned char c : text)
        if (c >= 0x80) return false;
    return true;
}

// The driver stores text as Qt reads it from UTF-8: a text that does not survive
// that unchanged (malformed UTF-8) goes through the driver so that it is stored
// the same way.
bool storedUnchanged(const std::string& text) {
    if (isAscii(text)) return true;
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toUtf8() ==
           QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()));
}

class sqlite_insert final : public native_insert {
public:
    sqlite_insert(sqlite3* db, sqlite3_stmt* statement) : db_(db), statement_(statement) {}
    ~sqlite_insert() override { sqlite3_finalize(statement_); }

    bool run(const table_record& record, bool& transactionLost, std::string& failureCode,
             std::string& failure) override {
        if (kinds_.empty()) describe(record);
        for (int col = 0; col < record.columnCount(); ++col) {
            const int slot = col + 1;
            switch (kinds_[static_cast<size_t>(col)]) {
                case bound_as::text: {
                    const std::string& text = record.text(col);
                    if (!storedUnchanged(text)) return false;
                    sqlite3_bind_text(statement_, slot, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
                    break;
                }
                case bound_as::real:
                    // A missing value (checked against the table before) is NULL, not a number.
                    if (record.isMissing(col)) sqlite3_bind_null(statement_, slot);
                    else sqlite3_bind_double(statement_, slot, record.number(col));
                    break;
                case bound_as::bit:
                    sqlite3_bind_int64(statement_, slot, record.number(col) != 0.0 ? 1 : 0);
                    break;
                case bound_as::integer:
                    sqlite3_bind_int64(statement_, slot, static_cast<sqlite3_int64>(record.number(col)));
                    break;
            }
        }
        const bool inTransaction = !sqlite3_get_autocommit(db_);
        const int result = sqlite3_step(statement_);
        const bool stored = result == SQLITE_DONE && sqlite3_changes(db_) > 0;
        if (!stored && inTransaction && sqlite3_get_autocommit(db_)) {
            transactionLost = true;
            failureCode = std::to_string(sqlite3_extended_errcode(db_));
            failure = sqlite3_errmsg(db_);
        }
        sqlite3_reset(statement_);
        return stored;
    }

private:
    void describe(const table_record& record) {
        const auto& fields = record.def().fields();
        for (int col = 0; col < record.columnCount(); ++col) {
            bound_as kind = bound_as::integer;
            if (record.isText(col)) kind = bound_as::text;
            else if (fields[static_cast<size_t>(col)].type == kTypeSingle ||
                     fields[static_cast<size_t>(col)].type == kTypeDouble)
                kind = bound_as::real;
            else if (fields[static_cast<size_t>(col)].type == kTypeBit) kind = bound_as::bit;
            kinds_.push_back(kind);
        }
    }

    sqlite3* db_;
    sqlite3_stmt* statement_;
    std::vector<bound_as> kinds_;  // per column, worked out at the first row
};

}  // namespace

std::unique_ptr<native_insert> sqliteNativeInsert(QSqlDatabase& db, const std::string& insertText) {
    QSqlDriver* driver = db.driver();
    if (!driver) return nullptr;
    QVariant handle = driver->handle();
    if (!handle.isValid() || std::strcmp(handle.typeName(), "sqlite3*") != 0) return nullptr;
    sqlite3* connection = *static_cast<sqlite3* const*>(handle.constData());
    sqlite3_stmt* statement = nullptr;
    if (!connection || sqlite3_prepare_v2(connection, insertText.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        sqlite3_finalize(statement);
        return nullptr;
    }
    return std::make_unique<sqlite_insert>(connection, statement);
}

}  // namespace sb
