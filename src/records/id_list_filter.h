#pragma once
// The record filter made from a list of IDs such as "1, 2, 5-9": the WHERE
// clause that the control records opener and the run commands take.
#include <string>
#include <string_view>

#include "app/message_sink.h"

namespace sb {

class id_list_filter {
public:
    // IDs in a list are record IDs from 0 up.
    static constexpr long long kLargestId = 2147483647;

    // " (ID IN (1, 2) OR ID BETWEEN 5 AND 9)" for "1, 2, 5-9": single IDs in one
    // IN list, ranges as BETWEEN, so that a list of any length stays one short
    // condition (a term per ID would be too deep for the store past a thousand
    // IDs). IDs and ranges are separated by commas or blanks; a range is two IDs
    // joined by '-'. Empty when the list names no ID. Anything that is not an ID
    // or a range ("1;", "abc", "5-", "-3", "9-5", an ID past kLargestId) makes
    // the clause empty, with a message naming it appended to `errors`.
    static std::string whereClause(std::string_view idList, message_sink& errors);

    // The clause of a list that picks the records a command works on: false,
    // with whereClause's message or "ERROR, the ID list \"...\" names no
    // record.\n", when it is refused or names no ID.
    static bool selectionClause(std::string_view idList, std::string& clause, message_sink& errors);

    // The question asked when the dialog closes with an edited list and no clause built.
    static constexpr const char* kUnbuiltQuestion = "ID list edited but SQL filter not built.  Close anyway?";
};

}  // namespace sb
