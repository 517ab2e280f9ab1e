#include "standin_fixture.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <cstdio>
#include <filesystem>

namespace sbtest {
namespace {

std::string format(const char* pattern, double value) {
    char buffer[128];
    std::snprintf(buffer, sizeof buffer, pattern, value);
    return buffer;
}

// The schedule as the workbench writes it for release 1 (an event file) and release 3.
std::string schedule(const standin_setup& setup) {
    const bool one = setup.release == 1;
    std::string text = one ? "" : "#7 test record\n";
    text += "1950          starting year\n1960          Last year\nsbsite.100    Site file name\n";
    text += "0             Labeling type\n-1            Labeling year\n-1            Microcosm\n";
    text += "-1            CO2 Systems\n";
    if (!one)
        text +=
            "-1            pH Shift\n-1            Soil warming\n0             N input scalar option\n"
            "0             OMAD input scalar option\n0             Climate scalar option\n";
    text += "1             Initial system\nG3            Initial Crop\n              Initial Tree\n";
    text += "\nYear Month Option\n";
    auto interval = [&](double months) {
        return one ? format("%-10.5f    Output interval\n", months / 12.0)
                   : format("%-5.0f         Output interval\n", months);
    };
    auto event = [](const char* command, const char* item) {
        return std::string("01  04 ") + command + " " + item + "\n";
    };
    text +=
        "1             Block #    first\n1955          Last year\n1             Repeats # years\n"
        "1950          Output starting year\n1             Output Month\n";
    text += interval(12) + "M             Weather choice\n";
    text += event("CROP", "C8") + "01  05 FERT N30\n";
    text += "-999 -999 X\n";
    text +=
        "2             Block #    second\n1960          Last year\n1             Repeats # years\n"
        "1956          Output starting year\n1             Output Month\n";
    text += interval(1) + "M             Weather choice\n";
    text += event("CROP", "G3") + "-999 -999 X\n";
    return text;
}

}  // namespace

float floatAt(const std::string& bytes, size_t offset) {
    uint32_t bits = 0;
    for (int i = 3; i >= 0; --i) bits = (bits << 8) | static_cast<unsigned char>(bytes[offset + i]);
    float value;
    std::memcpy(&value, &bits, 4);
    return value;
}

uint32_t uint32At(const std::string& bytes, size_t offset) {
    uint32_t value = 0;
    for (int i = 3; i >= 0; --i) value = (value << 8) | static_cast<unsigned char>(bytes[offset + i]);
    return value;
}

// The 1-byte-marker framing, strictly: format byte 75, physical records
// "L data L" (129: 128 bytes, record goes on), a final 130 and nothing after.
bool parseOneByteFraming(const std::string& file, std::vector<std::string>& records,
                         std::vector<std::vector<int>>* markers) {
    if (file.empty() || static_cast<unsigned char>(file[0]) != 75) return false;
    size_t at = 1;
    std::string record;
    std::vector<int> recordMarkers;
    while (at < file.size()) {
        int marker = static_cast<unsigned char>(file[at++]);
        if (marker == 130) return at == file.size() && record.empty();
        if (marker == 0 || marker > 129) return false;
        size_t length = marker == 129 ? 128 : static_cast<size_t>(marker);
        if (at + length + 1 > file.size() || static_cast<unsigned char>(file[at + length]) != marker) return false;
        record.append(file, at, length);
        recordMarkers.push_back(marker);
        at += length + 1;
        if (marker != 129) {
            records.push_back(record);
            if (markers) markers->push_back(recordMarkers);
            record.clear();
            recordMarkers.clear();
        }
    }
    return false;  // no end byte
}

bool parseFourByteFraming(const std::string& file, std::vector<std::string>& records) {
    size_t at = 0;
    while (at < file.size()) {
        if (at + 4 > file.size()) return false;
        uint32_t length = uint32At(file, at);
        if (at + 8 + length > file.size() || uint32At(file, at + 4 + length) != length) return false;
        records.push_back(file.substr(at + 4, length));
        at += 8 + length;
    }
    return true;
}

std::string standinPath() { return binDir() + "/tellura-standin"; }

std::string runInDirectory(const std::string& directory, const std::string& command) {
    std::string full = "cd '" + directory + "' && " + command + " 2>&1";
    FILE* pipe = popen(full.c_str(), "r");
    std::string output;
    std::array<char, 4096> buffer{};
    size_t got;
    while (pipe && (got = fread(buffer.data(), 1, buffer.size(), pipe)) > 0) output.append(buffer.data(), got);
    if (pipe) pclose(pipe);
    return output;
}

standin_run_dir::standin_run_dir(const standin_setup& setup) : release_(setup.release) {
    std::filesystem::create_symlink(standinPath(), model());
    std::filesystem::create_symlink(standinPath(), list100());
    writeInputs(setup);
}

void standin_run_dir::writeInputs(const standin_setup& setup) const {
    writeFile(file("sbsite.100"),
              "Site  test site\n5.00000        PRECIP(1)\n0.30000        CLAY\n0.40000        SAND\n");
    writeFile(file("fix.100"), "X     Fixed values\n10.00000       ADEP(1)\n");
    writeFile(file("crop.100"), "C8    corn\n0.70000        PRDX(1)\nG3    grass\n0.40000        PRDX(1)\n");
    writeFile(file("fert.100"), "N30   nitrogen\n30.00000       FERAMT(1)\n");
    for (const char* name :
         {"cult.100", "harv.100", "graz.100", "irri.100", "omad.100", "tree.100", "trem.100", "fire.100"})
        writeFile(file(name), "");
    writeFile(file(setup.release == 1 ? "sb.evt" : "sb.sch"), schedule(setup));
}

std::string standin_run_dir::runModel() const {
    const char* arguments = release_ == 1 ? " -s sb -n sb.bin -W sbNew.100" : " -s sb -n sb";
    return runInDirectory(path(), "'" + model() + "' --release " + std::to_string(release_) + arguments);
}

}  // namespace sbtest
