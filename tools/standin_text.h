#pragma once
// Small text helpers of the stand-in model. The stand-in is a separate program
// without the workbench's libraries, so it keeps its own few helpers.
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

std::string lower(std::string_view text);
std::string_view trimBlanks(std::string_view text);
// Splits at blanks (space, tab, CR, LF); empty tokens are dropped.
std::vector<std::string> splitBlanks(std::string_view text);
// The whole token must be a number (C locale); nullopt otherwise.
std::optional<double> parseNumber(std::string_view token);
std::optional<long> parseInteger(std::string_view token);
// Reads a text file into lines without their line ends (CR LF or LF).
bool readLines(const std::string& path, std::vector<std::string>& lines);
bool fileExists(const std::string& path);
// A short stable hash, so every variable gets its own deterministic numbers.
unsigned nameHash(std::string_view name);

}  // namespace standin
