#pragma once
// The ten management option lists (crops, cultivation, fertilizer, fire, graze,
// harvest, irrigation, omad, trees, tree removal) are one mechanism: an option
// record is a row of its table that also reads and writes the ".100" form; what
// differs between members is data (a member table), not code.
#include <memory>
#include <string>
#include <string_view>

#include "app/message_sink.h"
#include "db/table_record.h"
#include "paramfile/tellura_input.h"
#include "paramfile/tellura_input_list.h"
#include "records/option_member.h"
#include "records/option_record.h"

namespace sb {

class database;

class option_list : public tellura_input_list {
public:
    explicit option_list(option_kind kind) : kind_(kind) {}

    option_kind kind() const { return kind_; }
    const option_member& member() const { return optionMember(kind_); }

    // Records are made by makeRecord(), so every one is an option record of this member.
    option_record& recordAt(size_t index) { return static_cast<option_record&>(at(index)); }
    const option_record& recordAt(size_t index) const { return static_cast<const option_record&>(at(index)); }
    option_record* findRecord(std::string_view name) { return static_cast<option_record*>(find(name)); }
    const option_record* findRecord(std::string_view name) const {
        return static_cast<const option_record*>(find(name));
    }
    bool contains(std::string_view name) const { return find(name) != nullptr; }
    // A new empty record of this member, appended under the name.
    option_record& addRecord(std::string name);

    // Replaces the member's table with this list: one session, the table
    // emptied, then every record inserted in list order. The first insert
    // that fails stops the save, and the table stays as it was.
    bool saveToDatabase(database& db, message_sink& errors) const;
    // Replaces this list with the rows of the member's table, in table order.
    bool loadFromDatabase(database& db, message_sink& errors);

private:
    option_kind kind_;
};

// The list of one member: its factory makes that member's record type.
template <option_kind Kind>
class option_list_of final : public option_list {
public:
    using record_type = option_record_of<Kind>;
    option_list_of() : option_list(Kind) {}
    std::unique_ptr<tellura_input> makeRecord() const override { return std::make_unique<record_type>(); }
};

using list_tellura_crops = option_list_of<option_kind::crop>;
using tellura_cultivation_list = option_list_of<option_kind::cultivation>;
using tellura_fertilizer_list = option_list_of<option_kind::fertilizer>;
using tellura_fire_list = option_list_of<option_kind::fire>;
using list_tellura_graze = option_list_of<option_kind::graze>;
using tellura_harvest_list = option_list_of<option_kind::harvest>;
using tellura_irrigation_list = option_list_of<option_kind::irrigation>;
using tellura_omad_list = option_list_of<option_kind::omad>;
using tellura_tree_list = option_list_of<option_kind::tree>;
using tellura_tree_removal_list = option_list_of<option_kind::tree_removal>;

// An empty list of the member's kind.
std::unique_ptr<option_list> makeOptionList(option_kind kind);

}  // namespace sb
