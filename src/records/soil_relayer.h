#pragma once
// Moves a layered soil property onto another layer structure: each target
// layer gets the thickness-weighted mean of the source layers it overlaps;
// below the deepest source layer the deepest source value carries on.
#include <vector>

namespace sb {

// `sourceBottoms` and `targetBottoms` are layer bottoms from the surface (cm),
// each profile starting at 0; `sourceValues` has one value per source layer.
// Returns one value per target layer (all 0 when there is no source layer).
std::vector<double> relayer(const std::vector<int>& sourceBottoms, const std::vector<double>& sourceValues,
                            const std::vector<int>& targetBottoms);

}  // namespace sb
