#pragma once
// The stand-in's command line: the model's own arguments for each release, the
// list utility's three file names, and our options for tests.
#include <map>
#include <string>
#include <vector>

namespace standin {

struct standin_options {
    bool help = false;
    bool list100 = false;                      // act as the list utility
    int release = 0;                           // 0: work it out from the arguments and files
    std::string mode = "normal";               // test mode, see --help
    int strictYear = 0;                        // 2012 or 2008: imitate that real release strictly
    std::string reference;                     // that release's own sample set-up (inputs)
    std::string referenceOutputs;              // its sample outputs; derived from `reference` when empty
    std::map<std::string, std::string> model;  // "-s" -> "sb", ...
    std::vector<std::string> positional;       // list utility: binary, list, variables files
    std::string problem;                       // a bad argument

    // The release that the model arguments alone decide (1 and 6), or 0.
    int releaseFromArguments() const;
    std::string arg(const char* flag) const;  // "" when not given
};

// argv[0] decides the list utility role too: a name containing "list100".
standin_options parseOptions(int argc, char** argv);
const char* helpText();

}  // namespace standin
