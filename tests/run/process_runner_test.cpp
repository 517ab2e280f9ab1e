// The model process runner: starting, its console read and cut, and terminals.
#include "run/model_process_runner.h"
#include "run/process_runner.h"
#include "run_controller_fixture.h"
#include "standin_fixture.h"

#include "app/text_format.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <regex>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using sbtest::standin_mode;
using sbtest::standin_run_dir;

struct run_result {
    bool ok;
    std::string runLog;
    sb::message_sink errors;
};

run_result runModel(const standin_run_dir& dir, uint32_t timeoutMs) {
    sb::process_runner runner(timeoutMs);
    sb::model_process_runner model(runner);
    run_result result;
    result.ok = model.runModel(3, dir.model(), false, result.runLog, result.errors);
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

TEST(ProcessRunner, StartFailuresGiveTheReasonAndTheCommandLine) {
    sbtest::temp_dir dir;
    sbtest::writeFile(dir.file("not-executable"), "#!/bin/sh\necho hello\n");
    chmod(dir.file("not-executable").c_str(), 0644);
    const std::string notExecutable = "\"" + dir.file("not-executable") + "\" -s sb -n sb";
    const struct {
        std::string command, folder, errors;
    } cases[] = {
        {"\"/bin/echo\" hi", "/nonexistent-run-dir/", "Unable to create file handle.\n\"/bin/echo\" hi\n"},
        {notExecutable, dir.path(), "Unable to create process, code=13.\n" + notExecutable + "\n"},
    };
    for (const auto& c : cases) {
        sb::process_runner runner(60000);
        std::string runLog;
        sb::message_sink errors;
        EXPECT_FALSE(runner.runCaptured(c.command, "Soilbench.con", c.folder, true, runLog, errors));
        EXPECT_EQ(errors.text(), c.errors);
    }
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
    std::string runLog;
    sb::message_sink errors;
    EXPECT_FALSE(sb::process_runner::readConsole(-1, true, runLog, errors));
    EXPECT_EQ(errors.text(), "ERROR in read_console - output file handle is invalid.\n");

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
        {"capitals alone do not fail the run",
         "ERROR!  N balance check exceeded.\n",
         {},
         true,
         "ERROR!  N balance check exceeded.\n"},
    };
    for (const console_case& c : kCases) {
        SCOPED_TRACE(c.what);
        sbtest::writeFile(dir.file("con"), c.text);
        int fd = open(dir.file("con").c_str(), O_RDONLY);
        runLog = "before\n";
        errors.clear();
        EXPECT_EQ(sb::process_runner::readConsole(fd, true, runLog, errors, c.limits), c.ok);
        EXPECT_EQ(errors.text(), c.ok ? "" : "ERROR, Tellura error detected.\n");
        EXPECT_EQ(runLog, "before\n" + c.logged);
        close(fd);
    }

    sbtest::writeFile(dir.file("empty"), "");
    int fd = open(dir.file("empty").c_str(), O_RDONLY);
    runLog.clear();
    errors.clear();
    EXPECT_TRUE(sb::process_runner::readConsole(fd, false, runLog, errors));
    EXPECT_EQ(errors.text(), "");
    EXPECT_FALSE(sb::process_runner::readConsole(fd, true, runLog, errors));
    EXPECT_EQ(errors.text(), "ERROR in read_console - console file is empty.\n");
    close(fd);
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
    sb::message_sink errors;
    bool ok = runner.runInConsole("\"/bin/sh\" -c \"echo ran > ran.txt\"", dir.path(), errors);
    sb::message_sink missingErrors;
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
