// Numbers written for the model and for our own files: the exact texts users
// and the model see, and each read back as the value it was written from.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "app/number_text.h"

using namespace sb;

TEST(NumberText, EachFormWritesItsExactText) {
    const struct {
        std::string text;
        const char* expected;
    } cases[] = {
        // Model files: fixed, at least the decimals the layout asks for.
        {exactDecimals(30.539165f, 5), "30.539165"},  // "%.5f" would read back as 30.53917
        {exactDecimals(1.0, 5), "1.00000"},
        {exactDecimals(0.1, 0), "0.1"},
        {exactDecimals(1e-7, 2), "0.0000001"},
        {exactDecimals(16777217.0, 1), "16777217.0"},  // the double's digits while they read back as the float
        {exactDecimals(1e30, 1), "1000000000000000019884624838656.0"},
        {exactDecimals(-0.0, 2), "-0.00"},
        {exactDecimals(NAN, 2), "nan"},
        {exactDecimals(-INFINITY, 1), "-inf"},
        // CSV export: "%g" with six significant digits at least.
        {singleDigits(0.1f, 6), "0.1"},
        {singleDigits(100000.0f, 6), "100000"},  // not "1e+05"
        {singleDigits(0.0001f, 6), "0.0001"},
        {singleDigits(1234567.0f, 6), "1234567"},
        {singleDigits(1.0f / 3.0f, 6), "0.33333334"},
        {singleDigits(3.4028235e38f, 6), "3.4028235e+38"},
        {singleDigits(-0.0f, 6), "-0"},
        {singleDigits(NAN, 6), "nan"},
        {singleDigits(INFINITY, 6), "inf"},
        // Site archives and editors: the shorter of fixed and scientific.
        {shortestText(0.1), "0.1"},
        {shortestText(1.0 / 3.0), "0.3333333333333333"},
        {shortestText(0.0001), "1e-04"},
        {shortestText(123450.0), "123450"},
        {shortestText(-0.0), "-0"},
        {shortestText(std::nan("")), "nan"},
        {shortestSingleText(7.7f), "7.7"},
        {shortestSingleText(1.0f / 3.0f), "0.33333334"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.text, c.expected);
}

TEST(NumberText, EveryMagnitudeReadsBack) {
    for (int exponent = -44; exponent <= 38; ++exponent) {
        const float single = 1.2345679f * std::pow(10.0f, static_cast<float>(exponent));
        const double value = 1.2345678901234567 * std::pow(10.0, exponent * 8);
        SCOPED_TRACE(exponent);
        EXPECT_EQ(std::strtof(exactDecimals(single, 0).c_str(), nullptr), single);
        EXPECT_EQ(std::strtof(singleDigits(single, 6).c_str(), nullptr), single);
        EXPECT_EQ(std::strtof(shortestSingleText(single).c_str(), nullptr), single);
        EXPECT_EQ(std::strtod(shortestText(value).c_str(), nullptr), value);
    }
}
