#include "records/option_sequence.h"

#include <array>
#include <charconv>

namespace sb {

namespace {

constexpr version_set kV12 = versions({1, 2});
constexpr version_set kV126 = versions({1, 2, 6});
constexpr version_set kV35 = versions({3, 5});
constexpr version_set kV345 = versions({3, 4, 5});
constexpr version_set kV3456 = versions({3, 4, 5, 6});
constexpr version_set kV45 = versions({4, 5});
constexpr version_set kV4 = versionBit(4);
constexpr version_set kNot4 = allBut(4);

// Crops: the model's crop.100 for each release.
constexpr option_sequence_entry kCrop[] = {
    {"PRDX(1)", "prdx(1)", kV12},
    {"PRDX(1)", "prdx(1)4_5", kV3456},
    {"PPDF(1..4)"},
    {"BIOFLG"},
    {"BIOK5"},
    {"PLTMRF"},
    {"FULCAN"},
    {"FRTCINDX", nullptr, kV345},
    {"FRTC(1..5)", nullptr, kV345},
    {"CFRTCN(1..2)", nullptr, kV345},
    {"CFRTCW(1..2)", nullptr, kV345},
    {"FRTC(1..3)", nullptr, kV126},
    {"BIOMAX"},
    // The matrices run down their first subscript, as the model's files do.
    {"PRAMN(1..3,1)"},
    {"PRAMN(1..3,2)"},
    {"PRAMX(1..3,1)"},
    {"PRAMX(1..3,2)"},
    {"PRBMN(1..3,1)"},
    {"PRBMN(1..3,2)"},
    {"PRBMX(1..3,1)"},
    {"PRBMX(1..3,2)"},
    {"FLIGNI(1..2,1)"},
    {"FLIGNI(1..2,2)"},
    {"FLIGNI(1..2,3)", nullptr, kV4},
    {"HIMAX"},
    {"HIWSF"},
    {"HIMON(1..2)"},
    {"EFRGRN(1..3)"},
    {"VLOSSP"},
    {"FSDETH(1..4)"},
    {"FALLRT"},
    {"RDR", nullptr, kNot4},
    {"RDRJ", nullptr, kV4},
    {"RDRM", nullptr, kV4},
    {"RDSRFC", nullptr, kV4},
    {"RTDTMP"},
    {"CRPRTF(1..3)"},
    {"MRTFRAC", nullptr, kV4},
    {"SNFXMX(1)"},
    {"DEL13C"},
    {"CO2IPR", "co2ipr(1)"},
    {"CO2ITR", "co2itr(1)"},
    {"CO2ICE(1,1..2,1..3)"},
    {"CO2IRS", "co2irs(1)"},
    // Versions 1, 2 and 6 end here.
    {"KMRSP", nullptr, kV35},
    {"CKMRSPMX(1..2)", nullptr, kV35},
    {"CKMRSPMX(1..3)", nullptr, kV4},
    {"CMRSPNPP(1..6)", nullptr, kV4},
    {"CGRESP(1..3)", nullptr, kV4},
    {"NO3PREF(1)", "no3pref", kV345},
    {"CLAYPG", nullptr, kV345},
    {"CMIX", nullptr, kV45},
    {"TMPGERM", nullptr, kV345},
    {"DDBASE", nullptr, kV345},
    {"TMPKILL", nullptr, kV345},
    {"BASETEMP", "basetemp(1)", kV35},
    {"BASETEMP(1..2)", nullptr, kV4},
    {"MNDDHRV", nullptr, kV345},
    {"MXDDHRV", nullptr, kV345},
    {"CURGDYS", nullptr, kV4},
    {"CLSGRES", nullptr, kV4},
    {"CMXTURN", nullptr, kV4},
    {"WSCOEFF(1,1..2)", nullptr, kV4},
    {"NPP2CS(1)", nullptr, kV4},
    {"SFAVAIL(1)", nullptr, kV4},
};
// Older crop files label the crop's maintenance respiration KMRSP(1) and, in
// a few records, cut FRTCINDX to FRTCIN; the model reads by position, so both
// carry the same parameter.
constexpr option_sequence_entry kCropAliases[] = {
    {"KMRSP(1)", "kmrsp"},
    {"FRTCIN", "frtcindx"},
};

// Members whose daily-model file has the table's own order for every version.
constexpr option_sequence_entry kTableOrder[] = {{"*"}};

// Harvest: the daily model's file puts FLGHRV third and HIBG last.
constexpr option_sequence_entry kHarvest[] = {
    {"AGLREM", nullptr, kV4}, {"BGLREM", nullptr, kV4}, {"FLGHRV", nullptr, kV4}, {"RMVSTR", nullptr, kV4},
    {"REMWSD", nullptr, kV4}, {"HIBG", nullptr, kV4},   {"*", nullptr, kNot4},
};

// Organic matter additions: the daily model's file has no OMADTYP line.
constexpr option_sequence_entry kOmad[] = {
    {"ASTGC", nullptr, kV4},        {"ASTLBL", nullptr, kV4}, {"ASTLIG", nullptr, kV4},
    {"ASTREC(1..3)", nullptr, kV4}, {"*", nullptr, kNot4},
};

// Trees, daily model: the model's own tree.100 (six wood parts, no PRDX(3),
// no KMRSP, the CO2 effect block spelt with subscript 1 although the values
// are the tree's), then the water stress and soil availability lines in the
// places the crop file has them.
constexpr option_sequence_entry kTree[] = {
    {"DECID", nullptr, kV4},
    {"PRDX(2)", nullptr, kV4},
    {"PPDF(1..4)", nullptr, kV4},
    {"CERFOR(1..3,1..5,1..3)", nullptr, kV4},
    {"DECW1", nullptr, kV4},
    {"DECW2", nullptr, kV4},
    {"DECW3", nullptr, kV4},
    {"FCFRAC(1..5,1)", nullptr, kV4},
    {"FCFRAC(1..5,2)", nullptr, kV4},
    {"TFRTCN(1..2)", nullptr, kV4},
    {"TFRTCW(1..2)", nullptr, kV4},
    {"LEAFDR(1..12)", nullptr, kV4},
    {"BTOLAI", nullptr, kV4},
    {"KLAI", nullptr, kV4},
    {"LAITOP", nullptr, kV4},
    {"MAXLAI", nullptr, kV4},
    {"MAXLDR", nullptr, kV4},
    {"FORRTF(1..3)", nullptr, kV4},
    {"SAPK", nullptr, kV4},
    {"SWOLD", nullptr, kV4},
    {"WDLIG(1..6)", nullptr, kV4},
    {"WOODDR(1..6)", nullptr, kV4},
    {"WRDSRFC", nullptr, kV4},
    {"WMRTFRAC", nullptr, kV4},
    {"SNFXMX(2)", nullptr, kV4},
    {"DEL13C", nullptr, kV4},
    {"CO2IPR", "co2ipr(2)", kV4},
    {"CO2ITR", "co2itr(2)", kV4},
    {"CO2ICE(1,1..2,1..3)", "co2ice(2,1..2,1..3)", kV4},
    {"CO2IRS", "co2irs(2)", kV4},
    {"BASFC2", nullptr, kV4},
    {"BASFCT", nullptr, kV4},
    {"SITPOT", nullptr, kV4},
    {"MAXNP", nullptr, kV4},
    {"FKMRSPMX(1..6)", nullptr, kV4},
    {"FMRSPLAI(1..6)", nullptr, kV4},
    {"FGRESP(1..6)", nullptr, kV4},
    {"NO3PREF(2)", nullptr, kV4},
    {"TLAYPG", nullptr, kV4},
    {"TMIX", nullptr, kV4},
    {"TMPLFF", nullptr, kV4},
    {"TMPLFS", nullptr, kV4},
    {"FURGDYS", nullptr, kV4},
    {"FLSGRES", nullptr, kV4},
    {"TMXTURN", nullptr, kV4},
    {"WSCOEFF(2,1..2)", nullptr, kV4},
    {"NPP2CS(2)", nullptr, kV4},
    {"SFAVAIL(2)", nullptr, kV4},
    {"*", nullptr, kNot4},
};

const std::array<option_sequence, kOptionKindCount> kSequences = {{
    {kCrop, kCropAliases},
    {kTableOrder, {}},  // cultivation
    {kTableOrder, {}},  // fertilizer
    {kTableOrder, {}},  // fire
    {kTableOrder, {}},  // graze
    {kHarvest, {}},
    {kTableOrder, {}},  // irrigation
    {kOmad, {}},
    {kTree, {}},
    {kTableOrder, {}},  // tree removal
}};

}  // namespace

const option_sequence& optionSequence(option_kind kind) { return kSequences.at(static_cast<size_t>(kind)); }

}  // namespace sb
