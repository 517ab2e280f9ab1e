#include "app/app_soilbench.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <limits>
#include <variant>

#include "app/ini_settings_store.h"
#include "app/release_profile_catalogue.h"
#include "app/text_format.h"

namespace sb {

namespace {

constexpr const char* kSettings = "Settings";
constexpr const char* kFiles = "Files";
constexpr const char* kRecentFiles = "Recent File List";

// Daily output files the daily-step release writes unless the user says otherwise.
constexpr int kDefaultOutfiles[] = {11, 14, 15, 16, 18, 28};

// One profile key bound to the field it fills.
struct binding {
    const char* section;
    std::string key;
    std::variant<bool*, uint32_t*, int16_t*, int32_t*, std::string*> field;
};

template <class Integer>
void readInteger(settings_store& store, const binding& b, Integer* field) {
    long long value = 0;
    if (!store.readInt(b.section, b.key, value)) return;
    // A value the field cannot hold is treated like a missing key.
    if (value < static_cast<long long>(std::numeric_limits<Integer>::min()) ||
        value > static_cast<long long>(std::numeric_limits<Integer>::max()))
        return;
    *field = static_cast<Integer>(value);
}

void read(settings_store& store, const binding& b) {
    std::visit(
        [&](auto* field) {
            using T = std::remove_pointer_t<decltype(field)>;
            if constexpr (std::is_same_v<T, bool>) {
                long long value = 0;
                if (store.readInt(b.section, b.key, value)) *field = value != 0;
            } else if constexpr (std::is_same_v<T, std::string>) {
                store.readString(b.section, b.key, *field);
            } else {
                readInteger(store, b, field);
            }
        },
        b.field);
}

void write(settings_store& store, const binding& b) {
    std::visit(
        [&](auto* field) {
            using T = std::remove_pointer_t<decltype(field)>;
            if constexpr (std::is_same_v<T, bool>) store.writeInt(b.section, b.key, *field ? 1 : 0);
            else if constexpr (std::is_same_v<T, std::string>) store.writeString(b.section, b.key, *field);
            else store.writeInt(b.section, b.key, static_cast<long long>(*field));
        },
        b.field);
}

// The keys in the order they are read (load) or written (save). The two
// orders differ as they always have; both are kept.
class binding_list {
public:
    explicit binding_list(app_soilbench& app) : app_(app) {}

    std::vector<binding> loadOrder() {
        addRunFlags();
        add(kSettings, "TELLURAVersion", &app_.version);
        addExecutables();
        addFileKeys();
        addDailyKeys();
        return std::move(list_);
    }
    std::vector<binding> saveOrder() {
        addExecutables();
        addFileKeys();
        add(kSettings, "TELLURAVersion", &app_.version);
        addRunFlags();
        addDailyKeys();
        return std::move(list_);
    }

private:
    template <class T>
    void add(const char* section, std::string key, T* field) {
        list_.push_back({section, std::move(key), field});
    }
    void addRunFlags() {
        add(kSettings, "RunVisible", &app_.runVisible);
        add(kSettings, "RecordList", &app_.recordList);
        add(kSettings, "RunTimeout", &app_.runTimeout);
    }
    void addExecutables() {
        for (int code = 1; code <= kVersionCount; ++code) {
            std::string name = versionDisplayName(code);
            add(kFiles, name, &app_.modelExecutables[code - 1]);
            add(kFiles, name + " LIST100", &app_.list100Executables[code - 1]);
        }
        // Ours, after the twelve executable keys.
        for (int code = 1; code <= kVersionCount; ++code)
            add(kFiles, std::string(versionDisplayName(code)) + " PROFILE", &app_.releaseProfiles[code - 1]);
    }
    void addFileKeys() {
        add(kFiles, "TelluraHelp", &app_.helpFile);
        add(kFiles, "OutputPath", &app_.outputPath);
        add(kFiles, "OutputPrefix", &app_.outputPrefix);
        add(kFiles, "BinaryLayouts", &app_.binaryLayouts);
        add(kFiles, "WineCommand", &app_.wineCommand);
        add(kFiles, "WinePrefix", &app_.winePrefix);
        add(kFiles, "RunsFolder", &app_.runsFolder);
        add(kFiles, "SlurmFolder", &app_.slurmFolder);
        add(kFiles, "ProfileFolder", &app_.profileFolder);
    }
    void addDailyKeys() {
        for (int number = 1; number <= kOutfileCount; ++number)
            add(kSettings, strprintf("Outfile%d", number), &app_.outfileSelected[number - 1]);
        add(kSettings, "SaveDailyFirstYear", &app_.saveDailyFirstYear);
        add(kSettings, "SaveDailyLastYear", &app_.saveDailyLastYear);
        add(kSettings, "ReadBinaryOutput", &app_.readBinaryOutput);
        add(kSettings, "Jobs", &app_.jobs);
        add(kSettings, "KeepRunFolders", &app_.keepRunFolders);
    }

    app_soilbench& app_;
    std::vector<binding> list_;
};

}  // namespace

app_soilbench::app_soilbench() : app_soilbench(std::string()) {}

app_soilbench::app_soilbench(std::string profilePath) : profilePath_(std::move(profilePath)) {
    for (int code = 1; code <= kVersionCount; ++code) {
        const model_version_info* info = findModelVersion(code);
        modelExecutables[code - 1] = info->modelExecutable;
        list100Executables[code - 1] = info->list100Executable;
        releaseProfiles[code - 1] = defaultReleaseProfileName(code);
    }
    for (int number : kDefaultOutfiles) outfileSelected[number - 1] = true;
}

template <class Use>
auto app_soilbench::withProfile(Use use) {
    if (profilePath_.empty()) {
        ini_settings_store store;
        return use(store);
    }
    ini_settings_store store(profilePath_);
    return use(store);
}

void app_soilbench::loadSettings() {
    withProfile([this](settings_store& store) { loadSettings(store); });
}

void app_soilbench::loadSettings(settings_store& store) {
    for (const binding& b : binding_list(*this).loadOrder()) read(store, b);
    if (jobs < 1) jobs = 1;
}

bool app_soilbench::saveSettings(message_sink& errors) {
    return withProfile([&](settings_store& store) {
        saveSettings(store);
        return store.flush(errors);
    });
}

void app_soilbench::saveSettings(settings_store& store) const {
    // The bindings point into the object; saving only reads through them.
    auto& self = const_cast<app_soilbench&>(*this);
    for (const binding& b : binding_list(self).saveOrder()) write(store, b);
}

void app_soilbench::loadRecentFiles() {
    withProfile([this](settings_store& store) { loadRecentFiles(store); });
}

bool app_soilbench::saveRecentFiles(message_sink& errors) {
    return withProfile([&](settings_store& store) {
        saveRecentFiles(store);
        return store.flush(errors);
    });
}

void app_soilbench::loadRecentFiles(settings_store& store) {
    recentFiles.clear();
    for (int number = 1; number <= kRecentFileCount; ++number) {
        std::string path;
        if (store.readString(kRecentFiles, strprintf("File%d", number), path) && !path.empty())
            recentFiles.push_back(path);
    }
}

void app_soilbench::saveRecentFiles(settings_store& store) const {
    for (int number = 1; number <= kRecentFileCount; ++number) {
        std::string key = strprintf("File%d", number);
        if (number <= static_cast<int>(recentFiles.size()))
            store.writeString(kRecentFiles, key, recentFiles[number - 1]);
        else store.remove(kRecentFiles, key);
    }
}

void app_soilbench::addRecentFile(const std::string& path) {
    recentFiles.erase(std::remove(recentFiles.begin(), recentFiles.end(), path), recentFiles.end());
    recentFiles.insert(recentFiles.begin(), path);
    if (recentFiles.size() > kRecentFileCount) recentFiles.resize(kRecentFileCount);
}

std::string app_soilbench::versionName(int code) const { return versionDisplayName(code); }

std::string app_soilbench::modelExecutable(int code) const {
    return isValidVersion(code) ? modelExecutables[code - 1] : std::string();
}

std::string app_soilbench::list100Executable(int code) const {
    return isValidVersion(code) ? list100Executables[code - 1] : std::string();
}

std::string app_soilbench::releaseProfile(int code) const {
    return isValidVersion(code) ? releaseProfiles[code - 1] : std::string();
}

std::string app_soilbench::userProfileFolder() const {
    return profileFolder.empty() ? release_profile_catalogue::defaultUserFolder() : localPath(profileFolder);
}

std::string app_soilbench::modelExecutablePath(int code) const { return localPath(modelExecutable(code)); }

std::string app_soilbench::list100ExecutablePath(int code) const { return localPath(list100Executable(code)); }

std::string app_soilbench::runDirectory(int code) const { return directoryOf(modelExecutablePath(code)); }

std::vector<std::string> app_soilbench::binaryLayoutFiles() const {
    std::vector<std::string> files;
    size_t start = 0;
    while (start <= binaryLayouts.size()) {
        size_t end = binaryLayouts.find(';', start);
        if (end == std::string::npos) end = binaryLayouts.size();
        std::string_view piece = trim(std::string_view(binaryLayouts).substr(start, end - start));
        if (!piece.empty()) files.emplace_back(piece);
        start = end + 1;
    }
    return files;
}

std::string localPath(const std::string& configured) {
    if (configured.empty()) return {};
    std::string path = configured;
    std::replace(path.begin(), path.end(), '\\', '/');
    if (path.size() >= 2 && std::isalpha(static_cast<unsigned char>(path[0])) && path[1] == ':') path.erase(0, 2);
    if (path.empty()) return {};
    std::filesystem::path result(path);
    if (result.is_relative()) {
        std::error_code ec;
        std::filesystem::path here = std::filesystem::current_path(ec);
        if (!ec) result = here / result;
    }
    return result.lexically_normal().string();
}

std::string directoryOf(const std::string& path) {
    size_t slash = path.rfind('/');
    if (slash == std::string::npos) return {};
    return path.substr(0, slash + 1);
}

}  // namespace sb
