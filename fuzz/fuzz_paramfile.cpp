// Any bytes as a ".100" file: the reader must give messages, never crash or
// write outside a record's arrays, and what it read must write back.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "paramfile/field_setter.h"
#include "paramfile/generic_tellura_input.h"
#include "paramfile/tellura_input_list.h"

namespace {

// A record kind with fixed arrays of every shape, so subscripts from the
// input reach the bounds checks.
struct fuzz_record : sb::tellura_input {
    double one[3] = {};
    float two[4 * 3] = {};
    int16_t three[2 * 3 * 4] = {};
    double reversed[5 + 2 * 3 * 4] = {};
    int8_t small = 0;
    int32_t large = 0;
    uint16_t flag = 0;

    bool setField(std::string_view name, double value, sb::message_sink& errors) override {
        sb::field_setter set(name, value, errors);
        set.array1("A", one, 3) || set.array2("B", two, 4, 3) || set.array3("C", three, 2, 3, 4) ||
            set.array3Reversed("D", reversed, 2, 3, 4, 5) || set.int8("S", small) || set.int32("L", large) ||
            set.boolean("F", flag);
        return set.found();
    }
    void writeValues(std::string&, int) const override {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    sb::message_sink errors;
    std::string status;
    sb::tellura_input_list_of<fuzz_record> typed;
    typed.importText(text, "fuzz.100", errors, status);

    sb::generic_tellura_input_list generic;
    generic.importText(text, "fuzz.100", errors, status);
    std::string written;
    generic.writeText(written, 4);
    sb::generic_tellura_input_list again;
    again.importText(written, "again.100", errors, status);
    return 0;
}
