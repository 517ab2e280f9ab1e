#include "records/tellura_soil.h"

#include <algorithm>
#include <cmath>

#include "app/text_format.h"
#include "db/database.h"
#include "db/database_maker.h"
#include "db/table_columns.h"
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

// The columns code names, looked up once by name.
const table_columns& layerColumns() {
    static const table_columns c(
        table_id::soil_layers,
        {"Soil ID", "Layer Number", "Depth", "Wilting Point", "Field Capacity", "Mineral N", "Mineral P", "Mineral S",
         "Initial Relative Water Content", "Transpiration Loss Weighing Factor", "Bulk Density", "TCOEFF",
         "Fraction Of Sand", "Fraction Of Clay", "Organic Matter", "DELTAMIN", "Saturated Conductivity", "pH",
         "ECOEFF"});
    return c;
}
const table_columns& soilColumns() {
    static const table_columns c(
        table_id::soils, {"Soil ID", "Name", "Fraction of Sand", "Fraction of Silt", "Fraction of Clay", "Bulk Density",
                          "Number of Layers", "Number of Layers in Top Level", "Drain", "Base Flow", "Storm Flow",
                          "PRECRO", "FRACRO", "SWFlag", "Labile P Slope Fraction", "Maximum P Sorption"});
    return c;
}

// How a site parameter lands in the soil: a `Soils` column, or a column of
// the layer its subscript names.
enum class site_target { soil, layer, layer_depth, layer_minerals };
struct site_soil_field {
    const char* name;
    site_target target;
    const char* column;
};
const site_soil_field kSiteSoilFields[] = {
    {"AWILT", site_target::layer, "Wilting Point"},
    {"AFIEL", site_target::layer, "Field Capacity"},
    {"ADEP", site_target::layer_depth, "Depth"},
    {"AWTL", site_target::layer, "Transpiration Loss Weighing Factor"},
    {"RWCF", site_target::layer, "Initial Relative Water Content"},
    {"MINERL", site_target::layer_minerals, nullptr},
    {"BULKD", site_target::soil, "Bulk Density"},
    {"BASEF", site_target::soil, "Base Flow"},
    {"CLAY", site_target::soil, "Fraction of Clay"},
    {"SAND", site_target::soil, "Fraction of Sand"},
    {"SILT", site_target::soil, "Fraction of Silt"},
    {"DRAIN", site_target::soil, "Drain"},
    {"FRACRO", site_target::soil, "FRACRO"},
    {"PRECRO", site_target::soil, "PRECRO"},
    {"NLAYER", site_target::soil, "Number of Layers"},
    {"NLAYPG", site_target::soil, "Number of Layers in Top Level"},
    {"PSLSRB", site_target::soil, "Labile P Slope Fraction"},
    {"SORPMX", site_target::soil, "Maximum P Sorption"},
    {"STORMF", site_target::soil, "Storm Flow"},
    {"SWFLAG", site_target::soil, "SWFlag"},
};
// MINERL(i,k): k = 1 N, 2 P, 3 S.
constexpr const char* kMineralColumns[] = {"Mineral N", "Mineral P", "Mineral S"};
constexpr int kMineralElements = static_cast<int>(std::size(kMineralColumns));

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

int soil_layer::depth() const { return integer(layerColumns()["Depth"]); }
void soil_layer::setDepth(int cm) { setNumber(layerColumns()["Depth"], cm); }
double soil_layer::value(std::string_view column) const { return single(layerColumns()[column]); }
void soil_layer::setValue(std::string_view column, double v) { setNumber(layerColumns()[column], v); }

void soil_layer::setKeys(int32_t soilId, int number) {
    const table_columns& c = layerColumns();
    setNumber(c["Soil ID"], soilId);
    setNumber(c["Layer Number"], number);
}

int32_t tellura_soil::soilId() const { return integer(soilColumns()["Soil ID"]); }
void tellura_soil::setSoilId(int32_t id) { setNumber(soilColumns()["Soil ID"], id); }
std::string tellura_soil::name() const { return text(soilColumns()["Name"]); }
void tellura_soil::setName(std::string value) { setText(soilColumns()["Name"], std::move(value)); }
double tellura_soil::value(std::string_view column) const { return number(soilColumns()[column]); }
void tellura_soil::setValue(std::string_view column, double v) { setNumber(soilColumns()[column], v); }

const char* waterHoldingOptionText(int swflag) {
    if (swflag < 0 || swflag >= kWaterHoldingOptionCount) return nullptr;
    return kWaterHoldingOptions[swflag];
}

void tellura_soil::renumberLayers() {
    for (int i = 0; i < kMaxSoilLayers; ++i) layers[static_cast<size_t>(i)].setKeys(soilId(), i + 1);
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
                     layer.value("Field Capacity"), layer.value("Wilting Point"), layer.value("Mineral N"),
                     layer.value("Mineral P"), layer.value("Mineral S"));
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
            if (layers[static_cast<size_t>(i)].value("Transpiration Loss Weighing Factor") == 0.0)
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
            storeValue(*this, soilColumns()[field.column], value);
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
            target.setValue(kMineralColumns[index % kMineralElements], value);
        else target.setValue(field.column, value);
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
    const int soilIdColumn = layerColumns()["Soil ID"], numberColumn = layerColumns()["Layer Number"];
    for (status = rows->moveFirst(); status.ok(); status = rows->moveNext()) {
        const table_record& row = rows->row();
        long id = row.integer(soilIdColumn);
        int number = row.integer(numberColumn);
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
        layer.setKeys(soil.soilId(), i + 1);
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
