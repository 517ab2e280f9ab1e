// The PostgreSQL dialect: projects that live in a database on a server.
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <unordered_map>

#include "app/text_format.h"
#include "db/project_sql_dialect.h"
#include "db/table_catalogue.h"

namespace sb {

namespace {

// Words of SQL that are never taken for a column name, though a column may be
// spelt like one ("Order" in Events is always written bracketed).
bool isKeyword(std::string_view word) {
    static const char* const kKeywords[] = {
        "all",    "and",     "any",     "as",      "asc",       "between",  "by",     "case",   "cast",  "collate",
        "create", "cross",   "default", "delete",  "desc",      "distinct", "drop",   "else",   "end",   "escape",
        "except", "exists",  "false",   "first",   "from",      "glob",     "group",  "having", "if",    "ilike",
        "in",     "index",   "inner",   "insert",  "intersect", "into",     "is",     "join",   "key",   "last",
        "left",   "like",    "limit",   "not",     "null",      "nulls",    "offset", "on",     "or",    "order",
        "outer",  "primary", "right",   "select",  "some",      "table",    "then",   "true",   "union", "unique",
        "using",  "values",  "when",    "where",   "with",      "alter",    "column", "type",   "set",   "update",
        "add",    "rename",  "to",      "comment", "database",
    };
    for (const char* keyword : kKeywords)
        if (iequals(word, keyword)) return true;
    return false;
}

// Every table and column name of the catalogue by its lower-case form, for names
// the statement's own table does not know (a filter naming another table's column).
const std::unordered_map<std::string, std::string>& catalogueSpellings() {
    static const std::unordered_map<std::string, std::string> spellings = [] {
        std::unordered_map<std::string, std::string> map;
        for (int i = 0; i < kTableCount; ++i) {
            const database_maker_table& table = tableDef(static_cast<table_id>(i));
            map.emplace(toLower(table.name()), table.name());
            for (const auto& field : table.fields()) map.emplace(toLower(field.name), field.name);
        }
        return map;
    }();
    return spellings;
}

// The catalogue's spelling of a name: a column of the statement's table first,
// then any table or column; empty when the catalogue has no such name.
std::string catalogueSpelling(std::string_view name, const database_maker_table* context) {
    if (context) {
        int column = context->fieldIndex(name);
        if (column >= 0) return context->fields()[static_cast<size_t>(column)].name;
    }
    auto found = catalogueSpellings().find(toLower(name));
    return found == catalogueSpellings().end() ? std::string() : found->second;
}

// The SQLSTATE of a failure: the driver's code, or the "(XXXXX)" it ends its text with.
std::string sqlState(std::string_view nativeCode, std::string_view text) {
    if (nativeCode.size() == 5) return std::string(nativeCode);
    std::string_view t = trim(text);
    if (t.size() >= 7 && t.back() == ')' && t[t.size() - 7] == '(') return std::string(t.substr(t.size() - 6, 5));
    return {};
}

class postgresql_dialect final : public project_sql_dialect {
public:
    const char* driverName() const override { return "QPSQL"; }

    std::string quoteIdentifier(std::string_view name) const override {
        std::string quoted = "\"";
        for (char c : name) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
        return quoted + "\"";
    }

    // A server that does not answer is given up on after ten seconds, not the
    // client library's default of waiting for ever.
    std::string connectOptions(bool) const override { return "connect_timeout=10"; }
    bool readOnlyFallback(const std::string&, std::string&, std::string&) const override { return false; }

    std::vector<std::string> connectionSetup() const override {
        return {
            // The server's notices and warnings ("table does not exist, skipping",
            // "terminating connection") are not ours to print; its errors are reported.
            "SET client_min_messages = error",
            // Floating-point values travel as text: every digit needed to read them back exactly.
            "SET extra_float_digits = 3",
            // Another user's save of the same record is waited for, but not for ever.
            "SET lock_timeout = '30s'",
        };
    }

    // Read committed: each statement sees what others committed before it, and
    // nothing but the rows a save touches is locked.
    std::string beginText() const override { return "BEGIN"; }
    std::string snapshotText() const override { return "BEGIN ISOLATION LEVEL REPEATABLE READ, READ ONLY"; }

    // The mark is the database's comment; the command takes a name, not an expression.
    std::string markProjectText() const override {
        return strprintf(
            "DO $$BEGIN EXECUTE format('COMMENT ON DATABASE %%I IS %%L', current_database(), '%lld'); END$$",
            kProjectMark);
    }
    std::string readMarkText() const override {
        return "SELECT CASE WHEN d ~ '^[0-9]{1,18}$' THEN CAST(d AS BIGINT) ELSE 0 END FROM "
               "(SELECT shobj_description(oid, 'pg_database') AS d FROM pg_database "
               "WHERE datname = current_database()) AS mark";
    }
    long long projectMark() const override { return kProjectMark; }

    status_code classifyError(std::string_view nativeCode, std::string_view text) const override {
        const std::string state = sqlState(nativeCode, text);
        if (state.empty()) return connectionFailure(text);
        if (state == "42P01") return kStatusNoTable;
        if (state == "42703") return kStatusNoColumn;
        if (state == "3D000") return kStatusNotADatabase;
        if (state.rfind("23", 0) == 0) return kStatusIntegrityViolation;
        if (state == "22001" || state == "22003") return kStatusValueOutOfRange;
        if (state.rfind("22", 0) == 0 || state == "42804") return kStatusCantConvert;
        if (state == "25006" || state == "42501") return kStatusReadOnly;
        if (state == "55P03" || state == "40P01" || state == "40001") return kStatusBusy;
        if (state.rfind("28", 0) == 0) return kStatusAuthenticationFailed;
        if (state.rfind("08", 0) == 0 || state.rfind("57P0", 0) == 0) return kStatusServerUnreachable;
        if (state.rfind("42", 0) == 0) return kStatusCommandError;
        return kStatusStoreError;
    }

    // "ERROR:  column ... does not exist\nLINE 1: ...\n ^\nHINT:  Perhaps ...\n(42703)" -> its
    // sentences on one line, without prefixes, the statement's excerpt or the code.
    std::string errorDescription(std::string_view storeText) const override {
        std::string out;
        std::string_view rest = storeText;
        std::vector<std::string> seen;  // the client library may give one text twice
        while (!rest.empty()) {
            size_t newline = rest.find('\n');
            std::string_view line = trim(rest.substr(0, newline));
            // An indented line in lower case goes on with the sentence before it.
            const bool continues = (rest.front() == '\t' || rest.front() == ' ') && !line.empty() &&
                                   std::islower(static_cast<unsigned char>(line.front()));
            rest = newline == std::string_view::npos ? std::string_view() : rest.substr(newline + 1);
            for (const char* prefix : {"ERROR:", "FATAL:", "PANIC:", "DETAIL:", "HINT:"})
                if (istartsWith(line, prefix)) line = trim(line.substr(std::char_traits<char>::length(prefix)));
            const bool code = line.size() == 7 && line.front() == '(' && line.back() == ')';
            if (line.empty() || code || istartsWith(line, "LINE ") || line.find_first_not_of("^ ") == line.npos)
                continue;
            std::string text(line);
            for (const char* inner : {"FATAL:  ", "ERROR:  "})  // "connection ... failed: FATAL:  ..."
                for (size_t at; (at = text.find(inner)) != std::string::npos;) text.erase(at, std::strlen(inner));
            if (std::find(seen.begin(), seen.end(), text) != seen.end()) continue;
            seen.push_back(text);
            if (!out.empty()) out += continues || out.back() == '.' ? " " : ". ";
            out += text;
        }
        return out;
    }

    bool failureSpoilsTransaction() const override { return true; }
    bool oneOpenResult() const override { return true; }

    std::string saveLockText(uint64_t key) const override {
        return strprintf("SELECT pg_advisory_xact_lock(%lld)", static_cast<long long>(key));
    }
    std::string sharedSaveLockText(uint64_t key) const override {
        return strprintf("SELECT pg_advisory_xact_lock_shared(%lld)", static_cast<long long>(key));
    }
    std::string trySaveLockText(uint64_t key) const override {
        return strprintf("SELECT pg_try_advisory_xact_lock(%lld)", static_cast<long long>(key));
    }
    std::string createDatabaseText(std::string_view name) const override {
        return "CREATE DATABASE " + quoteIdentifier(name);
    }
    std::string dropDatabaseText(std::string_view name) const override {
        return "DROP DATABASE IF EXISTS " + quoteIdentifier(name);
    }

protected:
    std::string storeName(std::string_view name, const database_maker_table* context) const override {
        std::string spelling = catalogueSpelling(name, context);
        return quoteIdentifier(spelling.empty() ? name : std::string_view(spelling));
    }

    // A bare column name would be folded to lower case by the server; it is given
    // its catalogue spelling instead. Keywords, functions and unknown words stay.
    std::string bareWord(std::string_view word, bool calledAsFunction,
                         const database_maker_table* context) const override {
        if (calledAsFunction || isKeyword(word)) return std::string(word);
        std::string spelling = catalogueSpelling(word, context);
        return spelling.empty() ? std::string(word) : quoteIdentifier(spelling);
    }

    std::string columnType(std::string_view type, const std::string& quotedName) const override {
        static const struct {
            const char* project;
            const char* store;
        } kTypes[] = {
            {"SMALLINT", "SMALLINT"},       {"INTEGER", "INTEGER"},        {"SINGLE", "REAL"},
            {"DOUBLE", "DOUBLE PRECISION"}, {"CURRENCY", "NUMERIC(19,4)"}, {"NUMERIC", "NUMERIC"},
            {"datetime", "TIMESTAMP"},      {"WIDETEXT", "TEXT"},          {"MEMO", "TEXT"},
            {"BLOB(2G)", "BYTEA"},
        };
        if (istartsWith(type, "TEXT(") && type.back() == ')')
            return "VARCHAR" + std::string(type.substr(4));  // TEXT(80) -> VARCHAR(80)
        // Yes/no and byte columns are small integers held to their range.
        if (iequals(type, "BIT")) return "SMALLINT CHECK (" + quotedName + " IN (0, 1))";
        if (iequals(type, "BYTE")) return "SMALLINT CHECK (" + quotedName + " BETWEEN 0 AND 255)";
        for (const auto& t : kTypes)
            if (iequals(type, t.project)) return t.store;
        return std::string(type);  // the server refuses an unknown type, as the project expects
    }

    std::string leadingColumns() const override { return "\"rowid\" BIGINT GENERATED ALWAYS AS IDENTITY, "; }
    std::string lastSortKey() const override { return "\"rowid\""; }
    // A row whose key is taken is not stored and the transaction goes on, as on SQLite;
    // the caller learns of it from the count of rows stored.
    std::string insertOptions() const override { return " ON CONFLICT DO NOTHING"; }
    // Each statement is a round trip to the server: bulk inserts send rows in groups
    // (of some 20,000 values, well within the server's limit on parameters).
    int insertGroupRows(int columns) const override { return std::clamp(20000 / std::max(columns, 1), 1, 500); }

private:
    // Failures before any statement ran carry no SQLSTATE: told apart by their text.
    static status_code connectionFailure(std::string_view text) {
        const std::string lower = toLower(text);
        auto has = [&](const char* part) { return lower.find(part) != std::string::npos; };
        if (has("password") || has("authentication")) return kStatusAuthenticationFailed;
        if (has("database") && has("does not exist")) return kStatusNotADatabase;
        if (has("connection") || has("could not") || has("server") || has("timeout") || has("terminat"))
            return kStatusServerUnreachable;
        return kStatusStoreError;
    }
};

}  // namespace

std::unique_ptr<sql_dialect> sql_dialect::postgresql() { return std::make_unique<postgresql_dialect>(); }

}  // namespace sb
