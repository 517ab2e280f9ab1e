#include "records/site_archive_content.h"

#include <algorithm>

#include "app/text_format.h"
#include "db/database.h"
#include "db/table_columns.h"
#include "records/tellura_event_block.h"

namespace sb {

namespace {

long asLong(int32_t id) { return static_cast<long>(id); }

// The table that says a record, soil or station exists; the other tables of
// the same owner hold more of it.
table_id mainTable(row_owner owner) {
    switch (owner) {
        case row_owner::soil:
            return table_id::soils;
        case row_owner::station:
            return table_id::weather_stations;
        default:
            return table_id::control_records;
    }
}

int columnOf(table_id table, const char* name) { return tableDef(table).fieldIndex(name); }

// The option list an event's item names; OMAD items are carried but not
// required, as the event checks do not look them up either.
bool eventOptionKind(int type, option_kind& kind, bool& required) {
    required = type != kEventOmad;
    if (type == kEventOmad) {
        kind = option_kind::omad;
        return true;
    }
    return eventItemOptionKind(type, kind);
}

void addOptionNeed(archive_needs& needs, option_kind kind, const std::string& name, std::string what, bool required) {
    // Amounts given inline ("(...)") name no option.
    if (name.empty() || name.front() == '(') return;
    needs.options[kind][toLower(name)].push_back({std::move(what), required});
}

void addRecordNeeds(const site_archive_content& content, archive_needs& needs) {
    const archive_table* records = content.find(table_id::control_records);
    if (!records) return;
    static const table_columns c(table_id::control_records, {"ID", "Initial Crop", "Initial Tree"});
    const int id = c["ID"], crop = c["Initial Crop"], tree = c["Initial Tree"];
    for (const table_record& row : records->rows) {
        const long record = asLong(row.integer(id));
        for (const id_reference& ref : idReferences()) {
            if (ref.table != table_id::control_records) continue;
            const int32_t named = row.integer(columnOf(ref.table, ref.column));
            auto& map = ref.refersTo == row_owner::soil ? needs.soils : needs.stations;
            map[named].push_back(
                {strprintf("record %ld names %s %ld", record,
                           ref.refersTo == row_owner::soil ? "soil" : "weather station", asLong(named)),
                 true});
        }
        addOptionNeed(needs, option_kind::crop, row.text(crop),
                      strprintf("record %ld names the crop option \"%s\"", record, row.text(crop).c_str()), true);
        addOptionNeed(needs, option_kind::tree, row.text(tree),
                      strprintf("record %ld names the tree option \"%s\"", record, row.text(tree).c_str()), true);
    }
}

void addBlockNeeds(const site_archive_content& content, archive_needs& needs) {
    const archive_table* blocks = content.find(table_id::event_blocks);
    if (!blocks) return;
    static const table_columns c(table_id::event_blocks, {"ID", "Block Number", "Weather Choice", "Weather ID"});
    const int id = c["ID"], number = c["Block Number"], choice = c["Weather Choice"], weather = c["Weather ID"];
    for (const table_record& row : blocks->rows) {
        const int32_t station = row.integer(weather);
        // Only weather choices F and C read a station's history; other
        // choices may keep an old station ID, carried when it is there.
        const bool reads = row.integer(choice) == kWeatherFile || row.integer(choice) == kWeatherContinue;
        if (station == 0 && !reads) continue;
        needs.stations[station].push_back({strprintf("record %ld block %d names weather station %ld",
                                                     asLong(row.integer(id)), row.integer(number), asLong(station)),
                                           reads});
    }
}

void addEventNeeds(const site_archive_content& content, archive_needs& needs) {
    const archive_table* events = content.find(table_id::events);
    if (!events) return;
    static const table_columns c(table_id::events, {"ID", "Block Number", "Type", "Item"});
    const int id = c["ID"], block = c["Block Number"], type = c["Type"], item = c["Item"];
    for (const table_record& row : events->rows) {
        option_kind kind;
        bool required = true;
        if (!eventOptionKind(row.integer(type), kind, required)) continue;
        addOptionNeed(needs, kind, row.text(item),
                      strprintf("record %ld block %d names the %s option \"%s\"", asLong(row.integer(id)),
                                row.integer(block), optionWord(kind), row.text(item).c_str()),
                      required);
    }
}

void reportUnmet(const std::vector<archive_needs::need>& list, const char* holder, std::set<std::string>& said,
                 message_sink& errors) {
    for (const auto& need : list)
        if (need.required && said.insert(need.what).second)
            errors.errorf("ERROR, %s, which %s does not hold.\n", need.what.c_str(), holder);
}

bool collectOwned(database& db, row_owner owner, const std::vector<int32_t>& ids, site_archive_content& content,
                  message_sink& errors) {
    bool ok = true;
    for (int i = 0; i < kTableCount; ++i) {
        const table_id table = static_cast<table_id>(i);
        const table_owner o = tableOwner(table);
        if (o.owner != owner || (owner == row_owner::record && table == table_id::control_records)) continue;
        auto& rows = content.table(table).rows;
        for (int32_t id : ids)
            ok = loadRows(db, table, strprintf("[%s] = %ld", o.column.c_str(), asLong(id)), rows, errors) && ok;
    }
    return ok;
}

template <class Map>
std::vector<int32_t> keysOf(const Map& map) {
    std::vector<int32_t> keys;
    for (const auto& entry : map) keys.push_back(entry.first);
    return keys;
}

bool collectOptions(database& db, const archive_needs& needs, bool allOptions, site_archive_content& content,
                    message_sink& errors) {
    bool ok = true;
    for (int i = 0; i < kTableCount; ++i) {
        const table_id table = static_cast<table_id>(i);
        if (tableOwner(table).owner != row_owner::option) continue;
        std::vector<table_record> rows;
        ok = loadRows(db, table, "", rows, errors) && ok;
        for (table_record& row : rows) {
            option_kind kind;
            std::string name;
            if (!optionEntryOf(row, kind, name)) continue;
            auto named = needs.options.find(kind);
            if (allOptions || (named != needs.options.end() && named->second.count(toLower(name))))
                content.table(table).rows.push_back(std::move(row));
        }
    }
    return ok;
}

}  // namespace

bool travelsInArchive(table_id table) {
    switch (tableOwner(table).owner) {
        case row_owner::record:
        case row_owner::soil:
        case row_owner::station:
        case row_owner::option:
            return true;
        default:
            return false;
    }
}

bool optionEntryOf(const table_record& row, option_kind& kind, std::string& name) {
    const table_id table = row.table();
    if (const option_member* member = optionMemberByTable(table)) {
        kind = member->kind;
        name = row.text(columnOf(table, tableOwner(table).column.c_str()));
        return true;
    }
    if (table != table_id::kept_option_values) return false;
    const std::string file = row.text(columnOf(table, "File"));
    for (int i = 0; i < kOptionKindCount; ++i) {
        const option_member& member = optionMember(static_cast<option_kind>(i));
        if (!iequals(member.runFile, file)) continue;
        kind = member.kind;
        name = row.text(columnOf(table, "Option"));
        return true;
    }
    return false;
}

const std::vector<id_reference>& idReferences() {
    static const std::vector<id_reference> references = {
        {table_id::control_records, "Soil ID", row_owner::soil},
        {table_id::control_records, "Weather ID", row_owner::station},
        {table_id::event_blocks, "Weather ID", row_owner::station},
    };
    return references;
}

const char* optionWord(option_kind kind) {
    static const char* const kWords[kOptionKindCount] = {
        "crop", "cultivation", "fertilizer", "fire", "graze", "harvest", "irrigation", "OMAD", "tree", "tree removal"};
    return kWords[static_cast<int>(kind)];
}

archive_table& site_archive_content::table(table_id id) {
    auto at = std::find_if(tables_.begin(), tables_.end(), [&](const archive_table& t) { return t.table >= id; });
    if (at != tables_.end() && at->table == id) return *at;
    return *tables_.insert(at, archive_table{id, {}});
}

const archive_table* site_archive_content::find(table_id id) const {
    for (const auto& t : tables_)
        if (t.table == id) return &t;
    return nullptr;
}

size_t site_archive_content::rowCount(table_id id) const {
    const archive_table* t = find(id);
    return t ? t->rows.size() : 0;
}

std::set<int32_t> site_archive_content::ownerIds(row_owner owner) const {
    std::set<int32_t> ids;
    const table_id main = mainTable(owner);
    if (const archive_table* t = find(main)) {
        const int column = columnOf(main, tableOwner(main).column.c_str());
        for (const auto& row : t->rows) ids.insert(row.integer(column));
    }
    return ids;
}

std::set<std::string> site_archive_content::optionNames(option_kind kind) const {
    std::set<std::string> names;
    const table_id table = optionMember(kind).table;
    if (const archive_table* t = find(table)) {
        const int column = columnOf(table, tableOwner(table).column.c_str());
        for (const auto& row : t->rows) names.insert(toLower(row.text(column)));
    }
    return names;
}

archive_needs recordNeeds(const site_archive_content& content) {
    archive_needs needs;
    addRecordNeeds(content, needs);
    addBlockNeeds(content, needs);
    addEventNeeds(content, needs);
    return needs;
}

bool checkNeedsMet(const site_archive_content& content, const archive_needs& needs, const char* holder,
                   message_sink& errors) {
    const size_t before = errors.count();
    std::set<std::string> said;
    const std::set<int32_t> soils = content.ownerIds(row_owner::soil);
    const std::set<int32_t> stations = content.ownerIds(row_owner::station);
    for (const auto& [id, list] : needs.soils)
        if (!soils.count(id)) reportUnmet(list, holder, said, errors);
    for (const auto& [id, list] : needs.stations)
        if (!stations.count(id)) reportUnmet(list, holder, said, errors);
    for (const auto& [kind, names] : needs.options) {
        const std::set<std::string> held = content.optionNames(kind);
        for (const auto& [name, list] : names)
            if (!held.count(name)) reportUnmet(list, holder, said, errors);
    }
    return errors.count() == before;
}

bool loadRows(database& db, table_id table, const std::string& filter, std::vector<table_record>& out,
              message_sink& errors) {
    db_status status;
    std::unique_ptr<rowset> rows = db.openTable(table, filter, "", status);
    if (!rows) {
        errors.errorf("ERROR, unable to open table [%s].\n", tableName(table));
        appendStatusText(status, errors);
        return false;
    }
    db_status s = rows->moveFirst();
    for (; s.ok(); s = rows->moveNext()) out.push_back(rows->row());
    if (s.endOfRowset()) return true;
    errors.errorf("ERROR, unable to read table [%s].\n", tableName(table));
    appendStatusText(s, errors);
    return false;
}

bool loadSiteArchiveContent(database& db, const std::string& recordFilter, bool allOptions,
                            site_archive_content& content, message_sink& errors) {
    auto& records = content.table(table_id::control_records).rows;
    if (!loadRows(db, table_id::control_records, recordFilter, records, errors)) return false;
    const int id = columnOf(table_id::control_records, "ID");
    for (const auto& row : records) content.records.push_back(row.integer(id));
    if (content.records.empty()) {
        errors.error("ERROR, the selection names no record of the project.\n");
        return false;
    }
    bool ok = collectOwned(db, row_owner::record, content.records, content, errors);
    const archive_needs needs = recordNeeds(content);
    ok = collectOwned(db, row_owner::soil, keysOf(needs.soils), content, errors) && ok;
    ok = collectOwned(db, row_owner::station, keysOf(needs.stations), content, errors) && ok;
    ok = collectOptions(db, needs, allOptions, content, errors) && ok;
    return checkNeedsMet(content, needs, "the project", errors) && ok;
}

}  // namespace sb
