#include "modeloutput/output_soil_layer_target.h"

#include <charconv>
#include <vector>

#include "app/text_format.h"
#include "db/table_catalogue.h"
#include "modeloutput/tellura_output.h"

namespace sb {
namespace {

// "root(a)" or "root(a,b)": the root and the subscripts; empty when not so written.
std::vector<int> subscripts(std::string_view name, std::string_view& root) {
    size_t open = name.find('(');
    if (open == std::string_view::npos || name.empty() || name.back() != ')') return {};
    root = name.substr(0, open);
    std::vector<int> out;
    std::string_view rest = name.substr(open + 1, name.size() - open - 2);
    while (true) {
        size_t comma = rest.find(',');
        std::string_view digits = trim(rest.substr(0, comma));
        int value = 0;
        auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (digits.empty() || ec != std::errc() || end != digits.data() + digits.size()) return {};
        out.push_back(value);
        if (comma == std::string_view::npos) return out;
        rest = rest.substr(comma + 1);
    }
}

}  // namespace

soil_layer_target resolveSoilLayerField(std::string_view name) {
    static const char* const kMineral[] = {"Mineral N", "Mineral P", "Mineral S"};
    std::string_view root;
    const std::vector<int> at = subscripts(trim(name), root);
    soil_layer_target target;
    if (at.empty() || at[0] < 1 || at[0] > kMaxOutputSoilLayers) return target;
    const char* column = nullptr;
    if (iequals(root, "minerl") && at.size() == 2 && at[1] >= 1 && at[1] <= 3) column = kMineral[at[1] - 1];
    if (iequals(root, "rwcf") && at.size() == 1) column = "Initial Relative Water Content";
    if (!column) return target;
    target.layer = at[0];
    target.column = tableDef(table_id::output_soil_layers).fieldIndex(column);
    return target;
}

}  // namespace sb
