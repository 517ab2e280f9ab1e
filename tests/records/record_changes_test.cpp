// Several users on one project: saves of one record take turns and the later
// one wins whole, telling its user whose save it replaced.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

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
    sb::message_sink errors;
    EXPECT_TRUE(loadControlRecord(db, id, record, errors)) << errors;
    return record;
}

// A project holding the default record, ID 1, as a new project does.
void addRecordOne(database& db) {
    tellura_control_record record;
    sb::message_sink errors;
    ASSERT_EQ(record.id(), 1);
    ASSERT_TRUE(saveControlRecord(db, record, errors)) << errors;
}

std::unique_ptr<database> openAgain(const records_project& project) {
    sb::message_sink errors;
    auto db = database::open(project.path(), errors);
    EXPECT_TRUE(db) << errors;
    return db;
}

}  // namespace

using RecordChanges = sbtest::project_test;

// The other save holds record 1 alone, or after a hundred records of its own,
// so many that it holds the whole project instead of each record.
TEST_F(RecordChanges, SavesOfOneRecordTakeTurns) {
    addRecordOne(project.db());
    auto now = [] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    };
    for (int othersFirst : {0, 100}) {
        SCOPED_TRACE(othersFirst);
        tellura_control_record mine = readRecord(project.db(), 1);
        std::atomic<bool> holding{false};
        std::atomic<double> committedAt{0};
        std::thread other([&] {
            auto db = openAgain(project);  // a database object stays on its own thread
            sb::message_sink errors;
            tellura_control_record theirs = readRecord(*db, 1);
            edit(theirs, "theirs", 4);
            {
                session unit(*db);
                for (int id = 2; id < 2 + othersFirst; ++id) {
                    tellura_control_record copy = theirs;
                    copy.setId(id);
                    EXPECT_TRUE(saveControlRecord(*db, copy, errors)) << errors;
                }
                EXPECT_TRUE(saveControlRecord(*db, theirs, errors)) << errors;
                holding = true;
                std::this_thread::sleep_for(std::chrono::milliseconds(400));
                committedAt = now();
                EXPECT_TRUE(unit.commit()) << unit.storeError();
            }
        });
        while (!holding) std::this_thread::yield();
        edit(mine, "mine", 2);
        sb::message_sink errors;
        EXPECT_TRUE(saveControlRecord(project.db(), mine, errors)) << errors;
        const double savedAt = now();
        other.join();
        EXPECT_GE(savedAt, committedAt.load()) << "the second save went ahead while the first was open";
        EXPECT_EQ(errors.text(), kReplacedWarning);
        tellura_control_record stored = readRecord(project.db(), 1);
        EXPECT_EQ(stored.description(), "mine");
        EXPECT_EQ(stored.blocks, mine.blocks);  // not the other save's four blocks, nor a mixture
    }
}
