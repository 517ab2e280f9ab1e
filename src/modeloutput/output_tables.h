#pragma once
// Storing a control record's outputs in the five output tables and reading them
// back. A store replaces everything stored earlier under the record's ID: the
// old rows are deleted, then the new ones inserted through one prepared insert
// per table, all inside one session (one transaction) for the whole record,
// committed only when every table was stored. Within a caller's session (a
// record saved with its outputs) the store is part of the caller's transaction.
#include <cstdint>
#include <functional>
#include <string>

#include "app/message_sink.h"

namespace sb {

class database;
struct tellura_outputs;

// All five tables. Sets the ID of every record to `id`. Within a table a row
// whose key is already stored (a year read twice) is warned about and skipped;
// any other failure ends the store and keeps nothing of it: the outputs stored
// earlier stay as they were.
bool saveOutputs(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors);

// Replaces `outputs` with the rows stored under `id`: annual, monthly and daily
// rows in year order, at most 14 soil layers.
bool loadOutputs(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors);

// Where saveOutputs and loadOutputs put and find a record's outputs: the
// output tables, unless a test puts another store in their place to inject
// failures. An empty member stands for the output tables.
struct output_store {
    std::function<bool(database&, int32_t id, tellura_outputs&, message_sink&)> save;
    std::function<bool(database&, int32_t id, tellura_outputs&, message_sink&)> load;
};
void setOutputStore(output_store store);

// The single tables, for callers that save one kind only.
bool saveEndOfRunOutput(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors);
bool saveAnnualOutput(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors);
bool saveMonthlyOutput(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors);
bool saveDailyOutput(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors);
bool saveSoilLayerOutput(database& db, int32_t id, tellura_outputs& outputs, message_sink& errors);

}  // namespace sb
