#include "modeloutput/output_to_input.h"

#include "app/text_format.h"
#include "db/database.h"
#include "db/table_catalogue.h"
#include "modeloutput/record_outputs.h"
#include "modeloutput/tellura_output.h"
#include "records/record_ids.h"
#include "records/store_session.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"

namespace sb {

namespace {

// Output column -> site column, in the order the values are copied.
const char* const kCopiedValues[][2] = {
    {"aglcis(1)", "AGLCIS(1)"}, {"aglcis(2)", "AGLCIS(2)"}, {"aglive(1)", "AGLIVE(1)"}, {"aglive(2)", "AGLIVE(2)"},
    {"aglive(3)", "AGLIVE(3)"}, {"aminrl(1)", "AMINRL(1)"}, {"aminrl(2)", "AMINRL(2)"}, {"aminrl(3)", "AMINRL(3)"},
};

const char* const kSoilLayerValues[] = {"Mineral N", "Mineral P", "Mineral S", "Initial Relative Water Content"};

// None of the copied values given (each zero or missing).
bool allZero(const table_record& output) {
    for (const auto& pair : kCopiedValues) {
        int column = output.column(pair[0]);
        if (!output.isMissing(column) && output.number(column) != 0.0) return false;
    }
    return true;
}

// A value the run did not give (missing) leaves the input as it is.
void copyValues(const table_record& output, tellura_control_record& record) {
    for (const auto& pair : kCopiedValues) {
        int column = output.column(pair[0]);
        if (!output.isMissing(column)) record.site.setNumber(pair[1], output.number(column));
    }
    record.modified = true;
}

long asLong(int32_t id) { return static_cast<long>(id); }

// Whether a record other than `id` names the soil; false when that cannot be told.
bool soilIsShared(database& db, int32_t soilId, int32_t id, bool& shared, message_sink& errors) {
    db_status status;
    auto rows = db.openTable(table_id::control_records,
                             strprintf("[Soil ID] = %ld AND [ID] <> %ld", asLong(soilId), asLong(id)), "", status);
    if (rows) status = rows->moveFirst();
    if (!rows || status.failed()) {
        errors.errorf("ERROR, unable to read table [%s]\n", tableName(table_id::control_records));
        appendStatusText(status, errors);
        return false;
    }
    shared = status.ok();
    return true;
}

// The first `characters` characters of UTF-8 text, never cutting one in two.
std::string firstCharacters(const std::string& text, size_t characters) {
    size_t seen = 0;
    for (size_t i = 0; i < text.size(); ++i)
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80 && seen++ == characters) return text.substr(0, i);
    return text;
}

// The new soil's name tells where it came from; the old name is cut, not the
// origin, when both do not fit the column.
std::string derivedSoilName(const std::string& name, int32_t id) {
    const std::string origin = strprintf(" (from outputs of record %ld)", asLong(id));
    const auto& fields = tableDef(table_id::soils).fields();
    const size_t width =
        static_cast<size_t>(fields[static_cast<size_t>(tableDef(table_id::soils).fieldIndex("Name"))].size);
    return firstCharacters(name, width > origin.size() ? width - origin.size() : 0) + origin;
}

// The record's soil with the outputs' layers, in `changed` (the one soil to
// save); a shared soil becomes a new one that the record is pointed at.
// False when the soil cannot be filled; `changed` stays empty when no layer
// of the outputs is one of the soil's.
bool fillRecordSoil(database& db, const tellura_outputs& outputs, tellura_control_record& record,
                    tellura_soils& changed, message_sink& errors) {
    tellura_soils soils;
    if (!soils.load(db, errors)) return false;
    tellura_soil* found = soils.find(record.soilId());
    tellura_soil soil = found ? *found : tellura_soil();
    if (!fillSoilFromOutput(outputs, found ? &soil : nullptr, errors)) return !errors.hasErrors();
    bool shared = false;
    if (!soilIsShared(db, record.soilId(), record.id(), shared, errors)) return false;
    if (shared) {
        const int32_t oldId = soil.soilId();
        soil.setSoilId(nextFreeSoilId(db));
        soil.setName(derivedSoilName(soil.name(), record.id()));
        record.row.setNumber("Soil ID", soil.soilId());
        errors.notef(
            "Soil %ld is used by other records too: the soil layers went into new soil %ld, \"%s\", which "
            "record %ld now uses.\n",
            asLong(oldId), asLong(soil.soilId()), soil.name().c_str(), asLong(record.id()));
    } else {
        errors.notef("Soil %ld took the soil layers of the outputs of record %ld.\n", asLong(soil.soilId()),
                     asLong(record.id()));
    }
    changed.soils.push_back(std::move(soil));
    return true;
}

}  // namespace

bool copyAnnualOutputToInput(const tellura_outputs& outputs, tellura_control_record& record, message_sink& errors) {
    if (outputs.annual.empty()) {
        errors.error("No annual output exists for record.\n");
        return false;
    }
    const auto& last = outputs.annual.back();
    if (allZero(last)) return false;
    copyValues(last, record);
    return true;
}

bool copyMonthlyOutputToInput(const tellura_outputs& outputs, tellura_control_record& record, message_sink& errors) {
    auto ordered = outputs.monthlyInOrder();
    if (ordered.empty()) {
        errors.error("No monthly output exists for record.\n");
        return false;
    }
    copyValues(*ordered.back(), record);
    errors.note("Monthly copied for record.\n");
    return true;
}

bool fillSoilFromOutput(const tellura_outputs& outputs, tellura_soil* soil, message_sink& errors) {
    if (!soil) {
        errors.error("ERROR, No soil record to fill.\n");
        return false;
    }
    bool filled = false;
    for (const auto& layerOutput : outputs.soilLayers) {
        int number = layerOutput.layerNumber();
        if (number < 1 || number > soil->layerCount || number > kMaxSoilLayers) continue;
        auto& layer = soil->layers[static_cast<size_t>(number - 1)];
        for (const char* column : kSoilLayerValues)
            if (!layerOutput.isMissing(layerOutput.column(column))) layer.setNumber(column, layerOutput.number(column));
        filled = true;
    }
    return filled;
}

bool copyOutputToInput(database& db, int32_t id, message_sink& errors) {
    tellura_control_record record;
    tellura_outputs outputs;
    if (!loadControlRecordWithOutputs(db, id, record, outputs, errors)) return false;
    // Annual values when the run stored them, else the last month's. What was
    // done is said only once all of it is kept.
    message_sink annualMessages, done;
    const bool siteCopied =
        copyAnnualOutputToInput(outputs, record, annualMessages) || copyMonthlyOutputToInput(outputs, record, done);
    if (!siteCopied) {
        errors.add(annualMessages);
        errors.add(done);
        done.clear();
    }
    // What is read to decide (the soil's users, the free soil ID) is read in
    // the session that saves, so nothing saved in between is overwritten.
    store_session s(db, errors);
    if (!s.ok()) return false;
    tellura_soils changed;
    if (!outputs.soilLayers.empty() && !fillRecordSoil(db, outputs, record, changed, done)) {
        errors.add(done);
        return false;
    }
    if (!siteCopied && changed.soils.empty()) return false;
    if (!saveControlRecord(db, record, errors, &changed) || !s.commit()) return false;
    errors.add(done);
    return true;
}

}  // namespace sb
