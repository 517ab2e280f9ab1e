#include "records/option_member.h"

#include <array>

#include "app/text_format.h"

namespace sb {

namespace {

// The graze list is exported as "graze.100" but a run directory holds "graz.100":
// users' own files carry the first name, the model reads the second.
const std::array<option_member, kOptionKindCount> kMembers = {{
    {option_kind::crop, table_id::crops, "crop", "crop.100", "crop.100",
     "Crop File (*.100)\n*.100\nAll Files (*.*)\n*.*", "CROP Save Errors", false},
    {option_kind::cultivation, table_id::cultivation, "cult", "cult.100", "cult.100",
     "Cultivation File (*.100)\n*.100\nAll Files (*.*)\n*.*", "Cultivation Save Errors", true},
    {option_kind::fertilizer, table_id::fertilizer, "fert", "fert.100", "fert.100",
     "Fertilizer File (*.100)\n*.100\nAll Files (*.*)\n*.*", "Fertilizer Save Errors", true},
    {option_kind::fire, table_id::fire, "fire", "fire.100", "fire.100",
     "Fire File (*.100)\n*.100\nAll Files (*.*)\n*.*", "FIRE Save Errors", true},
    {option_kind::graze, table_id::graze, "graz", "graze.100", "graz.100",
     "Graze File (*.100)\n*.100\nAll Files (*.*)\n*.*", "GRAZE Save Errors", true},
    {option_kind::harvest, table_id::harvest, "harv", "harv.100", "harv.100",
     "Harvest File (*.100)\n*.100\nAll Files (*.*)\n*.*", "Harvest Save Errors", true},
    {option_kind::irrigation, table_id::irrigation, "irri", "irri.100", "irri.100",
     "Irrigation File (*.100)\n*.100\nAll Files (*.*)\n*.*", "Irrigation Save Errors", true},
    {option_kind::omad, table_id::omad, "omad", "omad.100", "omad.100",
     "OMAD File (*.100)\n*.100\nAll Files (*.*)\n*.*", "OMAD Save Errors", true},
    {option_kind::tree, table_id::trees, "tree", "tree.100", "tree.100",
     "TREE File (*.100)\n*.100\nAll Files (*.*)\n*.*", "TREE Save Errors", true},
    {option_kind::tree_removal, table_id::tree_removal, "trem", "trem.100", "trem.100",
     "Tree Removal File (*.100)\n*.100\nAll Files (*.*)\n*.*", "TREM Save Errors", true},
}};

}  // namespace

const char* option_member::sessionErrorMessage() const {
    return crlfSessionMessage ? "ERROR, unable to create session on database.\r\n"
                              : "ERROR, unable to create session on database.\n";
}

const option_member& optionMember(option_kind kind) { return kMembers.at(static_cast<size_t>(kind)); }

const option_member* optionMemberByCliName(std::string_view name) {
    for (const option_member& member : kMembers)
        if (iequals(member.cliName, name)) return &member;
    return nullptr;
}

const option_member* optionMemberByTable(table_id table) {
    for (const option_member& member : kMembers)
        if (member.table == table) return &member;
    return nullptr;
}

}  // namespace sb
