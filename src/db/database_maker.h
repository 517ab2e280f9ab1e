#pragma once
// The in-memory description of the project schema and its DDL text.
// A new project is filled with every table from these descriptions.
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "app/message_sink.h"

namespace sb {

class database;

// Column type codes as the project format defines them; the schema uses only
// SMALLINT, INTEGER, SINGLE, BIT, BYTE and TEXT(n).
enum field_type : int {
    kTypeSmallint = 2,
    kTypeInteger = 3,
    kTypeSingle = 4,
    kTypeDouble = 5,
    kTypeCurrency = 6,
    kTypeDatetime = 7,
    kTypeBit = 11,
    kTypeByteSigned = 16,  // both byte codes give BYTE
    kTypeByte = 17,
    kTypeBlob = 128,
    kTypeText = 129,
    kTypeWideText = 130,
    kTypeNumeric = 131,
    kTypeMemo = 136,
};

// The SQL type text written into the DDL ("ERROR, Unknown field type" for unknown codes).
const char* sqlTypeText(int typeCode);

struct database_maker_field {
    virtual ~database_maker_field() = default;
    std::string name;
    int type = kTypeInteger;
    int size = 0;  // used only for TEXT
};

struct database_maker_index {
    virtual ~database_maker_index() = default;
    std::string name;
    bool primary = false;
    bool unique = false;
    std::vector<std::string> columns;  // one to six
};

class database_maker_table {
public:
    virtual ~database_maker_table() = default;
    explicit database_maker_table(std::string name = {});

    // Builds a table from the compact column form "TYPE: a, b; TYPE(n): c", e.g.
    // "INTEGER: ID; TEXT(80): Description". Column names may hold blanks and
    // parenthesised subscripts with commas ("DAMR(1,1)").
    static database_maker_table fromColumnList(std::string name, std::string_view columns,
                                               std::vector<database_maker_index> indexes);

    void addField(std::string name, int type, int size = 0);
    void addIndex(std::string name, bool primary, bool unique, std::vector<std::string> columns);

    const std::string& name() const { return name_; }
    const std::vector<database_maker_field>& fields() const { return fields_; }
    const std::vector<database_maker_index>& indexes() const { return indexes_; }

    // Position of a column, names compared without regard to case; -1 when absent.
    int fieldIndex(std::string_view name) const;
    // Text columns are stored apart from numbers in a record: the slot of a text
    // column among the table's text columns, -1 for other columns.
    int textSlot(int field) const { return textSlots_[static_cast<size_t>(field)]; }
    int textCount() const { return textCount_; }
    bool isText(int field) const { return textSlot(field) >= 0; }

    // "Create Table [%s]([a] INTEGER, [b] TEXT(80))" exactly as shown in error messages.
    std::string createTableText() const;
    // "Alter Table [%s] Add Column [c] TEXT(80)": the column added to a table made without it.
    std::string addColumnText(const database_maker_field& field) const;
    // "Create Index [%s] on [%s]([a], [b]) with primary", one per index.
    std::vector<std::string> createIndexTexts() const;

private:
    std::string name_;
    std::vector<database_maker_field> fields_;
    std::vector<database_maker_index> indexes_;
    std::unordered_map<std::string, int> lookup_;  // lower-case name -> position
    std::vector<int> textSlots_;
    int textCount_ = 0;
};

// Holds the open database while the tables of a new project are created.
class database_maker {
public:
    virtual ~database_maker() = default;
    explicit database_maker(database& db) : db_(db) {}

    // Appends "ERROR, unable to create table.\n", the statement, "\n" and the status text on failure.
    bool createTable(const database_maker_table& table, message_sink& errors);
    // Stops at the first failing index: "ERROR, unable to create index.\n", statement, status text.
    bool createIndexes(const database_maker_table& table, message_sink& errors);
    // Creates the tables added to the catalogue after Record Changes that are
    // not among `existing`, and adds to those that are the columns they lack: a
    // project made before they were added gets them when it is opened. A table
    // or column of the first schema that is missing is a damaged project, left
    // to fail at the first statement that needs it.
    bool addMissingTablesAndColumns(const std::vector<std::string>& existing, message_sink& errors);
    // Creates every catalogue table in creation order; a failing table does not stop the others.
    bool createAllTables(message_sink& errors);

private:
    database& db_;
};

}  // namespace sb
