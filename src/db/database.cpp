#include "db/database.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringList>
#include <QVariant>

#include <array>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include "app/text_format.h"
#include "db/sql_dialect.h"

namespace sb {

namespace {

QString qs(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

// Every database object gets a connection name of its own: Qt keeps connections
// in one process-wide registry, and sharing a name would share the connection.
QString newConnectionName() {
    static std::atomic<unsigned> counter{0};
    return QStringLiteral("soilbench-db-%1").arg(++counter);
}

// A file without any write permission bit is one the user has protected: we do not
// write into it nor replace it, even where the system would let us (as root).
bool isWriteProtected(const std::string& path) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) return false;
    return (st.st_mode & 0222) == 0 || ::access(path.c_str(), W_OK) != 0;
}

db_status statusOf(status_code code, std::string description) {
    db_status status;
    status.code = code;
    if (!description.empty()) status.descriptions.push_back(std::move(description));
    return status;
}

size_t utf8Length(const std::string& text) {
    size_t count = 0;
    for (unsigned char c : text) count += (c & 0xC0) != 0x80;
    return count;
}

}  // namespace

struct database_impl {
    std::string path;
    QString connection = newConnectionName();
    QSqlDatabase db;
    std::unique_ptr<sql_dialect> dialect = sql_dialect::sqlite();
    bool readOnly = false;
    int depth = 0;
    bool doomed = false;  // an inner session gave up: the outermost one rolls back
    std::string lastCommitError;
    // Per table: the prepared insert (reused by every row set of the table) and where
    // each catalogue column stands in "SELECT *" (the file's order may differ).
    std::array<std::unique_ptr<QSqlQuery>, kTableCount> inserts;
    std::array<std::vector<int>, kTableCount> columnMaps;

    ~database_impl() { closeConnection(); }

    db_status statusFrom(const QSqlError& error) const {
        std::string text = error.databaseText().toStdString();
        if (text.empty()) text = error.driverText().toStdString();
        return statusOf(dialect->classifyError(error.nativeErrorCode().toStdString(), text), text);
    }

    bool openConnection(bool readOnlyMode, db_status& status) {
        return openConnection(path, dialect->connectOptions(readOnlyMode), status);
    }

    bool openConnection(const std::string& name, const std::string& options, db_status& status) {
        if (!db.isValid()) db = QSqlDatabase::addDatabase(QString::fromLatin1(dialect->driverName()), connection);
        if (!db.isValid()) {
            status = statusOf(kStatusStoreError,
                              strprintf("The database driver %s is not available.", dialect->driverName()));
            return false;
        }
        db.close();
        db.setDatabaseName(qs(name));
        db.setConnectOptions(qs(options));
        if (db.open()) return true;
        status = statusFrom(db.lastError());
        status.descriptions.push_back(path);
        return false;
    }

    db_status run(const std::string& storeSql) {
        QSqlQuery query(db);
        if (query.exec(qs(storeSql))) return {};
        return statusFrom(query.lastError());
    }

    void forgetPreparedStatements() {
        for (auto& insert : inserts) insert.reset();
        for (auto& map : columnMaps) map.clear();
    }

    void closeConnection() {
        forgetPreparedStatements();
        if (db.isValid()) db.close();
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(connection);
    }

    // Where each column of the table stands in the store's "SELECT *" result;
    // fails with the no-table / no-column status when the file lacks either.
    bool columnMap(table_id table, db_status& status) {
        std::vector<int>& map = columnMaps[static_cast<size_t>(table)];
        if (!map.empty()) return true;
        QSqlQuery probe(db);
        std::string sql = "SELECT * FROM " + dialect->quoteIdentifier(tableName(table)) + " LIMIT 0";
        if (!probe.exec(qs(sql))) {
            status = statusFrom(probe.lastError());
            return false;
        }
        QSqlRecord columns = probe.record();
        const database_maker_table& def = tableDef(table);
        map.assign(def.fields().size(), -1);
        for (size_t i = 0; i < def.fields().size(); ++i) {
            map[i] = columns.indexOf(qs(def.fields()[i].name));
            if (map[i] < 0) {
                status = statusOf(kStatusNoColumn, strprintf("no such column: [%s] in table [%s]",
                                                             def.fields()[i].name.c_str(), tableName(table)));
                map.clear();
                return false;
            }
        }
        return true;
    }

    QSqlQuery* preparedInsert(table_id table, db_status& status) {
        auto& insert = inserts[static_cast<size_t>(table)];
        if (insert) return insert.get();
        std::vector<std::string> names;
        for (const auto& field : tableDef(table).fields()) names.push_back(field.name);
        auto query = std::make_unique<QSqlQuery>(db);
        if (!query->prepare(qs(dialect->insertText(tableName(table), names)))) {
            status = statusFrom(query->lastError());
            return nullptr;
        }
        insert = std::move(query);
        return insert.get();
    }
};

// ---------------------------------------------------------------- database

database::database(std::unique_ptr<database_impl> impl) : impl_(std::move(impl)) {}
database::~database() = default;

const std::string& database::path() const { return impl_->path; }
const sql_dialect& database::dialect() const { return *impl_->dialect; }
bool database::readOnly() const { return impl_->readOnly; }
int database::sessionDepth() const { return impl_->depth; }
const std::string& database::lastCommitError() const { return impl_->lastCommitError; }

namespace {

// Removes an old project file and its journal companions; 0 or the errno of the failure.
int removeOldFile(const std::string& path) {
    if (isWriteProtected(path)) return EACCES;
    if (std::remove(path.c_str()) != 0) return errno;
    // A stale write-ahead log of the old file must not be replayed into the new one.
    for (const char* suffix : {"-wal", "-shm", "-journal"}) std::remove((path + suffix).c_str());
    return 0;
}

void appendRemoveFailure(int error, const std::string& path, std::string& errors) {
    if (error == EACCES || error == EPERM) errors += "ERROR, access error removing database file \"";
    else if (error == ENOENT) errors += "ERROR, not found, removing database file \"";
    else errors += "ERROR, unable to remove database file \"";
    errors += path + "\"\n";
}

}  // namespace

bool database::create(const std::string& path, std::string& errors) {
    bool ok = true;
    std::error_code ec;
    if (std::filesystem::exists(std::filesystem::symlink_status(path, ec))) {
        if (int error = removeOldFile(path)) {
            appendRemoveFailure(error, path, errors);
            ok = false;  // the creation below is still tried
        }
    }
    auto fail = [&](const db_status& status) {
        errors += "ERROR, CreateDataSource failed.\n";
        appendStatusText(status, errors);
        return false;
    };
    if (std::filesystem::exists(std::filesystem::symlink_status(path, ec)))
        return fail(statusOf(kStatusStoreError, "The old file is still there and was not replaced: " + path));

    auto impl = std::make_unique<database_impl>();
    impl->path = path;
    db_status status;
    if (!impl->openConnection(false, status)) return fail(status);
    std::vector<std::string> statements = impl->dialect->connectionSetup();
    statements.insert(statements.begin(), impl->dialect->markProjectText());
    for (const std::string& sql : statements) {
        status = impl->run(sql);
        if (!status.ok()) return fail(status);
    }
    return ok;
}

namespace {
// The first read of the file: a file that is no database fails here.
db_status readMark(database_impl& impl, long long& mark) {
    QSqlQuery query(impl.db);
    if (!query.exec(qs(impl.dialect->readMarkText())) || !query.next()) return impl.statusFrom(query.lastError());
    mark = query.value(0).toLongLong();
    return {};
}
}  // namespace

std::unique_ptr<database> database::open(const std::string& path, std::string& errors) {
    auto fail = [&](const db_status& status) -> std::unique_ptr<database> {
        errors += "ERROR, unable to open database: " + path + "\n";
        appendStatusText(status, errors);
        return nullptr;
    };
    std::error_code ec;
    // The store would quietly make a new empty file for a wrong path; refuse instead.
    if (!std::filesystem::is_regular_file(path, ec))
        return fail(statusOf(kStatusStoreError, std::filesystem::exists(path, ec) ? "The path is not a file."
                                                                                  : "The file does not exist."));
    auto impl = std::make_unique<database_impl>();
    impl->path = path;
    impl->readOnly = isWriteProtected(path);
    db_status status;
    if (!impl->openConnection(impl->readOnly, status)) return fail(status);

    long long mark = 0;
    status = readMark(*impl, mark);
    std::string fallbackName, fallbackOptions;
    if (!status.ok() && impl->readOnly && impl->dialect->readOnlyFallback(path, fallbackName, fallbackOptions)) {
        db_status again;
        if (impl->openConnection(fallbackName, fallbackOptions, again)) status = readMark(*impl, mark);
    }
    if (!status.ok()) return fail(status);
    bool ours = mark == impl->dialect->projectMark();
    if (!ours) {
        // A project made elsewhere (no mark) is still ours when it holds our tables.
        const QStringList tables = impl->db.tables();
        for (int i = 0; i < kTableCount && !ours; ++i)
            ours = tables.contains(QString::fromUtf8(tableName(static_cast<table_id>(i))), Qt::CaseInsensitive);
    }
    if (!ours)
        return fail(statusOf(kStatusNotADatabase,
                             "The file is not a Soilbench project: it holds none of the project's tables."));
    if (!impl->readOnly)
        for (const std::string& sql : impl->dialect->connectionSetup()) {
            status = impl->run(sql);
            if (!status.ok()) return fail(status);
        }
    return std::unique_ptr<database>(new database(std::move(impl)));
}

db_status database::execute(std::string_view sql) {
    db_status status = impl_->run(impl_->dialect->translate(sql));
    // New or changed tables: prepared inserts and column positions are made afresh.
    if (status.ok() && !istartsWith(trim(sql), "delete")) impl_->forgetPreparedStatements();
    return status;
}

std::string database::selectText(std::string_view table, std::string_view filter, std::string_view order) {
    std::string sql = "SELECT * FROM `" + std::string(table) + "`";
    if (!filter.empty()) sql += " WHERE " + std::string(filter);
    if (!order.empty()) sql += " ORDER BY " + std::string(order);
    return sql;
}

std::unique_ptr<rowset> database::openTable(table_id table, std::string_view filter, std::string_view order,
                                            db_status& status) {
    auto rs = std::make_unique<rowset>(*this, table, selectText(tableName(table), filter, order));
    status = rs->prepare();
    if (!status.ok()) return nullptr;
    return rs;
}

// ---------------------------------------------------------------- sessions

bool database::beginSession(std::string& storeError) {
    if (impl_->depth == 0) {
        if (impl_->readOnly) {
            storeError = "The project file is read-only, nothing can be saved in it: " + impl_->path;
            return false;
        }
        db_status status = impl_->run(impl_->dialect->beginText());
        if (!status.ok()) {
            storeError.clear();
            for (const auto& text : status.descriptions) storeError += text;
            return false;
        }
        impl_->doomed = false;
    }
    ++impl_->depth;
    return true;
}

void database::endSession() {
    if (impl_->depth == 0 || --impl_->depth > 0) return;
    impl_->lastCommitError.clear();
    if (impl_->doomed) {
        impl_->run("ROLLBACK");
        return;
    }
    db_status status = impl_->run("COMMIT");
    if (status.ok()) return;
    for (const auto& text : status.descriptions) impl_->lastCommitError += text;
    impl_->run("ROLLBACK");
}

void database::abandonSession() {
    if (impl_->depth == 0) return;
    impl_->doomed = true;
    endSession();
}

session::session(database& db) : db_(db) { ok_ = open_ = db_.beginSession(storeError_); }

session::~session() { close(); }

void session::close() {
    if (!open_) return;
    open_ = false;
    db_.endSession();
}

void session::abandon() {
    if (!open_) return;
    open_ = false;
    db_.abandonSession();
}

// ---------------------------------------------------------------- row sets

// The store's cursor only runs forward and is never read ahead, so opening a big
// table and taking its first row costs one row. Moving back is served from the
// last rows seen; further back, the query runs again up to the wanted row.
struct rowset_impl {
    static constexpr size_t kWindow = 256;

    std::unique_ptr<QSqlQuery> query;
    std::vector<int> columns;  // catalogue column -> result column (a copy: DDL may drop the cache)
    bool executed = false;
    bool exhausted = false;
    long fetched = 0;                 // rows taken from the cursor so far
    long position = -1;               // -1 before the first row; == count after the last
    std::deque<table_record> window;  // the rows fetched last, ending at fetched - 1
    long windowStart = 0;
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

void rowset::close() {
    if (impl_->query) impl_->query->finish();
    impl_->query.reset();
    impl_->executed = impl_->exhausted = false;
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
    if (!query->prepare(qs(dbi.dialect->translate(select_)))) return dbi.statusFrom(query->lastError());
    impl_->query = std::move(query);
    return {};
}

db_status rowset::restart() {
    db_status status = prepare();
    if (!status.ok()) return status;
    impl_->window.clear();
    impl_->windowStart = impl_->fetched = 0;
    impl_->exhausted = false;
    if (impl_->executed) impl_->query->finish();
    impl_->executed = true;
    if (!impl_->query->exec()) return db_.impl().statusFrom(impl_->query->lastError());
    return {};
}

// Takes the cursor's next row into the window; false at the end of the result.
bool rowset::fetchOne(db_status& status) {
    QSqlQuery& query = *impl_->query;
    if (impl_->exhausted || !query.next()) {
        if (query.lastError().isValid()) status = db_.impl().statusFrom(query.lastError());
        impl_->exhausted = true;
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
    table_record& record = window.back();
    const auto& def = record.def();
    const std::vector<int>& columns = impl_->columns;
    for (int col = 0; col < record.columnCount(); ++col) {
        QVariant value = query.value(columns[static_cast<size_t>(col)]);
        if (def.isText(col)) record.setText(col, value.toString().toStdString());
        else record.setNumber(col, value.isNull() ? 0.0 : value.toDouble());
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
    if (impl_->executed && impl_->exhausted && impl_->position >= impl_->fetched)
        return statusOf(kStatusEndOfRowset, {});
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
    for (int col = 0; col < record.columnCount(); ++col) insert->bindValue(col, storeValue(record, col));
    if (!insert->exec()) return dbi.statusFrom(insert->lastError());
    return {};
}

}  // namespace sb
