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

// The schedule as the workbench writes it for each release.
std::string schedule(const standin_setup& setup) {
    int r = setup.release;
    bool phShift = r >= 3 && r <= 5;
    std::string text;
    if (r >= 3) text += "#7 test record\n";
    text += "1950          starting year\n1960          Last year\nsbsite.100    Site file name\n";
    text += "0             Labeling type\n-1            Labeling year\n-1            Microcosm\n";
    text += "-1            CO2 Systems\n";
    if (phShift)
        text +=
            "-1            pH Shift\n-1            Soil warming\n0             N input scalar option\n"
            "0             OMAD input scalar option\n0             Climate scalar option\n";
    text += "1             Initial system\nG3            Initial Crop\n              Initial Tree\n";
    text += "\nYear Month Option\n";
    auto interval = [&](double months) {
        return phShift ? format("%-5.0f         Output interval\n", months)
                       : format("%-10.5f    Output interval\n", months / 12.0);
    };
    auto event = [&](int year, int month, const char* command, const char* item) {
        std::string date = r == 4 ? format("%04.0f", year) + " " + format("%03.0f", month * 30.0 - 15)
                                  : format("%02.0f", year) + "  " + format("%02.0f", month);
        if (r == 2) return date + " " + command + "\n" + item + "\n";
        return date + " " + command + " " + item + "\n";
    };
    text +=
        "1             Block #    first\n1955          Last year\n1             Repeats # years\n"
        "1950          Output starting year\n1             Output Month\n";
    text += interval(12) + "M             Weather choice\n";
    text += event(1, 4, "CROP", "C8") + event(1, 5, "FERT", "N30");
    text += "-999 -999 X\n";
    text +=
        "2             Block #    second\n1960          Last year\n1             Repeats # years\n"
        "1956          Output starting year\n1             Output Month\n";
    text += interval(setup.monthlySecondBlock ? 1 : 12) + "M             Weather choice\n";
    text += event(1, 4, "CROP", "G3") + "-999 -999 X\n";
    return text;
}

std::string outfiles() {
    const char* const names[] = {"bio.out",      "soiln.out",  "soiltavg.out",     "soiltmax.out", "soiltmin.out",
                                 "stemp_dx.out", "vswc.out",   "watrbal.out",      "wfps.out",     "co2.out",
                                 "wflux.out",    "resp.out",   "year_summary.out", "livec.out",    "deadc.out",
                                 "soilc.out",    "sysc.out",   "tgmonth.out",      "dN2lyr.out",   "dN2Olyr.out",
                                 "dels.out",     "dc_sip.csv", "harvest.csv",      "cflows.out",   "year_cflows.out",
                                 "daily.out",    "nflux.out",  "summary.out"};
    std::string text = "Output (0/1)  file_name         description\n";
    for (int i = 0; i < 28; ++i) {
        char line[128];
        bool on = i + 1 == 13 || i + 1 == 26 || i + 1 == 28;
        std::snprintf(line, sizeof line, "%d             %-18s# file %d\n", on ? 1 : 0, names[i], i + 1);
        text += line;
    }
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
    writeFile(file("sbsite.100"), "Site  test site\n5.00000        PRECIP(1)\n" +
                                      format("%-10.5f     CLAY\n", setup.clay) + "0.40000        SAND\n");
    writeFile(file(setup.release == 6 ? "sbfix.100" : "fix.100"), "X     Fixed values\n10.00000       ADEP(1)\n");
    writeFile(file("crop.100"), "C8    corn\n0.70000        PRDX(1)\nG3    grass\n0.40000        PRDX(1)\n");
    writeFile(file("fert.100"), "N30   nitrogen\n" + format("%-10.5f     FERAMT(1)\n", setup.nitrogen));
    for (const char* name :
         {"cult.100", "harv.100", "graz.100", "irri.100", "omad.100", "tree.100", "trem.100", "fire.100"})
        writeFile(file(name), "");
    writeFile(file(setup.release == 1 ? "sb.evt" : "sb.sch"), schedule(setup));
    if (setup.release == 4) {
        writeFile(file("soils.in"),
                  "  0.0  10.0  1.30  0.30000  0.15000  0.80  0.40  0.40  0.30  0.01  0.00  0.10000  7.00\n");
        writeFile(file("sitepar.in"), "0         / extra weather drivers\n1         / sublimscale\n");
        writeFile(file("outfiles.in"), outfiles());
    }
    if (setup.release == 6) writeFile(file("sb.ini"), "UserName=Soilbench\r\n");
}

std::string standin_run_dir::runModel(bool inferRelease) const {
    const char* arguments = release_ == 1   ? " -s sb -n sb.bin -W sbNew.100"
                            : release_ == 6 ? " -s sbsite.100 -m sb.sch -f sbfix.100 -o sb -i sb.ini -pp ."
                                            : " -s sb -n sb";
    std::string release = inferRelease ? "" : " --release " + std::to_string(release_);
    return runInDirectory(path(), "'" + model() + "'" + release + arguments);
}

std::string standin_run_dir::runList100(const std::string& variables) const {
    writeFile(file("sb_outvars.txt"), variables);
    return runInDirectory(path(), "'" + list100() + "' sb sb sb_outvars.txt");
}

}  // namespace sbtest
