#include "run/wine_launch.h"

#include "app/text_format.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace sb {
namespace {

const char* const kDebianWine64 = "/usr/lib/wine/wine64";

bool isExecutableFile(const std::string& path) {
    std::error_code ec;
    return std::filesystem::is_regular_file(path, ec) && access(path.c_str(), X_OK) == 0;
}

// Windows programs (PE files) start with the DOS header's "MZ".
bool hasWindowsHeader(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    char magic[2] = {};
    return in.read(magic, 2) && magic[0] == 'M' && magic[1] == 'Z';
}

}  // namespace

bool isWindowsProgramName(const std::string& path) {
    return path.size() >= 4 && iequals(std::string_view(path).substr(path.size() - 4), ".exe");
}

std::string defaultWinePrefix() {
    const char* data = std::getenv("XDG_DATA_HOME");
    if (data && *data == '/') return std::string(data) + "/soilbench/wine";
    const char* home = std::getenv("HOME");
    return std::string(home && *home ? home : ".") + "/.local/share/soilbench/wine";
}

std::string findOnPath(const std::string& program) {
    const char* path = std::getenv("PATH");
    if (!path || program.empty()) return "";
    std::string dirs = path;
    size_t start = 0;
    while (start <= dirs.size()) {
        size_t end = dirs.find(':', start);
        if (end == std::string::npos) end = dirs.size();
        std::string candidate = dirs.substr(start, end - start) + "/" + program;
        if (end > start && isExecutableFile(candidate)) return candidate;
        start = end + 1;
    }
    return "";
}

std::string resolveWineProgram(const std::string& command) {
    if (command.find('/') != std::string::npos) return isExecutableFile(command) ? command : "";
    if (std::string found = findOnPath(command); !found.empty()) return found;
    if (command != "wine") return "";
    // Debian's wine64 package alone puts its loader outside PATH.
    if (std::string found = findOnPath("wine64"); !found.empty()) return found;
    return isExecutableFile(kDebianWine64) ? kDebianWine64 : "";
}

bool prepareWineLaunch(const wine_setup& setup, std::vector<std::string>& arguments,
                       std::vector<std::string>& environment, message_sink& errors) {
    const std::string& program = arguments.at(0);
    if (!std::filesystem::exists(program)) return true;  // reported as the usual start failure
    if (!hasWindowsHeader(program)) {
        errors.errorf("ERROR, \"%s\" ends in \".exe\" but is not a Windows program (it does not start with \"MZ\").\n",
                      program.c_str());
        return false;
    }
    std::string wine = resolveWineProgram(setup.command);
    if (wine.empty()) {
        errors.errorf(
            "ERROR, \"%s\" is a Windows program: it runs through Wine, and Wine (\"%s\") was not found. "
            "To install it on Debian: for a 64-bit build, apt install wine64; for a 32-bit build, "
            "dpkg --add-architecture i386 && apt update && apt install wine32. The Wine command is the "
            "setting Files/WineCommand.\n",
            program.c_str(), setup.command.c_str());
        return false;
    }
    std::string prefix = setup.prefix.empty() ? defaultWinePrefix() : setup.prefix;
    std::error_code ec;
    std::filesystem::create_directories(prefix, ec);
    if (ec) {
        errors.errorf("ERROR, cannot create the Wine prefix directory \"%s\": %s.\n", prefix.c_str(),
                      ec.message().c_str());
        return false;
    }
    // Wine takes the program's Unix path; the child starts in the run directory.
    arguments[0] = std::filesystem::absolute(program, ec).string();
    arguments.insert(arguments.begin(), wine);
    environment = {"WINEPREFIX=" + prefix, "WINEDEBUG=-all"};
    return true;
}

}  // namespace sb
