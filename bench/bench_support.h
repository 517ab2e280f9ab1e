#pragma once
// Shared set-up of the benchmark programs.
#include <filesystem>
#include <memory>
#include <string>

#include "db/database.h"
#include "db/database_maker.h"

namespace sbbench {

// A file in the benchmarks' own temporary folder.
inline std::string benchPath(const char* folder, const char* name) {
    auto dir = std::filesystem::temp_directory_path() / folder;
    std::filesystem::create_directories(dir);
    return (dir / name).string();
}

// A project with every table and no rows; null when it cannot be made.
inline std::unique_ptr<sb::database> emptyProject(const std::string& path) {
    sb::message_sink errors;
    if (!sb::database::create(path, errors)) return nullptr;
    auto db = sb::database::open(path, errors);
    if (db) sb::database_maker(*db).createAllTables(errors);
    return errors.empty() ? std::move(db) : nullptr;
}

}  // namespace sbbench
