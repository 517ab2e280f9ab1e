// Storing outputs in the project database and reading them back; copying
// outputs back into a record's input values.
#include <gtest/gtest.h>

#include "db/database.h"
#include "db/table_catalogue.h"
#include "modeloutput/output_table_text.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/output_to_input.h"
#include "modeloutput/tellura_output.h"
#include "output_test_files.h"
#include "records/tellura_soil.h"
#include "test_support.h"

using namespace sb;

namespace {

float cell(const table_record& r, const char* name) { return r.single(r.column(name)); }

// The comma-separated fields of one line of numbers.
std::vector<std::string> splitFields(const std::string& line) {
    std::vector<std::string> fields(1);
    for (char c : line.substr(0, line.find('\n'))) {
        if (c == ',') fields.emplace_back();
        else fields.back() += c;
    }
    return fields;
}

class OutputTables : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(db); }
    sbtest::temp_dir dir;
    std::unique_ptr<database> db = sbtest::makeOutputProject(dir);
};

}  // namespace

// A value no output gave is stored as NULL and reads back missing, and the
// comma-separated export leaves it empty; a 0 stays 0.
TEST_F(OutputTables, MissingValuesStayMissingAndAStoreReplacesOnlyThatRecordsRows) {
    tellura_outputs out, none;
    for (int year : {1991, 1990}) {
        out.annualFor(year).setNumber("somsc", year + 0.5);
        out.annualFor(year).setNumber("agcacc", 0);
    }
    sb::message_sink errors;
    ASSERT_TRUE(saveOutputs(*db, 7, out, errors) && saveOutputs(*db, 9, out, errors)) << errors;
    ASSERT_TRUE(saveOutputs(*db, 7, none, errors)) << errors;
    EXPECT_EQ(errors.text(), "");
    tellura_outputs back;
    ASSERT_TRUE(loadOutputs(*db, 7, back, errors));
    EXPECT_TRUE(back.empty());
    ASSERT_TRUE(loadOutputs(*db, 9, back, errors));
    ASSERT_EQ(back.annual.size(), 2u);
    const annual_output& y1991 = back.annual[1];  // in year order
    EXPECT_EQ(y1991.year(), 1991);
    const std::string csv = recordsCsv({&y1991}, tableDef(table_id::output_annual));
    const std::vector<std::string> fields = splitFields(csv.substr(csv.find('\n') + 1));
    const std::pair<const char*, const char*> cells[] = {{"aglivc", ""}, {"agcacc", "0"}, {"somsc", "1991.5"}};
    for (auto [column, text] : cells) EXPECT_EQ(fields.at(static_cast<size_t>(y1991.column(column))), text) << column;
}

TEST_F(OutputTables, DuplicateKeysWarnAndTheFirstRowWins) {
    tellura_outputs out;
    out.annual.resize(3);
    out.annual[0].setYear(1990);
    out.annual[0].setNumber("somsc", 1);
    out.annual[1].setYear(1990);
    out.annual[1].setNumber("somsc", 2);
    out.annual[2].setYear(1991);
    out.daily.resize(2);
    out.daily[0].setYearDay(1990, 5);
    out.daily[1].setYearDay(1990, 5);
    sb::message_sink errors;
    ASSERT_TRUE(saveOutputs(*db, 3, out, errors));
    const std::string annualWarning =
        "WARNING, duplicate year cannot be inserted into table [Output Annual] ID=3 Year=1990\n";
    const std::string dailyWarning =
        "WARNING, duplicate year cannot be inserted into table [Output Daily] ID=3 Year=1990 Julian Day=5\n";
    // Each warning is followed by the store's own words, whichever way the row was sent.
    const std::string violated = "A specified value violated the integrity constraints for a column or table.\n";
    EXPECT_EQ(errors.text(),
              annualWarning + violated + "UNIQUE constraint failed: Output Annual.ID, Output Annual.Year\n" +
                  dailyWarning + violated +
                  "UNIQUE constraint failed: Output Daily.ID, Output Daily.Year, Output Daily.Julian Day\n");
    tellura_outputs back;
    ASSERT_TRUE(loadOutputs(*db, 3, back, errors));
    ASSERT_EQ(back.annual.size(), 2u);
    EXPECT_FLOAT_EQ(cell(back.annual[0], "somsc"), 1.0f);
    EXPECT_EQ(back.daily.size(), 1u);

    // A monthly duplicate names its month.
    tellura_outputs months;
    months.monthly[190].resize(2);
    months.monthly[190][0].setYearMonth(1990, 4);
    months.monthly[190][1].setYearMonth(1990, 4);
    errors.clear();
    ASSERT_TRUE(saveOutputs(*db, 3, months, errors));
    EXPECT_EQ(errors.text().rfind(
                  "WARNING, duplicate year cannot be inserted into table [Output Monthly] ID=3 Year=1990 Month=4\n", 0),
              0u)
        << errors;
}

TEST_F(OutputTables, OtherInsertFailuresAreEachReportedAndKeepTheEarlierOutputs) {
    tellura_outputs earlier;
    earlier.annualFor(1980);
    sb::message_sink errors;
    ASSERT_TRUE(saveOutputs(*db, 4, earlier, errors)) << errors;
    tellura_outputs out;
    out.annualFor(1990);
    out.annualFor(40000);  // beyond a SMALLINT year
    out.annualFor(1991);
    out.soilLayers.resize(2);
    out.soilLayers[0].setLayerNumber(1);
    out.soilLayers[1].setLayerNumber(1);  // layers have no duplicate warning
    EXPECT_FALSE(saveOutputs(*db, 4, out, errors));
    EXPECT_NE(errors.text().find("ERROR, unable to insert into table [Output Annual] ID=4 Year=40000\n"),
              std::string::npos)
        << errors;
    EXPECT_NE(errors.text().find("ERROR, unable to insert into table [Output Soil Layers] ID=4 Layer=1\n"),
              std::string::npos)
        << errors;
    tellura_outputs back;
    ASSERT_TRUE(loadOutputs(*db, 4, back, errors));
    ASSERT_EQ(back.annual.size(), 1u);
    EXPECT_EQ(back.annual[0].year(), 1980);
    EXPECT_TRUE(back.soilLayers.empty());
}

TEST_F(OutputTables, ReadBackKeepsFourteenSoilLayers) {
    tellura_outputs out;
    for (int layer = 1; layer <= 15; ++layer) {
        out.soilLayers.emplace_back();
        out.soilLayers.back().setLayerNumber(layer);
    }
    sb::message_sink errors;
    ASSERT_TRUE(saveOutputs(*db, 5, out, errors)) << errors;
    tellura_outputs back;
    EXPECT_FALSE(loadOutputs(*db, 5, back, errors));
    EXPECT_EQ(errors.text(), "ERROR, too many soil layers in table [Output Soil Layers]");
    EXPECT_EQ(back.soilLayers.size(), 14u);
}

TEST(OutputToInput, AnnualAndMonthlyCopies) {
    tellura_control_record record = sbtest::recordWithBlocks({});
    tellura_outputs outputs;
    sb::message_sink errors;
    EXPECT_FALSE(copyAnnualOutputToInput(outputs, record, errors));
    EXPECT_FALSE(copyMonthlyOutputToInput(outputs, record, errors));
    EXPECT_EQ(errors.text(), "No annual output exists for record.\nNo monthly output exists for record.\n");

    // None of the eight given (missing): nothing changes, nothing said.
    record.site.setNumber("AGLIVE(1)", 9);
    outputs.annualFor(1990).setNumber("aglive(1)", 4);
    outputs.annualFor(1991).setNumber("somsc", 4);
    record.modified = false;
    errors.clear();
    EXPECT_FALSE(copyAnnualOutputToInput(outputs, record, errors));
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(record.site.number("AGLIVE(1)"), 9.0);
    EXPECT_FALSE(record.modified);

    const char* names[] = {"aglcis(1)", "aglcis(2)", "aglive(1)", "aglive(2)",
                           "aglive(3)", "aminrl(1)", "aminrl(2)", "aminrl(3)"};
    const char* site[] = {"AGLCIS(1)", "AGLCIS(2)", "AGLIVE(1)", "AGLIVE(2)",
                          "AGLIVE(3)", "AMINRL(1)", "AMINRL(2)", "AMINRL(3)"};
    for (int i = 0; i < 8; ++i) outputs.annualFor(1991).setNumber(names[i], i + 1.5);
    EXPECT_TRUE(copyAnnualOutputToInput(outputs, record, errors));
    EXPECT_EQ(errors.text(), "");
    for (int i = 0; i < 8; ++i) EXPECT_FLOAT_EQ(static_cast<float>(record.site.number(site[i])), i + 1.5f) << site[i];
    EXPECT_TRUE(record.modified);

    // The monthly copy takes the last month, zeros included, and says so.
    outputs.monthlyFor(1991, 12).setNumber("aminrl(1)", 0);
    outputs.monthlyFor(1991, 3).setNumber("aminrl(1)", 99);
    EXPECT_TRUE(copyMonthlyOutputToInput(outputs, record, errors));
    EXPECT_EQ(errors.text(), "Monthly copied for record.\n");
    EXPECT_EQ(record.site.number("AMINRL(1)"), 0.0);
}

TEST(OutputToInput, SoilFillTakesTheLayerRows) {
    tellura_outputs outputs;
    sb::message_sink errors;
    EXPECT_FALSE(fillSoilFromOutput(outputs, nullptr, errors));
    EXPECT_EQ(errors.text(), "ERROR, No soil record to fill.\n");

    tellura_soil soil;
    soil.layerCount = 2;
    for (int layer : {2, 3}) {
        outputs.soilLayers.emplace_back();
        auto& row = outputs.soilLayers.back();
        row.setLayerNumber(layer);
        row.setNumber("Mineral N", layer + 0.5);
        row.setNumber("Mineral S", layer + 0.25);
        row.setNumber("Initial Relative Water Content", 0.5);
    }
    errors.clear();
    EXPECT_TRUE(fillSoilFromOutput(outputs, &soil, errors));
    EXPECT_EQ(errors.text(), "");
    EXPECT_FLOAT_EQ(static_cast<float>(soil.layers[1].number("Mineral N")), 2.5f);
    EXPECT_FLOAT_EQ(static_cast<float>(soil.layers[1].number("Mineral S")), 2.25f);
    EXPECT_FLOAT_EQ(static_cast<float>(soil.layers[1].number("Initial Relative Water Content")), 0.5f);
    EXPECT_EQ(soil.layers[0].number("Mineral N"), 0.0);  // no row for layer 1
    EXPECT_EQ(soil.layers[2].number("Mineral N"), 0.0);  // layer 3 is beyond the soil's two layers
}
