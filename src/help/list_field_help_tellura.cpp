#include "help/list_field_help_tellura.h"

#include "app/text_file.h"

#include <cctype>
#include <climits>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "app/app_soilbench.h"
#include "app/model_version.h"
#include "app/program_location.h"
#include "app/text_format.h"

namespace sb {

namespace {

// Splits one line into its comma-separated fields; a field in double quotes
// may hold commas, and "" inside it stands for one quote.
std::vector<std::string> splitCsv(std::string_view line) {
    std::vector<std::string> fields;
    size_t pos = 0;
    while (true) {
        std::string field;
        if (pos < line.size() && line[pos] == '"') {
            ++pos;
            while (pos < line.size()) {
                if (line[pos] == '"') {
                    if (pos + 1 < line.size() && line[pos + 1] == '"') {
                        field += '"';
                        pos += 2;
                        continue;
                    }
                    ++pos;
                    break;
                }
                field += line[pos++];
            }
            // Anything between the closing quote and the next comma is kept.
            size_t comma = line.find(',', pos);
            size_t end = comma == std::string_view::npos ? line.size() : comma;
            field.append(line.substr(pos, end - pos));
            pos = end;
        } else {
            size_t comma = line.find(',', pos);
            size_t end = comma == std::string_view::npos ? line.size() : comma;
            field.assign(line.substr(pos, end - pos));
            pos = end;
        }
        fields.push_back(std::move(field));
        if (pos >= line.size()) break;
        ++pos;  // the comma
    }
    return fields;
}

// A whole field holding one integer (blanks around it allowed).
bool parseInteger(const std::string& field, long long low, long long high, long long& value) {
    std::string_view text = trim(field);
    if (text.empty()) return false;
    size_t pos = 0;
    bool negative = false;
    if (text[0] == '+' || text[0] == '-') {
        negative = text[0] == '-';
        pos = 1;
    }
    if (pos >= text.size()) return false;
    long long result = 0;
    for (; pos < text.size(); ++pos) {
        if (!std::isdigit(static_cast<unsigned char>(text[pos]))) return false;
        result = result * 10 + (text[pos] - '0');
        if (result > INT_MAX) return false;
    }
    value = negative ? -result : result;
    return value >= low && value <= high;
}

// Lines of the file: LF or CR LF ends, each cut to the longest line allowed.
std::vector<std::string_view> helpLines(std::string_view text) {
    std::vector<std::string_view> lines;
    forEachLine(
        text, [&](std::string_view line) { lines.push_back(line.substr(0, list_field_help_tellura::kMaxLineLength)); });
    return lines;
}

std::string versionLabels(const field_help_version_tellura& entry) {
    std::string labels;
    for (int code = entry.first; code <= entry.last; ++code) {
        if (!isValidVersion(code)) continue;
        if (!labels.empty()) labels += ", ";
        labels += versionDisplayName(code);
    }
    return labels;
}

}  // namespace

bool list_field_help_tellura::load(const std::string& path, message_sink& messages) {
    std::string text;
    if (!readTextFile(path, text, messages, "ERROR, unable to open help file \"" + path + "\"\r\n")) return false;
    return loadText(text, path, messages);
}

bool list_field_help_tellura::loadText(std::string_view text, const std::string& path, message_sink& messages) {
    clear();
    // Spreadsheet programs often save a UTF-8 byte order mark first.
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) text.remove_prefix(kByteOrderMark.size());
    std::vector<std::string_view> lines = helpLines(text);
    if (lines.empty() || lines[0] != kHeader) {
        messages.errorf("ERROR in format of \"%s\".  Old version?\r\n", path.c_str());
        return false;
    }
    for (size_t index = 1; index < lines.size(); ++index) {
        if (lines[index].empty()) continue;
        long lineNumber = static_cast<long>(index);
        std::vector<std::string> fields = splitCsv(lines[index]);
        fields.resize(std::max<size_t>(fields.size(), 6));
        const std::string& name = fields[0];
        if (trim(name).empty()) {
            messages.error("ERROR, unable to parse help text.\r\n");
            return false;
        }
        long long table = 0, first = 0, last = 0;
        if (!parseInteger(fields[1], INT32_MIN, INT32_MAX, table)) {
            messages.errorf("ERROR, unable to parse help text table, name=\"%s\", line=%ld.\r\n", name.c_str(),
                            lineNumber);
            return false;
        }
        if (!parseInteger(fields[2], INT16_MIN, INT16_MAX, first)) {
            messages.errorf("ERROR, unable to parse help text first version, name=\"%s\", line=%ld.\r\n.\r\n",
                            name.c_str(), lineNumber);
            return false;
        }
        if (!parseInteger(fields[3], INT16_MIN, INT16_MAX, last)) {
            messages.errorf("ERROR, unable to parse help text last version, name=\"%s\", line=%ld.\r\n.\r\n",
                            name.c_str(), lineNumber);
            return false;
        }
        field_help* entry = findEntry(name, static_cast<int32_t>(table));
        if (!entry) entry = addEntry(name, static_cast<int32_t>(table));
        if (!entry) {
            messages.error("ERROR, invalid field name \"" + name + "\" in help text file.\r\n");
            return false;
        }
        entry->versions.push_back({static_cast<int16_t>(first), static_cast<int16_t>(last == 0 ? kVersionCount : last),
                                   fields[4], fields[5]});
    }
    return true;
}

list_field_help_tellura::found list_field_help_tellura::find(std::string_view name, int32_t table, int version) const {
    found result;
    result.entry = findEntry(name, table);
    if (result.entry) result.version = result.entry->forVersion(version);
    if (!result.version) result.entry = nullptr;
    return result;
}

std::string list_field_help_tellura::describe(std::string_view name, int32_t table, int version) const {
    found help = find(name, table, version);
    if (!help) return "Not Found: " + std::string(name);
    std::string text = help.entry->name;
    if (!help.version->shortText.empty()) text += " (" + help.version->shortText + ")";
    text += ": ";
    text += help.version->helpText;
    text += "\r\nVersions: ";
    text += versionLabels(*help.version);
    return text;
}

std::string list_field_help_tellura::helpBoxText(std::string_view name, int32_t table, int version) const {
    found help = find(name, table, version);
    if (!help) return "Not Found: " + std::string(name);
    return strprintf("[%s] %s", versionDisplayName(version), help.version->helpText.c_str());
}

std::string findHelpFile(const std::string& dataDir, const app_soilbench& settings) {
    // The setting's default (the bare file name) stands for the help file
    // shipped in the data folder; any other setting is the user's own choice.
    if (settings.helpFile == app_soilbench().helpFile) {
        std::error_code ec;
        std::filesystem::path shipped = std::filesystem::path(dataDir) / settings.helpFile;
        if (!dataDir.empty() && std::filesystem::is_regular_file(shipped, ec))
            return shipped.lexically_normal().string();
    }
    return localPath(settings.helpFile);
}

std::string findHelpFile(const app_soilbench& settings) { return findHelpFile(dataDirectory(), settings); }

}  // namespace sb
