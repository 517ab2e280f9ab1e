#include "modelinput/fixed_file.h"

#include <cctype>
#include <cmath>
#include <map>

#include "app/text_format.h"
#include "modelinput/parameter_names.h"
#include "modelinput/profile_values.h"
#include "modelinput/soil_site_names.h"
#include "app/text_file.h"
#include "paramfile/field_setter.h"
#include "paramfile/value_line_writer.h"

namespace sb {

int temperatureForm(const control_record_row& row) {
    bool teffZero = true;
    for (int i = 1; i <= 4; ++i) teffZero = teffZero && row.number(subscripted("TEFF", i)) == 0.0;
    if (teffZero && row.number("TMAX") != 0.0) return 1;
    return row.number("TEFF(4)") != 0.0 ? 3 : 2;
}

std::string fixedFileText(const record_sources& sources, message_sink& errors) {
    std::string out = "X     Fixed_values\n";
    appendParameterFile(out, sources, kFixedFile, errors);
    return out;
}

std::string fixedFileText(const control_record_row& row, int version, const tellura_soil* soil) {
    tellura_control_record record;
    record.row = row;
    message_sink ignored;
    return fixedFileText({record, soil, nullptr, shippedReleaseProfile(version)}, ignored);
}

bool writeFixedFile(const tellura_control_record& record, const release_profile& profile, const std::string& path,
                    const tellura_soils& soils, message_sink& errors) {
    message_sink problems;
    std::string text = fixedFileText({record, soils.find(record.soilId()), nullptr, profile}, problems);
    errors.add(problems);
    return problems.empty() && writeTextFile(path, text);
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

void store(control_record_row& row, const std::string& column, double value) {
    // TEXEPP(1) is a yes/no column: non-zero means yes.
    if (iequals(column, "TEXEPP(1)")) row.setFlag(row.column(column), value != 0.0);
    else row.setNumber(column, value);  // FAVAIL(2), TEXESP(2): read but not kept
}

}  // namespace

namespace {

// The field a name sets for a version: `found` when some field takes the name
// (an out-of-range subscript included, which the setter has reported), and
// the column it goes to when the subscripts are in range.
struct fixed_match {
    bool found = false;
    std::string column;
};

fixed_match matchFixedName(std::string_view name, int version, message_sink& messages) {
    if (name.empty()) return {};
    char group = static_cast<char>(std::toupper(static_cast<unsigned char>(name.front())));
    if (group < 'A' || group > 'X') return {};
    field_setter set(name, 0.0, messages);
    for (const fixed_field& field : kFixedFields) {
        if (std::toupper(static_cast<unsigned char>(field.name[0])) != group) continue;
        if ((field.versions & only(version)) == 0) continue;
        if (field.rows == 0) {
            if (!iequals(name, field.name)) continue;
            return {true, field.column};
        }
        int index =
            field.cols == 0 ? set.locate1(field.name, field.rows) : set.locate2(field.name, field.rows, field.cols);
        if (index == field_setter::kNoMatch) continue;
        return {true, index >= 0 ? columnOf(field, index) : std::string()};
    }
    return {};
}

}  // namespace

std::string fixedParameterColumn(std::string_view name, int version) {
    message_sink ignored;
    return matchFixedName(name, version, ignored).column;
}

bool setFixedParameterByName(control_record_row& row, std::string_view name, double value, int version,
                             message_sink& messages) {
    fixed_match match = matchFixedName(name, version, messages);
    if (!match.column.empty()) store(row, match.column, value);
    return match.found;
}

bool setParameterByName(std::string_view name, double value, control_record_row& row, tellura_soil* soil,
                        tellura_weather_station* station, int version, message_sink& messages) {
    if (station) return station->setClimateMean(name, value, messages);
    if (soil && isSoilSiteName(canonicalParameterName(name)) && setSoilBySiteName(*soil, name, value, messages))
        return true;
    return setFixedParameterByName(row, name, value, version, messages);
}

bool importFixedFile(tellura_control_record& record, const std::string& path, tellura_soil* soil,
                     const release_profile& profile, message_sink& messages) {
    std::string text;
    if (!readTextFile(path, text, messages, strprintf("ERROR, can't open file %s.\n", path.c_str()))) return false;
    std::vector<std::string> lines = splitLines(text);
    std::map<std::string, size_t> seen;  // names read so far, and their lines
    bool ok = true;
    for (size_t i = 1; i < lines.size(); ++i) {  // the first line is the title
        std::string_view line = lines[i];
        if (line.size() > 79) line = line.substr(0, 79);  // the reader's 80-byte buffer
        if (line.empty()) break;
        if (line.front() == '*') continue;
        double value = toReal(line.substr(0, 12));
        if (line.size() < 15) continue;
        const size_t messagesBefore = messages.count();
        std::string_view rest = trim(line.substr(14));
        std::string name = std::string(rest.substr(0, rest.find_first_of(" \t")));
        // The model's own files quote their names: 'ADEP(1)'.
        while (!name.empty() && name.front() == '\'') name.erase(0, 1);
        while (!name.empty() && name.back() == '\'') name.pop_back();
        if (name.empty()) continue;
        auto [first, added] = seen.emplace(canonicalParameterName(name), i + 1);
        if (!added) {
            messages.errorf(
                "ERROR, \"%s\" line %zu: \"%s\" is given twice (first on line %zu); the second value is "
                "not used.\n",
                path.c_str(), i + 1, name.c_str(), first->second);
            ok = false;
            continue;
        }
        if (!std::isfinite(value))
            messages.errorf("ERROR, value \"%s\" is not a number.\n", std::string(trim(line.substr(0, 12))).c_str());
        else
            importProfileValue(record, &profile, kFixedFile, name, value, [&] {
                return setParameterByName(name, value, record.row, soil, nullptr, profile.version, messages);
            });
        if (messages.count() == messagesBefore) continue;
        messages.errorf("File: \"%s\", line %zu\n", path.c_str(), i + 1);
        ok = false;
    }
    messages.notef("Imported fixed data from \"%s\"\n", path.c_str());
    return ok;
}

bool importFixedFile(tellura_control_record& record, const std::string& path, tellura_soil* soil, int version,
                     message_sink& messages) {
    return importFixedFile(record, path, soil, shippedReleaseProfile(version), messages);
}

}  // namespace sb
