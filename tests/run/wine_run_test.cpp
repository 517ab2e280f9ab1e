// Windows builds of the model run through Wine: what is refused before a
// start, and Wine hanging ended at the time limit.
#include "run/process_runner.h"
#include "run_controller_fixture.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using sbtest::writeFile;

std::string makeExecutable(const std::string& path, const std::string& content) {
    writeFile(path, content);
    fs::permissions(path, fs::perms::owner_all);
    return path;
}

TEST(WineLaunch, WhatCannotRunFailsWithAMessageNamingTheProgram) {
    sbtest::temp_dir dir;
    std::string elf = makeExecutable(dir.file("tellx.exe"),
                                     "\x7f"
                                     "ELF not a Windows program");
    std::string windows = makeExecutable(dir.file("dd.exe"), "MZ\x90");
    struct refusal {
        std::string program, wineCommand, message;
    } cases[] = {
        {elf, "wine",
         "ERROR, \"" + elf + "\" ends in \".exe\" but is not a Windows program (it does not start with \"MZ\").\n"},
        {windows, "no-such-wine-program",
         "ERROR, \"" + windows +
             "\" is a Windows program: it runs through Wine, and Wine (\"no-such-wine-program\") was not found. To "
             "install it on Debian: for a 64-bit build, apt install wine64; for a 32-bit build, dpkg "
             "--add-architecture i386 && apt update && apt install wine32. The Wine command is the setting "
             "Files/WineCommand.\n"},
    };
    for (const refusal& test : cases) {
        sb::process_runner runner(10000);
        runner.setWine({test.wineCommand, dir.file("prefix")});
        std::string commandLine = "\"" + test.program + "\" -s sb -n sb", runLog;
        sb::message_sink errors;
        EXPECT_FALSE(runner.runCaptured(commandLine, "console.txt", dir.path(), true, runLog, errors));
        EXPECT_EQ(errors, test.message + commandLine + "\n");
        EXPECT_EQ(runLog, "");
    }
}

// Wine itself hanging (here a stand-in for it that never ends) is ended at the
// time limit, with the message saying it ran through Wine.
TEST(WineLaunch, HangingWineIsEndedAtTheTimeLimit) {
    sbtest::temp_dir dir;
    std::string wine = makeExecutable(dir.file("hanging-wine"), "#!/bin/sh\nsleep 30 &\nexec sleep 30\n");
    std::string model = makeExecutable(dir.file("DD.EXE"), "MZ");
    sb::process_runner runner(300);
    runner.setWine({wine, dir.file("prefix")});
    std::string commandLine = "\"" + model + "\" -s sb -n sb", runLog;
    sb::message_sink errors;
    EXPECT_FALSE(runner.runCaptured(commandLine, "sb.con", dir.path(), true, runLog, errors));
    EXPECT_EQ(errors,
              "Process interrupted at user-defined time limit. See \"File\" | \"Configure\" | \"Run timeout, "
              "milliseconds\".\nThe Windows program ran through Wine (\"" +
                  wine + "\", prefix \"" + dir.file("prefix") +
                  "\"); Wine and the program were ended. Wine's first start in a new prefix can take a minute.\n"
                  "ERROR in read_console - console file is empty.\n");
}

}  // namespace
