#pragma once
// The ".100" parameter sequences of the option lists, as data.
//
// A sequence is a list of entries; each entry names one parameter or a run of
// array elements, the column(s) that hold them and the model versions that
// write them. Name patterns:
//   "BIOMAX"                 one parameter
//   "PPDF(1..4)"             PPDF(1) .. PPDF(4)
//   "PRAMN(1..3,1)"          PRAMN(1,1), PRAMN(2,1), PRAMN(3,1)
//   "CERFOR(1..3,1..5,1..3)" every combination, the last subscript fastest
// The column pattern expands the same way and pairs up element by element;
// when it is absent the column has the written name (case ignored). The
// pattern "*" stands for every parameter column of the table in table order,
// each written under its column name in capitals.
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "app/name_pattern.h"
#include "records/option_member.h"

namespace sb {

// Bit v is set when model version code v writes the entry.
using version_set = uint8_t;
constexpr version_set versionBit(int v) { return static_cast<version_set>(1u << v); }
constexpr version_set kAllVersions = 0x7E;  // codes 1..6
constexpr version_set versions(std::initializer_list<int> codes) {
    version_set set = 0;
    for (int v : codes) set = static_cast<version_set>(set | versionBit(v));
    return set;
}
constexpr version_set allBut(int v) { return static_cast<version_set>(kAllVersions & ~versionBit(v)); }

struct option_sequence_entry {
    const char* written;           // name pattern as the file spells it, or "*"
    const char* column = nullptr;  // column pattern; nullptr: the written name
    version_set versions = kAllVersions;
};

// The member's writing sequence (every version) and the extra names it reads
// (forms found in the model's own files that no version writes).
struct option_sequence {
    std::span<const option_sequence_entry> entries;
    std::span<const option_sequence_entry> readAliases;
};
const option_sequence& optionSequence(option_kind kind);

}  // namespace sb
