// How one value line lands in a record's fields, and what a bad subscript says.
#include "paramfile/field_setter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace sb;

TEST(FieldSetter, ScalarsMatchWithoutRegardToCase) {
    std::string errors;
    double real = 0;
    field_setter set("fulcan", 100.25, errors);
    EXPECT_FALSE(set.real("FULCA", real));
    EXPECT_FALSE(set.found());
    EXPECT_TRUE(set.real("FULCAN", real));
    EXPECT_TRUE(set.found());
    EXPECT_EQ(real, 100.25);

    float single = 0;
    field_setter(" x", 1.0, errors).real("x", single);  // blanks are part of the name
    EXPECT_EQ(single, 0.0f);
    EXPECT_EQ(errors, "");
}

TEST(FieldSetter, IntegersTruncateTowardZeroAndClamp) {
    std::string errors;
    int8_t small = 0;
    int16_t medium = 0;
    int32_t large = 0;
    EXPECT_TRUE(field_setter("n", -2.9, errors).int8("N", small));
    EXPECT_EQ(small, -2);
    field_setter("n", 2.9, errors).int8("N", small);
    EXPECT_EQ(small, 2);
    field_setter("n", 1e10, errors).int8("N", small);
    EXPECT_EQ(small, 127);
    field_setter("n", -1e10, errors).int16("N", medium);
    EXPECT_EQ(medium, -32768);
    field_setter("n", std::nan(""), errors).int32("N", large);
    EXPECT_EQ(large, 0);
    field_setter("n", 1850.7, errors).int32("N", large);
    EXPECT_EQ(large, 1850);
    field_setter("n", std::numeric_limits<double>::infinity(), errors).int32("N", large);
    EXPECT_EQ(large, 2147483647);
    EXPECT_EQ(errors, "");
}

TEST(FieldSetter, BooleanIsZeroOrAllBits) {
    std::string errors;
    uint16_t flag = 7;
    field_setter("F", 0.0, errors).boolean("f", flag);
    EXPECT_EQ(flag, 0);
    field_setter("F", 0.001, errors).boolean("f", flag);
    EXPECT_EQ(flag, 65535);
    field_setter("F", -1, errors).boolean("f", flag);
    EXPECT_EQ(flag, 65535);
}

TEST(FieldSetter, OneSubscript) {
    std::string errors;
    double prdx[3] = {0, 0, 0};
    EXPECT_TRUE(field_setter("prdx(2)", 0.4, errors).array1("PRDX", prdx, 3));
    EXPECT_EQ(prdx[1], 0.4);
    // The field's name must be followed immediately by "(".
    EXPECT_FALSE(field_setter("PRDXX(1)", 1, errors).array1("PRDX", prdx, 3));
    EXPECT_FALSE(field_setter("PRDX", 1, errors).array1("PRDX", prdx, 3));
    EXPECT_EQ(errors, "");

    field_setter over("PRDX(4)", 9, errors);
    EXPECT_TRUE(over.array1("Prdx", prdx, 3));
    EXPECT_TRUE(over.found());
    EXPECT_EQ(errors, "ERROR, exceeds array size: Prdx\n");
    EXPECT_EQ(prdx[0] + prdx[2], 0.0);

    errors.clear();
    EXPECT_EQ(field_setter("PRDX(3)", 1, errors).array1Index("PRDX", prdx, 3), 2);
    EXPECT_EQ(field_setter("PRDX(4)", 1, errors).array1Index("PRDX", prdx, 3), -1);
    EXPECT_EQ(field_setter("OTHER(1)", 1, errors).array1Index("PRDX", prdx, 3), field_setter::kNoMatch);
}

TEST(FieldSetter, SubscriptsBelowOneOrHugeAreRefusedWithoutWriting) {
    double guard[5] = {0, 0, 0, 0, 0};
    double* array = guard + 1;  // 3 elements with a guard on each side
    for (const char* name : {"A(0)", "A(-1)", "A()", "A(x)", "A(-999999999999)"}) {
        std::string errors;
        field_setter(name, 5, errors).array1("A", array, 3);
        EXPECT_EQ(errors, std::string("ERROR, array subscript below 1: ") + name + "\n");
    }
    std::string errors;
    field_setter("A(999999999999)", 5, errors).array1("A", array, 3);
    field_setter("A(2147483648)", 5, errors).array1("A", array, 3);
    EXPECT_EQ(errors, "ERROR, exceeds array size: A\nERROR, exceeds array size: A\n");
    for (double value : guard) EXPECT_EQ(value, 0.0);
}

TEST(FieldSetter, TwoSubscriptsRowMajor) {
    std::string errors;
    double m[12 * 3] = {};  // 12 rows x 3 columns
    field_setter("m(1,2)", 12, errors).array2("M", m, 12, 3);
    field_setter("m(10,2)", 102, errors).array2("M", m, 12, 3);
    field_setter("m(1, 3)", 13, errors).array2("M", m, 12, 3);  // blanks before a subscript are skipped
    EXPECT_EQ(m[1], 12.0);
    EXPECT_EQ(m[9 * 3 + 1], 102.0);
    EXPECT_EQ(m[2], 13.0);
    EXPECT_EQ(errors, "");

    field_setter("m(13,2)", 1, errors).array2("M", m, 12, 3);
    field_setter("m(2,4)", 1, errors).array2("M", m, 12, 3);
    EXPECT_EQ(errors,
              "ERROR, exceeds array size: \"M\" 13 x 2 (12 x 3)\n"
              "ERROR, exceeds array size: \"M\" 2 x 4 (12 x 3)\n");

    // Three-digit first subscripts are not read: the second is taken from
    // inside the first, here "0,2)" which is 0.
    errors.clear();
    field_setter("m(100,2)", 1, errors).array2("M", m, 200, 3);
    EXPECT_EQ(errors, "ERROR, array subscript below 1: m(100,2)\n");
    errors.clear();
    field_setter("m(1)", 1, errors).array2("M", m, 12, 3);
    field_setter("m(0,1)", 1, errors).array2("M", m, 12, 3);
    field_setter("m(1,-1)", 1, errors).array2("M", m, 12, 3);
    EXPECT_EQ(errors,
              "ERROR, array subscript below 1: m(1)\n"
              "ERROR, array subscript below 1: m(0,1)\n"
              "ERROR, array subscript below 1: m(1,-1)\n");
    errors.clear();
    field_setter("m(99,999999999999)", 1, errors).array2("M", m, 12, 3);
    EXPECT_EQ(errors, "ERROR, exceeds array size: \"M\" 99 x 2147483647 (12 x 3)\n");
}

TEST(FieldSetter, ThreeSubscripts) {
    std::string errors;
    double t[2 * 3 * 4] = {};
    field_setter("T(2,3,4)", 7, errors).array3("t", t, 2, 3, 4);
    field_setter("T(1,2,3)", 5, errors).array3("t", t, 2, 3, 4);
    EXPECT_EQ(t[23], 7.0);
    EXPECT_EQ(t[(0 * 3 + 1) * 4 + 2], 5.0);
    EXPECT_EQ(errors, "");

    field_setter("T(3,1,1)", 1, errors).array3("t", t, 2, 3, 4);
    field_setter("T(1,1)", 1, errors).array3("t", t, 2, 3, 4);
    field_setter("T(1,0,1)", 1, errors).array3("t", t, 2, 3, 4);
    EXPECT_EQ(errors,
              "ERROR, exceeds array size: t 3 x 1 x 1 (2 x 3 x 4)\n"
              "ERROR, array subscript below 1: T(1,1)\n"
              "ERROR, array subscript below 1: T(1,0,1)\n");
}

TEST(FieldSetter, ThreeSubscriptsReversedWithPlaneOffset) {
    std::string errors;
    double t[5 + 2 * 3 * 4] = {};
    // The file writes T(k,j,i): k up to 4, j up to 3, i up to 2.
    field_setter("T(4,3,2)", 9, errors).array3Reversed("T", t, 2, 3, 4, 5);
    field_setter("T(1,1,1)", 8, errors).array3Reversed("T", t, 2, 3, 4, 5);
    EXPECT_EQ(t[5 + 23], 9.0);
    EXPECT_EQ(t[5], 8.0);
    field_setter("T(2,3,4)", 1, errors).array3Reversed("T", t, 2, 3, 4, 5);
    EXPECT_EQ(errors, "ERROR, exceeds array size: T 2 x 3 x 4 (4 x 3 x 2)\n");
}

}  // namespace
