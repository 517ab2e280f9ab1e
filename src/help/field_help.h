#pragma once
// Help for one parameter of one parameter-file table, with the model
// versions each text holds for.
#include <cstdint>
#include <string>
#include <vector>

namespace sb {

struct field_help_version_tellura {
    int16_t first = 1;  // model version codes, inclusive
    int16_t last = 6;
    std::string shortText;  // shown in parentheses, may be empty
    std::string helpText;

    bool covers(int version) const { return version >= first && version <= last; }
};

class field_help {
public:
    std::string name;                                  // as the model spells it, e.g. "prdx(1)"
    int32_t table = 0;                                 // see help_tables.h
    std::vector<field_help_version_tellura> versions;  // file order

    // The first version entry that covers `version` (file order decides when
    // ranges overlap); nullptr when none does.
    const field_help_version_tellura* forVersion(int version) const;
};

}  // namespace sb
