// Where the programs look for the files shipped with them.
#include "app/program_location.h"

#include <gtest/gtest.h>

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

}  // namespace
