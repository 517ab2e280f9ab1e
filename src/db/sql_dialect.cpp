#include "db/sql_dialect.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

#include "app/text_format.h"
#include "db/native_insert.h"
#include "db/project_sql_dialect.h"
#include "db/table_catalogue.h"

namespace sb {

namespace {

bool isSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
bool isWordStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) || c == '_'; }
bool isWordChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

bool startsWithWords(std::string_view text, std::initializer_list<std::string_view> words, size_t& end) {
    size_t at = 0;
    for (std::string_view word : words) {
        while (at < text.size() && isSpace(text[at])) ++at;
        if (!istartsWith(text.substr(at), word)) return false;
        at += word.size();
        if (at < text.size() && !isSpace(text[at]) && text[at] != '*' && text[at] != '[' && text[at] != '`' &&
            text[at] != '(')
            return false;
    }
    end = at;
    return true;
}

// Reads "[name]" (or "`name`") at `at`, leaving `at` after the closing mark.
bool readBracketed(std::string_view text, size_t& at, std::string& name) {
    while (at < text.size() && isSpace(text[at])) ++at;
    if (at >= text.size() || (text[at] != '[' && text[at] != '`')) return false;
    char close = text[at] == '[' ? ']' : '`';
    size_t end = text.find(close, at + 1);
    if (end == std::string_view::npos) return false;
    name = std::string(text.substr(at + 1, end - at - 1));
    at = end + 1;
    return true;
}

// Splits a column or key list at commas that stand outside brackets and parentheses.
std::vector<std::string_view> splitList(std::string_view body) {
    std::vector<std::string_view> parts;
    int depth = 0;
    bool inBracket = false;
    size_t start = 0;
    for (size_t i = 0; i < body.size(); ++i) {
        char c = body[i];
        if (inBracket) inBracket = c != ']';
        else if (c == '[') inBracket = true;
        else if (c == '(') ++depth;
        else if (c == ')') --depth;
        else if (c == ',' && depth == 0) {
            parts.push_back(body.substr(start, i - start));
            start = i + 1;
        }
    }
    parts.push_back(body.substr(start));
    return parts;
}

// The first bracketed or back-quoted name of the statement that names a catalogue table.
const database_maker_table* statementTable(std::string_view sql) {
    for (size_t at = 0; at < sql.size(); ++at) {
        if (sql[at] == '\'' || sql[at] == '"') {
            size_t end = sql.find(sql[at], at + 1);
            if (end == std::string_view::npos) return nullptr;
            at = end;
            continue;
        }
        std::string name;
        size_t from = at;
        if ((sql[at] == '[' || sql[at] == '`') && readBracketed(sql, from, name)) {
            if (const database_maker_table* table = catalogueTable(name)) return table;
            at = from - 1;
        }
    }
    return nullptr;
}

// Copies a quoted literal starting at `at` ('...' or the project's "..."), as a
// single-quoted store literal; returns the position of its closing quote.
size_t copyLiteral(std::string_view sql, size_t at, std::string& out) {
    const char quote = sql[at];
    out += '\'';
    size_t j = at + 1;
    for (; j < sql.size(); ++j) {
        if (sql[j] == quote) {
            if (j + 1 < sql.size() && sql[j + 1] == quote) {  // doubled: an escaped quote
                out += quote == '\'' ? "''" : "\"";
                ++j;
                continue;
            }
            break;
        }
        out += sql[j] == '\'' ? std::string("''") : std::string(1, sql[j]);
    }
    out += '\'';
    return j;
}

size_t skipSpaces(std::string_view sql, size_t at) {
    while (at < sql.size() && isSpace(sql[at])) ++at;
    return at;
}

}  // namespace

const database_maker_table* catalogueTable(std::string_view name) {
    for (int i = 0; i < kTableCount; ++i)
        if (iequals(name, tableName(static_cast<table_id>(i)))) return &tableDef(static_cast<table_id>(i));
    return nullptr;
}

std::string sql_dialect::errorDescription(std::string_view storeText) const { return std::string(trim(storeText)); }
std::string sql_dialect::saveLockText(uint64_t) const { return {}; }
std::string sql_dialect::sharedSaveLockText(uint64_t) const { return {}; }
std::string sql_dialect::trySaveLockText(uint64_t) const { return {}; }
std::string sql_dialect::createDatabaseText(std::string_view) const { return {}; }
std::string sql_dialect::dropDatabaseText(std::string_view) const { return {}; }
std::unique_ptr<native_insert> sql_dialect::nativeInsert(QSqlDatabase&, const std::string&) const { return nullptr; }

// ---------------------------------------------------------------- shared reading of project SQL

std::string project_sql_dialect::translate(std::string_view sql) const {
    size_t end = 0;
    if (startsWithWords(sql, {"create", "table"}, end)) return createTable(sql, end);
    if (startsWithWords(sql, {"create", "index"}, end)) return createIndex(sql, end, false);
    if (startsWithWords(sql, {"create", "unique", "index"}, end)) return createIndex(sql, end, true);
    if (startsWithWords(sql, {"alter", "table"}, end)) return addColumn(sql, end);
    const database_maker_table* context = statementTable(sql);
    // The project's "DELETE * FROM" names no columns; the store wants "DELETE FROM".
    if (startsWithWords(sql, {"delete", "*", "from"}, end))
        return "DELETE FROM" + expression(sql.substr(end), context, false);
    return expression(sql, context, startsWithWords(sql, {"select"}, end));
}

std::string project_sql_dialect::insertText(std::string_view table, const std::vector<std::string>& columns,
                                            int rows) const {
    std::string sql = "INSERT INTO " + quoteIdentifier(table) + " (";
    std::string row = "(";
    for (size_t i = 0; i < columns.size(); ++i) {
        sql += (i ? ", " : "") + quoteIdentifier(columns[i]);
        row += i ? ", ?" : "?";
    }
    sql += ") VALUES " + row + ")";
    for (int r = 1; r < rows; ++r) sql += ", " + row + ")";
    return sql + insertOptions();
}

// Bracketed and back-quoted names become the store's names; the project's
// double-quoted strings become single-quoted literals; single-quoted literals and
// numbers pass untouched. For a SELECT the store's last sort key is added to its
// top-level ORDER BY (or makes one), before any LIMIT.
std::string project_sql_dialect::expression(std::string_view sql, const database_maker_table* context,
                                            bool isSelect) const {
    std::string out;
    out.reserve(sql.size() + 16);
    int depth = 0;
    bool ordered = false;
    size_t limitAt = std::string::npos;  // in `out`
    for (size_t i = 0; i < sql.size(); ++i) {
        const char c = sql[i];
        if (c == '[' || c == '`') {
            const char close = c == '[' ? ']' : '`';
            size_t end = sql.find(close, i + 1);
            if (end == std::string_view::npos) end = sql.size();
            out += storeName(sql.substr(i + 1, end - i - 1), context);
            i = end;
        } else if (c == '\'' || c == '"') {
            i = copyLiteral(sql, i, out);
        } else if (isWordStart(c)) {
            size_t end = i;
            while (end < sql.size() && isWordChar(sql[end])) ++end;
            std::string_view word = sql.substr(i, end - i);
            size_t next = skipSpaces(sql, end);
            if (depth == 0 && isSelect) {
                if (iequals(word, "order")) {
                    size_t by = next;
                    while (by < sql.size() && isWordChar(sql[by])) ++by;
                    ordered = ordered || iequals(sql.substr(next, by - next), "by");
                }
                if ((iequals(word, "limit") || iequals(word, "offset")) && limitAt == std::string::npos)
                    limitAt = out.size();
            }
            out += bareWord(word, next < sql.size() && sql[next] == '(', context);
            i = end - 1;
        } else if (std::isdigit(static_cast<unsigned char>(c))) {
            size_t end = i;  // a number with its exponent or hex digits
            while (end < sql.size() && (isWordChar(sql[end]) || sql[end] == '.')) ++end;
            out.append(sql.substr(i, end - i));
            i = end - 1;
        } else {
            if (c == '(') ++depth;
            else if (c == ')') --depth;
            out += c;
        }
    }
    const std::string key = lastSortKey();
    if (!isSelect || key.empty()) return out;
    std::string head = limitAt == std::string::npos ? out : out.substr(0, limitAt);
    std::string tail = limitAt == std::string::npos ? std::string() : " " + out.substr(limitAt);
    while (!head.empty() && (isSpace(head.back()) || head.back() == ';')) head.pop_back();
    return head + (ordered ? ", " : " ORDER BY ") + key + tail;
}

std::string project_sql_dialect::createTable(std::string_view sql, size_t at) const {
    std::string table;
    size_t open = 0, close = sql.rfind(')');
    if (!readBracketed(sql, at, table) || (open = sql.find('(', at)) == std::string_view::npos ||
        close == std::string_view::npos || close < open)
        return expression(sql, nullptr, false);
    std::string out = "CREATE TABLE " + quoteIdentifier(table) + "(" + leadingColumns();
    std::vector<std::string_view> columns = splitList(sql.substr(open + 1, close - open - 1));
    for (size_t i = 0; i < columns.size(); ++i) {
        std::string_view column = trim(columns[i]);
        std::string name;
        size_t pos = 0;
        out += i ? ", " : "";
        if (readBracketed(column, pos, name)) {
            // Names are made exactly as the project spells them.
            const std::string quoted = quoteIdentifier(name);
            out += quoted + " " + columnType(trim(column.substr(pos)), quoted);
        } else {
            out += column;  // not a column definition of ours: the store judges it as written
        }
    }
    return out + ")" + tableOptions();
}

// "Alter Table [T] Add Column [c] TYPE", the one change the project makes to a table.
std::string project_sql_dialect::addColumn(std::string_view sql, size_t at) const {
    std::string table, column;
    size_t add = 0;
    if (!readBracketed(sql, at, table) || !startsWithWords(sql.substr(at), {"add", "column"}, add))
        return expression(sql, nullptr, false);
    at += add;
    if (!readBracketed(sql, at, column)) return expression(sql, nullptr, false);
    const std::string quoted = quoteIdentifier(column);
    return "ALTER TABLE " + quoteIdentifier(table) + " ADD COLUMN " + quoted + " " +
           columnType(trim(sql.substr(at)), quoted);
}

std::string project_sql_dialect::createIndex(std::string_view sql, size_t at, bool unique) const {
    std::string index, table;
    size_t on = 0;
    if (!readBracketed(sql, at, index) || !startsWithWords(sql.substr(at), {"on"}, on))
        return expression(sql, nullptr, false);
    at += on;
    size_t open = 0, close = sql.rfind(')');
    if (!readBracketed(sql, at, table) || (open = sql.find('(', at)) == std::string_view::npos ||
        close == std::string_view::npos || close < open)
        return expression(sql, nullptr, false);
    std::string_view tail = trim(sql.substr(close + 1));
    bool primary = istartsWith(tail, "with") && toLower(tail).find("primary") != std::string::npos;
    // Index names are per table in the project but global in the store.
    std::string out = (unique || primary) ? "CREATE UNIQUE INDEX " : "CREATE INDEX ";
    out += quoteIdentifier(table + "." + index) + " ON " + quoteIdentifier(table) + "(";
    out += expression(sql.substr(open + 1, close - open - 1), catalogueTable(table), false);
    return out + ")";
}

// ---------------------------------------------------------------- SQLite

namespace {

class sqlite_dialect final : public project_sql_dialect {
public:
    const char* driverName() const override { return "QSQLITE"; }

    // Grave accents, not double quotes: SQLite reads a double-quoted name that matches
    // no column as a string, so a misspelt column in a filter would silently compare
    // against text (and a key would be made on a constant) instead of failing.
    std::string quoteIdentifier(std::string_view name) const override {
        std::string quoted = "`";
        for (char c : name) quoted += c == '`' ? std::string("``") : std::string(1, c);
        return quoted + "`";
    }

    std::string connectOptions(bool readOnly) const override {
        // A second program saving the same project holds the write lock for the length of
        // one save; waiting a few seconds lets ours queue behind it instead of failing.
        std::string options = "QSQLITE_BUSY_TIMEOUT=8000";
        if (readOnly) options += ";QSQLITE_OPEN_READONLY";
        return options;
    }

    // A project in write-ahead-log mode needs its shared-memory file even to be read;
    // in a folder we may not write to it cannot be made. Opened as immutable, the file
    // is read as it stands (without any log left behind by a crashed writer).
    bool readOnlyFallback(const std::string& path, std::string& databaseName, std::string& options) const override {
        databaseName = "file:";
        for (unsigned char c : path) {
            if (std::isalnum(c) || std::strchr("/-_.~", c)) databaseName += static_cast<char>(c);
            else databaseName += strprintf("%%%02X", c);
        }
        databaseName += "?immutable=1";
        options = connectOptions(true) + ";QSQLITE_OPEN_URI";
        return true;
    }

    std::vector<std::string> connectionSetup() const override {
        // WAL: readers and one writer share the file, and a killed writer leaves the
        // last committed state. NORMAL sync keeps that guarantee against a crash of
        // the program (not of the machine) at a fraction of the cost of FULL.
        return {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=NORMAL"};
    }

    std::unique_ptr<native_insert> nativeInsert(QSqlDatabase& db, const std::string& insertText) const override {
        return sqliteNativeInsert(db, insertText);
    }

    std::string beginText() const override { return "BEGIN IMMEDIATE"; }
    // In write-ahead-log mode a reading transaction keeps the state of its first read.
    std::string snapshotText() const override { return "BEGIN"; }
    std::string markProjectText() const override { return strprintf("PRAGMA application_id = %lld", kProjectMark); }
    std::string readMarkText() const override { return "PRAGMA application_id"; }
    long long projectMark() const override { return kProjectMark; }

    status_code classifyError(std::string_view nativeCode, std::string_view text) const override {
        int code = nativeCode.empty() ? 0 : std::atoi(std::string(nativeCode).c_str()) & 0xFF;
        std::string lower = toLower(text);
        auto has = [&](const char* part) { return lower.find(part) != std::string::npos; };
        if (has("no such table")) return kStatusNoTable;
        if (has("no such column") || has("has no column named")) return kStatusNoColumn;
        if (has("cannot store")) return kStatusCantConvert;  // a value of the wrong kind
        switch (code) {
            case 1:
                return kStatusCommandError;  // SQLITE_ERROR: syntax, existing table, ...
            case 5:                          // SQLITE_BUSY
            case 6:
                return kStatusBusy;  // SQLITE_LOCKED
            case 8:
                return kStatusReadOnly;  // SQLITE_READONLY
            case 19:
                return kStatusIntegrityViolation;  // SQLITE_CONSTRAINT
            case 26:
                return kStatusNotADatabase;  // SQLITE_NOTADB
            default:
                break;
        }
        if (has("readonly") || has("read-only")) return kStatusReadOnly;
        if (has("not a database")) return kStatusNotADatabase;
        if (has("constraint failed")) return kStatusIntegrityViolation;
        if (has("locked") || has("busy")) return kStatusBusy;
        return kStatusStoreError;
    }

protected:
    // The project's column type words in store terms; an unknown word is passed on
    // as it stands, and the STRICT table then refuses it like the project expects.
    std::string columnType(std::string_view type, const std::string&) const override {
        static const struct {
            const char* project;
            const char* store;
        } kTypes[] = {
            {"SMALLINT", "INTEGER"}, {"INTEGER", "INTEGER"}, {"BIT", "INTEGER"},   {"BYTE", "INTEGER"},
            {"SINGLE", "REAL"},      {"DOUBLE", "REAL"},     {"CURRENCY", "REAL"}, {"NUMERIC", "REAL"},
            {"datetime", "TEXT"},    {"WIDETEXT", "TEXT"},   {"MEMO", "TEXT"},     {"BLOB(2G)", "BLOB"},
        };
        if (istartsWith(type, "TEXT(") && type.back() == ')') return "TEXT";
        for (const auto& t : kTypes)
            if (iequals(type, t.project)) return t.store;
        return std::string(type);
    }
    // STRICT: the store keeps each column's declared kind and refuses unknown types.
    std::string tableOptions() const override { return " STRICT"; }
};

}  // namespace

std::unique_ptr<sql_dialect> sql_dialect::sqlite() { return std::make_unique<sqlite_dialect>(); }

}  // namespace sb
