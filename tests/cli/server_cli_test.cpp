// The soilbench program on projects that live on a PostgreSQL server: the same
// commands take a URL, copy-project moves projects between files and servers,
// and a server that goes away mid-run fails the run cleanly.
#include <future>

#include "cli_fixture.h"

namespace {

class ServerCli : public CliTest {
protected:
    void SetUp() override {
        CliTest::SetUp();
        env["PGPASSFILE"] = dir.file("no-pgpass");
        server = sbtest::postgresqlServer();
    }
    const sbtest::postgresql_server* server = nullptr;
};

}  // namespace

TEST_F(ServerCli, EveryCommandTakesAUrlAndCopyProjectGoesBothWays) {
    SB_REQUIRE_SERVER();
    const std::string url = sbtest::projectLocation(dir.file("shared.sbproj"));
    auto created = run({"new", url});
    EXPECT_EQ(created.exitCode, 0) << created.err;
    EXPECT_EQ(created.out, "Created project " + url + " with one default record (ID 1).\n");
    auto again = run({"new", url});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_THAT(again.err, HasSubstr("already holds tables"));
    EXPECT_EQ(run({"copy", url, "--id", "1", "--to", "5"}).exitCode, 0);

    const std::string file = dir.file("copy.sbproj");
    auto down = run({"copy-project", url, file});
    EXPECT_EQ(down.exitCode, 0) << down.err;
    EXPECT_THAT(down.out, StartsWith("Copied project " + url + " to " + file + ": "));
    EXPECT_TRUE(down.out.ends_with(" rows in 31 tables.\n")) << down.out;
    EXPECT_THAT(down.err, HasSubstr("Copied [Control Records]: 2 rows\n"));
    EXPECT_EQ(run({"list", file}).out, run({"list", url}).out);

    auto refused = run({"copy-project", file, url});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.err, HasSubstr("already holds data; copy-project replaces it only when told to (--force).\n"));
    EXPECT_EQ(run({"delete", file, "--id", "5"}).exitCode, 0);
    EXPECT_EQ(run({"copy-project", file, url, "--force"}).exitCode, 0);
    EXPECT_THAT(run({"list", url, "--ids", "5"}).out, Not(HasSubstr("    1     5 ")));

    // A wrong password is refused, and never shown.
    auto login = run({"list", "postgresql://" + server->login + ":not-the-password@/postgres?host=" + server->socket});
    EXPECT_EQ(login.exitCode, 1);
    EXPECT_THAT(login.err, HasSubstr("\nAuthentication failed.\n"));
    EXPECT_THAT(login.err, Not(HasSubstr("not-the-password")));
}

TEST_F(ServerCli, ARunWhoseServerGoesAwayFailsCleanly) {
    SB_REQUIRE_SERVER();
    if (!std::getenv("SB_TEST_POSTGRESQL_MAY_STOP"))
        GTEST_SKIP() << "stops the test server: it runs alone, as postgresql.server.lost.cli";
    const std::string url = sbtest::projectLocation(dir.file("runs.sbproj"));
    makeRunnableProject(url);
    ASSERT_EQ(run({"config", "--set", "Settings/RunTimeout=4000"}).exitCode, 0);  // the hang ends soon
    ASSERT_EQ(run({"run", url, "--ids", "2"}).exitCode, 0);
    const std::string before = run({"export", url, "--id", "2", "--table", "monthly"}).out;
    ASSERT_FALSE(before.empty());

    // The model hangs until its time is up; meanwhile the server goes away.
    env["SB_STANDIN_MODE"] = "hang";
    auto running = std::async(std::launch::async, [&] { return run({"run", url, "--ids", "2"}); });
    auto started = [&] {  // the model's console is in its run folder
        std::error_code ec;
        for (const auto& entry : fs::recursive_directory_iterator(dir.file("soilbench/runs"), ec))
            if (entry.path().filename() == "Soilbench.con") return true;
        return false;
    };
    sbtest::within(10, started);
    std::string why;
    ASSERT_TRUE(sbtest::killPostgresqlServer(why)) << why;
    sbtest::cli_result ran = running.get();
    ASSERT_TRUE(sbtest::restartPostgresqlServer(why)) << why;
    EXPECT_EQ(ran.exitCode, 1);
    EXPECT_THAT(ran.err, HasSubstr("ERROR, unable to create session on database.\n"));
    EXPECT_THAT(ran.err, HasSubstr("1 of 1 records done, 0 good, 1 failed"));
    env.erase("SB_STANDIN_MODE");
    EXPECT_EQ(run({"export", url, "--id", "2", "--table", "monthly"}).out, before) << "the old outputs stay whole";
}
