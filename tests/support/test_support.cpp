#include "test_support.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace sbtest {

std::string samplesDir() { return SB_SAMPLES_DIR; }
bool haveSamples() { return std::filesystem::is_directory(SB_SAMPLES_DIR); }
std::string testDataDir() { return SB_TEST_DATA_DIR; }
std::string binDir() { return SB_BIN_DIR; }

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
