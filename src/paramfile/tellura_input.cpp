#include "paramfile/tellura_input.h"

#include "app/text_format.h"

namespace sb {

void tellura_input::writeHeader(std::string& out) const {
    const std::string shownName = oneLine(name);
    appendf(out, "%-5.*s", static_cast<int>(shownName.size()), shownName.data());
    if (!description.empty()) {
        out += ' ';
        out += oneLine(description);
    }
    out += '\n';
}

void tellura_input::write(std::string& out, int version) const {
    writeHeader(out);
    writeValues(out, version);
}

}  // namespace sb
