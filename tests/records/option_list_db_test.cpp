// Option lists in the project database: a save that fails keeps the list
// stored before, and the messages of each failing step.
#include <gtest/gtest.h>

#include "records/option_lists.h"
#include "records_test_project.h"

namespace {

using namespace sb;

using OptionListStorage = sbtest::project_test;

TEST_F(OptionListStorage, AFailedInsertStopsTheSaveAndKeepsTheStoredList) {
    list_tellura_crops crops;
    crops.addRecord("CORN");
    ASSERT_TRUE(crops.saveToDatabase(project.db(), errors)) << errors;
    crops.addRecord("CORN");
    crops.addRecord("WHT");
    EXPECT_FALSE(crops.saveToDatabase(project.db(), errors));
    EXPECT_EQ(errors.text().rfind("ERROR, unable to insert into table Crops\n"
                                  "A specified value violated the integrity constraints for a column or table.\n",
                                  0),
              0u);
    list_tellura_crops back;
    ASSERT_TRUE(back.loadFromDatabase(project.db(), errors));
    ASSERT_EQ(back.size(), 1u);  // the list stored before, not the first half of the new one
    EXPECT_EQ(back.recordAt(0).name, "CORN");
}

TEST_F(OptionListStorage, MissingTableGivesTheDeleteAndOpenMessages) {
    project.dropTable(table_id::fire);
    tellura_fire_list fire;
    fire.addRecord("C_M");
    EXPECT_FALSE(fire.saveToDatabase(project.db(), errors));
    EXPECT_EQ(errors.text(), "ERROR, unable to delete from [Fire]\nUnable to open table Fire\n");
    errors.clear();
    EXPECT_FALSE(fire.loadFromDatabase(project.db(), errors));
    EXPECT_EQ(errors.text(), "Unable to open table Fire\n");
    EXPECT_EQ(fire.size(), 0u);
}

}  // namespace
