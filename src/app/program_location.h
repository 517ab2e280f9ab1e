#pragma once
// Where the running program and the files shipped with it are. The programs
// sit in bin/ and their data in share/soilbench/ beside it, in the build tree
// as in an installed tree (/usr/bin and /usr/share/soilbench), so a build runs
// like an installed program and an installed tree can be moved as a whole.
#include <string>

namespace sb {

// The environment variable naming another data folder (a data folder being
// edited, or a program copied away from its data).
inline constexpr const char* kDataDirVariable = "SOILBENCH_DATA_DIR";

// The folder of the running executable ("" when the system does not say).
std::string programDirectory();

// The folder of the shipped files: $SOILBENCH_DATA_DIR when set and not
// empty, otherwise <program folder>/../share/soilbench.
std::string dataDirectory();
// Same, from a program folder and the variable's value (null when unset).
std::string dataDirectory(const std::string& programDir, const char* overrideDir);

}  // namespace sb
