#pragma once
// One child process started without a shell in a process group of its own, so
// that ending it ends every process it started too.
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
    ~child_process();  // a child still running is killed with its group
    child_process(const child_process&) = delete;
    child_process& operator=(const child_process&) = delete;

    // outputFd >= 0: standard output and error go there and standard input is
    // /dev/null; outputFd < 0: all three are inherited (attached to our terminal).
    // `environment` ("NAME=value") is added to ours, replacing variables of the same name.
    // On failure returns false with the errno of the failed step in errorCode.
    bool start(const std::vector<std::string>& arguments, const std::string& workingDirectory, int outputFd,
               int& errorCode, const std::vector<std::string>& environment = {});
    // Waits at most timeoutMs; cancelRequested (may be empty) is polled meanwhile.
    // On a time-out or cancel the whole group is killed before returning.
    wait_result wait(uint32_t timeoutMs, const std::function<bool()>& cancelRequested);
    // The signal that ended the child, 0 when it exited (or was killed by us).
    int endingSignal() const { return endingSignal_; }
    pid_t pid() const { return pid_; }

private:
    enum class reap_state { running, ended, waitFailed };
    void killGroupAndReap();
    reap_state reapIfEnded(bool block);

    pid_t pid_ = -1;
    bool running_ = false;
    int endingSignal_ = 0;
};

}  // namespace sb
