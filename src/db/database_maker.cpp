#include "db/database_maker.h"

#include <cstdlib>

#include "app/text_format.h"
#include "db/database.h"
#include "db/database_impl.h"
#include "db/table_catalogue.h"

namespace sb {

const char* sqlTypeText(int typeCode) {
    switch (typeCode) {
        case kTypeSmallint:
            return "SMALLINT";
        case kTypeInteger:
            return "INTEGER";
        case kTypeSingle:
            return "SINGLE";
        case kTypeDouble:
            return "DOUBLE";
        case kTypeCurrency:
            return "CURRENCY";
        case kTypeDatetime:
            return "datetime";
        case kTypeBit:
            return "BIT";
        case kTypeByteSigned:
        case kTypeByte:
            return "BYTE";
        case kTypeBlob:
            return "BLOB(2G)";
        case kTypeText:
            return "TEXT";
        case kTypeWideText:
            return "WIDETEXT";
        case kTypeNumeric:
            return "NUMERIC";
        case kTypeMemo:
            return "MEMO";
        default:
            return "ERROR, Unknown field type";
    }
}

namespace {

// Splits at a separator that stands outside parentheses, so "DAMR(1,1), DAMR(1,2)"
// gives two names.
std::vector<std::string_view> splitOutsideParens(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    int depth = 0;
    size_t start = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '(') ++depth;
        else if (c == ')' && depth > 0) --depth;
        else if (c == separator && depth == 0) {
            parts.push_back(text.substr(start, i - start));
            start = i + 1;
        }
    }
    parts.push_back(text.substr(start));
    return parts;
}

// "SINGLE" or "TEXT(80)" -> type code and size; false for a word we do not know.
bool parseTypeWord(std::string_view word, int& type, int& size) {
    static const struct {
        const char* text;
        int code;
    } kWords[] = {
        {"SMALLINT", kTypeSmallint}, {"INTEGER", kTypeInteger}, {"SINGLE", kTypeSingle}, {"DOUBLE", kTypeDouble},
        {"BIT", kTypeBit},           {"BYTE", kTypeByte},       {"MEMO", kTypeMemo},
    };
    size = 0;
    if (istartsWith(word, "TEXT(") && word.back() == ')') {
        type = kTypeText;
        size = std::atoi(std::string(word.substr(5, word.size() - 6)).c_str());
        return size > 0;
    }
    for (const auto& w : kWords)
        if (iequals(word, w.text)) {
            type = w.code;
            return true;
        }
    return false;
}

// "name(1,2)" -> base "name" and subscripts {1, 2}; false when there are none.
bool parseSubscripted(std::string_view text, std::string& base, std::vector<int>& subscripts) {
    size_t open = text.find('(');
    if (open == std::string_view::npos || text.back() != ')') return false;
    base = std::string(text.substr(0, open));
    subscripts.clear();
    for (std::string_view part : splitOutsideParens(text.substr(open + 1, text.size() - open - 2), ','))
        subscripts.push_back(std::atoi(std::string(part).c_str()));
    return !subscripts.empty();
}

// A run "name(1,1) to name(3,2)" stands for every subscript in the box between the
// two ends, the last subscript varying fastest; anything else is one column name.
std::vector<std::string> expandColumnItem(std::string_view item) {
    size_t to = item.find(" to ");
    std::string firstBase, lastBase;
    std::vector<int> first, last;
    if (to == std::string_view::npos || !parseSubscripted(trim(item.substr(0, to)), firstBase, first) ||
        !parseSubscripted(trim(item.substr(to + 4)), lastBase, last) || firstBase != lastBase ||
        first.size() != last.size())
        return {std::string(item)};
    std::vector<std::string> names;
    std::vector<int> at = first;
    for (;;) {
        std::string name = firstBase + "(";
        for (size_t i = 0; i < at.size(); ++i) name += (i ? "," : "") + std::to_string(at[i]);
        names.push_back(name + ")");
        size_t i = at.size();
        while (i > 0 && at[i - 1] == last[i - 1]) {
            at[i - 1] = first[i - 1];
            --i;
        }
        if (i == 0) break;
        ++at[i - 1];
    }
    return names;
}

}  // namespace

database_maker_table::database_maker_table(std::string name) : name_(std::move(name)) {}

database_maker_table database_maker_table::fromColumnList(std::string name, std::string_view columns,
                                                          std::vector<database_maker_index> indexes) {
    database_maker_table table(std::move(name));
    for (std::string_view run : splitOutsideParens(columns, ';')) {
        run = trim(run);
        if (run.empty()) continue;
        size_t colon = run.find(':');
        int type = kTypeInteger, size = 0;
        if (colon == std::string_view::npos || !parseTypeWord(trim(run.substr(0, colon)), type, size))
            type = -1;  // shows up as "ERROR, Unknown field type" in the DDL
        for (std::string_view item : splitOutsideParens(run.substr(colon + 1), ','))
            for (std::string& column : expandColumnItem(trim(item))) table.addField(column, type, size);
    }
    for (auto& index : indexes)
        table.addIndex(std::move(index.name), index.primary, index.unique, std::move(index.columns));
    return table;
}

void database_maker_table::addField(std::string name, int type, int size) {
    int position = static_cast<int>(fields_.size());
    lookup_.emplace(toLower(name), position);
    // MEMO holds text of any length (a whole file kept with a record).
    textSlots_.push_back(type == kTypeText || type == kTypeMemo ? textCount_++ : -1);
    database_maker_field field;
    field.name = std::move(name);
    field.type = type;
    field.size = size;
    fields_.push_back(std::move(field));
}

void database_maker_table::addIndex(std::string name, bool primary, bool unique, std::vector<std::string> columns) {
    database_maker_index index;
    index.name = std::move(name);
    index.primary = primary;
    index.unique = unique;
    index.columns = std::move(columns);
    indexes_.push_back(std::move(index));
}

int database_maker_table::fieldIndex(std::string_view name) const {
    auto found = lookup_.find(toLower(name));
    return found == lookup_.end() ? -1 : found->second;
}

namespace {

std::string columnDefinition(const database_maker_field& field) {
    if (field.type == kTypeText)
        return strprintf("[%s] %s(%d)", field.name.c_str(), sqlTypeText(field.type), field.size);
    return strprintf("[%s] %s", field.name.c_str(), sqlTypeText(field.type));
}

// Adds the columns the catalogue gained since the project's table was made.
bool addMissingColumns(database& db, table_id id, message_sink& errors) {
    const database_maker_table& table = tableDef(id);
    QSqlRecord present;
    db_status status = db.impl().storeColumns(id, present);
    for (size_t i = 0; status.ok() && i < table.fields().size(); ++i) {
        if (present.contains(QString::fromStdString(table.fields()[i].name))) continue;
        const std::string sql = table.addColumnText(table.fields()[i]);
        status = db.execute(sql);
        if (!status.ok()) errors.error("ERROR, unable to add a column.\n" + sql + "\n");
    }
    if (status.ok()) return true;
    appendStatusText(status, errors);
    return false;
}

}  // namespace

std::string database_maker_table::createTableText() const {
    std::string sql = strprintf("Create Table [%s](", name_.c_str());
    for (size_t i = 0; i < fields_.size(); ++i) sql += (i > 0 ? ", " : "") + columnDefinition(fields_[i]);
    return sql + ")";
}

std::string database_maker_table::addColumnText(const database_maker_field& field) const {
    return strprintf("Alter Table [%s] Add Column ", name_.c_str()) + columnDefinition(field);
}

std::vector<std::string> database_maker_table::createIndexTexts() const {
    std::vector<std::string> texts;
    for (const auto& index : indexes_) {
        std::string sql = strprintf("Create Index [%s] on [%s](", index.name.c_str(), name_.c_str());
        for (size_t i = 0; i < index.columns.size(); ++i) sql += (i == 0 ? "[" : ", [") + index.columns[i] + "]";
        sql += ")";
        if (index.primary) sql += " with primary";
        texts.push_back(std::move(sql));
    }
    return texts;
}

bool database_maker::createTable(const database_maker_table& table, message_sink& errors) {
    std::string sql = table.createTableText();
    db_status status = db_.execute(sql);
    if (status.ok()) return true;
    errors.error("ERROR, unable to create table.\n" + sql + "\n");
    appendStatusText(status, errors);
    return false;
}

bool database_maker::createIndexes(const database_maker_table& table, message_sink& errors) {
    for (const std::string& sql : table.createIndexTexts()) {
        db_status status = db_.execute(sql);
        if (status.ok()) continue;
        errors.error("ERROR, unable to create index.\n" + sql + "\n");
        appendStatusText(status, errors);
        return false;
    }
    return true;
}

bool database_maker::addMissingTablesAndColumns(const std::vector<std::string>& existing, message_sink& errors) {
    bool ok = true;
    for (int i = static_cast<int>(table_id::record_changes) + 1; i < kTableCount; ++i) {
        const database_maker_table& table = tableDef(static_cast<table_id>(i));
        bool present = false;
        for (const std::string& name : existing) present = present || iequals(name, table.name());
        if (!present) ok = createTable(table, errors) && createIndexes(table, errors) && ok;
        else ok = addMissingColumns(db_, static_cast<table_id>(i), errors) && ok;
    }
    return ok;
}

bool database_maker::createAllTables(message_sink& errors) {
    bool allMade = true;
    for (int i = 0; i < kTableCount; ++i) {
        const database_maker_table& table = tableDef(static_cast<table_id>(i));
        // A table that could not be made gets no index attempts; the next table still runs.
        bool made = createTable(table, errors) && createIndexes(table, errors);
        allMade = allMade && made;
    }
    return allMade;
}

}  // namespace sb
