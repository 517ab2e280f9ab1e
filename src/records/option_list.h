#pragma once
// The ten management option lists (crops, cultivation, fertilizer, fire, graze,
// harvest, irrigation, omad, trees, tree removal) are one mechanism: an option
// record is a row of its table that also reads and writes the ".100" form; what
// differs between members is data (a member table), not code.
#include <memory>
#include <string>

#include "db/table_record.h"
#include "paramfile/tellura_input.h"
#include "paramfile/tellura_input_list.h"

namespace sb {

enum class option_kind : int { crop, cultivation, fertilizer, fire, graze, harvest, irrigation, omad, tree, tree_removal, count };
constexpr int kOptionKindCount = static_cast<int>(option_kind::count);

struct option_member {
    option_kind kind;
    table_id table;
    const char* cliName;       // "crop", "cult", "fert", "fire", "graz", "harv", "irri", "omad", "tree", "trem"
    const char* exportFile;    // default export name, e.g. "crop.100", "graze.100"
    const char* runFile;       // name in a run directory, e.g. "graz.100"
    const char* fileFilter;    // "Crop File (*.100)\n*.100\nAll Files (*.*)\n*.*"
    const char* saveErrorTitle;
    bool crlfSessionMessage;   // "\r\n" ending of the session message for all but crops
};
const option_member& optionMember(option_kind kind);
// nullptr when the name is not a member's short name.
const option_member* optionMemberByCliName(std::string_view name);

}  // namespace sb
