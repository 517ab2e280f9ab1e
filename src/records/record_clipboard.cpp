#include "records/record_clipboard.h"

#include "records/tellura_weather_station.h"

namespace sb {

record_clipboard::items record_clipboard::makeItems(const tellura_control_record& record,
                                                    const tellura_weather_stations& stations) {
    return {encodeId(record.id()), controlRecordText(record, stations)};
}

// Byte order fixed (little-endian) so that an item means the same ID on every machine.
std::string record_clipboard::encodeId(int32_t id) {
    uint32_t bits = static_cast<uint32_t>(id);
    std::string bytes(kIdItemSize, '\0');
    for (size_t i = 0; i < kIdItemSize; ++i) bytes[i] = static_cast<char>((bits >> (8 * i)) & 0xFF);
    return bytes;
}

bool record_clipboard::decodeId(const std::optional<std::string>& idItem, int32_t& id, message_sink& errors) {
    if (!idItem) {
        errors.error("Binary format not available.\r\n");
        return false;
    }
    if (idItem->size() != kIdItemSize) {
        errors.error("Binary item size is invalid.\r\n");
        return false;
    }
    uint32_t bits = 0;
    for (size_t i = 0; i < kIdItemSize; ++i)
        bits |= static_cast<uint32_t>(static_cast<unsigned char>((*idItem)[i])) << (8 * i);
    id = static_cast<int32_t>(bits);
    return true;
}

}  // namespace sb
