#pragma once
// A member's sequence table turned into what reading and writing need: for
// each model version the lines in file order (name and column), and for
// reading, every name form any version writes (plus the table's own column
// names and the member's aliases) mapped to the column(s) it sets. Built once
// per member.
#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "app/model_version.h"
#include "records/option_member.h"
#include "records/option_sequence.h"

namespace sb {

struct option_line {
    std::string name;  // as written, e.g. "PRAMN(2,1)"
    int column = -1;   // position in the member's table
};

// One array as the reader sees it: name(i), name(i,j) or name(i,j,k).
struct option_array_field {
    std::string name;         // base name in capitals, as messages spell it
    int subscripts = 0;       // 1 to 3
    int dims[3] = {0, 0, 0};  // largest subscript seen in each place
    // Row-major over dims; the columns one element sets (none, one, or more
    // when two columns hold the parameter for different versions).
    std::vector<std::vector<int>> elements;
};

class option_layout {
public:
    static const option_layout& of(option_kind kind);

    option_kind kind() const { return kind_; }
    // The version's lines in file order; empty for codes outside 1..6.
    const std::vector<option_line>& lines(int version) const;
    // nullptr when no form without subscripts has that name (case ignored).
    const std::vector<int>* scalarColumns(std::string_view name) const;
    // nullptr when no array has that base name (case ignored).
    const option_array_field* arrayField(std::string_view baseName) const;
    // The column a file name is written from for a version: the version's own
    // line of that name, else the column any form of the name reads into; -1
    // when the member has no column for it.
    int writtenColumn(std::string_view name, int version) const;
    // Patterns that named no column or paired up badly; empty when the tables are sound.
    const std::vector<std::string>& problems() const { return problems_; }

private:
    explicit option_layout(option_kind kind);
    void addEntry(const option_sequence_entry& entry, bool writes);
    void addReadForm(const std::string& name, int column);
    void addColumnNames();
    void finishArrays();

    option_kind kind_;
    std::array<std::vector<option_line>, kVersionCount + 1> lines_;
    std::map<std::string, std::vector<int>> scalars_;  // capitals -> columns
    std::map<std::string, option_array_field> arrays_;
    // Array forms gathered before the array sizes are known.
    struct pending_element {
        std::string base;
        std::vector<int> subscripts;
        int column;
    };
    std::vector<pending_element> pendingElements_;
    std::vector<std::string> problems_;
};

}  // namespace sb
