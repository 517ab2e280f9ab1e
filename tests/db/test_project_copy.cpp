// Copying whole projects between files and servers: everything arrives, exactly,
// or nothing does.
#include <gtest/gtest.h>

#include <random>

#include "db/database.h"
#include "db/database_maker.h"
#include "db/project_copy.h"
#include "db_test_support.h"
#include "test_support.h"

using namespace sb;
using sbtest::temp_dir;

namespace {

using project_rows = std::vector<std::vector<table_record>>;  // per table, in table order

project_rows readAll(database& db) {
    project_rows rows(kTableCount);
    for (int i = 0; i < kTableCount; ++i) {
        db_status status;
        auto set = db.openTable(static_cast<table_id>(i), "", "", status);
        EXPECT_TRUE(set) << tableName(static_cast<table_id>(i));
        if (!set) continue;
        for (status = set->moveFirst(); status.ok(); status = set->moveNext())
            rows[static_cast<size_t>(i)].push_back(set->row());
    }
    return rows;
}

void expectSameRows(const project_rows& got, const project_rows& want, const std::string& what);

// Every table holds rows of random values anywhere in each column's range, and
// reads them back exactly, in the order they were stored.
project_rows fillEveryTable(database& db, unsigned seed) {
    std::mt19937 rng(seed);
    project_rows written(kTableCount);
    session s(db);
    for (int i = 0; i < kTableCount; ++i) {
        auto table = static_cast<table_id>(i);
        db_status status;
        auto into = db.openTable(table, "", "", status);
        for (int n = 0; n < 9; ++n) {
            table_record r(table);
            sbtest::fillRandom(r, rng);
            // Distinct keys, inserted out of key order: table order must survive.
            if (r.isText(0)) r.setText(0, "k" + std::to_string((n * 5) % 9));
            else r.setNumber(0, (n * 5) % 9 - 4);
            EXPECT_TRUE(into->insert(r).ok()) << tableName(table);
            written[static_cast<size_t>(i)].push_back(r);
        }
    }
    EXPECT_TRUE(s.commit()) << s.storeError();
    expectSameRows(readAll(db), written, "stored");
    return written;
}

void expectSameRows(const project_rows& got, const project_rows& want, const std::string& what) {
    for (int i = 0; i < kTableCount; ++i) {
        const auto& g = got[static_cast<size_t>(i)];
        const auto& w = want[static_cast<size_t>(i)];
        ASSERT_EQ(g.size(), w.size()) << what << ": " << tableName(static_cast<table_id>(i));
        for (size_t n = 0; n < g.size(); ++n)
            EXPECT_TRUE(g[n] == w[n]) << what << ": " << tableName(static_cast<table_id>(i)) << " row " << n;
    }
}

bool copy(const std::string& from, const std::string& to, bool replace, sb::message_sink& errors) {
    copy_options options;
    options.replace = replace;
    long long rows = 0;
    return copyProject(from, to, options, rows, errors);
}

std::unique_ptr<database> makeProjectAt(const std::string& location) {
    sb::message_sink errors;
    EXPECT_TRUE(database::create(location, errors)) << errors;
    auto db = database::open(location, errors);
    EXPECT_TRUE(db && database_maker(*db).createAllTables(errors)) << errors;
    return db;
}

std::string fileOrServer(const temp_dir& dir, const std::string& name, bool server) {
    return server ? sbtest::projectLocation(dir.file(name)) : dir.file(name);
}

}  // namespace

TEST(ProjectCopy, ATargetHoldingDataIsReplacedOnlyWhenAsked) {
    temp_dir dir;
    for (bool server : {false, true}) {
        if (server && !sbtest::onPostgresql()) continue;
        const std::string name = server ? "server-target.sbproj" : "file-target.sbproj";
        const std::string sourceFile = dir.file(std::string("source-for-") + name);
        {
            auto source = sbtest::makeProject(sourceFile);
            auto target = makeProjectAt(fileOrServer(dir, name, server));
            ASSERT_TRUE(source && target);
            fillEveryTable(*source, 3);
            fillEveryTable(*target, 4);
        }
        const std::string from = sbtest::projectLocation(sourceFile);
        const std::string to = fileOrServer(dir, name, server);
        sb::message_sink errors;
        EXPECT_FALSE(copy(from, to, false, errors));
        EXPECT_EQ(errors.text(), "ERROR, the target project " + to +
                                     " already holds data; copy-project replaces it only when told to (--force).\n");
        errors.clear();
        ASSERT_TRUE(copy(from, to, true, errors)) << errors;
        auto a = database::open(from, errors), b = database::open(to, errors);
        ASSERT_TRUE(a && b) << errors;
        expectSameRows(readAll(*b), readAll(*a), name);
        EXPECT_FALSE(copy(from, from, true, errors));
        EXPECT_NE(errors.text().find("ERROR, the source and the target are the same project.\n"), std::string::npos);
    }
}

TEST(ProjectCopy, AFailedCopyLeavesTheTargetAsItWas) {
    temp_dir dir;
    {
        auto source = sbtest::makeProject(dir.file("source.sbproj"));
        ASSERT_TRUE(source);
        // A value no column of ours may hold, as a damaged or foreign project may have:
        // the copy stops at it, late, after most tables were copied.
        const char* insert = sbtest::onPostgresql() ? "INSERT INTO [Tree Removal] ([Name], [evntyp]) VALUES ('x', 9)"
                                                    : "INSERT INTO [Tree Removal] ([Name], [evntyp]) VALUES ('x', 300)";
        ASSERT_TRUE(source->execute(insert).ok());
        if (sbtest::onPostgresql()) {  // the server's column refuses 300: a text too long does it there
            ASSERT_TRUE(source->execute("ALTER TABLE [Tree Removal] ALTER COLUMN [Name] TYPE VARCHAR(40)").ok());
            ASSERT_TRUE(source->execute("UPDATE [Tree Removal] SET [Name] = 'a name longer than twenty'").ok());
        }
    }
    const std::string from = sbtest::projectLocation(dir.file("source.sbproj"));
    struct target_case {
        bool server;
        bool existing;
    };
    for (target_case c :
         {target_case{false, false}, target_case{false, true}, target_case{true, false}, target_case{true, true}}) {
        if (c.server && !sbtest::onPostgresql()) continue;
        const std::string name = std::string(c.server ? "server" : "file") + (c.existing ? "-old" : "-new") + ".sbproj";
        const std::string to = fileOrServer(dir, name, c.server);
        project_rows before;
        if (c.existing) {
            auto target = makeProjectAt(to);
            ASSERT_TRUE(target);
            before = fillEveryTable(*target, 5);
        }
        sb::message_sink errors;
        EXPECT_FALSE(copy(from, to, true, errors)) << name;
        EXPECT_NE(errors.text().find("ERROR, unable to copy row 1 of table [Tree Removal].\n"), std::string::npos)
            << errors;
        if (!c.existing) {
            sb::message_sink e;
            EXPECT_EQ(database::probe(to, e), database::presence::absent) << name << ": the copy's target stayed";
            continue;
        }
        auto target = database::open(to, errors);
        ASSERT_TRUE(target) << errors;
        expectSameRows(readAll(*target), before, name + " after a failed copy");
    }
}
