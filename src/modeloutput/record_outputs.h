#pragma once
// A control record together with the outputs of its last run. The record
// (src/records) knows nothing of outputs: these read both, save both in one
// session, so that a record and its outputs commit or fail together, and copy
// both under another ID.
#include <cstdint>
#include <optional>
#include <string>

#include "app/message_sink.h"

namespace sb {

class database;
class tellura_control_record;
class tellura_soils;
struct tellura_outputs;

// The record, then its outputs. As with the record's own parts, a failing part
// does not stop the others; only when the record's row is missing (or its table
// cannot be opened) are the outputs left empty.
bool loadControlRecordWithOutputs(database& db, int32_t id, tellura_control_record& record, tellura_outputs& outputs,
                                  message_sink& errors);

// Replaces the record (with its soil when `soils` holds it) and its outputs, in
// one session. A failing part does not stop the others, but then nothing of it
// is kept.
bool saveControlRecordWithOutputs(database& db, tellura_control_record& record, tellura_outputs& outputs,
                                  message_sink& errors, const tellura_soils* soils = nullptr);

// Copies a record, whole and with its outputs, under `newId` in the same
// project (an existing record of that ID is replaced).
bool copyRecord(database& db, int32_t sourceId, int32_t newId, message_sink& errors);
// The same for the record named by the clipboard's ID item.
bool pasteRecord(database& db, const std::optional<std::string>& idItem, int32_t newId, message_sink& errors);

}  // namespace sb
