// The releases' own soils.in files: every value is read and survives our
// writing on the soil's own layers.
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "records/soil_layer_file.h"
#include "records/tellura_soil.h"
#include "test_support.h"

namespace {

using namespace sb;

// The file's numbers, line by line, read independently of the importer.
std::vector<std::vector<double>> numbersOf(const std::string& text) {
    std::vector<std::vector<double>> rows;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        std::vector<double> row;
        double v;
        while (fields >> v) row.push_back(v);
        if (!row.empty()) rows.push_back(row);
    }
    return rows;
}

const soil_layer_column kFileOrder[] = {
    kLayerBulkDensity, kLayerFieldCapacity, kLayerWiltingPoint,  kLayerEcoeff,   kLayerTcoeff,
    kLayerSand,        kLayerClay,          kLayerOrganicMatter, kLayerDeltamin, kLayerSaturatedConductivity,
    kLayerPh};

void expectSoilHolds(const TelluraSoils& soil, const std::vector<std::vector<double>>& rows) {
    ASSERT_EQ(soil.layerCount, static_cast<int>(rows.size()));
    for (size_t i = 0; i < rows.size(); ++i) {
        ASSERT_EQ(rows[i].size(), 13u);
        EXPECT_EQ(soil.layers[i].depth(), static_cast<int>(rows[i][1]));
        for (size_t c = 0; c < std::size(kFileOrder); ++c)
            EXPECT_EQ(soil.layers[i].single(kFileOrder[c]), static_cast<float>(rows[i][c + 2]))
                << "layer " << i + 1 << " value " << c + 3;
    }
}

TEST(SoilSampleFiles, BothReleasesReadAndWriteBackEveryValue) {
    SB_REQUIRE_SAMPLES();
    for (const char* folder : {"diurna-2012/inputs", "diurna45-2008-inputs"}) {
        SCOPED_TRACE(folder);
        std::string path = sbtest::samplesDir() + "/" + folder + "/soils.in";
        TelluraSoils soil;
        std::string errors;
        ASSERT_TRUE(importSoilLayerFile(soil, path, errors)) << errors;
        std::vector<std::vector<double>> rows = numbersOf(sbtest::readFile(path));
        expectSoilHolds(soil, rows);

        std::string written = soilsInText(soil, soil.layerDepths());
        TelluraSoils back;
        ASSERT_TRUE(importSoilLayerText(back, written, "written", errors)) << errors;
        expectSoilHolds(back, rows);
    }
}

// The 2008 release writes exactly our columns; only its line ends differ.
// The 2012 file has free-format columns ("0.000000           2.000000 ...").
TEST(SoilSampleFiles, Release2008LayoutIsOursWithCrLf) {
    SB_REQUIRE_SAMPLES();
    std::string path = sbtest::samplesDir() + "/diurna45-2008-inputs/soils.in";
    std::string sample = sbtest::readFile(path);
    std::string lf;
    for (char c : sample)
        if (c != '\r') lf += c;
    TelluraSoils soil;
    std::string errors;
    ASSERT_TRUE(importSoilLayerFile(soil, path, errors));
    EXPECT_EQ(soilsInText(soil, soil.layerDepths()), lf);
    EXPECT_NE(sample, lf);
}

}  // namespace
