#pragma once
// Runs the real soilbench program, as a user or a script would.
#include <map>
#include <sys/types.h>
#include <string>
#include <vector>

namespace sbtest {

struct cli_result {
    int exitCode = -1;
    std::string out;
    std::string err;
};

// `env` entries are set for the child on top of the test's own environment. The
// program is this build's, or the one SOILBENCH_UNDER_TEST names.
cli_result runSoilbench(const std::vector<std::string>& args, const std::map<std::string, std::string>& env = {});
std::string soilbenchProgram();
// The same started without waiting (-1 when it cannot start); its output goes to the two files.
pid_t startSoilbench(const std::vector<std::string>& args, const std::map<std::string, std::string>& env,
                     const std::string& outPath, const std::string& errPath);
// Waits for a started program: its exit status, or 128 + the signal that ended it.
int finishSoilbench(pid_t pid);

}  // namespace sbtest
