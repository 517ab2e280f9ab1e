#pragma once
// The part of every dialect that reads the project's SQL: one scanner over its
// names, literals and clauses, with each store's spelling supplied by hooks.
// Only the dialects include this.
#include "db/sql_dialect.h"

namespace sb {

class database_maker_table;

// Our mark on a new project, whatever its store: an empty new project is told
// apart from some other program's database by it.
inline constexpr long long kProjectMark = 0x536F696C;  // "Soil"

class project_sql_dialect : public sql_dialect {
public:
    std::string translate(std::string_view projectSql) const override;
    std::string insertText(std::string_view table, const std::vector<std::string>& columns) const override {
        return insertText(table, columns, 1);
    }
    std::string insertText(std::string_view table, const std::vector<std::string>& columns, int rows) const override;

protected:
    // A bracketed or back-quoted name of the project's SQL in store form. `context`
    // is the table the statement is about, when it is one of the catalogue's.
    virtual std::string storeName(std::string_view name, const database_maker_table* context) const {
        (void)context;
        return quoteIdentifier(name);
    }
    // A bare word that is neither a literal nor a number (a column name, a keyword,
    // a function): left as it stands unless the store needs it spelt otherwise.
    virtual std::string bareWord(std::string_view word, bool calledAsFunction,
                                 const database_maker_table* context) const {
        (void)calledAsFunction;
        (void)context;
        return std::string(word);
    }
    // A column's project type word (with its quoted name, for a check) in store terms.
    virtual std::string columnType(std::string_view type, const std::string& quotedName) const = 0;
    // Column definitions put before the table's own ones, and text after the definition.
    virtual std::string leadingColumns() const { return {}; }
    virtual std::string tableOptions() const { return {}; }
    // A sort key added after every SELECT's own order (empty: none).
    virtual std::string lastSortKey() const { return {}; }
    // Text after every prepared insert.
    virtual std::string insertOptions() const { return {}; }

    // Names, literals and clauses of an expression or list in store form.
    std::string expression(std::string_view sql, const database_maker_table* context, bool isSelect) const;

private:
    std::string createTable(std::string_view sql, size_t at) const;
    std::string createIndex(std::string_view sql, size_t at, bool unique) const;
    std::string addColumn(std::string_view sql, size_t at) const;
};

// The catalogue table of that name (case ignored), or null.
const database_maker_table* catalogueTable(std::string_view name);

}  // namespace sb
