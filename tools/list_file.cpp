#include "list_file.h"

#include "binary_file.h"
#include "standin_text.h"

#include <cstdio>
#include <fstream>
#include <sstream>

namespace standin {
namespace {

std::string withExtension(const std::string& name, const char* extension) {
    return name.find('.') == std::string::npos ? name + extension : name;
}

std::string format(const char* pattern, double value) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, pattern, value);
    return buffer;
}

std::string formatName(const char* pattern, const std::string& name) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, pattern, name.c_str());
    return buffer;
}

}  // namespace

std::string formatListFile(int release, const std::vector<std::string>& names,
                           const std::vector<const layout_entry*>& entries,
                           const std::vector<std::vector<float>>& records) {
    bool narrow = release == 2;
    array_counts counts = arrayCounts(release);
    std::string text = narrow ? "   time  " : "       time";
    for (const std::string& name : names)
        text += narrow ? formatName("%-15.15s", name) : formatName("     %-11.11s", name);
    text += "\n\n";
    const char* timeFormat = narrow ? "%7.2f" : release == 1 ? "%-11.2f" : "%11.2f";
    for (const std::vector<float>& record : records) {
        text += format(timeFormat, record[0]);
        for (const layout_entry* entry : entries)
            text += format(narrow ? "%15.4f" : "     %11.4f", record[1 + entry->offset(counts)]);
        text += "\n";
    }
    return text;
}

bool writeListFile(const list_request& request, const std::string& exeDir, std::string& console, std::string& errors) {
    std::string binaryPath = withExtension(request.binaryFile, ".bin");
    std::ifstream binary(binaryPath, std::ios::binary);
    if (!binary) {
        errors += "stand-in list100: error: cannot read " + binaryPath + "\n";
        return false;
    }
    std::stringstream bytes;
    bytes << binary.rdbuf();
    std::vector<std::vector<float>> records;
    if (!decodeBinaryFile(bytes.str(), records, errors)) return false;
    int release = records.empty() ? 4 : releaseOfRecordBytes(static_cast<int>(records[0].size() * 4));
    if (release == 0) {
        errors += "stand-in list100: error: unknown record size in " + binaryPath + "\n";
        return false;
    }
    std::vector<std::string> requested;
    if (!readLines(request.variablesFile, requested)) {
        errors += "stand-in list100: error: cannot read " + request.variablesFile + "\n";
        return false;
    }
    binary_layout layout;
    if (!layout.load(release, exeDir, errors)) return false;
    std::vector<std::string> names;
    std::vector<const layout_entry*> entries;
    for (const std::string& line : requested) {
        std::string name(trimBlanks(line));
        if (name.empty()) continue;
        const layout_entry* entry = layout.find(name);
        if (!entry) {
            console += "Variable not found, skipping: " + name + "\n";
            continue;
        }
        names.push_back(name);
        entries.push_back(entry);
    }
    std::ofstream out(withExtension(request.listFile, ".lis"), std::ios::binary);
    out << formatListFile(release, names, entries, records);
    if (!out) {
        errors += "stand-in list100: error: cannot write " + withExtension(request.listFile, ".lis") + "\n";
        return false;
    }
    console += "Stand-in list100: " + std::to_string(records.size()) + " records listed.\n";
    return true;
}

}  // namespace standin
