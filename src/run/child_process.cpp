#include "run/child_process.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

extern char** environ;

namespace sb {
namespace {

// While a cancel hook is set the wait wakes up this often to ask it.
constexpr int kCancelPollMs = 20;
// How long the watchdog may take to end everything before we kill it too.
constexpr int kEndGraceMs = 10000;

// What the watchdog reports, each as one write (atomic on a pipe).
struct watchdog_message {
    int32_t code = 0;   // start: errno of the failed step, 0 when the program runs;
                        // end: kProgramEnded or kEndedOnRequest
    int32_t value = 0;  // start: the program's process ID; end: its wait status
};
constexpr int32_t kProgramEnded = 1;
constexpr int32_t kEndedOnRequest = 2;

// Relative program paths are taken from our current directory, not from the
// child's working directory (which the child enters before its program starts).
std::string absoluteProgram(const std::string& program) {
    if (!program.empty() && program[0] == '/') return program;
    char buffer[4096];
    if (!getcwd(buffer, sizeof buffer)) return program;
    return std::string(buffer) + "/" + program;
}

// Our environment with `changes` ("NAME=value") put in.
std::vector<std::string> childEnvironment(const std::vector<std::string>& changes) {
    std::vector<std::string> result;
    auto nameOf = [](const std::string& entry) { return entry.substr(0, entry.find('=')); };
    for (char** entry = environ; entry && *entry; ++entry) {
        std::string text = *entry;
        bool replaced = false;
        for (const std::string& change : changes) replaced = replaced || nameOf(change) == nameOf(text);
        if (!replaced) result.push_back(std::move(text));
    }
    result.insert(result.end(), changes.begin(), changes.end());
    return result;
}

// Everything the watchdog and the program need, made before the fork: after
// it, in the child of a process with many threads, only async-signal-safe
// calls are allowed (no allocation, no locks).
struct launch_plan {
    const char* program = nullptr;
    char* const* argv = nullptr;
    char* const* envp = nullptr;
    const char* workingDirectory = nullptr;  // null: ours
    int outputFd = -1;
    int lifeline = -1;  // the watchdog's end
    int report = -1;    // the watchdog's end
};

// --- In the watchdog and the program: async-signal-safe code only ------------

volatile sig_atomic_t endSignalled = 0;
void onEndSignal(int) { endSignalled = 1; }

bool writeMessage(int fd, int32_t code, int32_t value) {
    watchdog_message message{code, value};
    ssize_t written;
    do { written = write(fd, &message, sizeof message); } while (written < 0 && errno == EINTR);
    return written == static_cast<ssize_t>(sizeof message);
}

void setDisposition(int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

// The program starts with default signal handling and nothing blocked, whatever ours are.
void defaultSignals() {
    for (int signal = 1; signal < NSIG; ++signal) setDisposition(signal, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

// The watchdog is not the terminal's to interrupt (it sits in a group of its
// own anyway); a plain kill asks it to end everything, like a closed lifeline.
void watchdogSignals() {
    defaultSignals();
    for (int signal : {SIGINT, SIGQUIT, SIGHUP, SIGPIPE, SIGTSTP, SIGTTIN, SIGTTOU}) setDisposition(signal, SIG_IGN);
    setDisposition(SIGTERM, onEndSignal);
}

// Closes every descriptor from 3 up but the ones in `keep` (ascending, -1s first):
// the watchdog must not hold another run's lifeline open.
void closeAllBut(int keep0, int keep1, int keep2) {
    int keep[3] = {keep0, keep1, keep2};
    for (int i = 0; i < 3; ++i)  // sorted by hand: nothing that might allocate
        for (int j = i + 1; j < 3; ++j)
            if (keep[j] < keep[i]) {
                int swap = keep[i];
                keep[i] = keep[j];
                keep[j] = swap;
            }
    unsigned from = 3;
    for (int fd : keep) {
        if (fd < static_cast<int>(from)) continue;
        if (static_cast<unsigned>(fd) > from) close_range(from, static_cast<unsigned>(fd) - 1, 0);
        from = static_cast<unsigned>(fd) + 1;
    }
    if (close_range(from, ~0U, 0) == 0) return;
    rlimit limit{};
    unsigned last = getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < 65536 ? limit.rlim_cur : 65536;
    for (unsigned fd = from; fd < last; ++fd) close(static_cast<int>(fd));
}

void sleepMs(long ms) {
    timespec pause{0, ms * 1000000L};
    while (nanosleep(&pause, &pause) < 0 && errno == EINTR) {}
}

// Sends SIGKILL to every child of ours; true when there was any. As a
// subreaper we are the parent of whatever the program left orphaned.
bool killChildren(const char* childrenFile) {
    int fd = open(childrenFile, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    char buffer[4096];
    bool any = false;
    long pid = 0;
    bool inNumber = false;
    for (;;) {
        ssize_t got = read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        for (ssize_t i = 0; i < got; ++i) {
            if (buffer[i] >= '0' && buffer[i] <= '9') {
                pid = pid * 10 + (buffer[i] - '0');
                inNumber = true;
            } else if (inNumber) {
                kill(static_cast<pid_t>(pid), SIGKILL);
                any = true;
                pid = 0;
                inNumber = false;
            }
        }
    }
    if (inNumber) {
        kill(static_cast<pid_t>(pid), SIGKILL);
        any = true;
    }
    close(fd);
    return any;
}

// "/proc/self/task/<pid>/children" without the allocating formatters.
void childrenFileName(char* out, size_t size) {
    const char prefix[] = "/proc/self/task/";
    const char suffix[] = "/children";
    char digits[16];
    int count = 0;
    for (long pid = getpid(); pid > 0 && count < 15; pid /= 10) digits[count++] = static_cast<char>('0' + pid % 10);
    size_t at = 0;
    for (const char* p = prefix; *p && at + 1 < size; ++p) out[at++] = *p;
    while (count > 0 && at + 1 < size) out[at++] = digits[--count];
    for (const char* p = suffix; *p && at + 1 < size; ++p) out[at++] = *p;
    out[at] = '\0';
}

// Ends the program's group and then, round by round, everything below us:
// a killed process's own children come to us and are killed in the next round.
void endEverythingBelow(pid_t program) {
    kill(-program, SIGKILL);
    char childrenFile[64];
    childrenFileName(childrenFile, sizeof childrenFile);
    for (int round = 0; round < 500; ++round) {
        bool any = killChildren(childrenFile);
        int status;
        while (waitpid(-1, &status, WNOHANG) > 0) {}
        if (!any) {
            if (waitpid(-1, &status, WNOHANG) < 0 && errno == ECHILD) return;
        }
        sleepMs(10);
    }
}

[[noreturn]] void programMain(const launch_plan& plan, int execReport) {
    setpgid(0, 0);
    defaultSignals();
    if (plan.outputFd >= 0) {
        int devNull = open("/dev/null", O_RDONLY);
        if (devNull >= 0 && devNull != 0) {
            dup2(devNull, 0);
            close(devNull);
        }
        dup2(plan.outputFd, 1);
        dup2(plan.outputFd, 2);
    }
    int error = 0;
    if (plan.workingDirectory && chdir(plan.workingDirectory) != 0) error = errno;
    if (error == 0) {
        execve(plan.program, plan.argv, plan.envp);
        error = errno;
    }
    ssize_t ignored = write(execReport, &error, sizeof error);
    (void)ignored;
    _exit(127);
}

// Waits until the program ends (reported with its status) or the lifeline
// closes or a SIGTERM comes (everything below ends first).
[[noreturn]] void watchdogLoop(const launch_plan& plan, pid_t program) {
    const int programFd = static_cast<int>(syscall(SYS_pidfd_open, program, 0));
    for (;;) {
        int status = 0;
        pid_t done = waitpid(program, &status, WNOHANG);
        if (done == program) {
            kill(-program, SIGKILL);  // helpers the program left in its group must not outlive the run
            writeMessage(plan.report, kProgramEnded, status);
            _exit(0);
        }
        if (endSignalled) break;
        pollfd ready[2] = {{plan.lifeline, POLLIN, 0}, {programFd, POLLIN, 0}};
        int count = poll(ready, programFd >= 0 ? 2 : 1, programFd >= 0 ? -1 : 20);
        if (count > 0 && ready[0].revents != 0) break;  // our end closed: we ended the run or died
    }
    endEverythingBelow(program);
    writeMessage(plan.report, kEndedOnRequest, 0);
    _exit(0);
}

[[noreturn]] void watchdogMain(const launch_plan& plan) {
    setpgid(0, 0);
    watchdogSignals();
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    closeAllBut(plan.lifeline, plan.report, plan.outputFd);
    int execReport[2];
    if (pipe2(execReport, O_CLOEXEC) != 0) {
        writeMessage(plan.report, errno, -1);
        _exit(0);
    }
    pid_t program = _Fork();
    if (program == 0) {
        close(execReport[0]);
        programMain(plan, execReport[1]);
    }
    int forkError = errno;
    close(execReport[1]);
    if (program < 0) {
        writeMessage(plan.report, forkError, -1);
        _exit(0);
    }
    setpgid(program, program);
    int execError = 0;
    ssize_t got;
    do { got = read(execReport[0], &execError, sizeof execError); } while (got < 0 && errno == EINTR);
    close(execReport[0]);
    if (got == static_cast<ssize_t>(sizeof execError)) {
        int status;
        waitpid(program, &status, 0);
        writeMessage(plan.report, execError, program);
        _exit(0);
    }
    writeMessage(plan.report, 0, program);
    watchdogLoop(plan, program);
}

// --- Back in this process ------------------------------------------------------

bool readMessage(int fd, watchdog_message& message) {
    ssize_t got;
    do { got = read(fd, &message, sizeof message); } while (got < 0 && errno == EINTR);
    return got == static_cast<ssize_t>(sizeof message);
}

bool readable(int fd, int timeoutMs) {
    pollfd ready{fd, POLLIN, 0};
    int count;
    do { count = poll(&ready, 1, timeoutMs); } while (count < 0 && errno == EINTR);
    return count > 0;
}

void closeFd(int& fd) {
    if (fd >= 0) close(fd);
    fd = -1;
}

void reap(pid_t pid) {
    int status;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {}
}

}  // namespace

child_process::~child_process() {
    if (running_) endEverything();
    closeFd(lifeline_);
    closeFd(report_);
}

bool child_process::start(const std::vector<std::string>& arguments, const std::string& workingDirectory, int outputFd,
                          int& errorCode, const std::vector<std::string>& environment) {
    if (arguments.empty()) {
        errorCode = ENOENT;
        return false;
    }
    std::string program = absoluteProgram(arguments[0]);
    std::vector<char*> argv;
    argv.push_back(program.data());
    for (size_t i = 1; i < arguments.size(); ++i) argv.push_back(const_cast<char*>(arguments[i].c_str()));
    argv.push_back(nullptr);
    std::vector<std::string> variables = childEnvironment(environment);
    std::vector<char*> envp;
    for (std::string& variable : variables) envp.push_back(variable.data());
    envp.push_back(nullptr);

    int lifeline[2], report[2];
    if (pipe2(lifeline, O_CLOEXEC) != 0) {
        errorCode = errno;
        return false;
    }
    if (pipe2(report, O_CLOEXEC) != 0) {
        errorCode = errno;
        close(lifeline[0]), close(lifeline[1]);
        return false;
    }
    launch_plan plan;
    plan.program = program.c_str();
    plan.argv = argv.data();
    plan.envp = environment.empty() ? environ : envp.data();
    plan.workingDirectory = workingDirectory.empty() ? nullptr : workingDirectory.c_str();
    plan.outputFd = outputFd;
    plan.lifeline = lifeline[0];
    plan.report = report[1];

    pid_t watchdog = fork();
    if (watchdog == 0) watchdogMain(plan);
    const int forkError = errno;
    close(lifeline[0]);
    close(report[1]);
    lifeline_ = lifeline[1];
    report_ = report[0];
    watchdog_message started;
    if (watchdog < 0 || !readMessage(report_, started) || started.code != 0) {
        errorCode = watchdog < 0 ? forkError : started.code != 0 ? started.code : EIO;
        if (watchdog > 0) reap(watchdog);
        closeFd(lifeline_);
        closeFd(report_);
        return false;
    }
    watchdogPid_ = watchdog;
    programPid_ = started.value;
    running_ = true;
    endingSignal_ = 0;
    exitCode_ = -1;
    return true;
}

// The watchdog's final report, once it has one (or has died without one).
child_process::watchdog_end child_process::collectWatchdog(bool block) {
    if (!readable(report_, block ? kEndGraceMs : 0)) return watchdog_end::none;
    watchdog_message ended;
    const bool reported = readMessage(report_, ended);
    reap(watchdogPid_);
    running_ = false;
    closeFd(lifeline_);
    closeFd(report_);
    endingSignal_ = 0;
    if (!reported) return watchdog_end::lost;
    if (ended.code != kProgramEnded) return watchdog_end::endedOnRequest;
    if (WIFSIGNALED(ended.value)) endingSignal_ = WTERMSIG(ended.value);
    exitCode_ = WIFEXITED(ended.value) ? WEXITSTATUS(ended.value) : -1;
    return watchdog_end::programEnded;
}

void child_process::endEverything() {
    closeFd(lifeline_);  // the watchdog ends the program and all below it, then reports
    if (collectWatchdog(true) != watchdog_end::none) {
        endingSignal_ = 0;  // our own ending is reported as a time-out or cancel, not a crash
        return;
    }
    // A watchdog that does not answer (stopped, or killed from outside) is ended with the program's group.
    kill(-programPid_, SIGKILL);
    kill(-watchdogPid_, SIGKILL);
    reap(watchdogPid_);
    running_ = false;
    closeFd(report_);
    endingSignal_ = 0;
}

wait_result child_process::wait(uint32_t timeoutMs, const std::function<bool()>& cancelRequested) {
    if (!running_) return wait_result::failed;
    using clock = std::chrono::steady_clock;
    const auto deadline = clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        switch (collectWatchdog(false)) {
            case watchdog_end::none:
                break;
            case watchdog_end::programEnded:
                return wait_result::finished;
            default:
                return wait_result::failed;  // the watchdog was killed from outside
        }
        if (cancelRequested && cancelRequested()) {
            endEverything();
            return wait_result::cancelled;
        }
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - clock::now()).count();
        if (left <= 0) {
            endEverything();
            return wait_result::timedOut;
        }
        readable(report_, static_cast<int>(std::min<long long>(left, cancelRequested ? kCancelPollMs : 1000)));
    }
}

}  // namespace sb
