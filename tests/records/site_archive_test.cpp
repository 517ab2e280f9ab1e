// Site archives: every value of every table that travels comes back exactly,
// clashing IDs move to free ones, and a bad file or a failing store imports
// nothing, with a message naming the file and line.
#include <gtest/gtest.h>

#include "records/site_archive.h"
#include "records/site_archive_file.h"
#include "records/tellura_event_block.h"
#include "records_test_project.h"

using namespace sb;

namespace {

// Every column gets a value of its own that a careless round trip would spoil:
// fractions no float prints short, tabs and line ends in texts, the ends of
// each whole-number type.
table_record filledRow(table_id table, int salt) {
    table_record row(table);
    const auto& fields = tableDef(table).fields();
    for (int c = 0; c < row.columnCount(); ++c) {
        const auto& f = fields[static_cast<size_t>(c)];
        const int n = c + salt;
        if (row.isText(c))
            row.setText(c, std::string("t\t\\n\n").append(std::to_string(n)).substr(0, static_cast<size_t>(f.size)));
        else if (f.type == kTypeSingle) row.setNumber(c, 1.0 / 3.0 + n * 1e-7);
        else if (f.type == kTypeBit) row.setFlag(c, n % 2);
        else
            row.setNumber(
                c, f.type == kTypeInteger ? 2000000000 - n : (f.type == kTypeSmallint ? -32000 + n : 250 - n % 7));
    }
    return row;
}

bool insert(database& db, const table_record& row) {
    db_status status;
    auto rows = db.openTable(row.table(), "1 = 0", "", status);
    return rows && rows->insert(row).ok();
}

// Record 5 on soil 3 and station 2, with a block reading the station's
// history, a crop and a fertilizer event, and one row of every other table
// that belongs to them.
void fillSource(database& db) {
    for (int i = 0; i < kTableCount; ++i) {
        const table_id table = static_cast<table_id>(i);
        if (!travelsInArchive(table)) continue;
        const table_owner owner = tableOwner(table);
        table_record row = filledRow(table, i);
        if (owner.owner == row_owner::record) row.setNumber(owner.column, 5);
        if (owner.owner == row_owner::soil) row.setNumber(owner.column, 3);
        if (owner.owner == row_owner::station) row.setNumber(owner.column, 2);
        if (owner.owner == row_owner::option) row.setText(owner.column, "OPT" + std::to_string(i));
        if (table == table_id::control_records) {
            row.setNumber("Soil ID", 3);
            row.setNumber("Weather ID", 2);
            row.setText("Initial Crop", "OPT15");
            row.setText("Initial Tree", "");
        }
        if (table == table_id::kept_option_values) {  // kept for the record's crop
            row.setText("File", "crop.100");
            row.setText("Option", "OPT15");
        }
        if (table == table_id::event_blocks) {
            row.setNumber("Weather Choice", kWeatherFile);
            row.setNumber("Weather ID", 2);
        }
        if (table == table_id::events) {
            row.setNumber("Type", kEventFert);
            row.setText("Item", "OPT" + std::to_string(static_cast<int>(table_id::fertilizer)));
        }
        ASSERT_TRUE(insert(db, row)) << tableName(table);
    }
}

long count(database& db, table_id table) {
    std::vector<table_record> rows;
    sb::message_sink errors;
    loadRows(db, table, "", rows, errors);
    return static_cast<long>(rows.size());
}

class SiteArchiveTest : public ::testing::Test {
protected:
    void SetUp() override {
        SB_REQUIRE_PROJECT(source);
        SB_REQUIRE_PROJECT(target);
        fillSource(source.db());
        ASSERT_TRUE(exportSiteArchive(source.db(), "", file, messages, errors)) << errors;
        EXPECT_EQ(messages.text(), "Exported 1 record to \"" + file + "\".\n");
        messages.clear();
    }
    sbtest::temp_dir dir;
    std::string file = dir.file("a.esa");
    sbtest::records_project source, target;
    sb::message_sink messages, errors;
};

TEST_F(SiteArchiveTest, RoundTripBetweenProjectsGivesTheSameFile) {
    ASSERT_TRUE(importSiteArchive(target.db(), file, messages, errors)) << errors;
    EXPECT_EQ(messages.text(), "Imported 1 record from \"" + file + "\".\n");
    ASSERT_TRUE(exportSiteArchive(target.db(), "", dir.file("b.esa"), messages, errors)) << errors;
    EXPECT_EQ(sbtest::readFile(dir.file("b.esa")), sbtest::readFile(file));
    // Outputs stay at home; the fill value shows every text survived.
    EXPECT_EQ(sbtest::readFile(file).find("table\tOutput"), std::string::npos);
    EXPECT_NE(sbtest::readFile(file).find("table\tKept Option Values"), std::string::npos);
    EXPECT_NE(sbtest::readFile(file).find("t\\t\\\\n\\n"), std::string::npos);
}

TEST_F(SiteArchiveTest, ClashingIdsMoveToFreeOnesAndSameOptionsAreKept) {
    // The target uses record 5, soil 3 (named only) and station 2, holds the
    // same fertilizer the archive does, and a harvest the archive's records do
    // not use, of the archive's name but with other values.
    table_record record(table_id::control_records), station(table_id::weather_stations), harvest(table_id::harvest);
    record.setNumber("ID", 5);
    record.setNumber("Soil ID", 3);
    station.setNumber("ID", 2);
    harvest.setText("Name", "OPT19");
    ASSERT_TRUE(insert(target.db(), record) && insert(target.db(), station) && insert(target.db(), harvest));
    site_archive_content held;
    ASSERT_TRUE(readSiteArchive(file, held, errors)) << errors;
    for (const table_record& row : held.find(table_id::fertilizer)->rows) ASSERT_TRUE(insert(target.db(), row));
    messages.clear();
    ASSERT_TRUE(importSiteArchive(target.db(), file, messages, errors)) << errors;
    EXPECT_EQ(messages.text(),
              "record 5 -> 6\nsoil 3 -> 4\nweather station 2 -> 3\n"
              "The fertilizer option \"OPT17\" is in the project already.\n"
              "The harvest option \"OPT19\" of the archive, which none of its records uses, differs from "
              "the project's: the project's is kept.\n"
              "Imported 1 record from \"" +
                  file + "\".\n");
    site_archive_content back;
    ASSERT_TRUE(loadSiteArchiveContent(target.db(), "[ID] = 6", false, back, errors)) << errors;
    const table_record& row = back.find(table_id::control_records)->rows.at(0);
    EXPECT_EQ(row.integer(row.column("Soil ID")), 4);
    EXPECT_EQ(row.integer(row.column("Weather ID")), 3);
    const table_record& block = back.find(table_id::event_blocks)->rows.at(0);
    EXPECT_EQ(block.integer(block.column("Weather ID")), 3);
    for (table_id t : {table_id::soil_layers, table_id::weather_historical_daily, table_id::site_data})
        EXPECT_EQ(back.rowCount(t), 1u) << tableName(t);
    for (table_id t : {table_id::fertilizer, table_id::harvest}) EXPECT_EQ(count(target.db(), t), 1);
}

TEST_F(SiteArchiveTest, ADifferingOptionOrAFailingStoreImportsNothing) {
    table_record crop(table_id::crops);
    crop.setText("Name", "opt15");  // the archive's crop by name, with other values
    struct {
        const char* what;
        std::function<void()> harm;
        std::string error;
    } cases[] = {
        {"failing store",  // a layer number no BYTE holds, met after four tables went in
         [&] {
             site_archive_content content;
             ASSERT_TRUE(readSiteArchive(file, content, errors));
             content.table(table_id::soil_layers).rows.at(0).setNumber("Layer Number", 300);
             sbtest::writeFile(file, siteArchiveText(content));
         },
         "ERROR, unable to insert into table [Soil Layers].\n"},
        {"differing option", [&] { ASSERT_TRUE(insert(target.db(), crop)); },
         "ERROR, the crop option \"OPT15\" of the archive differs from the project's option of that name: rename "
         "one of them, then import again.\n"},
    };
    for (const auto& c : cases) {
        c.harm();
        errors.clear();
        EXPECT_FALSE(importSiteArchive(target.db(), file, messages, errors)) << c.what;
        EXPECT_EQ(errors.text().rfind(c.error, 0), 0u) << c.what << ": " << errors;
        EXPECT_NE(errors.text().find("Nothing of the archive was imported.\n"), std::string::npos) << c.what;
        for (table_id t : {table_id::control_records, table_id::soils, table_id::weather_stations, table_id::events})
            EXPECT_EQ(count(target.db(), t), 0) << c.what << ", " << tableName(t);
    }
}

// A table added later must say what its rows belong to, or archives would
// silently leave it behind.
TEST(SiteArchiveFile, EveryTableSaysWhatItsRowsBelongTo) {
    for (int i = 0; i < kTableCount; ++i) {
        const table_owner owner = tableOwner(static_cast<table_id>(i));
        EXPECT_NE(owner.owner, row_owner::unclassified) << tableName(static_cast<table_id>(i));
        EXPECT_GE(tableDef(static_cast<table_id>(i)).fieldIndex(owner.column), 0)
            << tableName(static_cast<table_id>(i));
    }
}

TEST(SiteArchiveFile, BadFilesAreRefusedNamingTheFileAndLine) {
    const std::string head = "Soilbench site archive\t1\n";
    const std::string record = "table\tControl Records\t1\ncolumns\tID\tSoil ID\n7\t3\n";
    const std::string soil = "table\tSoils\t2\ncolumns\tSoil ID\n3\n";
    struct {
        std::string text, error;
    } cases[] = {
        {"", "line 1: this is not a site archive (its first line is not \"Soilbench site archive<TAB>version\")"},
        {"PK\x03\x04\x14\n",
         "line 1: this is not a site archive (its first line is not \"Soilbench site "
         "archive<TAB>version\")"},
        {"Soilbench site archive\t2\n" + record + "end\t1\n",
         "line 1: the archive is of format version 2; this program reads version 1: import it with a newer Soilbench"},
        {head + record + soil, "line 8: the file ends after 1 of the 2 rows of table \"Soils\": it is cut short"},
        {head + record, "line 5: the file ends without its \"end\" line: it is cut short"},
        {head + record + "end\t2\n", "line 5: the \"end\" line should count 1 tables"},
        {head + "table\tControl Records\t1\ncolumns\tID\nseven\n",
         "line 4: the value \"seven\" of column \"ID\" is not a number"},
        {head + "table\tControl Records\t1\ncolumns\tID\tSoil ID\n7\n",
         "line 4: 1 values where table \"Control Records\" has 2 columns"},
        {head + "table\tControl Records\t1\ncolumns\tID\tPlanet\n",
         "line 3: table \"Control Records\" has no column \"Planet\""},
        {head + "table\tOutput Annual\t0\n", "line 2: table \"Output Annual\" does not belong in a site archive"},
        {head + "end\t0\n", "line 2: the archive holds no control record"},
        {head + record + "end\t1\nmore\n", "line 6: there is more after the \"end\" line"},
    };
    for (const auto& c : cases) {
        site_archive_content content;
        sb::message_sink errors;
        EXPECT_FALSE(parseSiteArchive(c.text, "in.esa", content, errors));
        EXPECT_EQ(errors.text(), "ERROR, site archive \"in.esa\" " + c.error + ".\n");
    }
    // A record naming a soil the archive lacks is refused at import.
    sbtest::records_project project;
    sbtest::temp_dir dir;
    sbtest::writeFile(dir.file("lack.esa"), head + record + "end\t1\n");
    sb::message_sink messages, errors;
    EXPECT_FALSE(importSiteArchive(project.db(), dir.file("lack.esa"), messages, errors));
    EXPECT_EQ(errors.text(),
              "ERROR, record 7 names soil 3, which the site archive \"" + dir.file("lack.esa") +
                  "\" does not hold.\nERROR, record 7 names weather station 0, which the site archive \"" +
                  dir.file("lack.esa") + "\" does not hold.\n");
    EXPECT_EQ(count(project.db(), table_id::control_records), 0);
}

}  // namespace
