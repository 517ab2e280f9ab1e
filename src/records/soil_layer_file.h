#pragma once
// The daily model's soil layer file ("soils.in"): one layer per line, upper
// and lower depth (cm), bulk density, field capacity, wilting point,
// evaporation coefficient, root fraction, sand, clay, organic matter,
// DELTAMIN, saturated conductivity, pH.
#include <string>
#include <vector>

#include "app/message_sink.h"

namespace sb {

class tellura_soil;

constexpr int kSoilLayerLineLimit = 255;

// Reads a layer file into the soil's layers (at most 14) and sets the soil's
// "Number of Layers" to their count. A value missing at the end of a line
// leaves that property as it was. Every line is checked first: a token that is
// not a number, a lower depth missing or not below the layer above, no layer
// at all, or a non-empty line after the 14th (each giving "ERROR, too many soil
// layers in soil file \"%s\".\n") fails the import with a message naming the
// line, and the soil is left exactly as it was.
bool readSoilLayerFile(const std::string& path, tellura_soil& soil, message_sink& errors);
bool readSoilLayerText(const std::string& text, const std::string& path, tellura_soil& soil, message_sink& errors);

// The soil re-layered onto `targetBottoms` (layer bottoms in cm), one line per
// target layer, in the same column order as the import reads.
std::string soilsInText(const tellura_soil& soil, const std::vector<int>& targetBottoms);
// Writes soilsInText() to the path; "ERROR, can't open file \"%s\".\n" when it cannot.
bool writeSoilsIn(const tellura_soil& soil, const std::vector<int>& targetBottoms, const std::string& path,
                  message_sink& errors);
// The run directory's "soils.in": the soil on its own layers. The daily model
// takes its layer structure from this file, so the soil's layers are written
// as the user entered them (re-layering onto them changes no value).
bool writeSoilsIn(const tellura_soil& soil, const std::string& path, message_sink& errors);

}  // namespace sb
