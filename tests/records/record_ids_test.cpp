// Free IDs: past everything stored and everything a record names.
#include <gtest/gtest.h>

#include "records/record_ids.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"
#include "records_test_project.h"

namespace {

using namespace sb;
using sbtest::records_project;

void writeRecord(database& db, int32_t id, int32_t soil, int32_t station, int32_t blockStation) {
    tellura_control_record r;
    r.setId(id);
    r.row.setNumber("Soil ID", soil);
    r.row.setNumber("Weather ID", station);
    r.blocks.resize(1);
    r.blocks[0].weatherChoice = kWeatherFile;
    r.blocks[0].weatherId = blockStation;
    std::string errors;
    ASSERT_TRUE(writeControlRecord(r, db, errors)) << errors;
}

TEST(RecordIds, NextFreeIdsPassEveryIdStoredOrNamed) {
    records_project empty;
    SB_REQUIRE_PROJECT(empty);
    EXPECT_EQ(nextFreeRecordId(empty.db()), 1);
    EXPECT_EQ(nextFreeSoilId(empty.db()), 1);
    EXPECT_EQ(nextFreeStationId(empty.db()), 1);

    records_project project;
    SB_REQUIRE_PROJECT(project);
    // Record 1 names soil 1 and station 1, neither stored; record 5 names soil 7,
    // station 3 and, in its block, station 9. Soil 2 and station 4 are stored.
    writeRecord(project.db(), 1, 1, 1, 1);
    writeRecord(project.db(), 5, 7, 3, 9);
    std::string errors;
    TelluraSoils soil;
    soil.setSoilId(2);
    ASSERT_TRUE(writeSoil(soil, project.db(), errors)) << errors;
    TelluraWeatherStations station;
    station.id = 4;
    ASSERT_TRUE(saveWeatherStation(project.db(), station, errors)) << errors;

    EXPECT_EQ(nextFreeRecordId(project.db()), 6);
    struct {
        std::optional<int32_t> replaced;
        int32_t soil, station;
    } cases[] = {
        {std::nullopt, 8, 10},
        {5, 3, 5},  // record 5 is about to be replaced: what it names is free again
        {1, 8, 10},
        {42, 8, 10},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(nextFreeSoilId(project.db(), c.replaced), c.soil) << c.replaced.value_or(-1);
        EXPECT_EQ(nextFreeStationId(project.db(), c.replaced), c.station) << c.replaced.value_or(-1);
    }
    EXPECT_TRUE(controlRecordExists(project.db(), 5));
    EXPECT_FALSE(controlRecordExists(project.db(), 6));
}

}  // namespace
