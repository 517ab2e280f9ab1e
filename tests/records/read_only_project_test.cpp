// A write-protected project opens for reading only: no session can be made on
// it, so every save is refused naming the file, and what it holds is still read.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "records/option_lists.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records_test_project.h"

namespace {

using namespace sb;

TEST(ReadOnlyProject, EverySaveIsRefusedNamingTheFile) {
    SB_FILE_STORE_ONLY();
    sbtest::temp_dir dir;
    const std::string path = dir.file("locked.sbproj");
    sb::message_sink errors;
    {
        sbtest::records_project project;
        SB_REQUIRE_PROJECT(project);
        tellura_control_record record;
        tellura_omad_list omad;
        omad.addRecord("M");
        ASSERT_TRUE(saveControlRecord(project.db(), record, errors) && omad.saveToDatabase(project.db(), errors));
        project.close();
        std::filesystem::copy_file(project.path(), path);
    }
    std::filesystem::permissions(path, std::filesystem::perms::owner_read | std::filesystem::perms::group_read);
    auto db = database::open(path, errors);
    ASSERT_NE(db, nullptr) << errors;
    const std::string reason = "The project file is read-only, nothing can be saved in it: " + path + "\n";
    tellura_control_record record;
    tellura_soil soil;
    const struct {
        const char* what;
        std::function<bool(sb::message_sink&)> save;
        const char* lineEnd;  // of the session message: the crop list's ends as the records' do
    } cases[] = {
        {"control record save", [&](sb::message_sink& e) { return saveControlRecord(*db, record, e); }, "\n"},
        {"control record delete", [&](sb::message_sink& e) { return deleteControlRecord(*db, 1, e); }, "\n"},
        {"soil save", [&](sb::message_sink& e) { return saveSoil(*db, soil, e); }, "\n"},
        {"crop list save", [&](sb::message_sink& e) { return list_tellura_crops().saveToDatabase(*db, e); }, "\n"},
        {"omad list save", [&](sb::message_sink& e) { return tellura_omad_list().saveToDatabase(*db, e); }, "\r\n"},
    };
    for (const auto& c : cases) {
        errors.clear();
        EXPECT_FALSE(c.save(errors)) << c.what;
        EXPECT_EQ(errors.text(), std::string("ERROR, unable to create session on database.") + c.lineEnd + reason)
            << c.what;
    }
    tellura_omad_list omad;
    ASSERT_TRUE(omad.loadFromDatabase(*db, errors) && loadControlRecord(*db, 1, record, errors)) << errors;
    EXPECT_EQ(omad.size(), 1u);  // the saved list and record are still there
}

}  // namespace
