// The stand-in model writes its binary outputs in the model's exact framings,
// byte by byte. Checked here with parsers of our own, independent of the
// workbench's readers.
#include "standin_fixture.h"

#include <cmath>

namespace {

using sbtest::floatAt;
using sbtest::parseFourByteFraming;
using sbtest::parseOneByteFraming;
using sbtest::standin_run_dir;
using sbtest::standin_setup;
using sbtest::uint32At;

std::vector<float> times(const std::vector<std::string>& records) {
    std::vector<float> result;
    for (const std::string& record : records) result.push_back(floatAt(record, 0));
    return result;
}

// Year and month of a monthly time, as the readers split it (32-bit floats).
std::pair<int, int> yearMonth(float time) {
    int year = static_cast<int>(std::floor(time));
    float fraction = (time - static_cast<float>(year)) / 0.083333336f + 0.5f;
    int month = static_cast<int>(std::floor(fraction));
    return month == 0 ? std::make_pair(year - 1, 12) : std::make_pair(year, month);
}

TEST(StandinBinary, OneByteMarkersRecordSizesAndTimes) {
    standin_run_dir dir;  // release 3: 2360-byte records
    std::string console = dir.runModel();
    EXPECT_THAT(console, Not(HasSubstr("error")));
    EXPECT_EQ(console.substr(console.size() - 19), "Execution success.\n");
    std::vector<std::string> records;
    std::vector<std::vector<int>> markers;
    ASSERT_TRUE(parseOneByteFraming(sbtest::readFile(dir.file("sb.bin")), records, &markers));
    // Block 1: annual 1950 to 1955; block 2: monthly from January 1956 to the
    // end of its last year, 1960 (1961.00, December 1960).
    ASSERT_EQ(records.size(), 6u + 60u);
    std::vector<int> split(18, 129);  // 2360 = 18 x 128 + 56
    split.push_back(56);
    for (size_t i = 0; i < records.size(); ++i) {
        ASSERT_EQ(records[i].size(), 2360u);
        ASSERT_EQ(markers[i], split) << i;
    }
    std::vector<float> t = times(records);
    for (int year = 1950; year <= 1955; ++year) EXPECT_EQ(t[year - 1950], static_cast<float>(year));
    for (size_t i = 6; i < t.size(); ++i) {
        int monthIndex = static_cast<int>(i) - 6;  // 0 = January 1956
        EXPECT_EQ(yearMonth(t[i]), std::make_pair(1956 + monthIndex / 12, monthIndex % 12 + 1)) << t[i];
        EXPECT_EQ(t[i] < 1961.0f, i + 1 < t.size());  // only the last closes the block
    }
    EXPECT_FLOAT_EQ(t[6], 1956.08f);
    EXPECT_FLOAT_EQ(t.back(), 1961.0f);
}

TEST(StandinBinary, ReleaseOneUsesFourByteMarkersAndWritesTheNewSiteFile) {
    standin_setup setup;
    setup.release = 1;
    standin_run_dir dir(setup);
    std::string console = dir.runModel();
    std::string file = sbtest::readFile(dir.file("sb.bin"));
    ASSERT_GE(file.size(), 4u) << console;
    EXPECT_EQ(uint32At(file, 0), 2076u);
    std::vector<std::string> records;
    ASSERT_TRUE(parseFourByteFraming(file, records));
    EXPECT_EQ(records.size(), 66u);  // interval 1.00000 years, then 0.08333 years
    EXPECT_EQ(file.size(), 66u * (2076 + 8));
    EXPECT_EQ(sbtest::readFile(dir.file("sbNew.100")), sbtest::readFile(dir.file("sbsite.100")));
}

}  // namespace
