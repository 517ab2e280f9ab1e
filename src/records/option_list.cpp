#include "records/option_list.h"

#include <array>
#include <utility>

#include "app/text_format.h"
#include "db/database.h"
#include "records/kept_values.h"
#include "records/store_session.h"

namespace sb {

namespace {

template <size_t... Kinds>
std::unique_ptr<option_list> makeOf(option_kind kind, std::index_sequence<Kinds...>) {
    std::unique_ptr<option_list> list;
    ((static_cast<option_kind>(Kinds) == kind
          ? (list = std::make_unique<option_list_of<static_cast<option_kind>(Kinds)>>(), 0)
          : 0),
     ...);
    return list;
}

}  // namespace

std::unique_ptr<option_list> makeOptionList(option_kind kind) {
    return makeOf(kind, std::make_index_sequence<kOptionKindCount>{});
}

option_record& option_list::addRecord(std::string name) {
    std::unique_ptr<tellura_input> record = makeRecord();
    record->name = std::move(name);
    return static_cast<option_record&>(add(std::move(record)));
}

bool option_list::saveToDatabase(database& db, message_sink& errors) const {
    const option_member& m = member();
    const char* table = tableName(m.table);
    store_session unit(db, errors, m.sessionErrorMessage());
    if (!unit.ok()) return false;
    bool ok = true;
    db_status status = db.execute(strprintf("DELETE * FROM `%s`", table));
    if (status.failed()) {
        errors.errorf("ERROR, unable to delete from [%s]\n", table);
        ok = false;
    }
    std::unique_ptr<rowset> rows = db.openTable(m.table, "", "", status);
    if (!rows) {
        errors.errorf("Unable to open table %s\n", table);
        return false;
    }
    std::vector<option_kept_values> kept;
    for (size_t i = 0; i < size(); ++i) {
        status = rows->insert(recordAt(i).toRow());
        if (status.failed()) {
            errors.errorf("ERROR, unable to insert into table %s\n", table);
            appendStatusText(status, errors);
            return false;
        }
        if (!recordAt(i).kept.empty()) kept.push_back({recordAt(i).name, recordAt(i).kept});
    }
    rows.reset();
    ok = saveOptionKeptValues(db, m.runFile, kept, errors) && ok;
    return unit.commitIf(ok);
}

bool option_list::loadFromDatabase(database& db, message_sink& errors) {
    const option_member& m = member();
    clear();
    db_status status;
    std::unique_ptr<rowset> rows = db.openTable(m.table, "", "", status);
    if (!rows) {
        errors.errorf("Unable to open table %s\n", tableName(m.table));
        return false;
    }
    for (status = rows->moveFirst(); status.ok(); status = rows->moveNext()) {
        std::unique_ptr<tellura_input> record = makeRecord();
        static_cast<option_record&>(*record).fromRow(rows->row());
        add(std::move(record));
    }
    if (!status.endOfRowset()) {
        errors.errorf("ERROR, unable to read table %s\n", tableName(m.table));
        appendStatusText(status, errors);
        return false;
    }
    std::vector<option_kept_values> kept;
    if (!loadOptionKeptValues(db, m.runFile, kept, errors)) return false;
    for (option_kept_values& option : kept)
        if (option_record* record = findRecord(option.option)) record->kept = std::move(option.values);
    return true;
}

}  // namespace sb
