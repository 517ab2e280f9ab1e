// The run directory of one rich control record, for every release, against
// files derived by hand from the file rules (tests/data/golden/vN). That each
// reads back into the same record is shown in run_files_import_test.
#include <gtest/gtest.h>

#include "golden_setup.h"
#include "modelinput/run_directory.h"
#include "app/text_file.h"
#include "test_support.h"

using namespace sb;
using sbtest::golden_setup;

namespace {

// The first differing line, for a readable failure.
std::string firstDifference(const std::string& expected, const std::string& actual) {
    std::vector<std::string> a = splitLines(expected), b = splitLines(actual);
    for (size_t i = 0; i < std::max(a.size(), b.size()); ++i) {
        std::string left = i < a.size() ? a[i] : "<none>", right = i < b.size() ? b[i] : "<none>";
        if (left != right) return "line " + std::to_string(i + 1) + ": expected [" + left + "] got [" + right + "]";
    }
    return "line ends differ";
}

class GoldenRunDirectory : public ::testing::TestWithParam<int> {};

TEST_P(GoldenRunDirectory, EveryFileOfOursMatchesByteForByte) {
    const int version = GetParam();
    golden_setup setup;
    ASSERT_TRUE(sbtest::loadGoldenSetup(setup));
    sbtest::temp_dir dir;
    sb::message_sink errors;
    EXPECT_TRUE(sbtest::prepare(setup, version, dir.path() + "/model", errors));
    EXPECT_EQ(errors.text(), "");

    const std::string expectedDir = sbtest::goldenDir() + "/v" + std::to_string(version);
    for (const std::string& name : sbtest::filesIn(expectedDir)) {
        std::string expected = sbtest::readFile(expectedDir + "/" + name);
        std::string actual = sbtest::readFile(dir.file(name));
        EXPECT_TRUE(expected == actual) << "v" << version << " " << name << ": " << firstDifference(expected, actual);
    }
    // Nothing but what the version reads. The option files come from the
    // option lists' own writers: here only that they hold every option.
    std::vector<std::string> expectedNames = sbtest::filesIn(expectedDir);
    if (version == 4) expectedNames.push_back("soils.in");
    EXPECT_EQ(sbtest::filesIn(dir.path()), sbtest::withOptionFiles(expectedNames));
    std::string crops = sbtest::readFile(dir.file("crop.100"));
    for (const char* crop : {"C6", "G3", "WHEAT"}) EXPECT_NE(crops.find(crop), std::string::npos) << crop;
}

INSTANTIATE_TEST_SUITE_P(AllVersions, GoldenRunDirectory, ::testing::Values(1, 2, 3, 4, 5, 6));

}  // namespace
