// Runs of every release through the stand-in, reading its binary file: the
// releases with a shipped layout store their outputs, the others fail saying
// how to add a layout.
#include "run_controller_fixture.h"

#include <filesystem>

#include "modeloutput/binary_layout.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/tellura_output.h"
#include "run/run_controller.h"

namespace {

using namespace sbtest;

struct release_run {
    bool ok = false;
    sb::message_sink errors;
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
    sb::message_sink readErrors;
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
        EXPECT_EQ(run.errors.text().find(expected) != std::string::npos, !c.shipped) << "release " << c.version << "\n"
                                                                                     << run.errors;
        EXPECT_EQ(run.stored.monthlyCount(), c.shipped ? 24u : 0u) << "release " << c.version;
    }
}

}  // namespace
