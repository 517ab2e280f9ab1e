#pragma once
// One child process started without a shell, in a process group of its own,
// under a small watchdog process of ours:
//
//   soilbench ──lifeline pipe──> watchdog ──> program (own process group)
//
// The watchdog is the program's parent and a subreaper, so that everything the
// program starts stays below it even when it leaves the program's group. When
// the lifeline closes (we end the run, or this process dies in any way, kill -9
// included) the watchdog kills the program's group and every process below it,
// then ends. So no model outlives a run or the workbench that started it.
#include <cstdint>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace sb {

enum class wait_result { finished, timedOut, cancelled, failed };

class child_process {
public:
    child_process() = default;
    ~child_process();  // a child still running is ended with everything it started
    child_process(const child_process&) = delete;
    child_process& operator=(const child_process&) = delete;

    // outputFd >= 0: standard output and error go there and standard input is
    // /dev/null; outputFd < 0: all three are inherited (attached to our terminal).
    // `environment` ("NAME=value") is added to ours, replacing variables of the same name.
    // On failure returns false with the errno of the failed step in errorCode.
    bool start(const std::vector<std::string>& arguments, const std::string& workingDirectory, int outputFd,
               int& errorCode, const std::vector<std::string>& environment = {});
    // Waits at most timeoutMs; cancelRequested (may be empty) is polled meanwhile.
    // On a time-out or cancel everything the program started is ended before returning.
    wait_result wait(uint32_t timeoutMs, const std::function<bool()>& cancelRequested);
    // The signal that ended the program, 0 when it exited (or was ended by us).
    int endingSignal() const { return endingSignal_; }
    // The program's exit status when it exited by itself; -1 otherwise.
    int exitCode() const { return exitCode_; }
    // The program's process ID (its process group's too); -1 before a start.
    pid_t pid() const { return programPid_; }

private:
    enum class watchdog_end { none, programEnded, endedOnRequest, lost };
    void endEverything();
    // The watchdog's last report once it is there (at once, or waiting a while when `block`).
    watchdog_end collectWatchdog(bool block);

    pid_t watchdogPid_ = -1;
    pid_t programPid_ = -1;
    int lifeline_ = -1;  // our end: closing it tells the watchdog to end everything
    int report_ = -1;    // the watchdog's report: start result, then how the program ended
    bool running_ = false;
    int endingSignal_ = 0;
    int exitCode_ = -1;
};

}  // namespace sb
