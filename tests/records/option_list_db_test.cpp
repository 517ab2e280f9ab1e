// Option lists in the project database: replaced whole on save, read back in
// order, the duplicate rules of the keyed and unkeyed tables, and the
// messages of each failing step.
#include <gtest/gtest.h>

#include "app/release_profile_catalogue.h"

#include <filesystem>

#include "app/text_format.h"
#include "db/database.h"
#include "records/option_lists.h"
#include "records_test_project.h"
#include "test_support.h"

namespace {

using namespace sb;
using sbtest::records_project;

const release_profile& diurnaProfile() {
    const release_profile* profile = release_profile_catalogue::shipped().find("diurna45");
    EXPECT_NE(profile, nullptr) << "the shipped release profiles are not installed";
    static const release_profile none;
    return profile ? *profile : none;
}

int rowCount(database& db, table_id table) {
    db_status status;
    auto rows = db.openTable(table, "", "", status);
    if (!rows) return -1;
    int count = 0;
    for (status = rows->moveFirst(); status.ok(); status = rows->moveNext()) ++count;
    return count;
}

using OptionListStorage = sbtest::project_test;

TEST_F(OptionListStorage, SavedListReadsBackWithEveryValue) {
    list_tellura_crops crops;
    option_record& corn = crops.addRecord("CORN");
    corn.description = "Corn, high yield";
    corn.setNumber(corn.column("prdx(1)4_5"), 2.5);
    corn.setFlag(corn.column("bioflg"), true);
    corn.setNumber(corn.column("claypg"), 4);
    corn.setNumber(corn.column("sfavail(1)"), 0.125);
    crops.addRecord("WHT").setNumber(corn.column("ppdf(1)"), 18);
    ASSERT_TRUE(crops.saveToDatabase(project.db(), errors)) << errors;
    EXPECT_EQ(errors, "");

    list_tellura_crops back;
    ASSERT_TRUE(back.loadFromDatabase(project.db(), errors)) << errors;
    ASSERT_EQ(back.size(), 2u);
    EXPECT_EQ(back.recordAt(0).name, "CORN");
    EXPECT_EQ(back.recordAt(0).description, "Corn, high yield");
    EXPECT_TRUE(static_cast<const table_record&>(back.recordAt(0)) == crops.recordAt(0).toRow());
    EXPECT_EQ(back.recordAt(1).name, "WHT");
    EXPECT_FLOAT_EQ(back.recordAt(1).value("ppdf(1)"), 18);

    // A second save replaces the table: no mix of old and new rows.
    list_tellura_crops one;
    one.addRecord("OATS");
    ASSERT_TRUE(one.saveToDatabase(project.db(), errors)) << errors;
    ASSERT_TRUE(back.loadFromDatabase(project.db(), errors));
    ASSERT_EQ(back.size(), 1u);
    EXPECT_EQ(back.recordAt(0).name, "OATS");
    one.clear();  // and saving an empty list empties the table
    ASSERT_TRUE(one.saveToDatabase(project.db(), errors)) << errors;
    EXPECT_EQ(rowCount(project.db(), table_id::crops), 0);
}

TEST_F(OptionListStorage, GrazeAndTreeRemovalKeepDuplicateNames) {
    list_tellura_graze graze;
    graze.addRecord("GM").setNumber(graze.recordAt(0).column("flgrem"), 0.1);
    graze.addRecord("GM").setNumber(graze.recordAt(0).column("flgrem"), 0.2);
    tellura_tree_removal_list removal;
    removal.addRecord("CLEAR");
    removal.addRecord("clear");
    EXPECT_TRUE(graze.saveToDatabase(project.db(), errors));
    EXPECT_TRUE(removal.saveToDatabase(project.db(), errors));
    EXPECT_EQ(errors, "");
    list_tellura_graze back;
    ASSERT_TRUE(back.loadFromDatabase(project.db(), errors));
    ASSERT_EQ(back.size(), 2u);
    EXPECT_FLOAT_EQ(back.recordAt(1).value("flgrem"), 0.2f);
    EXPECT_EQ(rowCount(project.db(), table_id::tree_removal), 2);
}

TEST_F(OptionListStorage, AFailedInsertStopsTheSaveAndKeepsTheStoredList) {
    list_tellura_crops crops;
    crops.addRecord("CORN");
    ASSERT_TRUE(crops.saveToDatabase(project.db(), errors)) << errors;
    crops.addRecord("CORN");
    crops.addRecord("WHT");
    EXPECT_FALSE(crops.saveToDatabase(project.db(), errors));
    EXPECT_EQ(errors.rfind("ERROR, unable to insert into table Crops\n"
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
    EXPECT_EQ(errors, "ERROR, unable to delete from [Fire]\nUnable to open table Fire\n");
    errors.clear();
    EXPECT_FALSE(fire.loadFromDatabase(project.db(), errors));
    EXPECT_EQ(errors, "Unable to open table Fire\n");
    EXPECT_EQ(fire.size(), 0u);
}

using OptionLists = sbtest::project_test;

TEST_F(OptionLists, LoadAllFindAndRunDirectoryFiles) {
    {
        option_lists lists;
        lists.list(option_kind::graze).addRecord("GM");
        lists.list(option_kind::crop).addRecord("CORN");
        lists.list(option_kind::tree_removal).addRecord("CLEAR");
        for (int k = 0; k < kOptionKindCount; ++k)
            ASSERT_TRUE(lists.list(static_cast<option_kind>(k)).saveToDatabase(project.db(), errors)) << errors;
    }
    option_lists lists;
    ASSERT_TRUE(lists.loadAll(project.db(), errors)) << errors;
    EXPECT_TRUE(lists.contains(option_kind::graze, "gm"));
    EXPECT_TRUE(lists.contains(option_kind::crop, "Corn"));
    EXPECT_FALSE(lists.contains(option_kind::crop, "GM"));
    EXPECT_FALSE(lists.contains(option_kind::harvest, "CORN"));
    ASSERT_NE(lists.find(option_kind::tree_removal, "clear"), nullptr);
    EXPECT_EQ(lists.find(option_kind::tree_removal, "clear")->name, "CLEAR");

    sbtest::temp_dir dir;
    ASSERT_TRUE(lists.writeRunFiles(dir.path(), diurnaProfile(), errors)) << errors;
    for (const char* file : {"crop.100", "cult.100", "fert.100", "fire.100", "graz.100", "harv.100", "irri.100",
                             "omad.100", "tree.100", "trem.100"})
        EXPECT_TRUE(std::filesystem::exists(dir.file(file))) << file;
    EXPECT_FALSE(std::filesystem::exists(dir.file("graze.100")));
    EXPECT_EQ(sbtest::readFile(dir.file("graz.100")).substr(0, 6), "GM   \n");

    option_lists fromFiles;
    std::string status;
    fromFiles.importRunFiles(dir.path(), errors, status);
    EXPECT_EQ(errors, "");
    EXPECT_TRUE(fromFiles.contains(option_kind::graze, "GM"));
    EXPECT_NE(status.find("Imported 1 records and updated 0 records from \"" + dir.file("graz.100") + "\".\n"),
              std::string::npos);
}

TEST_F(OptionLists, LoadAllGoesOnPastAMissingTable) {
    tellura_omad_list omad;
    omad.addRecord("M");
    ASSERT_TRUE(omad.saveToDatabase(project.db(), errors));
    project.dropTable(table_id::harvest);
    option_lists lists;
    EXPECT_FALSE(lists.loadAll(project.db(), errors));
    EXPECT_EQ(errors, "Unable to open table Harvest\n");
    EXPECT_TRUE(lists.contains(option_kind::omad, "M"));
}

TEST(OptionListFiles, WritingIntoAMissingFolderIsReported) {
    option_lists lists;
    std::string errors;
    EXPECT_FALSE(lists.writeRunFiles("/nonexistent-folder-for-soilbench", diurnaProfile(), errors));
    EXPECT_EQ(errors.rfind("ERROR, unable to open file in tellura_input_list.write: "
                           "/nonexistent-folder-for-soilbench/crop.100",
                           0),
              0u)
        << errors;
}

}  // namespace
