// The values of a new control record: the fixed parameters, site initial values
// and daily site parameters that the model's own sample set-up ships with, so a
// new project starts from a set-up a modeller recognises and can run at once.
#include <initializer_list>
#include <string>

#include "app/text_format.h"
#include "records/tellura_control_record.h"

namespace sb {

namespace {

// One parameter: a scalar (no subscripts), an array name(1..n) or a matrix
// name(i,j) whose values are given row by row (first subscript outer), whatever
// order the table keeps its columns in.
struct default_value {
    const char* name;
    int rows;  // 0 scalar, 1 array, >1 matrix
    int cols;
    std::initializer_list<double> values;
};

void apply(table_record& row, const default_value& d) {
    auto value = d.values.begin();
    if (d.rows == 0) {
        row.setNumber(std::string_view(d.name), *value);
        return;
    }
    for (int i = 1; i <= d.rows; ++i)
        for (int j = 1; j <= d.cols; ++j, ++value) {
            std::string name = d.rows == 1 ? strprintf("%s(%d)", d.name, j) : strprintf("%s(%d,%d)", d.name, i, j);
            row.setNumber(std::string_view(name), *value);
        }
}

const default_value kFixedDefaults[] = {
    {"AGPPA", 0, 0, {-40}},
    {"AGPPB", 0, 0, {7.7}},
    {"ANEREF", 1, 3, {1.5, 3, 1}},
    {"ANIMPT", 0, 0, {5}},
    {"BGPPA", 0, 0, {100}},
    {"BGPPB", 0, 0, {7}},
    {"CO2PPM", 1, 2, {294, 294}},
    {"CO2RMP", 0, 0, {1}},
    {"DAMR", 2, 3, {0, 0, 0.01, 0.02, 0.02, 0.04}},
    {"DAMRMN", 1, 3, {15, 150, 150}},
    {"DEC1", 1, 2, {2, 4.9}},
    {"DEC2", 1, 2, {8, 18.5}},
    {"DEC3", 1, 2, {6, 11}},
    {"Dec4", 0, 0, {0.0033}},
    {"Dec5", 0, 0, {0.2}},
    {"DEC5", 1, 2, {0.08, 0.4}},
    {"DECK5", 0, 0, {5}},
    {"DLIGDF", 0, 0, {0}},
    {"DRESP", 0, 0, {1}},
    {"EDEPTH", 0, 0, {0.2}},
    {"ELITST", 0, 0, {0.4}},
    {"ENRICH", 0, 0, {2}},
    {"FAVAIL(1)", 0, 0, {0.9}},
    {"FAVAIL(3)", 0, 0, {0.5}},
    {"FAVAIL(4)", 0, 0, {0.2}},
    {"FAVAIL(5)", 0, 0, {0.4}},
    {"FAVAIL(6)", 0, 0, {2}},
    {"FLEACH", 1, 5, {0.6, 0.4, 0.95, 0, 0.1}},
    {"FWLOSS", 1, 4, {1, 1, 1, 0.8}},
    {"FXMCA", 0, 0, {-0.125}},
    {"FXMCB", 0, 0, {0.005}},
    {"FXMXS", 0, 0, {0.35}},
    {"FXNPB", 0, 0, {7}},
    {"GREMB", 0, 0, {0}},
    {"IDEF", 0, 0, {1}},
    {"LHZF", 1, 3, {0.2, 0.4, 0.8}},
    {"MINLCH", 0, 0, {0.1}},
    {"NSNFIX", 0, 0, {0}},
    {"NTSPM", 0, 0, {1}},
    {"OMLECH", 1, 3, {0.05, 0.15, 0.1}},
    {"P1CO2A", 1, 2, {0.6, 0.17}},
    {"P1CO2B", 1, 2, {0, 0.68}},
    {"P2CO2", 1, 2, {0.55, 0.55}},
    {"P3CO2", 0, 0, {0.55}},
    {"PABRES", 0, 0, {100}},
    {"PCEMIC", 3, 3, {10, 200, 150, 20, 99, 50, 0.02, 0.0015, 0.0015}},
    {"PCEMIC2", 3, 3, {16, 200, 150, 10, 99, 50, 0.02, 0.0015, 0.0015}},
    {"PEFTXA", 0, 0, {0.25}},
    {"PEFTXB", 0, 0, {0.75}},
    {"PHESP", 1, 4, {6, 0.0008, 7.6, 0.015}},
    {"PLIGST", 1, 2, {3, 3}},
    {"PMCO2", 1, 2, {0.55, 0.55}},
    {"PMNSEC", 1, 3, {0, 0, 2}},
    {"PMNTMP", 0, 0, {0.004}},
    {"PMXBIO", 0, 0, {600}},
    {"PMXTMP", 0, 0, {-0.0035}},
    {"PPARMN", 1, 3, {0, 0.0001, 0.0005}},
    {"PPRPTS", 1, 3, {0, 1, 0.8}},
    {"PS1CO2", 1, 2, {0.45, 0.55}},
    {"PS1S3", 1, 2, {0.003, 0.032}},
    {"PS2S3", 1, 2, {0.003, 0.009}},
    {"PSECMN", 1, 3, {0, 0.0022, 0.2}},
    {"PSECOC1", 0, 0, {0}},
    {"PSECOC2", 0, 0, {0}},
    {"RAD1P", 3, 3, {12, 220, 220, 3, 5, 5, 5, 100, 100}},
    {"RCESTR", 1, 3, {200, 500, 500}},
    {"RICTRL", 0, 0, {0.015}},
    {"RIINT", 0, 0, {0.8}},
    {"RSPLIG", 0, 0, {0.3}},
    {"SEED", 0, 0, {-1}},
    {"SPL", 1, 2, {0.85, 0.013}},
    {"STRMAX", 1, 2, {5000, 5000}},
    {"TEFF", 1, 4, {15.4, 11.75, 29.7, 0.031}},
    {"TEXEPP", 1, 5, {1, 0.7, 0.0001, 0.00016, 2}},
    {"TEXESP(1)", 0, 0, {1}},
    {"TEXESP(3)", 0, 0, {0.004}},
    {"TMELT", 1, 2, {0, 0.002}},
    {"VARAT11", 3, 3, {20, 150, 200, 10, 30, 50, 1, 2, 2}},
    {"VARAT12", 3, 3, {18, 150, 200, 8, 30, 50, 2, 2, 2}},
    {"VARAT21", 3, 3, {15, 30, 400, 12, 100, 100, 2, 2, 2}},
    {"VARAT22", 3, 3, {40, 400, 400, 12, 100, 100, 2, 2, 2}},
    {"VARAT3", 3, 3, {20, 200, 200, 6, 50, 50, 2, 2, 2}},
    {"VLOSSE", 0, 0, {0}},
    {"VLOSSG", 0, 0, {0}},
};

// Run control: the monthly-pool decomposition, no labelling, no CO2, pH, soil
// warming or scalar options, a grassland start. The initial crop is left empty
// so that a run takes the first crop of the project's own crop list.
const default_value kRunControlDefaults[] = {
    {"Organic Matter Decomposition Model", 0, 0, {2}},
    {"Labeling Type", 0, 0, {0}},
    {"Labeling Year", 0, 0, {-1}},
    {"Initial System", 0, 0, {1}},
    {"Latitude", 0, 0, {30.539165}},
    {"Longitude", 0, 0, {-96.421337}},
};

const default_value kSiteDefaults[] = {
    {"IVAUTO", 0, 0, {3}},
    {"NELEM", 0, 0, {1}},
    {"EPNFA", 1, 2, {0.05, 0.01}},
    {"EPNFS", 1, 2, {30, 0.009}},
    {"SATMOS", 1, 2, {0, 0}},
    {"SIRRI", 0, 0, {0}},
    {"SOM1CI", 2, 2, {30, 0, 190, 0}},
    {"SOM2CI", 2, 2, {1800, 0, 1800, 0}},
    {"SOM3CI", 1, 2, {1200, 0}},
    {"RCES1", 2, 3, {13, 50, 50, 10, 50, 50}},
    {"RCES2", 2, 3, {20, 300, 200, 28.54336, 300, 200}},
    {"RCES3", 1, 3, {7, 62, 62}},
    {"CLITTR", 2, 2, {100, 0, 100, 0}},
    {"RCELIT", 2, 3, {88, 300, 300, 66, 300, 300}},
    {"PARENT", 1, 3, {0, 50, 50}},
    {"SECNDY", 1, 3, {0, 15, 2}},
    // Daily-step site parameters.
    {"TIMSTEP", 0, 0, {2}},
    {"SUBLIMSCALE", 0, 0, {1}},
    {"REFLEC", 0, 0, {0.18}},
    {"ALBEDO", 0, 0, {0.2}},
    {"FSWCINIT", 0, 0, {0.6}},
    {"DMPFLUX", 0, 0, {0.000008}},
    {"HOURS_RAIN", 0, 0, {10}},
    {"DRAINLAG", 0, 0, {0}},
    {"HPOTDEEP", 0, 0, {-200}},
    {"KSATDEEP", 0, 0, {0.0003}},
    {"CLDCOV", 1, 12, {60, 59, 55, 62, 67, 72, 73, 76, 73, 75, 65, 66}},
    {"TBOTMN", 0, 0, {0}},
    {"TBOTMX", 0, 0, {12.4}},
    {"TIMLAG", 0, 0, {30}},
    {"NCOEFF", 0, 0, {0.03}},
    {"LYRMIN", 1, 4, {0, 2, 4, 6}},
    {"LYRMAX", 1, 4, {1, 3, 5, 6}},
    {"JDAYSTART", 0, 0, {0}},
    {"JDAYEND", 0, 0, {0}},
    // The sample's single nitrification N2O adjustment factor serves all three forms.
    {"N2OADJ", 0, 0, {0.8}},
    {"N2Oadjust_fc", 0, 0, {0.8}},
    {"N2Oadjust_wp", 0, 0, {0.8}},
};

template <size_t N>
void applyAll(table_record& row, const default_value (&values)[N]) {
    for (const default_value& d : values) apply(row, d);
}

}  // namespace

tellura_control_record::tellura_control_record() {
    setId(1);
    row.setText("Description", "Default record");
    row.setNumber("Soil ID", 1);
    row.setNumber("Weather ID", 1);
    applyAll(row, kRunControlDefaults);
    applyAll(row, kFixedDefaults);
    applyAll(site, kSiteDefaults);

    tellura_event_block block;
    block.blockNumber = 1;
    block.description = "Default block";
    block.firstYear = 1;
    block.lastYear = 100;
    block.repeatingYears = 1;
    block.outputStartingYear = 1;
    block.outputMonth = 12;
    block.outputInterval = 12;
    block.weatherChoice = kWeatherMean;
    blocks.push_back(block);
}

}  // namespace sb
