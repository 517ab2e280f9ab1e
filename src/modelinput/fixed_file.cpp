#include "modelinput/fixed_file.h"

#include <array>
#include <cctype>
#include <cmath>

#include "app/text_format.h"
#include "modelinput/parameter_names.h"
#include "modelinput/soil_site_names.h"
#include "app/text_file.h"
#include "paramfile/field_setter.h"
#include "paramfile/value_line_writer.h"

namespace sb {

namespace {

constexpr int kLayerSlots = 10;
// The daily release's own layer structure, whatever the soil.
constexpr std::array<int, kLayerSlots> kDiurnaLayerDepths{10, 20, 15, 15, 30, 30, 30, 30, 30, 30};

bool isMonthlyRelease45(int version) { return version >= 3 && version <= 5; }

// Value lines of the Control Records row. `line` is the name the model reads,
// `column` the base of the row's column names when they differ.
class fixed_lines {
public:
    fixed_lines(std::string& out, const TelluraControlRecords& row) : out_(out), row_(row) {}

    void real(const char* line, const char* column = nullptr) {
        writeReal(out_, row_.number(column ? column : line), line);
    }
    void reals(std::initializer_list<const char*> lines) {
        for (const char* line : lines) real(line);
    }
    void indexed(const char* line, int n, const char* column = nullptr) {
        for (int i = 1; i <= n; ++i) writeElement(out_, row_.number(subscripted(column ? column : line, i)), line, i);
    }
    void indexedGroup(std::initializer_list<std::pair<const char*, int>> arrays) {
        for (const auto& [line, n] : arrays) indexed(line, n);
    }
    void rowOrder(const char* line, int rows, int cols, const char* column = nullptr) {
        for (int i = 1; i <= rows; ++i)
            for (int j = 1; j <= cols; ++j) element2(line, column, i, j);
    }
    void columnOrder(const char* line, int rows, int cols, const char* column = nullptr) {
        for (int j = 1; j <= cols; ++j)
            for (int i = 1; i <= rows; ++i) element2(line, column, i, j);
    }

private:
    void element2(const char* line, const char* column, int i, int j) {
        writeElement(out_, row_.number(subscripted(column ? column : line, i, j)), line, i, j);
    }
    std::string& out_;
    const TelluraControlRecords& row_;
};

void appendSoilLayers(std::string& out, const char* name, const TelluraSoils* soil, bool depths, int version) {
    for (int layer = 1; layer <= kLayerSlots; ++layer) {
        double value = 0.0;
        if (depths && version == 4) value = kDiurnaLayerDepths[static_cast<size_t>(layer - 1)];
        else if (soil) value = soilLayerValue(*soil, name, layer);
        writeElement(out, value, name, layer);
    }
}

void appendDecomposition(std::string& out, fixed_lines& lines, const TelluraControlRecords& row, int version) {
    lines.reals({"BGPPA", "BGPPB"});
    lines.indexed("CO2PPM", 2);
    writeSmallInt(out, static_cast<int>(row.number("CO2RMP")), "CO2RMP");
    lines.rowOrder("DAMR", 2, 3);
    lines.indexed("DAMRMN", 3);
    lines.indexedGroup({{"DEC1", 2}, {"DEC2", 2}, {"DEC3", 2}});
    lines.real("DEC4", "Dec4");
    if (version == 4 || version == 5) lines.indexed("DEC5", 2);
    else lines.real("DEC5", "Dec5");
    lines.reals({"DECK5", "DLIGDF", "DRESP", "EDEPTH", "ELITST", "ENRICH"});
    if (version != 4) lines.real("FAVAIL(1)");
    lines.reals({"FAVAIL(3)", "FAVAIL(4)", "FAVAIL(5)", "FAVAIL(6)"});
    lines.indexedGroup({{"FLEACH", 5}, {"FWLOSS", 4}});
    lines.reals({"FXMCA", "FXMCB", "FXMXS", "FXNPB", "GREMB"});
    writeSmallInt(out, static_cast<int>(row.number("IDEF")), "IDEF");
    lines.indexed("LHZF", 3);
    lines.reals({"MINLCH", "NSNFIX", "NTSPM"});
    lines.indexedGroup({{"OMLECH", 3}, {"P1CO2A", 2}, {"P1CO2B", 2}});
    // The older releases read one P2CO2; they get the second element.
    if (version == 4 || version == 5) lines.indexed("P2CO2", 2);
    else lines.real("P2CO2", "P2CO2(2)");
    lines.reals({"P3CO2", "PABRES"});
    if (version == 5) {
        lines.rowOrder("PCEMIC1", 3, 3, "PCEMIC");
        lines.rowOrder("PCEMIC2", 3, 3);
    } else if (version != 4) {
        lines.rowOrder("PCEMIC", 3, 3);
    }
}

void appendProductionAndTemperature(std::string& out, fixed_lines& lines, const TelluraControlRecords& row,
                                    int version) {
    lines.reals({"PEFTXA", "PEFTXB"});
    lines.indexedGroup({{"PHESP", 4}, {"PLIGST", 2}, {"PMCO2", 2}, {"PMNSEC", 3}});
    lines.reals({"PMNTMP", "PMXBIO", "PMXTMP"});
    lines.indexedGroup({{"PPARMN", 3}, {"PPRPTS", 3}, {"PS1CO2", 2}, {"PS1S3", 2}, {"PS2S3", 2}, {"PSECMN", 3}});
    if (isMonthlyRelease45(version)) lines.reals({"PSECOC1", "PSECOC2"});
    else lines.real("PSECOC", "PSECOC1");
    lines.columnOrder("RAD1P", 3, 3);
    lines.indexed("RCESTR", 3);
    lines.reals({"RICTRL", "RIINT", "RSPLIG", "SEED"});
    lines.indexedGroup({{"SPL", 2}, {"STRMAX", 2}});
    // TEXEPP(1) is kept as a yes/no flag.
    writeElement(out, row.flag(row.column("TEXEPP(1)")) ? 1.0 : 0.0, "TEXEPP", 1);
    for (int i = 2; i <= 5; ++i) writeElement(out, row.number(subscripted("TEXEPP", i)), "TEXEPP", i);
    lines.reals({"TEXESP(1)", "TEXESP(3)"});
    int form = temperatureForm(row);
    if (form == 1) {
        lines.real("TMAX");
    } else {
        lines.reals({"TEFF(1)", "TEFF(2)", "TEFF(3)"});
        if (isMonthlyRelease45(version) || form == 3) lines.real("TEFF(4)");
    }
    lines.indexed("TMELT", 2);
    if (form == 1) lines.reals({"TOPT", "TSHL", "TSHR"});
}

void appendMatrices(fixed_lines& lines, int version) {
    if (version == 4) {
        lines.columnOrder("VARAT11", 3, 3);
        lines.columnOrder("VARAT12", 3, 3);
    } else {
        lines.columnOrder("VARAT1", 3, 3, "VARAT12");
        if (version != 5) lines.columnOrder("VARAT2", 3, 3, "VARAT22");
    }
    if (version == 4 || version == 5) {
        lines.columnOrder("VARAT21", 3, 3);
        lines.columnOrder("VARAT22", 3, 3);
    }
    lines.columnOrder("VARAT3", 3, 3);
    lines.reals({"VLOSSE", "VLOSSG"});
    if (version == 1) lines.real("XEFCLTEF");
}

}  // namespace

int temperatureForm(const TelluraControlRecords& row) {
    bool teffZero = true;
    for (int i = 1; i <= 4; ++i) teffZero = teffZero && row.number(subscripted("TEFF", i)) == 0.0;
    if (teffZero && row.number("TMAX") != 0.0) return 1;
    return row.number("TEFF(4)") != 0.0 ? 3 : 2;
}

std::string fixedFileText(const TelluraControlRecords& row, int version, const TelluraSoils* soil) {
    std::string out;
    out.reserve(12288);
    fixed_lines lines(out, row);
    out += "X     Fixed_values\n";
    appendSoilLayers(out, "ADEP", soil, true, version);
    lines.reals({"AGPPA", "AGPPB"});
    lines.indexed("ANEREF", 3);
    lines.real("ANIMPT");
    appendSoilLayers(out, "AWTL", soil, false, version);
    appendDecomposition(out, lines, row, version);
    appendProductionAndTemperature(out, lines, row, version);
    appendMatrices(lines, version);
    return out;
}

bool writeFixedFile(const tellura_control_record& record, int version, const std::string& path,
                    const tellura_soil_list& soils) {
    return writeTextFile(path, fixedFileText(record.row, version, soils.find(record.soilId())));
}

// ---------------------------------------------------------------------------
// Set by name

namespace {

constexpr unsigned kAll = 0x7E;  // bit v for version v
constexpr unsigned only(int version) { return 1u << version; }
constexpr unsigned allBut(int version) { return kAll & ~only(version); }

// One fixed parameter as a file names it. rows == 0: a scalar stored in
// `column`; cols == 0: name(i) into column(i); otherwise name(i,j) into column(i,j).
struct fixed_field {
    const char* name;
    const char* column;
    int rows;
    int cols;
    unsigned versions;
};

// Tried in this order within the group of the name's first letter, so VARAT3
// comes before the version's other matrices.
constexpr fixed_field kFixedFields[] = {
    {"AGPPA", "AGPPA", 0, 0, kAll},
    {"AGPPB", "AGPPB", 0, 0, kAll},
    {"ANEREF", "ANEREF", 3, 0, kAll},
    {"ANIMPT", "ANIMPT", 0, 0, kAll},
    {"BGPPA", "BGPPA", 0, 0, kAll},
    {"BGPPB", "BGPPB", 0, 0, kAll},
    {"CO2PPM", "CO2PPM", 2, 0, kAll},
    {"CO2RMP", "CO2RMP", 0, 0, kAll},
    {"DAMR", "DAMR", 2, 3, kAll},
    {"DAMRMN", "DAMRMN", 3, 0, kAll},
    {"DEC1", "DEC1", 2, 0, kAll},
    {"DEC2", "DEC2", 2, 0, kAll},
    {"DEC3", "DEC3", 2, 0, kAll},
    {"DEC4", "Dec4", 0, 0, kAll},
    {"DEC5", "DEC5", 2, 0, only(4)},
    {"DEC5", "Dec5", 0, 0, allBut(4)},
    {"DECK5", "DECK5", 0, 0, kAll},
    {"DLIGDF", "DLIGDF", 0, 0, kAll},
    {"DRESP", "DRESP", 0, 0, kAll},
    {"EDEPTH", "EDEPTH", 0, 0, kAll},
    {"ELITST", "ELITST", 0, 0, kAll},
    {"ENRICH", "ENRICH", 0, 0, kAll},
    {"FAVAIL", "FAVAIL", 6, 0, kAll},
    {"FLEACH", "FLEACH", 5, 0, kAll},
    {"FWLOSS", "FWLOSS", 4, 0, kAll},
    {"FXMCA", "FXMCA", 0, 0, kAll},
    {"FXMCB", "FXMCB", 0, 0, kAll},
    {"FXMXS", "FXMXS", 0, 0, kAll},
    {"FXNPB", "FXNPB", 0, 0, kAll},
    {"GREMB", "GREMB", 0, 0, kAll},
    {"IDEF", "IDEF", 0, 0, kAll},
    {"LHZF", "LHZF", 3, 0, kAll},
    {"MINLCH", "MINLCH", 0, 0, kAll},
    {"NSNFIX", "NSNFIX", 0, 0, kAll},
    {"NTSPM", "NTSPM", 0, 0, kAll},
    {"OMLECH", "OMLECH", 3, 0, kAll},
    {"P1CO2A", "P1CO2A", 2, 0, kAll},
    {"P1CO2B", "P1CO2B", 2, 0, kAll},
    {"P2CO2", "P2CO2", 2, 0, only(4)},
    {"P2CO2", "P2CO2(1)", 0, 0, allBut(4)},
    {"P3CO2", "P3CO2", 0, 0, kAll},
    {"PABRES", "PABRES", 0, 0, kAll},
    {"PCEMIC1", "PCEMIC", 3, 3, only(5)},
    {"PCEMIC", "PCEMIC", 3, 3, allBut(5)},
    {"PCEMIC2", "PCEMIC2", 3, 3, kAll},
    {"PEFTXA", "PEFTXA", 0, 0, kAll},
    {"PEFTXB", "PEFTXB", 0, 0, kAll},
    {"PHESP", "PHESP", 4, 0, kAll},
    {"PLIGST", "PLIGST", 2, 0, kAll},
    {"PMCO2", "PMCO2", 2, 0, kAll},
    {"PMNSEC", "PMNSEC", 3, 0, kAll},
    {"PMNTMP", "PMNTMP", 0, 0, kAll},
    {"PMXBIO", "PMXBIO", 0, 0, kAll},
    {"PMXTMP", "PMXTMP", 0, 0, kAll},
    {"PPARMN", "PPARMN", 3, 0, kAll},
    {"PPRPTS", "PPRPTS", 3, 0, kAll},
    {"PS1CO2", "PS1CO2", 2, 0, kAll},
    {"ps1s3", "PS1S3", 2, 0, kAll},
    {"ps2s3", "PS2S3", 2, 0, kAll},
    {"PSECMN", "PSECMN", 3, 0, kAll},
    {"PSECOC1", "PSECOC1", 0, 0, kAll},
    {"PSECOC2", "PSECOC2", 0, 0, kAll},
    {"PSECOC", "PSECOC1", 0, 0, kAll},
    {"RAD1P", "RAD1P", 3, 3, kAll},
    {"RCESTR", "RCESTR", 3, 0, kAll},
    {"RICTRL", "RICTRL", 0, 0, kAll},
    {"RIINT", "RIINT", 0, 0, kAll},
    {"RSPLIG", "RSPLIG", 0, 0, kAll},
    {"SEED", "SEED", 0, 0, kAll},
    {"SPL", "SPL", 2, 0, kAll},
    {"STRMAX", "STRMAX", 2, 0, kAll},
    {"TEXEPP", "TEXEPP", 5, 0, kAll},
    {"TEXESP", "TEXESP", 3, 0, kAll},
    {"TEFF", "TEFF", 4, 0, kAll},
    {"TMAX", "TMAX", 0, 0, kAll},
    {"TMELT", "TMELT", 2, 0, kAll},
    {"TOPT", "TOPT", 0, 0, kAll},
    {"TSHL", "TSHL", 0, 0, kAll},
    {"TSHR", "TSHR", 0, 0, kAll},
    {"VARAT3", "VARAT3", 3, 3, kAll},
    {"VARAT11", "VARAT11", 3, 3, only(4)},
    {"VARAT12", "VARAT12", 3, 3, only(4)},
    {"VARAT1", "VARAT12", 3, 3, allBut(4)},
    {"VARAT21", "VARAT21", 3, 3, only(4) | only(5)},
    {"VARAT22", "VARAT22", 3, 3, only(4) | only(5)},
    {"VARAT2", "VARAT22", 3, 3, kAll & ~(only(4) | only(5))},
    {"VLOSSE", "VLOSSE", 0, 0, kAll},
    {"VLOSSG", "VLOSSG", 0, 0, kAll},
    {"XEFCLTEF", "XEFCLTEF", 0, 0, kAll},
};

// The column that element `index` (zero-based, row-major) of a field lives in.
std::string columnOf(const fixed_field& field, int index) {
    if (field.cols == 0) return subscripted(field.column, index + 1);
    return subscripted(field.column, index / field.cols + 1, index % field.cols + 1);
}

void store(TelluraControlRecords& row, const std::string& column, double value) {
    // TEXEPP(1) is a yes/no column: non-zero means yes.
    if (iequals(column, "TEXEPP(1)")) row.setFlag(row.column(column), value != 0.0);
    else row.setNumber(column, value);  // FAVAIL(2), TEXESP(2): read but not kept
}

}  // namespace

bool setFixedParameterByName(TelluraControlRecords& row, std::string_view name, double value, int version,
                             std::string& messages) {
    if (name.empty()) return false;
    char group = static_cast<char>(std::toupper(static_cast<unsigned char>(name.front())));
    if (group < 'A' || group > 'X') return false;
    field_setter set(name, value, messages);
    for (const fixed_field& field : kFixedFields) {
        if (std::toupper(static_cast<unsigned char>(field.name[0])) != group) continue;
        if ((field.versions & only(version)) == 0) continue;
        if (field.rows == 0) {
            if (!iequals(name, field.name)) continue;
            store(row, field.column, value);
            return true;
        }
        int index =
            field.cols == 0 ? set.locate1(field.name, field.rows) : set.locate2(field.name, field.rows, field.cols);
        if (index == field_setter::kNoMatch) continue;
        if (index >= 0) store(row, columnOf(field, index), value);
        return true;
    }
    return false;
}

bool setParameterByName(std::string_view name, double value, TelluraControlRecords& row, TelluraSoils* soil,
                        TelluraWeatherStations* station, int version, std::string& messages) {
    if (station) return station->setClimateMean(name, value, messages);
    if (soil && isSoilSiteName(canonicalParameterName(name)) && setSoilBySiteName(*soil, name, value, messages))
        return true;
    return setFixedParameterByName(row, name, value, version, messages);
}

bool importFixedFile(tellura_control_record& record, const std::string& path, TelluraSoils* soil, int version,
                     std::string& messages) {
    std::string text;
    if (!readTextFile(path, text, messages, strprintf("ERROR, can't open file %s.\n", path.c_str()))) return false;
    std::vector<std::string> lines = splitLines(text);
    bool ok = true;
    for (size_t i = 1; i < lines.size(); ++i) {  // the first line is the title
        std::string_view line = lines[i];
        if (line.size() > 79) line = line.substr(0, 79);  // the reader's 80-byte buffer
        if (line.empty()) break;
        if (line.front() == '*') continue;
        double value = toReal(line.substr(0, 12));
        if (line.size() < 15) continue;
        const size_t messagesBefore = messages.size();
        std::string_view rest = trim(line.substr(14));
        std::string name = std::string(rest.substr(0, rest.find_first_of(" \t")));
        // The model's own files quote their names: 'ADEP(1)'.
        while (!name.empty() && name.front() == '\'') name.erase(0, 1);
        while (!name.empty() && name.back() == '\'') name.pop_back();
        if (!std::isfinite(value))
            appendf(messages, "ERROR, value \"%s\" is not a number.\n", std::string(trim(line.substr(0, 12))).c_str());
        else setParameterByName(name, value, record.row, soil, nullptr, version, messages);
        if (messages.size() == messagesBefore) continue;
        appendf(messages, "File: \"%s\", line %zu\n", path.c_str(), i + 1);
        ok = false;
    }
    appendf(messages, "Imported fixed data from \"%s\"\n", path.c_str());
    return ok;
}

}  // namespace sb
