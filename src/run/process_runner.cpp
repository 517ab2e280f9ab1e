#include "run/process_runner.h"

#include "app/text_format.h"
#include "run/capped_text.h"
#include "run/child_process.h"
#include "run/command_line.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace sb {
namespace {

const char* const kTimeLimitMessage =
    "Process interrupted at user-defined time limit. See \"File\" | \"Configure\" | \"Run timeout, "
    "milliseconds\".\n";

void appendStartFailure(message_sink& errors, int code, const std::string& commandLine) {
    errors.errorf("Unable to create process, code=%d.\n%s\n", code, commandLine.c_str());
}

// Splits the command line and starts it (a Windows program through Wine);
// reports a failure as the model's process-start message with the errno of
// the failed step.
bool startProcess(child_process& child, const std::string& commandLine, const std::string& workingDirectory,
                  int outputFd, const wine_setup& wine, message_sink& errors) {
    std::vector<std::string> arguments, environment;
    int code = commandLine.empty() ? ENOENT : EINVAL;
    bool split = splitCommandLine(commandLine, arguments);
    if (split && isWindowsProgramName(arguments[0]) && !prepareWineLaunch(wine, arguments, environment, errors)) {
        errors.error(commandLine + "\n");
        return false;
    }
    if (split && child.start(arguments, workingDirectory, outputFd, code, environment)) return true;
    appendStartFailure(errors, code, commandLine);
    return false;
}

// A Windows program that did not end in time may be Wine itself hanging.
void explainWineTimeLimit(const std::string& commandLine, const wine_setup& wine, message_sink& errors) {
    std::vector<std::string> arguments;
    if (!splitCommandLine(commandLine, arguments) || !isWindowsProgramName(arguments[0])) return;
    errors.errorf(
        "The Windows program ran through Wine (\"%s\", prefix \"%s\"); Wine and the program were ended. "
        "Wine's first start in a new prefix can take a minute.\n",
        wine.command.c_str(), (wine.prefix.empty() ? defaultWinePrefix() : wine.prefix).c_str());
}

// The time limit, a cancel, and a crash each leave their own message and end.
bool reportWait(wait_result result, const child_process& child, run_state& end, message_sink& errors) {
    switch (result) {
        case wait_result::timedOut:
            errors.error(kTimeLimitMessage);
            end = run_state::timedOut;
            return false;
        case wait_result::cancelled:
            errors.error("Process Cancelled/Error\n");
            end = run_state::cancelled;
            return false;
        case wait_result::failed:
            errors.error("Process Cancelled/Error\n");
            end = run_state::failed;
            return false;
        case wait_result::finished:
            break;
    }
    if (int signal = child.endingSignal()) {
        errors.errorf("ERROR, process ended by signal %d (%s).\n", signal, strsignal(signal));
        end = run_state::crashed;
        return false;
    }
    return true;
}

std::string consolePath(const std::string& consoleFile, const std::string& workingDirectory) {
    if (consoleFile.empty() || consoleFile[0] == '/' || workingDirectory.empty()) return consoleFile;
    std::string path = workingDirectory;
    if (path.back() != '/') path += '/';
    return path + consoleFile;
}

// The console file lives only as long as this object, like a delete-on-close file.
class console_file {
public:
    explicit console_file(std::string path) : path_(std::move(path)) {
        fd_ = open(path_.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    }
    ~console_file() {
        if (fd_ < 0) return;
        close(fd_);
        unlink(path_.c_str());
    }
    console_file(const console_file&) = delete;
    console_file& operator=(const console_file&) = delete;
    int fd() const { return fd_; }

private:
    std::string path_;
    int fd_ = -1;
};

// A terminal program that stays until the command ends (xterm does; some
// desktop terminals hand the window to a server and return at once, so xterm
// is preferred). Empty when there is no display or no terminal.
std::string findTerminal() {
    const char* display = std::getenv("DISPLAY");
    if (!display || !*display) return "";
    for (const char* program : {"xterm", "x-terminal-emulator"})
        if (!findOnPath(program).empty()) return program;
    return "";
}

std::vector<std::string> terminalArguments(const std::string& terminal, const std::string& commandLine,
                                           const std::vector<std::string>& command) {
    std::vector<std::string> arguments = {"/usr/bin/env", terminal, "-T", commandLine};
    if (terminal == "xterm") {
        arguments.push_back("-geometry");
        arguments.push_back("80x24+25+25");
    }
    arguments.push_back("-e");
    arguments.insert(arguments.end(), command.begin(), command.end());
    return arguments;
}

}  // namespace

bool process_runner::readConsole(int fd, bool requireOutput, std::string& runLog, message_sink& errors,
                                 const console_limits& limits) {
    if (fd < 0) {
        errors.error("ERROR in read_console - output file handle is invalid.\n");
        return false;
    }
    // Read as a stream: the whole console is searched for "error", but only its
    // head and tail are kept, however much the model printed.
    capped_text text(limits.headBytes, limits.tailBytes);
    std::string piece, carry;  // carry: the last bytes before a piece, so a word across two is found
    piece.resize(64 * 1024);
    bool errorSeen = false;
    off_t offset = 0;
    int failures = 0;
    for (;;) {
        ssize_t got = pread(fd, piece.data(), piece.size(), offset);
        if (got > 0) {
            std::string_view read(piece.data(), static_cast<size_t>(got));
            errorSeen = errorSeen || (carry + std::string(read.substr(0, 4))).find("error") != std::string::npos ||
                        read.find("error") != std::string_view::npos;
            carry = std::string(read.substr(read.size() > 4 ? read.size() - 4 : 0));
            text.append(read);
            offset += got;
        } else if (got == 0) {
            break;
        } else if (errno != EINTR && ++failures > 3) {  // retried, but not for ever
            errors.error("ERROR in read_console - console file cannot be read.\n");
            return false;
        }
    }
    if (text.empty()) {
        if (!requireOutput) return true;
        errors.error("ERROR in read_console - console file is empty.\n");
        return false;
    }
    if (errorSeen) errors.error("ERROR, Tellura error detected.\n");
    std::string kept = text.text("the model's console output");
    std::string unixText;
    unixText.reserve(kept.size());
    for (size_t i = 0; i < kept.size(); ++i)
        if (!(kept[i] == '\r' && i + 1 < kept.size() && kept[i + 1] == '\n')) unixText += kept[i];
    runLog += unixText;
    return !errorSeen;
}

bool process_runner::runCaptured(const std::string& commandLine, const std::string& consoleFile,
                                 const std::string& workingDirectory, bool requireOutput, std::string& runLog,
                                 message_sink& errors) {
    console_file console(consolePath(consoleFile, workingDirectory));
    lastEnd_ = run_state::good;
    if (console.fd() < 0) {
        errors.error("Unable to create file handle.\n" + commandLine + "\n");
        return noteFailure();
    }
    child_process child;
    if (!startProcess(child, commandLine, workingDirectory, console.fd(), wine_, errors)) return noteFailure();
    wait_result result = child.wait(runTimeout_, cancel_);
    bool ok = reportWait(result, child, lastEnd_, errors);
    if (result == wait_result::timedOut) explainWineTimeLimit(commandLine, wine_, errors);
    if (result == wait_result::finished) runLog += commandLine + "\nProcess Finished\n";
    // Read also after a time-out or crash, so that what the model printed is kept.
    bool consoleOk = readConsole(console.fd(), requireOutput, runLog, errors);
    if (ok && !consoleOk) lastEnd_ = run_state::failed;
    return ok && consoleOk;
}

bool process_runner::runInConsole(const std::string& commandLine, const std::string& workingDirectory,
                                  message_sink& errors) {
    lastEnd_ = run_state::good;
    std::vector<std::string> command;
    std::string terminal = findTerminal();
    child_process child;
    bool started = false;
    // A terminal would swallow a failed start, so the program is checked first.
    if (!terminal.empty() && splitCommandLine(commandLine, command) && access(command[0].c_str(), X_OK) == 0) {
        int code = 0;
        started = child.start(terminalArguments(terminal, commandLine, command), workingDirectory, -1, code);
    }
    if (!started && !startProcess(child, commandLine, workingDirectory, -1, wine_, errors)) return noteFailure();
    return reportWait(child.wait(runTimeout_, cancel_), child, lastEnd_, errors);
}

}  // namespace sb
