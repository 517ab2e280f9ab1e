#include "records/id_list_filter.h"

#include <cstdlib>
#include <vector>

#include "app/text_format.h"

namespace sb {

namespace {

// Pieces of the text between any of the separators; empty pieces are skipped,
// as strtok does.
std::vector<std::string> split(std::string_view text, std::string_view separators) {
    std::vector<std::string> pieces;
    size_t pos = 0;
    while (pos < text.size()) {
        size_t start = text.find_first_not_of(separators, pos);
        if (start == std::string_view::npos) break;
        size_t end = text.find_first_of(separators, start);
        if (end == std::string_view::npos) end = text.size();
        pieces.emplace_back(text.substr(start, end - start));
        pos = end;
    }
    return pieces;
}

// atol: leading sign allowed, anything that is not a number reads as 0.
long readNumber(const std::string& text) { return std::strtol(text.c_str(), nullptr, 10); }

}  // namespace

std::string id_list_filter::whereClause(std::string_view idList) {
    std::string ignored;
    return whereClause(idList, ignored);
}

std::string id_list_filter::whereClause(std::string_view idList, std::string& errors) {
    std::string terms;
    long termCount = 0;
    auto addTerm = [&](long id) {
        appendf(terms, "%s ID = %ld", termCount == 0 ? "" : " OR", id);
        ++termCount;
    };
    for (const std::string& token : split(idList, " ,")) {
        std::vector<std::string> parts = split(token, "-");
        if (parts.empty()) continue;  // a lone "-"
        long first = readNumber(parts[0]);
        if (parts.size() == 1) {
            addTerm(first);
            continue;
        }
        long last = readNumber(parts[1]);
        if (first > last) continue;
        // Unsigned arithmetic: the span of two extreme longs does not fit in a long.
        unsigned long span = static_cast<unsigned long>(last) - static_cast<unsigned long>(first);
        if (span >= static_cast<unsigned long>(kMaxTerms - termCount)) {
            appendf(errors, "ERROR, ID range %ld-%ld is too long, at most %ld IDs can be listed.\n", first, last,
                    kMaxTerms);
            continue;
        }
        for (unsigned long step = 0; step <= span; ++step) addTerm(first + static_cast<long>(step));
    }
    if (termCount == 0) return {};
    return " (" + terms.substr(1) + ")";
}

}  // namespace sb
