#pragma once
// The per-user profile: a QSettings INI file. By default it is the user's
// profile of organisation "Varnak", application "Soilbench"
// (~/.config/Varnak/Soilbench.ini on Linux); a path picks another file, which
// is how tests keep away from the real profile.
//
// QSettings writes keys holding blanks percent-encoded ("Tellura%204.5=") and
// backslashes in values doubled; it reads its own encoding back unchanged.
#include <memory>
#include <string>

#include "app/message_sink.h"
#include "app/settings_store.h"

class QSettings;

namespace sb {

class ini_settings_store : public settings_store {
public:
    // The user's profile.
    ini_settings_store();
    // The INI file at `path`.
    explicit ini_settings_store(const std::string& path);
    ~ini_settings_store() override;

    // Path of the file in use.
    std::string fileName() const;

    bool readInt(std::string_view section, std::string_view key, long long& value) override;
    bool readString(std::string_view section, std::string_view key, std::string& value) override;
    void writeInt(std::string_view section, std::string_view key, long long value) override;
    void writeString(std::string_view section, std::string_view key, std::string_view value) override;
    void remove(std::string_view section, std::string_view key) override;
    bool flush(message_sink& errors) override;

private:
    std::unique_ptr<QSettings> settings_;
};

}  // namespace sb
