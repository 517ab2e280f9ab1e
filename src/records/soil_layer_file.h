#pragma once
// The daily model's soil layer file ("soils.in"): one layer per line, upper
// and lower depth (cm), bulk density, field capacity, wilting point,
// evaporation coefficient, root fraction, sand, clay, organic matter,
// DELTAMIN, saturated conductivity, pH.
#include <string>
#include <vector>

namespace sb {

class TelluraSoils;

constexpr int kSoilLayerLineLimit = 255;

// Reads a layer file into the soil's layers (at most 14). A value missing at
// the end of a line leaves that property as it was. Each non-empty line after
// the 14th gives "ERROR, too many soil layers in soil file \"%s\".\n" and a
// false result; the 14 layers read are kept.
bool importSoilLayerFile(TelluraSoils& soil, const std::string& path, std::string& errors);
bool importSoilLayerText(TelluraSoils& soil, const std::string& text, const std::string& path, std::string& errors);

// The soil re-layered onto `targetBottoms` (layer bottoms in cm), one line per
// target layer, in the same column order as the import reads.
std::string soilsInText(const TelluraSoils& soil, const std::vector<int>& targetBottoms);
// Writes soilsInText() to the path; "ERROR, can't open file \"%s\".\n" when it cannot.
bool writeSoilsIn(const TelluraSoils& soil, const std::vector<int>& targetBottoms, const std::string& path,
                  std::string& errors);
// The run directory's "soils.in": the soil on its own layers. The daily model
// takes its layer structure from this file, so the soil's layers are written
// as the user entered them (re-layering onto them changes no value).
bool writeSoilsIn(const TelluraSoils& soil, const std::string& path, std::string& errors);

}  // namespace sb
