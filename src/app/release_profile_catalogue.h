#pragma once
// The release profiles a user can choose from: the ones shipped with the
// program (share/soilbench/profiles) and the user's own (the profile folder setting,
// by default ~/.local/share/soilbench/profiles). A user's profile with the
// name of a shipped one takes its place, so a shipped profile can be adapted
// without rebuilding anything.
#include <string>
#include <vector>

#include "app/message_sink.h"
#include "app/release_profile.h"

namespace sb {

class release_profile_catalogue {
public:
    // Reads every "*.profile" of the shipped folder, then of the user's folder
    // (which need not exist). A profile that cannot be read is left out and
    // its problems are appended to `errors`; false when any was left out.
    bool load(const std::string& shippedFolder, const std::string& userFolder, message_sink& errors);
    bool addFile(const std::string& path, message_sink& errors);

    // nullptr when no profile has that name.
    const release_profile* find(const std::string& name) const;
    // The profiles serving a version, by name.
    std::vector<const release_profile*> forVersion(int version) const;
    const std::vector<release_profile>& profiles() const { return profiles_; }
    // Problems met while loading (empty when every file was read).
    const std::string& loadErrors() const { return loadErrors_; }

    // "profiles" in the data folder of the running program.
    static std::string shippedFolder();
    // $XDG_DATA_HOME/soilbench/profiles, else ~/.local/share/soilbench/profiles.
    static std::string defaultUserFolder();
    // The shipped profiles alone, read once.
    static const release_profile_catalogue& shipped();

private:
    std::vector<release_profile> profiles_;
    std::string loadErrors_;
};

// The name of the shipped profile that writes a version's files as Soilbench
// always has ("diurna45" for 4); "" outside 1..6.
const char* defaultReleaseProfileName(int version);

// The name of the profile a version's runs use: `chosen`, or the version's
// default when none is chosen.
std::string releaseProfileName(const std::string& chosen, int version);

// The profile a run stored in the history ran as. Runs stored before profiles
// had names hold their version's name ("Diurna 4.5"); they wrote the version's
// files as Soilbench always had, which is that version's default profile.
std::string storedReleaseProfileName(const std::string& stored);

// The profile to use for a version: the named one when the catalogue has it
// and it serves that version, otherwise nullptr with a message saying why.
const release_profile* chooseReleaseProfile(const release_profile_catalogue& catalogue, const std::string& name,
                                            int version, message_sink& errors);

}  // namespace sb
