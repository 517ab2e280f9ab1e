// Where the programs look for the files shipped with them.
#include "app/program_location.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace {

TEST(ProgramLocation, DataFolderFromTheProgramFolderOrTheVariable) {
    struct data_case {
        const char* programDir;
        const char* variable;  // SOILBENCH_DATA_DIR, null when unset
        const char* expected;
    };
    const data_case cases[] = {
        {"/usr/bin", nullptr, "/usr/share/soilbench"},
        {"/opt/soilbench-0.1/bin/", nullptr, "/opt/soilbench-0.1/share/soilbench"},
        {"/home/me/build/./bin", nullptr, "/home/me/build/share/soilbench"},
        {"", nullptr, "../share/soilbench"},
        {"/usr/bin", "", "/usr/share/soilbench"},
        {"/usr/bin", "/srv/soilbench-data", "/srv/soilbench-data"},
        {"/usr/bin", "data/../my-data", "my-data"},
    };
    for (const data_case& c : cases)
        EXPECT_EQ(sb::dataDirectory(c.programDir, c.variable), c.expected)
            << c.programDir << " with " << (c.variable ? c.variable : "(unset)");
}

TEST(ProgramLocation, TheRunningProgramAndTheVariable) {
    // This test program runs from <build>/tests.
    EXPECT_EQ(std::filesystem::path(sb::programDirectory()).filename(), "tests");
    ASSERT_EQ(setenv(sb::kDataDirVariable, "/srv/soilbench-data", 1), 0);
    EXPECT_EQ(sb::dataDirectory(), "/srv/soilbench-data");
    unsetenv(sb::kDataDirVariable);
    EXPECT_EQ(sb::dataDirectory(), std::filesystem::path(SB_SHARE_DIR).lexically_normal().string());
}

}  // namespace
