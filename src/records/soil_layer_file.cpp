#include "records/soil_layer_file.h"

#include "app/text_file.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "app/text_format.h"
#include "records/soil_relayer.h"
#include "records/tellura_soil.h"

namespace sb {

namespace {

// The properties of a line after the two depths, in file order.
constexpr soil_layer_column kLineColumns[] = {
    kLayerBulkDensity, kLayerFieldCapacity, kLayerWiltingPoint,  kLayerEcoeff,   kLayerTcoeff,
    kLayerSand,        kLayerClay,          kLayerOrganicMatter, kLayerDeltamin, kLayerSaturatedConductivity,
    kLayerPh,
};

double toReal(const std::string& token) { return std::strtod(token.c_str(), nullptr); }

void readLayerLine(TelluraSoilLayers& layer, const std::vector<std::string>& tokens) {
    // tokens[0], the upper depth, follows from the layer above and is not kept.
    if (tokens.size() > 1) {
        double depth = toReal(tokens[1]);
        layer.setDepth(
            std::isnan(depth) ? 0 : static_cast<int>(std::lround(std::fmin(32767.0, std::fmax(-32768.0, depth)))));
    }
    for (size_t i = 0; i < std::size(kLineColumns) && i + 2 < tokens.size(); ++i)
        layer.setValue(kLineColumns[i], toReal(tokens[i + 2]));
}

}  // namespace

bool importSoilLayerText(TelluraSoils& soil, const std::string& text, const std::string& path, std::string& errors) {
    soil.layerCount = 0;
    bool ok = true;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        // A longer line is cut; the model's own reader takes no more either.
        if (line.size() > static_cast<size_t>(kSoilLayerLineLimit)) line.resize(kSoilLayerLineLimit);
        std::vector<std::string> tokens = splitTokens(line);
        if (tokens.empty()) continue;
        if (soil.layerCount >= kMaxSoilLayers) {
            appendf(errors, "ERROR, too many soil layers in soil file \"%s\".\n", path.c_str());
            ok = false;
            continue;
        }
        TelluraSoilLayers& layer = soil.layers[static_cast<size_t>(soil.layerCount)];
        readLayerLine(layer, tokens);
        ++soil.layerCount;
        layer.setNumber(kLayerSoilId, soil.soilId());
        layer.setNumber(kLayerNumber, soil.layerCount);
    }
    return ok;
}

bool importSoilLayerFile(TelluraSoils& soil, const std::string& path, std::string& errors) {
    std::error_code ec;
    std::ifstream in(path, std::ios::binary);
    if (std::filesystem::is_directory(path, ec) || !in) {
        appendf(errors, "ERROR, can't open file \"%s\".\n", path.c_str());
        return false;
    }
    std::ostringstream buffer;
    buffer << in.rdbuf();
    return importSoilLayerText(soil, buffer.str(), path, errors);
}

std::string soilsInText(const TelluraSoils& soil, const std::vector<int>& targetBottoms) {
    std::vector<int> sourceBottoms = soil.layerDepths();
    std::vector<std::vector<double>> columns;
    for (soil_layer_column column : kLineColumns) {
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

bool writeSoilsIn(const TelluraSoils& soil, const std::vector<int>& targetBottoms, const std::string& path,
                  std::string& errors) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) {
        appendf(errors, "ERROR, can't open file \"%s\".\n", path.c_str());
        return false;
    }
    out << soilsInText(soil, targetBottoms);
    out.close();
    if (!out) {
        appendf(errors, "ERROR, can't open file \"%s\".\n", path.c_str());
        return false;
    }
    return true;
}

bool writeSoilsIn(const TelluraSoils& soil, const std::string& path, std::string& errors) {
    return writeSoilsIn(soil, soil.layerDepths(), path, errors);
}

}  // namespace sb
