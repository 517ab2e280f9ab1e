// The output variables, the request file and the list file reader.
#include <gtest/gtest.h>

#include <cstring>

#include "app/text_format.h"
#include "modeloutput/list_file_reader.h"
#include "modeloutput/output_variable_set.h"
#include "output_test_files.h"
#include "test_support.h"

using namespace sb;
using sbtest::block_shape;
using sbtest::list_file_content;

namespace {

const output_column_definition& definition(output_variable_set& set, int version, const std::string& name) {
    for (const auto& d : set.mainList(version))
        if (d.name == name) return d;
    for (const auto& d : set.extraList(version))
        if (d.name == name) return d;
    static output_column_definition none;
    return none;
}

}  // namespace

TEST(OutputVariables, RequestFileNamesTheVersionsVariables) {
    sbtest::temp_dir dir;
    output_variable_set set;
    auto annual = sbtest::recordWithBlocks({{1900, 12.0f}}), monthly = sbtest::recordWithBlocks({{1900, 1.0f}});
    // Version 4 always ends with the 24 monthly root names; version 2 has no
    // extra list even when months are wanted.
    struct request_case {
        int version;
        const tellura_control_record& record;
        long lines;
        const char* start;
        const char* middle;
        const char* end;
    } cases[] = {{4, annual, 110, "agcacc\nagcprd\n", "\nfcprd\nbgcjmth(1)\nbgcjmth(2)\n", "\nbgcmmth(12)\n"},
                 {3, annual, 102, "strcis(1,1)\n", "\nmetabe(2,3)\nagcacc\n", "\nfcprd\n"},
                 {2, monthly, 60, "agcacc\n", "", "\ncprodf\n"}};
    for (const auto& c : cases) {
        sb::message_sink errors;
        set.setCurrentVersion(c.version);
        ASSERT_TRUE(set.writeRequestFile(dir.path(), c.record, errors)) << errors;
        const std::string text = sbtest::readFile(dir.file("sb_outvars.txt"));
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), c.lines) << c.version;
        EXPECT_EQ(text.rfind(c.start, 0), 0u) << c.version;
        EXPECT_NE(text.find(c.middle), std::string::npos) << c.version;
        EXPECT_EQ(text.substr(text.size() - std::strlen(c.end)), c.end) << c.version;
        EXPECT_EQ(errors.text(), "");
    }
    sb::message_sink errors;
    std::string missing = dir.file("no/such/folder");
    EXPECT_FALSE(set.writeRequestFile(missing, annual, errors));
    EXPECT_EQ(errors.text(), "ERROR, can't open outvars file \"" + missing + "/sb_outvars.txt\".\n");
}

TEST(ListHeader, NarrowLayoutAndACutLastName) {
    output_variable_set set;
    set.setCurrentVersion(2);
    list_file_content content;
    content.narrow = true;
    content.names = {"agcacc", "somsc"};
    std::string header = sbtest::listHeader(content);
    sb::message_sink errors;
    set.matchHeader(header, header.size() + 1, false, errors);
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(definition(set, 2, "agcacc").column, 0);
    EXPECT_EQ(definition(set, 2, "somsc").column, 1);

    // A wide header whose last name is cut short still counts that column.
    output_variable_set wide;
    std::string cut = sb::strprintf("%11s          %-11s     som", "time", "agcacc");
    errors.clear();
    wide.matchHeader(cut, cut.size() + 1, false, errors);
    EXPECT_EQ(errors.text(), "WARNING, LIS file column 2 name not requested: \"som\".\n");
}

TEST(ListValues, ExtractionChecksTheNameAndLeavesUnmatchedValuesAlone) {
    output_column_definition d("somsc");
    d.column = 1;
    std::string row = sb::strprintf("%11.2f     %11.4f     %11.4f", 1990.0, 1.5, 1851.537);
    sb::message_sink errors;
    bool error = false;
    float value = -1;
    EXPECT_EQ(d.extractFloat(row, 4, true, "somsc", error, value, errors), 1);
    EXPECT_FLOAT_EQ(value, 1851.537f);
    EXPECT_FALSE(error);

    EXPECT_EQ(d.extractFloat(row, 4, true, "somtc", error, value, errors), 0);
    EXPECT_TRUE(error);
    EXPECT_EQ(errors.text(),
              "ERROR, column output_column_definition.extract_tellura_lis requested column \"somsc\" "
              "doesn't match \"somtc\".\n");

    output_column_definition unmatched("agcacc");
    error = false;
    value = -1;
    EXPECT_EQ(unmatched.extractFloat(row, 4, true, "other", error, value, errors), 0);
    EXPECT_EQ(value, -1);
    EXPECT_FALSE(error);  // an unmatched column is not even checked

    output_column_definition crop("crpval");
    crop.column = 0;
    unsigned code = 99;
    std::string intRow = sb::strprintf("%11.2f     %11u", 1990.0, 42u);
    EXPECT_EQ(crop.extractUnsigned(intRow, 4, false, "", error, code, errors), 1);
    EXPECT_EQ(code, 42u);
    output_column_definition beyond("x");
    beyond.column = 5;  // past the end of the row
    EXPECT_EQ(beyond.extractUnsigned(intRow, 4, false, "", error, code, errors), 0);
    EXPECT_EQ(code, 42u);
}

namespace {

struct list_run {
    sb::message_sink errors;
    bool ok = false;
    tellura_outputs outputs;
};

list_run readList(const std::string& text, int version, const std::vector<block_shape>& blocks) {
    sbtest::temp_dir dir;
    sbtest::writeFile(dir.file("sb.lis"), text);
    list_run run;
    output_variable_set set;
    run.ok = readListFile(set, dir.file("sb.lis"), version, sbtest::blocksOf(blocks), run.outputs, run.errors);
    return run;
}

// Annual rows filling two blocks are read by the damaged-file tests below, and
// their values against the real samples.
list_file_content annualContent() {
    list_file_content content;
    content.names = {"agcacc", "somsc", "aglcn", "crpval"};
    for (int y = 1990; y <= 1995; ++y) {
        content.times.push_back(y);
        content.values.push_back({y * 0.5, y + 0.25, 12.5, 3});
    }
    return content;
}

}  // namespace

TEST(ListFile, Versions3And5SendTheLitterStateToTheEndOfRunRecord) {
    for (int version : {3, 5}) {
        list_file_content content;
        content.names = {"strcis(1,1)", "metabe(2,3)", "agcacc"};
        content.times = {1990, 1991};
        content.values = {{1, 2, 3}, {4, 5, 6}};
        list_run run = readList(sbtest::listFile(content), version, {{1991, 12.0f}});
        ASSERT_TRUE(run.ok) << run.errors;
        const auto& out = run.outputs;
        ASSERT_TRUE(out.hasEndOfRun);
        EXPECT_FLOAT_EQ(out.endOfRun.single(out.endOfRun.column("strcis(1,1)")), 4.0f);
        EXPECT_FLOAT_EQ(out.endOfRun.single(out.endOfRun.column("metabe(2,3)")), 5.0f);
        ASSERT_EQ(out.annual.size(), 2u);
        EXPECT_FLOAT_EQ(out.annual[1].single(out.annual[1].column("agcacc")), 6.0f);
    }
    // Version 2 has no such split: its list has no end-of-run names at all.
    list_file_content content;
    content.narrow = true;
    content.names = {"agcacc", "somsc"};
    content.times = {1990};
    content.values = {{7, 8}};
    list_run run = readList(sbtest::listFile(content), 2, {{1990, 12.0f}});
    ASSERT_TRUE(run.ok) << run.errors;
    EXPECT_EQ(run.errors, "1 records read, from years 1990 to 1990.\n");
    EXPECT_FALSE(run.outputs.hasEndOfRun);
    EXPECT_EQ(run.outputs.monthlyCount(), 0u);
    ASSERT_EQ(run.outputs.annual.size(), 1u);
    EXPECT_FLOAT_EQ(run.outputs.annual[0].single(run.outputs.annual[0].column("somsc")), 8.0f);
}

TEST(ListFile, OpenEmptyAndHeaderOnlyFilesFail) {
    tellura_outputs outputs;
    output_variable_set set;
    sb::message_sink errors;
    EXPECT_FALSE(readListFile(set, "/no/such/sb.lis", 4, sbtest::blocksOf({{1990, 12.0f}}), outputs, errors));
    EXPECT_EQ(errors.text(), "ERROR, unable to open LIS file: /no/such/sb.lis\n");

    list_run empty = readList("", 4, {{1990, 12.0f}});
    EXPECT_FALSE(empty.ok);
    EXPECT_EQ(empty.errors, "ERROR, LIS file is empty.\n");

    list_file_content content = annualContent();
    list_run headerOnly = readList(sbtest::listHeader(content) + "\n", 4, {{1990, 12.0f}});
    EXPECT_FALSE(headerOnly.ok);
    // Version 4 asks for no crpval; the header is matched before the second line is missed.
    EXPECT_EQ(headerOnly.errors,
              "WARNING, LIS file column 4 name not requested: \"crpval\".\n"
              "ERROR, LIS file missing data.\n");

    list_run noBlocks = readList(sbtest::listFile(content), 3, {});
    EXPECT_TRUE(noBlocks.ok);
    EXPECT_EQ(noBlocks.errors, "");
    EXPECT_TRUE(noBlocks.outputs.empty());
}

TEST(ListFile, DamagedFilesKeepWhatWasReadAndNeverCrash) {
    list_file_content content = annualContent();
    std::string text = sbtest::listFile(content);

    // Truncated in the middle of a row: the rows before stay, the cut value is
    // read as far as it goes, the block ends with what it has.
    std::string cut = text.substr(0, text.size() - 30);
    list_run truncated = readList(cut, 3, {{1995, 12.0f}});
    EXPECT_TRUE(truncated.ok) << truncated.errors;
    EXPECT_EQ(truncated.outputs.annual.size(), 6u);
    EXPECT_EQ(truncated.errors, "6 records read, from years 1990 to 1995.\n");

    // A row whose time is not a number fails its block; earlier blocks stay.
    std::string bad = text;
    bad.replace(bad.find("    1994.00"), 11, "    garbage");
    list_run broken = readList(bad, 3, {{1991, 12.0f}, {1994, 12.0f}});
    EXPECT_FALSE(broken.ok);
    EXPECT_EQ(broken.errors,
              "3 records read, from years 1990 to 1992.\n"
              "ERROR, LIS file line 7: time \"garbage\" is not a number.\n"
              "1 records read, from years 1993 to 1993.\n");
    EXPECT_EQ(broken.outputs.annual.size(), 4u);

    // Values the model overflowed or could not compute are left unset and reported.
    std::string odd = text;
    size_t row3 = odd.find("    1992.00");
    odd.replace(row3 + 16, 11, "      1e999");
    odd.replace(row3 + 32, 11, "        nan");
    list_run overflow = readList(odd, 3, {{1995, 12.0f}});
    EXPECT_TRUE(overflow.ok);
    EXPECT_EQ(overflow.errors,
              "WARNING, LIS file line 5: value \"1e999\" of \"agcacc\" is not a finite number; left unset.\n"
              "WARNING, LIS file line 5: value \"nan\" of \"somsc\" is not a finite number; left unset.\n"
              "6 records read, from years 1990 to 1995.\n");
    const auto& y1992 = overflow.outputs.annual[2];
    EXPECT_TRUE(y1992.isMissing(y1992.column("agcacc")));
    EXPECT_TRUE(y1992.isMissing(y1992.column("somsc")));
    EXPECT_FLOAT_EQ(y1992.single(y1992.column("aglcn")), 12.5f);
}
