#pragma once
// Numbers written as the shortest text that reads back as the value they were
// written from: the one formatter of the model's input files, the site
// archives, the CSV export and the editors' fields. Each form starts from the
// fewest digits its file allows and adds digits until the text reads back.
#include <string>

namespace sb {

// Shortest of fixed and scientific notation, as std::to_chars writes a double
// ("0.1", "1e-07", "123450"): our own files keep the stored 64-bit value.
// Not finite: "nan", "inf", "-inf".
std::string shortestText(double value);
// The same for a 32-bit real (a SINGLE column): "7.7", not "7.69999981".
std::string shortestSingleText(float value);

// "%g" with at least `minDigits` significant digits and as many more (up to
// nine, which always suffice) as it takes to read back as the same 32-bit real:
// "0.1", "123450", "1.23457e+06" never, "1234567" instead. A value that is not
// finite is written as "%.9g" writes it ("nan", "-inf").
std::string singleDigits(float value, int minDigits);

// Fixed notation with at least `minDecimals` decimals and as many more as it
// takes to read back as the same 32-bit real: the model reads its parameters
// as 32-bit reals, so a value written this way reaches it unchanged.
// 30.539165 stays "30.539165" where "%.5f" would give "30.53917". A value that
// is not finite is written as "%.*f" writes it ("nan", "-inf").
std::string exactDecimals(double value, int minDecimals);

}  // namespace sb
