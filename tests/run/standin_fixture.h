#pragma once
// A run directory with the input files a release of the model reads, and the
// stand-in model linked into it as the model executable (and list utility).
#include <gmock/gmock.h>

#include "test_support.h"

#include <cstdint>
#include <string>
#include <vector>

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

namespace sbtest {

struct standin_setup {
    int release = 3;  // 1 or 3
};

class standin_run_dir {
public:
    explicit standin_run_dir(const standin_setup& setup = {});
    const std::string& path() const { return dir_.path(); }
    std::string file(const std::string& name) const { return dir_.file(name); }
    std::string model() const { return dir_.file("tellx"); }      // link to the stand-in
    std::string list100() const { return dir_.file("list100"); }  // same program, list role
    // Runs the model's command line for the release in the directory; returns the console text.
    std::string runModel() const;

private:
    void writeInputs(const standin_setup& setup) const;

    temp_dir dir_;
    int release_;
};

std::string standinPath();

// Little-endian numbers in a binary output file.
float floatAt(const std::string& bytes, size_t offset);
uint32_t uint32At(const std::string& bytes, size_t offset);
// The two framings of the binary output, parsed strictly into logical records.
bool parseOneByteFraming(const std::string& file, std::vector<std::string>& records,
                         std::vector<std::vector<int>>* markers = nullptr);
bool parseFourByteFraming(const std::string& file, std::vector<std::string>& records);
// Runs a command in a directory through popen, returning its output (tests only).
std::string runInDirectory(const std::string& directory, const std::string& command);

}  // namespace sbtest
