#pragma once
// One simulation set-up: the Control Records row (run control and the fixed
// parameters are columns of the row itself), its Site Data row and its event
// blocks. The outputs of its last run are kept beside it, by the output code
// (src/modeloutput), which reads and stores them under the record's ID.
#include <cstdint>
#include <string>
#include <vector>

#include "app/message_sink.h"
#include "db/table_record.h"
#include "records/kept_values.h"
#include "records/record_changes.h"
#include "records/tellura_event_block.h"

namespace sb {

class database;
class tellura_soils;
class tellura_weather_stations;

// Accessor record of `Control Records`.
class control_record_row : public table_record {
public:
    control_record_row() : table_record(table_id::control_records) {}
};

// Accessor record of `Site Data`: initial values and the daily-step site parameters.
class site_data_row : public table_record {
public:
    site_data_row() : table_record(table_id::site_data) {}
};

class tellura_control_record {
public:
    // A new record with the program's default values (a recognisable default set-up).
    tellura_control_record();

    control_record_row row;
    site_data_row site;
    std::vector<tellura_event_block> blocks;
    // Values of its files that no column holds, and further files its
    // schedule needs (read from a set-up, written back into run directories).
    kept_values kept;
    std::vector<record_file> files;
    bool modified = false;
    bool runDone = false;  // set by a successful model run
    // How many times the record had been saved when it was read (kChangesUnknown for
    // a record not read from the project): a save warns when it no longer is.
    int64_t changeCount = kChangesUnknown;

    int32_t id() const;
    // Also sets the site row's ID; a record given another ID is another record,
    // saved without comparing change counts.
    void setId(int32_t id);
    std::string description() const;
    int32_t soilId() const;
    int32_t weatherId() const;
    std::string initialCrop() const;
    std::string initialTree() const;

    // Column values by name (e.g. "CO2SYS", "DEC5(1)") of the Control Records row.
    double value(std::string_view column) const { return row.number(column); }
};

// Reads the whole record (row, site data, blocks and events, kept values and
// files). When the row is
// missing or its table cannot be opened the record keeps its defaults; the
// other parts are all read even when one of them fails.
bool loadControlRecord(database& db, int32_t id, tellura_control_record& record, message_sink& errors);
// Replaces the record and everything stored under its ID, in one session: the
// row, the site data, the blocks and events, the kept values and files, and
// the record's soil when `soils` holds it. A failing step does not stop the
// others (each reports), but then nothing is kept: the record stays as stored
// before. Inside a caller's session
// (which may store more under the ID) it all commits with that session.
// Another save of the same record waits for this one; when someone else saved
// the record since it was read, a warning says so and this save still wins whole.
bool saveControlRecord(database& db, tellura_control_record& record, message_sink& errors,
                       const tellura_soils* soils = nullptr);
// Removes the record and every row stored under its ID (site data, blocks,
// events, outputs), in one session. A record that is not there is an error.
bool deleteControlRecord(database& db, int32_t id, message_sink& errors);

// The site data row alone.
bool loadSiteData(database& db, int32_t id, site_data_row& site, message_sink& errors);
bool saveSiteData(database& db, int32_t id, const site_data_row& site, message_sink& errors);

// The text form of a record (the clipboard's plain text); the output code
// appends the record's annual outputs to it. Empty when the record's weather
// station is not in the list.
std::string controlRecordText(const tellura_control_record& record, const tellura_weather_stations& stations);

}  // namespace sb
