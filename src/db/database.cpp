#include "db/database.h"

#include <QSqlRecord>
#include <QStringList>
#include <QVariant>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include "app/text_format.h"
#include "db/database_impl.h"
#include "db/database_maker.h"

namespace sb {

QString qs(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

db_status statusOf(status_code code, std::string description) {
    db_status status;
    status.code = code;
    if (!description.empty()) status.descriptions.push_back(std::move(description));
    return status;
}

namespace {

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

// The key a save's lock is known by: the same text gives the same key in every program.
uint64_t lockKey(std::string_view text) {
    uint64_t hash = 1469598103934665603ull;  // FNV-1a
    for (unsigned char c : text) {
        hash ^= c;
        hash *= 1099511628211ull;
    }
    return hash;
}

// A project in a folder we may not write to cannot keep its journal beside it:
// it is opened for reading, as a write-protected file is.
bool folderWriteProtected(const std::string& path) {
    std::string folder = std::filesystem::path(path).parent_path().string();
    return isWriteProtected(folder.empty() ? "." : folder);
}

}  // namespace

// ---------------------------------------------------------------- connection

database_impl::database_impl(project_location where)
    : location(std::move(where)),
      shown(location.shown()),
      connection(newConnectionName()),
      dialect(location.onServer() ? sql_dialect::postgresql() : sql_dialect::sqlite()) {}

db_status database_impl::statusFrom(const QSqlError& error) const {
    std::string text = error.databaseText().toStdString();
    if (text.empty()) text = error.driverText().toStdString();
    return statusOf(dialect->classifyError(error.nativeErrorCode().toStdString(), text),
                    dialect->errorDescription(text));
}

bool database_impl::openConnection(bool readOnlyMode, db_status& status) {
    if (!location.onServer()) return openConnection(location.path(), dialect->connectOptions(readOnlyMode), status);
    std::string options = dialect->connectOptions(readOnlyMode);
    for (const auto& [key, value] : location.options()) options += ";" + key + "=" + value;
    if (!db.isValid()) db = QSqlDatabase::addDatabase(QString::fromLatin1(dialect->driverName()), connection);
    db.setHostName(qs(location.host()));
    db.setPort(location.port() > 0 ? location.port() : -1);
    db.setUserName(qs(location.user()));
    // Without a password in the URL the client library looks in PGPASSWORD and ~/.pgpass.
    db.setPassword(qs(location.password()));
    return openConnection(location.databaseName(), options, status);
}

bool database_impl::openConnection(const std::string& name, const std::string& options, db_status& status) {
    if (!db.isValid()) db = QSqlDatabase::addDatabase(QString::fromLatin1(dialect->driverName()), connection);
    if (!db.isValid()) {
        status =
            statusOf(kStatusStoreError, strprintf("The database driver %s is not available.", dialect->driverName()));
        return false;
    }
    db.close();
    db.setDatabaseName(qs(name));
    db.setConnectOptions(qs(options));
    if (db.open()) return true;
    status = statusFrom(db.lastError());
    if (!location.onServer()) status.descriptions.push_back(shown);  // a server's text names it already
    return false;
}

void database_impl::closeConnection() {
    if (streaming) streaming->close();
    forgetPreparedStatements();
    if (db.isValid()) db.close();
    db = QSqlDatabase();
    QSqlDatabase::removeDatabase(connection);
}

void database_impl::releaseStream() {
    if (rowset* open = streaming) {
        streaming = nullptr;
        open->takeRest();
    }
}

bool database_impl::connectionLost(db_status& status) {
    if (db.isOpen()) return false;
    status = statusOf(kStatusServerUnreachable, "The connection to the project was lost: " + shown);
    noteFailure(status);
    return true;
}

void database_impl::noteFailure(const db_status& status) {
    if (depth == 0 || guarding || !dialect->failureSpoilsTransaction() || spoiled) return;
    spoiled = true;
    spoiledBy = status.descriptions.empty() ? std::string() : status.descriptions.front();
}

db_status database_impl::rawRun(const std::string& storeSql) {
    releaseStream();
    db_status lost;
    if (connectionLost(lost)) return lost;
    QSqlQuery query(db);
    if (query.exec(qs(storeSql))) return {};
    db_status status = statusFrom(query.lastError());
    noteFailure(status);
    return status;
}

void database_impl::forgetPreparedStatements() {
    for (auto& insert : nativeInserts) insert.reset();
    for (auto& insert : groupInserts) insert.reset();
    for (auto& insert : inserts) insert.reset();
    for (auto& map : columnMaps) map.clear();
}

db_status database_impl::storeColumns(table_id table, QSqlRecord& columns) {
    return guarded([&] {
        releaseStream();
        db_status lost;
        if (connectionLost(lost)) return lost;
        QSqlQuery probe(db);
        std::string sql = "SELECT * FROM " + dialect->quoteIdentifier(tableName(table)) + " LIMIT 0";
        if (probe.exec(qs(sql))) {
            columns = probe.record();
            return db_status{};
        }
        db_status failed = statusFrom(probe.lastError());
        noteFailure(failed);
        return failed;
    });
}

// Where each column of the table stands in the store's "SELECT *" result;
// -1 for a column it lacks; fails with the no-table / no-column status when
// the project lacks either where it cannot.
bool database_impl::columnMap(table_id table, db_status& status) {
    std::vector<int>& map = columnMaps[static_cast<size_t>(table)];
    if (!map.empty()) return true;
    QSqlRecord columns;
    status = storeColumns(table, columns);
    if (!status.ok()) return false;
    const database_maker_table& def = tableDef(table);
    map.assign(def.fields().size(), -1);
    for (size_t i = 0; i < def.fields().size(); ++i) {
        map[i] = columns.indexOf(qs(def.fields()[i].name));
        // A read-only project made before a table of ours gained a column
        // cannot be given it: the column reads as empty there.
        if (map[i] < 0 && readOnly && table > table_id::record_changes) continue;
        if (map[i] < 0) {
            status = statusOf(kStatusNoColumn, strprintf("no such column: [%s] in table [%s]",
                                                         def.fields()[i].name.c_str(), tableName(table)));
            map.clear();
            return false;
        }
    }
    return true;
}

QSqlQuery* database_impl::preparedInsert(table_id table, db_status& status) {
    auto& insert = inserts[static_cast<size_t>(table)];
    if (insert) return insert.get();
    std::vector<std::string> names;
    for (const auto& field : tableDef(table).fields()) names.push_back(field.name);
    auto query = std::make_unique<QSqlQuery>(db);
    status = guarded([&] {
        releaseStream();
        db_status lost;
        if (connectionLost(lost)) return lost;
        const std::string text = dialect->insertText(tableName(table), names);
        if (query->prepare(qs(text))) {
            nativeInserts[static_cast<size_t>(table)] = dialect->nativeInsert(db, text);
            return db_status{};
        }
        db_status failed = statusFrom(query->lastError());
        noteFailure(failed);
        return failed;
    });
    if (!status.ok()) return nullptr;
    insert = std::move(query);
    return insert.get();
}

QSqlQuery* database_impl::preparedGroupInsert(table_id table, int rows) {
    auto& insert = groupInserts[static_cast<size_t>(table)];
    if (insert) return insert.get();
    std::vector<std::string> names;
    for (const auto& field : tableDef(table).fields()) names.push_back(field.name);
    auto query = std::make_unique<QSqlQuery>(db);
    db_status status = guarded([&] {
        releaseStream();
        db_status lost;
        if (connectionLost(lost)) return lost;
        if (query->prepare(qs(dialect->insertText(tableName(table), names, rows)))) return db_status{};
        return statusFrom(query->lastError());
    });
    if (!status.ok()) return nullptr;
    insert = std::move(query);
    return insert.get();
}

// ---------------------------------------------------------------- database

database::database(std::unique_ptr<database_impl> impl) : impl_(std::move(impl)) {}
database::~database() = default;

const std::string& database::path() const { return impl_->shown; }
const project_location& database::location() const { return impl_->location; }
const sql_dialect& database::dialect() const { return *impl_->dialect; }
bool database::readOnly() const { return impl_->readOnly; }
int database::sessionDepth() const { return impl_->depth; }

namespace {

// Removes an old project file and its journal companions; 0 or the errno of the failure.
int removeOldFile(const std::string& path) {
    if (isWriteProtected(path)) return EACCES;
    if (std::remove(path.c_str()) != 0) return errno;
    // A stale write-ahead log of the old file must not be replayed into the new one.
    for (const char* suffix : {"-wal", "-shm", "-journal"}) std::remove((path + suffix).c_str());
    return 0;
}

void appendRemoveFailure(int error, const std::string& path, message_sink& errors) {
    const char* why = error == EACCES || error == EPERM ? "ERROR, access error removing database file \""
                      : error == ENOENT                 ? "ERROR, not found, removing database file \""
                                                        : "ERROR, unable to remove database file \"";
    errors.error(why + path + "\"\n");
}

// A location that cannot be used: its text (password masked) and what is wrong with it.
bool parseLocation(const std::string& where, project_location& location, const char* failure, message_sink& errors) {
    std::string problem;
    if (project_location::parse(where, location, problem)) return true;
    errors.error(failure + project_location::shown(where) + "\n" + problem + "\n");
    return false;
}

bool holdsProjectTable(const QStringList& tables) {
    for (int i = 0; i < kTableCount; ++i)
        if (tables.contains(QString::fromUtf8(tableName(static_cast<table_id>(i))), Qt::CaseInsensitive)) return true;
    return false;
}

// Makes the location's database on its server, through the server's maintenance
// database (the one every server has, or the template it is made from).
db_status makeServerDatabase(const project_location& location) {
    db_status status;
    for (const char* maintenance : {"postgres", "template1"}) {
        database_impl server(location.onDatabase(maintenance));
        if (!server.openConnection(false, status)) {
            if (status.code == kStatusNotADatabase) continue;
            return status;
        }
        status = server.rawRun(server.dialect->createDatabaseText(location.databaseName()));
        if (!status.ok()) status.descriptions.push_back(location.shown());
        return status;
    }
    return status;
}

// A database on a server is made when it does not exist; an existing one is used
// only when it holds no tables at all. A project on a server is shared: it is never
// replaced by a new one the way a file is.
bool createOnServer(database_impl& impl, db_status& status) {
    if (impl.openConnection(false, status)) {
        if (impl.db.tables().isEmpty()) return true;
        status = statusOf(kStatusStoreError,
                          strprintf("The database \"%s\" already holds tables; a new project is made only in a new "
                                    "or empty database, and a shared project is never replaced.",
                                    impl.location.databaseName().c_str()));
        return false;
    }
    if (status.code != kStatusNotADatabase) return false;
    status = makeServerDatabase(impl.location);
    return status.ok() && impl.openConnection(false, status);
}

}  // namespace

database::presence database::probe(const std::string& where, message_sink& errors) {
    project_location location;
    if (!parseLocation(where, location, "ERROR, unable to open database: ", errors)) return presence::failed;
    std::error_code ec;
    if (!location.onServer())
        return std::filesystem::exists(std::filesystem::symlink_status(location.path(), ec)) ? presence::present
                                                                                             : presence::absent;
    database_impl impl(location);
    db_status status;
    if (impl.openConnection(false, status)) return presence::present;
    if (status.code == kStatusNotADatabase) return presence::absent;
    errors.error("ERROR, unable to open database: " + location.shown() + "\n");
    appendStatusText(status, errors);
    return presence::failed;
}

bool database::remove(const std::string& where, message_sink& errors) {
    project_location location;
    if (!parseLocation(where, location, "ERROR, unable to remove database: ", errors)) return false;
    if (!location.onServer()) {
        int error = removeOldFile(location.path());
        if (error) appendRemoveFailure(error, location.path(), errors);
        return error == 0;
    }
    database_impl server(location.onDatabase("postgres"));
    db_status status;
    if (server.openConnection(false, status))
        status = server.rawRun(server.dialect->dropDatabaseText(location.databaseName()));
    if (status.ok()) return true;
    errors.error("ERROR, unable to remove database: " + location.shown() + "\n");
    appendStatusText(status, errors);
    return false;
}

bool database::create(const std::string& where, message_sink& errors) {
    project_location location;
    if (!parseLocation(where, location, "ERROR, CreateDataSource failed.\n", errors)) return false;
    auto fail = [&](const db_status& status) {
        errors.error("ERROR, CreateDataSource failed.\n");
        appendStatusText(status, errors);
        return false;
    };
    auto impl = std::make_unique<database_impl>(location);
    db_status status;
    bool ok = true;
    if (location.onServer()) {
        if (!createOnServer(*impl, status)) return fail(status);
    } else {
        const std::string& path = location.path();
        std::error_code ec;
        if (std::filesystem::exists(std::filesystem::symlink_status(path, ec))) {
            if (int error = removeOldFile(path)) {
                appendRemoveFailure(error, path, errors);
                ok = false;  // the creation below is still tried
            }
        }
        if (std::filesystem::exists(std::filesystem::symlink_status(path, ec)))
            return fail(statusOf(kStatusStoreError, "The old file is still there and was not replaced: " + path));
        if (!impl->openConnection(false, status)) return fail(status);
    }
    std::vector<std::string> statements = impl->dialect->connectionSetup();
    statements.push_back(impl->dialect->markProjectText());
    for (const std::string& sql : statements) {
        status = impl->rawRun(sql);
        if (!status.ok()) return fail(status);
    }
    return ok;
}

namespace {
// The first read of the project: a file that is no database fails here.
db_status readMark(database_impl& impl, long long& mark) {
    QSqlQuery query(impl.db);
    if (!query.exec(qs(impl.dialect->readMarkText())) || !query.next()) return impl.statusFrom(query.lastError());
    mark = query.value(0).toLongLong();
    return {};
}
}  // namespace

std::unique_ptr<database> database::open(const std::string& where, message_sink& errors) {
    project_location location;
    if (!parseLocation(where, location, "ERROR, unable to open database: ", errors)) return nullptr;
    auto fail = [&](const db_status& status) -> std::unique_ptr<database> {
        errors.error("ERROR, unable to open database: " + location.shown() + "\n");
        appendStatusText(status, errors);
        return nullptr;
    };
    std::error_code ec;
    const std::string& path = location.path();
    // The store would quietly make a new empty file for a wrong path; refuse instead.
    if (!location.onServer() && !std::filesystem::is_regular_file(path, ec))
        return fail(statusOf(kStatusStoreError, std::filesystem::exists(path, ec) ? "The path is not a file."
                                                                                  : "The file does not exist."));
    auto impl = std::make_unique<database_impl>(location);
    impl->readOnly = !location.onServer() && (isWriteProtected(path) || folderWriteProtected(path));
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
    // A project made elsewhere (no mark) is still ours when it holds our tables.
    if (mark != impl->dialect->projectMark() && !holdsProjectTable(impl->db.tables()))
        return fail(statusOf(kStatusNotADatabase,
                             location.onServer()
                                 ? "The database is not a Soilbench project: it holds none of the project's tables."
                                 : "The file is not a Soilbench project: it holds none of the project's tables."));
    if (!impl->readOnly)
        for (const std::string& sql : impl->dialect->connectionSetup()) {
            status = impl->rawRun(sql);
            if (!status.ok()) return fail(status);
        }
    const QStringList tables = impl->db.tables();
    const bool holdsTables = holdsProjectTable(tables);
    std::vector<std::string> existing;
    for (const QString& table : tables) existing.push_back(table.toStdString());
    std::unique_ptr<database> db(new database(std::move(impl)));
    // A project made before the catalogue gained a table or column gets it now (a new,
    // still empty project gets all of them from its maker); a read-only
    // project does without.
    if (holdsTables && !db->readOnly() && !database_maker(*db).addMissingTablesAndColumns(existing, errors))
        return nullptr;
    return db;
}

db_status database::execute(std::string_view sql) {
    const std::string storeSql = impl_->dialect->translate(sql);
    const bool isDelete = istartsWith(trim(sql), "delete");
    // Two saves replacing the same rows take turns: the second one's delete then
    // sees the first one's rows, and its inserts replace them whole.
    if (isDelete && impl_->depth > 0) {
        db_status locked = holdSaveLock(storeSql);
        if (!locked.ok()) return locked;
    }
    db_status status = impl_->run(storeSql);
    // New or changed tables: prepared inserts and column positions are made afresh.
    if (status.ok() && !isDelete) impl_->forgetPreparedStatements();
    return status;
}

// Every save holds the whole-project key shared beside the keys of what it
// replaces; a save that has taken this many keys takes the project whole instead,
// when no other save is under way, and needs no more. A server keeps room for
// only so many locks (a few thousand for all its connections), and a save of
// thousands of records would otherwise run out of it half-way.
constexpr size_t kSaveLocksBeforeWhole = 64;

db_status database::holdSaveLock(std::string_view name) {
    database_impl& d = *impl_;
    const uint64_t key = lockKey(name);
    const std::string text = d.dialect->saveLockText(key);
    if (text.empty() || d.depth == 0 || d.wholeProjectLocked || d.saveLocks.count(key)) return {};
    static const uint64_t kWholeProject = lockKey("the whole project");
    if (d.saveLocks.empty()) {
        db_status shared = d.run(d.dialect->sharedSaveLockText(kWholeProject));
        if (!shared.ok()) return shared;
    } else if (d.saveLocks.size() >= kSaveLocksBeforeWhole) {
        bool taken = false;
        db_status tried = d.guarded([&] {
            d.releaseStream();
            QSqlQuery query(d.db);
            if (!query.exec(qs(d.dialect->trySaveLockText(kWholeProject)))) {
                db_status failed = d.statusFrom(query.lastError());
                d.noteFailure(failed);
                return failed;
            }
            taken = query.next() && query.value(0).toBool();
            return db_status{};
        });
        if (!tried.ok()) return tried;
        if (taken) {
            d.wholeProjectLocked = true;
            return {};
        }
    }
    db_status status = d.run(text);
    if (status.ok()) d.saveLocks.insert(key);
    return status;
}

db_status database::countRows(table_id table, long long& count) {
    count = 0;
    return impl_->guarded([&] {
        impl_->releaseStream();
        db_status lost;
        if (impl_->connectionLost(lost)) return lost;
        QSqlQuery query(impl_->db);
        if (query.exec(qs("SELECT COUNT(*) FROM " + impl_->dialect->quoteIdentifier(tableName(table)))) &&
            query.next()) {
            count = query.value(0).toLongLong();
            return db_status{};
        }
        db_status failed = impl_->statusFrom(query.lastError());
        impl_->noteFailure(failed);
        return failed;
    });
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
            storeError = "The project file is read-only, nothing can be saved in it: " + impl_->shown;
            if (!isWriteProtected(impl_->location.path())) storeError += " (its folder is write-protected)";
            return false;
        }
        db_status status = impl_->rawRun(impl_->dialect->beginText());
        if (!status.ok()) {
            storeError.clear();
            for (const auto& text : status.descriptions) storeError += text;
            return false;
        }
        impl_->doomed = impl_->spoiled = false;
        impl_->spoiledBy.clear();
        impl_->saveLocks.clear();  // the last transaction's ended with it
        impl_->wholeProjectLocked = false;
    }
    ++impl_->depth;
    return true;
}

bool database::beginSnapshot(std::string& storeError) {
    if (impl_->depth > 0) {
        storeError = "A reading transaction cannot start inside another transaction.";
        return false;
    }
    db_status status = impl_->rawRun(impl_->dialect->snapshotText());
    if (!status.ok()) {
        storeError = status.descriptions.empty() ? std::string() : status.descriptions.front();
        return false;
    }
    impl_->doomed = impl_->spoiled = false;
    impl_->depth = 1;
    return true;
}

void database::endSnapshot() {
    if (impl_->depth != 1) return;
    impl_->depth = 0;
    impl_->rawRun("ROLLBACK");  // nothing was written in it
}

bool database::commitSession(std::string& storeError) {
    static const char* const kEarlierFailure = "An earlier part of this save failed, so none of it is kept.";
    if (impl_->depth == 0) {
        storeError = "No transaction is open to commit.";
        return false;
    }
    if (--impl_->depth > 0) {
        if (!impl_->doomed) return true;
        storeError = kEarlierFailure;
        return false;
    }
    if (impl_->doomed || impl_->spoiled) {
        impl_->rawRun("ROLLBACK");
        // After a refused statement the store keeps refusing; its commit would roll back quietly.
        storeError = impl_->doomed ? kEarlierFailure
                                   : "the store refused a statement of this save (" + impl_->spoiledBy +
                                         "), so none of the save was kept";
        return false;
    }
    db_status status = impl_->rawRun("COMMIT");
    if (status.ok()) return true;
    storeError.clear();
    for (const auto& text : status.descriptions) storeError += text;
    if (storeError.empty()) storeError = "The store refused the commit.";
    impl_->rawRun("ROLLBACK");
    return false;
}

void database::rollbackSession() {
    if (impl_->depth == 0) return;
    impl_->doomed = true;
    if (--impl_->depth == 0) impl_->rawRun("ROLLBACK");
}

session::session(database& db) : db_(db) { ok_ = open_ = db_.beginSession(storeError_); }

session::~session() { rollback(); }

bool session::commit() {
    if (!open_) {
        if (storeError_.empty()) storeError_ = "The session is not open.";
        return false;
    }
    open_ = false;
    return db_.commitSession(storeError_);
}

void session::rollback() {
    if (!open_) return;
    open_ = false;
    db_.rollbackSession();
}

}  // namespace sb
