// The model reads its parameters by column: every byte of a value line matters.
#include "paramfile/value_line_writer.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include <cstdint>

namespace {

using namespace sb;

// Each writer appends to what is there; the name starts in column 16, or 15
// after the short gap.
TEST(ValueLineWriter, ScalarKindsWithName) {
    std::string out = "HEAD\n";
    writeSmallInt(out, 3, "IDEF");
    writeSmallInt(out, -12, "X");
    writeBoolean(out, kTrue16, "FLAG");
    writeBoolean(out, 1, "FLAG");  // only 65535 is true
    writeSignedBoolean(out, kTrue16, "SB");
    writeSignedBoolean(out, 0, "SB");
    writeReal(out, 0.4, "PRDX(1)");
    writeReal(out, -1234.567891, "big");
    writeRealWidth(out, 2.5, 10, 2, "w");
    writeRealWidth(out, 2.5, 6, 3, "w");
    writeLargeInt(out, 1850, "STRTYR");
    writeLargeIntShortGap(out, 42, "GAP");
    EXPECT_EQ(out,
              "HEAD\n"
              "3              IDEF\n"
              "-12             X\n"
              "1              FLAG\n"
              "0              FLAG\n"
              "1             SB\n"
              "-1            SB\n"
              "0.40000        PRDX(1)\n"
              "-1234.56789     big\n"
              "2.50           w\n"
              "2.500      w\n"
              "1850           STRTYR\n"
              "42            GAP\n");
}

TEST(ValueLineWriter, BareForms) {
    std::string out;
    writeSmallInt(out, 5);
    writeBoolean(out, kTrue16);
    writeSignedBoolean(out, 7);
    writeReal(out, 3.0);
    writeRealWidth(out, 3.125, 8, 3);
    writeLargeInt(out, -99);
    writeLargeIntShortGap(out, 12345678);
    EXPECT_EQ(out, "5 \n1 \n-1\n3.00000   \n3.125   \n-99       \n12345678  \n");
}

// A value the usual decimals would not give back gets the decimals it needs:
// the model reads it as the 32-bit real the project holds.
TEST(ValueLineWriter, RealsReadBackAsTheValueHeld) {
    const struct {
        double value;
        const char* line;
    } cases[] = {
        {30.539165, "30.539165      SITLAT\n"},  // 30.53917 would move the site
        {-96.421337, "-96.421337     SITLAT\n"},   {0.000008, "0.000008       SITLAT\n"},
        {0.1, "0.10000        SITLAT\n"},           // exact as it is: the usual decimals stay
        {1234567.0, "1234567.00000     SITLAT\n"},  // wider than the field: the gap stays
    };
    for (const auto& c : cases) {
        std::string out;
        writeReal(out, c.value, "SITLAT");
        EXPECT_EQ(out, c.line) << c.value;
        EXPECT_EQ(std::strtof(out.c_str(), nullptr), static_cast<float>(c.value)) << out;
    }
    std::string element;
    writeElement(element, 0.123456, "AWILT", 3);
    EXPECT_EQ(element, "0.123456       AWILT(3)\n");
}

TEST(ValueLineWriter, ArraysRowMajorAndColumn) {
    const double one[3] = {1.0, 2.5, -3.0};
    std::string out;
    writeArray1(out, one, 3, "som1c");
    EXPECT_EQ(out,
              "1.00000        som1c(1)\n"
              "2.50000        som1c(2)\n"
              "-3.00000       som1c(3)\n");

    const float two[6] = {11, 12, 13, 21, 22, 23};  // 2 rows x 3 columns
    out.clear();
    writeArray2(out, two, 2, 3, "m");
    EXPECT_EQ(out,
              "11.00000       m(1,1)\n12.00000       m(1,2)\n13.00000       m(1,3)\n"
              "21.00000       m(2,1)\n22.00000       m(2,2)\n23.00000       m(2,3)\n");
    out.clear();
    writeArray2Column(out, two, 2, 3, 2, "m");
    EXPECT_EQ(out, "12.00000       m(1,2)\n22.00000       m(2,2)\n");

    const int16_t three[8] = {111, 112, 121, 122, 211, 212, 221, 222};  // 2 x 2 x 2
    out.clear();
    writeArray3(out, three, 2, 2, 2, "t");
    EXPECT_EQ(out,
              "111.00000      t(1,1,1)\n112.00000      t(1,1,2)\n121.00000      t(1,2,1)\n"
              "122.00000      t(1,2,2)\n211.00000      t(2,1,1)\n212.00000      t(2,1,2)\n"
              "221.00000      t(2,2,1)\n222.00000      t(2,2,2)\n");
}

}  // namespace
