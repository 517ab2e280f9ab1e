// Parameter names as the files spell them, including names found by fuzzing
// that once aborted every importer of site files (a sign alone, a subscript
// past the largest number, an unfinished subscript of a one-row matrix).
#include <gtest/gtest.h>

#include "modelinput/parameter_names.h"

using namespace sb;

TEST(ParameterNames, CanonicalSpellingAndSiteColumn) {
    struct name_case {
        const char* name;
        const char* canonical;
        const char* siteColumn;  // of the canonical name
    };
    const name_case cases[] = {
        {"som1ci( 1,2)", "SOM1CI(1,2)", "SOM1CI(1,2)"},
        {"'PRDX(1)'", "PRDX(1)", "PRDX(1)"},
        {"precip(007)", "PRECIP(7)", "PRECIP(7)"},
        {"rces2(3)", "RCES2(3)", "RCES2(1,3)"},
        {"PRECIP(-)", "PRECIP(-)", "PRECIP(-)"},
        {"PRECIP(99999999999999999999)", "PRECIP(99999999999999999999)", "PRECIP(99999999999999999999)"},
        {"RCES2(&1()", "RCES2(&1()", "RCES2(&1()"},
        {"som2ci(-)", "SOM2CI(-)", "SOM2CI(-)"},
        {"SOM2CI(99999999999999999999)", "SOM2CI(99999999999999999999)", "SOM2CI(99999999999999999999)"},
    };
    for (const name_case& c : cases) {
        std::string canonical = canonicalParameterName(c.name);
        EXPECT_EQ(canonical, c.canonical) << c.name;
        EXPECT_EQ(siteColumnOfName(canonical), c.siteColumn) << c.name;
    }
}
