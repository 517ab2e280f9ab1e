#pragma once
// The help index: parameters kept in 26 lists, one per initial letter A to Z
// (upper-cased), so a look-up only walks the names of one letter.
#include <array>
#include <cstdint>
#include <deque>
#include <string_view>

#include "help/field_help.h"

namespace sb {

class list_field_help {
public:
    virtual ~list_field_help() = default;

    // 0..25 for a name starting with a letter, -1 otherwise.
    static int letterIndex(std::string_view name);

    // The entry of that name (case ignored) and table; nullptr when none.
    field_help* findEntry(std::string_view name, int32_t table);
    const field_help* findEntry(std::string_view name, int32_t table) const;
    // Adds an entry for a name starting with a letter; nullptr otherwise.
    field_help* addEntry(std::string_view name, int32_t table);

    size_t size() const;
    void clear();

protected:
    // deque: entries keep their address while the index grows.
    std::array<std::deque<field_help>, 26> letters_;
};

}  // namespace sb
