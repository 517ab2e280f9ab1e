#pragma once
// All ten option lists of a project, as the run and the event checks need
// them: loaded together, found by kind, asked whether they hold a name, and
// written to (or read from) a run directory under the model's file names.
#include <array>
#include <memory>
#include <string>
#include <string_view>

#include "app/message_sink.h"
#include "records/option_list.h"

namespace sb {

class database;

class option_lists {
public:
    option_lists();

    option_list& list(option_kind kind) { return *lists_.at(static_cast<size_t>(kind)); }
    const option_list& list(option_kind kind) const { return *lists_.at(static_cast<size_t>(kind)); }

    // Every list from its table; a list that fails does not stop the others.
    bool loadAll(database& db, message_sink& errors);
    // Does list `kind` hold an option of this name (case ignored)?
    bool contains(option_kind kind, std::string_view name) const { return list(kind).contains(name); }
    option_record* find(option_kind kind, std::string_view name) { return list(kind).findRecord(name); }
    const option_record* find(option_kind kind, std::string_view name) const { return list(kind).findRecord(name); }

    // The ten files of a run directory ("crop.100", ..., "graz.100", ...), each
    // record in the order of the profile's section for its file. False when a
    // file cannot be written or a value is missing (both reported).
    bool writeRunFiles(const std::string& directory, const release_profile& profile, message_sink& errors) const;
    // Reads whichever of the ten run-directory files exist in the folder into
    // the lists; a missing file is skipped without a message. False when a
    // file gives a name twice within one option (reported with its line).
    bool readRunFiles(const std::string& directory, message_sink& errors, std::string& status);

private:
    std::array<std::unique_ptr<option_list>, kOptionKindCount> lists_;
};

}  // namespace sb
