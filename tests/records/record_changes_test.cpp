// Several users on one project: saves of one record take turns and the later
// one wins whole, telling its user whose save it replaced.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "app/text_format.h"
#include "db/database.h"
#include "records/tellura_control_record.h"
#include "records_test_project.h"

using namespace sb;
using sbtest::records_project;

namespace {

const char* const kReplacedWarning =
    "WARNING, control record ID=1 was saved by another user since it was read; this save replaces that one.\n";

// The record as one user edits it: its description and as many blocks as asked.
void edit(tellura_control_record& record, const std::string& description, int blocks) {
    record.row.setText("Description", description);
    record.blocks.resize(1);
    for (int n = 2; n <= blocks; ++n) {
        tellura_event_block block = record.blocks[0];
        block.blockNumber = static_cast<int16_t>(n);
        block.firstYear = block.lastYear = static_cast<int16_t>(100 * n);
        block.description = description + " block " + std::to_string(n);
        record.blocks.push_back(block);
    }
}

tellura_control_record readRecord(database& db, int32_t id) {
    tellura_control_record record;
    std::string errors;
    EXPECT_TRUE(readControlRecord(db, id, record, errors)) << errors;
    return record;
}

// A project holding the default record, ID 1, as a new project does.
void addRecordOne(database& db) {
    tellura_control_record record;
    std::string errors;
    ASSERT_EQ(record.id(), 1);
    ASSERT_TRUE(writeControlRecord(record, db, errors)) << errors;
}

std::unique_ptr<database> openAgain(const records_project& project) {
    std::string errors;
    auto db = database::open(project.path(), errors);
    EXPECT_TRUE(db) << errors;
    return db;
}

}  // namespace

using RecordChanges = sbtest::project_test;

TEST_F(RecordChanges, TheLaterSaveWinsWholeAndItsUserIsTold) {
    addRecordOne(project.db());
    auto second = openAgain(project);
    ASSERT_TRUE(second);
    // Both users read record 1 (the new project's default record) before anyone saves.
    tellura_control_record mine = readRecord(project.db(), 1), theirs = readRecord(*second, 1);
    struct step {
        bool byMe;
        const char* description;
        int blocks;
        bool warned;  // the other user saved since this user last read or saved
    };
    const step steps[] = {
        {false, "theirs 1", 1, false}, {true, "mine 1", 3, true},     {true, "mine 2", 2, false},
        {false, "theirs 2", 4, true},  {false, "theirs 3", 1, false}, {true, "mine 3", 2, true},
    };
    for (const step& s : steps) {
        tellura_control_record& record = s.byMe ? mine : theirs;
        edit(record, s.description, s.blocks);
        std::string errors;
        ASSERT_TRUE(writeControlRecord(record, s.byMe ? project.db() : *second, errors)) << errors;
        EXPECT_EQ(errors, s.warned ? kReplacedWarning : "") << s.description;
        // Whoever reads now finds this save whole, blocks and all.
        tellura_control_record stored = readRecord(s.byMe ? *second : project.db(), 1);
        EXPECT_EQ(stored.description(), s.description);
        EXPECT_EQ(stored.blocks, record.blocks) << s.description;
    }
    // A record read afresh saves without a warning; deleting it forgets its count.
    tellura_control_record fresh = readRecord(*second, 1);
    std::string errors;
    ASSERT_TRUE(writeControlRecord(fresh, *second, errors));
    ASSERT_TRUE(deleteControlRecord(project.db(), 1, errors));
    EXPECT_EQ(errors, "");
    EXPECT_EQ(readChangeCount(project.db(), 1), 0);
    EXPECT_TRUE(writeControlRecord(fresh, *second, errors));
    EXPECT_EQ(errors, kReplacedWarning);  // it was deleted since it was read
}

TEST_F(RecordChanges, SavesOfOneRecordTakeTurns) {
    addRecordOne(project.db());
    tellura_control_record mine = readRecord(project.db(), 1);
    std::atomic<bool> holding{false};
    std::atomic<double> committedAt{0};
    auto now = [] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    };
    std::thread other([&] {
        auto db = openAgain(project);  // a database object stays on its own thread
        std::string errors;
        tellura_control_record theirs = readRecord(*db, 1);
        edit(theirs, "theirs", 4);
        {
            session unit(*db);
            EXPECT_TRUE(writeControlRecord(theirs, *db, errors)) << errors;
            holding = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(400));
            committedAt = now();
            EXPECT_TRUE(unit.commit()) << unit.storeError();
        }
    });
    while (!holding) std::this_thread::yield();
    edit(mine, "mine", 2);
    std::string errors;
    EXPECT_TRUE(writeControlRecord(mine, project.db(), errors)) << errors;
    const double savedAt = now();
    other.join();
    EXPECT_GE(savedAt, committedAt.load()) << "the second save went ahead while the first was open";
    EXPECT_EQ(errors, kReplacedWarning);
    tellura_control_record stored = readRecord(project.db(), 1);
    EXPECT_EQ(stored.description(), "mine");
    EXPECT_EQ(stored.blocks, mine.blocks);  // not the other save's four blocks, nor a mixture
}

TEST_F(RecordChanges, AProjectWithoutCountsSavesAsBefore) {
    addRecordOne(project.db());
    project.dropTable(table_id::record_changes);  // a project made before counts were kept
    tellura_control_record mine = readRecord(project.db(), 1), theirs = readRecord(project.db(), 1);
    EXPECT_EQ(mine.changeCount, kChangesUnknown);
    edit(theirs, "theirs", 2);
    ASSERT_TRUE(writeControlRecord(theirs, project.db(), errors)) << errors;
    edit(mine, "mine", 1);
    ASSERT_TRUE(writeControlRecord(mine, project.db(), errors)) << errors;
    ASSERT_TRUE(deleteControlRecord(project.db(), 1, errors)) << errors;
    EXPECT_EQ(errors, "");
}
