// The option records' ".100" form: whole-number columns, the members' lookups,
// and reading every name form back.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "records/option_layout.h"
#include "records/option_list.h"

namespace {

using namespace sb;

std::string written(const option_record& record, int version) {
    std::string out;
    record.write(out, version);
    return out;
}

// Reading: every form a version writes, the column names, quotes and case.
TEST(OptionSetField, CropReadsEveryWrittenFormAndTheColumnNames) {
    list_tellura_crops crops;
    sb::message_sink errors;
    std::string status;
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
    EXPECT_EQ(errors.text(), "");
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
    sb::message_sink errors;
    EXPECT_TRUE(crop.setField("PPDF(5)", 1, errors));
    EXPECT_TRUE(crop.setField("pramn(4,1)", 1, errors));
    EXPECT_TRUE(crop.setField("CO2ICE(1,3,1)", 1, errors));
    EXPECT_TRUE(crop.setField("PRDX(2)", 1, errors));
    EXPECT_EQ(errors.text(),
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

// Every member, every version: the written record reads back into the same
// values, and each parameter column is written by at least one version.
TEST(OptionSequences, EveryMemberRoundTripsInEveryVersion) {
    for (int k = 0; k < kOptionKindCount; ++k) {
        const option_kind kind = static_cast<option_kind>(k);
        const option_layout& layout = option_layout::of(kind);
        SCOPED_TRACE(optionMember(kind).cliName);
        EXPECT_EQ(layout.problems(), std::vector<std::string>{});
        std::unique_ptr<option_list> list = makeOptionList(kind);
        option_record& original = list->addRecord("REC1");
        for (int col = 2; col < original.columnCount(); ++col) {
            int type = original.def().fields()[static_cast<size_t>(col)].type;
            original.setNumber(col, type == kTypeSingle ? col * 0.25 + 0.00125 : (col % 2 ? kBitTrue : 0));
            if (type == kTypeByte || type == kTypeByteSigned) original.setNumber(col, col);
        }
        std::set<int> writtenColumns;
        for (int v = 1; v <= kVersionCount; ++v) {
            std::string text, status;
            sb::message_sink errors;
            list->writeText(text, v);
            std::unique_ptr<option_list> back = makeOptionList(kind);
            back->importText(text, "round trip", errors, status);
            EXPECT_EQ(errors.text(), "");
            ASSERT_EQ(back->size(), 1u);
            for (const option_line& l : layout.lines(v)) {
                writtenColumns.insert(l.column);
                EXPECT_EQ(back->recordAt(0).number(l.column), original.number(l.column)) << "v" << v << " " << l.name;
            }
        }
        EXPECT_EQ(static_cast<int>(writtenColumns.size()), original.columnCount() - 2);
    }
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

}  // namespace
