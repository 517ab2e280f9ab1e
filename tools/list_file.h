#pragma once
// The stand-in for the list utility: turns the binary output into the text
// list file for the variables named in the request file.
//
// Wide layout (every release but 2): time in characters 1-11 ("%11.2f"; for
// release 1 left-aligned so that its first four characters are the year),
// then one 16-character field per variable: the header name five blanks in,
// the value as five blanks and "%11.4f". Narrow layout (release 2): time in
// characters 1-7 ("%7.2f"), header names in 15-character fields from
// character 10, values as "%15.4f" from character 8. Line 2 is empty.
#include "binary_layout.h"

#include <string>
#include <vector>

namespace standin {

struct list_request {
    std::string binaryFile;  // "sb" means "sb.bin"
    std::string listFile;    // "sb" means "sb.lis"
    std::string variablesFile;
};

// Console text goes to `console`; problems (containing "error") to `errors`.
bool writeListFile(const list_request& request, const std::string& exeDir, std::string& console, std::string& errors);

// The text of a list file, for records already decoded.
std::string formatListFile(int release, const std::vector<std::string>& names,
                           const std::vector<const layout_entry*>& entries,
                           const std::vector<std::vector<float>>& records);

}  // namespace standin
