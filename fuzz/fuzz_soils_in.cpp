// Any bytes as the daily model's soil layer file ("soils.in"); what was read
// is written back and read again.
#include <cstddef>
#include <cstdint>
#include <string>

#include "records/soil_layer_file.h"
#include "records/tellura_soil.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    sb::tellura_soil soil;
    sb::message_sink errors;
    sb::readSoilLayerText(text, "soils.in", soil, errors);
    std::vector<int> bottoms;
    for (int i = 0; i < soil.layerCount; ++i) bottoms.push_back(soil.layers[static_cast<size_t>(i)].depth());
    sb::tellura_soil again;
    sb::readSoilLayerText(sb::soilsInText(soil, bottoms), "again.in", again, errors);
    return 0;
}
