// Row sets: a SELECT's rows moved through one at a time, and inserts.
#include <QSqlRecord>
#include <QVariant>

#include <cmath>
#include <deque>

#include "app/text_format.h"
#include "db/database_impl.h"

namespace sb {

namespace {

size_t utf8Length(const std::string& text) {
    size_t count = 0;
    for (unsigned char c : text) count += (c & 0xC0) != 0x80;
    return count;
}

}  // namespace

// The store's cursor only runs forward and is never read ahead, so opening a big
// table and taking its first row costs one row. Moving back is served from the
// last rows seen; further back, the query runs again up to the wanted row.
// Where the connection streams one result at a time, a row set still streaming
// when another statement is sent takes the rest of its rows in first.
struct rowset_impl {
    static constexpr size_t kWindow = 256;

    std::unique_ptr<QSqlQuery> query;
    std::vector<int> columns;  // catalogue column -> result column (a copy: DDL may drop the cache)
    bool executed = false;
    bool exhausted = false;           // the cursor has no more rows
    std::deque<table_record> taken;   // rows taken from the cursor ahead of time, not yet reached
    db_status takeFailure;            // a failure while taking them, reported when they run out
    long fetched = 0;                 // rows reached so far
    long position = -1;               // -1 before the first row; == count after the last
    std::deque<table_record> window;  // the rows reached last, ending at fetched - 1
    long windowStart = 0;

    bool atEnd() const { return exhausted && taken.empty(); }
};

rowset::rowset(database& db, table_id table, std::string selectText)
    : rowset(db, table, std::move(selectText), std::make_unique<table_record>(table)) {}

rowset::rowset(database& db, table_id table, std::string selectText, std::unique_ptr<table_record> bound)
    : db_(db),
      table_(table),
      select_(std::move(selectText)),
      row_(std::move(bound)),
      impl_(std::make_unique<rowset_impl>()) {}

rowset::~rowset() { close(); }

void rowset::stopStreaming() {
    database_impl& dbi = db_.impl();
    if (dbi.streaming == this) dbi.streaming = nullptr;
}

void rowset::close() {
    stopStreaming();
    if (impl_->query) impl_->query->finish();
    impl_->query.reset();
    impl_->executed = impl_->exhausted = false;
    impl_->taken.clear();
    impl_->takeFailure = {};
    impl_->fetched = 0;
    impl_->position = -1;
    impl_->window.clear();
}

db_status rowset::prepare() {
    if (impl_->query) return {};
    database_impl& dbi = db_.impl();
    db_status status;
    if (!dbi.columnMap(table_, status)) return status;
    impl_->columns = dbi.columnMaps[static_cast<size_t>(table_)];
    auto query = std::make_unique<QSqlQuery>(dbi.db);
    query->setForwardOnly(true);
    status = dbi.guarded([&] {
        dbi.releaseStream();
        db_status lost;
        if (dbi.connectionLost(lost)) return lost;
        if (query->prepare(qs(dbi.dialect->translate(select_)))) return db_status{};
        db_status failed = dbi.statusFrom(query->lastError());
        dbi.noteFailure(failed);
        return failed;
    });
    if (!status.ok()) return status;
    impl_->query = std::move(query);
    return {};
}

db_status rowset::restart() {
    db_status status = prepare();
    if (!status.ok()) return status;
    database_impl& dbi = db_.impl();
    stopStreaming();
    dbi.releaseStream();
    impl_->window.clear();
    impl_->taken.clear();
    impl_->takeFailure = {};
    impl_->windowStart = impl_->fetched = 0;
    impl_->exhausted = false;
    if (impl_->executed) impl_->query->finish();
    impl_->executed = true;
    if (dbi.connectionLost(status)) return status;
    if (!impl_->query->exec()) {
        status = dbi.statusFrom(impl_->query->lastError());
        dbi.noteFailure(status);
        return status;
    }
    if (dbi.dialect->oneOpenResult()) dbi.streaming = this;
    return {};
}

void rowset::readRow(table_record& record) const {
    const QSqlQuery& query = *impl_->query;
    const auto& def = record.def();
    const std::vector<int>& columns = impl_->columns;
    const bool keepsMissing = keepsMissingValues(table_);
    for (int col = 0; col < record.columnCount(); ++col) {
        const int at = columns[static_cast<size_t>(col)];
        const QVariant value = at < 0 ? QVariant() : query.value(at);
        if (def.isText(col)) record.setText(col, value.toString().toStdString());
        else if (value.isNull() && keepsMissing && def.fields()[static_cast<size_t>(col)].type == kTypeSingle)
            record.setMissing(col);
        else record.setNumber(col, value.isNull() ? 0.0 : value.toDouble());
    }
}

// Another statement is about to be sent: the rest of this result comes in now.
void rowset::takeRest() {
    QSqlQuery& query = *impl_->query;
    while (!impl_->exhausted && query.next()) {
        impl_->taken.emplace_back(table_);
        readRow(impl_->taken.back());
    }
    if (!impl_->exhausted && query.lastError().isValid()) impl_->takeFailure = db_.impl().statusFrom(query.lastError());
    impl_->exhausted = true;
}

// Takes the next row into the window; false at the end of the result.
bool rowset::fetchOne(db_status& status) {
    if (impl_->atEnd()) {
        if (impl_->takeFailure.failed()) status = impl_->takeFailure;
        return false;
    }
    QSqlQuery& query = *impl_->query;
    if (impl_->taken.empty() && !query.next()) {
        if (query.lastError().isValid()) status = db_.impl().statusFrom(query.lastError());
        impl_->exhausted = true;
        stopStreaming();
        return false;
    }
    // A full window hands its oldest row over for reuse, sparing an allocation per row.
    std::deque<table_record>& window = impl_->window;
    if (window.size() == rowset_impl::kWindow) {
        window.push_back(std::move(window.front()));
        window.pop_front();
        ++impl_->windowStart;
    } else {
        window.emplace_back(table_);
    }
    if (!impl_->taken.empty()) {
        window.back() = std::move(impl_->taken.front());
        impl_->taken.pop_front();
    } else {
        readRow(window.back());
    }
    ++impl_->fetched;
    return true;
}

// Makes row `target` current; the end-of-rowset status when the result has no such row.
db_status rowset::moveTo(long target) {
    db_status status;
    if (!impl_->executed || target < impl_->windowStart) {
        status = restart();
        if (!status.ok()) return status;
    }
    while (impl_->fetched <= target)
        if (!fetchOne(status)) {
            if (status.failed()) return status;
            impl_->position = impl_->fetched;  // after the last row
            return statusOf(kStatusEndOfRowset, {});
        }
    impl_->position = target;
    static_cast<table_record&>(*row_) = impl_->window[static_cast<size_t>(target - impl_->windowStart)];
    return {};
}

db_status rowset::moveFirst() { return moveTo(0); }

db_status rowset::moveNext() {
    if (impl_->executed && impl_->atEnd() && impl_->position >= impl_->fetched) return statusOf(kStatusEndOfRowset, {});
    return moveTo(impl_->position + 1);
}

db_status rowset::movePrevious() {
    if (impl_->position <= 0) {
        impl_->position = -1;
        return statusOf(kStatusEndOfRowset, {});
    }
    return moveTo(impl_->position - 1);
}

db_status rowset::moveLast() {
    db_status status;
    if (!impl_->executed) {
        status = restart();
        if (!status.ok()) return status;
    }
    while (fetchOne(status)) {}
    if (status.failed()) return status;
    if (impl_->fetched == 0) {
        impl_->position = 0;
        return statusOf(kStatusEndOfRowset, {});
    }
    return moveTo(impl_->fetched - 1);
}

void rowset::setRow(const table_record& record) {
    if (record.table() == table_) {
        static_cast<table_record&>(*row_) = record;
        return;
    }
    // A record of another table: the columns of the same name carry over.
    for (int col = 0; col < row_->columnCount(); ++col) {
        int from = record.column(row_->def().fields()[static_cast<size_t>(col)].name);
        if (from < 0) continue;
        if (row_->isText(col)) row_->setText(col, record.isText(from) ? record.text(from) : std::string());
        else if (!record.isText(from)) row_->setNumber(col, record.number(from));
    }
}

db_status rowset::insert() { return insert(*row_); }

namespace {

// Values the column type cannot hold are refused here, with a message naming the
// place, instead of being cut or wrapped by the store.
db_status checkValue(const table_record& record, int col) {
    const database_maker_field& field = record.def().fields()[static_cast<size_t>(col)];
    const char* table = tableName(record.table());
    if (record.isText(col)) {
        size_t length = utf8Length(record.text(col));
        if (field.size > 0 && length > static_cast<size_t>(field.size))
            return statusOf(kStatusValueOutOfRange,
                            strprintf("The text for column [%s] of table [%s] has %zu characters; "
                                      "the column holds at most %d: \"%s\"",
                                      field.name.c_str(), table, length, field.size, record.text(col).c_str()));
        return {};
    }
    double value = record.number(col);
    double low = -HUGE_VAL, high = HUGE_VAL;
    switch (field.type) {
        case kTypeByte:
        case kTypeByteSigned:
            low = 0, high = 255;
            break;
        case kTypeSmallint:
            low = -32768, high = 32767;
            break;
        case kTypeInteger:
            low = -2147483648.0, high = 2147483647.0;
            break;
        default:
            break;
    }
    if (std::isnan(value) && keepsMissingValues(record.table()) && field.type == kTypeSingle) return {};  // NULL
    if (!std::isfinite(value))
        return statusOf(kStatusValueOutOfRange,
                        strprintf("The value %g for column [%s] of table [%s] is not a finite number.", value,
                                  field.name.c_str(), table));
    if (value < low || value > high)
        return statusOf(kStatusValueOutOfRange,
                        strprintf("The value %.17g for column [%s] of table [%s] is out of range: %s holds "
                                  "%.0f to %.0f.",
                                  value, field.name.c_str(), table, sqlTypeText(field.type), low, high));
    return {};
}

QVariant storeValue(const table_record& record, int col) {
    if (record.isText(col)) return QVariant(qs(record.text(col)));
    switch (record.def().fields()[static_cast<size_t>(col)].type) {
        case kTypeSingle:
        case kTypeDouble:
            if (record.isMissing(col)) return QVariant(QMetaType(QMetaType::Double));  // NULL
            return QVariant(record.number(col));
        case kTypeBit:
            return QVariant(static_cast<qlonglong>(record.number(col) != 0.0 ? 1 : 0));
        default:
            return QVariant(static_cast<qlonglong>(record.number(col)));
    }
}

}  // namespace

db_status rowset::insert(const table_record& record) {
    if (record.table() != table_)
        return statusOf(kStatusCantConvert, strprintf("A row of [%s] cannot be inserted into [%s].",
                                                      tableName(record.table()), tableName(table_)));
    for (int col = 0; col < record.columnCount(); ++col) {
        db_status status = checkValue(record, col);
        if (!status.ok()) return status;
    }
    database_impl& dbi = db_.impl();
    db_status status;
    QSqlQuery* insert = dbi.preparedInsert(table_, status);
    if (!insert) return status;
    dbi.releaseStream();
    if (dbi.connectionLost(status)) return status;
    if (native_insert* native = dbi.nativeInserts[static_cast<size_t>(table_)].get()) {
        bool lost = false;
        std::string code, failure;
        if (native->run(record, lost, code, failure)) return {};
        if (lost) {  // the store ended the transaction: sending the row again would store it outside one
            status = statusOf(dbi.dialect->classifyError(code, failure), dbi.dialect->errorDescription(failure));
            dbi.noteFailure(status);
            return status;
        }
        // Not stored: the driver runs it again and says why in its own words.
    }
    for (int col = 0; col < record.columnCount(); ++col) insert->bindValue(col, storeValue(record, col));
    if (!insert->exec()) {
        status = dbi.statusFrom(insert->lastError());
        dbi.noteFailure(status);
        return status;
    }
    // A store that skips a row whose key is taken (instead of failing the statement
    // and with it the transaction) stores nothing: the same duplicate as elsewhere.
    if (insert->numRowsAffected() == 0)
        return statusOf(kStatusIntegrityViolation,
                        strprintf("The row's key is already stored in table [%s].", tableName(table_)));
    return {};
}

bool rowset::insertGroup(const std::vector<const table_record*>& records, size_t first, int count) {
    for (size_t i = first; i < first + static_cast<size_t>(count); ++i) {
        const table_record& record = *records[i];
        if (record.table() != table_) return false;
        for (int col = 0; col < record.columnCount(); ++col)
            if (!checkValue(record, col).ok()) return false;
    }
    database_impl& dbi = db_.impl();
    QSqlQuery* insert = dbi.preparedGroupInsert(table_, count);
    if (!insert) return false;
    int slot = 0;
    for (size_t i = first; i < first + static_cast<size_t>(count); ++i)
        for (int col = 0; col < records[i]->columnCount(); ++col)
            insert->bindValue(slot++, storeValue(*records[i], col));
    // Within a savepoint: a group with a taken key stores fewer rows, and is taken back whole.
    db_status status = dbi.guarded([&] {
        dbi.releaseStream();
        db_status lost;
        if (dbi.connectionLost(lost)) return lost;
        if (!insert->exec()) return dbi.statusFrom(insert->lastError());
        if (insert->numRowsAffected() != count) return statusOf(kStatusIntegrityViolation, {});
        return db_status{};
    });
    return status.ok();
}

void rowset::insertAll(const std::vector<const table_record*>& records,
                       const std::function<bool(size_t index, const db_status& status)>& refused) {
    database_impl& dbi = db_.impl();
    const int group = dbi.dialect->insertGroupRows(row_->columnCount());
    // Outside a session a group's rows could not be taken back: one by one there.
    const bool grouped = group > 1 && dbi.depth > 0 && dbi.dialect->failureSpoilsTransaction();
    size_t next = 0;
    while (next < records.size()) {
        if (grouped && records.size() - next >= static_cast<size_t>(group) && insertGroup(records, next, group)) {
            next += static_cast<size_t>(group);
            continue;
        }
        // The rows of a group that could not go whole, or the last few.
        const size_t end = grouped ? std::min(records.size(), next + static_cast<size_t>(group)) : records.size();
        for (; next < end; ++next) {
            db_status status = insert(*records[next]);
            if (status.failed() && !refused(next, status)) return;
        }
    }
}

}  // namespace sb
