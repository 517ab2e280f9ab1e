#include "records/tellura_soil.h"

#include <algorithm>
#include <cmath>

#include "app/text_format.h"
#include "db/database.h"
#include "db/database_maker.h"
#include "paramfile/field_setter.h"
#include "records/store_session.h"

namespace sb {

namespace {

const char* const kWaterHoldingOptions[kWaterHoldingOptionCount] = {
    "Use actual data from file.",
    "Use G & L for awilt and afiel (-0.33 bar)",
    "Use G & L for awilt and afiel (-0.10 bar)",
    "Use Rawls for awilt and afiel (-0.33 bar)",
    "Use Rawls for awilt and afiel (-0.10 bar)",
    "Use Rawls for afiel (-0.33 bar)",
    "Use Rawls for afiel (-0.10 bar)",
};

// Default layer bottoms (m) the non-daily releases assume: the first
// agricultural release, and the others.
constexpr double kDefaultBottomsA[] = {0.15, 0.3, 0.45, 0.6, 0.9, 1.2, 1.5, 1.8, 1.8, 1.8};
constexpr double kDefaultBottomsB[] = {0.15, 0.3, 0.45, 0.6, 0.9, 1.05, 1.2, 1.35, 1.5};
constexpr int kTranspirationCheckedLayers = 10;
constexpr double kDepthTolerance = 0.001;

// How a site parameter lands in the soil.
enum class site_target { soil, layer, layer_depth, layer_minerals };
struct site_soil_field {
    const char* name;
    site_target target;
    int column;
};
const site_soil_field kSiteSoilFields[] = {
    {"AWILT", site_target::layer, kLayerWiltingPoint},
    {"AFIEL", site_target::layer, kLayerFieldCapacity},
    {"ADEP", site_target::layer_depth, kLayerDepth},
    {"AWTL", site_target::layer, kLayerTranspirationLossFactor},
    {"RWCF", site_target::layer, kLayerInitialRelativeWater},
    {"MINERL", site_target::layer_minerals, kLayerMineralN},
    {"BULKD", site_target::soil, kSoilBulkDensity},
    {"BASEF", site_target::soil, kSoilBaseFlow},
    {"CLAY", site_target::soil, kSoilClay},
    {"SAND", site_target::soil, kSoilSand},
    {"SILT", site_target::soil, kSoilSilt},
    {"DRAIN", site_target::soil, kSoilDrain},
    {"FRACRO", site_target::soil, kSoilFracro},
    {"PRECRO", site_target::soil, kSoilPrecro},
    {"NLAYER", site_target::soil, kSoilNumberOfLayers},
    {"NLAYPG", site_target::soil, kSoilLayersInTopLevel},
    {"PSLSRB", site_target::soil, kSoilLabilePSlope},
    {"SORPMX", site_target::soil, kSoilMaxPSorption},
    {"STORMF", site_target::soil, kSoilStormFlow},
    {"SWFLAG", site_target::soil, kSoilSwFlag},
};
constexpr int kMineralElements = 3;  // N, P, S

// Byte columns keep whole values within 0..255, so that saving cannot fail on them.
void storeValue(table_record& record, int column, double value) {
    int type = record.def().fields()[static_cast<size_t>(column)].type;
    if (type == kTypeByte || type == kTypeByteSigned) {
        double whole = std::isnan(value) ? 0.0 : std::trunc(value);
        value = std::fmin(255.0, std::fmax(0.0, whole));
    }
    record.setNumber(column, value);
}

int wholeCentimetres(double value) {
    if (std::isnan(value)) return 0;
    return static_cast<int>(std::lround(std::fmin(32767.0, std::fmax(-32768.0, value))));
}

void checkDepths(const tellura_soil& soil, const double* bottoms, int tableSize, int layersChecked,
                 message_sink& errors) {
    std::string name = soil.name();
    for (int i = 1; i <= layersChecked; ++i) {
        double depthM = soil.layers[static_cast<size_t>(i - 1)].depth() / 100.0;
        // Layers past the table compare with 0 and so always warn.
        double expected = i <= tableSize ? bottoms[i - 1] : 0.0;
        if (depthM - expected > kDepthTolerance)
            errors.warningf(
                "WARNING, Soil %s layer %d depth (%.3fm) does not match TELLURA default layer %d "
                "thickness (%.2fm).\n",
                name.c_str(), i, depthM, i, expected);
    }
}

}  // namespace

const char* waterHoldingOptionText(int swflag) {
    if (swflag < 0 || swflag >= kWaterHoldingOptionCount) return nullptr;
    return kWaterHoldingOptions[swflag];
}

void tellura_soil::renumberLayers() {
    for (int i = 0; i < kMaxSoilLayers; ++i) {
        layers[static_cast<size_t>(i)].setNumber(kLayerSoilId, soilId());
        layers[static_cast<size_t>(i)].setNumber(kLayerNumber, i + 1);
    }
}

bool tellura_soil::insertLayer(int position, message_sink& errors) {
    if (layerCount >= kMaxSoilLayers) {
        errors.error("Number of layers is already at maximum");
        return false;
    }
    if (position < 0 || position > layerCount) {
        errors.error("Unable to insert layer.");
        return false;
    }
    for (int i = layerCount; i > position; --i) layers[static_cast<size_t>(i)] = layers[static_cast<size_t>(i - 1)];
    layers[static_cast<size_t>(position)].clear();
    ++layerCount;
    renumberLayers();
    return true;
}

bool tellura_soil::deleteLayer(int position, message_sink& errors) {
    if (position < 0 || position >= layerCount) {
        errors.error("Unable to delete layer.");
        return false;
    }
    for (int i = position; i + 1 < layerCount; ++i) layers[static_cast<size_t>(i)] = layers[static_cast<size_t>(i + 1)];
    --layerCount;
    layers[static_cast<size_t>(layerCount)].clear();
    renumberLayers();
    return true;
}

std::string tellura_soil::layerListText(int position) const {
    const soil_layer& layer = layers.at(static_cast<size_t>(position));
    return strprintf("%d: %d cm - afiel=%lg awilt=%lg N=%lg P=%lg S=%lg", position + 1, layer.depth(),
                     layer.value(kLayerFieldCapacity), layer.value(kLayerWiltingPoint), layer.value(kLayerMineralN),
                     layer.value(kLayerMineralP), layer.value(kLayerMineralS));
}

std::vector<int> tellura_soil::layerDepths() const {
    std::vector<int> depths;
    for (int i = 0; i < layerCount; ++i) depths.push_back(layers[static_cast<size_t>(i)].depth());
    return depths;
}

void tellura_soil::checkForRun(int version, message_sink& errors) const {
    if (version < 4 && layerCount > 0) {
        std::string soilName = name();
        for (int i = 0; i < std::min(layerCount, kTranspirationCheckedLayers); ++i)
            if (layers[static_cast<size_t>(i)].single(kLayerTranspirationLossFactor) == 0.0f)
                errors.warningf("WARNING, Soil %s transpiration loss factor is zero in layer %d.\n", soilName.c_str(),
                                i + 1);
    }
    if (version == 4) return;  // the daily model takes its layers from soils.in
    if (version == 1) checkDepths(*this, kDefaultBottomsA, 10, layerCount, errors);
    else checkDepths(*this, kDefaultBottomsB, 9, std::min(layerCount, 9), errors);
}

bool tellura_soil::setFieldBySiteName(std::string_view name, double value, message_sink& errors) {
    for (const site_soil_field& field : kSiteSoilFields) {
        if (field.target == site_target::soil) {
            if (!iequals(name, field.name)) continue;
            storeValue(*this, field.column, value);
            return true;
        }
        field_setter setter(name, value, errors);
        int index = field.target == site_target::layer_minerals
                        ? setter.locate2(field.name, kMaxSoilLayers, kMineralElements)
                        : setter.locate1(field.name, kMaxSoilLayers);
        if (index == field_setter::kNoMatch) continue;
        if (index < 0) return true;  // ours, but out of range: reported by the setter
        int layer = field.target == site_target::layer_minerals ? index / kMineralElements : index;
        soil_layer& target = layers[static_cast<size_t>(layer)];
        if (field.target == site_target::layer_depth) target.setDepth(wholeCentimetres(value));
        else if (field.target == site_target::layer_minerals)
            target.setValue(static_cast<soil_layer_column>(field.column + index % kMineralElements), value);
        else target.setValue(static_cast<soil_layer_column>(field.column), value);
        if (layer + 1 > layerCount) {
            layerCount = layer + 1;
            renumberLayers();
        }
        return true;
    }
    return false;
}

tellura_soil* tellura_soils::find(int32_t soilId) {
    for (tellura_soil& soil : soils)
        if (soil.soilId() == soilId) return &soil;
    return nullptr;
}

const tellura_soil* tellura_soils::find(int32_t soilId) const {
    for (const tellura_soil& soil : soils)
        if (soil.soilId() == soilId) return &soil;
    return nullptr;
}

bool tellura_soils::load(database& db, message_sink& errors) {
    soils.clear();
    db_status status;
    std::unique_ptr<rowset> rows = db.openTable(table_id::soils, "", "", status);
    if (!rows) {
        errors.errorf("Unable to open table %s\n", tableName(table_id::soils));
        return false;
    }
    for (status = rows->moveFirst(); status.ok(); status = rows->moveNext()) {
        tellura_soil soil;
        static_cast<table_record&>(soil) = rows->row();
        soil.layerCount = 0;
        soils.push_back(std::move(soil));
    }
    if (!status.endOfRowset()) {
        appendStatusText(status, errors);
        return false;
    }
    rows = db.openTable(table_id::soil_layers, "", "", status);
    if (!rows) {
        errors.errorf("Unable to open table %s\n", tableName(table_id::soil_layers));
        return false;
    }
    bool ok = true;
    for (status = rows->moveFirst(); status.ok(); status = rows->moveNext()) {
        const table_record& row = rows->row();
        long id = row.integer(kLayerSoilId);
        int number = row.integer(kLayerNumber);
        tellura_soil* soil = find(static_cast<int32_t>(id));
        if (!soil) {
            errors.errorf("ERROR, layer found but no soil, ID = %ld.\n", id);
            continue;
        }
        if (number < 1 || number > kMaxSoilLayers) {
            errors.errorf("ERROR, soil layer number %d out of range 1 to %d, soil ID = %ld.\n", number, kMaxSoilLayers,
                          id);
            ok = false;
            continue;
        }
        static_cast<table_record&>(soil->layers[static_cast<size_t>(number - 1)]) = row;
        soil->layerCount = std::max(soil->layerCount, number);
    }
    if (!status.endOfRowset()) {
        appendStatusText(status, errors);
        return false;
    }
    return ok;
}

namespace {

// The soil's layer rows and its own row; each failure is reported and the
// other table is still cleared.
bool deleteSoilRows(int32_t soilId, database& db, message_sink& errors) {
    bool ok = true;
    for (table_id table : {table_id::soil_layers, table_id::soils}) {
        db_status status = db.execute(
            strprintf("DELETE * FROM `%s` WHERE [Soil ID] = %d", tableName(table), static_cast<int>(soilId)));
        if (status.failed()) {
            errors.errorf("ERROR, unable to delete from [%s]\n", tableName(table));
            ok = false;
        }
    }
    return ok;
}

}  // namespace

bool deleteSoil(database& db, int32_t soilId, message_sink& errors) {
    store_session unit(db, errors);
    if (!unit.ok()) return false;
    return unit.commitIf(deleteSoilRows(soilId, db, errors));
}

bool saveSoil(database& db, const tellura_soil& soil, message_sink& errors) {
    store_session unit(db, errors);
    if (!unit.ok()) return false;
    bool ok = deleteSoilRows(soil.soilId(), db, errors);
    db_status status;
    std::unique_ptr<rowset> rows = db.openTable(table_id::soils, "", "", status);
    if (!rows) {
        errors.errorf("Unable to open table %s\n", tableName(table_id::soils));
        return false;
    }
    status = rows->insert(soil);
    if (status.failed()) {
        errors.error("ERROR, unable to insert soil record.\n");
        appendStatusText(status, errors);
        ok = false;
    }
    rows = db.openTable(table_id::soil_layers, "", "", status);
    if (!rows) {
        errors.errorf("Unable to open table %s\n", tableName(table_id::soil_layers));
        return false;
    }
    for (int i = 0; i < soil.layerCount; ++i) {
        soil_layer layer = soil.layers[static_cast<size_t>(i)];
        layer.setNumber(kLayerSoilId, soil.soilId());
        layer.setNumber(kLayerNumber, i + 1);
        status = rows->insert(layer);
        if (status.failed()) {  // every refused layer is reported; then nothing is kept
            errors.error("ERROR, unable to insert soil layer.\n");
            appendStatusText(status, errors);
            ok = false;
        }
    }
    rows.reset();
    return unit.commitIf(ok);
}

}  // namespace sb
