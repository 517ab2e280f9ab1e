#include "cli_context.h"

#include <cstdlib>
#include <iostream>

#include "app/ini_settings_store.h"
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
    std::string errors;
    bool ok = settings.saveSettings(errors);
    report(errors);
    return ok;
}

std::unique_ptr<sb::database> openProject(const std::string& path) {
    std::string errors;
    auto db = sb::database::open(path, errors);
    report(errors);
    return db;
}

void report(const std::string& messages) {
    if (!messages.empty()) std::cerr << messages << std::flush;
}

int finish(bool ok, const std::string& messages) {
    report(messages);
    return ok ? kExitOk : kExitFailed;
}

bool parseRange(const std::string& text, int& first, int& last) {
    size_t dash = text.find('-', 1);
    if (dash == std::string::npos) return false;
    char* end = nullptr;
    long a = std::strtol(text.c_str(), &end, 10);
    if (end != text.c_str() + dash) return false;
    long b = std::strtol(text.c_str() + dash + 1, &end, 10);
    if (*end != '\0' || end == text.c_str() + dash + 1) return false;
    first = static_cast<int>(a);
    last = static_cast<int>(b);
    return true;
}

}  // namespace sbcli
