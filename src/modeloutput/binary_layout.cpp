#include "modeloutput/binary_layout.h"

#include "app/text_file.h"

#include <charconv>
#include <filesystem>
#include <set>
#include <sstream>

#include "app/model_version.h"
#include "app/program_location.h"
#include "app/text_format.h"
#include "modeloutput/output_line_reader.h"

namespace sb {

namespace {

constexpr int kMaxArrayLength = 100000;  // far beyond any model build; guards a broken file

int arrayOfBlock(std::string_view block) {
    if (iequals(block, "plot1")) return 0;
    if (iequals(block, "plot2")) return 1;
    if (iequals(block, "plot3")) return 2;
    return -1;
}

bool parseInt(std::string_view text, int& value) {
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return ec == std::errc() && end == text.data() + text.size();
}

// "# version 4" (also "#version<TAB>4").
void readComment(std::string_view line, binary_layout& layout) {
    std::vector<std::string_view> words = splitTokenViews(line.substr(1));
    int version = 0;
    if (words.size() == 2 && iequals(words[0], "version") && parseInt(words[1], version)) layout.version = version;
}

bool addEntry(const std::vector<std::string_view>& fields, binary_layout& layout) {
    int array = fields.size() == 3 ? arrayOfBlock(fields[0]) : -1;
    int index = 0;
    if (array < 0 || !parseInt(fields[1], index) || index < 1 || index > kMaxArrayLength) return false;
    auto& names = layout.names[static_cast<size_t>(array)];
    if (names.size() < static_cast<size_t>(index)) names.resize(static_cast<size_t>(index));
    if (!names[static_cast<size_t>(index - 1)].empty()) return false;  // one variable per place
    names[static_cast<size_t>(index - 1)] = std::string(fields[2]);
    return true;
}

}  // namespace

int binary_layout::floatPosition(int array, int index) const {
    int start = 1;
    for (int a = 0; a < array; ++a) start += count(a);
    return start + index;
}

bool loadBinaryLayout(const std::string& path, binary_layout& layout, message_sink& errors) {
    output_line_reader reader;
    if (!reader.open(path)) {
        errors.errorf("ERROR, unable to open binary layout file \"%s\".\n", path.c_str());
        return false;
    }
    layout = binary_layout{};
    layout.source = path;
    layout.description = path;
    bool entrySeen = false;
    while (reader.next()) {
        std::string_view line = trim(reader.line());
        if (line.empty()) continue;
        if (line.front() == '#') {
            readComment(line, layout);
            continue;
        }
        std::vector<std::string_view> fields = splitTokenViews(line);
        bool columnHeader = !entrySeen && fields.size() == 3 && iequals(fields[0], "block");
        entrySeen = true;
        if (columnHeader) continue;
        if (!addEntry(fields, layout)) {
            errors.errorf(
                "ERROR, binary layout file \"%s\" line %ld: expected \"block index name\" with "
                "block plot1, plot2 or plot3, an index from 1 and a place not used before.\n",
                path.c_str(), reader.lineNumber());
            return false;
        }
    }
    if (!reader.withinLimit(errors)) return false;
    if (layout.count(0) + layout.count(1) + layout.count(2) == 0) {
        errors.errorf("ERROR, binary layout file \"%s\" names no variables.\n", path.c_str());
        return false;
    }
    return true;
}

bool binary_layout_catalogue::addFile(const std::string& path, message_sink& errors) {
    binary_layout layout;
    if (!loadBinaryLayout(path, layout, errors)) return false;
    layouts_.push_back(std::move(layout));
    return true;
}

bool binary_layout_catalogue::loadShipped(const std::string& directory, message_sink& errors) {
    std::string indexPath = (std::filesystem::path(directory) / "layouts.tsv").string();
    output_line_reader index;
    if (!index.open(indexPath)) {
        errors.errorf("ERROR, unable to open binary layout index \"%s\".\n", indexPath.c_str());
        return false;
    }
    bool ok = true;
    while (index.next()) {
        std::string_view line = trim(index.line());
        if (line.empty() || line.front() == '#') continue;
        // file <TAB> version <TAB> description (the description may hold blanks)
        size_t tab1 = line.find('\t');
        size_t tab2 = tab1 == std::string_view::npos ? tab1 : line.find('\t', tab1 + 1);
        int version = 0;
        if (tab2 == std::string_view::npos || !parseInt(trim(line.substr(tab1 + 1, tab2 - tab1 - 1)), version)) {
            errors.errorf(
                "ERROR, binary layout index \"%s\" line %ld: expected \"file<TAB>version<TAB>description\".\n",
                indexPath.c_str(), index.lineNumber());
            ok = false;
            continue;
        }
        std::string file = (std::filesystem::path(directory) / std::string(trim(line.substr(0, tab1)))).string();
        if (!addFile(file, errors)) {
            ok = false;
            continue;
        }
        layouts_.back().version = version;
        layouts_.back().description = std::string(trim(line.substr(tab2 + 1)));
    }
    return index.withinLimit(errors) && ok;
}

const binary_layout* binary_layout_catalogue::find(int versionIndex, long recordBytes) const {
    for (const auto& layout : layouts_)
        if ((layout.version == 0 || layout.version == versionIndex) && layout.recordBytes() == recordBytes)
            return &layout;
    return nullptr;
}

std::string binary_layout_catalogue::knownSizes(int versionIndex) const {
    std::set<long> sizes;
    for (const auto& layout : layouts_)
        if (layout.version == 0 || layout.version == versionIndex) sizes.insert(layout.recordBytes());
    std::string out;
    for (long size : sizes) out += (out.empty() ? "" : ", ") + std::to_string(size);
    return out;
}

std::string binary_layout_catalogue::noLayoutMessage(const std::string& path, int versionIndex,
                                                     long recordBytes) const {
    const std::string name = versionDisplayName(versionIndex);
    const std::string release = name.empty() ? strprintf("version %d", versionIndex)
                                             : strprintf("\"%s\" (version %d)", name.c_str(), versionIndex);
    std::string sizes;  // each layout of the version with its file, so that a wrong one can be found
    for (const auto& layout : layouts_)
        if (layout.version == 0 || layout.version == versionIndex)
            appendf(sizes, "%s%ld bytes (%s)", sizes.empty() ? "" : ", ", layout.recordBytes(), layout.source.c_str());
    std::string message;
    if (sizes.empty())
        appendf(message,
                "ERROR, no binary layout is known for %s, so its binary output file \"%s\" (records of %ld bytes) "
                "cannot be read.",
                release.c_str(), path.c_str(), recordBytes);
    else
        appendf(message,
                "ERROR, binary output file \"%s\" has records of %ld bytes, but the binary layouts known for %s "
                "have %s.",
                path.c_str(), recordBytes, release.c_str(), sizes.c_str());
    appendf(message,
            " To add the layout of this model build, write one line \"block<TAB>index<TAB>name\" per variable "
            "(block plot1, plot2 or plot3 for arrays 1 to 3, index from 1) and a line \"# version %d\", as the "
            "shipped layouts in %s are written, and name the file in the setting Files/BinaryLayouts (see "
            "\"Binary output layouts\" in the README).",
            versionIndex, shippedDirectory().c_str());
    // Release 1 has no variable lists for the list utility: its binary file is all there is.
    if (versionIndex == kTellura4Agricultural)
        message += " Release 1 is read from its binary file only: its runs fail until the layout is added.\n";
    else message += " Meanwhile its outputs can be read through the list utility: turn \"Read binary output\" off.\n";
    return message;
}

binary_layout_catalogue loadBinaryLayouts(const std::vector<std::string>& userFiles, message_sink& errors) {
    binary_layout_catalogue layouts;
    for (const auto& file : userFiles) layouts.addFile(file, errors);
    layouts.loadShipped(binary_layout_catalogue::shippedDirectory(), errors);
    return layouts;
}

std::string binary_layout_catalogue::shippedDirectory() {
    return (std::filesystem::path(dataDirectory()) / "binary-layouts").string();
}

}  // namespace sb
