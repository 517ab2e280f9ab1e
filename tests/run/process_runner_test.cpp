// The model process runner against the stand-in model and its misbehaviours.
#include "run/model_process_runner.h"
#include "run/process_runner.h"
#include "run_controller_fixture.h"
#include "standin_fixture.h"

#include "app/text_format.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using sbtest::standin_mode;
using sbtest::standin_run_dir;

const char* const kTimeLimit =
    "Process interrupted at user-defined time limit. See \"File\" | \"Configure\" | \"Run timeout, "
    "milliseconds\".\n";

pid_t helperPid(const std::string& runLog) {
    const std::string marker = "helper process ";
    size_t at = runLog.rfind(marker);
    return at == std::string::npos ? -1 : std::atoi(runLog.c_str() + at + marker.size());
}

struct run_result {
    bool ok;
    std::string runLog, errors;
};

// The model run in the directory; `cancelAfterMs` >= 0 asks to cancel that long after the start.
run_result runModel(const standin_run_dir& dir, uint32_t timeoutMs, int version = 3, int cancelAfterMs = -1) {
    sb::process_runner runner(timeoutMs);
    const auto start = std::chrono::steady_clock::now();
    if (cancelAfterMs >= 0)
        runner.setCancelCheck(
            [=] { return std::chrono::steady_clock::now() - start > std::chrono::milliseconds(cancelAfterMs); });
    sb::model_process_runner model(runner);
    run_result result;
    result.ok = model.runModel(version, dir.model(), false, result.runLog, result.errors);
    return result;
}

TEST(ProcessRunner, NormalRunLogsCommandAndConsoleAndReplacesStaleBinary) {
    standin_run_dir dir;
    sbtest::writeFile(dir.file("sb.bin"), "stale output of an earlier run");
    run_result run = runModel(dir, 60000);
    EXPECT_TRUE(run.ok) << run.errors;
    EXPECT_EQ(run.errors, "");
    std::string command = "\"" + dir.model() + "\" -s sb -n sb";
    EXPECT_THAT(run.runLog, StartsWith(command + "\nProcess Finished\n"));
    EXPECT_THAT(run.runLog, HasSubstr("Execution success.\n"));
    EXPECT_FALSE(std::filesystem::exists(dir.file("Soilbench.con")));
    std::string binary = sbtest::readFile(dir.file("sb.bin"));
    ASSERT_FALSE(binary.empty());
    EXPECT_EQ(static_cast<unsigned char>(binary[0]), 75);
}

TEST(ProcessRunner, HelpersLeftBehindByAFinishedModelAreEnded) {
    sbtest::temp_dir dir;
    sb::process_runner runner(60000);
    std::string runLog, errors;
    EXPECT_TRUE(runner.runCaptured("\"/bin/sh\" -c \"sleep 30 & echo helper process $!\"", "Soilbench.con", dir.path(),
                                   true, runLog, errors));
    EXPECT_EQ(errors, "");
    pid_t helper = helperPid(runLog);
    ASSERT_GT(helper, 0) << runLog;
    EXPECT_TRUE(sbtest::processEnds(helper));
}

TEST(ProcessRunner, SilentList100DoesNotFail) {
    standin_run_dir dir;
    ASSERT_TRUE(runModel(dir, 60000).ok);
    sbtest::writeFile(dir.file("sb_outvars.txt"), "somsc\n");
    sbtest::writeFile(dir.file("sb.lis"), "stale list");
    standin_mode mode("silent");
    sb::process_runner runner(60000);
    std::string runLog, errors;
    EXPECT_TRUE(sb::model_process_runner(runner).runList100(3, dir.list100(), false, runLog, errors));
    EXPECT_EQ(errors, "");
    EXPECT_EQ(runLog, "\"" + dir.list100() + "\" sb sb sb_outvars.txt\nProcess Finished\n");
    // The stale list was deleted and a new one written from the model's binary file.
    EXPECT_THAT(sbtest::readFile(dir.file("sb.lis")), StartsWith("       time     somsc"));
}

TEST(ProcessRunner, LowerCaseErrorAnywhereFailsCapitalsAloneDoNot) {
    sbtest::temp_dir dir;
    sb::process_runner runner(60000);
    std::string runLog, errors;
    EXPECT_TRUE(runner.runCaptured("\"/bin/echo\" ERROR!  N balance boundary check exceeded.", "Soilbench.con",
                                   dir.path(), true, runLog, errors));
    EXPECT_EQ(errors, "");
    EXPECT_FALSE(
        runner.runCaptured("\"/bin/echo\" no errors occurred", "Soilbench.con", dir.path(), true, runLog, errors));
    EXPECT_EQ(errors, "ERROR, Tellura error detected.\n");
    EXPECT_THAT(runLog, HasSubstr("no errors occurred\n"));  // still logged
}

// Every way the model can end badly, with its message; a model ended (time
// limit, cancel) ends with its whole process group, and its console is still read.
TEST(ProcessRunner, EachMisbehaviourFailsTheRunWithItsMessage) {
    const struct misbehaviour {
        const char* mode;
        uint32_t timeoutMs;
        int cancelAfterMs;
        std::string errors, logged;
        bool outputs;  // the binary file is written all the same
    } cases[] = {
        {"hang", 700, -1, kTimeLimit, "helper process ", false},
        {"hang", 60000, 500, "Process Cancelled/Error\n", "helper process ", false},
        {"crash", 60000, -1, "ERROR, process ended by signal 11 (Segmentation fault).\n",
         "stand-in model: crash mode\n", false},
        {"crash=abort", 60000, -1, "ERROR, process ended by signal 6 (Aborted).\n", "", false},
        {"silent", 60000, -1, "ERROR in read_console - console file is empty.\n", "", true},
        {"error", 60000, -1, "ERROR, Tellura error detected.\n", "", true},
        {"slow=5", 0, -1, std::string(kTimeLimit) + "ERROR in read_console - console file is empty.\n", "", false},
    };
    for (const misbehaviour& c : cases) {
        SCOPED_TRACE(std::string(c.mode) + ", time limit " + std::to_string(c.timeoutMs));
        standin_run_dir dir;
        standin_mode mode(c.mode);
        run_result run = runModel(dir, c.timeoutMs, 3, c.cancelAfterMs);
        EXPECT_FALSE(run.ok);
        EXPECT_EQ(run.errors, c.errors);
        EXPECT_THAT(run.runLog, HasSubstr(c.logged));
        EXPECT_EQ(std::filesystem::exists(dir.file("sb.bin")), c.outputs);
        EXPECT_FALSE(std::filesystem::exists(dir.file("Soilbench.con")));
        if (c.logged == "helper process ") {
            EXPECT_TRUE(sbtest::processEnds(helperPid(run.runLog))) << run.runLog;
            EXPECT_THAT(run.runLog, Not(HasSubstr("Process Finished")));
        }
    }
}

TEST(ProcessRunner, StartFailuresGiveTheCodeAndTheCommandLine) {
    sbtest::temp_dir dir;
    sb::process_runner runner(60000);
    sb::model_process_runner model(runner);
    std::string runLog, errors;
    EXPECT_FALSE(model.runModel(2, dir.file("missing-model"), false, runLog, errors));
    EXPECT_EQ(errors, "Unable to create process, code=2.\n\"" + dir.file("missing-model") + "\" -s sb -n sb\n");

    sbtest::writeFile(dir.file("not-executable"), "#!/bin/sh\necho hello\n");
    chmod(dir.file("not-executable").c_str(), 0644);
    errors.clear();
    EXPECT_FALSE(model.runModel(1, dir.file("not-executable"), false, runLog, errors));
    EXPECT_EQ(errors, "Unable to create process, code=13.\n\"" + dir.file("not-executable") +
                          "\" -s sb -n sb.bin -W sbNew.100\n");

    // Release 6 has no list utility: no command line, and the start fails.
    errors.clear();
    EXPECT_FALSE(model.runList100(6, dir.file("list100"), false, runLog, errors));
    EXPECT_EQ(errors, "Unable to create process, code=2.\n\n");
    EXPECT_EQ(runLog, "");
    EXPECT_FALSE(std::filesystem::exists(dir.file("Soilbench.con")));
}

TEST(ProcessRunner, MissingRunDirectoryCannotHoldTheConsoleFile) {
    sb::process_runner runner(60000);
    std::string runLog, errors;
    EXPECT_FALSE(
        runner.runCaptured("\"/bin/echo\" hi", "Soilbench.con", "/nonexistent-run-dir/", true, runLog, errors));
    EXPECT_EQ(errors, "Unable to create file handle.\n\"/bin/echo\" hi\n");
}

TEST(ProcessRunner, RunDirectoryRemovedMidRunIsReportedNotFatal) {
    auto dir = std::make_unique<standin_run_dir>();
    std::string path = dir->path();
    standin_mode mode("slow=1");
    sb::process_runner runner(60000);
    auto start = std::chrono::steady_clock::now();
    runner.setCancelCheck([&] {
        if (dir && std::chrono::steady_clock::now() - start > std::chrono::milliseconds(300)) dir.reset();
        return false;
    });
    std::string runLog, errors;
    EXPECT_FALSE(runner.runCaptured("\"" + sbtest::standinPath() + "\" -s sb -n sb", "Soilbench.con", path, true,
                                    runLog, errors));
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(errors, "ERROR, Tellura error detected.\n");
    EXPECT_THAT(runLog, HasSubstr("stand-in model: error: cannot read sb.sch"));
}

TEST(ProcessRunner, HugeConsoleOutputKeepsItsHeadAndTailAndSaysWhatWasCut) {
    standin_run_dir dir;
    const size_t normalConsole = runModel(dir, 120000).runLog.size();
    standin_mode mode("huge");
    setenv("SB_STANDIN_HUGE_MB", "3", 1);
    run_result run = runModel(dir, 120000);
    unsetenv("SB_STANDIN_HUGE_MB");
    EXPECT_TRUE(run.ok) << run.errors;
    // 3 MiB of 55-byte lines (0 to 57195) before the normal console: the
    // first and the last lines are kept whole, the middle is cut and counted.
    const size_t printed = 57196 * 55 + normalConsole;
    EXPECT_LT(run.runLog.size(), 1100u * 1024);
    EXPECT_THAT(run.runLog, HasSubstr("stand-in model console line 000000000 of a huge output\n"));
    EXPECT_THAT(run.runLog, HasSubstr("\nstand-in model console line 000057195 of a huge output\n"));
    EXPECT_THAT(run.runLog, Not(HasSubstr("stand-in model console line 000028000")));
    EXPECT_EQ(run.runLog.substr(run.runLog.size() - 19), "Execution success.\n");
    std::smatch cut;
    const std::string text = run.runLog;
    ASSERT_TRUE(std::regex_search(text, cut,
                                  std::regex("\n\\[\\.\\.\\. ([0-9]+) bytes of the model's console output "
                                             "cut here \\.\\.\\.\\]\n")))
        << text.substr(0, 200);
    EXPECT_EQ(std::stoull(cut[1]) + text.size() - cut.length(0) + 1, printed);
}

TEST(ProcessRunner, ReadConsoleRules) {
    sbtest::temp_dir dir;
    std::string runLog, errors;
    EXPECT_FALSE(sb::process_runner::readConsole(-1, true, runLog, errors));
    EXPECT_EQ(errors, "ERROR in read_console - output file handle is invalid.\n");

    std::string lines;
    for (int i = 0; i < 37; ++i) lines += sb::strprintf("line %02d\n", i);
    std::string linesAfter;
    for (int i = 32; i < 37; ++i) linesAfter += sb::strprintf("line %02d\n", i);
    struct console_case {
        const char* what;
        std::string text;
        sb::console_limits limits;
        bool ok;
        std::string logged;
    };
    const std::string piece(64 * 1024 - 2, 'x');
    const console_case kCases[] = {
        {"CR LF pairs become LF, also across pieces; a lone CR stays",
         std::string(63, 'a') + "\r\n" + "b\rc\r\n",
         {},
         true,
         std::string(63, 'a') + "\n" + "b\rc\n"},
        {"the middle of a long console is cut at line ends",
         lines,
         {40, 40},
         true,
         lines.substr(0, 40) + "[... 216 bytes of the model's console output cut here ...]\n" + linesAfter},
        {"an error in the cut middle still fails the run",
         lines.substr(0, 100) + "an error\n" + lines.substr(100),
         {40, 40},
         false,
         lines.substr(0, 40) + "[... 225 bytes of the model's console output cut here ...]\n" + linesAfter},
        {"an error across two pieces of reading", piece + "error\n", {}, false, piece + "error\n"},
    };
    for (const console_case& c : kCases) {
        SCOPED_TRACE(c.what);
        sbtest::writeFile(dir.file("con"), c.text);
        int fd = open(dir.file("con").c_str(), O_RDONLY);
        runLog = "before\n";
        errors.clear();
        EXPECT_EQ(sb::process_runner::readConsole(fd, true, runLog, errors, c.limits), c.ok);
        EXPECT_EQ(errors, c.ok ? "" : "ERROR, Tellura error detected.\n");
        EXPECT_EQ(runLog, "before\n" + c.logged);
        close(fd);
    }

    sbtest::writeFile(dir.file("empty"), "");
    int fd = open(dir.file("empty").c_str(), O_RDONLY);
    runLog.clear();
    errors.clear();
    EXPECT_TRUE(sb::process_runner::readConsole(fd, false, runLog, errors));
    EXPECT_EQ(errors, "");
    EXPECT_FALSE(sb::process_runner::readConsole(fd, true, runLog, errors));
    EXPECT_EQ(errors, "ERROR in read_console - console file is empty.\n");
    close(fd);
}

TEST(ProcessRunner, ConsoleRunWithoutDisplayIsAttachedAndTimed) {
    const char* display = std::getenv("DISPLAY");
    std::string saved = display ? display : "";
    unsetenv("DISPLAY");
    sbtest::temp_dir dir;
    sb::process_runner runner(60000);
    std::string errors;
    EXPECT_TRUE(runner.runInConsole("\"/bin/true\"", dir.path(), errors));
    EXPECT_EQ(errors, "");
    runner.setRunTimeout(200);
    EXPECT_FALSE(runner.runInConsole("\"/bin/sleep\" 10", dir.path(), errors));
    EXPECT_EQ(errors, kTimeLimit);
    errors.clear();
    EXPECT_FALSE(runner.runInConsole("\"/nonexistent/model\" -s sb -n sb.bin", dir.path(), errors));
    EXPECT_EQ(errors, "Unable to create process, code=2.\n\"/nonexistent/model\" -s sb -n sb.bin\n");
    if (display) setenv("DISPLAY", saved.c_str(), 1);
}

// A display and a terminal program: the model runs inside the terminal,
// titled with its command line and placed at 25, 25.
TEST(ProcessRunner, ConsoleRunUsesATerminalWhenThereIsADisplay) {
    sbtest::temp_dir dir;
    sbtest::writeFile(dir.file("xterm"),
                      "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$(dirname \"$0\")/xterm-arguments\"\n"
                      "while [ \"$1\" != -e ]; do shift; done\nshift\nexec \"$@\"\n");
    chmod(dir.file("xterm").c_str(), 0755);
    std::string savedPath = std::getenv("PATH") ? std::getenv("PATH") : "";
    const char* display = std::getenv("DISPLAY");
    std::string savedDisplay = display ? display : "";
    setenv("PATH", (dir.path() + ":" + savedPath).c_str(), 1);
    setenv("DISPLAY", ":99", 1);

    sb::process_runner runner(60000);
    std::string errors;
    bool ok = runner.runInConsole("\"/bin/sh\" -c \"echo ran > ran.txt\"", dir.path(), errors);
    std::string missingErrors;
    bool missing = runner.runInConsole("\"/nonexistent/model\" -s sb", dir.path(), missingErrors);

    setenv("PATH", savedPath.c_str(), 1);
    if (display) setenv("DISPLAY", savedDisplay.c_str(), 1);
    else unsetenv("DISPLAY");
    EXPECT_TRUE(ok) << errors;
    EXPECT_EQ(sbtest::readFile(dir.file("ran.txt")), "ran\n");
    EXPECT_EQ(
        sbtest::readFile(dir.file("xterm-arguments")),
        "-T\n\"/bin/sh\" -c \"echo ran > ran.txt\"\n-geometry\n80x24+25+25\n-e\n/bin/sh\n-c\necho ran > ran.txt\n");
    // A program that cannot start is reported, not hidden inside a terminal.
    EXPECT_FALSE(missing);
    EXPECT_EQ(missingErrors, "Unable to create process, code=2.\n\"/nonexistent/model\" -s sb\n");
}

}  // namespace
