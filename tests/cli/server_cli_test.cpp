// The soilbench program on projects that live on a PostgreSQL server: the same
// commands take a URL, copy-project moves projects between files and servers,
// and a server that goes away mid-run fails the run cleanly.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <thread>

#include "cli_runner.h"
#include "test_support.h"

namespace fs = std::filesystem;

namespace {

class ServerCli : public ::testing::Test {
protected:
    void SetUp() override {
        env["SOILBENCH_PROFILE"] = dir.file("profile.ini");
        env["PGPASSFILE"] = dir.file("no-pgpass");
        env["XDG_DATA_HOME"] = dir.path();  // run folders go under the test's folder
        if (const sbtest::postgresql_server* server = sbtest::postgresqlServer()) this->server = server;
    }

    sbtest::cli_result run(std::vector<std::string> args) { return sbtest::runSoilbench(args, env); }

    // A project on the server with the demo set-up as record 2, runnable through the stand-in.
    void makeRunnableProject(const std::string& url) {
        fs::create_directories(dir.file("model"));
        fs::create_symlink(sbtest::binDir() + "/tellura-standin", dir.file("model/tellura-standin"));
        fs::create_symlink(sbtest::binDir() + "/tellura-standin", dir.file("model/list100-standin"));
        ASSERT_EQ(run({"new", url}).exitCode, 0);
        for (const std::string& setting : std::vector<std::string>{
                 "Settings/TELLURAVersion=4", "Settings/RunTimeout=4000",
                 "Files/Diurna 4.5=" + dir.file("model/tellura-standin"),
                 "Files/Diurna 4.5 LIST100=" + dir.file("model/list100-standin"), "Settings/SaveDailyLastYear=0"})
            ASSERT_EQ(run({"config", "--set", setting}).exitCode, 0) << setting;
        auto imported = run(
            {"import", "run-files", url, std::string(SB_SHARE_DIR) + "/demo", "--schedule", "demo.sch", "--id", "2"});
        ASSERT_EQ(imported.exitCode, 0) << imported.err;
    }

    sbtest::temp_dir dir;
    std::map<std::string, std::string> env;
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
    EXPECT_NE(again.err.find("already holds tables"), std::string::npos) << again.err;
    EXPECT_EQ(run({"copy", url, "--id", "1", "--to", "5"}).exitCode, 0);

    const std::string file = dir.file("copy.sbproj");
    auto down = run({"copy-project", url, file});
    EXPECT_EQ(down.exitCode, 0) << down.err;
    EXPECT_EQ(down.out.rfind("Copied project " + url + " to " + file + ": ", 0), 0u) << down.out;
    EXPECT_TRUE(down.out.ends_with(" rows in 31 tables.\n")) << down.out;
    EXPECT_NE(down.err.find("Copied [Control Records]: 2 rows\n"), std::string::npos) << down.err;
    EXPECT_EQ(run({"list", file}).out, run({"list", url}).out);

    auto refused = run({"copy-project", file, url});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.err.find("already holds data; copy-project replaces it only when told to (--force).\n"),
              std::string::npos)
        << refused.err;
    EXPECT_EQ(run({"delete", file, "--id", "5"}).exitCode, 0);
    EXPECT_EQ(run({"copy-project", file, url, "--force"}).exitCode, 0);
    EXPECT_EQ(run({"list", url, "--ids", "5"}).out.find("    1     5 "), std::string::npos);

    // A wrong password is refused, and never shown.
    auto login = run({"list", "postgresql://" + server->login + ":not-the-password@/postgres?host=" + server->socket});
    EXPECT_EQ(login.exitCode, 1);
    EXPECT_NE(login.err.find("\nAuthentication failed.\n"), std::string::npos) << login.err;
    EXPECT_EQ(login.err.find("not-the-password"), std::string::npos) << login.err;
}

TEST_F(ServerCli, ARunWhoseServerGoesAwayFailsCleanly) {
    SB_REQUIRE_SERVER();
    if (!std::getenv("SB_TEST_POSTGRESQL_MAY_STOP"))
        GTEST_SKIP() << "stops the test server: it runs alone, as postgresql.server.lost.cli";
    const std::string url = sbtest::projectLocation(dir.file("runs.sbproj"));
    makeRunnableProject(url);
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
    for (int i = 0; i < 1000 && !started(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::string why;
    ASSERT_TRUE(sbtest::killPostgresqlServer(why)) << why;
    sbtest::cli_result ran = running.get();
    ASSERT_TRUE(sbtest::restartPostgresqlServer(why)) << why;
    EXPECT_EQ(ran.exitCode, 1);
    EXPECT_NE(ran.err.find("ERROR, unable to create session on database.\n"), std::string::npos) << ran.err;
    EXPECT_NE(ran.err.find("1 of 1 records done, 0 good, 1 failed"), std::string::npos) << ran.err;
    env.erase("SB_STANDIN_MODE");
    EXPECT_EQ(run({"export", url, "--id", "2", "--table", "monthly"}).out, before) << "the old outputs stay whole";
}
