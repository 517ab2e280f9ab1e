#pragma once
// Soils are kept apart from control records so that many set-ups share one:
// whole-profile properties (`Soils` row) and up to 14 layers (`Soil Layers` rows).
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/message_sink.h"
#include "db/table_record.h"

namespace sb {

class database;

constexpr int kMaxSoilLayers = 14;

// A layer's properties are read and written by their `Soil Layers` column
// names ("Wilting Point", "Mineral N", ...), each found once.
class soil_layer : public table_record {
public:
    soil_layer() : table_record(table_id::soil_layers) {}
    int depth() const;  // bottom of the layer, cm from the surface
    void setDepth(int cm);
    double value(std::string_view column) const;
    void setValue(std::string_view column, double v);
    // The soil's ID and the layer's number (1 for the top) in its own columns.
    void setKeys(int32_t soilId, int number);
};

// The water-holding option texts; the option's value is its position (0..6).
constexpr int kWaterHoldingOptionCount = 7;
// nullptr outside 0..6.
const char* waterHoldingOptionText(int swflag);

class tellura_soil : public table_record {
public:
    tellura_soil() : table_record(table_id::soils) {}
    int32_t soilId() const;
    void setSoilId(int32_t id);
    std::string name() const;
    void setName(std::string value);
    // A value of the `Soils` row by its column name ("Number of Layers", "SWFlag", ...).
    double value(std::string_view column) const;
    void setValue(std::string_view column, double v);

    // Layers 0 .. layerCount-1 are the soil's; the Layer Number of each is its position + 1.
    int layerCount = 0;
    std::array<soil_layer, kMaxSoilLayers> layers;

    // Makes room at `position` (0..layerCount) for a new empty layer. Refused at
    // 14 layers with "Number of layers is already at maximum", and for a
    // position outside 0..layerCount with "Unable to insert layer.".
    bool insertLayer(int position, message_sink& errors);
    // Removes the layer at `position` (0..layerCount-1), the deeper ones move
    // up; anything else is refused with "Unable to delete layer.".
    bool deleteLayer(int position, message_sink& errors);
    // "%d: %d cm - afiel=%lg awilt=%lg N=%lg P=%lg S=%lg" for the editor's layer list.
    std::string layerListText(int position) const;
    // The bottoms of the soil's own layers, in cm: the layer structure its
    // "soils.in" is written on.
    std::vector<int> layerDepths() const;

    // The pre-run warnings for a model version code; never fails the run.
    void checkForRun(int version, message_sink& errors) const;

    // A soil value from an imported site parameter file: AWILT(i), AFIEL(i),
    // ADEP(i), AWTL(i), RWCF(i), MINERL(i,k) (k = 1 N, 2 P, 3 S), BULKD, BASEF,
    // CLAY, SAND, SILT, DRAIN, FRACRO, PRECRO, NLAYER, NLAYPG, PSLSRB, SORPMX,
    // STORMF, SWFLAG; case ignored. Setting layer i's value makes the soil hold
    // at least i layers. False for other names; a layer subscript beyond 14
    // gives the "exceeds array size" message.
    bool setFieldBySiteName(std::string_view name, double value, message_sink& errors);

private:
    void renumberLayers();
};

class tellura_soils {
public:
    std::vector<tellura_soil> soils;

    tellura_soil* find(int32_t soilId);
    const tellura_soil* find(int32_t soilId) const;

    // Replaces the list with every soil of the project and its layers.
    bool load(database& db, message_sink& errors);
};

// Replaces the soil's `Soils` row and its `Soil Layers` rows in one session;
// after any failure nothing of it is kept.
bool saveSoil(database& db, const tellura_soil& soil, message_sink& errors);
// Removes the soil's `Soils` row and its `Soil Layers` rows in one session.
bool deleteSoil(database& db, int32_t soilId, message_sink& errors);

}  // namespace sb
