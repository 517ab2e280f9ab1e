#pragma once
// The help index read from the help file "SoilbenchHelp.csv".
//
// File format: line 1 is exactly "Variable,Table,VersionFirst,VersionLast".
// Every further line: Variable, Table, VersionFirst, VersionLast (0 means up
// to the last version, 6), short text, help text. Fields are separated by
// commas; a field that holds a comma (or a double quote) is written in
// double quotes, with a quote inside it doubled ("a ""b"", c"). Lines end in
// LF or CR LF and hold up to 10240 characters: the rest of a longer line is
// not read. Lines that are empty are skipped; a UTF-8 byte order mark before
// the header is allowed. Loading stops at the first bad
// line; what was read before it stays usable.
#include <cstdint>
#include <string>
#include <string_view>

#include "app/message_sink.h"
#include "help/list_field_help.h"

namespace sb {

class app_soilbench;

class list_field_help_tellura : public list_field_help {
public:
    static constexpr size_t kMaxLineLength = 10240;
    static constexpr const char* kHeader = "Variable,Table,VersionFirst,VersionLast";

    // Replaces the index with the file's contents. Messages go to `messages`;
    // false when the file could not be opened or a line stopped the load.
    bool load(const std::string& path, message_sink& messages);
    bool loadText(std::string_view text, const std::string& path, message_sink& messages);

    struct found {
        const field_help* entry = nullptr;
        const field_help_version_tellura* version = nullptr;
        explicit operator bool() const { return version != nullptr; }
    };
    found find(std::string_view name, int32_t table, int version) const;

    // "name (short): help\r\nVersions: Tellura 4.5, Diurna 4.5"; for a name
    // without help, "Not Found: name".
    std::string describe(std::string_view name, int32_t table, int version) const;
    // "[version label] help text"; for a name without help, "Not Found: name".
    std::string helpBoxText(std::string_view name, int32_t table, int version) const;
};

// The help file to load: the settings' help file (a relative path resolved
// against the current directory), except that the default setting
// "SoilbenchHelp.csv" means SoilbenchHelp.csv of the data folder (see
// app/program_location.h) when that exists.
std::string findHelpFile(const app_soilbench& settings);
// Same, with the data folder given (for tests).
std::string findHelpFile(const std::string& dataDir, const app_soilbench& settings);

}  // namespace sb
