#include "app/configuration_form.h"

#include <cctype>

#include "app/text_format.h"

namespace sb {

configuration_form::configuration_form(app_soilbench& settings, const release_profile_catalogue* profiles)
    : recordList(settings.recordList),
      runVisible(settings.runVisible),
      runTimeoutText(std::to_string(settings.runTimeout)),
      outputPath(settings.outputPath),
      outputPrefix(settings.outputPrefix),
      readBinaryOutput(settings.readBinaryOutput),
      wineCommand(settings.wineCommand),
      winePrefix(settings.winePrefix),
      runsFolder(settings.runsFolder),
      keepRunFolders(settings.keepRunFolders),
      settings_(settings),
      helpFileText_(settings.helpFile),
      openedModelPaths_(settings.modelExecutables),
      openedList100Paths_(settings.list100Executables),
      profiles_(profiles),
      chosenProfiles_(settings.releaseProfiles) {
    for (int code = 1; code <= kOfferedVersions; ++code) {
        std::string name = versionDisplayName(code);
        versionChoices_.push_back(name);
        rows_.push_back({strprintf("%s executable", name.c_str()), code, false, false});
        rows_.push_back({strprintf("%s LIST100 executable", name.c_str()), code, true, false});
    }
    int index = settings.version - 1;
    selectedIndex_ = index >= 0 && index < kOfferedVersions ? index : 0;
    markRows();
    listProfiles();
}

void configuration_form::selectVersion(int index) {
    if (index < 0 || index >= kOfferedVersions) return;
    selectedIndex_ = index;
    markRows();
    listProfiles();
}

void configuration_form::listProfiles() {
    profileChoices_.clear();
    profileNames_.clear();
    const std::string& chosen = chosenProfiles_[static_cast<size_t>(selectedIndex_)];
    std::vector<const release_profile*> offered;
    if (profiles_) offered = profiles_->forVersion(selectedIndex_ + 1);
    bool listed = false;
    for (const release_profile* profile : offered) listed = listed || profile->name == chosen;
    if (!listed) {
        profileNames_.push_back(chosen);
        profileChoices_.push_back(chosen + ": (not found)");
    }
    for (const release_profile* profile : offered) {
        profileNames_.push_back(profile->name);
        profileChoices_.push_back(profile->name + ": " + profile->title);
    }
    selectedProfile_ = 0;
    for (size_t i = 0; i < profileNames_.size(); ++i)
        if (profileNames_[i] == chosen) selectedProfile_ = static_cast<int>(i);
}

void configuration_form::selectProfile(int index) {
    if (index < 0 || index >= static_cast<int>(profileNames_.size())) return;
    selectedProfile_ = index;
    chosenProfiles_[static_cast<size_t>(selectedIndex_)] = profileNames_[static_cast<size_t>(index)];
}

std::string configuration_form::chosenProfile(int code) const {
    return isValidVersion(code) ? chosenProfiles_[static_cast<size_t>(code - 1)] : std::string();
}

void configuration_form::markRows() {
    for (location_row& row : rows_) row.marked = row.code == selectedIndex_ + 1;
}

std::string& configuration_form::rowField(const location_row& row) const {
    auto& paths = row.list100 ? settings_.list100Executables : settings_.modelExecutables;
    return paths[row.code - 1];
}

std::string configuration_form::rowPath(int row) const {
    if (row < 0 || row >= static_cast<int>(rows_.size())) return {};
    return rowField(rows_[row]);
}

void configuration_form::editRowPath(int row, const std::string& path) {
    if (row < 0 || row >= static_cast<int>(rows_.size())) return;
    rowField(rows_[row]) = path;
}

void configuration_form::chooseHelpFile(const std::string& path) {
    settings_.helpFile = path;
    helpFileText_ = path;
}

bool configuration_form::accept(message_sink& errors) {
    uint32_t timeout = 0;
    if (!parseRunTimeout(runTimeoutText, timeout)) {
        errors.errorf("Please enter an integer between 0 and %u.\n", kMaxRunTimeout);
        return false;
    }
    if (trim(wineCommand).empty()) {
        errors.error("Please enter the Wine command, e.g. wine.\n");
        return false;
    }
    settings_.wineCommand = std::string(trim(wineCommand));
    settings_.winePrefix = std::string(trim(winePrefix));
    settings_.runsFolder = std::string(trim(runsFolder));
    settings_.keepRunFolders = keepRunFolders;
    settings_.version = static_cast<int16_t>(selectedIndex_ + 1);
    settings_.readBinaryOutput = readBinaryOutput;
    settings_.outputPrefix = outputPrefix;
    settings_.outputPath = outputPath;
    settings_.recordList = recordList;
    settings_.runVisible = runVisible;
    settings_.runTimeout = timeout;
    settings_.releaseProfiles = chosenProfiles_;
    return true;
}

void configuration_form::cancel() {
    settings_.modelExecutables = openedModelPaths_;
    settings_.list100Executables = openedList100Paths_;
}

bool parseRunTimeout(const std::string& text, uint32_t& timeout) {
    std::string_view digits = trim(text);
    if (digits.empty() || digits.size() > 7) return false;
    uint32_t value = 0;
    for (char c : digits) {
        if (!std::isdigit(static_cast<unsigned char>(c))) return false;
        value = value * 10 + static_cast<uint32_t>(c - '0');
    }
    if (value > kMaxRunTimeout) return false;
    timeout = value;
    return true;
}

}  // namespace sb
