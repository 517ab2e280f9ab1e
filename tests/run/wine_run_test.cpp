// Windows builds of the model run through Wine: what is refused before a
// start, how Wine is started (checked with a stand-in for Wine that reports
// what it was given), and the Windows build of the stand-in model run through
// the run controller under the real Wine.
#include "run/process_runner.h"
#include "run/run_controller.h"
#include "run/wine_launch.h"
#include "run_controller_fixture.h"

#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <filesystem>
#include <thread>

namespace {

namespace fs = std::filesystem;
using sbtest::readFile;
using sbtest::writeFile;

std::string makeExecutable(const std::string& path, const std::string& content) {
    writeFile(path, content);
    fs::permissions(path, fs::perms::owner_all);
    return path;
}

TEST(WineLaunch, OnlyNamesEndingInExeAreWindowsPrograms) {
    const std::pair<const char*, bool> cases[] = {{"/opt/m/tellx.exe", true}, {"LIST100.EXE", true},   {"dd.Exe", true},
                                                  {"/opt/m/tellx", false},    {"tellx.exe.sh", false}, {"exe", false}};
    for (const auto& [name, windows] : cases) EXPECT_EQ(sb::isWindowsProgramName(name), windows) << name;
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
        std::string commandLine = "\"" + test.program + "\" -s sb -n sb", runLog, errors;
        EXPECT_FALSE(runner.runCaptured(commandLine, "console.txt", dir.path(), true, runLog, errors));
        EXPECT_EQ(errors, test.message + commandLine + "\n");
        EXPECT_EQ(runLog, "");
    }
}

// A stand-in for Wine that prints what it was started with.
TEST(WineLaunch, StartsWineWithTheProgramItsPrefixQuietDebugOutputAndNoInput) {
    sbtest::temp_dir dir;
    std::string wine = makeExecutable(dir.file("fake-wine"),
                                      "#!/bin/sh\necho \"args: $*\"\necho \"prefix: $WINEPREFIX\"\n"
                                      "echo \"debug: $WINEDEBUG\"\nif read line; then echo \"input: $line\"; "
                                      "else echo \"input: none\"; fi\n");
    fs::create_directories(dir.file("model"));
    fs::create_directories(dir.file("run"));
    std::string model = makeExecutable(dir.file("model/DD.EXE"), "MZ");
    const std::string path = std::getenv("PATH");
    setenv("PATH", (dir.path() + ":" + path).c_str(), 1);  // "fake-wine" is found on PATH
    const std::string commands[] = {wine, "fake-wine"};
    for (const std::string& command : commands) {
        SCOPED_TRACE(command);
        std::string prefix = dir.file("prefix of " + std::to_string(&command - commands));
        sb::process_runner runner(10000);
        runner.setWine({command, prefix});
        std::string commandLine = "\"" + model + "\" -s sb -n sb", runLog, errors;
        ASSERT_TRUE(runner.runCaptured(commandLine, "sb.con", dir.file("run"), true, runLog, errors)) << errors;
        EXPECT_EQ(runLog, commandLine + "\nProcess Finished\nargs: " + model + " -s sb -n sb\nprefix: " + prefix +
                              "\ndebug: -all\ninput: none\n");
        EXPECT_TRUE(fs::is_directory(prefix));
    }
    setenv("PATH", path.c_str(), 1);
}

// Wine itself hanging (here a stand-in for it that never ends) is ended at the
// time limit, with the message saying it ran through Wine.
TEST(WineLaunch, HangingWineIsEndedAtTheTimeLimit) {
    sbtest::temp_dir dir;
    std::string wine = makeExecutable(dir.file("hanging-wine"), "#!/bin/sh\nsleep 30 &\nexec sleep 30\n");
    std::string model = makeExecutable(dir.file("DD.EXE"), "MZ");
    sb::process_runner runner(300);
    runner.setWine({wine, dir.file("prefix")});
    std::string commandLine = "\"" + model + "\" -s sb -n sb", runLog, errors;
    EXPECT_FALSE(runner.runCaptured(commandLine, "sb.con", dir.path(), true, runLog, errors));
    EXPECT_EQ(errors,
              "Process interrupted at user-defined time limit. See \"File\" | \"Configure\" | \"Run timeout, "
              "milliseconds\".\nThe Windows program ran through Wine (\"" +
                  wine + "\", prefix \"" + dir.file("prefix") +
                  "\"); Wine and the program were ended. Wine's first start in a new prefix can take a minute.\n"
                  "ERROR in read_console - console file is empty.\n");
}

// --- The Windows build of the stand-in under the real Wine -----------------------

bool haveWindowsStandin(std::string& reason) {
    if (!fs::exists(SB_WINDOWS_STANDIN))
        reason =
            "the Windows build of the stand-in was not built (no mingw-w64 cross compiler, package "
            "g++-mingw-w64-x86-64)";
    else if (sb::resolveWineProgram("wine").empty()) reason = "Wine is not installed (packages wine and wine64)";
    return reason.empty();
}

#define SB_REQUIRE_WINDOWS_STANDIN()                             \
    do {                                                         \
        std::string reason;                                      \
        if (!haveWindowsStandin(reason)) GTEST_SKIP() << reason; \
    } while (0)

// The Wine tests share one prefix: the first to start makes it, alone.
class wine_prefix_lock {
public:
    wine_prefix_lock() : fd_(open(SB_WINE_TEST_PREFIX ".lock", O_CREAT | O_RDWR, 0644)) { flock(fd_, LOCK_EX); }
    ~wine_prefix_lock() { close(fd_); }

private:
    int fd_;
};

// The model and the list utility configured as Windows paths ("z:\...\x.exe").
void useWindowsStandin(sbtest::run_project& project) {
    auto configure = [&](const char* name) {
        std::string copy = project.modelFolder() + "/" + name;
        fs::copy_file(SB_WINDOWS_STANDIN, copy, fs::copy_options::overwrite_existing);
        std::string windowsPath = "z:" + copy;
        std::replace(windowsPath.begin(), windowsPath.end(), '/', '\\');
        return windowsPath;
    };
    project.settings().modelExecutables[3] = configure("tellura-standin.exe");
    project.settings().list100Executables[3] = configure("list100-standin.exe");
    project.settings().winePrefix = SB_WINE_TEST_PREFIX;  // made once for the build tree
    project.settings().runTimeout = 240000;               // a new prefix takes a while
}

TEST(WindowsStandin, RunsThroughWineAndStoresWhatTheLinuxBuildStores) {
    SB_REQUIRE_WINDOWS_STANDIN();
    wine_prefix_lock lock;
    sbtest::run_project native(1, 10), windows(1, 10);
    useWindowsStandin(windows);
    for (sbtest::run_project* project : {&native, &windows}) {
        sb::run_controller controller(project->db(), project->settings());
        std::string runLog, errors;
        ASSERT_TRUE(controller.runOneRecord(1, {}, runLog, errors)) << errors << runLog;
        EXPECT_EQ(errors, "108 records read, from years 1990 to 1998.\n");
        EXPECT_THAT(runLog, HasSubstr("Execution success.\n"));
    }
    EXPECT_EQ(windows.storedOutputRows(1), 108);
    EXPECT_EQ(windows.storedOutputs(), native.storedOutputs());
}

// Processes whose command line names this path, other than ourselves.
int processesNaming(const std::string& path) {
    int count = 0;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        std::string name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos || name == std::to_string(getpid())) continue;
        std::string commandLine = readFile(entry.path().string() + "/cmdline");
        if (commandLine.find(path) != std::string::npos) ++count;
    }
    return count;
}

TEST(WindowsStandin, TimeLimitEndsTheWindowsProgram) {
    SB_REQUIRE_WINDOWS_STANDIN();
    wine_prefix_lock lock;
    sbtest::run_project project(1, 10);
    useWindowsStandin(project);
    project.settings().runTimeout = 8000;
    sbtest::standin_mode hang("hang");
    sb::run_controller controller(project.db(), project.settings());
    std::string runLog, errors;
    EXPECT_FALSE(controller.runOneRecord(1, {}, runLog, errors));
    EXPECT_THAT(errors, HasSubstr("Process interrupted at user-defined time limit."));
    EXPECT_THAT(errors, HasSubstr("The Windows program ran through Wine (\"wine\", prefix \"" SB_WINE_TEST_PREFIX
                                  "\"); Wine and the program were ended."));
    EXPECT_EQ(project.storedOutputRows(1), 0);
    // Nothing of the run goes on: the program was in the process group that was killed.
    EXPECT_TRUE(sbtest::within(2, [&] { return processesNaming(project.modelFolder()) == 0; }));
}

}  // namespace
