#include "cli_context.h"

#include <cstdlib>
#include <iostream>

#include "app/ini_settings_store.h"
#include "app/text_file.h"
#include "app/text_format.h"
#include "cli_options.h"

namespace sbcli {

static std::string profileOverride() {
    const char* path = std::getenv("SOILBENCH_PROFILE");
    return path ? path : "";
}

sb::app_soilbench loadUserSettings() {
    sb::app_soilbench settings(profileOverride());
    settings.loadSettings();
    return settings;
}

bool saveUserSettings(sb::app_soilbench& settings) {
    sb::message_sink errors;
    bool ok = settings.saveSettings(errors);
    report(errors);
    return ok;
}

sb::release_profile_catalogue loadReleaseProfiles(const sb::app_soilbench& settings, sb::message_sink& errors) {
    sb::release_profile_catalogue catalogue;
    catalogue.load(sb::release_profile_catalogue::shippedFolder(), settings.userProfileFolder(), errors);
    return catalogue;
}

std::unique_ptr<sb::database> openProject(const std::string& path) {
    sb::message_sink errors;
    auto db = sb::database::open(path, errors);
    report(errors);
    return db;
}

void report(const sb::message_sink& messages) {
    if (!messages.empty()) std::cerr << messages << std::flush;
}

int finish(bool ok, const sb::message_sink& messages) {
    report(messages);
    return ok ? kExitOk : kExitFailed;
}

bool parseRange(const std::string& text, int low, int high, int& first, int& last) {
    size_t dash = text.find('-', 1);
    if (dash == std::string::npos) return false;
    long long a = 0, b = 0;
    if (!sb::readWholeNumber(sb::trim(std::string_view(text).substr(0, dash)), low, high, a) ||
        !sb::readWholeNumber(sb::trim(std::string_view(text).substr(dash + 1)), low, high, b) || a > b)
        return false;
    first = static_cast<int>(a);
    last = static_cast<int>(b);
    return true;
}

bool allowedToReplace(bool exists, bool force, const std::string& what, const char* another, const char* forceDoes,
                      sb::message_sink& errors) {
    if (!exists || force) return true;
    errors.errorf("ERROR, %s: give %s, or --force to %s.\n", what.c_str(), another, forceDoes);
    return false;
}

}  // namespace sbcli
