#include "run/run_folder.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

#include "app/text_file.h"
#include "app/app_soilbench.h"
#include "app/text_format.h"
#include "run/run_history.h"

namespace sb {
namespace {

namespace fs = std::filesystem;

// A small file of ours or of the system, whole; false when it cannot be read.
bool readSmallFile(const std::string& path, std::string& text) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::ostringstream bytes;
    bytes << in.rdbuf();
    text = bytes.str();
    return true;
}

// The start time of a process in clock ticks since boot (field 22 of its
// stat file), so that a process ID used again by another program is not
// taken for the owner. Empty when the process does not exist.
std::string processStartTime(long pid) {
    std::string stat;
    if (!readSmallFile(strprintf("/proc/%ld/stat", pid), stat)) return "";
    size_t afterName = stat.rfind(')');
    if (afterName == std::string::npos) return "";
    std::vector<std::string> fields = splitTokens(std::string_view(stat).substr(afterName + 1));
    // After the name: state is field 3, start time field 22.
    return fields.size() > 19 ? fields[19] : "";
}

struct owner {
    long pid = 0;
    std::string host, started;
};

std::string ownerText(const owner& who) {
    return strprintf("Soilbench run folder in use\npid %ld\nhost %s\nstarted %s\n", who.pid, who.host.c_str(),
                     who.started.c_str());
}

bool parseOwner(const std::string& text, owner& who) {
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("pid ", 0) == 0) who.pid = std::atol(line.c_str() + 4);
        else if (line.rfind("host ", 0) == 0) who.host = line.substr(5);
        else if (line.rfind("started ", 0) == 0) who.started = line.substr(8);
    }
    return who.pid > 0 && !who.host.empty() && !who.started.empty();
}

bool ownerIsGone(const owner& who) {
    if (who.host != hostName()) return false;  // another machine's run, on a shared folder
    return processStartTime(who.pid) != who.started;
}

// Letters, digits, '.', '-' and '_' stay; anything else becomes '_'.
std::string safeName(const std::string& text) {
    std::string name;
    for (char c : text) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
                           c == '-' || c == '_';
        name += plain ? c : '_';
    }
    return name.empty() ? "project" : name;
}

std::string localTimeStamp() {
    std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y%m%d-%H%M%S", &local);
    return text;
}

}  // namespace

run_folder::~run_folder() {
    if (!owned_) return;
    message_sink ignored;
    remove(ignored);
}

bool run_folder::create(const std::string& root, const std::string& project, int32_t id, message_sink& errors) {
    std::error_code ec;
    fs::create_directories(root, ec);
    const std::string base =
        strprintf("%s-%ld-%s", safeName(project).c_str(), static_cast<long>(id), localTimeStamp().c_str());
    // Two runs of one record in the same second (another process, or a quick
    // rerun) each get a folder of their own: making a folder is atomic.
    for (int n = 1; n < 1000; ++n) {
        fs::path folder = fs::path(root) / (n == 1 ? base : strprintf("%s-%d", base.c_str(), n));
        if (fs::create_directory(folder, ec)) {
            path_ = folder.string() + "/";
            owned_ = true;
            owner me{static_cast<long>(getpid()), hostName(), processStartTime(getpid())};
            if (writeTextFile(path_ + kOwnerFile, ownerText(me))) return true;
            errors.errorf("ERROR, unable to write in the run folder \"%s\".\n", path_.c_str());
            message_sink ignored;
            remove(ignored);
            return false;
        }
        if (ec) break;
    }
    errors.errorf("ERROR, unable to make a run folder for record %ld in \"%s\"%s%s.\n", static_cast<long>(id),
                  root.c_str(), ec ? ": " : "", ec ? ec.message().c_str() : "");
    return false;
}

void run_folder::adopt(const std::string& path) {
    path_ = path;
    if (!path_.empty() && path_.back() != '/') path_ += '/';
    owned_ = false;
}

void run_folder::keep() {
    if (!owned_) return;
    owned_ = false;
    std::error_code ec;
    fs::remove(path_ + kOwnerFile, ec);
}

bool run_folder::remove(message_sink& errors) {
    if (path_.empty()) return true;
    owned_ = false;
    std::error_code ec;
    fs::remove_all(path_, ec);
    if (!ec) return true;
    errors.warningf("WARNING, unable to remove the run folder \"%s\": %s.\n", path_.c_str(), ec.message().c_str());
    return false;
}

std::string run_folder::defaultRoot() {
    const char* data = std::getenv("XDG_DATA_HOME");
    if (data && *data == '/') return std::string(data) + "/soilbench/runs";
    const char* home = std::getenv("HOME");
    return std::string(home && *home ? home : ".") + "/.local/share/soilbench/runs";
}

std::string run_folder::rootFor(const std::string& configured) {
    return configured.empty() ? defaultRoot() : localPath(configured);
}

bool run_folder::inUse(const std::string& folder) {
    std::string text;
    owner who;
    if (folder.empty() || !readSmallFile((fs::path(folder) / kOwnerFile).string(), text)) return false;
    return parseOwner(text, who) && !ownerIsGone(who);
}

int run_folder::removeStale(const std::string& root, message_sink& errors) {
    std::error_code ec;
    std::vector<fs::path> stale;
    for (const auto& entry : fs::directory_iterator(root, ec)) {
        std::string text;
        owner who;
        if (!entry.is_directory(ec) || !readSmallFile((entry.path() / kOwnerFile).string(), text)) continue;
        if (parseOwner(text, who) && ownerIsGone(who)) stale.push_back(entry.path());
    }
    int removed = 0;
    for (const fs::path& folder : stale) {
        fs::remove_all(folder, ec);
        if (!ec) ++removed;
        // Another Soilbench may be clearing the same folder at the same moment.
        else if (fs::exists(folder))
            errors.warningf("WARNING, unable to remove the run folder \"%s\" of a Soilbench that ended: %s.\n",
                            folder.c_str(), ec.message().c_str());
    }
    return removed;
}

}  // namespace sb
