#pragma once
// Small helpers shared by the test programs.
#include <gtest/gtest.h>

#include <string>

namespace sbtest {

// Folder of the real model files kept beside the project (not in it).
std::string samplesDir();
bool haveSamples();

// A fresh temporary folder, removed with the object.
class temp_dir {
public:
    temp_dir();
    ~temp_dir();
    temp_dir(const temp_dir&) = delete;
    temp_dir& operator=(const temp_dir&) = delete;
    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& content);
std::string testDataDir();
std::string binDir();

}  // namespace sbtest

// Skips the current test with a clear reason when the real sample files are absent.
#define SB_REQUIRE_SAMPLES()                                                                \
    do {                                                                                    \
        if (!sbtest::haveSamples())                                                         \
            GTEST_SKIP() << "real model sample files not found at " << sbtest::samplesDir() \
                         << " (they sit beside the project, not in it)";                    \
    } while (0)
