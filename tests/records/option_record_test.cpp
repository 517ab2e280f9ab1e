// The option records' ".100" form: the crop writer for every model version,
// byte for byte; the other members' sequences; reading every name form back.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "app/text_format.h"
#include "db/database_maker.h"
#include "records/option_layout.h"
#include "records/option_list.h"

namespace {

using namespace sb;

// Expected lines, spelt out in the model's fixed columns.
struct line {
    const char* name;
    double value;
    char form = 'r';  // r real, i integer
};

std::string expectedText(const std::string& header, const std::vector<line>& lines) {
    std::string out = header;
    for (const line& l : lines) {
        if (l.form == 'i') out += strprintf("%-2d             %s\n", static_cast<int>(l.value), l.name);
        else out += strprintf("%-10.5f     %s\n", l.value, l.name);
    }
    return out;
}

// A crop whose every parameter column holds its own position among the
// parameter columns (1 = prdx(1), 2 = prdx(1)4_5, ..., 114 = sfavail(1)),
// so that each line of the output shows which column it came from.
crop_option numberedCrop() {
    crop_option crop;
    crop.name = "CORN";
    crop.description = "Hand check";
    for (int col = 2; col < crop.columnCount(); ++col) crop.setNumber(col, col - 1);
    crop.setFlag(crop.column("bioflg"), true);
    return crop;
}

// Shared by every version: the lines in the middle of the crop record.
const std::vector<line> kPpdf = {{"PPDF(1)", 3}, {"PPDF(2)", 4}, {"PPDF(3)", 5}, {"PPDF(4)", 6}};
const std::vector<line> kBio = {{"BIOFLG", 1, 'i'}, {"BIOK5", 8}, {"PLTMRF", 9}, {"FULCAN", 10}};
const std::vector<line> kFrtc345 = {{"FRTCINDX", 11, 'i'}, {"FRTC(1)", 12},  {"FRTC(2)", 13},   {"FRTC(3)", 14},
                                    {"FRTC(4)", 15},       {"FRTC(5)", 16},  {"CFRTCN(1)", 17}, {"CFRTCN(2)", 18},
                                    {"CFRTCW(1)", 19},     {"CFRTCW(2)", 20}};
const std::vector<line> kFrtc3 = {{"FRTC(1)", 12}, {"FRTC(2)", 13}, {"FRTC(3)", 14}};
const std::vector<line> kMatrices = {
    {"BIOMAX", 21},      {"PRAMN(1,1)", 22},  {"PRAMN(2,1)", 23},  {"PRAMN(3,1)", 24}, {"PRAMN(1,2)", 25},
    {"PRAMN(2,2)", 26},  {"PRAMN(3,2)", 27},  {"PRAMX(1,1)", 28},  {"PRAMX(2,1)", 29}, {"PRAMX(3,1)", 30},
    {"PRAMX(1,2)", 31},  {"PRAMX(2,2)", 32},  {"PRAMX(3,2)", 33},  {"PRBMN(1,1)", 34}, {"PRBMN(2,1)", 35},
    {"PRBMN(3,1)", 36},  {"PRBMN(1,2)", 37},  {"PRBMN(2,2)", 38},  {"PRBMN(3,2)", 39}, {"PRBMX(1,1)", 40},
    {"PRBMX(2,1)", 41},  {"PRBMX(3,1)", 42},  {"PRBMX(1,2)", 43},  {"PRBMX(2,2)", 44}, {"PRBMX(3,2)", 45},
    {"FLIGNI(1,1)", 46}, {"FLIGNI(2,1)", 47}, {"FLIGNI(1,2)", 48}, {"FLIGNI(2,2)", 49}};
const std::vector<line> kFligni3 = {{"FLIGNI(1,3)", 50}, {"FLIGNI(2,3)", 51}};
const std::vector<line> kHarvestIndex = {{"HIMAX", 52},     {"HIWSF", 53},     {"HIMON(1)", 54},  {"HIMON(2)", 55},
                                         {"EFRGRN(1)", 56}, {"EFRGRN(2)", 57}, {"EFRGRN(3)", 58}, {"VLOSSP", 59},
                                         {"FSDETH(1)", 60}, {"FSDETH(2)", 61}, {"FSDETH(3)", 62}, {"FSDETH(4)", 63},
                                         {"FALLRT", 64}};
const std::vector<line> kRoots = {{"RTDTMP", 69}, {"CRPRTF(1)", 70}, {"CRPRTF(2)", 71}, {"CRPRTF(3)", 72}};
const std::vector<line> kCo2 = {{"SNFXMX(1)", 74},     {"DEL13C", 75},        {"CO2IPR", 76},
                                {"CO2ITR", 77},        {"CO2ICE(1,1,1)", 78}, {"CO2ICE(1,1,2)", 79},
                                {"CO2ICE(1,1,3)", 80}, {"CO2ICE(1,2,1)", 81}, {"CO2ICE(1,2,2)", 82},
                                {"CO2ICE(1,2,3)", 83}, {"CO2IRS", 84}};

std::vector<line> join(std::initializer_list<std::vector<line>> parts) {
    std::vector<line> all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

std::string written(const option_record& record, int version) {
    std::string out;
    record.write(out, version);
    return out;
}

// Versions one, two and six stop after CO2IRS; six takes the later production column.
TEST(CropWriter, VersionsOneTwoAndSixStopAfterCo2irs) {
    for (auto [version, prdx] : {std::pair{1, 1}, {2, 1}, {6, 2}}) {
        std::vector<line> lines = join(
            {{{"PRDX(1)", double(prdx)}}, kPpdf, kBio, kFrtc3, kMatrices, kHarvestIndex, {{"RDR", 65}}, kRoots, kCo2});
        EXPECT_EQ(written(numberedCrop(), version), expectedText("CORN  Hand check\n", lines)) << version;
    }
}

const std::vector<line> kTail35 = {
    {"KMRSP", 85}, {"CKMRSPMX(1)", 86}, {"CKMRSPMX(2)", 87}, {"NO3PREF(1)", 98}, {"CLAYPG", 99, 'i'}};
const std::vector<line> kGrowth35 = {{"TMPGERM", 101},  {"DDBASE", 102},  {"TMPKILL", 103},
                                     {"BASETEMP", 104}, {"MNDDHRV", 106}, {"MXDDHRV", 107}};

TEST(CropWriter, VersionsThreeAndFiveDifferOnlyInCmix) {
    std::vector<line> common =
        join({{{"PRDX(1)", 2}}, kPpdf, kBio, kFrtc345, kMatrices, kHarvestIndex, {{"RDR", 65}}, kRoots, kCo2, kTail35});
    EXPECT_EQ(written(numberedCrop(), 3), expectedText("CORN  Hand check\n", join({common, kGrowth35})));
    EXPECT_EQ(written(numberedCrop(), 5),
              expectedText("CORN  Hand check\n", join({common, {{"CMIX", 100}}, kGrowth35})));
}

TEST(CropWriter, VersionFourIsTheDailyModelsLongRecord) {
    std::vector<line> lines = join(
        {{{"PRDX(1)", 2}},
         kPpdf,
         kBio,
         kFrtc345,
         kMatrices,
         kFligni3,
         kHarvestIndex,
         {{"RDRJ", 66}, {"RDRM", 67}, {"RDSRFC", 68}},
         kRoots,
         {{"MRTFRAC", 73}},
         kCo2,
         {{"CKMRSPMX(1)", 86},   {"CKMRSPMX(2)", 87},   {"CKMRSPMX(3)", 88}, {"CMRSPNPP(1)", 89},  {"CMRSPNPP(2)", 90},
          {"CMRSPNPP(3)", 91},   {"CMRSPNPP(4)", 92},   {"CMRSPNPP(5)", 93}, {"CMRSPNPP(6)", 94},  {"CGRESP(1)", 95},
          {"CGRESP(2)", 96},     {"CGRESP(3)", 97},     {"NO3PREF(1)", 98},  {"CLAYPG", 99, 'i'},  {"CMIX", 100},
          {"TMPGERM", 101},      {"DDBASE", 102},       {"TMPKILL", 103},    {"BASETEMP(1)", 104}, {"BASETEMP(2)", 105},
          {"MNDDHRV", 106},      {"MXDDHRV", 107},      {"CURGDYS", 108},    {"CLSGRES", 109},     {"CMXTURN", 110},
          {"WSCOEFF(1,1)", 111}, {"WSCOEFF(1,2)", 112}, {"NPP2CS(1)", 113},  {"SFAVAIL(1)", 114}}});
    EXPECT_EQ(written(numberedCrop(), 4), expectedText("CORN  Hand check\n", lines));
}

TEST(CropWriter, LinesSitInTheModelsColumns) {
    crop_option crop;
    crop.name = "C3";
    crop.setNumber(crop.column("prdx(1)4_5"), 0.175);
    crop.setNumber(crop.column("frtcindx"), 2);
    std::string out = written(crop, 4);
    EXPECT_EQ(out.substr(0, 6), "C3   \n");  // name padded to 5, no description
    EXPECT_NE(out.find("\n0.17500        PRDX(1)\n"), std::string::npos);
    EXPECT_NE(out.find("\n0              BIOFLG\n"), std::string::npos);
    EXPECT_NE(out.find("\n2              FRTCINDX\n"), std::string::npos);
    EXPECT_EQ(written(crop, 0), "C3   \n");  // no version, no values
    EXPECT_EQ(written(crop, 7), "C3   \n");
}

// Reading: every form a version writes, the column names, quotes and case.
TEST(OptionSetField, CropReadsEveryWrittenFormAndTheColumnNames) {
    list_tellura_crops crops;
    std::string errors, status;
    crops.importText(
        "MAIZE corn\n"
        "0.2       'PRDX(1)'\n"
        "31        ppdf(1)\n"
        "1.0       'BIOFLG'\n"
        "2.7       FRTCINDX\n"
        "0.5       FLIGNI(2,3)\n"
        "0.6       CO2IPR\n"
        "0.7       co2itr(1)\n"
        "12        BASETEMP\n"
        "7         BASETEMP(2)\n"
        "0.3       KMRSP(1)\n"
        "0.9       WSCOEFF(1,2)\n"
        "4         CO2ICE(1,2,3)\n"
        "5         NOSUCHNAME\n",
        "crop.100", errors, status);
    ASSERT_EQ(crops.size(), 1u);
    EXPECT_EQ(errors, "");
    const option_record& c = crops.recordAt(0);
    EXPECT_TRUE(c.flag(c.column("bioflg")));
    // The one name fills the column of every version; an integer is truncated toward zero.
    const std::pair<const char*, float> columns[] = {{"prdx(1)", 0.2f},   {"prdx(1)4_5", 0.2f},   {"ppdf(1)", 31},
                                                     {"frtcindx", 2},     {"fligni(2,3)", 0.5f},  {"co2ipr(1)", 0.6f},
                                                     {"co2itr(1)", 0.7f}, {"basetemp(1)", 12},    {"basetemp(2)", 7},
                                                     {"kmrsp", 0.3f},     {"wscoeff(1,2)", 0.9f}, {"co2ice(1,2,3)", 4}};
    for (auto [column, value] : columns) EXPECT_FLOAT_EQ(c.value(column), value) << column;
}

TEST(OptionSetField, SubscriptsBeyondTheArrayAreReportedInTheirOwnForm) {
    crop_option crop;
    std::string errors;
    EXPECT_TRUE(crop.setField("PPDF(5)", 1, errors));
    EXPECT_TRUE(crop.setField("pramn(4,1)", 1, errors));
    EXPECT_TRUE(crop.setField("CO2ICE(1,3,1)", 1, errors));
    EXPECT_TRUE(crop.setField("PRDX(2)", 1, errors));
    EXPECT_EQ(errors,
              "ERROR, exceeds array size: PPDF\n"
              "ERROR, exceeds array size: \"PRAMN\" 4 x 1 (3 x 2)\n"
              "ERROR, exceeds array size: CO2ICE 1 x 3 x 1 (1 x 2 x 3)\n"
              "ERROR, exceeds array size: PRDX\n");
    crop_option untouched;
    EXPECT_TRUE(crop == untouched);
    EXPECT_FALSE(crop.setField("PPDF", 1, errors));  // an array name without subscript is no parameter
    EXPECT_FALSE(crop.setField("name", 1, errors));
    EXPECT_FALSE(crop.setField("Description", 1, errors));
}

TEST(OptionSetField, TreeReadsTheCo2BlockUnderBothSpellings) {
    tree_option tree;
    std::string errors;
    EXPECT_TRUE(tree.setField("CO2ICE(1,1,2)", 3, errors));  // the daily model's own spelling
    EXPECT_TRUE(tree.setField("CO2ICE(2,2,3)", 4, errors));  // the column's spelling
    EXPECT_TRUE(tree.setField("CO2IPR", 5, errors));
    EXPECT_TRUE(tree.setField("KMRSP(2)", 6, errors));
    EXPECT_FALSE(tree.setField("SNFXMX(1)", 7, errors));  // the crop's element: not a tree value
    EXPECT_EQ(errors, "");
    for (auto [column, value] :
         {std::pair{"co2ice(2,1,2)", 3}, {"co2ice(2,2,3)", 4}, {"co2ipr(2)", 5}, {"kmrsp(2)", 6}})
        EXPECT_FLOAT_EQ(tree.value(column), value) << column;
}

// Every member, every version: the written record reads back into the same
// values, no line is written twice, and each parameter column is written by
// at least one version.
TEST(OptionSequences, EveryMemberRoundTripsInEveryVersion) {
    for (int k = 0; k < kOptionKindCount; ++k) {
        option_kind kind = static_cast<option_kind>(k);
        const option_layout& layout = option_layout::of(kind);
        EXPECT_EQ(layout.problems(), std::vector<std::string>{}) << optionMember(kind).cliName;
        std::unique_ptr<option_list> list = makeOptionList(kind);
        option_record& original = list->addRecord("REC1");
        original.description = "all columns";
        for (int col = 2; col < original.columnCount(); ++col) {
            int type = original.def().fields()[static_cast<size_t>(col)].type;
            original.setNumber(col, type == kTypeSingle ? col * 0.25 + 0.00125 : (col % 2 ? kBitTrue : 0));
            if (type == kTypeByte || type == kTypeByteSigned) original.setNumber(col, col);
        }
        std::set<int> writtenColumns;
        for (int v = 1; v <= kVersionCount; ++v) {
            std::set<std::string> names;
            for (const option_line& l : layout.lines(v)) {
                EXPECT_TRUE(names.insert(l.name).second) << optionMember(kind).cliName << " v" << v << " " << l.name;
                writtenColumns.insert(l.column);
            }
            std::string text;
            list->writeText(text, v);
            std::unique_ptr<option_list> back = makeOptionList(kind);
            std::string errors, status;
            back->importText(text, "round trip", errors, status);
            EXPECT_EQ(errors, "");
            ASSERT_EQ(back->size(), 1u);
            const option_record& copy = back->recordAt(0);
            EXPECT_EQ(copy.name, "REC1");
            EXPECT_EQ(copy.description, "all columns");
            for (const option_line& l : layout.lines(v))
                EXPECT_EQ(copy.number(l.column), original.number(l.column))
                    << optionMember(kind).cliName << " v" << v << " " << l.name;
        }
        EXPECT_EQ(static_cast<int>(writtenColumns.size()), original.columnCount() - 2) << optionMember(kind).cliName;
    }
}

std::vector<std::string> lineNames(option_kind kind, int version) {
    std::vector<std::string> names;
    for (const option_line& l : option_layout::of(kind).lines(version)) names.push_back(l.name);
    return names;
}

// The daily model's orders are held against its own files (option_samples_test);
// the older releases keep theirs.
TEST(OptionSequences, OlderReleasesKeepTheirOwnOrders) {
    using names = std::vector<std::string>;
    EXPECT_EQ(lineNames(option_kind::harvest, 3), (names{"AGLREM", "BGLREM", "HIBG", "RMVSTR", "REMWSD", "FLGHRV"}));
    EXPECT_EQ(lineNames(option_kind::omad, 1).front(), "OMADTYP");
    names treeV1 = lineNames(option_kind::tree, 1);
    EXPECT_EQ(treeV1.size(), 153u);  // every parameter column, in table order
    EXPECT_EQ(treeV1[2], "PRDX(3)");
}

TEST(OptionSequences, ByteAndYesNoColumnsAreWrittenAsWholeNumbers) {
    graze_option graze;
    graze.name = "GM";
    graze.setNumber(graze.column("grzeff"), 2);
    graze.setNumber(graze.column("flgrem"), 0.1);
    std::string out = written(graze, 4);
    EXPECT_NE(out.find("\n0.10000        FLGREM\n"), std::string::npos);
    EXPECT_NE(out.find("\n2              GRZEFF\n"), std::string::npos);
    harvest_option harvest;
    harvest.name = "G";
    harvest.setFlag(harvest.column("flghrv"), true);
    EXPECT_EQ(written(harvest, 4),
              "G    \n"
              "0.00000        AGLREM\n"
              "0.00000        BGLREM\n"
              "1              FLGHRV\n"
              "0.00000        RMVSTR\n"
              "0.00000        REMWSD\n"
              "0.00000        HIBG\n");
}

// Each member is found again by its command-line name and its table, and its
// list makes records of its own kind; the crop's session message ends its line
// as the other members' do not.
TEST(OptionMembers, LookupsAndListsGiveEachMemberBack) {
    for (int k = 0; k < kOptionKindCount; ++k) {
        const option_member& m = optionMember(static_cast<option_kind>(k));
        SCOPED_TRACE(m.cliName);
        EXPECT_EQ(static_cast<int>(m.kind), k);
        EXPECT_EQ(optionMemberByCliName(m.cliName), &m);
        EXPECT_EQ(optionMemberByTable(m.table), &m);
        std::unique_ptr<option_list> list = makeOptionList(m.kind);
        ASSERT_NE(list, nullptr);
        EXPECT_EQ(list->kind(), m.kind);
        auto record = list->makeRecord();
        auto* option = dynamic_cast<option_record*>(record.get());
        ASSERT_NE(option, nullptr);
        EXPECT_EQ(option->kind(), m.kind);
        EXPECT_EQ(option->table(), m.table);
        EXPECT_STREQ(m.sessionErrorMessage(), m.kind == option_kind::crop
                                                  ? "ERROR, unable to create session on database.\n"
                                                  : "ERROR, unable to create session on database.\r\n");
    }
    EXPECT_EQ(optionMemberByCliName("graze"), nullptr);
    EXPECT_EQ(optionMemberByTable(table_id::soils), nullptr);
}

TEST(OptionRecord, NameAndDescriptionTravelAsColumns) {
    fire_option fire;
    fire.name = "C_M";
    fire.description = "COLD_MLRA";
    fire.setNumber(fire.column("frtsh"), 0.2);
    table_record row = fire.toRow();
    EXPECT_EQ(row.text("Name"), "C_M");
    EXPECT_EQ(row.text("Description"), "COLD_MLRA");
    fire_option back;
    back.fromRow(row);
    EXPECT_EQ(back.name, "C_M");
    EXPECT_EQ(back.description, "COLD_MLRA");
    EXPECT_FLOAT_EQ(back.value("frtsh"), 0.2f);
    fire_option unchanged = back;
    back.fromRow(graze_option().toRow());  // another member's row is not taken
    EXPECT_EQ(back.kind(), option_kind::fire);
    EXPECT_TRUE(static_cast<const table_record&>(back) == unchanged);
}

}  // namespace
