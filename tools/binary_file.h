#pragma once
// The model's unformatted sequential output file ("sb.bin"), in its two framings:
// - 4-byte markers (the oldest release, and gfortran builds): each record is a
//   4-byte little-endian length, the record, the same length again;
// - 1-byte markers (every later release): a format byte 75, then each record
//   split into physical records "L, L data bytes, L" with L = 129 meaning 128
//   bytes and more to come; a single byte 130 ends the file.
#include <cstdint>
#include <string>
#include <vector>

namespace standin {

enum class binary_framing { fourByteMarkers, oneByteMarkers };

binary_framing framingOfRelease(int release);

// Encodes logical records (each a run of little-endian float32) into file bytes.
std::string encodeBinaryFile(const std::vector<std::vector<float>>& records, binary_framing framing);

// Decodes a file written in either framing (told apart by the first byte).
bool decodeBinaryFile(const std::string& bytes, std::vector<std::vector<float>>& records, std::string& errors);

}  // namespace standin
