#pragma once
// The stand-in's strict mode: it reads a run directory the way one real release
// of the daily-step model reads it, refuses what that release refuses and prints
// that release's own console messages.
//
// Two kinds of knowledge, kept apart on purpose:
// - release_behaviour: what the release prints and how it frames its binary
//   file (observed on the real programs, fixed here per release);
// - reference_setup: the order of parameter names, record lengths, line counts
//   and output headers, read at start-up from the release's OWN sample set-up,
//   never from the workbench's files, so that the workbench's writers cannot
//   agree with the stand-in by construction.
#include "binary_file.h"

#include <map>
#include <string>
#include <vector>

namespace standin {

struct release_behaviour {
    int year = 0;  // 2012 or 2008: the release imitated
    const char* successLine = "";
    binary_framing framing = binary_framing::oneByteMarkers;
    bool siteparExactCount = false;       // refuses sitepar.in with any other line count
    bool dropLeadingZero = false;         // prints ".1051" for 0.1051 in its Fortran text files
    bool listStopLine = false;            // the list utility ends with "Stop - Program terminated."
    bool windowsLineEnds = false;         // its list file lines end in CR LF
    const char* nscaleMissing = nullptr;  // its message when nscale.dat is missing
    const char* invalidReal = "";         // "%s" is the file's name where the release names it

    std::string invalidRealMessage(const std::string& file) const;
};

// nullptr for a year that is not imitated.
const release_behaviour* releaseBehaviour(int year);

// One line of a reference parameter file: a text line (record or section
// header) or a value line with its parameter's name.
struct reference_line {
    bool value = false;
    std::string name;  // as written, quotes removed
};

struct reference_setup {
    std::string inputsDir;
    std::string outputsDir;
    std::vector<reference_line> fixLines;
    std::vector<reference_line> siteLines;
    std::map<std::string, size_t> optionValueLines;  // "crop.100" -> values per option
    size_t siteparLines = 0;
    size_t weatherColumns = 0;
    size_t soilColumns = 0;
    std::string layoutFile;                          // the release's binary-layout.tsv
    std::map<std::string, std::string> textHeaders;  // "daily.out" -> its header line

    // Reads the reference set-up: inputs from `inputsDir`, headers and the
    // binary layout from `outputsDir` (derived from inputsDir when empty:
    // ".../inputs" -> ".../outputs", "...-inputs" -> "...-outputs").
    bool load(const std::string& inputs, const std::string& outputs, std::string& errors);
};

// Reads the run directory as the release does, before any simulation. On a
// refusal the release's messages go to `console` and the result is false;
// `errors` gets the stand-in's own problems (a file it cannot read).
bool readAsRelease(const release_behaviour& release, const reference_setup& reference, const std::string& scheduleFile,
                   std::string& console, std::string& errors);

}  // namespace standin
