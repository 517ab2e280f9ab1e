#pragma once
// Spellings of model parameter names: subscripted names, the canonical form
// used to find a column ("som1ci( 1,2)" -> "SOM1CI(1,2)"), and which names
// belong to the soil and to the weather station rather than the control record.
#include <string>
#include <string_view>

namespace sb {

std::string subscripted(std::string_view base, int i);
std::string subscripted(std::string_view base, int i, int j);

// Upper case, quotes and blanks removed, subscripts rewritten without blanks
// or leading zeros. A name whose subscripts cannot be read is only upper-cased.
std::string canonicalParameterName(std::string_view name);

// PRECIP, PRCSTD, PRCSKW, TMN2M, TMX2M with or without a subscript.
bool isClimateName(std::string_view canonicalName);
// The soil's profile names (SAND, BULKD, NLAYER, ...) and layer arrays
// (AWILT, AFIEL, ADEP, AWTL, RWCF, MINERL).
bool isSoilSiteName(std::string_view canonicalName);

// The `Site Data` column of a site-file name: the older one-dimensional forms
// SOM2CI(j) and RCES2(j) are the first row of their matrices.
std::string siteColumnOfName(const std::string& canonicalName);

}  // namespace sb
