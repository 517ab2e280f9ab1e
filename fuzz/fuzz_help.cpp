// Any bytes as a help file: messages, never a crash; look-ups on what loaded.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "help/list_field_help_tellura.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text = "Variable,Table,VersionFirst,VersionLast\n";
    // Half of the inputs keep the right header, so the fuzzer reaches the rows.
    if (size > 0 && (data[0] & 1)) text.clear();
    text.append(reinterpret_cast<const char*>(data), size);
    sb::list_field_help_tellura help;
    sb::message_sink messages;
    help.loadText(text, "fuzz.csv", messages);
    for (int version = 0; version <= 7; ++version) {
        help.describe("a", 1, version);
        help.helpBoxText("prdx(1)", 1, version);
    }
    return 0;
}
