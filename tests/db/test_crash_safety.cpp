// A save killed at any moment leaves each record wholly as it was or wholly as saved.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <random>
#include <set>
#include <thread>

#include "app/text_format.h"
#include "db/database.h"
#include "db_test_support.h"
#include "test_support.h"

using namespace sb;

namespace {

constexpr int kRecords = 3;

int eventsFor(int generation) { return 20 + generation % 97; }

// One record save as the application does it: one session, delete the rows that
// carry the ID, insert the control record row and its event rows.
bool saveRecord(database& db, int id, int generation) {
    session s(db);
    if (!s.ok()) return false;
    bool ok = db.execute(strprintf("DELETE FROM `%s` WHERE ID = %d", tableName(table_id::control_records), id)).ok();
    ok = db.execute(strprintf("DELETE * FROM `%s` WHERE ID = %d", tableName(table_id::events), id)).ok() && ok;
    db_status status;
    auto records = db.openTable(table_id::control_records, "", "", status);
    auto events = db.openTable(table_id::events, "", "", status);
    if (!records || !events) return false;
    table_record r(table_id::control_records);
    r.setNumber("ID", id);
    r.setText("Description", "generation " + std::to_string(generation));
    r.setNumber("Soil ID", generation);
    ok = records->insert(r).ok() && ok;
    for (int i = 0; i < eventsFor(generation); ++i) {
        table_record e(table_id::events);
        e.setNumber("ID", id);
        e.setNumber("Block Number", 1);
        e.setNumber("Order", i + 1);
        e.setNumber("Parameter 1", generation);
        ok = events->insert(e).ok() && ok;
    }
    records.reset(), events.reset();
    return ok && s.commit();
}

// Saves until killed, writing one byte to `progress` after each committed save.
[[noreturn]] void saveForever(const std::string& path, int firstGeneration, int progress) {
    signal(SIGPIPE, SIG_IGN);  // the parent stops listening before it kills
    sb::message_sink errors;
    auto db = database::open(path, errors);
    if (!db) _exit(2);
    for (int generation = firstGeneration;; ++generation) {
        if (!saveRecord(*db, 1 + generation % kRecords, generation)) _exit(3);
        [[maybe_unused]] ssize_t told = write(progress, "s", 1);
    }
}

// Waits for `saves` committed saves; gives the time the last one took.
bool awaitSaves(int progress, int saves, std::chrono::microseconds& lastSave) {
    auto previous = std::chrono::steady_clock::now();
    for (int i = 0; i < saves; ++i) {
        char byte;
        if (read(progress, &byte, 1) != 1) return false;
        auto now = std::chrono::steady_clock::now();
        lastSave = std::chrono::duration_cast<std::chrono::microseconds>(now - previous);
        previous = now;
    }
    return true;
}

// Every record's rows belong to one save; returns the highest generation seen.
int checkWhole(const std::string& path) {
    sb::message_sink errors;
    auto db = database::open(path, errors);
    EXPECT_TRUE(db) << errors;
    if (!db) return -1;
    int newest = 0;
    for (int id = 1; id <= kRecords; ++id) {
        db_status status;
        auto records = db->openTable(table_id::control_records, strprintf("ID = %d", id), "", status);
        EXPECT_TRUE(records && records->moveFirst().ok()) << "record " << id << " lost";
        if (!records) return -1;
        int generation = records->row().integer(records->row().column("Soil ID"));
        EXPECT_EQ(records->row().text("Description"), "generation " + std::to_string(generation));
        EXPECT_TRUE(records->moveNext().endOfRowset());
        auto events = db->openTable(table_id::events, strprintf("ID = %d", id), "[Order]", status);
        int count = 0;
        for (db_status s = events->moveFirst(); s.ok(); s = events->moveNext(), ++count) {
            EXPECT_EQ(events->row().number("Parameter 1"), generation) << "record " << id;
            EXPECT_EQ(events->row().integer(events->row().column("Order")), count + 1);
        }
        EXPECT_EQ(count, eventsFor(generation)) << "record " << id << " generation " << generation;
        newest = std::max(newest, generation);
    }
    return newest;
}

}  // namespace

TEST(CrashSafety, KilledSavesLeaveOldOrNewRecords) {
    sbtest::temp_dir dir;
    const std::string path = sbtest::projectLocation(dir.file("crash.sbproj"));
    {
        auto db = sbtest::makeProject(dir.file("crash.sbproj"));
        ASSERT_TRUE(db);
        for (int id = 1; id <= kRecords; ++id) ASSERT_TRUE(saveRecord(*db, id, 0));
    }
    std::mt19937 rng(7);
    std::set<int> generationsSeen;
    int generation = 0;
    // A killed client of a server is the server's to roll back: fewer kills show it.
    const int kills = sbtest::onPostgresql() ? 40 : 120;
    for (int kill = 0; kill < kills; ++kill) {
        int progress[2];
        ASSERT_EQ(pipe(progress), 0);
        pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(progress[0]);
            saveForever(path, generation + 1, progress[1]);
        }
        close(progress[1]);
        // Kill somewhere inside the save after a few committed ones, however fast
        // saves run on this machine (or under a sanitizer).
        std::chrono::microseconds lastSave{0};
        bool saving = awaitSaves(progress[0], 2 + static_cast<int>(rng() % 2), lastSave);
        close(progress[0]);
        if (saving)
            std::this_thread::sleep_for(
                std::chrono::microseconds(std::uniform_int_distribution<long>(0, lastSave.count() * 6 / 5)(rng)));
        ::kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the saving child stopped by itself, exit " << WEXITSTATUS(status);
        generation = checkWhole(path);
        ASSERT_GE(generation, 0);
        if (HasFailure()) break;
        generationsSeen.insert(generation);
    }
    // The kills fell while saves were going on, not only before the first one.
    EXPECT_GT(generationsSeen.size(), static_cast<size_t>(kills * 5 / 12));
}
