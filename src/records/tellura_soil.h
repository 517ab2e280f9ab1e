#pragma once
// Soils are kept apart from control records so that many set-ups share one:
// whole-profile properties (`Soils` row) and up to 14 layers (`Soil Layers` rows).
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "db/table_record.h"

namespace sb {

class database;

constexpr int kMaxSoilLayers = 14;

class TelluraSoilLayers : public table_record {
public:
    TelluraSoilLayers() : table_record(table_id::soil_layers) {}
    int depth() const;            // bottom of the layer, cm from the surface
};

class TelluraSoils : public table_record {
public:
    TelluraSoils() : table_record(table_id::soils) {}
    int32_t soilId() const { return integer(0); }
    std::string name() const;
    int layerCount = 0;
    std::array<TelluraSoilLayers, kMaxSoilLayers> layers;
};

class tellura_soil_list {
public:
    std::vector<TelluraSoils> soils;
    TelluraSoils* find(int32_t soilId);
    const TelluraSoils* find(int32_t soilId) const;
};

}  // namespace sb
