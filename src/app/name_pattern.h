#pragma once
// Parameter name patterns, as the option sequences and the release profiles
// write them:
//   "BIOMAX"                 one name
//   "PPDF(1..4)"             PPDF(1) .. PPDF(4)
//   "PRAMN(1..3,1)"          PRAMN(1,1), PRAMN(2,1), PRAMN(3,1)
//   "CERFOR(1..3,1..5,1..3)" every combination, the last subscript fastest
#include <string>
#include <string_view>
#include <vector>

namespace sb {

// "PPDF(1..4)" -> "PPDF(1)", ..., "PPDF(4)". A name without ranges is returned
// as it stands. An unreadable range gives an empty list.
std::vector<std::string> expandNamePattern(std::string_view pattern);

// How many of `names`, from `first` on, one pattern can stand for: names
// with one base whose subscripts differ in one place only, counting up by one
// ("PPDF(1)", "PPDF(2)", "PPDF(3)"); at least 1. `pattern` gets it
// ("PPDF(1..3)", or the name itself).
size_t namePatternRun(const std::vector<std::string>& names, size_t first, std::string& pattern);

}  // namespace sb
