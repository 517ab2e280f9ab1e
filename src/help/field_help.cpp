#include "help/field_help.h"

namespace sb {

const field_help_version_tellura* field_help::forVersion(int version) const {
    for (const field_help_version_tellura& entry : versions)
        if (entry.covers(version)) return &entry;
    return nullptr;
}

}  // namespace sb
