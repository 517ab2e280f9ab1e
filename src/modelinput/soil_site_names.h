#pragma once
// The soil as the site and fixed parameter files name it: profile values
// (SAND, BULKD, ...) and per-layer values (AWILT(i), MINERL(i,k), ADEP(i), ...),
// mapped onto the columns of `Soils` and `Soil Layers`. One table serves the
// writers and the importers.
#include <string>
#include <string_view>

#include "app/message_sink.h"
#include "records/tellura_soil.h"

namespace sb {

// The soil column behind a profile-level site name ("SAND" -> "Fraction of Sand");
// nullptr when the name is not a profile-level soil name.
const char* soilColumnOfSiteName(std::string_view siteName);

// A profile value by its site name (0 for an unknown name).
double soilSiteValue(const tellura_soil& soil, std::string_view siteName);

// Layer values of slot `layer` (1-based, up to the 14 slots a soil keeps).
double soilLayerValue(const tellura_soil& soil, std::string_view layerName, int layer);
// MINERL(layer, element), element 1 N, 2 P, 3 S.
double soilMineralValue(const tellura_soil& soil, int layer, int element);

// Sets a soil field by its site-file name (the soil's own setter, plus ROCK
// and PH, which the site file carries too). False when it is no soil name.
bool setSoilBySiteName(tellura_soil& soil, std::string_view name, double value, message_sink& errors);

}  // namespace sb
