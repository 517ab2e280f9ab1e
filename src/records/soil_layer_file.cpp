#include "records/soil_layer_file.h"

#include "app/text_file.h"

#include <cmath>

#include "app/text_format.h"
#include "records/soil_relayer.h"
#include "records/tellura_soil.h"

namespace sb {

namespace {

// The properties of a line after the two depths, in file order.
constexpr const char* kLineColumns[] = {
    "Bulk Density",
    "Field Capacity",
    "Wilting Point",
    "ECOEFF",
    "TCOEFF",
    "Fraction Of Sand",
    "Fraction Of Clay",
    "Organic Matter",
    "DELTAMIN",
    "Saturated Conductivity",
    "pH",
};

constexpr int kMaxDepthCm = 32767;  // the Depth column is 16 bits

// Reads one line's numbers into the layer; false with a message naming the line
// when a token is not a number or the depths cannot be the next layer's.
bool readLayerLine(soil_layer& layer, const std::vector<std::string>& tokens, int depthAbove, long lineNumber,
                   const std::string& path, message_sink& errors) {
    std::vector<double> values;
    for (const std::string& token : tokens) {
        double value = 0;
        if (!readFiniteNumber(token, value)) {
            errors.errorf("ERROR, line %ld of soil layer file \"%s\": \"%s\" is not a number.\n", lineNumber,
                          path.c_str(), token.c_str());
            return false;
        }
        values.push_back(value);
    }
    if (values.size() < 2) {
        errors.errorf("ERROR, line %ld of soil layer file \"%s\" has no lower depth.\n", lineNumber, path.c_str());
        return false;
    }
    // values[0], the upper depth, follows from the layer above and is not kept.
    const long depth = std::lround(values[1]);
    if (depth <= depthAbove || depth > kMaxDepthCm) {
        errors.errorf(
            "ERROR, line %ld of soil layer file \"%s\": the lower depth %s cm must be below the layer above "
            "(%d cm) and at most %d cm.\n",
            lineNumber, path.c_str(), tokens[1].c_str(), depthAbove, kMaxDepthCm);
        return false;
    }
    layer.setDepth(static_cast<int>(depth));
    for (size_t i = 0; i < std::size(kLineColumns) && i + 2 < values.size(); ++i)
        layer.setValue(kLineColumns[i], values[i + 2]);
    return true;
}

}  // namespace

bool readSoilLayerText(const std::string& text, const std::string& path, tellura_soil& soil, message_sink& errors) {
    if (!checkTextLimits(text, path, errors)) return false;
    // Read into a copy: a file with any bad line leaves the soil's layers as they were.
    tellura_soil read = soil;
    read.layerCount = 0;
    bool ok = true;
    long lineNumber = 0;
    forEachLine(text, [&](std::string_view whole) {
        ++lineNumber;
        // A longer line is cut; the model's own reader takes no more either.
        std::string_view line = whole.substr(0, static_cast<size_t>(kSoilLayerLineLimit));
        std::vector<std::string> tokens = splitTokens(line);
        if (tokens.empty()) return;
        if (read.layerCount >= kMaxSoilLayers) {
            errors.errorf("ERROR, too many soil layers in soil file \"%s\".\n", path.c_str());
            ok = false;
            return;
        }
        soil_layer& layer = read.layers[static_cast<size_t>(read.layerCount)];
        const int depthAbove = read.layerCount > 0 ? read.layers[static_cast<size_t>(read.layerCount - 1)].depth() : 0;
        if (!readLayerLine(layer, tokens, depthAbove, lineNumber, path, errors)) {
            ok = false;
            return;
        }
        ++read.layerCount;
        layer.setKeys(read.soilId(), read.layerCount);
    });
    if (ok && read.layerCount == 0) {
        errors.errorf("ERROR, no soil layers in soil file \"%s\".\n", path.c_str());
        ok = false;
    }
    if (!ok) return false;
    // The file is the whole profile: the soil's layer counts follow it.
    read.setValue("Number of Layers", read.layerCount);
    if (read.value("Number of Layers in Top Level") > read.layerCount)
        read.setValue("Number of Layers in Top Level", read.layerCount);
    soil = std::move(read);
    return true;
}

bool readSoilLayerFile(const std::string& path, tellura_soil& soil, message_sink& errors) {
    std::string text;
    if (!readTextFile(path, text, errors, strprintf("ERROR, can't open file \"%s\".\n", path.c_str()))) return false;
    return readSoilLayerText(text, path, soil, errors);
}

std::string soilsInText(const tellura_soil& soil, const std::vector<int>& targetBottoms) {
    std::vector<int> sourceBottoms = soil.layerDepths();
    std::vector<std::vector<double>> columns;
    for (const char* column : kLineColumns) {
        std::vector<double> values;
        for (int i = 0; i < soil.layerCount; ++i) values.push_back(soil.layers[static_cast<size_t>(i)].value(column));
        columns.push_back(relayer(sourceBottoms, values, targetBottoms));
    }
    std::string out;
    for (size_t t = 0; t < targetBottoms.size(); ++t) {
        auto v = [&](size_t c) { return columns[c][t]; };
        appendf(out, "%3d.0%4d.0%6.2f%9.5f%9.5f%6.2f%6.2f%6.2f%6.2f%6.2f%6.2f%9.5f%6.2f\n",
                t == 0 ? 0 : targetBottoms[t - 1], targetBottoms[t], v(0), v(1), v(2), v(3), v(4), v(5), v(6), v(7),
                v(8), v(9), v(10));
    }
    return out;
}

bool writeSoilsIn(const tellura_soil& soil, const std::vector<int>& targetBottoms, const std::string& path,
                  message_sink& errors) {
    if (writeTextFile(path, soilsInText(soil, targetBottoms))) return true;
    errors.errorf("ERROR, can't open file \"%s\".\n", path.c_str());
    return false;
}

bool writeSoilsIn(const tellura_soil& soil, const std::string& path, message_sink& errors) {
    return writeSoilsIn(soil, soil.layerDepths(), path, errors);
}

}  // namespace sb
