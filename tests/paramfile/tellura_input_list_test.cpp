// Reading and writing whole ".100" files: records, messages, bad input.
#include "paramfile/tellura_input_list.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>

#include "paramfile/field_setter.h"
#include "paramfile/generic_tellura_input.h"
#include "paramfile/value_line_writer.h"
#include "test_support.h"

namespace {

using namespace sb;

// A small record kind in the way the option lists define theirs.
struct test_crop : tellura_input {
    double prdx[3] = {0, 0, 0};
    double fulcan = 0;
    int32_t idx = 0;
    uint16_t flag = 0;

    bool setField(std::string_view fieldName, double value, sb::message_sink& errors) override {
        field_setter set(fieldName, value, errors);
        set.array1("PRDX", prdx, 3) || set.real("FULCAN", fulcan) || set.int32("IDX", idx) || set.boolean("FLAG", flag);
        return set.found();
    }
    void writeValues(std::string& out, int version) const override {
        writeArray1(out, prdx, 3, "PRDX");
        writeReal(out, fulcan, "FULCAN");
        if (version >= 4) writeLargeInt(out, idx, "IDX");
        writeBoolean(out, flag, "FLAG");
    }
};

using test_crop_list = tellura_input_list_of<test_crop>;

struct imported {
    import_counts counts;
    sb::message_sink errors;
    std::string status;
};

template <class List>
imported importText(List& list, std::string_view text, const std::string& path = "crop.100") {
    imported result;
    result.counts = list.importText(text, path, result.errors, result.status);
    return result;
}

// Lines the model would misread: each is reported with its file and line
// (counted as a bad line) and the rest of the file is still read. A value
// that is not a finite number is refused (it would be stored as 0, or as a NaN
// no project can hold); "***" lines are section headings; an empty or blank
// line ends the import.
TEST(TelluraInputList, BadLinesAreReportedAndTheRestRead) {
    const std::string syntax = "Syntax error in cultivation parameter file.\nFile: \"crop.100\", line ";
    const std::string noName = "Syntax error, no field name, in cultivation parameter file.\nFile: \"crop.100\", line ";
    struct bad_case {
        std::string text;
        std::string errors;
        int imported;
        std::array<double, 3> prdx;  // of the first record
    } cases[] = {
        {"1 PRDX(1)\n  2 PRDX(2)\nC1\n3 'PRDX(3)' words after the name\n",
         syntax + "1\n" + syntax + "2\n",
         1,
         {0, 0, 3}},
        // "abc" starts with a letter: a new record, not a value.
        {"C1\n1.5\n2 ''\n3 NOSUCH\n4 PRDX(9)\nabc\n",
         noName + "2\n" + noName + "3\n" + "ERROR, exceeds array size: PRDX\nFile: \"crop.100\", line 5\n" +
             "ERROR, option record \"abc\" has no values.\nFile: \"crop.100\", line 6\n",
         2,
         {0, 0, 0}},
        {"C1\n?number PRDX(1)\n*** PRDX(2)\n-2.5e1 PRDX(3)\n-nan PRDX(1)\n1e999 PRDX(1)\n0x10 PRDX(1)\n",
         "ERROR, value \"?number\" is not a number.\nFile: \"crop.100\", line 2\n"
         "ERROR, value \"-nan\" is not a number.\nFile: \"crop.100\", line 5\n"
         "ERROR, value \"1e999\" is not a number.\nFile: \"crop.100\", line 6\n"
         "ERROR, value \"0x10\" is not a number.\nFile: \"crop.100\", line 7\n",
         1,
         {0, 0, -25}},
        {"C1\n1 PRDX(1)\n\nC2\n2 PRDX(1)\n", "", 1, {1, 0, 0}},
        // The name is cut to 20 characters: the same name as cut again is a second record.
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZ\n1 PRDX(1)\nABCDEFGHIJKLMNOPQRSTUVW\n2 PRDX(1)\n",
         "WARNING, \"crop.100\" line 3: a second record \"ABCDEFGHIJKLMNOPQRST\" (the first is on line 1); the model "
         "reads the first, so this one is not imported.\n",
         1,
         {1, 0, 0}},
        {"C1\r\n1 PRDX(1)\r\n   \t \r\nC2\r\n", "", 1, {1, 0, 0}},
        {"", "", 0, {}},
    };
    for (const auto& c : cases) {
        test_crop_list list;
        imported r = importText(list, c.text);
        SCOPED_TRACE(c.text);
        EXPECT_EQ(r.errors, c.errors);
        size_t bad = 0;
        for (size_t at = 0; (at = c.errors.find("\nFile: ", at)) != std::string::npos; ++at) ++bad;
        EXPECT_EQ(r.counts.badLines, static_cast<int>(bad));
        EXPECT_EQ(r.counts.imported, c.imported);
        EXPECT_EQ(r.counts.clean(), bad == 0 && c.imported > 0);
        EXPECT_EQ(r.status,
                  "Imported " + std::to_string(c.imported) + " records and updated 0 records from \"crop.100\".\n");
        ASSERT_EQ(list.size(), static_cast<size_t>(c.imported));
        if (c.imported) { EXPECT_EQ(std::to_array(list.recordAt(0).prdx), c.prdx); }
    }
}

// A line longer than 131 characters is cut there and the rest is skipped:
// the model's own files pad headers with hundreds of blanks.
TEST(TelluraInputList, LongLinesAreCutAt131Characters) {
    test_crop_list list;
    std::string padded = "KNZ     Tallgrass" + std::string(600, ' ') + "\r\n";
    std::string longValue = "7" + std::string(123, ' ') + "PRDX(1)" + "\n";  // exactly 131
    std::string cutName = "8" + std::string(127, ' ') + "PRDX(2)" + "\n";    // cut to "PRD"
    std::string tail = "0.5 PRDX(2)\n" + std::string(140, '9') + " PRDX(3)" + std::string(10000, 'x') + "\n";
    imported r = importText(list, padded + longValue + cutName + tail);
    // The 140-digit value fills the whole 131 characters: no name is left, and
    // the x's after it are not read as a header of their own.
    EXPECT_EQ(r.errors, "Syntax error, no field name, in cultivation parameter file.\nFile: \"crop.100\", line 5\n");
    ASSERT_EQ(list.size(), 1u);
    const test_crop& knz = list.recordAt(0);
    EXPECT_EQ(knz.description, "Tallgrass");
    EXPECT_EQ(knz.prdx[0], 7.0);
    EXPECT_EQ(knz.prdx[1], 0.5);  // "PRD" matched nothing
    EXPECT_EQ(knz.prdx[2], 0.0);  // the name lay beyond column 131
    // A long description is still too long once cut.
    test_crop_list other;
    r = importText(other, "X " + std::string(10000, 'd') + "\n1 PRDX(1)\n");
    EXPECT_EQ(r.errors, "ERROR, description too long for input.\nX\nFile: \"crop.100\", line 1\n");
}

TEST(TelluraInputList, BinaryGarbageAndHugeNamesNeverCrash) {
    std::string garbage;
    unsigned state = 12345;
    for (int i = 0; i < 200000; ++i) {
        state = state * 1103515245u + 12345u;
        garbage += static_cast<char>(state >> 16);
    }
    generic_tellura_input_list list;
    imported r = importText(list, garbage);
    EXPECT_NE(r.status.find("Imported "), std::string::npos);
    std::string out;
    list.writeText(out, 4);  // writing back what was read must work too

    generic_tellura_input_list names;
    std::string name200(200, 'N');
    r = importText(names, name200 + " desc\n1 " + name200 + "\n2 " + name200 + "(999999999999)\n");
    ASSERT_EQ(names.size(), 1u);
    EXPECT_EQ(names.at(0).name, std::string(20, 'N'));
}

TEST(TelluraInputList, WritesHeadersAndValuesInListOrder) {
    test_crop_list list;
    auto& a = static_cast<test_crop&>(list.add(std::make_unique<test_crop>()));
    a.name = "AB";
    a.description = "two letters";
    a.prdx[1] = 0.25;
    a.flag = 65535;
    auto& b = static_cast<test_crop&>(list.add(std::make_unique<test_crop>()));
    b.name = "LONGNAME";
    b.idx = 12;
    std::string out;
    list.writeText(out, 4);
    EXPECT_EQ(out,
              "AB    two letters\n"
              "0.00000        PRDX(1)\n0.25000        PRDX(2)\n0.00000        PRDX(3)\n"
              "0.00000        FULCAN\n0              IDX\n1              FLAG\n"
              "LONGNAME\n"
              "0.00000        PRDX(1)\n0.00000        PRDX(2)\n0.00000        PRDX(3)\n"
              "0.00000        FULCAN\n12             IDX\n0              FLAG\n");
    std::string v3;
    list.writeText(v3, 3);
    EXPECT_EQ(v3.find("IDX"), std::string::npos);

    sbtest::temp_dir dir;
    sb::message_sink errors;
    sbtest::writeFile(dir.file("crop.100"), "old contents that are longer than the new ones" + out);
    EXPECT_TRUE(list.write(dir.file("crop.100"), errors, 4));
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(sbtest::readFile(dir.file("crop.100")), out);

    // What was written reads back into the same values.
    test_crop_list back;
    std::string status;
    back.importFile(dir.file("crop.100"), errors, status);
    EXPECT_EQ(errors.text(), "");
    ASSERT_EQ(back.size(), 2u);
    EXPECT_EQ(back.recordAt(0).description, "two letters");
    EXPECT_EQ(back.recordAt(0).prdx[1], 0.25);
    EXPECT_EQ(back.recordAt(1).idx, 12);

    EXPECT_FALSE(list.write(dir.file("no/such/dir/crop.100"), errors, 4));
    EXPECT_EQ(errors.text(),
              "ERROR, unable to open file in tellura_input_list.write: " + dir.file("no/such/dir/crop.100"));
}

TEST(TelluraInputList, WriteFailureOnFullDevice) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full on this system";
    test_crop_list list;
    for (int i = 0; i < 200; ++i) list.add(std::make_unique<test_crop>()).name = "R" + std::to_string(i);
    sb::message_sink errors;
    EXPECT_FALSE(list.write("/dev/full", errors, 4));
    EXPECT_EQ(errors.text(), "ERROR, unable to write file \"/dev/full\"\n");
}

TEST(GenericTelluraInput, KeepsEveryPairInFileOrderAndReportsANameGivenTwice) {
    generic_tellura_input_list list;
    imported r = importText(list, "X     Fixed_values\n1.5 'b(1)'\n2 a\n3 B(1)\n");
    EXPECT_EQ(r.errors,
              "ERROR, \"crop.100\" line 4: \"B(1)\" is given twice in \"X\" (first on line 2); the second value is "
              "not used.\n");
    EXPECT_EQ(r.counts.duplicates, 1);
    ASSERT_EQ(list.size(), 1u);
    const generic_tellura_input& x = list.recordAt(0);
    ASSERT_EQ(x.values.size(), 2u);
    EXPECT_EQ(x.values[0].name, "b(1)");
    EXPECT_EQ(x.values[0].value, 1.5);
    EXPECT_EQ(x.findValue("A")->value, 2.0);
    EXPECT_EQ(x.findValue("c"), nullptr);
    std::string out;
    list.writeText(out, 4);
    EXPECT_EQ(out, "X     Fixed_values\n1.50000        b(1)\n2.00000        a\n");
}

}  // namespace
