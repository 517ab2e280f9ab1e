#include "test_support.h"

#include <cctype>
#include <cstdlib>
#include <set>
#include <vector>
#include <filesystem>
#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace sbtest {

std::string samplesDir() { return SB_SAMPLES_DIR; }
bool haveSamples() { return std::filesystem::is_directory(SB_SAMPLES_DIR); }
std::string testDataDir() { return SB_TEST_DATA_DIR; }
std::string binDir() { return SB_BIN_DIR; }

bool processGone(int pid) {
    std::string stat = readFile("/proc/" + std::to_string(pid) + "/stat");
    size_t end = stat.rfind(')');  // the name in brackets may hold blanks
    return end == std::string::npos || end + 2 >= stat.size() || stat[end + 2] == 'Z' || stat[end + 2] == 'X';
}

bool processEnds(int pid) {
    return within(2, [pid] { return processGone(pid); });
}

temp_dir::temp_dir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "sbtest-XXXXXX").string();
    char* made = mkdtemp(pattern.data());
    if (!made) std::abort();
    path_ = made;
}

temp_dir::~temp_dir() {
    std::error_code ec;
    // Tests may leave read-only files or folders behind: make them removable first.
    for (auto it = std::filesystem::recursive_directory_iterator(path_, ec);
         !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec))
        std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all, std::filesystem::perm_options::add,
                                     ec);
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, std::filesystem::perm_options::add, ec);
    std::filesystem::remove_all(path_, ec);
}

namespace {

postgresql_server readServerInfo(const std::string& infoFile) {
    postgresql_server server;
    std::ifstream in(infoFile);
    if (!in) {
        server.why = "the PostgreSQL test server left no word at " + infoFile;
        return server;
    }
    for (std::string line; std::getline(in, line);) {
        const size_t eq = line.find('=');
        if (eq == std::string::npos) continue;
        const std::string key = line.substr(0, eq), value = line.substr(eq + 1);
        if (key == "unavailable") server.why = value;
        else if (key == "dir") server.dir = value;
        else if (key == "socket") server.socket = value;
        else if (key == "bin") server.bin = value;
        else if (key == "login") server.login = value;
        else if (key == "password") server.password = value;
        else if (key == "script") server.script = value;
    }
    server.available = server.why.empty() && !server.socket.empty();
    if (!server.available && server.why.empty()) server.why = "the PostgreSQL test server's word is incomplete";
    return server;
}

// The databases this program's tests were given, dropped when it ends so that the
// server's folder does not grow with every test.
std::set<std::string>& databasesGiven() {
    static std::set<std::string> names;
    return names;
}

// Runs a program of the server's with these arguments; true when it ends well.
bool runServerProgram(const postgresql_server& server, const std::string& program, std::vector<std::string> args) {
    const std::string path = server.bin + "/" + program;
    args.insert(args.begin(), path);
    std::vector<char*> argv;
    for (std::string& arg : args) argv.push_back(arg.data());
    argv.push_back(nullptr);
    pid_t child = fork();
    if (child == 0) {
        execv(path.c_str(), argv.data());
        _exit(127);
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void dropDatabasesGiven(const postgresql_server& server) {
    if (databasesGiven().empty()) return;
    std::vector<std::string> args = {"-q", "-X", "-h", server.socket, "-d", "postgres", "-o", "/dev/null"};
    for (const std::string& name : databasesGiven())
        args.insert(args.end(), {"-c", "DROP DATABASE IF EXISTS \"" + name + "\" WITH (FORCE)"});
    runServerProgram(server, "psql", args);
    databasesGiven().clear();
}

// When the server asked for is not there, every test of the program is skipped
// with the reason the server gave.
class postgresql_environment : public testing::Environment {
public:
    void SetUp() override {
        const postgresql_server* server = postgresqlServer();
        if (server && !server->available) GTEST_SKIP() << "PostgreSQL test server not available: " << server->why;
    }
    void TearDown() override {
        const postgresql_server* server = postgresqlServer();
        if (server && server->available) dropDatabasesGiven(*server);
    }
};

const bool kEnvironmentAdded = [] {
    testing::AddGlobalTestEnvironment(new postgresql_environment);
    return true;
}();

}  // namespace

const postgresql_server* postgresqlServer() {
    static const char* infoFile = std::getenv("SB_TEST_POSTGRESQL");
    static const postgresql_server server = infoFile ? readServerInfo(infoFile) : postgresql_server();
    return infoFile ? &server : nullptr;
}

bool onPostgresql() { return postgresqlServer() != nullptr; }

bool killPostgresqlServer(std::string& why) {
    const postgresql_server* server = postgresqlServer();
    if (!server || !server->available) {
        why = "no test server";
        return false;
    }
    std::ifstream pidFile(server->dir + "/data/postmaster.pid");
    long pid = 0;
    if (!(pidFile >> pid) || pid <= 0) {
        why = "the server's process is not known";
        return false;
    }
    // SIGQUIT: the immediate stop; the server ends every client's connection without a word.
    if (::kill(static_cast<pid_t>(pid), SIGQUIT) != 0) {
        why = "cannot signal the server";
        return false;
    }
    for (int i = 0; i < 1000 && ::kill(static_cast<pid_t>(pid), 0) == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return true;
}

bool restartPostgresqlServer(std::string& why) {
    const postgresql_server* server = postgresqlServer();
    const char* info = std::getenv("SB_TEST_POSTGRESQL");
    if (!server || !info || server->script.empty()) {
        why = "no test server to restart";
        return false;
    }
    pid_t child = fork();
    if (child == 0) {
        execl(server->script.c_str(), server->script.c_str(), "restart", info, static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        why = "the test server did not start again";
        return false;
    }
    return true;
}

std::string postgresql_server::url(const std::string& database) const {
    return "postgresql:///" + database + "?host=" + socket;
}

std::string projectLocation(const std::string& filePath) {
    const postgresql_server* server = postgresqlServer();
    if (!server) return filePath;
    uint64_t hash = 1469598103934665603ull;
    for (unsigned char c : filePath) hash = (hash ^ c) * 1099511628211ull;
    std::string name = "sbtest_" + std::to_string(hash % 1000000000000ull) + "_";
    for (char c : std::filesystem::path(filePath).filename().string())
        if (name.size() < 60)
            name += std::isalnum(static_cast<unsigned char>(c)) ? static_cast<char>(std::tolower(c)) : '_';
    databasesGiven().insert(name);
    return server->url(name);
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

void writeFile(const std::string& path, const std::string& content) {
    std::ofstream out(path, std::ios::binary);
    out << content;
}

}  // namespace sbtest
