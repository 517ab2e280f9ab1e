#include "cli_runner.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "test_support.h"

extern char** environ;

namespace sbtest {

std::string soilbenchProgram() {
    // SOILBENCH_UNDER_TEST names another build's program, to see which tests an older one fails.
    const char* other = std::getenv("SOILBENCH_UNDER_TEST");
    return other && *other ? other : binDir() + "/soilbench";
}

pid_t startSoilbench(const std::vector<std::string>& args, const std::map<std::string, std::string>& env,
                     const std::string& outPath, const std::string& errPath) {
    std::string program = soilbenchProgram();
    std::vector<std::string> argStore{program};
    argStore.insert(argStore.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (auto& a : argStore) argv.push_back(a.data());
    argv.push_back(nullptr);

    std::vector<std::string> envStore;
    for (char** e = environ; *e; ++e) {
        std::string entry = *e;
        if (!env.count(entry.substr(0, entry.find('=')))) envStore.push_back(entry);
    }
    for (const auto& [key, value] : env) envStore.push_back(key + "=" + value);
    std::vector<char*> envp;
    for (auto& e : envStore) envp.push_back(e.data());
    envp.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_addopen(&actions, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    pid_t pid = 0;
    if (posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), envp.data()) != 0) pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

int finishSoilbench(pid_t pid) {
    int status = 0;
    if (pid <= 0 || waitpid(pid, &status, 0) != pid) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

cli_result runSoilbench(const std::vector<std::string>& args, const std::map<std::string, std::string>& env) {
    temp_dir capture;
    cli_result result;
    result.exitCode = finishSoilbench(startSoilbench(args, env, capture.file("out"), capture.file("err")));
    result.out = readFile(capture.file("out"));
    result.err = readFile(capture.file("err"));
    return result;
}

}  // namespace sbtest
