#pragma once
// The clipboard exchange of control records, without any widget: the two items
// a copy puts on the clipboard (the record's ID in the private format, and the
// record's text) and the reading of the ID item on paste. The desktop glue puts
// these items on the system clipboard and takes them back; copying a record with
// its outputs under a new ID is the output code's (modeloutput/record_outputs.h).
#include <cstdint>
#include <optional>
#include <string>

#include "app/message_sink.h"
#include "records/tellura_control_record.h"

namespace sb {

class tellura_weather_stations;

class record_clipboard {
public:
    static constexpr const char* kFormatName = "SoilbenchControl";
    static constexpr const char* kMimeType = "application/x-soilbench-control";
    static constexpr size_t kIdItemSize = 4;

    // Messages of the glue ("%d" is the system's error code).
    static constexpr const char* kOpenFailed = "Unable to open clipboard (%d)\r\n";
    static constexpr const char* kBinaryCopyFailed = "Unable to copy binary to clipboard (%d)\r\n";
    static constexpr const char* kTextCopyFailed = "Unable to copy CF_TEXT to clipboard (%d)\r\n";
    static constexpr const char* kTextMemoryFailed = "Unable to allocate memory for clipboard (text)\r\n";
    static constexpr const char* kBinaryMemoryFailed = "Unable to allocate memory for clipboard (binary)\r\n";
    static constexpr const char* kDataFailed = "GetClipboardData fails(%d)\r\n";
    static constexpr const char* kNewIdPrompt = "Enter new ID #:";

    struct items {
        std::string idItem;  // the record's ID, 4 bytes, little-endian
        std::string text;    // the record text; empty when its station is not in the list
    };

    static items makeItems(const tellura_control_record& record, const tellura_weather_stations& stations);
    static std::string encodeId(int32_t id);
    // The ID of the private-format item; `idItem` is empty when the clipboard has
    // no item in that format.
    static bool decodeId(const std::optional<std::string>& idItem, int32_t& id, message_sink& errors);
};

}  // namespace sb
