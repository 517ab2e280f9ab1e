#pragma once
// A release profile derived from a release's own sample set-up: the order of
// the names in its fix.100, site file and option files, the layout of its
// sitepar.in (told line by line from the lines' comments) and outfiles.in,
// how its schedule writes the output interval, its weather file's columns and
// the files it needs beside the schedule; from a folder of its outputs, when
// given, its binary layout and framing and which daily text files it writes.
// What no file shows (the console's success line, the list utility's message
// for an unknown name) is given by the caller.
#include <string>
#include <vector>

#include "app/message_sink.h"

namespace sb {

struct profile_derivation {
    std::string directory;      // the sample set-up
    std::string scheduleFile;   // its schedule, in `directory`
    std::string outputs;        // a folder of outputs of that set-up; "" for none
    std::string layoutsFolder;  // the shipped binary layouts, to name the one the outputs' layout equals
    std::string title;
    int version = 4;
    std::string successLine = "Execution success.";
    std::vector<std::string> failureLines;
    std::string listSkipText = "Variable not found, skipping:";
};

// The text of the profile; false with messages naming the file (and line)
// when a file cannot be read or a sitepar.in line cannot be told.
bool deriveReleaseProfile(const profile_derivation& from, std::string& text, message_sink& errors);

}  // namespace sb
