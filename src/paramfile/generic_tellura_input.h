#pragma once
// A record of any ".100" file: keeps every name=value pair in file order, so
// a file of a kind we have no fields for can be imported and written back.
// Names are matched without regard to case; a repeated name updates the
// first pair of that name.
#include <memory>
#include <string>
#include <vector>

#include "app/message_sink.h"
#include "paramfile/tellura_input.h"
#include "paramfile/tellura_input_list.h"

namespace sb {

struct parameter_value {
    std::string name;
    double value = 0.0;
};

class generic_tellura_input : public tellura_input {
public:
    std::vector<parameter_value> values;

    bool setField(std::string_view fieldName, double value, message_sink& errors) override;
    // Every pair as a real value line ("%-10.5f     %s\n"); the version is not used.
    void writeValues(std::string& out, int version) const override;

    // nullptr when there is no pair of that name.
    const parameter_value* findValue(std::string_view fieldName) const;
};

using generic_tellura_input_list = tellura_input_list_of<generic_tellura_input>;

}  // namespace sb
