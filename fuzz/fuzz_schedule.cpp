// Any bytes as a schedule ("sb.evt", "sb.sch") of every release: messages,
// never a crash, and no block or event past what the text holds.
#include <cstddef>
#include <cstdint>
#include <string>

#include "modelinput/schedule_file.h"
#include "records/tellura_control_record.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    for (int version = 1; version <= 6; ++version) {
        sb::tellura_control_record record;
        sb::schedule_references references;
        sb::message_sink errors;
        sb::readScheduleText(text, "fuzz.sch", version, record, references, errors);
    }
    return 0;
}
