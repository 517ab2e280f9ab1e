#pragma once
// One simulation set-up: the Control Records row (run control and the fixed
// parameters are columns of the row itself), its Site Data row, its event
// blocks, and the outputs of its last run.
#include <cstdint>
#include <string>
#include <vector>

#include "db/table_record.h"
#include "modeloutput/tellura_output.h"
#include "records/tellura_event_block.h"

namespace sb {

class database;

// Accessor record of `Control Records`.
class TelluraControlRecords : public table_record {
public:
    TelluraControlRecords() : table_record(table_id::control_records) {}
};

// Accessor record of `Site Data`: initial values and the daily-step site parameters.
class TelluraSiteData : public table_record {
public:
    TelluraSiteData() : table_record(table_id::site_data) {}
};

class tellura_control_record {
public:
    // A new record with the program's default values (a recognisable default set-up).
    tellura_control_record();

    TelluraControlRecords row;
    TelluraSiteData site;
    std::vector<tellura_event_block> blocks;
    tellura_outputs outputs;
    bool modified = false;
    bool runDone = false;  // set by a successful model run

    int32_t id() const;
    void setId(int32_t id);  // also sets the site row's ID
    std::string description() const;
    int32_t soilId() const;
    int32_t weatherId() const;
    std::string initialCrop() const;
    std::string initialTree() const;

    // Column values by name (e.g. "CO2SYS", "DEC5(1)") of the Control Records row.
    double value(std::string_view column) const { return row.number(column); }
};

// Reads the whole record (row, site data, blocks and events, outputs when asked).
bool readControlRecord(database& db, int32_t id, bool withOutputs, tellura_control_record& record,
                       std::string& errors);
// Replaces the record and everything stored under its ID, in one session.
bool writeControlRecord(tellura_control_record& record, database& db, std::string& errors);

}  // namespace sb
