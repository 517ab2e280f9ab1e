#include "records/option_lists.h"

#include <filesystem>

namespace sb {

namespace {

std::string inDirectory(const std::string& directory, const char* file) {
    return (std::filesystem::path(directory) / file).string();
}

}  // namespace

option_lists::option_lists() {
    for (int k = 0; k < kOptionKindCount; ++k)
        lists_[static_cast<size_t>(k)] = makeOptionList(static_cast<option_kind>(k));
}

bool option_lists::loadAll(database& db, std::string& errors) {
    bool ok = true;
    for (auto& list : lists_) ok = list->loadFromDatabase(db, errors) && ok;
    return ok;
}

bool option_lists::writeRunFiles(const std::string& directory, int version, std::string& errors) const {
    bool ok = true;
    for (const auto& list : lists_)
        ok = list->write(inDirectory(directory, list->member().runFile), errors, version) && ok;
    return ok;
}

void option_lists::importRunFiles(const std::string& directory, std::string& errors, std::string& status) {
    for (auto& list : lists_) {
        std::string path = inDirectory(directory, list->member().runFile);
        std::error_code ec;
        if (std::filesystem::is_regular_file(path, ec)) list->importFile(path, errors, status);
    }
}

}  // namespace sb
