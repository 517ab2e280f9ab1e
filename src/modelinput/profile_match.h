#pragma once
// Which release a set-up was written for: its files against the layouts of
// the release profiles (the order of the names in fix.100, in the site file
// and in each option file's records, and the line count of sitepar.in).
#include <string>
#include <vector>

#include "app/message_sink.h"
#include "app/release_profile_catalogue.h"

namespace sb {

// The set-up's files as the comparison reads them.
struct setup_layout {
    std::vector<std::string> fixedNames;  // upper case, in file order
    std::vector<std::string> siteNames;
    // Per option file: its records' names, each with its value names.
    struct option_record_names {
        std::string option;
        int line = 0;  // the record's header line
        std::vector<std::string> names;
    };
    std::vector<std::pair<std::string, std::vector<option_record_names>>> optionFiles;
    int siteparLines = -1;  // -1: the set-up has no sitepar.in
};

// Reads the layout of the set-up's files in `directory` (the site file as the
// schedule names it); files that are missing are left out of the comparison.
setup_layout readSetupLayout(const std::string& directory, const std::string& siteFile);

// Where the set-up differs from the profile: one line per file that differs,
// naming the first difference. Empty when the set-up matches the profile.
std::vector<std::string> profileDifferences(const setup_layout& setup, const release_profile& profile);

// The profile among `candidates` that the set-up matches (the first one, or
// `preferred` when it is among the matches), else nullptr. `messages` gets
// "The set-up in DIR matches release profile \"NAME\" (TITLE).\n", or
// "WARNING, the set-up in DIR matches no release profile; ..." followed by
// what differs from each candidate.
const release_profile* recogniseReleaseProfile(const std::string& directory, const std::string& siteFile,
                                               const std::vector<const release_profile*>& candidates,
                                               const std::string& preferred, message_sink& messages);

}  // namespace sb
