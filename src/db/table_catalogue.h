#pragma once
// The catalogue of the project's tables: one global name per table, the
// column layout of each, in creation order. SQL text is always built from these.
#include "db/database_maker.h"

namespace sb {

enum class table_id : int {
    control_records,
    site_data,
    events,
    event_blocks,
    output,
    output_annual,
    output_monthly,
    output_daily,
    output_soil_layers,
    soil_layers,
    soils,
    weather_averages,
    weather_historical_monthly,
    weather_historical_daily,
    weather_stations,
    crops,
    cultivation,
    fertilizer,
    fire,
    harvest,
    graze,
    irrigation,
    omad,
    trees,
    tree_removal,
    record_changes,
    run_history,
    slurm_submissions,
    kept_values,
    kept_option_values,
    record_files,
    count
};

constexpr int kTableCount = static_cast<int>(table_id::count);

// What the rows of a table belong to, told by their owner column: a control
// record's set-up (its ID), what a record keeps only in its own project (its
// run's outputs, its change count; by its ID), a soil (its Soil ID), a weather
// station (its ID) or a management option entry (its name; the table says
// which list). A site archive carries records' set-ups with the soils,
// stations and option entries they use, and nothing kept only at home.
enum class row_owner { unclassified, record, record_local, soil, station, option };

struct table_owner {
    row_owner owner;
    std::string column;  // "" when unclassified
};

// "Control Records", "Site Data", ... exactly as stored in the project file.
const char* tableName(table_id id);
// The full description (columns, types, sizes, keys) of one table.
const database_maker_table& tableDef(table_id id);
table_owner tableOwner(table_id id);
// The output tables: their SINGLE columns keep a missing value (NULL) apart from 0.
bool keepsMissingValues(table_id id);

}  // namespace sb
