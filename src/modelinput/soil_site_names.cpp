#include "modelinput/soil_site_names.h"

#include <algorithm>
#include <array>

#include "app/text_format.h"

namespace sb {

namespace {

struct name_column {
    const char* siteName;
    const char* column;
};

// Profile-level soil parameters as the site file names them.
constexpr std::array<name_column, 16> kProfileNames{{
    {"SAND", "Fraction of Sand"},
    {"SILT", "Fraction of Silt"},
    {"CLAY", "Fraction of Clay"},
    {"ROCK", "Fraction of Rock"},
    {"BULKD", "Bulk Density"},
    {"NLAYER", "Number of Layers"},
    {"NLAYPG", "Number of Layers in Top Level"},
    {"DRAIN", "Drain"},
    {"BASEF", "Base Flow"},
    {"STORMF", "Storm Flow"},
    {"PRECRO", "PRECRO"},
    {"FRACRO", "FRACRO"},
    {"SWFLAG", "SWFlag"},
    {"PH", "pH"},
    {"PSLSRB", "Labile P Slope Fraction"},
    {"SORPMX", "Maximum P Sorption"},
}};

// Per-layer arrays of the site and fixed files.
constexpr std::array<name_column, 5> kLayerNames{{
    {"AWILT", "Wilting Point"},
    {"AFIEL", "Field Capacity"},
    {"AWTL", "Transpiration Loss Weighing Factor"},
    {"RWCF", "Initial Relative Water Content"},
    {"ADEP", "Depth"},
}};

constexpr std::array<const char*, 3> kMineralColumns{"Mineral N", "Mineral P", "Mineral S"};

const name_column* findName(std::string_view name, const name_column* first, const name_column* last) {
    auto found = std::find_if(first, last, [name](const name_column& entry) { return iequals(name, entry.siteName); });
    return found == last ? nullptr : found;
}

bool validLayer(int layer) { return layer >= 1 && layer <= kMaxSoilLayers; }

}  // namespace

const char* soilColumnOfSiteName(std::string_view siteName) {
    const name_column* entry = findName(siteName, kProfileNames.data(), kProfileNames.data() + kProfileNames.size());
    return entry ? entry->column : nullptr;
}

double soilSiteValue(const tellura_soil& soil, std::string_view siteName) {
    const char* column = soilColumnOfSiteName(siteName);
    return column ? soil.number(column) : 0.0;
}

double soilLayerValue(const tellura_soil& soil, std::string_view layerName, int layer) {
    const name_column* entry = findName(layerName, kLayerNames.data(), kLayerNames.data() + kLayerNames.size());
    if (!entry || !validLayer(layer)) return 0.0;
    return soil.layers[static_cast<size_t>(layer - 1)].number(entry->column);
}

double soilMineralValue(const tellura_soil& soil, int layer, int element) {
    if (!validLayer(layer) || element < 1 || element > 3) return 0.0;
    return soil.layers[static_cast<size_t>(layer - 1)].number(kMineralColumns[static_cast<size_t>(element - 1)]);
}

bool setSoilBySiteName(tellura_soil& soil, std::string_view name, double value, message_sink& errors) {
    if (soil.setFieldBySiteName(name, value, errors)) return true;
    // ROCK and PH are site-file soil values too.
    const char* column = soilColumnOfSiteName(name);
    return column != nullptr && soil.setNumber(column, value);
}

}  // namespace sb
