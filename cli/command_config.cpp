// soilbench config: the per-user profile as scripts see it. Keys are named
// "Section/Key" exactly as the profile stores them (e.g. "Settings/RunTimeout",
// "Files/Diurna 4.5"). Values go through the settings object, so a value is
// kept only when the program itself would read it back the same way.
#include <iostream>
#include <map>
#include <utility>
#include <vector>

#include "app/settings_store.h"
#include "cli_context.h"
#include "cli_options.h"

namespace sbcli {
namespace {

// The settings written in order into memory, so they can be listed and edited.
class memory_settings_store : public sb::settings_store {
public:
    struct entry {
        std::string key;  // "Section/Key"
        std::string value;
        bool isInt;
    };
    std::vector<entry> entries;

    entry* findEntry(std::string_view key) {
        for (auto& e : entries)
            if (e.key == key) return &e;
        return nullptr;
    }
    bool readInt(std::string_view s, std::string_view k, long long& value) override {
        entry* e = findEntry(join(s, k));
        if (!e) return false;
        char* end = nullptr;
        long long v = std::strtoll(e->value.c_str(), &end, 10);
        if (e->value.empty() || *end != '\0') return false;
        value = v;
        return true;
    }
    bool readString(std::string_view s, std::string_view k, std::string& value) override {
        entry* e = findEntry(join(s, k));
        if (!e) return false;
        value = e->value;
        return true;
    }
    void writeInt(std::string_view s, std::string_view k, long long value) override {
        put(join(s, k), std::to_string(value), true);
    }
    void writeString(std::string_view s, std::string_view k, std::string_view value) override {
        put(join(s, k), std::string(value), false);
    }
    void remove(std::string_view s, std::string_view k) override {
        std::string key = join(s, k);
        std::erase_if(entries, [&](const entry& e) { return e.key == key; });
    }
    bool flush(sb::message_sink&) override { return true; }

private:
    static std::string join(std::string_view s, std::string_view k) { return std::string(s) + "/" + std::string(k); }
    void put(std::string key, std::string value, bool isInt) {
        if (entry* e = findEntry(key)) {
            e->value = std::move(value);
            e->isInt = isInt;
        } else {
            entries.push_back({std::move(key), std::move(value), isInt});
        }
    }
};

// A version's release profile must name a profile that exists and serves that
// version; a wrong name would only show when the next run fails.
bool releaseProfileUsable(const sb::app_soilbench& settings, const std::string& key) {
    for (int code = 1; code <= sb::kVersionCount; ++code) {
        if (key != std::string("Files/") + sb::versionDisplayName(code) + " PROFILE") continue;
        sb::message_sink errors;
        sb::release_profile_catalogue profiles = loadReleaseProfiles(settings, errors);
        if (sb::chooseReleaseProfile(profiles, settings.releaseProfile(code), code, errors)) return true;
        report(errors);
        return false;
    }
    return true;
}

}  // namespace

int cmdConfig(const config_options& opt) {
    sb::app_soilbench settings = loadUserSettings();
    memory_settings_store store;
    settings.saveSettings(store);

    if (!opt.get.empty()) {
        auto* e = store.findEntry(opt.get);
        if (!e) {
            std::cerr << "ERROR, no such setting: \"" << opt.get << "\" (see soilbench config --list).\n";
            return kExitFailed;
        }
        std::cout << e->value << "\n";
        return kExitOk;
    }
    if (!opt.set.empty()) {
        size_t eq = opt.set.find('=');
        if (eq == std::string::npos) {
            std::cerr << "ERROR, --set takes KEY=VALUE, e.g. Settings/RunTimeout=60000.\n";
            return kExitUsage;
        }
        std::string key = opt.set.substr(0, eq), value = opt.set.substr(eq + 1);
        auto* e = store.findEntry(key);
        if (!e) {
            std::cerr << "ERROR, no such setting: \"" << key << "\" (see soilbench config --list).\n";
            return kExitFailed;
        }
        e->value = value;
        long long probe = 0;
        if (e->isInt && !store.readInt(key.substr(0, key.find('/')), key.substr(key.find('/') + 1), probe)) {
            std::cerr << "ERROR, setting \"" << key << "\" takes a whole number, not \"" << value << "\".\n";
            return kExitFailed;
        }
        if (key == "Settings/RunTimeout" && (probe < 0 || probe > sb::kMaxRunTimeout)) {
            std::cerr << "ERROR, Settings/RunTimeout must be from 0 to " << sb::kMaxRunTimeout << " milliseconds.\n";
            return kExitFailed;
        }
        settings.loadSettings(store);
        if (!releaseProfileUsable(settings, key)) return kExitFailed;
        return saveUserSettings(settings) ? kExitOk : kExitFailed;
    }
    for (const auto& e : store.entries) std::cout << e.key << "=" << e.value << "\n";
    return kExitOk;
}

}  // namespace sbcli
