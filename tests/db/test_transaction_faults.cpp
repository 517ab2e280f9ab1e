// A session keeps its work only through a commit that the store accepted: a
// refused commit, a full disk or a busy project ends it with the store's reason
// and the project exactly as it was.
#include <gtest/gtest.h>

#include <functional>

#include "db/database.h"
#include "db_test_support.h"
#include "test_support.h"

using namespace sb;
using sbtest::temp_dir;

namespace {

long stationCount(database& db) {
    db_status status;
    auto rows = db.openTable(table_id::weather_stations, "", "", status);
    long count = 0;
    for (db_status s = rows->moveFirst(); s.ok(); s = rows->moveNext()) ++count;
    return count;
}

db_status addStation(database& db, int id) {
    db_status status;
    auto rows = db.openTable(table_id::weather_stations, "", "", status);
    if (!rows) return status;
    table_record r(table_id::weather_stations);
    r.setNumber("ID", id);
    r.setText("Description", std::string(70, 'x'));
    return rows->insert(r);
}

// The store's words for a failed step, empty when it went well.
std::string failure(const db_status& status) {
    std::string text;
    if (status.failed()) appendStatusText(status, text);
    return text;
}

struct fault {
    const char* name;
    // Prepares the fault outside any session; what it returns is held while the save runs.
    std::function<std::shared_ptr<void>(database&, const std::string& path)> prepare;
    // The save's own work inside the session: the store's words when it refused a step.
    std::function<std::string(database&)> work;
    const char* reason;  // the store's words, in the step's status or the commit's reason
};

const fault kFaults[] = {
    {"commit refused",
     [](database& db, const std::string&) {
         // A deferred check is made at the commit: the one way a store refuses there alone.
         EXPECT_TRUE(db.execute("CREATE TABLE `Parent` ([Key] INTEGER PRIMARY KEY)").ok());
         EXPECT_TRUE(db.execute("CREATE TABLE `Child` ([Key] INTEGER REFERENCES `Parent`([Key]) DEFERRABLE "
                                "INITIALLY DEFERRED)")
                         .ok());
         EXPECT_TRUE(db.execute("PRAGMA foreign_keys = ON").ok());
         return nullptr;
     },
     [](database& db) {
         return failure(db.execute("DELETE FROM `Weather Stations` WHERE ID = 1")) +
                failure(db.execute("INSERT INTO `Child` ([Key]) VALUES (7)"));
     },
     "FOREIGN KEY constraint failed"},
    {"disk full",
     [](database& db, const std::string&) {
         EXPECT_TRUE(db.execute("PRAGMA max_page_count = 1").ok());
         return nullptr;
     },
     [](database& db) {
         std::string why = failure(db.execute("DELETE FROM `Weather Stations` WHERE ID = 1"));
         for (int id = 100; id < 2100 && why.empty(); ++id) why = failure(addStation(db, id));
         return why;
     },
     "database or disk is full"},
    {"project busy",
     [](database& db, const std::string& path) -> std::shared_ptr<void> {
         EXPECT_TRUE(db.execute("PRAGMA busy_timeout = 20").ok());
         sb::message_sink errors;
         std::shared_ptr<database> other = database::open(path, errors);
         EXPECT_TRUE(other) << errors;
         std::string refused;
         other->beginSession(refused);
         return std::shared_ptr<void>(other.get(), [other](void*) mutable {
             other->rollbackSession();
             other.reset();
         });
     },
     [](database& db) { return failure(db.execute("DELETE FROM `Weather Stations` WHERE ID = 1")); },
     "database is locked"},
};

TEST(TransactionFaults, AFailedSaveLeavesTheProjectAsItWas) {
    for (const fault& f : kFaults) {
        SCOPED_TRACE(f.name);
        temp_dir dir;
        const std::string path = dir.file("p.sbproj");
        auto db = sbtest::makeProject(path);
        ASSERT_TRUE(db);
        {
            session s(*db);
            for (int id = 1; id <= 3; ++id) ASSERT_TRUE(addStation(*db, id).ok());
            ASSERT_TRUE(s.commit()) << s.storeError();
        }
        std::shared_ptr<void> held = f.prepare(*db, path);
        std::string reason;
        {
            session s(*db);
            // Refused at the start, at a step (then rolled back on leaving) or at the commit.
            if (!s.ok()) reason = s.storeError();
            else reason = f.work(*db);
            if (s.ok() && reason.empty()) {
                EXPECT_FALSE(s.commit());
                reason = s.storeError();
            }
        }
        held.reset();
        EXPECT_NE(reason.find(f.reason), std::string::npos) << reason;
        EXPECT_EQ(db->sessionDepth(), 0);
        EXPECT_EQ(stationCount(*db), 3);
    }
}

}  // namespace
