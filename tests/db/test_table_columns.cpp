// Columns found by name once: the positions a reader gets, and a misspelt name
// stopping the program with the table and column named.
#include <gtest/gtest.h>

#include "db/table_columns.h"

using namespace sb;

TEST(TableColumns, NamesGivePositionsAndUnknownNamesStopNamingTableAndColumn) {
    const table_columns records(table_id::control_records, {"Description", "ID", "MLRA"});
    const struct {
        const char* name;
        int position;
    } known[] = {{"ID", 0}, {"Description", 1}, {"MLRA", 4}};
    for (const auto& c : known) EXPECT_EQ(records[c.name], c.position) << c.name;

    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(table_columns(table_id::event_blocks, {"ID", "Blok Number"}),
                 "column \\[Blok Number\\] is not a column of table \\[Event Blocks\\]");
    EXPECT_DEATH(records["State FIPS"], "column \\[State FIPS\\] was not looked up for table \\[Control Records\\]");
}
