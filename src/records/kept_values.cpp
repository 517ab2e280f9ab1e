#include "records/kept_values.h"

#include <algorithm>
#include <functional>

#include "app/text_format.h"
#include "db/database.h"
#include "db/table_columns.h"
#include "records/store_session.h"

namespace sb {

namespace {

std::string quoted(std::string_view text) {
    std::string out = "'";
    for (char c : text) out += c == '\'' ? std::string("''") : std::string(1, c);
    return out + "'";
}

// Reads the rows under `filter`; a read-only project made before the table
// existed has none, which reads as nothing kept.
bool loadRowsWhere(database& db, table_id table, const std::string& filter,
                   const std::function<void(const table_record&)>& take, message_sink& errors) {
    db_status status;
    std::unique_ptr<rowset> rows = db.openTable(table, filter, "", status);
    if (!rows) {
        if (db.readOnly()) return true;
        errors.errorf("ERROR, unable to open table [%s].\n", tableName(table));
        appendStatusText(status, errors);
        return false;
    }
    for (status = rows->moveFirst(); status.ok(); status = rows->moveNext()) take(rows->row());
    if (status.endOfRowset()) return true;
    errors.errorf("ERROR, unable to read table [%s].\n", tableName(table));
    appendStatusText(status, errors);
    return false;
}

// The two kept-values tables differ only in whose values a row holds: a
// record's (ID) or a management option's (Option).
const table_columns& keptColumns(table_id table) {
    static const table_columns record(table_id::kept_values, {"ID", "File", "Name", "Value"});
    static const table_columns option(table_id::kept_option_values, {"Option", "File", "Name", "Value"});
    return table == table_id::kept_values ? record : option;
}

// Each row's value set into the values `owner` names for the row.
bool loadKeptRows(database& db, table_id table, const std::string& filter,
                  const std::function<kept_values&(const table_record&)>& owner, message_sink& errors) {
    const table_columns& c = keptColumns(table);
    return loadRowsWhere(
        db, table, filter,
        [&](const table_record& row) {
            owner(row).set(row.text(c["File"]), row.text(c["Name"]), row.number(c["Value"]));
        },
        errors);
}

// One row per value, after the rows already in `rows`; `setOwner` fills the
// columns that say whose value it is (a record's ID and the value's file; an
// option file and the option).
void appendKeptRows(table_id table, const kept_values& values,
                    const std::function<void(table_record&, const kept_value&)>& setOwner,
                    std::vector<table_record>& rows) {
    const table_columns& c = keptColumns(table);
    for (const kept_value& kept : values.all()) {
        table_record row(table);
        setOwner(row, kept);
        row.setText(c["Name"], kept.name);
        row.setNumber(c["Value"], kept.value);
        rows.push_back(std::move(row));
    }
}

bool replaceRows(database& db, table_id table, const std::string& filter, const std::vector<table_record>& rows,
                 message_sink& errors) {
    store_session unit(db, errors);
    if (!unit.ok()) return false;
    if (db.execute(strprintf("DELETE * FROM `%s` WHERE %s", tableName(table), filter.c_str())).failed()) {
        errors.errorf("ERROR, unable to delete from [%s]\n", tableName(table));
        return false;
    }
    db_status status;
    std::unique_ptr<rowset> out = db.openTable(table, "", "", status);
    if (!out) {
        errors.errorf("Unable to open table %s\n", tableName(table));
        return false;
    }
    for (const table_record& row : rows) {
        status = out->insert(row);
        if (status.failed()) {
            errors.errorf("ERROR, unable to insert into table [%s]\n", tableName(table));
            appendStatusText(status, errors);
            return false;
        }
    }
    out.reset();
    return unit.commit();
}

// The columns of a record's kept files, looked up once by name.
const table_columns& fileColumns() {
    static const table_columns c(table_id::record_files, {"ID", "Name", "Content"});
    return c;
}

// Each column with the member that holds it, for reading and writing alike;
// the ID a file is stored under is its record's.
template <class File, class Visit>  // File: record_file, const when writing
void fileMembers(File& f, Visit&& visit) {
    visit("Name", f.name);
    visit("Content", f.content);
}

}  // namespace

void kept_values::set(std::string_view file, std::string_view name, double value) {
    for (kept_value& kept : values_)
        if (iequals(kept.file, file) && iequals(kept.name, name)) {
            kept.value = value;
            return;
        }
    values_.push_back({std::string(file), std::string(name), value});
}

const double* kept_values::find(std::string_view file, std::string_view name) const {
    for (const kept_value& kept : values_)
        if (iequals(kept.file, file) && iequals(kept.name, name)) return &kept.value;
    return nullptr;
}

bool kept_values::operator==(const kept_values& other) const {
    if (values_.size() != other.values_.size()) return false;
    for (const kept_value& kept : values_) {
        const double* theirs = other.find(kept.file, kept.name);
        if (!theirs || *theirs != kept.value) return false;
    }
    return true;
}

bool loadKeptValues(database& db, int32_t id, kept_values& values, message_sink& errors) {
    values.clear();
    return loadKeptRows(
        db, table_id::kept_values, strprintf("[ID] = %ld", static_cast<long>(id)),
        [&](const table_record&) -> kept_values& { return values; }, errors);
}

bool saveKeptValues(database& db, int32_t id, const kept_values& values, message_sink& errors) {
    std::vector<table_record> rows;
    const table_columns& c = keptColumns(table_id::kept_values);
    appendKeptRows(
        table_id::kept_values, values,
        [&](table_record& row, const kept_value& kept) {
            row.setNumber(c["ID"], id);
            row.setText(c["File"], kept.file);
        },
        rows);
    return replaceRows(db, table_id::kept_values, strprintf("ID = %ld", static_cast<long>(id)), rows, errors);
}

bool loadRecordFiles(database& db, int32_t id, std::vector<record_file>& files, message_sink& errors) {
    files.clear();
    return loadRowsWhere(
        db, table_id::record_files, strprintf("[ID] = %ld", static_cast<long>(id)),
        [&](const table_record& row) {
            record_file file;
            fileMembers(file, fileColumns().reading(row));
            files.push_back(std::move(file));
        },
        errors);
}

bool saveRecordFiles(database& db, int32_t id, const std::vector<record_file>& files, message_sink& errors) {
    std::vector<table_record> rows;
    for (const record_file& file : files) {
        table_record row(table_id::record_files);
        row.setNumber(fileColumns()["ID"], id);
        fileMembers(file, fileColumns().writing(row));
        rows.push_back(std::move(row));
    }
    return replaceRows(db, table_id::record_files, strprintf("ID = %ld", static_cast<long>(id)), rows, errors);
}

bool loadOptionKeptValues(database& db, const std::string& file, std::vector<option_kept_values>& options,
                          message_sink& errors) {
    options.clear();
    const int optionColumn = keptColumns(table_id::kept_option_values)["Option"];
    return loadKeptRows(
        db, table_id::kept_option_values, "[File] = " + quoted(file),
        [&](const table_record& row) -> kept_values& {
            const std::string& option = row.text(optionColumn);
            auto found = std::find_if(options.begin(), options.end(),
                                      [&](const option_kept_values& o) { return iequals(o.option, option); });
            if (found == options.end()) found = options.insert(options.end(), {option, {}});
            return found->values;
        },
        errors);
}

bool saveOptionKeptValues(database& db, const std::string& file, const std::vector<option_kept_values>& options,
                          message_sink& errors) {
    const table_columns& c = keptColumns(table_id::kept_option_values);
    std::vector<table_record> rows;
    for (const option_kept_values& option : options)
        appendKeptRows(
            table_id::kept_option_values, option.values,
            [&](table_record& row, const kept_value&) {
                row.setText(c["File"], file);
                row.setText(c["Option"], option.option);
            },
            rows);
    return replaceRows(db, table_id::kept_option_values, "File = " + quoted(file), rows, errors);
}

}  // namespace sb
