// The run directory of one rich control record, for every release, against
// files derived by hand from the file rules (tests/data/golden/vN).
#include <gtest/gtest.h>

#include "golden_setup.h"
#include "modelinput/run_directory.h"
#include "modelinput/schedule_file.h"
#include "app/text_file.h"
#include "test_support.h"

using namespace sb;
using sbtest::golden_setup;

namespace sb {
// Readable failures for block comparisons.
void PrintTo(const tellura_event_block& b, std::ostream* os) {
    *os << "{#" << b.blockNumber << " '" << b.description << "' " << b.firstYear << "-" << b.lastYear << " rep "
        << b.repeatingYears << " out " << b.outputStartingYear << "/" << int(b.outputMonth) << " int "
        << b.outputInterval << " wx " << int(b.weatherChoice) << ":" << b.weatherId << " events";
    for (const tellura_event& e : b.events)
        *os << " [" << e.order << " " << e.year << "/" << int(e.month) << "/" << int(e.day) << " t" << int(e.type)
            << " '" << e.item << "' " << e.parameter1 << " " << e.parameter2 << "]";
    *os << "}";
}
}  // namespace sb

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
    std::string errors;
    EXPECT_TRUE(prepareRunDirectory(setup.record, version, dir.path() + "/model", setup.outfiles, setup.options,
                                    setup.soils, setup.stations, errors));
    EXPECT_EQ(errors, "");

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

TEST_P(GoldenRunDirectory, ScheduleReadsBackToTheSameBlocksAndEvents) {
    const int version = GetParam();
    golden_setup setup;
    ASSERT_TRUE(sbtest::loadGoldenSetup(setup));
    std::string errors;
    std::string text = scheduleFileText(setup.record, setup.options.list(option_kind::crop),
                                        setup.options.list(option_kind::tree), version, errors);
    tellura_control_record back;
    schedule_references references;
    ASSERT_TRUE(readScheduleText(text, "sb.sch", version, back, references, errors)) << errors;
    EXPECT_EQ(errors, "");
    EXPECT_EQ(references.siteFile, "sbsite.100");

    std::vector<tellura_event_block> expected = setup.record.blocks;
    for (tellura_event_block& block : expected) {
        // Only file blocks name their station in the schedule.
        if (block.weatherChoice != kWeatherFile) block.weatherId = 0;
        for (tellura_event& event : block.events) {
            if (version != 4) event.day = 1;  // only the daily release writes the day
            if (event.type == kEventErod) {
                if (version != 6) event.parameter2 = 0;
            } else {
                event.parameter1 = event.parameter2 = 0;
            }
        }
    }
    EXPECT_EQ(back.blocks, expected);
    for (const char* column : {"Labeling Type", "Labeling Year", "CO2SYS", "CO2TM(1)", "CO2TM(2)", "Initial System"})
        EXPECT_EQ(back.row.number(column), setup.record.row.number(column)) << column;
    EXPECT_FALSE(back.row.flag(back.row.column("Simulate Microcosm")));
    EXPECT_EQ(back.initialCrop(), "C6");
    EXPECT_EQ(back.initialTree(), "DECID");
    if (version >= 3 && version <= 5) {
        for (const char* column : {"PHSYS", "PHTM", "STSYS", "Ninput", "Nstart", "OMADinput", "WTHINPUT", "WTHSTART"})
            EXPECT_EQ(back.row.number(column), setup.record.row.number(column)) << column;
    }
    if (version >= 3) { EXPECT_EQ(back.description(), "Golden record"); }
}

INSTANTIATE_TEST_SUITE_P(AllVersions, GoldenRunDirectory, ::testing::Values(1, 2, 3, 4, 5, 6));

}  // namespace
