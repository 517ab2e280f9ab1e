#include "app/program_location.h"

#include <cstdlib>
#include <filesystem>

namespace sb {

std::string programDirectory() {
    std::error_code ec;
    std::filesystem::path exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::string() : exe.parent_path().string();
}

std::string dataDirectory(const std::string& programDir, const char* overrideDir) {
    if (overrideDir && *overrideDir) return std::filesystem::path(overrideDir).lexically_normal().string();
    // Without a program folder the data is looked for from the current one,
    // which is where a relative path would be resolved anyway.
    std::filesystem::path base = programDir.empty() ? std::filesystem::path(".") : std::filesystem::path(programDir);
    return (base / ".." / "share" / "soilbench").lexically_normal().string();
}

std::string dataDirectory() { return dataDirectory(programDirectory(), std::getenv(kDataDirVariable)); }

}  // namespace sb
