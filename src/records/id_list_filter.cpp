#include "records/id_list_filter.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "app/text_format.h"

namespace sb {

namespace {

bool isSeparator(char c) { return c == ',' || c == ' ' || c == '\t'; }

// Reads one ID at `pos`; false when there are no digits there or the number is
// past the largest ID (`tooLarge` set).
bool readId(std::string_view text, size_t& pos, long long& id, bool& tooLarge) {
    size_t start = pos;
    long long value = 0;
    while (pos < text.size() && std::isdigit(static_cast<unsigned char>(text[pos]))) {
        if (value <= id_list_filter::kLargestId) value = value * 10 + (text[pos] - '0');
        ++pos;
    }
    if (pos == start) return false;
    tooLarge = value > id_list_filter::kLargestId;
    id = value;
    return !tooLarge;
}

void skipBlanks(std::string_view text, size_t& pos) {
    while (pos < text.size() && (text[pos] == ' ' || text[pos] == '\t')) ++pos;
}

struct id_range {
    long long first, last;
};

// The terms joined by OR two at a time, so that a long list nests only as deep
// as its length's logarithm.
std::string joinBalanced(const std::vector<std::string>& terms, size_t from, size_t to) {
    if (to - from == 1) return terms[from];
    size_t middle = from + (to - from) / 2;
    return "(" + joinBalanced(terms, from, middle) + " OR " + joinBalanced(terms, middle, to) + ")";
}

}  // namespace

bool id_list_filter::selectionClause(std::string_view idList, std::string& clause, message_sink& errors) {
    message_sink refusal;
    clause = std::string(trim(whereClause(idList, refusal)));
    if (clause.empty() && refusal.empty())
        refusal.errorf("ERROR, the ID list \"%.*s\" names no record.\n", static_cast<int>(idList.size()),
                       idList.data());
    errors.add(refusal);
    return refusal.empty();
}

std::string id_list_filter::whereClause(std::string_view idList, message_sink& errors) {
    std::vector<id_range> ranges;
    size_t pos = 0;
    while (true) {
        while (pos < idList.size() && isSeparator(idList[pos])) ++pos;
        if (pos >= idList.size()) break;
        const size_t start = pos;
        auto refuse = [&](const char* why) {
            size_t end = std::max(pos, start);
            while (end < idList.size() && !isSeparator(idList[end])) ++end;
            std::string_view part = trim(idList.substr(start, end - start));
            errors.errorf("ERROR, \"%.*s\" in the ID list %s.\n", static_cast<int>(part.size()), part.data(), why);
            return std::string();
        };
        long long first = 0, last = 0;
        bool tooLarge = false;
        if (!readId(idList, pos, first, tooLarge))
            return refuse(tooLarge ? "is past the largest ID, 2147483647" : "is not an ID or a range of IDs like 5-9");
        last = first;
        size_t after = pos;
        skipBlanks(idList, after);
        if (after < idList.size() && idList[after] == '-') {
            pos = after + 1;
            skipBlanks(idList, pos);
            if (!readId(idList, pos, last, tooLarge))
                return refuse(tooLarge ? "is past the largest ID, 2147483647"
                                       : "is not an ID or a range of IDs like 5-9");
            if (last < first) return refuse("runs backwards: a range goes from the lower ID to the higher");
        }
        if (pos < idList.size() && !isSeparator(idList[pos])) return refuse("is not an ID or a range of IDs like 5-9");
        ranges.push_back({first, last});
    }
    if (ranges.empty()) return {};
    std::vector<std::string> terms;
    std::string singles;
    int singleCount = 0;
    for (const id_range& r : ranges) {
        if (r.first == r.last) {
            appendf(singles, "%s%lld", singleCount++ ? ", " : "", r.first);
        } else {
            terms.push_back(strprintf("ID BETWEEN %lld AND %lld", r.first, r.last));
        }
    }
    if (singleCount == 1) terms.insert(terms.begin(), "ID = " + singles);
    else if (singleCount > 1) terms.insert(terms.begin(), "ID IN (" + singles + ")");
    std::string joined = joinBalanced(terms, 0, terms.size());
    if (terms.size() == 1) joined = "(" + joined + ")";  // several are joined in parentheses already
    return " " + joined;
}

}  // namespace sb
