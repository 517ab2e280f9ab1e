#include "records/option_lists.h"

#include <filesystem>

#include "app/text_file.h"
#include "app/text_format.h"

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

bool option_lists::loadAll(database& db, message_sink& errors) {
    bool ok = true;
    for (auto& list : lists_) ok = list->loadFromDatabase(db, errors) && ok;
    return ok;
}

bool option_lists::writeRunFiles(const std::string& directory, const release_profile& profile,
                                 message_sink& errors) const {
    bool ok = true;
    for (const auto& list : lists_) {
        std::string text;
        for (size_t i = 0; i < list->size(); ++i) {
            list->recordAt(i).writeHeader(text);
            ok = list->recordAt(i).writeProfileValues(text, profile, errors) && ok;
        }
        const std::string path = inDirectory(directory, list->member().runFile);
        if (!writeTextFile(path, text)) {
            // The message option list exports have always given.
            errors.error("ERROR, unable to open file in tellura_input_list.write: " + path);
            ok = false;
        }
    }
    return ok;
}

bool option_lists::readRunFiles(const std::string& directory, message_sink& errors, std::string& status) {
    int duplicates = 0;
    for (auto& list : lists_) {
        std::string path = inDirectory(directory, list->member().runFile);
        std::error_code ec;
        if (std::filesystem::is_regular_file(path, ec)) duplicates += list->importFile(path, errors, status).duplicates;
    }
    return duplicates == 0;
}

}  // namespace sb
