#pragma once
// Everything that differs between stores lives here: turning the project's own
// SQL text (back-quoted tables, bracketed columns, "DELETE * FROM", Jet DDL
// types and "with primary") into the store's text, and naming the store's driver.
// SQLite is the embedded default; a PostgreSQL dialect can be added beside it
// without touching any caller.
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sb {

class sql_dialect {
public:
    virtual ~sql_dialect() = default;
    virtual const char* driverName() const = 0;  // Qt SQL driver, e.g. "QSQLITE"
    // SELECT / DELETE / CREATE TABLE / CREATE INDEX in project form -> store form.
    virtual std::string translate(std::string_view projectSql) const = 0;
    // "INSERT INTO <table> (<cols>) VALUES (?, ...)" for a prepared insert.
    virtual std::string insertText(std::string_view table, const std::vector<std::string>& columns) const = 0;
    virtual std::string quoteIdentifier(std::string_view name) const = 0;

    static std::unique_ptr<sql_dialect> sqlite();
};

}  // namespace sb
