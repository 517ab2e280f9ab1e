#pragma once
// Windows builds of the model and its list utility, run through Wine: a
// configured executable whose name ends in ".exe" (any case) is started as
// "WINE EXE ARGS..." with its own prefix directory and Wine's debug output off.
// Wine is found when the run starts; without it the run fails with a message
// that says how to install it.
#include <string>
#include <vector>

#include "app/message_sink.h"

namespace sb {

struct wine_setup {
    std::string command = "wine";  // a program name looked up on PATH, or a path
    std::string prefix;            // WINEPREFIX; "" means defaultWinePrefix()
};

bool isWindowsProgramName(const std::string& path);
// "$XDG_DATA_HOME/soilbench/wine", else "~/.local/share/soilbench/wine".
std::string defaultWinePrefix();
// The full path of a program found on PATH (an executable file), or "".
std::string findOnPath(const std::string& program);
// The Wine program to start: the configured command (a path or a name on
// PATH); the default "wine" falls back to "wine64" and then to Debian's
// /usr/lib/wine/wine64. "" when none is found.
std::string resolveWineProgram(const std::string& command);

// For a Windows program: checks that it is one (it starts with "MZ"), finds
// Wine, creates the prefix directory, and turns `arguments` into Wine's
// command line with `environment` holding the variables to set. False with a
// message (naming the program) when it cannot run.
bool prepareWineLaunch(const wine_setup& setup, std::vector<std::string>& arguments,
                       std::vector<std::string>& environment, message_sink& errors);

}  // namespace sb
