// The 2008 release's own soils.in: read and written back byte for byte.
#include <gtest/gtest.h>

#include <string>

#include "records/soil_layer_file.h"
#include "records/tellura_soil.h"
#include "test_support.h"

namespace {

using namespace sb;

// The 2008 release writes exactly our columns; only its line ends differ.
TEST(SoilSampleFiles, Release2008LayoutIsOursWithCrLf) {
    SB_REQUIRE_SAMPLES();
    std::string path = sbtest::samplesDir() + "/diurna45-2008-inputs/soils.in";
    std::string sample = sbtest::readFile(path);
    std::string lf;
    for (char c : sample)
        if (c != '\r') lf += c;
    tellura_soil soil;
    sb::message_sink errors;
    ASSERT_TRUE(readSoilLayerFile(path, soil, errors));
    EXPECT_EQ(soilsInText(soil, soil.layerDepths()), lf);
    EXPECT_NE(sample, lf);
}

}  // namespace
