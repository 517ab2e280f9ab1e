// Soils: layer editing, the pre-run warnings, the layer file and "soils.in",
// and storage.
#include <gtest/gtest.h>

#include "app/text_format.h"
#include "db/database.h"
#include "records/soil_layer_file.h"
#include "records/tellura_soil.h"
#include "records_test_project.h"
#include "test_support.h"

namespace {

using namespace sb;
using sbtest::records_project;

tellura_soil soilWithDepths(const char* name, const std::vector<int>& depths) {
    tellura_soil soil;
    soil.setSoilId(7);
    soil.setName(name);
    sb::message_sink errors;
    for (int depth : depths) {
        soil.insertLayer(soil.layerCount, errors);
        soil_layer& layer = soil.layers[static_cast<size_t>(soil.layerCount - 1)];
        layer.setDepth(depth);
        layer.setValue("Transpiration Loss Weighing Factor", 0.5);
    }
    return soil;
}

TEST(SoilLayers, InsertDeleteAndTheListText) {
    tellura_soil soil = soilWithDepths("Loam", {10, 20, 30});
    sb::message_sink errors;
    ASSERT_TRUE(soil.insertLayer(1, errors));
    EXPECT_EQ(soil.layerCount, 4);
    EXPECT_EQ(soil.layerDepths(), (std::vector<int>{10, 0, 20, 30}));
    EXPECT_EQ(soil.layers[3].number("Layer Number"), 4);
    ASSERT_TRUE(soil.deleteLayer(0, errors));
    EXPECT_EQ(soil.layerDepths(), (std::vector<int>{0, 20, 30}));
    EXPECT_EQ(soil.layers[0].number("Layer Number"), 1);
    EXPECT_EQ(errors.text(), "");

    EXPECT_FALSE(soil.deleteLayer(3, errors));
    EXPECT_EQ(errors.text(), "Unable to delete layer.");
    errors.clear();
    EXPECT_FALSE(soil.deleteLayer(-1, errors));
    EXPECT_EQ(errors.text(), "Unable to delete layer.");

    tellura_soil one = soilWithDepths("One", {15});
    errors.clear();
    EXPECT_TRUE(one.deleteLayer(0, errors));
    EXPECT_EQ(one.layerCount, 0);

    tellura_soil full = soilWithDepths("Full", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14});
    EXPECT_FALSE(full.insertLayer(0, errors));
    EXPECT_EQ(errors.text(), "Number of layers is already at maximum");
    EXPECT_EQ(full.layerCount, 14);

    soil_layer& layer = soil.layers[1];  // at 20 cm
    layer.setValue("Field Capacity", 0.3);
    layer.setValue("Wilting Point", 0.125);
    layer.setValue("Mineral N", 1.5);
    EXPECT_EQ(soil.layerListText(1), "2: 20 cm - afiel=0.3 awilt=0.125 N=1.5 P=0 S=0");
    EXPECT_STREQ(waterHoldingOptionText(0), "Use actual data from file.");
    EXPECT_STREQ(waterHoldingOptionText(6), "Use Rawls for afiel (-0.10 bar)");
    EXPECT_EQ(waterHoldingOptionText(7), nullptr);
    EXPECT_EQ(waterHoldingOptionText(-1), nullptr);
}

TEST(SoilRunCheck, DepthsAgainstTheReleasesDefaultLayersAndZeroTranspirationFactors) {
    const std::vector<int> deep = {15, 30, 45, 60, 90, 120, 150, 180, 180, 180, 200};
    struct run_check_case {
        const char* name;
        std::vector<int> depths;
        std::vector<int> zeroFactorLayers;  // 1-based
        int version;
        const char* warnings;
    } cases[] = {
        {"Loam",
         {15, 30, 46},
         {},
         3,
         "WARNING, Soil Loam layer 3 depth (0.460m) does not match TELLURA default layer 3 thickness (0.45m).\n"},
        {"Thin", {10, 20, 40}, {}, 2, ""},  // only layers deeper than the default are reported
        {"Loam", {15, 30, 46}, {}, 4, ""},  // the daily model reads its own layers
        {"Empty", {}, {}, 1, ""},
        {"Empty", {}, {}, 6, ""},
        // The first release checks every layer ...
        {"Deep",
         deep,
         {},
         1,
         "WARNING, Soil Deep layer 11 depth (2.000m) does not match TELLURA default layer 11 thickness (0.00m).\n"},
        // ... the others nine: 0.15 0.3 0.45 0.6 0.9 1.05 1.2 1.35 1.5.
        {"Deep",
         deep,
         {},
         5,
         "WARNING, Soil Deep layer 6 depth (1.200m) does not match TELLURA default layer 6 thickness (1.05m).\n"
         "WARNING, Soil Deep layer 7 depth (1.500m) does not match TELLURA default layer 7 thickness (1.20m).\n"
         "WARNING, Soil Deep layer 8 depth (1.800m) does not match TELLURA default layer 8 thickness (1.35m).\n"
         "WARNING, Soil Deep layer 9 depth (1.800m) does not match TELLURA default layer 9 thickness (1.50m).\n"},
        // A zero factor counts in the first ten layers, before the daily release only.
        {"Sandy",
         {15, 30, 45, 60, 90, 120, 150, 180, 180, 180, 180},
         {2, 11},
         1,
         "WARNING, Soil Sandy transpiration loss factor is zero in layer 2.\n"
         "WARNING, Soil Sandy layer 11 depth (1.800m) does not match TELLURA default layer 11 thickness (0.00m).\n"},
        {"Sandy", {15, 30}, {2}, 4, ""},
        {"Sandy", {15, 30}, {2}, 5, ""},
    };
    for (const run_check_case& c : cases) {
        SCOPED_TRACE(strprintf("%s, release %d", c.name, c.version));
        tellura_soil soil = soilWithDepths(c.name, c.depths);
        sb::message_sink warnings;
        for (int layer : c.zeroFactorLayers)
            soil.layers[static_cast<size_t>(layer - 1)].setValue("Transpiration Loss Weighing Factor", 0);
        soil.checkForRun(c.version, warnings);
        EXPECT_EQ(warnings, c.warnings);
    }
}

const char* const kTwoLayers =
    "  0.0  10.0  1.35  0.30000  0.12000  0.80  0.01  0.60  0.20  0.05  0.02  0.00070  6.50\n"
    " 10.0  30.0  1.45  0.27000  0.15000  0.20  0.05  0.50  0.30  0.03  0.04  0.00040  7.10\n";

TEST(SoilLayerFile, WritesTheModelsColumnsAndReadsThemBack) {
    sbtest::temp_dir dir;
    sbtest::writeFile(dir.file("in.txt"), kTwoLayers);
    tellura_soil soil;
    sb::message_sink errors;
    ASSERT_TRUE(readSoilLayerFile(dir.file("in.txt"), soil, errors)) << errors;
    ASSERT_EQ(soil.layerCount, 2);
    EXPECT_EQ(soil.layers[1].depth(), 30);
    const std::pair<const char*, float> second[] = {{"Bulk Density", 1.45f},
                                                    {"Field Capacity", 0.27f},
                                                    {"Wilting Point", 0.15f},
                                                    {"ECOEFF", 0.2f},
                                                    {"TCOEFF", 0.05f},
                                                    {"Fraction Of Sand", 0.5f},
                                                    {"Fraction Of Clay", 0.3f},
                                                    {"Organic Matter", 0.03f},
                                                    {"DELTAMIN", 0.04f},
                                                    {"pH", 7.1f},
                                                    {"Saturated Conductivity", 0.0004f}};
    for (auto [column, value] : second) EXPECT_FLOAT_EQ(soil.layers[1].value(column), value) << column;
    EXPECT_EQ(soil.layers[1].number("Layer Number"), 2);

    ASSERT_TRUE(writeSoilsIn(soil, dir.file("soils.in"), errors)) << errors;
    EXPECT_EQ(sbtest::readFile(dir.file("soils.in")), kTwoLayers);

    // Onto one 0-20 layer: means of the two layers over 10 cm each.
    EXPECT_EQ(soilsInText(soil, {20}),
              "  0.0  20.0  1.40  0.28500  0.13500  0.50  0.03  0.55  0.25  0.04  0.03  0.00055  6.80\n");
    // Deeper than the soil: the deepest layer carries on.
    std::string deeper = soilsInText(soil, {10, 30, 50});
    EXPECT_EQ(deeper.substr(deeper.find(" 30.0  50.0")),
              " 30.0  50.0  1.45  0.27000  0.15000  0.20  0.05  0.50  0.30  0.03  0.04  0.00040  7.10\n");
}

using SoilStorage = sbtest::project_test;

TEST_F(SoilStorage, WrittenSoilsLoadBackAndReplaceTheirRows) {
    tellura_soil soil = soilWithDepths("Loam", {15, 30});
    soil.layers[1].setValue("Field Capacity", 0.25);
    soil.setValue("SWFlag", 2);
    tellura_soil other = soilWithDepths("Clay", {20});
    other.setSoilId(8);
    ASSERT_TRUE(saveSoil(project.db(), soil, errors)) << errors;
    ASSERT_TRUE(saveSoil(project.db(), other, errors)) << errors;

    sb::message_sink dropped;
    soil.deleteLayer(0, dropped);
    ASSERT_TRUE(saveSoil(project.db(), soil, errors)) << errors;

    tellura_soils list;
    ASSERT_TRUE(list.load(project.db(), errors)) << errors;
    EXPECT_EQ(errors.text(), "");
    ASSERT_EQ(list.soils.size(), 2u);
    const tellura_soil* loam = list.find(7);
    ASSERT_NE(loam, nullptr);
    EXPECT_EQ(loam->name(), "Loam");
    EXPECT_EQ(loam->value("SWFlag"), 2);
    ASSERT_EQ(loam->layerCount, 1);
    EXPECT_EQ(loam->layers[0].depth(), 30);
    EXPECT_FLOAT_EQ(loam->layers[0].value("Field Capacity"), 0.25f);
    ASSERT_NE(list.find(8), nullptr);
    EXPECT_EQ(list.find(8)->layerCount, 1);
    EXPECT_EQ(list.find(9), nullptr);

    // A layer without its soil is reported and skipped.
    {
        db_status status;
        auto rows = project.db().openTable(table_id::soil_layers, "", "", status);
        ASSERT_NE(rows, nullptr);
        soil_layer orphan;
        orphan.setKeys(42, 1);
        ASSERT_TRUE(rows->insert(orphan).ok());
    }
    tellura_soils again;
    EXPECT_TRUE(again.load(project.db(), errors));
    EXPECT_EQ(errors.text(), "ERROR, layer found but no soil, ID = 42.\n");
    EXPECT_EQ(again.soils.size(), 2u);
}

TEST_F(SoilStorage, MissingTablesAreReported) {
    project.dropTable(table_id::soil_layers);
    EXPECT_FALSE(saveSoil(project.db(), soilWithDepths("Loam", {15}), errors));
    EXPECT_EQ(errors.text(), "ERROR, unable to delete from [Soil Layers]\nUnable to open table Soil Layers\n");
    errors.clear();
    tellura_soils list;
    EXPECT_FALSE(list.load(project.db(), errors));
    EXPECT_EQ(errors.text(), "Unable to open table Soil Layers\n");
    EXPECT_TRUE(list.soils.empty());  // nor was the soil row itself kept
}

// A refused layer or soil row is reported, the rest still tried and reported,
// and the soil stored before stays whole.
TEST(SoilSaveFaults, ARefusedRowKeepsTheStoredSoil) {
    struct refusal {
        const char* what;
        void (*spoil)(tellura_soil&);
        const char* firstMessage;
    };
    const refusal cases[] = {
        {"layer depth beyond 16 bits", [](tellura_soil& s) { s.layers[1].setDepth(40000); },
         "ERROR, unable to insert soil layer.\n"},
        {"name longer than TEXT(50)", [](tellura_soil& s) { s.setName(std::string(51, 'N')); },
         "ERROR, unable to insert soil record.\n"},
    };
    for (const refusal& c : cases) {
        records_project project;
        SB_REQUIRE_PROJECT(project);
        sb::message_sink errors;
        ASSERT_TRUE(saveSoil(project.db(), soilWithDepths("Loam", {10, 20}), errors)) << errors;
        tellura_soil soil = soilWithDepths("Clay", {15, 30, 45});
        c.spoil(soil);
        EXPECT_FALSE(saveSoil(project.db(), soil, errors)) << c.what;
        EXPECT_EQ(errors.text().rfind(c.firstMessage, 0), 0u) << c.what << ": " << errors;
        tellura_soils list;
        sb::message_sink loadErrors;
        ASSERT_TRUE(list.load(project.db(), loadErrors)) << loadErrors;
        ASSERT_EQ(list.soils.size(), 1u) << c.what;
        EXPECT_EQ(list.soils[0].name(), "Loam") << c.what;
        EXPECT_EQ(list.soils[0].layerDepths(), (std::vector<int>{10, 20})) << c.what;
    }
}

}  // namespace
