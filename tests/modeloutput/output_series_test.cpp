// Chosen output variables over time, as both programs chart them: each row at
// the middle of its period, names matched as the catalogue spells them, and
// what is not a variable of the table refused by name.
#include <gtest/gtest.h>

#include "modeloutput/output_series.h"
#include "modeloutput/tellura_output.h"

using namespace sb;

TEST(OutputSeries, PointsSitInTheirPeriodAndOnlyVariablesAreSeries) {
    tellura_outputs outputs;
    outputs.annualFor(1990).setNumber("crpval", 7);
    outputs.annualFor(1991).setNumber("crpval", 8.0);
    outputs.annualFor(1990).setNumber("agcacc", 1.5);  // none given for 1991: no point there, not 0
    // Stored out of order: a chart runs in time order.
    outputs.monthlyFor(2001, 3).setNumber("somtc", 30.0);
    outputs.monthlyFor(2000, 12).setNumber("somtc", 12.0);
    outputs.daily.emplace_back().setYearDay(2000, 1);
    outputs.daily.back().setNumber("N2Oflux", 0.25);

    using point_list = std::vector<std::pair<double, double>>;
    struct series_case {
        const char* name;
        table_id table;
        std::vector<std::string> asked;
        bool ok;
        std::vector<std::string> names;
        point_list points;
        std::string errors;
    } cases[] = {
        {"annual: the first variable after Year",
         table_id::output_annual,
         {"CRPVAL"},
         true,
         {"crpval"},
         {{1990.0, 7.0}, {1991.0, 8.0}},
         ""},
        {"annual: a year without the value",
         table_id::output_annual,
         {"agcacc"},
         true,
         {"agcacc"},
         {{1990.0, 1.5}},
         ""},
        {"monthly: mid-month, in time order",
         table_id::output_monthly,
         {"somtc"},
         true,
         {"somtc"},
         {{2000.0 + 11.5 / 12.0, 12.0}, {2001.0 + 2.5 / 12.0, 30.0}},
         ""},
        {"daily: mid-day", table_id::output_daily, {"N2Oflux"}, true, {"N2Oflux"}, {{2000.0 + 0.5 / 365.0, 0.25}}, ""},
        {"a key column is no variable",
         table_id::output_monthly,
         {"Month", "somtc"},
         false,
         {"somtc"},
         {{2000.0 + 11.5 / 12.0, 12.0}, {2001.0 + 2.5 / 12.0, 30.0}},
         "ERROR, \"Month\" is not a variable of the monthly output.\n"},
        {"an unknown name",
         table_id::output_annual,
         {"nosuch"},
         false,
         {},
         {},
         "ERROR, \"nosuch\" is not a variable of the annual output.\n"},
    };
    for (const auto& c : cases) {
        std::vector<output_series> series;
        std::string errors;
        EXPECT_EQ(outputSeries(outputs, c.table, c.asked, series, errors), c.ok) << c.name;
        EXPECT_EQ(errors, c.errors) << c.name;
        std::vector<std::string> names;
        for (const auto& s : series) names.push_back(s.name);
        EXPECT_EQ(names, c.names) << c.name;
        if (!series.empty()) { EXPECT_EQ(series.front().points, c.points) << c.name; }
    }
}
