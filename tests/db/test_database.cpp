// The project file: creating, opening, row sets, inserts and the messages users see.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <thread>

#include "db/database.h"
#include "db/database_maker.h"
#include "db_test_support.h"
#include "test_support.h"

using namespace sb;
using sbtest::temp_dir;

namespace {

std::string statusText(const db_status& status) {
    std::string text;
    appendStatusText(status, text);
    return text;
}

std::unique_ptr<rowset> open(database& db, table_id t, std::string_view filter = {}, std::string_view order = {}) {
    db_status status;
    auto rs = db.openTable(t, filter, order, status);
    EXPECT_TRUE(rs) << statusText(status);
    return rs;
}

// Inserts weather stations 1..n (description "Station <id>") in one session.
void addStations(database& db, int n) {
    session s(db);
    ASSERT_TRUE(s.ok()) << s.storeError();
    auto rs = open(db, table_id::weather_stations);
    for (int id = 1; id <= n; ++id) {
        table_record r(table_id::weather_stations);
        r.setNumber("ID", id);
        r.setText("Description", "Station " + std::to_string(id));
        ASSERT_TRUE(rs->insert(r).ok());
    }
    ASSERT_TRUE(s.commit()) << s.storeError();
}

int stationId(rowset& rs) { return static_cast<int>(rs.row().number("ID")); }

// The IDs of the table's rows, read to the end in the given order.
std::vector<int> idsOf(database& db, table_id t, std::string_view order = {}, std::string_view filter = {}) {
    std::vector<int> ids;
    auto rs = open(db, t, filter, order);
    if (!rs) return ids;
    for (db_status s = rs->moveFirst(); s.ok(); s = rs->moveNext()) ids.push_back(stationId(*rs));
    return ids;
}

// Runs `check` in a child process as an ordinary user (root may write anywhere);
// the child's exit code: 0 passed, 3 could not switch user, other failed.
int runUnprivileged(const std::function<bool()>& check) {
    pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) _exit(3);
        _exit(check() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 2;
}

}  // namespace

TEST(Database, CreateReplacesAnOldFileOrSaysWhyNot) {
    SB_FILE_STORE_ONLY();
    temp_dir dir;
    const std::string path = dir.file("old.sbproj");
    {
        auto db = sbtest::makeProject(path);
        addStations(*db, 3);
    }
    sb::message_sink errors;
    ASSERT_TRUE(database::create(path, errors)) << errors;
    auto fresh = database::open(path, errors);
    ASSERT_TRUE(fresh);
    db_status status;
    EXPECT_FALSE(fresh->openTable(table_id::weather_stations, "", "", status));  // the old tables are gone
    EXPECT_EQ(statusText(status), "The specified table does not exist.\nno such table: Weather Stations\n");
    fresh.reset();

    // A write-protected file is not replaced; the failure stands and creation is still tried.
    chmod(path.c_str(), 0444);
    errors.clear();
    EXPECT_FALSE(database::create(path, errors));
    EXPECT_EQ(errors.text(), "ERROR, access error removing database file \"" + path +
                                 "\"\nERROR, CreateDataSource failed.\nOther error: 8004F0FF\n"
                                 "The old file is still there and was not replaced: " +
                                 path + "\n");

    // Something that cannot be removed at all: a folder with content.
    const std::string folder = dir.file("folder.sbproj");
    std::filesystem::create_directories(folder + "/inside");
    errors.clear();
    EXPECT_FALSE(database::create(folder, errors));
    EXPECT_TRUE(errors.text().starts_with("ERROR, unable to remove database file \"" + folder + "\"\n")) << errors;

    // A folder that does not exist: the store cannot make the file.
    errors.clear();
    EXPECT_FALSE(database::create(dir.file("no/such/dir/p.sbproj"), errors));
    EXPECT_TRUE(errors.text().starts_with("ERROR, CreateDataSource failed.\nOther error: 8004F0FF\n")) << errors;
}

TEST(Database, OpenRefusesWhatIsNotAProject) {
    SB_FILE_STORE_ONLY();
    temp_dir dir;
    sb::message_sink errors;
    sbtest::writeFile(dir.file("text.sbproj"), std::string(4096, 'x'));
    ASSERT_TRUE(database::create(dir.file("other.db"), errors));
    {
        auto other = database::open(dir.file("other.db"), errors);  // another program's: not our tables, nor mark
        ASSERT_TRUE(other && other->execute("Create Table [Invoices]([No] INTEGER)").ok() &&
                    other->execute("PRAGMA application_id = 42").ok());
    }
    const std::pair<const char*, const char*> cases[] = {
        {"missing.sbproj", "8004F0FF\nThe file does not exist."},
        {"text.sbproj", "8004F002\nfile is not a database"},
        {"other.db", "8004F002\nThe file is not a Soilbench project: it holds none of the project's tables."},
    };
    for (auto [name, why] : cases) {
        errors.clear();
        EXPECT_FALSE(database::open(dir.file(name), errors));
        EXPECT_EQ(errors.text(), "ERROR, unable to open database: " + dir.file(name) + "\nOther error: " + why + "\n");
    }
    EXPECT_FALSE(std::filesystem::exists(dir.file("missing.sbproj")));  // not made by the attempt
}

TEST(Database, MissingTableOrColumnIsReportedWhenTheTableIsOpened) {
    temp_dir dir;
    auto db = sbtest::makeProject(dir.file("p.sbproj"));
    ASSERT_TRUE(db->execute("DROP TABLE [Fire]").ok());
    ASSERT_TRUE(db->execute("DROP TABLE [Omad]").ok());
    ASSERT_TRUE(db->execute("Create Table [Omad]([Name] TEXT(20), [Description] TEXT(80))").ok());
    db_status status;
    EXPECT_FALSE(db->openTable(table_id::fire, "", "", status));
    const std::string noFire = sbtest::byStore("no such table: Fire", "relation \"Fire\" does not exist");
    EXPECT_EQ(statusText(status), "The specified table does not exist.\n" + noFire + "\n");
    EXPECT_FALSE(db->openTable(table_id::omad, "", "", status));
    EXPECT_EQ(statusText(status), "The specified column did not exist.\nno such column: [omadtyp] in table [Omad]\n");
    EXPECT_FALSE(db->openTable(table_id::crops, "[Nmae] = 'x'", "", status));
    EXPECT_EQ(statusText(status),
              "The specified column did not exist.\n" +
                  sbtest::byStore("no such column: Nmae",
                                  "column \"Nmae\" does not exist. Perhaps you meant to reference the column "
                                  "\"Crops.Name\".") +
                  "\n");
    EXPECT_FALSE(db->openTable(table_id::crops, "Name = = 1", "", status));
    EXPECT_EQ(statusText(status), "One or more errors occurred during processing of command.\n" +
                                      sbtest::byStore("near \"=\": syntax error", "syntax error at or near \"=\"") +
                                      "\n");
    EXPECT_EQ(statusText(db->execute("DELETE * FROM `Fire`")), "The specified table does not exist.\n" + noFire + "\n");
    // A table of ours made before it gained a column is given it when the project is opened.
    ASSERT_TRUE(db->execute("ALTER TABLE [Run History] DROP COLUMN [First Error]").ok());
    EXPECT_FALSE(db->openTable(table_id::run_history, "", "", status));
    db.reset();
    sb::message_sink errors;
    db = database::open(sbtest::projectLocation(dir.file("p.sbproj")), errors);
    ASSERT_TRUE(db) << errors;
    EXPECT_TRUE(db->openTable(table_id::run_history, "", "", status)) << statusText(status);
}

TEST(DatabaseMaker, FailingTableIsReportedAndTheOthersAreMade) {
    temp_dir dir;
    sb::message_sink errors;
    const std::string location = sbtest::projectLocation(dir.file("p.sbproj"));
    ASSERT_TRUE(database::create(location, errors));
    auto db = database::open(location, errors);
    ASSERT_TRUE(db);
    ASSERT_TRUE(db->execute("Create Table [Weather Stations]([ID] INTEGER)").ok());
    database_maker maker(*db);
    EXPECT_FALSE(maker.createAllTables(errors));
    EXPECT_EQ(
        errors,
        "ERROR, unable to create table.\n"
        "Create Table [Weather Stations]([ID] INTEGER, [Description] TEXT(80))\n"
        "One or more errors occurred during processing of command.\n" +
            sbtest::byStore("table `Weather Stations` already exists", "relation \"Weather Stations\" already exists") +
            "\n");
    db_status status;
    EXPECT_TRUE(db->openTable(table_id::trees, "", "", status));
    EXPECT_TRUE(db->openTable(table_id::tree_removal, "", "", status));

    // An unknown type code reaches the store as written and is refused there.
    database_maker_table odd("Odd");
    odd.addField("a", 99);
    odd.addIndex("Primary", true, true, {"a"});
    errors.clear();
    EXPECT_FALSE(maker.createTable(odd, errors));
    EXPECT_TRUE(
        errors.text().starts_with("ERROR, unable to create table.\n"
                                  "Create Table [Odd]([a] ERROR, Unknown field type)\n"
                                  "One or more errors occurred during processing of command.\n"))
        << errors;

    // An index on a column that does not exist stops that table's indexes.
    database_maker_table keyed = database_maker_table::fromColumnList("Keyed", "INTEGER: a, b", {});
    keyed.addIndex("Primary", true, true, {"zz"});
    keyed.addIndex("Second", false, false, {"b"});
    errors.clear();
    ASSERT_TRUE(maker.createTable(keyed, errors)) << errors;
    EXPECT_FALSE(maker.createIndexes(keyed, errors));
    EXPECT_EQ(errors.text(),
              "ERROR, unable to create index.\nCreate Index [Primary] on [Keyed]([zz]) with primary\n"
              "The specified column did not exist.\n" +
                  sbtest::byStore("no such column: zz", "column \"zz\" does not exist") + "\n");
}

TEST(RowSet, MovesBothWaysAndReportsBothEnds) {
    temp_dir dir;
    auto db = sbtest::makeProject(dir.file("p.sbproj"));
    const int n = 700;  // more than the rows kept for moving back
    addStations(*db, n);
    auto rs = open(*db, table_id::weather_stations, "", "ID ASC");
    EXPECT_TRUE(rs->movePrevious().endOfRowset());
    ASSERT_TRUE(rs->moveFirst().ok());
    EXPECT_EQ(stationId(*rs), 1);
    EXPECT_TRUE(rs->movePrevious().endOfRowset());
    ASSERT_TRUE(rs->moveNext().ok());  // from before the first row
    EXPECT_EQ(stationId(*rs), 1);
    ASSERT_TRUE(rs->moveLast().ok());
    EXPECT_EQ(stationId(*rs), n);
    EXPECT_TRUE(rs->moveNext().endOfRowset());
    EXPECT_TRUE(rs->moveNext().endOfRowset());
    ASSERT_TRUE(rs->movePrevious().ok());  // from after the last row
    EXPECT_EQ(stationId(*rs), n);
    // All the way back, then forward again: every row once, in order.
    int expected = n;
    for (db_status s = rs->moveLast(); s.ok(); s = rs->movePrevious()) EXPECT_EQ(stationId(*rs), expected--);
    EXPECT_EQ(expected, 0);
    for (db_status s = rs->moveNext(); s.ok(); s = rs->moveNext()) EXPECT_EQ(stationId(*rs), ++expected);
    EXPECT_EQ(expected, n);
    EXPECT_EQ(rs->row().text("Description"), "Station 700");

    auto filtered = open(*db, table_id::weather_stations, "ID > 350", "ID ASC");
    ASSERT_TRUE(filtered->moveFirst().ok());
    EXPECT_EQ(stationId(*filtered), 351);
    auto empty = open(*db, table_id::weather_stations, "ID > 5000", "");
    EXPECT_TRUE(empty->moveFirst().endOfRowset());
    EXPECT_TRUE(empty->moveLast().endOfRowset());
    EXPECT_TRUE(empty->moveNext().endOfRowset());
    EXPECT_TRUE(empty->movePrevious().endOfRowset());
}

TEST(RowSet, ValuesTheColumnCannotHoldAreRefusedWithTheirPlace) {
    temp_dir dir;
    auto db = sbtest::makeProject(dir.file("p.sbproj"));
    auto events = open(*db, table_id::events);
    auto refused = [&](const char* column, double value) {
        table_record r(table_id::events);
        r.setNumber(column, value);
        return statusText(events->insert(r));
    };
    const std::string head = "Other error: 8004F001\nThe value ";
    const struct {
        const char* column;
        double value;
        const char* message;
    } cases[] = {
        {"Month", 256, "256 for column [Month] of table [Events] is out of range: BYTE holds 0 to 255.\n"},
        {"Month", -1, "-1 for column [Month] of table [Events] is out of range: BYTE holds 0 to 255.\n"},
        {"Year", 32768, "32768 for column [Year] of table [Events] is out of range: SMALLINT holds -32768 to 32767.\n"},
        {"ID", 2147483648.0,
         "2147483648 for column [ID] of table [Events] is out of range: INTEGER holds -2147483648 to 2147483647.\n"},
        {"Parameter 1", NAN, "nan for column [Parameter 1] of table [Events] is not a finite number.\n"},
        {"Parameter 2", 1e39, "inf for column [Parameter 2] of table [Events] is not a finite number.\n"},  // > float
    };
    for (const auto& c : cases) EXPECT_EQ(refused(c.column, c.value), head + c.message) << c.column;
    table_record r(table_id::events);
    r.setText("Item", std::string(21, 'x'));
    EXPECT_EQ(statusText(events->insert(r)),
              "Other error: 8004F001\nThe text for column [Item] of table [Events] has 21 characters; the column "
              "holds at most 20: \"xxxxxxxxxxxxxxxxxxxxx\"\n");
    r.setText("Item", "äääääääääääääääääääà");  // 20 letters, 40 bytes: fits
    EXPECT_TRUE(events->insert(r).ok());
    auto all = open(*db, table_id::events);
    ASSERT_TRUE(all->moveFirst().ok());
    EXPECT_EQ(all->row().text("Item"), "äääääääääääääääääääà");
    EXPECT_TRUE(all->moveNext().endOfRowset());  // nothing refused was stored
}

TEST(Session, NestedSessionsAreOneUnitKeptOnlyWhenCommitted) {
    temp_dir dir;
    auto db = sbtest::makeProject(dir.file("p.sbproj"));
    addStations(*db, 3);
    auto stationThere = [&](int id) {
        return open(*db, table_id::weather_stations, "ID = " + std::to_string(id))->moveFirst().ok();
    };
    {
        session outer(*db);
        ASSERT_TRUE(outer.ok());
        {
            session inner(*db);
            ASSERT_TRUE(inner.ok());
            EXPECT_EQ(db->sessionDepth(), 2);
            EXPECT_TRUE(db->execute("DELETE FROM `Weather Stations` WHERE ID = 1").ok());
            EXPECT_TRUE(inner.commit());
        }
        EXPECT_EQ(db->sessionDepth(), 1);
        outer.rollback();
    }
    EXPECT_EQ(db->sessionDepth(), 0);
    EXPECT_TRUE(stationThere(1)) << "a rolled back session changes nothing";
    {
        session outer(*db);
        {
            session inner(*db);
            EXPECT_TRUE(db->execute("DELETE * FROM `Weather Stations` WHERE ID = 1").ok());
        }  // ended uncommitted: gives up the whole unit
        EXPECT_FALSE(outer.commit());
        EXPECT_EQ(outer.storeError(), "An earlier part of this save failed, so none of it is kept.");
    }
    EXPECT_TRUE(stationThere(1));
    {
        session s(*db);
        EXPECT_TRUE(db->execute("DELETE * FROM `Weather Stations` WHERE ID = 1").ok());
    }  // a save that returns early without committing keeps nothing
    EXPECT_TRUE(stationThere(1));
    {
        session s(*db);
        EXPECT_TRUE(db->execute("DELETE * FROM `Weather Stations` WHERE ID = 1").ok());
        EXPECT_TRUE(s.commit()) << s.storeError();
        EXPECT_FALSE(s.commit()) << "a session commits once";
    }
    EXPECT_FALSE(stationThere(1));
    EXPECT_EQ(db->sessionDepth(), 0);
}

TEST(Database, ReadOnlyProjectOpensAndRefusesSavesLosingNothing) {
    SB_FILE_STORE_ONLY();
    temp_dir dir;
    const std::string path = dir.file("p.sbproj");
    {
        auto db = sbtest::makeProject(path);
        addStations(*db, 2);
    }
    chmod(path.c_str(), 0444);
    sb::message_sink errors;
    auto db = database::open(path, errors);
    ASSERT_TRUE(db) << errors;
    EXPECT_TRUE(db->readOnly());
    std::string storeError;
    EXPECT_FALSE(db->beginSession(storeError));
    EXPECT_EQ(storeError, "The project file is read-only, nothing can be saved in it: " + path);
    session s(*db);
    EXPECT_FALSE(s.ok());
    // Even written past the session, the store itself refuses.
    db_status status = db->execute("DELETE FROM `Weather Stations`");
    EXPECT_EQ(status.code, kStatusReadOnly) << statusText(status);
    auto rs = open(*db, table_id::weather_stations, "", "ID ASC");
    ASSERT_TRUE(rs->moveLast().ok());
    EXPECT_EQ(stationId(*rs), 2);
}

TEST(Database, TwoConnectionsOnOneFileFromTwoThreads) {
    temp_dir dir;
    const std::string path = sbtest::projectLocation(dir.file("p.sbproj"));
    { auto db = sbtest::makeProject(dir.file("p.sbproj")); }
    std::atomic<int> failures{0};
    auto writer = [&](int base) {
        sb::message_sink errors;
        auto db = database::open(path, errors);
        if (!db) {
            ++failures;
            return;
        }
        for (int i = 0; i < 50; ++i) {
            session s(*db);
            if (!s.ok()) {
                ++failures;
                continue;
            }
            db_status st;
            auto rs = db->openTable(table_id::weather_stations, "", "", st);
            table_record r(table_id::weather_stations);
            r.setNumber("ID", base + i);
            if (rs) st = rs->insert(r);
            if (!rs || !st.ok()) ++failures;
            rs.reset();
            if (!s.commit()) ++failures;
        }
    };
    std::thread a(writer, 0), b(writer, 1000);
    a.join();
    b.join();
    EXPECT_EQ(failures.load(), 0);
    sb::message_sink errors;
    auto db = database::open(path, errors);
    EXPECT_EQ(idsOf(*db, table_id::weather_stations).size(), 100u);
}

TEST(Session, SavingWhileARowSetIsHalfReadOnTheSameConnection) {
    temp_dir dir;
    auto db = sbtest::makeProject(dir.file("p.sbproj"));
    addStations(*db, 10);
    auto reading = open(*db, table_id::weather_stations, "", "ID ASC");
    ASSERT_TRUE(reading->moveFirst().ok());
    ASSERT_TRUE(reading->moveNext().ok());
    {
        session s(*db);
        ASSERT_TRUE(s.ok()) << s.storeError();
        EXPECT_TRUE(db->execute("DELETE FROM `Weather Stations` WHERE ID = 10").ok());
        table_record r(table_id::weather_stations);
        r.setNumber("ID", 11);
        EXPECT_TRUE(open(*db, table_id::weather_stations)->insert(r).ok());
        EXPECT_TRUE(s.commit()) << s.storeError();
    }
    ASSERT_TRUE(reading->moveNext().ok());
    EXPECT_EQ(stationId(*reading), 3);
    reading.reset();
    EXPECT_EQ(idsOf(*db, table_id::weather_stations, "ID DESC"), (std::vector<int>{11, 9, 8, 7, 6, 5, 4, 3, 2, 1}));
}

namespace {
struct StationRecord : table_record {
    StationRecord() : table_record(table_id::weather_stations) {}
    std::string description() const { return text("Description"); }
};
}  // namespace

TEST(RowSet, TypedRowSetAndRowsOfAnotherTable) {
    temp_dir dir;
    auto db = sbtest::makeProject(dir.file("p.sbproj"));
    db_status status;
    rowset_of<StationRecord> stations(db->openTable(table_id::weather_stations, "", "", status));
    ASSERT_TRUE(stations.isOpen());
    StationRecord s;
    s.setNumber("ID", 4);
    s.setText("Description", "Four");
    ASSERT_TRUE(stations.insert(s).ok());
    // A row of another table carries over the columns of the same name only.
    table_record block(table_id::event_blocks);
    block.setNumber("ID", 5);
    block.setText("Description", "Five");
    block.setNumber("Weather ID", 9);
    stations.base().setRow(block);
    ASSERT_TRUE(stations.base().insert().ok());
    EXPECT_EQ(stations.base().insert(block).code, kStatusCantConvert);

    rowset_of<StationRecord> read(db->openTable(table_id::weather_stations, "", "[ID] DESC", status));
    ASSERT_TRUE(read.moveFirst().ok());
    EXPECT_EQ(read.record().description(), "Five");
    ASSERT_TRUE(read.moveNext().ok());
    EXPECT_EQ(read.record().description(), "Four");
    EXPECT_TRUE(read.moveNext().endOfRowset());
}

TEST(Database, ReadOnlyProjectInAFolderNobodyMayWrite) {
    SB_FILE_STORE_ONLY();
    temp_dir dir;
    const std::string folder = dir.file("shelf");
    std::filesystem::create_directories(folder);
    const std::string path = folder + "/p.sbproj";
    {
        auto db = sbtest::makeProject(path);
        addStations(*db, 2);
    }
    chmod(path.c_str(), 0444);
    chmod(dir.path().c_str(), 0755);
    chmod(folder.c_str(), 0555);
    int result = runUnprivileged([&] {
        sb::message_sink errors;
        std::string storeError;
        auto db = database::open(path, errors);
        if (!db || !db->readOnly() || db->beginSession(storeError)) return false;
        db_status status;
        auto rs = db->openTable(table_id::weather_stations, "", "ID DESC", status);
        return rs && rs->moveFirst().ok() && rs->row().text("Description") == "Station 2";
    });
    if (result == 3) GTEST_SKIP() << "cannot switch to an unprivileged user here";
    EXPECT_EQ(result, 0);
}

TEST(Session, ASecondProgramSavingWaitsForTheFirst) {
    temp_dir dir;
    const std::string path = sbtest::projectLocation(dir.file("p.sbproj"));
    { auto db = sbtest::makeProject(dir.file("p.sbproj")); }
    sb::message_sink errors;
    auto second = database::open(path, errors);
    ASSERT_TRUE(second) << errors;
    std::atomic<bool> holding{false};
    std::thread saver([&] {
        sb::message_sink e;
        auto first = database::open(path, e);  // a database object stays on its own thread
        if (!first) {
            holding = true;
            return;
        }
        session s(*first);
        table_record r(table_id::weather_stations);
        r.setNumber("ID", 1);
        db_status st;
        first->openTable(table_id::weather_stations, "", "", st)->insert(r);
        holding = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        s.commit();
    });
    while (!holding) std::this_thread::yield();
    // Readers are not blocked by the open save, and see the state before it.
    EXPECT_EQ(idsOf(*second, table_id::weather_stations), std::vector<int>{});
    {
        session s(*second);  // queues behind the first save instead of failing
        EXPECT_TRUE(s.ok()) << s.storeError();
        table_record r(table_id::weather_stations);
        r.setNumber("ID", 2);
        EXPECT_TRUE(open(*second, table_id::weather_stations)->insert(r).ok());
        EXPECT_TRUE(s.commit()) << s.storeError();
    }
    saver.join();
    EXPECT_EQ(idsOf(*second, table_id::weather_stations, "ID ASC"), (std::vector<int>{1, 2}));
}
