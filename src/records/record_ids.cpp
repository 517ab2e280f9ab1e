#include "records/record_ids.h"

#include <algorithm>
#include <initializer_list>

#include "app/text_format.h"
#include "db/database.h"

namespace sb {
namespace {

struct id_column {
    table_id table;
    const char* column;
    bool ofRecords;  // the rows belong to control records by their ID
};

// The highest value of an integer column; 0 when the table is empty or cannot be read.
int32_t highest(database& db, const id_column& c, std::optional<int32_t> replaced) {
    db_status status;
    const std::string filter =
        c.ofRecords && replaced ? strprintf("[ID] <> %ld", static_cast<long>(*replaced)) : std::string();
    auto rows = db.openTable(c.table, filter, strprintf("[%s] DESC", c.column), status);
    if (!rows || !rows->moveFirst().ok()) return 0;
    return rows->row().integer(tableDef(c.table).fieldIndex(c.column));
}

int32_t pastHighest(database& db, std::initializer_list<id_column> columns, std::optional<int32_t> replaced = {}) {
    int32_t last = 0;
    for (const id_column& c : columns) last = std::max(last, highest(db, c, replaced));
    return last + 1;
}

}  // namespace

int32_t nextFreeRecordId(database& db) { return pastHighest(db, {{table_id::control_records, "ID", false}}); }

int32_t nextFreeSoilId(database& db, std::optional<int32_t> replaced) {
    return pastHighest(db, {{table_id::soils, "Soil ID", false}, {table_id::control_records, "Soil ID", true}},
                       replaced);
}

int32_t nextFreeStationId(database& db, std::optional<int32_t> replaced) {
    return pastHighest(db,
                       {{table_id::weather_stations, "ID", false},
                        {table_id::control_records, "Weather ID", true},
                        {table_id::event_blocks, "Weather ID", true}},
                       replaced);
}

bool controlRecordExists(database& db, int32_t id) {
    db_status status;
    auto rows = db.openTable(table_id::control_records, strprintf("[ID] = %ld", static_cast<long>(id)), "", status);
    return rows && rows->moveFirst().ok();
}

}  // namespace sb
