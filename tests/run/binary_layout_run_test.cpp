// Runs of every release through the stand-in, reading its binary file: the
// releases with a shipped layout store their outputs, the others fail saying
// how to add a layout, and release 2's binary file gives what its list file gives.
#include "run_controller_fixture.h"

#include <cmath>
#include <filesystem>

#include "modeloutput/binary_layout.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/tellura_output.h"
#include "run/run_controller.h"

namespace {

using namespace sbtest;

struct release_run {
    bool ok = false;
    std::string errors;
    sb::tellura_outputs stored;
};

release_run runAs(run_project& project, int version, bool binary) {
    project.settings().version = static_cast<int16_t>(version);
    project.settings().modelExecutables[static_cast<size_t>(version - 1)] = project.model();
    project.settings().list100Executables[static_cast<size_t>(version - 1)] = project.list100();
    sb::run_choices choices;
    choices.readBinaryOutput = binary;
    release_run run;
    std::string runLog;
    sb::run_controller controller(project.db(), project.settings());
    run.ok = controller.runOneRecord(1, choices, runLog, run.errors);
    std::string readErrors;
    EXPECT_TRUE(sb::loadOutputs(project.db(), 1, run.stored, readErrors)) << readErrors;
    return run;
}

// The folder a failed run keeps for inspection (the only one in the runs folder).
std::string keptRunFolder(run_project& project) {
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(project.settings().runsFolder, ec))
        return entry.path().string();
    return "(none kept)";
}

TEST(BinaryLayoutRuns, ReleasesWithoutALayoutFailSayingHowToAddOne) {
    struct {
        int version;
        bool binary;   // release 1 reads its binary file whatever the setting
        long bytes;    // the stand-in's record size for the release
        bool shipped;  // a layout of that size ships with the program
    } cases[] = {{1, false, 2076, false}, {1, true, 2076, false}, {2, true, 1984, true},
                 {3, true, 2360, false},  {4, true, 3212, true},  {5, true, 2360, false}};
    for (const auto& c : cases) {
        run_project project(1, 2);
        release_run run = runAs(project, c.version, c.binary);
        EXPECT_EQ(run.ok, c.shipped) << "release " << c.version << "\n" << run.errors;
        const std::string expected =
            sb::binary_layout_catalogue().noLayoutMessage(keptRunFolder(project) + "/sb.bin", c.version, c.bytes);
        EXPECT_EQ(run.errors.find(expected) != std::string::npos, !c.shipped) << "release " << c.version << "\n"
                                                                              << run.errors;
        EXPECT_EQ(run.stored.monthlyCount(), c.shipped ? 12u : 0u) << "release " << c.version;
    }
}

// The shipped release-2 layout places every variable where the stand-in's list
// utility finds it: both roads store the same numbers (the list file rounds to
// four decimals).
TEST(BinaryLayoutRuns, ReleaseTwoBinaryFileGivesWhatItsListFileGives) {
    run_project project(1, 3);
    release_run list = runAs(project, 2, false);
    release_run binary = runAs(project, 2, true);
    ASSERT_TRUE(list.ok && binary.ok) << list.errors << binary.errors;
    auto fromList = list.stored.monthlyInOrder();
    auto fromBinary = binary.stored.monthlyInOrder();
    ASSERT_EQ(fromList.size(), 24u);
    ASSERT_EQ(fromBinary.size(), fromList.size());
    // Every variable the list file filled, the binary file fills alike (it may fill more).
    const int columns = fromList[0]->columnCount();
    int compared = 0;
    for (int c = 0; c < columns; ++c) {
        bool filled = false;
        for (const auto* row : fromList) filled = filled || (!row->isMissing(c) && row->number(c) != 0.0);
        if (!filled) continue;
        ++compared;
        for (size_t row = 0; row < fromList.size(); ++row) {
            if (fromList[row]->isMissing(c)) continue;
            ASSERT_FALSE(fromBinary[row]->isMissing(c)) << "row " << row << " column " << c;
            const double a = fromList[row]->number(c), b = fromBinary[row]->number(c);
            ASSERT_NEAR(a, b, 6e-5 + 3e-7 * std::fabs(a)) << "row " << row << " column " << c;
        }
    }
    EXPECT_GT(compared, 50);  // most variables, not a table of zeros
}

}  // namespace
