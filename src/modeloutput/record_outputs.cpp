#include "modeloutput/record_outputs.h"

#include "modeloutput/output_tables.h"
#include "modeloutput/tellura_output.h"
#include "records/record_clipboard.h"
#include "records/store_session.h"
#include "records/tellura_control_record.h"

namespace sb {

bool loadControlRecordWithOutputs(database& db, int32_t id, tellura_control_record& record, tellura_outputs& outputs,
                                  message_sink& errors) {
    outputs.clear();
    const bool ok = loadControlRecord(db, id, record, errors);
    // A record whose row was read carries its ID, even when another part failed.
    if (!ok && record.id() != id) return false;
    return loadOutputs(db, id, outputs, errors) && ok;
}

bool saveControlRecordWithOutputs(database& db, tellura_control_record& record, tellura_outputs& outputs,
                                  message_sink& errors, const tellura_soils* soils) {
    // The outer session makes the record's own session and the output store one transaction.
    store_session s(db, errors);
    if (!s.ok()) return false;
    bool ok = saveControlRecord(db, record, errors, soils);
    ok = saveOutputs(db, record.id(), outputs, errors) && ok;
    return s.commitIf(ok);
}

bool copyRecord(database& db, int32_t sourceId, int32_t newId, message_sink& errors) {
    tellura_control_record record;
    tellura_outputs outputs;
    if (!loadControlRecordWithOutputs(db, sourceId, record, outputs, errors)) return false;
    record.setId(newId);
    return saveControlRecordWithOutputs(db, record, outputs, errors);
}

bool pasteRecord(database& db, const std::optional<std::string>& idItem, int32_t newId, message_sink& errors) {
    int32_t sourceId = 0;
    if (!record_clipboard::decodeId(idItem, sourceId, errors)) return false;
    return copyRecord(db, sourceId, newId, errors);
}

}  // namespace sb
