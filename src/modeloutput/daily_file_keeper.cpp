#include "modeloutput/daily_file_keeper.h"

#include <filesystem>

#include "app/text_format.h"
#include "app/file_mover.h"

namespace sb {

namespace fs = std::filesystem;

const char* const kKeptDailyFiles[4] = {"daily.out", "nflux.out", "summary.out", "mresp.out"};

bool moveDailyFiles(const std::string& runDirectory, const std::string& outputFolder, const std::string& outputPrefix,
                    int firstYear, int lastYear, message_sink& errors) {
    bool ok = true;
    for (int year = firstYear; year <= lastYear; ++year) {
        fs::path folder = fs::path(outputFolder) / strprintf("%04d", year);
        // Folders and moves through the file system API, never a shell.
        if (!file_mover::makeFolder(folder.string(), errors)) {
            ok = false;
            continue;
        }
        for (const char* name : kKeptDailyFiles) {
            fs::path from = fs::path(runDirectory) / name;
            std::error_code ec;
            if (!fs::exists(from, ec)) continue;  // not written, or kept in an earlier year's folder
            ok = file_mover::moveFile(from.string(), (folder / (outputPrefix + name)).string(), errors) && ok;
        }
    }
    return ok;
}

}  // namespace sb
