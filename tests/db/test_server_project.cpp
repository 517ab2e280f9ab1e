// Projects on a PostgreSQL server: making and opening them, logging in, and what
// users are told when any of it fails.
#include <gtest/gtest.h>

#include <cstdlib>

#include "db/database.h"
#include "db/database_maker.h"
#include "db/project_location.h"
#include "db_test_support.h"
#include "test_support.h"

using namespace sb;
using sbtest::temp_dir;

namespace {

// The location's database name, for messages that name it.
std::string databaseOf(const std::string& url) {
    project_location location;
    std::string problem;
    EXPECT_TRUE(project_location::parse(url, location, problem)) << problem;
    return location.databaseName();
}

// The password sources of the client library, set for one test and restored after it.
class password_sources {
public:
    explicit password_sources(const temp_dir& dir) {
        unsetenv("PGPASSWORD");
        setenv("PGPASSFILE", dir.file("no-pgpass").c_str(), 1);
    }
    ~password_sources() {
        unsetenv("PGPASSWORD");
        unsetenv("PGPASSFILE");
    }
};

}  // namespace

TEST(ServerProject, NewMakesTheDatabaseAndNeverReplacesAProject) {
    SB_REQUIRE_SERVER();
    temp_dir dir;
    const std::string url = sbtest::projectLocation(dir.file("shared.sbproj"));
    sb::message_sink errors;
    {
        auto db = sbtest::makeProject(dir.file("shared.sbproj"));
        ASSERT_TRUE(db);
        session s(*db);
        table_record station(table_id::weather_stations);
        station.setNumber("ID", 7);
        db_status status;
        ASSERT_TRUE(db->openTable(table_id::weather_stations, "", "", status)->insert(station).ok());
        ASSERT_TRUE(s.commit()) << s.storeError();
    }
    EXPECT_FALSE(database::create(url, errors));
    EXPECT_EQ(errors.text(),
              "ERROR, CreateDataSource failed.\nOther error: 8004F0FF\nThe database \"" + databaseOf(url) +
                  "\" already holds tables; a new project is made only in a new or empty database, and a "
                  "shared project is never replaced.\n");
    auto db = database::open(url, errors);
    ASSERT_TRUE(db) << errors;
    db_status status;
    auto stations = db->openTable(table_id::weather_stations, "", "", status);
    ASSERT_TRUE(stations && stations->moveFirst().ok()) << "the project was replaced";
    EXPECT_EQ(stations->row().number("ID"), 7);
    EXPECT_EQ(db->path(), url);  // no password in it to hide
}

TEST(ServerProject, OpenTellsProjectsFromOtherDatabases) {
    SB_REQUIRE_SERVER();
    temp_dir dir;
    const std::string ours = sbtest::projectLocation(dir.file("ours.sbproj"));
    const std::string other = sbtest::projectLocation(dir.file("other.sbproj"));
    sb::message_sink errors;
    {
        // Our tables without our mark (made by another tool): still a project.
        auto db = sbtest::makeProject(dir.file("ours.sbproj"));
        ASSERT_TRUE(db->execute("COMMENT ON DATABASE [" + databaseOf(ours) + "] IS NULL").ok());
        // A database of another program: no mark, none of our tables.
        ASSERT_TRUE(database::create(other, errors)) << errors;
        auto foreign = database::open(other, errors);
        ASSERT_TRUE(foreign) << errors;
        ASSERT_TRUE(foreign->execute("Create Table [Invoices]([No] INTEGER)").ok());
        ASSERT_TRUE(foreign->execute("COMMENT ON DATABASE [" + databaseOf(other) + "] IS NULL").ok());
    }
    EXPECT_TRUE(database::open(ours, errors)) << errors;
    EXPECT_FALSE(database::open(other, errors));
    EXPECT_EQ(errors.text(),
              "ERROR, unable to open database: " + other +
                  "\nOther error: 8004F002\nThe database is not a Soilbench project: it holds none of the "
                  "project's tables.\n");
}

TEST(ServerProject, EveryFailureToReachAProjectIsToldWithoutThePassword) {
    SB_REQUIRE_SERVER();
    const sbtest::postgresql_server& server = *sbtest::postgresqlServer();
    temp_dir dir;
    password_sources sources(dir);
    const std::string socket = "?host=" + server.socket;
    const std::string wrong = "wrong%20horse";
    const struct {
        std::string location;
        std::string told;  // the messages up to the store's own description
        std::string described;
    } cases[] = {
        {"mysql://h/db", "The scheme \"mysql\" is not known: a project is a file path or a postgresql:// URL.\n", ""},
        {"postgresql://" + server.login + ":" + wrong + "@h:99999/db",
         "The port \"99999\" in the URL is not a number from 1 to 65535.\n", ""},
        {"postgresql://" + server.login + ":" + wrong + "@/postgres" + socket, "Authentication failed.\n",
         "password authentication failed for user \"" + server.login + "\""},
        {"postgresql://" + server.login + "@/postgres" + socket, "Authentication failed.\n", "no password supplied"},
        {"postgresql:///postgres?host=" + dir.file("no-server"), "Other error: 8004F005\n",
         "connection to server on socket \"" + dir.file("no-server") + "/.s.PGSQL.5432\" failed"},
        {"postgresql:///sbtest_no_such_project" + socket, "Other error: 8004F002\n",
         "database \"sbtest_no_such_project\" does not exist"},
    };
    for (const auto& c : cases) {
        sb::message_sink errors;
        EXPECT_FALSE(database::open(c.location, errors)) << c.location;
        const std::string head = "ERROR, unable to open database: " + project_location::shown(c.location) + "\n";
        EXPECT_EQ(errors.text().substr(0, head.size() + c.told.size()), head + c.told) << errors;
        EXPECT_NE(errors.text().find(c.described), std::string::npos) << errors;
        EXPECT_EQ(errors.text().find("wrong"), std::string::npos) << "a password was shown: " << errors;
    }
}
