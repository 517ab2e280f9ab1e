#pragma once
// Shared plumbing of the command functions: the user's settings, opening a
// project, and reporting the core's collected messages on standard error.
#include <memory>
#include <string>

#include "app/app_soilbench.h"
#include "app/message_sink.h"
#include "app/release_profile_catalogue.h"
#include "db/database.h"

namespace sbcli {

// The user's settings as the profile holds them (SOILBENCH_PROFILE names another INI file).
sb::app_soilbench loadUserSettings();
// Saves them back; false with the message printed when the profile cannot be written.
bool saveUserSettings(sb::app_soilbench& settings);

// The shipped release profiles and the user's own (the profile folder setting).
// Profiles that cannot be read are left out; their problems go to `errors`.
sb::release_profile_catalogue loadReleaseProfiles(const sb::app_soilbench& settings, sb::message_sink& errors);

// Opens an existing project; prints the messages and returns null on failure.
std::unique_ptr<sb::database> openProject(const std::string& path);

// Prints collected messages (already ending in newlines) to standard error.
void report(const sb::message_sink& messages);
// Prints the messages and turns an operation's result into the exit status.
int finish(bool ok, const sb::message_sink& messages);

// "1-3" -> 1, 3; false when the text is not two whole numbers within [low, high]
// joined by '-', the first not after the second.
bool parseRange(const std::string& text, int low, int high, int& first, int& last);

// The command line never destroys what it was not asked to: when `exists`,
// appends "ERROR, <what>: give <another>, or --force to <forceDoes>.\n" and
// returns false, unless `force`.
bool allowedToReplace(bool exists, bool force, const std::string& what, const char* another, const char* forceDoes,
                      sb::message_sink& errors);

}  // namespace sbcli
