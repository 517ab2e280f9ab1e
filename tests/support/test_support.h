#pragma once
// Small helpers shared by the test programs.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

namespace sbtest {

// Folder of the real model files kept beside the project (not in it).
std::string samplesDir();
bool haveSamples();

// A fresh temporary folder, removed with the object.
class temp_dir {
public:
    temp_dir();
    ~temp_dir();
    temp_dir(const temp_dir&) = delete;
    temp_dir& operator=(const temp_dir&) = delete;
    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

// Where a test's project lives: the file path itself, or, when this program runs
// against the suite's PostgreSQL server, the URL of a database named after the
// path (the same path always gives the same database).
std::string projectLocation(const std::string& filePath);
// True when projects live on the suite's PostgreSQL server.
bool onPostgresql();
// What the store says of the same failure: the first on SQLite, the second on a server.
inline std::string byStore(const std::string& sqlite, const std::string& postgresql) {
    return onPostgresql() ? postgresql : sqlite;
}

// The suite's PostgreSQL server, as its start-up left word (SB_TEST_POSTGRESQL
// names the file): available, or why not.
struct postgresql_server {
    bool available = false;
    std::string why;     // when not available
    std::string dir;     // the cluster's folder
    std::string socket;  // the folder of its Unix socket
    std::string bin;     // its programs
    std::string login;   // a role that must give a password
    std::string password;
    std::string script;  // the script that started it (it restarts it too)
    // A URL for a database of that name on the server.
    std::string url(const std::string& database) const;
};
// Null when no server was asked for; otherwise the server's state (read once).
const postgresql_server* postgresqlServer();
// Kills the running server at once, as a crash would (its clients lose their
// connections mid-statement), and starts it again. False with the reason.
bool killPostgresqlServer(std::string& why);
bool restartPostgresqlServer(std::string& why);

// The process has ended: gone, or a zombie waiting for its parent to reap it.
bool processGone(int pid);
// Waits up to two seconds for the process to end (a signal reaches the members
// of a process group one after another).
bool processEnds(int pid);
// Polls `check` every 20 ms until it holds or `seconds` have passed; its last answer.
template <class Check>
bool within(double seconds, Check check) {
    for (double waited = 0; waited < seconds && !check(); waited += 0.02)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    return check();
}

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& content);
std::string testDataDir();
std::string binDir();

}  // namespace sbtest

// Skips a test of what only a project file has (permissions, journals, the file
// itself) when projects live on a server.
#define SB_FILE_STORE_ONLY()                                                                                    \
    do {                                                                                                        \
        if (sbtest::onPostgresql()) GTEST_SKIP() << "about project files; this run keeps projects on a server"; \
    } while (0)

// Skips a test of what only a server project has when projects live in files
// (the postgresql.* tests run it against the suite's server).
#define SB_REQUIRE_SERVER()                                                                           \
    do {                                                                                              \
        if (!sbtest::onPostgresql())                                                                  \
            GTEST_SKIP() << "needs the PostgreSQL test server: it runs among the postgresql.* tests"; \
    } while (0)

// Skips the current test with a clear reason when the real sample files are absent.
#define SB_REQUIRE_SAMPLES()                                                                \
    do {                                                                                    \
        if (!sbtest::haveSamples())                                                         \
            GTEST_SKIP() << "real model sample files not found at " << sbtest::samplesDir() \
                         << " (they sit beside the project, not in it)";                    \
    } while (0)
