#include "run/child_process.h"

#include <cerrno>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace sb {
namespace {

// While a cancel hook is set the wait wakes up this often to ask it.
constexpr int kCancelPollMs = 20;

// Relative program paths are taken from our current directory, not from the
// child's working directory (which the child enters before its program starts).
std::string absoluteProgram(const std::string& program) {
    if (!program.empty() && program[0] == '/') return program;
    char buffer[4096];
    if (!getcwd(buffer, sizeof buffer)) return program;
    return std::string(buffer) + "/" + program;
}

class spawn_setup {
public:
    spawn_setup() {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
    }
    ~spawn_setup() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
};

int pidfdOpen(pid_t pid) {
#ifdef SYS_pidfd_open
    return static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
#else
    (void)pid;
    return -1;
#endif
}

// Our environment with `changes` ("NAME=value") put in, for posix_spawn.
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

}  // namespace

child_process::~child_process() {
    if (running_) killGroupAndReap();
}

bool child_process::start(const std::vector<std::string>& arguments, const std::string& workingDirectory, int outputFd,
                          int& errorCode, const std::vector<std::string>& environment) {
    if (arguments.empty()) {
        errorCode = ENOENT;
        return false;
    }
    spawn_setup setup;
    if (outputFd >= 0) {
        posix_spawn_file_actions_addopen(&setup.actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&setup.actions, outputFd, 1);
        posix_spawn_file_actions_adddup2(&setup.actions, outputFd, 2);
    }
    if (!workingDirectory.empty()) posix_spawn_file_actions_addchdir_np(&setup.actions, workingDirectory.c_str());
    // Own process group; default signal handling and no blocked signals, whatever ours are.
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setpgroup(&setup.attributes, 0);
    posix_spawnattr_setsigmask(&setup.attributes, &none);
    posix_spawnattr_setsigdefault(&setup.attributes, &all);
    posix_spawnattr_setflags(&setup.attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    std::string program = absoluteProgram(arguments[0]);
    std::vector<char*> argv;
    argv.push_back(program.data());
    for (size_t i = 1; i < arguments.size(); ++i) argv.push_back(const_cast<char*>(arguments[i].c_str()));
    argv.push_back(nullptr);
    std::vector<std::string> variables = childEnvironment(environment);
    std::vector<char*> envp;
    for (std::string& variable : variables) envp.push_back(variable.data());
    envp.push_back(nullptr);
    pid_t pid = -1;
    int result = posix_spawn(&pid, program.c_str(), &setup.actions, &setup.attributes, argv.data(),
                             environment.empty() ? environ : envp.data());
    if (result != 0) {
        errorCode = result;
        return false;
    }
    pid_ = pid;
    running_ = true;
    endingSignal_ = 0;
    return true;
}

child_process::reap_state child_process::reapIfEnded(bool block) {
    int status = 0;
    pid_t done;
    do { done = waitpid(pid_, &status, block ? 0 : WNOHANG); } while (done < 0 && errno == EINTR);
    if (done < 0) return reap_state::waitFailed;
    if (done != pid_) return reap_state::running;
    running_ = false;
    endingSignal_ = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return reap_state::ended;
}

void child_process::killGroupAndReap() {
    kill(-pid_, SIGKILL);
    if (running_) reapIfEnded(true);
    endingSignal_ = 0;  // our own kill is reported as a time-out or cancel, not a crash
}

wait_result child_process::wait(uint32_t timeoutMs, const std::function<bool()>& cancelRequested) {
    if (!running_) return wait_result::failed;
    using clock = std::chrono::steady_clock;
    const auto deadline = clock::now() + std::chrono::milliseconds(timeoutMs);
    int pidfd = pidfdOpen(pid_);
    wait_result result = wait_result::timedOut;
    for (;;) {
        reap_state state = reapIfEnded(false);
        if (state != reap_state::running) {
            result = state == reap_state::ended ? wait_result::finished : wait_result::failed;
            break;
        }
        if (cancelRequested && cancelRequested()) {
            result = wait_result::cancelled;
            break;
        }
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - clock::now()).count();
        if (left <= 0) break;
        int slice = static_cast<int>(std::min<long long>(left, cancelRequested ? kCancelPollMs : 1000));
        if (pidfd >= 0) {
            pollfd ready{pidfd, POLLIN, 0};
            poll(&ready, 1, slice);
        } else {
            usleep(static_cast<useconds_t>(std::min(slice, 5)) * 1000);
        }
    }
    if (pidfd >= 0) close(pidfd);
    if (result == wait_result::finished) {
        kill(-pid_, SIGKILL);  // helpers the model left behind must not outlive the run
    } else if (running_) {
        killGroupAndReap();
    }
    return result;
}

}  // namespace sb
