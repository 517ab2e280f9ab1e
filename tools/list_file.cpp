#include "list_file.h"

#include "binary_file.h"
#include "standin_text.h"
#include "strict_outputs.h"

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

list_format listFormatOfRelease(int release) {
    list_format format;
    format.counts = arrayCounts(release);
    format.narrow = release == 2;
    format.timeFormat = release == 2 ? "%7.2f" : release == 1 ? "%-11.2f" : "%11.2f";
    return format;
}

std::string formatListFile(const list_format& layout, const std::vector<std::string>& names,
                           const std::vector<const layout_entry*>& entries,
                           const std::vector<std::vector<float>>& records) {
    bool narrow = layout.narrow;
    std::string text = narrow ? "   time  " : "       time";
    for (const std::string& name : names)
        text += narrow ? formatName("%-15.15s", name) : formatName("     %-11.11s", name);
    text += std::string(layout.lineEnd) + layout.lineEnd;
    for (const std::vector<float>& record : records) {
        std::string row = format(layout.timeFormat, record[0]);
        for (const layout_entry* entry : entries)
            row += format(narrow ? "%15.4f" : "     %11.4f", record[1 + entry->offset(layout.counts)]);
        text += (layout.dropLeadingZeros ? withoutLeadingZeros(row) : row) + layout.lineEnd;
    }
    return text;
}

namespace {

// The layout of the records: the strict release's reference file, or the
// release that the record size tells.
bool listLayout(const std::vector<std::vector<float>>& records, const std::string& exeDir, const strict_list& strict,
                list_format& format, binary_layout& layout, std::string& errors) {
    if (strict.release) {
        if (!layoutCounts(strict.reference->layoutFile, format.counts, errors) ||
            !layout.readFile(strict.reference->layoutFile, format.counts, errors))
            return false;
        format.dropLeadingZeros = strict.release->dropLeadingZero;
        format.lineEnd = strict.release->windowsLineEnds ? "\r\n" : "\n";
        int bytes = records.empty() ? format.counts.recordBytes() : static_cast<int>(records[0].size() * 4);
        if (bytes == format.counts.recordBytes()) return true;
        errors += "stand-in list100: error: records of " + std::to_string(bytes) + " bytes, the release writes " +
                  std::to_string(format.counts.recordBytes()) + "\n";
        return false;
    }
    int release = records.empty() ? 4 : releaseOfRecordBytes(static_cast<int>(records[0].size() * 4));
    if (release == 0) {
        errors += "stand-in list100: error: unknown record size in the binary file\n";
        return false;
    }
    format = listFormatOfRelease(release);
    return layout.load(release, exeDir, errors);
}

}  // namespace

bool writeListFile(const list_request& request, const std::string& exeDir, std::string& console, std::string& errors,
                   const strict_list& strict) {
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
    std::vector<std::string> requested;
    if (!readLines(request.variablesFile, requested)) {
        errors += "stand-in list100: error: cannot read " + request.variablesFile + "\n";
        return false;
    }
    list_format format;
    binary_layout layout;
    if (!listLayout(records, exeDir, strict, format, layout, errors)) return false;
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
    out << formatListFile(format, names, entries, records);
    if (!out) {
        errors += "stand-in list100: error: cannot write " + withExtension(request.listFile, ".lis") + "\n";
        return false;
    }
    if (!strict.release) console += "Stand-in list100: " + std::to_string(records.size()) + " records listed.\n";
    return true;
}

}  // namespace standin
