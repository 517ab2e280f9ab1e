#include "modeloutput/output_tables.h"

#include <memory>
#include <utility>

#include "app/text_format.h"
#include "db/database.h"
#include "modeloutput/tellura_output.h"
#include "records/store_session.h"

namespace sb {

namespace {

// How one table's rows are told apart in the store's messages.
struct output_table_kind {
    table_id table;
    bool warnDuplicates;  // false: every insert failure is an error (soil layers)
    // " Year=%d", " Year=%d Month=%d", ... from the row's key columns; the row
    // is of the kind's own type
    std::string (*keyText)(const tellura_output& row);
};

std::string yearKey(const tellura_output& r) {
    return strprintf(" Year=%d", static_cast<const annual_output&>(r).year());
}
std::string monthKey(const tellura_output& r) {
    const auto& month = static_cast<const monthly_output&>(r);
    return strprintf(" Year=%d Month=%d", month.year(), month.month());
}
std::string dayKey(const tellura_output& r) {
    const auto& day = static_cast<const daily_output&>(r);
    return strprintf(" Year=%d Julian Day=%d", day.year(), day.julianDay());
}
std::string layerKey(const tellura_output& r) {
    return strprintf(" Layer=%d", static_cast<const soil_layer_output&>(r).layerNumber());
}

const output_table_kind kAnnualKind{table_id::output_annual, true, yearKey};
const output_table_kind kMonthlyKind{table_id::output_monthly, true, monthKey};
const output_table_kind kDailyKind{table_id::output_daily, true, dayKey};
const output_table_kind kLayerKind{table_id::output_soil_layers, false, layerKey};

// The delete-then-insert of one table, kept only when committed.
class table_store {
public:
    table_store(database& db, table_id table, int32_t id, message_sink& errors)
        : db_(db), table_(table), id_(id), errors_(errors), session_(db, errors) {}

    // Session, delete of the record's old rows, and the table opened for inserting.
    bool begin() {
        const char* name = tableName(table_);
        if (!session_.ok()) return false;
        db_status status = db_.execute(strprintf("DELETE * FROM `%s` WHERE ID = %ld", name, static_cast<long>(id_)));
        if (status.failed()) {
            errors_.error(std::string("ERROR, unable to delete from [") + name + "]\n");
            appendStatusText(status, errors_);
            return false;
        }
        rows_ = db_.openTable(table_, strprintf("[ID] = %ld", static_cast<long>(id_)), "", status);
        if (!rows_) {
            errors_.error(std::string("Unable to open table ") + name + "\n");
            appendStatusText(status, errors_);
            return false;
        }
        return true;
    }

    db_status insert(tellura_output& record) {
        record.setId(id_);
        return rows_->insert(record);
    }

    // Every record under the store's ID, in order, until a failure other than a duplicate.
    bool insertAllKeyed(const std::vector<tellura_output*>& records, const output_table_kind& kind) {
        std::vector<const table_record*> rows;
        rows.reserve(records.size());
        for (tellura_output* record : records) {
            record->setId(id_);
            rows.push_back(record);
        }
        bool ok = true;
        rows_->insertAll(rows, [&](size_t index, const db_status& status) {
            ok = refused(*records[index], status, kind);
            return ok;
        });
        return ok;
    }

    bool commit() {
        rows_.reset();
        return session_.commit();
    }

private:
    // False when the store must end; a skipped duplicate is not a failure.
    bool refused(const tellura_output& record, const db_status& status, const output_table_kind& kind) {
        const char* name = tableName(table_);
        std::string key = kind.keyText(record);
        if (kind.warnDuplicates && status.code == kStatusIntegrityViolation) {
            errors_.warningf("WARNING, duplicate year cannot be inserted into table [%s] ID=%ld%s\n", name,
                             static_cast<long>(id_), key.c_str());
            appendStatusText(status, errors_);
            return true;
        }
        errors_.errorf("ERROR, unable to insert into table [%s] ID=%ld%s\n", name, static_cast<long>(id_), key.c_str());
        appendStatusText(status, errors_);
        return false;
    }

    database& db_;
    table_id table_;
    int32_t id_;
    message_sink& errors_;
    store_session session_;
    std::unique_ptr<rowset> rows_;
};

bool saveKeyed(database& db, int32_t id, const std::vector<tellura_output*>& records, const output_table_kind& kind,
               message_sink& errors) {
    table_store store(db, kind.table, id, errors);
    return store.begin() && store.insertAllKeyed(records, kind) && store.commit();
}

template <class Container>
std::vector<tellura_output*> pointersTo(Container& records) {
    std::vector<tellura_output*> out;
    out.reserve(records.size());
    for (auto& record : records) out.push_back(&record);
    return out;
}

std::unique_ptr<rowset> openForReading(database& db, table_id table, int32_t id, const char* order,
                                       message_sink& errors) {
    db_status status;
    auto rows = db.openTable(table, strprintf("[ID] = %ld", static_cast<long>(id)), order, status);
    if (!rows) {
        errors.error(std::string("Unable to open table ") + tableName(table) + "\n");
        appendStatusText(status, errors);
    }
    return rows;
}

// Calls take(row) for each row; false when the table could not be read.
template <class Take>
bool loadRows(database& db, table_id table, int32_t id, const char* order, message_sink& errors, Take take) {
    auto rows = openForReading(db, table, id, order, errors);
    if (!rows) return false;
    db_status status = rows->moveFirst();
    while (status.ok()) {
        if (!take(rows->row())) break;
        status = rows->moveNext();
    }
    if (status.failed()) {
        appendStatusText(status, errors);
        return false;
    }
    return true;
}

template <class Record>
Record recordFrom(const table_record& row) {
    Record r;
    static_cast<table_record&>(r) = row;
    return r;
}

}  // namespace

bool saveEndOfRunOutput(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors) {
    table_store store(db, table_id::output, id, errors);
    if (!store.begin()) return false;
    if (!outputs.hasEndOfRun) return store.commit();
    db_status status = store.insert(outputs.endOfRun);
    if (!status.failed()) return store.commit();
    errors.error("ERROR, unable to insert Tellura Output.\n");
    appendStatusText(status, errors);
    return false;
}

bool saveAnnualOutput(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors) {
    return saveKeyed(db, id, pointersTo(outputs.annual), kAnnualKind, errors);
}

bool saveMonthlyOutput(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors) {
    // In year and month order, so that a table browsed by its insertion order reads naturally.
    std::vector<tellura_output*> ordered;
    for (const auto* record : outputs.monthlyInOrder()) ordered.push_back(const_cast<monthly_output*>(record));
    return saveKeyed(db, id, ordered, kMonthlyKind, errors);
}

bool saveDailyOutput(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors) {
    return saveKeyed(db, id, pointersTo(outputs.daily), kDailyKind, errors);
}

bool saveSoilLayerOutput(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors) {
    return saveKeyed(db, id, pointersTo(outputs.soilLayers), kLayerKind, errors);
}

namespace {

bool saveOutputTables(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors) {
    // One outer session: the five stores nest inside it and are kept together or not at all.
    store_session whole(db, errors);
    if (!whole.ok()) return false;
    // Every table is tried, so that each failure is reported.
    bool ok = saveEndOfRunOutput(db, id, outputs, errors);
    ok = saveAnnualOutput(db, id, outputs, errors) && ok;
    ok = saveMonthlyOutput(db, id, outputs, errors) && ok;
    ok = saveDailyOutput(db, id, outputs, errors) && ok;
    ok = saveSoilLayerOutput(db, id, outputs, errors) && ok;
    return whole.commitIf(ok);
}

bool loadOutputTables(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors) {
    outputs.clear();
    bool ok = loadRows(db, table_id::output, id, "", errors, [&](const table_record& row) {
        static_cast<table_record&>(outputs.endOfRun) = row;
        outputs.hasEndOfRun = true;
        return false;  // one row per record
    });
    ok = loadRows(db, table_id::output_annual, id, "[Year]", errors,
                  [&](const table_record& row) {
                      outputs.annual.push_back(recordFrom<annual_output>(row));
                      return true;
                  }) &&
         ok;
    ok = loadRows(db, table_id::output_monthly, id, "[Year]", errors,
                  [&](const table_record& row) {
                      monthly_output month = recordFrom<monthly_output>(row);
                      outputs.monthlyFor(month.year(), month.month()) = std::move(month);
                      return true;
                  }) &&
         ok;
    ok = loadRows(db, table_id::output_daily, id, "[Year]", errors,
                  [&](const table_record& row) {
                      outputs.daily.push_back(recordFrom<daily_output>(row));
                      return true;
                  }) &&
         ok;
    bool tooManyLayers = false;
    ok = loadRows(db, table_id::output_soil_layers, id, "", errors,
                  [&](const table_record& row) {
                      if (outputs.soilLayers.size() >= static_cast<size_t>(kMaxOutputSoilLayers)) {
                          errors.error(std::string("ERROR, too many soil layers in table [") +
                                       tableName(table_id::output_soil_layers) + "]");
                          tooManyLayers = true;
                          return false;
                      }
                      outputs.soilLayers.push_back(recordFrom<soil_layer_output>(row));
                      return true;
                  }) &&
         ok;
    return ok && !tooManyLayers;
}

// The output tables, or the store a test put in their place.
output_store& currentStore() {
    static output_store store{saveOutputTables, loadOutputTables};
    return store;
}

}  // namespace

void setOutputStore(output_store store) {
    if (!store.save) store.save = saveOutputTables;
    if (!store.load) store.load = loadOutputTables;
    currentStore() = std::move(store);
}

bool saveOutputs(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors) {
    return currentStore().save(db, id, outputs, errors);
}

bool loadOutputs(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors) {
    return currentStore().load(db, id, outputs, errors);
}

}  // namespace sb
