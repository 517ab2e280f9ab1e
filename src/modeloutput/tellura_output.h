#pragma once
// The values read back from a run, held per control record in memory and
// stored in the output tables. Each kind is a row of its table; the key
// columns (ID, Year, Month, Julian Day, Layer Number) are columns of the row.
#include <array>
#include <cstdint>
#include <vector>

#include "db/table_record.h"

namespace sb {

// The key columns of an output table, found by name once per table: the
// record's ID, then Year or Layer Number, then Month or Julian Day (-1 where
// the table has no such key). The other columns are the table's variables.
struct output_key_columns {
    int id = -1;
    int first = -1;
    int second = -1;
    bool holds(int column) const { return column == id || column == first || column == second; }
};
const output_key_columns& outputKeyColumns(table_id table);

class tellura_output : public table_record {
public:
    using table_record::table_record;
    int32_t id() const { return integer(keys().id); }
    void setId(int32_t id) { setNumber(keys().id, id); }

protected:
    const output_key_columns& keys() const { return outputKeyColumns(table()); }
    int first() const { return integer(keys().first); }
    int second() const { return integer(keys().second); }
    void setKeys(int first, int second) {
        const output_key_columns& k = keys();
        setNumber(k.first, first);
        if (k.second >= 0) setNumber(k.second, second);
    }
};

// End-of-run state, one row per control record (`Output`).
class end_of_run_output : public tellura_output {
public:
    end_of_run_output() : tellura_output(table_id::output) {}
};

// One year of a record's run (`Output Annual`).
class annual_output : public tellura_output {
public:
    annual_output() : tellura_output(table_id::output_annual) {}
    int year() const { return first(); }
    void setYear(int year) { setKeys(year, 0); }
};

// One month of a record's run (`Output Monthly`).
class monthly_output : public tellura_output {
public:
    monthly_output() : tellura_output(table_id::output_monthly) {}
    int year() const { return first(); }
    int month() const { return second(); }
    void setYearMonth(int year, int month) { setKeys(year, month); }
};

// One day of a record's run (`Output Daily`).
class daily_output : public tellura_output {
public:
    daily_output() : tellura_output(table_id::output_daily) {}
    int year() const { return first(); }
    int julianDay() const { return second(); }
    void setYearDay(int year, int day) { setKeys(year, day); }
};

// One soil layer at the end of a record's run (`Output Soil Layers`).
class soil_layer_output : public tellura_output {
public:
    soil_layer_output() : tellura_output(table_id::output_soil_layers) {}
    int layerNumber() const { return first(); }
    void setLayerNumber(int layer) { setKeys(layer, 0); }
};

constexpr int kMonthlyBuckets = 200;  // monthly records are kept in lists by year modulo 200
constexpr int kMaxOutputSoilLayers = 14;

// All outputs of one control record, as the readers fill them.
struct tellura_outputs {
    end_of_run_output endOfRun;
    bool hasEndOfRun = false;
    std::vector<annual_output> annual;
    std::array<std::vector<monthly_output>, kMonthlyBuckets> monthly;
    std::vector<daily_output> daily;
    std::vector<soil_layer_output> soilLayers;

    void clear();
    bool empty() const;
    // The end-of-run record, its values missing until a reader gives them.
    end_of_run_output& endOfRunRecord();
    // The daily record of a year and day of the year, or a new one (values
    // missing) added at the end: daily files are read in time order.
    daily_output& dailyFor(int year, int day);
    // Find the record of a year (and month), or make one and add it (its
    // values missing until a reader gives them).
    annual_output& annualFor(int year);
    monthly_output& monthlyFor(int year, int month);
    // The record of a soil layer, made when missing; layers are kept in number order.
    soil_layer_output& soilLayerFor(int layer);
    // Monthly records in year, month order (the buckets flattened).
    std::vector<const monthly_output*> monthlyInOrder() const;
    size_t monthlyCount() const;
};

}  // namespace sb
