#include "modeloutput/daily_file_keeper.h"

#include <filesystem>
#include <system_error>

#include "app/text_format.h"

namespace sb {

namespace fs = std::filesystem;

const char* const kKeptDailyFiles[4] = {"daily.out", "nflux.out", "summary.out", "mresp.out"};

namespace {

// Through the file system API, never a shell; across file systems a rename
// fails, and the file is copied and the original removed instead.
bool moveFile(const fs::path& from, const fs::path& to, std::string& errors) {
    std::error_code ec;
    fs::rename(from, to, ec);
    if (!ec) return true;
    std::error_code copyError;
    fs::copy_file(from, to, fs::copy_options::overwrite_existing, copyError);
    if (!copyError && fs::remove(from, copyError)) return true;
    appendf(errors, "ERROR, unable to move \"%s\" to \"%s\": %s.\n", from.string().c_str(),
            to.string().c_str(), (copyError ? copyError : ec).message().c_str());
    return false;
}

}  // namespace

bool saveDailyFiles(const std::string& runDirectory, const std::string& outputFolder,
                    const std::string& outputPrefix, int firstYear, int lastYear, std::string& errors) {
    bool ok = true;
    for (int year = firstYear; year <= lastYear; ++year) {
        fs::path folder = fs::path(outputFolder) / strprintf("%04d", year);
        std::error_code ec;
        fs::create_directories(folder, ec);
        if (ec || !fs::is_directory(folder)) {
            appendf(errors, "ERROR, unable to make folder \"%s\": %s.\n", folder.string().c_str(),
                    ec ? ec.message().c_str() : "a file of that name is in the way");
            ok = false;
            continue;
        }
        for (const char* name : kKeptDailyFiles) {
            fs::path from = fs::path(runDirectory) / name;
            if (!fs::exists(from, ec)) continue;  // not written, or kept in an earlier year's folder
            ok = moveFile(from, folder / (outputPrefix + name), errors) && ok;
        }
    }
    return ok;
}

}  // namespace sb
