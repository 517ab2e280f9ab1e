#include "run/model_process_runner.h"

#include "app/app_soilbench.h"  // directoryOf: the run directory of an executable
#include "app/text_format.h"
#include "run/command_line.h"
#include "run/wine_launch.h"

#include <filesystem>

namespace sb {
namespace {

// A stale output must not be read as this run's: a file that exists but
// cannot be deleted is reported.
void deleteStale(const std::string& folder, const char* name, message_sink& errors) {
    if (!*name) return;
    std::error_code ec;
    std::filesystem::path path = std::filesystem::path(folder.empty() ? "." : folder) / name;
    if (!std::filesystem::remove(path, ec) && ec)
        errors.warningf("WARNING, unable to delete old output file \"%s\": %s.\n", path.c_str(), ec.message().c_str());
}

}  // namespace

bool model_process_runner::runModel(int version, const std::string& modelExecutable, bool visible, std::string& runLog,
                                    message_sink& errors) {
    std::string runDirectory = workingDirectory_.empty() ? directoryOf(modelExecutable) : workingDirectory_;
    std::string commandLine = modelCommandLine(version, modelExecutable, visible);
    deleteStale(runDirectory, staleBinaryFile(version), errors);
    // Windows programs run captured: Wine's console reads nothing from a terminal.
    if (visible && !isWindowsProgramName(modelExecutable))
        return runner_.runInConsole(commandLine, runDirectory, errors);
    return runner_.runCaptured(commandLine, kConsoleFile, runDirectory, true, runLog, errors);
}

bool model_process_runner::runList100(int version, const std::string& list100Executable, bool inConsole,
                                      std::string& runLog, message_sink& errors) {
    std::string listDirectory = workingDirectory_.empty() ? directoryOf(list100Executable) : workingDirectory_;
    std::string commandLine = list100CommandLine(version, list100Executable);
    deleteStale(listDirectory, "sb.lis", errors);
    if (inConsole && !isWindowsProgramName(list100Executable))
        return runner_.runInConsole(commandLine, listDirectory, errors);
    return runner_.runCaptured(commandLine, kConsoleFile, listDirectory, false, runLog, errors);
}

}  // namespace sb
