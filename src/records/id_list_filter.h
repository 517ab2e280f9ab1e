#pragma once
// The record filter made from a list of IDs such as "1, 2, 5-9": the WHERE
// clause that the control records opener and the run commands take.
#include <string>
#include <string_view>

namespace sb {

class id_list_filter {
public:
    // A range longer than this is refused with a message rather than spelled out
    // term by term (the clause names every ID, so "1-999999999" would not fit in memory).
    static constexpr long kMaxTerms = 1000000;

    // " (ID = 1 OR ID = 2 OR ID = 5 OR ID = 6 OR ID = 7 OR ID = 8 OR ID = 9)" for
    // "1, 2, 5-9"; empty when the list names no ID. A range whose start exceeds its
    // end is ignored without a message.
    static std::string whereClause(std::string_view idList);
    static std::string whereClause(std::string_view idList, std::string& errors);

    // The question asked when the dialog closes with an edited list and no clause built.
    static constexpr const char* kUnbuiltQuestion = "ID list edited but SQL filter not built.  Close anyway?";
};

}  // namespace sb
