#pragma once
// The ten management option lists and what tells them apart: table, file
// names, import filter and the wording of their save messages. Everything else
// about a member (which parameters, in which order) is in its sequence table.
#include <string_view>

#include "db/table_catalogue.h"

namespace sb {

enum class option_kind : int {
    crop,
    cultivation,
    fertilizer,
    fire,
    graze,
    harvest,
    irrigation,
    omad,
    tree,
    tree_removal,
    count
};
constexpr int kOptionKindCount = static_cast<int>(option_kind::count);

struct option_member {
    option_kind kind;
    table_id table;
    const char* cliName;     // "crop", "cult", "fert", "fire", "graz", "harv", "irri", "omad", "tree", "trem"
    const char* exportFile;  // default export name, e.g. "crop.100", "graze.100"
    const char* runFile;     // name in a run directory, e.g. "graz.100"
    const char* fileFilter;  // "Crop File (*.100)\n*.100\nAll Files (*.*)\n*.*"
    const char* saveErrorTitle;
    bool crlfSessionMessage;  // "\r\n" ending of the session message for all but crops

    // "ERROR, unable to create session on database." with this member's line end.
    const char* sessionErrorMessage() const;
};

const option_member& optionMember(option_kind kind);
// nullptr when the name is not a member's short name.
const option_member* optionMemberByCliName(std::string_view name);
// nullptr when the table is not an option list's table.
const option_member* optionMemberByTable(table_id table);

}  // namespace sb
