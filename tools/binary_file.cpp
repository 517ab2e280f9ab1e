#include "binary_file.h"

#include <cstring>

namespace standin {
namespace {

constexpr unsigned char kFormatByte = 75;
constexpr unsigned char kContinued = 129;  // 128 data bytes, the record goes on
constexpr unsigned char kEndOfFile = 130;

void appendLittleEndian32(std::string& out, uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) out += static_cast<char>((value >> shift) & 0xff);
}

uint32_t readLittleEndian32(const std::string& bytes, size_t at) {
    uint32_t value = 0;
    for (int i = 3; i >= 0; --i) value = (value << 8) | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

std::string recordBytes(const std::vector<float>& record) {
    std::string out;
    out.reserve(record.size() * 4);
    for (float value : record) {
        uint32_t bits = 0;
        std::memcpy(&bits, &value, 4);
        appendLittleEndian32(out, bits);
    }
    return out;
}

std::vector<float> recordFloats(const std::string& bytes) {
    std::vector<float> record(bytes.size() / 4);
    for (size_t i = 0; i < record.size(); ++i) {
        uint32_t bits = readLittleEndian32(bytes, 4 * i);
        std::memcpy(&record[i], &bits, 4);
    }
    return record;
}

void appendOneByteFramed(std::string& out, const std::string& data) {
    size_t at = 0;
    // A record that is an exact multiple of 128 bytes ends with a full
    // physical record marked 128, not 129.
    while (data.size() - at > 128) {
        out += static_cast<char>(kContinued);
        out.append(data, at, 128);
        out += static_cast<char>(kContinued);
        at += 128;
    }
    auto last = static_cast<unsigned char>(data.size() - at);
    out += static_cast<char>(last);
    out.append(data, at, last);
    out += static_cast<char>(last);
}

bool decodeOneByte(const std::string& bytes, std::vector<std::vector<float>>& records, std::string& errors) {
    size_t at = 1;
    std::string logical;
    while (at < bytes.size()) {
        auto marker = static_cast<unsigned char>(bytes[at++]);
        if (marker == kEndOfFile) break;
        size_t length = marker == kContinued ? 128 : marker;
        if (marker > kContinued || at + length + 1 > bytes.size() ||
            static_cast<unsigned char>(bytes[at + length]) != marker) {
            errors += "stand-in list100: error: broken physical record at byte " + std::to_string(at - 1) + "\n";
            return false;
        }
        logical.append(bytes, at, length);
        at += length + 1;
        if (marker != kContinued) {
            records.push_back(recordFloats(logical));
            logical.clear();
        }
    }
    return true;
}

bool decodeFourByte(const std::string& bytes, std::vector<std::vector<float>>& records, std::string& errors) {
    size_t at = 0;
    while (at + 4 <= bytes.size()) {
        uint32_t length = readLittleEndian32(bytes, at);
        if (at + 8 + length > bytes.size() || readLittleEndian32(bytes, at + 4 + length) != length) {
            errors += "stand-in list100: error: broken record marker at byte " + std::to_string(at) + "\n";
            return false;
        }
        records.push_back(recordFloats(bytes.substr(at + 4, length)));
        at += 8 + length;
    }
    return true;
}

}  // namespace

binary_framing framingOfRelease(int release) {
    return release == 1 ? binary_framing::fourByteMarkers : binary_framing::oneByteMarkers;
}

std::string encodeBinaryFile(const std::vector<std::vector<float>>& records, binary_framing framing) {
    std::string out;
    if (framing == binary_framing::oneByteMarkers) out += static_cast<char>(kFormatByte);
    for (const std::vector<float>& record : records) {
        std::string data = recordBytes(record);
        if (framing == binary_framing::oneByteMarkers) {
            appendOneByteFramed(out, data);
        } else {
            appendLittleEndian32(out, static_cast<uint32_t>(data.size()));
            out += data;
            appendLittleEndian32(out, static_cast<uint32_t>(data.size()));
        }
    }
    if (framing == binary_framing::oneByteMarkers) out += static_cast<char>(kEndOfFile);
    return out;
}

bool decodeBinaryFile(const std::string& bytes, std::vector<std::vector<float>>& records, std::string& errors) {
    if (bytes.empty()) {
        errors += "stand-in list100: error: binary file is empty\n";
        return false;
    }
    if (static_cast<unsigned char>(bytes[0]) == kFormatByte) return decodeOneByte(bytes, records, errors);
    return decodeFourByte(bytes, records, errors);
}

}  // namespace standin
