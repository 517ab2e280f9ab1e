// How one value line lands in a record's fields, and what a bad subscript says.
#include "paramfile/field_setter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using namespace sb;

TEST(FieldSetter, ScalarsMatchWithoutRegardToCase) {
    sb::message_sink errors;
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
    EXPECT_EQ(errors.text(), "");
}

// Integers truncate toward zero and clamp to their range; a boolean is zero or all bits.
TEST(FieldSetter, IntegersTruncateAndClampAndBooleansAreZeroOrAllBits) {
    const double inf = std::numeric_limits<double>::infinity();
    struct number_case {
        double value;
        int bits;  // 8, 16, 32, or 1 for a boolean
        int64_t expected;
    } cases[] = {{-2.9, 8, -2},      {2.9, 8, 2},           {1e10, 8, 127}, {-1e10, 16, -32768}, {NAN, 32, 0},
                 {1850.7, 32, 1850}, {inf, 32, 2147483647}, {0.0, 1, 0},    {0.001, 1, 65535},   {-1, 1, 65535}};
    for (const auto& c : cases) {
        sb::message_sink errors;
        field_setter set("n", c.value, errors);
        int8_t small = 7;
        int16_t medium = 7;
        int32_t large = 7;
        uint16_t flag = 7;
        bool matched = c.bits == 8    ? set.int8("N", small)
                       : c.bits == 16 ? set.int16("N", medium)
                       : c.bits == 32 ? set.int32("N", large)
                                      : set.boolean("N", flag);
        EXPECT_TRUE(matched);
        EXPECT_EQ(c.bits == 8 ? small : c.bits == 16 ? medium : c.bits == 32 ? large : flag, c.expected) << c.value;
        EXPECT_EQ(errors.text(), "");
    }
}

// One subscripted line set into a field of one to three dimensions: the element
// written (zero-based), or nothing with the message. The arrays are A[3], M[12][3],
// t[2][3][4] and, read as the file writes it (t(k,j,i)), t[2][3][4] after 5 leading values.
enum class shape { one, two, three, threeReversed };
constexpr int kNoElement = -1;
constexpr int kNotThisField = -2;

struct subscript_case {
    const char* line;
    shape form;
    int element;
    const char* message;
};

TEST(FieldSetter, SubscriptsPickTheElementOrAreRefusedWithoutWriting) {
    const subscript_case cases[] = {
        {"A(2)", shape::one, 1, ""},
        {"a(3)", shape::one, 2, ""},
        // The field's name must be followed immediately by "(".
        {"AX(1)", shape::one, kNotThisField, ""},
        {"A", shape::one, kNotThisField, ""},
        {"A(4)", shape::one, kNoElement, "ERROR, exceeds array size: A\n"},
        {"A(999999999999)", shape::one, kNoElement, "ERROR, exceeds array size: A\n"},
        {"A(2147483648)", shape::one, kNoElement, "ERROR, exceeds array size: A\n"},
        {"A(0)", shape::one, kNoElement, "ERROR, array subscript below 1: A(0)\n"},
        {"A(-1)", shape::one, kNoElement, "ERROR, array subscript below 1: A(-1)\n"},
        {"A()", shape::one, kNoElement, "ERROR, array subscript below 1: A()\n"},
        {"A(x)", shape::one, kNoElement, "ERROR, array subscript below 1: A(x)\n"},
        {"A(-999999999999)", shape::one, kNoElement, "ERROR, array subscript below 1: A(-999999999999)\n"},
        {"m(1,2)", shape::two, 1, ""},
        {"m(10,2)", shape::two, 9 * 3 + 1, ""},
        {"m(1, 3)", shape::two, 2, ""},  // blanks before a subscript are skipped
        {"m(13,2)", shape::two, kNoElement, "ERROR, exceeds array size: \"M\" 13 x 2 (12 x 3)\n"},
        {"m(2,4)", shape::two, kNoElement, "ERROR, exceeds array size: \"M\" 2 x 4 (12 x 3)\n"},
        {"m(99,999999999999)", shape::two, kNoElement, "ERROR, exceeds array size: \"M\" 99 x 2147483647 (12 x 3)\n"},
        {"m(1)", shape::two, kNoElement, "ERROR, array subscript below 1: m(1)\n"},
        {"m(0,1)", shape::two, kNoElement, "ERROR, array subscript below 1: m(0,1)\n"},
        {"m(1,-1)", shape::two, kNoElement, "ERROR, array subscript below 1: m(1,-1)\n"},
        // Three-digit first subscripts are not read: the second is taken from
        // inside the first, here "0,2)" which is 0.
        {"m(100,2)", shape::two, kNoElement, "ERROR, array subscript below 1: m(100,2)\n"},
        {"T(2,3,4)", shape::three, 23, ""},
        {"T(1,2,3)", shape::three, (0 * 3 + 1) * 4 + 2, ""},
        {"T(3,1,1)", shape::three, kNoElement, "ERROR, exceeds array size: t 3 x 1 x 1 (2 x 3 x 4)\n"},
        {"T(1,1)", shape::three, kNoElement, "ERROR, array subscript below 1: T(1,1)\n"},
        {"T(1,0,1)", shape::three, kNoElement, "ERROR, array subscript below 1: T(1,0,1)\n"},
        {"T(4,3,2)", shape::threeReversed, 5 + 23, ""},
        {"T(1,1,1)", shape::threeReversed, 5, ""},
        {"T(2,3,4)", shape::threeReversed, kNoElement, "ERROR, exceeds array size: t 2 x 3 x 4 (4 x 3 x 2)\n"},
    };
    for (const subscript_case& c : cases) {
        SCOPED_TRACE(c.line);
        std::vector<double> guarded(2 + 5 + 2 * 3 * 4 + 12 * 3, 0.0);  // a guard before and after
        double* array = guarded.data() + 1;
        sb::message_sink errors;
        field_setter set(c.line, 7, errors);
        bool matched = false;
        switch (c.form) {
            case shape::one:
                matched = set.array1("A", array, 3);
                break;
            case shape::two:
                matched = set.array2("M", array, 12, 3);
                break;
            case shape::three:
                matched = set.array3("t", array, 2, 3, 4);
                break;
            case shape::threeReversed:
                matched = set.array3Reversed("t", array, 2, 3, 4, 5);
                break;
        }
        EXPECT_EQ(matched, c.element != kNotThisField);
        EXPECT_EQ(set.found(), matched);
        EXPECT_EQ(errors.text(), c.message);
        for (size_t i = 0; i < guarded.size(); ++i)
            EXPECT_EQ(guarded[i], c.element >= 0 && i == static_cast<size_t>(c.element) + 1 ? 7.0 : 0.0) << i;
    }
    sb::message_sink errors;
    double prdx[3] = {};
    EXPECT_EQ(field_setter("PRDX(3)", 1, errors).array1Index("PRDX", prdx, 3), 2);
    EXPECT_EQ(field_setter("PRDX(4)", 1, errors).array1Index("PRDX", prdx, 3), -1);
    EXPECT_EQ(field_setter("OTHER(1)", 1, errors).array1Index("PRDX", prdx, 3), field_setter::kNoMatch);
}

}  // namespace
