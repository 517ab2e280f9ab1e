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
#include "strict_release.h"

#include <string>
#include <vector>

namespace standin {

struct list_request {
    std::string binaryFile;  // "sb" means "sb.bin"
    std::string listFile;    // "sb" means "sb.lis"
    std::string variablesFile;
};

// How a list file is laid out.
struct list_format {
    array_counts counts;
    bool narrow = false;                // release 2
    const char* timeFormat = "%11.2f";  // release 1: "%-11.2f"; release 2: "%7.2f"
    bool dropLeadingZeros = false;      // ".0000" for 0.0000
    const char* lineEnd = "\n";
};
list_format listFormatOfRelease(int release);

// Imitates one real release's list utility: its variable positions and record
// size from the reference outputs, its number format and console lines.
struct strict_list {
    const release_behaviour* release = nullptr;
    const reference_setup* reference = nullptr;
};

// Console text goes to `console`; problems (containing "error") to `errors`.
bool writeListFile(const list_request& request, const std::string& exeDir, std::string& console, std::string& errors,
                   const strict_list& strict = {});

// The text of a list file, for records already decoded.
std::string formatListFile(const list_format& format, const std::vector<std::string>& names,
                           const std::vector<const layout_entry*>& entries,
                           const std::vector<std::vector<float>>& records);

}  // namespace standin
