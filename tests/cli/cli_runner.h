#pragma once
// Runs the real soilbench program, as a user or a script would.
#include <map>
#include <string>
#include <vector>

namespace sbtest {

struct cli_result {
    int exitCode = -1;
    std::string out;
    std::string err;
};

// `env` entries are set for the child on top of the test's own environment.
cli_result runSoilbench(const std::vector<std::string>& args, const std::map<std::string, std::string>& env = {});

}  // namespace sbtest
