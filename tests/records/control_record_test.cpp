#include <gtest/gtest.h>

#include "app/text_format.h"
#include "records/record_clipboard.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records_test_project.h"

namespace {

using namespace sb;
using sbtest::records_project;

tellura_control_record sampleRecord(int32_t id) {
    tellura_control_record r;
    r.setId(id);
    r.row.setText("Description", strprintf("Plot %d", id));
    r.row.setText("Initial Crop", "C6");
    r.row.setNumber("Weather ID", 4);
    r.row.setNumber("CO2SYS", 1);
    r.row.setNumber("PHESP(3)", 7.25);
    r.site.setNumber("EPNFA(2)", 0.125);
    r.site.setNumber("WATERTABLE(3)", 1);
    tellura_event_block second = r.blocks[0];
    second.blockNumber = 2;
    second.description = "Wheat";
    second.firstYear = 101;
    second.lastYear = 110;
    tellura_event e;
    e.order = 1;
    e.type = kEventCrop;
    e.item = "W4";
    e.month = 9;
    second.events.push_back(e);
    r.blocks.push_back(second);
    return r;
}

using ControlRecordStorage = sbtest::project_test;

// Written, read back whole, replaced whole, and deleted with everything under its ID.
TEST_F(ControlRecordStorage, WrittenRecordReadsBackAndIsReplacedAndDeletedWhole) {
    tellura_control_record written = sampleRecord(42), read;
    written.modified = true;
    tellura_soils soils;  // the record's soil (ID 1) is written with it, the other is not
    soils.soils.resize(2);
    soils.soils[0].setSoilId(1);
    soils.soils[0].setName("Loam");
    soils.soils[1].setSoilId(2);
    ASSERT_TRUE(saveControlRecord(project.db(), written, errors, &soils)) << errors;
    EXPECT_FALSE(written.modified);
    ASSERT_TRUE(loadControlRecord(project.db(), 42, read, errors)) << errors;
    EXPECT_EQ(read.row, written.row);
    EXPECT_EQ(read.site, written.site);
    EXPECT_EQ(read.blocks, written.blocks);
    EXPECT_EQ(read.initialCrop(), "C6");
    EXPECT_TRUE(read.site.flag(read.site.column("WATERTABLE(3)")));
    tellura_soils stored;
    ASSERT_TRUE(stored.load(project.db(), errors)) << errors;
    ASSERT_EQ(stored.soils.size(), 1u);
    EXPECT_EQ(stored.soils[0].name(), "Loam");
    EXPECT_EQ(errors.text(), "");

    // Writing under an existing ID replaces everything: one block only now.
    tellura_control_record second;
    second.setId(42);
    second.row.setText("Description", "Replaced");
    ASSERT_TRUE(saveControlRecord(project.db(), second, errors)) << errors;
    ASSERT_TRUE(loadControlRecord(project.db(), 42, read, errors)) << errors;
    EXPECT_EQ(read.description(), "Replaced");
    EXPECT_EQ(read.blocks.size(), 1u);

    tellura_control_record other = sampleRecord(2);
    ASSERT_TRUE(saveControlRecord(project.db(), other, errors));
    ASSERT_TRUE(deleteControlRecord(project.db(), 42, errors)) << errors;
    for (table_id table : {table_id::site_data, table_id::event_blocks, table_id::events}) {
        db_status status;
        auto rows = project.db().openTable(table, "ID = 42", "", status);
        ASSERT_TRUE(rows);
        EXPECT_TRUE(rows->moveFirst().endOfRowset()) << tableName(table);
    }
    ASSERT_TRUE(loadControlRecord(project.db(), 2, read, errors)) << errors;
    EXPECT_EQ(read.blocks, other.blocks);

    // A record not there, or whose site row is gone, leaves what was read as it was.
    read.row.setText("Description", "Edited");
    tellura_control_record expected = read;
    EXPECT_FALSE(loadControlRecord(project.db(), 42, read, errors));
    EXPECT_EQ(errors.text(), "ERROR, can't find record, ID=42, in [Control Records].\n");
    EXPECT_EQ(read.row, expected.row);
    project.db().execute("DELETE * FROM `Site Data` WHERE ID = 2");
    errors.clear();
    EXPECT_FALSE(loadControlRecord(project.db(), 2, read, errors));
    EXPECT_EQ(errors.text(), "Error, no matching records in Site table\n");
}

// Records by the thousand saved as one unit (an import, a paste) all arrive: on a
// server a save must not hold more locks than the server keeps room for (the
// test server's room ran out after about 1,100 records of a lock per replaced part).
TEST_F(ControlRecordStorage, ThousandsOfRecordsSaveAsOneUnit) {
    constexpr int kRecords = 1500;
    session unit(project.db());
    ASSERT_TRUE(unit.ok()) << unit.storeError();
    for (int id = 1; id <= kRecords; ++id) {
        tellura_control_record record = sampleRecord(id);
        ASSERT_TRUE(saveControlRecord(project.db(), record, errors)) << "record " << id << ": " << errors;
    }
    ASSERT_TRUE(unit.commit()) << unit.storeError();
    for (auto [table, rows] : {std::pair{table_id::control_records, kRecords},
                               {table_id::event_blocks, 2 * kRecords},
                               {table_id::record_changes, kRecords}}) {
        long long count = 0;
        ASSERT_TRUE(project.db().countRows(table, count).ok());
        EXPECT_EQ(count, rows) << tableName(table);
    }
}

// A table that cannot be opened (dropped, as in a damaged file) stops the write:
// the parts written before it are rolled back.
TEST(ControlRecordSaveFaults, AFailingPartReportsItselfAndKeepsNothing) {
    const struct {
        table_id dropped;
        const char* message;  // the start of the messages
    } cases[] = {{table_id::control_records,
                  "ERROR, unable to delete from [Control Records]\nERROR, cannot open table [Control Records].\n"},
                 {table_id::event_blocks, "ERROR, unable to delete from [Event Blocks]\n"}};
    for (const auto& c : cases) {
        records_project project;
        SB_REQUIRE_PROJECT(project);
        tellura_control_record before = sampleRecord(9), r = sampleRecord(9);
        sb::message_sink errors;
        ASSERT_TRUE(saveControlRecord(project.db(), before, errors)) << errors;
        project.dropTable(c.dropped);
        r.row.setText("Description", "Changed");
        r.site.setNumber("SIRRI", 4);
        r.blocks.pop_back();
        EXPECT_FALSE(saveControlRecord(project.db(), r, errors));
        EXPECT_TRUE(errors.text().starts_with(c.message)) << errors;
        errors.clear();
        site_data_row site;
        ASSERT_TRUE(loadSiteData(project.db(), 9, site, errors)) << errors;
        EXPECT_EQ(site, before.site);  // the site row was not replaced
        tellura_control_record read;
        const bool readable = loadControlRecord(project.db(), 9, read, errors);
        if (c.dropped == table_id::event_blocks) {
            EXPECT_EQ(read.row, before.row);  // the row written before the failing part is rolled back
            continue;
        }
        EXPECT_FALSE(readable);
        EXPECT_TRUE(errors.text().starts_with("ERROR, unable to open control record table.\n")) << errors;
        std::vector<tellura_event_block> blocks;
        ASSERT_TRUE(loadEventBlocks(project.db(), 9, blocks, errors));
        EXPECT_EQ(blocks, before.blocks);
    }
}

TEST(RecordClipboard, IdItemRoundTripAndRefusals) {
    EXPECT_EQ(record_clipboard::encodeId(0x01020304), std::string("\x04\x03\x02\x01", 4));
    int32_t id = 0;
    sb::message_sink errors;
    ASSERT_TRUE(record_clipboard::decodeId(record_clipboard::encodeId(-5), id, errors));
    EXPECT_EQ(id, -5);
    EXPECT_FALSE(record_clipboard::decodeId(std::nullopt, id, errors));
    EXPECT_FALSE(record_clipboard::decodeId(std::string(8, '\1'), id, errors));
    EXPECT_FALSE(record_clipboard::decodeId(std::string(), id, errors));
    EXPECT_EQ(id, -5);
    EXPECT_EQ(errors.text(),
              "Binary format not available.\r\nBinary item size is invalid.\r\nBinary item size is invalid.\r\n");
    EXPECT_STREQ(record_clipboard::kFormatName, "SoilbenchControl");
}

}  // namespace
