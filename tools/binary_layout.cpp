#include "binary_layout.h"

#include "standin_text.h"

#include <cstdlib>
#include <set>

namespace standin {
namespace {

// The variables the workbench asks for, in one list; the default placement
// puts them into array 1 in this order (as the model keeps most of its
// variables there), and the monthly root names after them.
const char* const kDefaultNames[] = {
    "agcacc",      "agcprd",      "aglcis(1)",   "aglcis(2)",   "aglcn",       "aglivc",      "aglive(1)",
    "aglive(2)",   "aglive(3)",   "aminrl(1)",   "aminrl(2)",   "aminrl(3)",   "avh2o(1)",    "avh2o(2)",
    "avh2o(3)",    "bgcacc",      "bgcjacc",     "bgcmacc",     "bgcprd",      "bgcjprd",     "bgcmprd",
    "bglcn",       "bglcnj",      "bglcnm",      "bglivc",      "bglivcj",     "bglivcm",     "cgrain",
    "cinput",      "clittr(1,1)", "clittr(2,1)", "clittr(1,2)", "clittr(2,2)", "cprodc",      "cproda",
    "cprodf",      "creta",       "crootc",      "crpval",      "eupprd(1)",   "eupprd(2)",   "eupprd(3)",
    "fbrchc",      "fcprd",       "fertac(1)",   "fertac(2)",   "fertac(3)",   "frootc",      "frstc",
    "metabc(1)",   "metabc(2)",   "metabe(1,1)", "metabe(1,2)", "metabe(1,3)", "metabe(2,1)", "metabe(2,2)",
    "metabe(2,3)", "metcis(1,1)", "metcis(1,2)", "metcis(2,1)", "metcis(2,2)", "petann",      "prcann",
    "resp(1)",     "resp(2)",     "rleavc",      "rlwodc",      "runoff",      "sclosa",      "scloss",
    "sdrema",      "shrema",      "som1c(1)",    "som1c(2)",    "som2c(1)",    "som2c(2)",    "som3c",
    "somsc",       "somtc",       "stdedc",      "strcis(1,1)", "strcis(1,2)", "strcis(2,1)", "strcis(2,2)",
    "strmac(1)",   "strmac(2)",   "strmac(3)",   "strmac(4)",   "strmac(5)",   "strmac(6)",   "strmac(7)",
    "strmac(8)",   "strucc(1)",   "strucc(2)",   "struce(1,1)", "struce(1,2)", "struce(1,3)", "struce(2,1)",
    "struce(2,2)", "struce(2,3)", "tcerat(1)",   "tcrem",       "totc",        "totsysc",     "totsyse(1)",
    "totsyse(2)",  "totsyse(3)",  "wdfx",        "woode(1)",    "woode(2)",    "woode(3)"};

int arrayOfBlock(const std::string& block) {
    if (block == "plot1") return 1;
    if (block == "plot2") return 2;
    if (block == "plot3") return 3;
    return 0;
}

// The index of shipped layouts: "file<TAB>version<TAB>description" lines;
// the first file listed for the release is taken.
std::string layoutFromIndex(const std::string& dir, int release) {
    std::vector<std::string> lines;
    if (!readLines(dir + "layouts.tsv", lines)) return "";
    for (const std::string& line : lines) {
        if (line.empty() || line[0] == '#') continue;
        size_t tab = line.find('\t');
        if (tab == std::string::npos) continue;
        std::optional<long> version = parseInteger(line.substr(tab + 1, line.find('\t', tab + 1) - tab - 1));
        if (version && *version == release && fileExists(dir + line.substr(0, tab))) return line.substr(0, tab);
    }
    return "";
}

// The workbench's shipped layouts: SOILBENCH_DATA_DIR (as the workbench reads
// it), else share/soilbench beside bin/ (a build tree) or two levels up from
// libexec/soilbench/ (an installed tree).
std::string shippedLayoutDirectory(const std::string& exeDir) {
    if (const char* data = std::getenv("SOILBENCH_DATA_DIR"); data && *data)
        return std::string(data) + "/binary-layouts/";
    for (const char* up : {"/..", "/../.."}) {
        std::string dir = exeDir + up + "/share/soilbench/binary-layouts/";
        if (fileExists(dir + "layouts.tsv")) return dir;
    }
    return exeDir + "/../share/soilbench/binary-layouts/";
}

}  // namespace

array_counts arrayCounts(int release) {
    switch (release) {
        case 1:
            return {280, 109, 129};
        case 3:
        case 5:
            return {340, 120, 129};
        case 4:
            return {445, 218, 139};
        default:
            return {279, 105, 111};
    }
}

int releaseOfRecordBytes(int bytes) {
    for (int release : {1, 2, 3, 4})
        if (arrayCounts(release).recordBytes() == bytes) return release;
    return 0;
}

int layout_entry::offset(const array_counts& counts) const {
    int start = array == 1 ? 0 : array == 2 ? counts.count1 : counts.count1 + counts.count2;
    return start + index - 1;
}

bool binary_layout::readFile(const std::string& path, const array_counts& counts, std::string& errors) {
    std::vector<std::string> lines;
    if (!readLines(path, lines)) {
        errors += "stand-in model: error: cannot read layout file " + path + "\n";
        return false;
    }
    entries_.clear();
    const int limits[4] = {0, counts.count1, counts.count2, counts.count3};
    for (size_t i = 0; i < lines.size(); ++i) {
        std::vector<std::string> fields = splitBlanks(lines[i]);
        if (fields.empty() || (i == 0 && fields[0] == "block")) continue;
        int array = fields.size() == 3 ? arrayOfBlock(fields[0]) : 0;
        std::optional<long> index = array ? parseInteger(fields[1]) : std::nullopt;
        if (!index || *index < 1 || *index > limits[array]) {
            errors += "stand-in model: error: malformed layout line " + path + " line " + std::to_string(i + 1) + "\n";
            return false;
        }
        entries_.push_back({array, static_cast<int>(*index), fields[2]});
    }
    source_ = path;
    return true;
}

void binary_layout::useDefault(const array_counts& counts) {
    entries_.clear();
    int index = 1;
    for (const char* name : kDefaultNames) entries_.push_back({1, index++, name});
    // The monthly root carbon of the daily-step release, in array 2.
    int index2 = 1;
    for (const char* root : {"bgcjmth", "bgcmmth"})
        for (int month = 1; month <= 12 && index2 <= counts.count2; ++month)
            entries_.push_back({2, index2++, std::string(root) + "(" + std::to_string(month) + ")"});
    source_ = "built-in placement";
}

bool binary_layout::load(int release, const std::string& exeDir, std::string& errors) {
    array_counts counts = arrayCounts(release);
    if (const char* path = std::getenv("SB_STANDIN_LAYOUT"); path && *path) return readFile(path, counts, errors);
    std::string dir = shippedLayoutDirectory(exeDir);
    std::string indexed = layoutFromIndex(dir, release);
    if (!indexed.empty()) return readFile(dir + indexed, counts, errors);
    for (const char* pattern : {"version", "release"}) {
        std::string path = dir + pattern + std::to_string(release) + ".tsv";
        if (fileExists(path)) return readFile(path, counts, errors);
    }
    useDefault(counts);
    return true;
}

const layout_entry* binary_layout::find(const std::string& name) const {
    std::string key = lower(name);
    for (const layout_entry& entry : entries_)
        if (lower(entry.name) == key) return &entry;
    return nullptr;
}

}  // namespace standin
