#pragma once
// The model's two process steps of a run: the model itself and, for releases
// 1 to 5, the list utility that turns its binary output into the list file.
// Writing the request file and reading outputs are the run controller's.
#include "app/message_sink.h"
#include "run/process_runner.h"

#include <string>

namespace sb {

class model_process_runner {
public:
    explicit model_process_runner(process_runner& runner) : runner_(runner) {}

    // Runs both steps in this folder instead of their executables' folders
    // (parallel runs give each record a scratch copy of the run directory;
    // the executables stay where they are). Empty: the executables' folders.
    void setWorkingDirectory(std::string folder) { workingDirectory_ = std::move(folder); }

    // Deletes the stale binary output, forms the version's command line and
    // runs the model in the folder of its executable: captured into
    // "Soilbench.con" (output required), or in a terminal when visible.
    bool runModel(int version, const std::string& modelExecutable, bool visible, std::string& runLog,
                  message_sink& errors);
    // Deletes the stale "sb.lis" and runs "\"%s\" sb sb sb_outvars.txt" in the
    // folder of the list utility; a silent list utility is no error.
    bool runList100(int version, const std::string& list100Executable, bool inConsole, std::string& runLog,
                    message_sink& errors);

    static constexpr const char* kConsoleFile = "Soilbench.con";

private:
    process_runner& runner_;
    std::string workingDirectory_;
};

}  // namespace sb
