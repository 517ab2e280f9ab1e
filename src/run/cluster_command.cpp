#include "run/cluster_command.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>

#include "app/text_format.h"
#include "run/child_process.h"
#include "run/wine_launch.h"

namespace sb {
namespace {

// What a batch command prints is short; more is cut.
constexpr size_t kOutputLimit = 1 << 20;

std::string readAll(std::FILE* file) {
    std::string text;
    char piece[8192];
    std::rewind(file);
    size_t got;
    while (text.size() < kOutputLimit && (got = std::fread(piece, 1, sizeof piece, file)) > 0) text.append(piece, got);
    return text;
}

std::string trimmedEnd(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) text.pop_back();
    return text;
}

}  // namespace

bool runClusterCommand(const std::string& program, const std::vector<std::string>& arguments,
                       cluster_command_result& result, message_sink& errors, uint32_t timeoutMs) {
    result = cluster_command_result();
    const std::string path = findOnPath(program);
    if (path.empty()) {
        errors.errorf("ERROR, \"%s\" was not found on the PATH: Slurm's commands must be installed on this host.\n",
                      program.c_str());
        return false;
    }
    std::FILE* output = std::tmpfile();
    if (!output) {
        errors.errorf("ERROR, unable to run \"%s\": no temporary file for its output (%s).\n", program.c_str(),
                      std::strerror(errno));
        return false;
    }
    std::vector<std::string> command = {path};
    command.insert(command.end(), arguments.begin(), arguments.end());
    child_process child;
    int code = 0;
    bool ok = child.start(command, "", fileno(output), code);
    if (!ok) {
        errors.errorf("ERROR, unable to start \"%s\": %s.\n", path.c_str(), std::strerror(code));
    } else {
        const wait_result waited = child.wait(timeoutMs, {});
        result.output = readAll(output);
        result.exitCode = child.exitCode();
        result.ran = waited == wait_result::finished && result.exitCode >= 0;
        if (waited == wait_result::timedOut) {
            errors.errorf("ERROR, \"%s\" did not answer within %lu seconds and was ended.\n", program.c_str(),
                          static_cast<unsigned long>(timeoutMs / 1000));
            ok = false;
        } else if (!result.ran || result.exitCode != 0) {
            errors.errorf("ERROR, \"%s\" failed (exit status %d): %s\n", program.c_str(), result.exitCode,
                          trimmedEnd(result.output).c_str());
            ok = false;
        }
    }
    std::fclose(output);
    return ok;
}

}  // namespace sb
