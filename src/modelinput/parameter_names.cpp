#include "modelinput/parameter_names.h"

#include <array>
#include <cctype>
#include <vector>

#include "app/text_file.h"
#include "app/text_format.h"
#include "modelinput/soil_site_names.h"

namespace sb {

namespace {

std::string_view baseOf(std::string_view name) { return name.substr(0, name.find('(')); }

// Subscripts can only be this large: larger ones are no subscripts at all.
constexpr long long kMaxSubscript = 999999;

// Subscripts between "(" and ")", separated by commas; false when any is not a
// whole number (a sign alone, too many digits, anything but digits).
bool readSubscripts(std::string_view inner, std::vector<long>& subscripts) {
    size_t start = 0;
    while (start <= inner.size()) {
        size_t comma = inner.find(',', start);
        std::string_view part =
            trim(inner.substr(start, comma == std::string_view::npos ? std::string_view::npos : comma - start));
        long long value = 0;
        if (!readWholeNumber(part, -kMaxSubscript, kMaxSubscript, value)) return false;
        subscripts.push_back(static_cast<long>(value));
        if (comma == std::string_view::npos) break;
        start = comma + 1;
    }
    return true;
}

}  // namespace

std::string subscripted(std::string_view base, int i) {
    return strprintf("%.*s(%d)", static_cast<int>(base.size()), base.data(), i);
}

std::string subscripted(std::string_view base, int i, int j) {
    return strprintf("%.*s(%d,%d)", static_cast<int>(base.size()), base.data(), i, j);
}

std::string canonicalParameterName(std::string_view name) {
    name = trim(name);
    while (!name.empty() && (name.front() == '\'' || name.front() == '"')) name.remove_prefix(1);
    while (!name.empty() && (name.back() == '\'' || name.back() == '"')) name.remove_suffix(1);
    std::string upper = toUpper(trim(name));
    size_t open = upper.find('(');
    size_t close = upper.rfind(')');
    if (open == std::string::npos || close == std::string::npos || close < open) return upper;
    std::vector<long> subscripts;
    if (!readSubscripts(std::string_view(upper).substr(open + 1, close - open - 1), subscripts)) return upper;
    std::string out(trim(std::string_view(upper).substr(0, open)));
    out += '(';
    for (size_t k = 0; k < subscripts.size(); ++k) {
        if (k > 0) out += ',';
        out += std::to_string(subscripts[k]);
    }
    out += ')';
    return out;
}

bool isClimateName(std::string_view canonicalName) {
    std::string_view base = baseOf(canonicalName);
    for (const char* climate : {"PRECIP", "PRCSTD", "PRCSKW", "TMN2M", "TMX2M"})
        if (base == climate) return true;
    return false;
}

bool isSoilSiteName(std::string_view canonicalName) {
    std::string_view base = baseOf(canonicalName);
    if (base.size() != canonicalName.size()) {  // subscripted: a layer array
        for (const char* layerArray : {"AWILT", "AFIEL", "ADEP", "AWTL", "RWCF", "MINERL"})
            if (base == layerArray) return true;
        return false;
    }
    return soilColumnOfSiteName(canonicalName) != nullptr;
}

std::string siteColumnOfName(const std::string& canonicalName) {
    std::string_view base = baseOf(canonicalName);
    if ((base == "SOM2CI" || base == "RCES2") && canonicalName.find(',') == std::string::npos &&
        base.size() != canonicalName.size()) {
        std::string_view inner =
            std::string_view(canonicalName).substr(base.size() + 1, canonicalName.size() - base.size() - 2);
        long long j = 0;
        if (readWholeNumber(inner, -kMaxSubscript, kMaxSubscript, j)) return subscripted(base, 1, static_cast<int>(j));
    }
    return canonicalName;
}

}  // namespace sb
