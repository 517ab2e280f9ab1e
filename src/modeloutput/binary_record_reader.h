#pragma once
// The model's unformatted sequential output file, one logical record per output
// time. Two framings exist and we tell them apart from the file itself:
//  - 1-byte markers: the file begins with the format byte 75; a logical record
//    is a chain of physical records, each a length byte L, the data and a trailer
//    byte equal to L (L = 129: 128 bytes and the record goes on; L = 130 ends the file);
//  - 4-byte markers: each record is a 4-byte little-endian length, the data and
//    the same length again (the oldest release, and builds made with gfortran).
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "app/message_sink.h"

namespace sb {

enum class binary_framing { unknown, byte_markers, length_markers };

class binary_record_reader {
public:
    static constexpr int kFormatByte = 75;

    binary_record_reader() = default;
    ~binary_record_reader();
    binary_record_reader(const binary_record_reader&) = delete;
    binary_record_reader& operator=(const binary_record_reader&) = delete;

    // "ERROR, unable to open binary output file: <path>\n" on failure.
    bool open(const std::string& path, message_sink& errors);
    // Reads the first byte. False (no message) when the file is empty.
    bool readFirstByte(int& byte);
    // Decides the framing from the first bytes and measures the first logical
    // record; false with "ERROR, format of bin file invalid, reserved=%d.\n".
    // A file with no record at all gives recordBytes 0.
    bool detectFraming(message_sink& errors);
    binary_framing framing() const { return framing_; }
    long firstRecordBytes() const { return firstRecordBytes_; }

    // One logical record of exactly `bytes` bytes. False without a message at the
    // end of the data (L = 130 or end of file); false with a message and the error
    // flag set for a damaged record. With the flag already set it fails at once.
    bool readRecord(long bytes, std::vector<unsigned char>& record, bool& error, message_sink& errors);

    long recordsRead() const { return recordsRead_; }

private:
    bool readByteMarked(long bytes, std::vector<unsigned char>& record, bool& error, message_sink& errors);
    bool readLengthMarked(long bytes, std::vector<unsigned char>& record, bool& error, message_sink& errors);
    bool measureByteMarked();
    bool readU32(uint32_t& value);

    std::FILE* file_ = nullptr;
    int firstByte_ = -1;
    binary_framing framing_ = binary_framing::unknown;
    long firstRecordBytes_ = 0;
    long recordsRead_ = 0;
};

}  // namespace sb
