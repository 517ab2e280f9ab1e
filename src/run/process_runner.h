#pragma once
// Runs one external program (the model or its list utility) under the run
// time limit: hidden with its output captured in a console file, or visible
// in a terminal. The caller's run log and error text are only appended to.
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "app/message_sink.h"
#include "run/run_state.h"
#include "run/wine_launch.h"

namespace sb {

// How much of a model's console output the run log keeps: its first and last
// bytes, with a line saying how much was cut between them.
struct console_limits {
    size_t headBytes = 512 * 1024;
    size_t tailBytes = 512 * 1024;
};

class process_runner {
public:
    explicit process_runner(uint32_t runTimeoutMs = 250000) : runTimeout_(runTimeoutMs) {}

    void setRunTimeout(uint32_t milliseconds) { runTimeout_ = milliseconds; }
    uint32_t runTimeout() const { return runTimeout_; }
    // Asked every few milliseconds while a process runs; when it returns true
    // the process and everything it started are ended ("Process Cancelled/Error").
    void setCancelCheck(std::function<bool()> cancelRequested) { cancel_ = std::move(cancelRequested); }
    // How programs whose name ends in ".exe" are run through Wine.
    void setWine(wine_setup wine) { wine_ = std::move(wine); }

    // Starts the command line with standard output and error going to the console
    // file (relative to the working directory unless absolute), waits, reads the
    // console back into the run log, deletes it.
    bool runCaptured(const std::string& commandLine, const std::string& consoleFile,
                     const std::string& workingDirectory, bool requireOutput, std::string& runLog,
                     message_sink& errors);
    // Starts the command line in a terminal window of its own when a display and
    // a terminal program are found, otherwise attached to our own terminal; waits.
    bool runInConsole(const std::string& commandLine, const std::string& workingDirectory, message_sink& errors);
    // Reads the console file from its start. Lower-case "error" anywhere in it
    // fails the run; CR LF become LF in the run log, which keeps its head and
    // tail within the limits.
    static bool readConsole(int fd, bool requireOutput, std::string& runLog, message_sink& errors,
                            const console_limits& limits = {});

    // How the last runCaptured or runInConsole ended: good, failed (it could not
    // start, or its console failed it), cancelled, timed out or crashed.
    run_state lastEnd() const { return lastEnd_; }

private:
    bool noteFailure() {
        lastEnd_ = run_state::failed;
        return false;
    }

    uint32_t runTimeout_;
    std::function<bool()> cancel_;
    wine_setup wine_;
    run_state lastEnd_ = run_state::good;
};

}  // namespace sb
