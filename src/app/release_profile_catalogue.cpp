#include "app/release_profile_catalogue.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "app/model_version.h"
#include "app/program_location.h"
#include "app/text_format.h"

namespace sb {

namespace {

constexpr const char* kDefaultNames[] = {
    "tellura4-agricultural", "tellura4-original", "tellura45", "diurna45", "tellura46", "tellura5"};

std::vector<std::string> profileFiles(const std::string& folder) {
    std::vector<std::string> files;
    std::error_code ec;
    if (folder.empty() || !std::filesystem::is_directory(folder, ec)) return files;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ec))
        if (entry.path().extension() == ".profile") files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

bool release_profile_catalogue::load(const std::string& shippedFolder, const std::string& userFolder,
                                     message_sink& errors) {
    bool ok = true;
    for (const std::string& folder : {shippedFolder, userFolder})
        for (const std::string& file : profileFiles(folder)) ok = addFile(file, errors) && ok;
    return ok;
}

bool release_profile_catalogue::addFile(const std::string& path, message_sink& errors) {
    release_profile profile;
    message_sink problems;
    if (!loadReleaseProfile(path, profile, problems)) {
        loadErrors_ += problems.text();
        errors.add(problems);
        return false;
    }
    auto same = [&](const release_profile& p) { return p.name == profile.name; };
    auto found = std::find_if(profiles_.begin(), profiles_.end(), same);
    if (found != profiles_.end()) *found = std::move(profile);
    else profiles_.push_back(std::move(profile));
    return true;
}

const release_profile* release_profile_catalogue::find(const std::string& name) const {
    for (const release_profile& profile : profiles_)
        if (profile.name == name) return &profile;
    return nullptr;
}

std::vector<const release_profile*> release_profile_catalogue::forVersion(int version) const {
    std::vector<const release_profile*> out;
    for (const release_profile& profile : profiles_)
        if (profile.version == version) out.push_back(&profile);
    std::sort(out.begin(), out.end(), [](auto* a, auto* b) { return a->name < b->name; });
    return out;
}

std::string release_profile_catalogue::shippedFolder() {
    return (std::filesystem::path(dataDirectory()) / "profiles").string();
}

std::string release_profile_catalogue::defaultUserFolder() {
    const char* data = std::getenv("XDG_DATA_HOME");
    if (data && *data) return (std::filesystem::path(data) / "soilbench" / "profiles").string();
    const char* home = std::getenv("HOME");
    return (std::filesystem::path(home ? home : ".") / ".local" / "share" / "soilbench" / "profiles").string();
}

const release_profile_catalogue& release_profile_catalogue::shipped() {
    static const release_profile_catalogue catalogue = [] {
        release_profile_catalogue loaded;
        message_sink errors;
        loaded.load(shippedFolder(), std::string(), errors);
        return loaded;
    }();
    return catalogue;
}

const char* defaultReleaseProfileName(int version) { return isValidVersion(version) ? kDefaultNames[version - 1] : ""; }

std::string releaseProfileName(const std::string& chosen, int version) {
    return chosen.empty() ? std::string(defaultReleaseProfileName(version)) : chosen;
}

std::string storedReleaseProfileName(const std::string& stored) {
    for (int version = 1; version <= kVersionCount; ++version)
        if (stored == versionDisplayName(version)) return defaultReleaseProfileName(version);
    return stored;
}

const release_profile* chooseReleaseProfile(const release_profile_catalogue& catalogue, const std::string& name,
                                            int version, message_sink& errors) {
    const std::string wanted = releaseProfileName(name, version);
    const release_profile* profile = catalogue.find(wanted);
    if (!profile) {
        errors.errorf("ERROR, no release profile \"%s\" for %s.\n", wanted.c_str(), versionDisplayName(version));
        errors.error(catalogue.loadErrors());
        return nullptr;
    }
    if (profile->version != version) {
        errors.errorf("ERROR, release profile \"%s\" is for %s, not for %s.\n", wanted.c_str(),
                      versionDisplayName(profile->version), versionDisplayName(version));
        return nullptr;
    }
    return profile;
}

}  // namespace sb
