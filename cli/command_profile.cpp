// soilbench profile: the model release profiles a user can choose from, and
// deriving one from a release's own sample set-up.
#include <algorithm>
#include <filesystem>
#include <iostream>

#include "app/model_version.h"
#include "app/text_file.h"
#include "app/text_format.h"
#include "cli_context.h"
#include "cli_options.h"
#include "modelinput/profile_derivation.h"

namespace sbcli {
namespace {

// The first schedule of the set-up by name, as a release's sample folder has one per site.
bool firstSchedule(const std::string& dir, std::string& schedule, sb::message_sink& errors) {
    std::vector<std::string> found;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(dir, ec))
        if (entry.is_regular_file() && sb::toLower(entry.path().extension().string()) == ".sch")
            found.push_back(entry.path().filename());
    std::sort(found.begin(), found.end());
    if (found.empty()) {
        errors.errorf("ERROR, no schedule (.sch) in \"%s\".\n", dir.c_str());
        return false;
    }
    schedule = found.front();
    return true;
}

}  // namespace

int cmdProfileList(const profile_list_options& opt) {
    sb::app_soilbench settings = loadUserSettings();
    sb::message_sink errors;
    sb::release_profile_catalogue profiles = loadReleaseProfiles(settings, errors);
    for (int code = 1; code <= sb::kVersionCount; ++code) {
        if (opt.version && code != opt.version) continue;
        for (const sb::release_profile* profile : profiles.forVersion(code)) {
            bool chosen = settings.releaseProfile(code) == profile->name;
            std::cout << (chosen ? "* " : "  ") << profile->name << "\t" << sb::versionDisplayName(code) << "\t"
                      << profile->title << "\t" << profile->path << "\n";
        }
    }
    return finish(errors.empty(), errors);
}

int cmdProfileDerive(const profile_derive_options& opt) {
    sb::message_sink errors;
    sb::profile_derivation from;
    from.directory = opt.dir;
    from.scheduleFile = opt.schedule;
    if (from.scheduleFile.empty() && !firstSchedule(opt.dir, from.scheduleFile, errors)) return finish(false, errors);
    from.outputs = opt.outputs;
    from.layoutsFolder =
        (std::filesystem::path(sb::release_profile_catalogue::shippedFolder()).parent_path() / "binary-layouts")
            .string();
    from.title = opt.title;
    from.version = opt.version;
    if (!opt.success.empty()) from.successLine = opt.success;
    from.failureLines = opt.failures;
    if (!opt.listSkip.empty()) from.listSkipText = opt.listSkip;
    std::string text;
    if (!sb::deriveReleaseProfile(from, text, errors)) return finish(false, errors);
    if (opt.out.empty()) {
        std::cout << text;
        return finish(true, errors);
    }
    if (!sb::writeTextFile(opt.out, text)) {
        errors.errorf("ERROR, cannot write \"%s\".\n", opt.out.c_str());
        return finish(false, errors);
    }
    std::cout << "Wrote release profile " << opt.out << ".\n";
    return finish(true, errors);
}

}  // namespace sbcli
