#pragma once
// Where a model variable lands in the soil-layer output: minerl(layer, element)
// is the layer's mineral N (element 1), P (2) or S (3), rwcf(layer) its
// relative water content. The model keeps them in its state array (the binary
// file's first array), so a run read from the binary file leaves each layer's
// end state; the list files the list utility is asked for hold none of them.
#include <string_view>

namespace sb {

struct soil_layer_target {
    int layer = 0;    // 1..14; 0: the variable is not a soil-layer value
    int column = -1;  // column of `Output Soil Layers`
    bool placed() const { return layer > 0; }
};

soil_layer_target resolveSoilLayerField(std::string_view name);

}  // namespace sb
