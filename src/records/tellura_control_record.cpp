#include "records/tellura_control_record.h"

#include "app/text_format.h"
#include "db/database.h"
#include "db/table_columns.h"
#include "records/record_ids.h"
#include "records/store_session.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"

namespace sb {

namespace {

long asLong(int32_t id) { return static_cast<long>(id); }

// The columns used on every read and write, looked up once by name.
const table_columns& columns() {
    static const table_columns c(table_id::control_records,
                                 {"ID", "Description", "Soil ID", "Weather ID", "Initial Crop", "Initial Tree"});
    return c;
}

// Reads the one row of `table` with this ID into `target`; false (and the row
// unchanged) when there is none or the table cannot be opened.
enum class row_read { found, missing, unopened };
row_read loadOneRow(database& db, table_id table, int32_t id, table_record& target, db_status& status) {
    std::unique_ptr<rowset> rows = db.openTable(table, strprintf("ID = %ld", asLong(id)), "", status);
    if (!rows) return row_read::unopened;
    if (!rows->moveFirst().ok()) return row_read::missing;
    target = rows->row();
    return row_read::found;
}

bool deleteById(database& db, const char* form, table_id table, int32_t id, message_sink& errors) {
    std::string sql = strprintf(form, tableName(table), asLong(id));
    if (db.execute(sql).ok()) return true;
    errors.errorf("ERROR, unable to delete from [%s]\n", tableName(table));
    return false;
}

constexpr const char* kDeleteRecordRows = "DELETE FROM `%s` WHERE ID = %ld";
constexpr const char* kDeleteDependentRows = "DELETE * FROM `%s` WHERE ID = %ld";

// The row alone; false with `stop` set when the table cannot be opened, which
// ends the whole write.
bool saveControlRow(database& db, const control_record_row& row, int32_t id, message_sink& errors, bool& stop) {
    bool ok = deleteById(db, kDeleteRecordRows, table_id::control_records, id, errors);
    db_status status;
    std::unique_ptr<rowset> rows = db.openTable(table_id::control_records, "", "", status);
    if (!rows) {
        errors.errorf("ERROR, cannot open table [%s].\n", tableName(table_id::control_records));
        stop = true;
        return false;
    }
    db_status inserted = rows->insert(row);
    if (!inserted.ok()) {
        errors.error("ERROR, unable to insert control record.\n");
        appendStatusText(inserted, errors);
        return false;
    }
    return ok;
}

bool saveRecordSoil(database& db, int32_t soilId, const tellura_soils* soils, message_sink& errors) {
    if (!soils) return true;
    const tellura_soil* soil = soils->find(soilId);
    return soil ? saveSoil(db, *soil, errors) : true;
}

}  // namespace

int32_t tellura_control_record::id() const { return row.integer(columns()["ID"]); }

void tellura_control_record::setId(int32_t id) {
    if (id != this->id()) changeCount = kChangesUnknown;
    row.setNumber(columns()["ID"], id);
    site.setNumber(std::string_view("ID"), id);
}

std::string tellura_control_record::description() const { return row.text(columns()["Description"]); }
int32_t tellura_control_record::soilId() const { return row.integer(columns()["Soil ID"]); }
int32_t tellura_control_record::weatherId() const { return row.integer(columns()["Weather ID"]); }
std::string tellura_control_record::initialCrop() const { return row.text(columns()["Initial Crop"]); }
std::string tellura_control_record::initialTree() const { return row.text(columns()["Initial Tree"]); }

// --- Site data -----------------------------------------------------------------

bool loadSiteData(database& db, int32_t id, site_data_row& site, message_sink& errors) {
    db_status status;
    switch (loadOneRow(db, table_id::site_data, id, site, status)) {
        case row_read::found:
            return true;
        case row_read::missing:
            errors.error("Error, no matching records in Site table\n");
            return false;
        case row_read::unopened:
            errors.error("ERROR, unable to open site table.\n");
            return false;
    }
    return false;
}

bool saveSiteData(database& db, int32_t id, const site_data_row& site, message_sink& errors) {
    store_session s(db, errors);
    if (!s.ok()) return false;
    bool ok = deleteById(db, kDeleteDependentRows, table_id::site_data, id, errors);
    db_status status;
    std::unique_ptr<rowset> rows = db.openTable(table_id::site_data, "", "", status);
    if (!rows) {
        errors.error("ERROR, unable to write site table.\n");
        appendStatusText(status, errors);
        return false;
    }
    site_data_row keyed = site;
    keyed.setNumber(std::string_view("ID"), id);
    db_status inserted = rows->insert(keyed);
    if (!inserted.ok()) {
        errors.errorf("ERROR, cannot insert into table [%s]\n", tableName(table_id::site_data));
        appendStatusText(inserted, errors);
        return false;
    }
    return s.commitIf(ok);
}

// --- Whole record --------------------------------------------------------------

bool loadControlRecord(database& db, int32_t id, tellura_control_record& record, message_sink& errors) {
    db_status status;
    control_record_row row;
    switch (loadOneRow(db, table_id::control_records, id, row, status)) {
        case row_read::unopened:
            errors.error("ERROR, unable to open control record table.\n");
            appendStatusText(status, errors);
            return false;
        case row_read::missing:
            errors.errorf("ERROR, can't find record, ID=%ld, in [Control Records].\n", asLong(id));
            return false;
        case row_read::found:
            break;
    }
    record.row = row;
    record.changeCount = loadChangeCount(db, id);
    bool ok = loadSiteData(db, id, record.site, errors);
    record.site.setNumber(std::string_view("ID"), id);
    ok = loadEventBlocks(db, id, record.blocks, errors) && ok;
    ok = loadKeptValues(db, id, record.kept, errors) && ok;
    ok = loadRecordFiles(db, id, record.files, errors) && ok;
    record.modified = false;
    return ok;
}

bool saveControlRecord(database& db, tellura_control_record& record, message_sink& errors, const tellura_soils* soils) {
    store_session s(db, errors);
    if (!s.ok()) return false;
    const int32_t id = record.id();
    const int64_t changeCount = claimRecordSave(db, id, record.changeCount, errors);
    bool stop = false;
    bool ok = saveControlRow(db, record.row, id, errors, stop);
    if (stop) return false;  // the old record stays as it was
    ok = saveSiteData(db, id, record.site, errors) && ok;
    ok = saveEventBlocks(db, id, record.blocks, errors) && ok;
    ok = saveKeptValues(db, id, record.kept, errors) && ok;
    ok = saveRecordFiles(db, id, record.files, errors) && ok;
    ok = saveRecordSoil(db, record.soilId(), soils, errors) && ok;
    // Any part that failed leaves the whole record as it was stored before.
    if (!s.commitIf(ok)) return false;
    record.modified = false;
    record.changeCount = changeCount;
    return true;
}

bool deleteControlRecord(database& db, int32_t id, message_sink& errors) {
    store_session s(db, errors);
    if (!s.ok()) return false;
    // Asked to delete what is not there is a mistake (a wrong ID), not a success.
    if (!controlRecordExists(db, id)) {
        errors.errorf("ERROR, can't find record, ID=%ld, in [Control Records].\n", asLong(id));
        return false;
    }
    bool ok = deleteRecordChanges(db, id, errors);
    ok = deleteById(db, kDeleteRecordRows, table_id::control_records, id, errors) && ok;
    for (table_id table : {table_id::site_data, table_id::event_blocks, table_id::events, table_id::output,
                           table_id::output_annual, table_id::output_monthly, table_id::output_daily,
                           table_id::output_soil_layers, table_id::kept_values, table_id::record_files})
        ok = deleteById(db, kDeleteDependentRows, table, id, errors) && ok;
    return s.commitIf(ok);
}

// --- Text form -----------------------------------------------------------------

std::string controlRecordText(const tellura_control_record& record, const tellura_weather_stations& stations) {
    std::string text;
    const tellura_weather_station* station = stations.find(record.weatherId());
    if (!station) return text;  // the text form needs the station's means
    text += "Soilbench Record\t\n";
    appendf(text, "%ld\n", asLong(record.id()));
    appendf(text, "Soil ID\t%ld\n", asLong(record.soilId()));
    const site_data_row& s = record.site;
    appendf(text, "ivauto\t%d\tnelem\t%d\tsite.EPNFA\t%g\t%g\tsite.EPNFS\t%g\t%g\n", s.integer(s.column("IVAUTO")),
            s.integer(s.column("NELEM")), s.number("EPNFA(1)"), s.number("EPNFA(2)"), s.number("EPNFS(1)"),
            s.number("EPNFS(2)"));
    appendClimateMeansText(*station, text);
    for (const tellura_event_block& block : record.blocks) appendEventBlockText(block, text);
    return text;
}

}  // namespace sb
