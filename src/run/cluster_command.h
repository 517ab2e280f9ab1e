#pragma once
// One short-lived command of a batch system (sbatch, squeue, sacct, scancel): found
// on the PATH, started without a shell under the process runner's watchdog,
// its standard output and error kept.
#include <cstdint>
#include <string>
#include <vector>

#include "app/message_sink.h"

namespace sb {

struct cluster_command_result {
    bool ran = false;    // started and exited by itself
    int exitCode = -1;   // when it ran
    std::string output;  // standard output and error together
};

// Runs `program` (a name found on the PATH) with `arguments`, waiting at most
// `timeoutMs`. False with a message naming the program when it is not on the
// PATH, cannot start, does not end in time or exits with a status other than 0
// (its output is in the message).
bool runClusterCommand(const std::string& program, const std::vector<std::string>& arguments,
                       cluster_command_result& result, message_sink& errors, uint32_t timeoutMs = 60000);

}  // namespace sb
