#include "records/site_archive.h"

#include <algorithm>
#include <map>
#include <set>

#include "app/text_file.h"
#include "app/text_format.h"
#include "db/database.h"
#include "records/site_archive_content.h"
#include "records/site_archive_file.h"
#include "records/store_session.h"

namespace sb {

namespace {

long asLong(int32_t id) { return static_cast<long>(id); }

int columnOf(table_id table, const std::string& name) { return tableDef(table).fieldIndex(name); }

struct used_ids {
    row_owner owner;
    const char* word;  // "record", "soil", "weather station"
};

const std::vector<used_ids>& usedIdKinds() {
    static const std::vector<used_ids> kinds = {
        {row_owner::record, "record"}, {row_owner::soil, "soil"}, {row_owner::station, "weather station"}};
    return kinds;
}

// The IDs a project uses for one kind of owner: those any table's rows belong
// to (outputs of a deleted record too, which the record would otherwise
// inherit) and those rows name (a new project's default record names soil 1
// before it is stored).
bool projectIds(database& db, const used_ids& kind, std::set<int32_t>& ids, message_sink& errors) {
    std::vector<std::pair<table_id, std::string>> columns;
    for (int i = 0; i < kTableCount; ++i) {
        const table_id table = static_cast<table_id>(i);
        const table_owner owner = tableOwner(table);
        if (owner.owner == kind.owner || (kind.owner == row_owner::record && owner.owner == row_owner::record_local))
            columns.emplace_back(table, owner.column);
    }
    for (const id_reference& ref : idReferences())
        if (ref.refersTo == kind.owner) columns.emplace_back(ref.table, ref.column);
    for (const auto& [table, column] : columns) {
        std::vector<table_record> rows;
        if (!loadRows(db, table, "", rows, errors)) return false;
        for (const table_record& row : rows) ids.insert(row.integer(columnOf(table, column)));
    }
    return true;
}

using id_map = std::map<int32_t, int32_t>;

// Gives every archive ID the project already uses a free one, past both the
// project's and the archive's IDs, and reports each change.
bool mapIds(database& db, const site_archive_content& content, const used_ids& kind, id_map& map,
            message_sink& messages, message_sink& errors) {
    std::set<int32_t> taken;
    if (!projectIds(db, kind, taken, errors)) return false;
    const std::set<int32_t> held = content.ownerIds(kind.owner);
    int32_t next = 1;
    if (!taken.empty()) next = std::max(next, *taken.rbegin() + 1);
    if (!held.empty()) next = std::max(next, *held.rbegin() + 1);
    for (int32_t id : held) {
        const int32_t to = taken.count(id) ? next++ : id;
        map[id] = to;
        if (to != id) messages.notef("%s %ld -> %ld\n", kind.word, asLong(id), asLong(to));
    }
    return true;
}

void rewriteColumn(std::vector<table_record>& rows, int column, const id_map& map) {
    if (column < 0) return;
    for (table_record& row : rows) {
        auto to = map.find(row.integer(column));
        if (to != map.end()) row.setNumber(column, to->second);
    }
}

void applyIdMaps(site_archive_content& content, const std::map<row_owner, id_map>& maps) {
    for (archive_table& table : content.tables()) {
        const table_owner owner = tableOwner(table.table);
        auto map = maps.find(owner.owner);
        if (map != maps.end()) rewriteColumn(table.rows, columnOf(table.table, owner.column), map->second);
        for (const id_reference& ref : idReferences())
            if (ref.table == table.table)
                rewriteColumn(table.rows, columnOf(ref.table, ref.column), maps.at(ref.refersTo));
    }
    content.records.clear();
    const int id = columnOf(table_id::control_records, "ID");
    for (const table_record& row : content.table(table_id::control_records).rows)
        content.records.push_back(row.integer(id));
}

// Option entries: added when the project has none of the name, left out when
// the project's is the same, refused when it differs and a record uses it, and
// the project's kept otherwise (names are compared without case, as the model
// looks them up).
bool settleOptions(database& db, site_archive_content& content, message_sink& messages, message_sink& errors) {
    const size_t before = errors.count();
    const archive_needs needs = recordNeeds(content);
    std::set<std::pair<option_kind, std::string>> heldAtHome;  // entries the project's own stand for
    for (archive_table& table : content.tables()) {
        if (tableOwner(table.table).owner != row_owner::option) continue;
        if (!optionMemberByTable(table.table)) {
            // Rows kept for an entry (its kept values) go with the entry: left
            // out where the project's entry of that name is kept.
            std::erase_if(table.rows, [&](const table_record& row) {
                option_kind kind;
                std::string name;
                return !optionEntryOf(row, kind, name) || heldAtHome.count({kind, toLower(name)});
            });
            continue;
        }
        const int name = columnOf(table.table, tableOwner(table.table).column);
        std::vector<table_record> stored;
        if (!loadRows(db, table.table, "", stored, errors)) return false;
        const option_kind kind = optionMemberByTable(table.table)->kind;
        const char* word = optionWord(kind);
        const auto used = needs.options.find(kind);
        std::vector<table_record> added;
        for (table_record& row : table.rows) {
            auto same = std::find_if(stored.begin(), stored.end(), [&](const table_record& s) {
                return toLower(s.text(name)) == toLower(row.text(name));
            });
            if (same == stored.end()) {
                added.push_back(std::move(row));
                continue;
            }
            heldAtHome.insert({kind, toLower(row.text(name))});
            table_record renamed = row;
            renamed.setText(name, same->text(name));
            if (renamed == *same)
                messages.notef("The %s option \"%s\" is in the project already.\n", word, row.text(name).c_str());
            else if (used == needs.options.end() || !used->second.count(toLower(row.text(name))))
                messages.notef(
                    "The %s option \"%s\" of the archive, which none of its records uses, differs from the "
                    "project's: the project's is kept.\n",
                    word, row.text(name).c_str());
            else
                errors.errorf(
                    "ERROR, the %s option \"%s\" of the archive differs from the project's option of that name: "
                    "rename one of them, then import again.\n",
                    word, row.text(name).c_str());
        }
        table.rows = std::move(added);
    }
    return errors.count() == before;
}

bool insertAll(database& db, const site_archive_content& content, message_sink& errors) {
    for (const archive_table& table : content.tables()) {
        db_status status;
        std::unique_ptr<rowset> rows = db.openTable(table.table, "1 = 0", "", status);
        if (!rows) {
            errors.errorf("ERROR, unable to open table [%s].\n", tableName(table.table));
            appendStatusText(status, errors);
            return false;
        }
        for (const table_record& row : table.rows) {
            status = rows->insert(row);
            if (status.failed()) {
                errors.errorf("ERROR, unable to insert into table [%s].\n", tableName(table.table));
                appendStatusText(status, errors);
                return false;
            }
        }
    }
    return true;
}

}  // namespace

bool exportSiteArchive(database& db, const std::string& recordFilter, const std::string& path, message_sink& messages,
                       message_sink& errors) {
    site_archive_content content;
    if (!loadSiteArchiveContent(db, recordFilter, true, content, errors)) return false;
    if (!writeTextFile(path, siteArchiveText(content))) {
        errors.errorf("ERROR, cannot write site archive \"%s\".\n", path.c_str());
        return false;
    }
    messages.notef("Exported %zu record%s to \"%s\".\n", content.records.size(), content.records.size() == 1 ? "" : "s",
                   path.c_str());
    return true;
}

bool importSiteArchive(database& db, const std::string& path, message_sink& messages, message_sink& errors) {
    site_archive_content content;
    if (!readSiteArchive(path, content, errors)) return false;
    const std::string holder = strprintf("the site archive \"%s\"", path.c_str());
    if (!checkNeedsMet(content, recordNeeds(content), holder.c_str(), errors)) return false;
    message_sink report;
    store_session unit(db, errors);
    if (!unit.ok()) return false;
    std::map<row_owner, id_map> maps;
    bool ok = true;
    for (const used_ids& kind : usedIdKinds()) ok = ok && mapIds(db, content, kind, maps[kind.owner], report, errors);
    ok = ok && settleOptions(db, content, report, errors);
    if (ok) applyIdMaps(content, maps);
    if (!ok || !insertAll(db, content, errors)) {
        unit.rollback();
        errors.error("Nothing of the archive was imported.\n");
        return false;
    }
    if (!unit.commit()) return false;
    messages.add(report);
    messages.notef("Imported %zu record%s from \"%s\".\n", content.records.size(),
                   content.records.size() == 1 ? "" : "s", path.c_str());
    return true;
}

}  // namespace sb
