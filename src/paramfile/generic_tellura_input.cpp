#include "paramfile/generic_tellura_input.h"

#include "app/text_format.h"
#include "paramfile/value_line_writer.h"

namespace sb {

bool generic_tellura_input::setField(std::string_view fieldName, double value, message_sink&) {
    for (parameter_value& pair : values) {
        if (iequals(pair.name, fieldName)) {
            pair.value = value;
            return true;
        }
    }
    values.push_back({std::string(fieldName), value});
    return true;
}

void generic_tellura_input::writeValues(std::string& out, int) const {
    for (const parameter_value& pair : values) writeReal(out, pair.value, pair.name);
}

const parameter_value* generic_tellura_input::findValue(std::string_view fieldName) const {
    for (const parameter_value& pair : values)
        if (iequals(pair.name, fieldName)) return &pair;
    return nullptr;
}

}  // namespace sb
