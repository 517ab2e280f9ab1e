#pragma once
// One management option (a crop, a cultivation, a fertilizer, ...): a row of
// its member's table that also reads and writes its ".100" record. All ten
// record kinds are this one class; the member's layout decides the rest.
#include <string>
#include <string_view>

#include "app/message_sink.h"
#include "app/release_profile.h"
#include "db/table_record.h"
#include "paramfile/tellura_input.h"
#include "records/kept_values.h"
#include "records/option_member.h"

namespace sb {

class option_record : public table_record, public tellura_input {
public:
    explicit option_record(option_kind kind);

    option_kind kind() const { return kind_; }
    const option_member& member() const { return optionMember(kind_); }

    // A value line of a ".100" file: every name any version writes, the
    // table's own column names and the member's aliases, case ignored.
    // Subscripts beyond the array give "ERROR, exceeds array size: ..." in the
    // form of the name's subscript count; names of no parameter return false.
    bool setField(std::string_view fieldName, double value, message_sink& errors) override;
    // A value line no column takes is kept with the option (under its file's name).
    bool keepValue(std::string_view fieldName, double value) override;
    // The value lines of the version's own release profile (the files as
    // Soilbench writes them); nothing for codes outside 1..6.
    void writeValues(std::string& out, int version) const override;
    // The value lines of a profile's section for this member, in its order:
    // each name from its column for the profile's version (or the column the
    // line names), else from the value the option keeps, else from the line's
    // fallback. False, with a message naming the option and the profile line,
    // when a name has none of these.
    bool writeProfileValues(std::string& out, const release_profile& profile, message_sink& errors) const;

    // Values of its file that no column holds.
    kept_values kept;

    // The parameter value by column name (case ignored); 0 when there is none.
    double value(std::string_view column) const { return number(column); }

    // Rows carry Name and Description as columns; in memory they are the
    // record's name and description. These two move between the forms; a row
    // of another table is ignored.
    void fromRow(const table_record& row);
    table_record toRow() const;

private:
    void store(int column, double value);

    option_kind kind_;
};

// The record type of one member, so that each list makes records of its kind.
template <option_kind Kind>
class option_record_of final : public option_record {
public:
    option_record_of() : option_record(Kind) {}
};

using crop_option = option_record_of<option_kind::crop>;
using cultivation_option = option_record_of<option_kind::cultivation>;
using fertilizer_option = option_record_of<option_kind::fertilizer>;
using fire_option = option_record_of<option_kind::fire>;
using graze_option = option_record_of<option_kind::graze>;
using harvest_option = option_record_of<option_kind::harvest>;
using irrigation_option = option_record_of<option_kind::irrigation>;
using omad_option = option_record_of<option_kind::omad>;
using tree_option = option_record_of<option_kind::tree>;
using tree_removal_option = option_record_of<option_kind::tree_removal>;

}  // namespace sb
