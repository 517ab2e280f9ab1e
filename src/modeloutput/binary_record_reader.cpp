#include "modeloutput/binary_record_reader.h"

#include "app/text_format.h"

namespace sb {

namespace {
constexpr int kContinued = 129;  // 128 data bytes, the record goes on
constexpr int kEndOfFile = 130;
constexpr int kFullPiece = 128;
// No model build writes records anywhere near this; a larger length marker is damage.
constexpr uint32_t kMaxRecordBytes = 64u * 1024u * 1024u;
}  // namespace

binary_record_reader::~binary_record_reader() {
    if (file_) std::fclose(file_);
}

bool binary_record_reader::open(const std::string& path, message_sink& errors) {
    file_ = std::fopen(path.c_str(), "rb");
    if (!file_) errors.error("ERROR, unable to open binary output file: " + path + "\n");
    return file_ != nullptr;
}

bool binary_record_reader::readFirstByte(int& byte) {
    firstByte_ = std::fgetc(file_);
    byte = firstByte_;
    return firstByte_ != EOF;
}

bool binary_record_reader::readU32(uint32_t& value) {
    unsigned char b[4];
    if (std::fread(b, 1, 4, file_) != 4) return false;
    value = static_cast<uint32_t>(b[0]) | static_cast<uint32_t>(b[1]) << 8 | static_cast<uint32_t>(b[2]) << 16 |
            static_cast<uint32_t>(b[3]) << 24;
    return true;
}

bool binary_record_reader::measureByteMarked() {
    long start = std::ftell(file_);
    long total = 0;
    for (;;) {
        int length = std::fgetc(file_);
        if (length == EOF || length == kEndOfFile || length > kEndOfFile) break;
        int data = length == kContinued ? kFullPiece : length;
        if (std::fseek(file_, data + 1, SEEK_CUR) != 0) break;
        total += data;
        if (length != kContinued) break;
    }
    firstRecordBytes_ = total;
    return std::fseek(file_, start, SEEK_SET) == 0;
}

bool binary_record_reader::detectFraming(message_sink& errors) {
    // No 4-byte-framed file can begin with 75: its first byte is the low byte of
    // a record length, which is a multiple of 4 (floats only).
    if (firstByte_ == kFormatByte) {
        framing_ = binary_framing::byte_markers;
        return measureByteMarked();
    }
    // A 4-byte length N, N bytes and the same N again.
    unsigned char rest[3];
    uint32_t lead = 0, trail = 0;
    bool framed = std::fread(rest, 1, 3, file_) == 3;
    if (framed) {
        lead = static_cast<uint32_t>(firstByte_) | static_cast<uint32_t>(rest[0]) << 8 |
               static_cast<uint32_t>(rest[1]) << 16 | static_cast<uint32_t>(rest[2]) << 24;
        framed = lead > 0 && lead <= kMaxRecordBytes && lead % 4 == 0 &&
                 std::fseek(file_, static_cast<long>(lead), SEEK_CUR) == 0 && readU32(trail) && trail == lead;
    }
    if (!framed) {
        errors.errorf("ERROR, format of bin file invalid, reserved=%d.\n", firstByte_);
        return false;
    }
    framing_ = binary_framing::length_markers;
    firstRecordBytes_ = static_cast<long>(lead);
    return std::fseek(file_, 0, SEEK_SET) == 0;
}

bool binary_record_reader::readRecord(long bytes, std::vector<unsigned char>& record, bool& error,
                                      message_sink& errors) {
    if (error) return false;
    record.resize(static_cast<size_t>(bytes));
    bool ok = framing_ == binary_framing::length_markers ? readLengthMarked(bytes, record, error, errors)
                                                         : readByteMarked(bytes, record, error, errors);
    if (ok) ++recordsRead_;
    return ok;
}

bool binary_record_reader::readByteMarked(long bytes, std::vector<unsigned char>& record, bool& error,
                                          message_sink& errors) {
    long gathered = 0;
    unsigned char piece[kFullPiece];
    while (gathered < bytes) {
        int length = std::fgetc(file_);
        if (length == EOF || length == kEndOfFile) return false;
        if (length > kEndOfFile) {
            errors.errorf("ERROR in physical record (length byte = %d).\n", length);
            error = true;
            return false;
        }
        int data = length == kContinued ? kFullPiece : length;
        int trailer = EOF;
        if (std::fread(piece, 1, static_cast<size_t>(data), file_) != static_cast<size_t>(data) ||
            (trailer = std::fgetc(file_)) == EOF) {
            errors.error("ERROR in physical record.\n");
            error = true;
            return false;
        }
        if (trailer != length) {
            errors.errorf("ERROR in physical record (length = %d, trailer length = %d).\n", data, trailer);
            error = true;
        }
        if (gathered + data > bytes) {
            errors.errorf("ERROR, binary record longer than %ld bytes.\n", bytes);
            error = true;
            return false;
        }
        std::copy(piece, piece + data, record.begin() + gathered);
        gathered += data;
        if (error) return false;
    }
    return true;
}

bool binary_record_reader::readLengthMarked(long bytes, std::vector<unsigned char>& record, bool& error,
                                            message_sink& errors) {
    uint32_t lead = 0, trail = 0;
    if (!readU32(lead)) return false;  // the end of the file
    if (lead != static_cast<uint32_t>(bytes)) {
        errors.errorf("ERROR in record marker (length = %u, expected %ld).\n", lead, bytes);
        error = true;
        return false;
    }
    if (std::fread(record.data(), 1, static_cast<size_t>(bytes), file_) != static_cast<size_t>(bytes) ||
        !readU32(trail)) {
        errors.error("ERROR in physical record.\n");
        error = true;
        return false;
    }
    if (trail != lead) {
        errors.errorf("ERROR in record marker (length = %u, trailer length = %u).\n", lead, trail);
        error = true;
        return false;
    }
    return true;
}

}  // namespace sb
