#include "paramfile/tellura_input.h"

#include "app/text_format.h"

namespace sb {

void tellura_input::writeHeader(std::string& out) const {
    appendf(out, "%-5.*s", static_cast<int>(name.size()), name.data());
    if (!description.empty()) {
        out += ' ';
        out += description;
    }
    out += '\n';
}

void tellura_input::write(std::string& out, int version) const {
    writeHeader(out);
    writeValues(out, version);
}

}  // namespace sb
