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
    const auto annual = table_id::output_annual, monthly = table_id::output_monthly;
    const point_list months = {{2000.0 + 11.5 / 12.0, 12.0}, {2001.0 + 2.5 / 12.0, 30.0}};  // mid-month, in time order
    struct series_case {
        table_id table;
        std::vector<std::string> asked;
        std::vector<std::string> names;  // of the series made
        point_list points;               // of the first
        std::string errors;              // and false when there are any
    } cases[] = {
        {annual, {"CRPVAL"}, {"crpval"}, {{1990.0, 7.0}, {1991.0, 8.0}}, ""},  // the first variable after Year
        {annual, {"agcacc"}, {"agcacc"}, {{1990.0, 1.5}}, ""},
        {monthly, {"somtc"}, {"somtc"}, months, ""},
        {table_id::output_daily, {"N2Oflux"}, {"N2Oflux"}, {{2000.0 + 0.5 / 365.0, 0.25}}, ""},  // mid-day
        {monthly, {"Month", "somtc"}, {"somtc"}, months, "ERROR, \"Month\" is not a variable of the monthly output.\n"},
        {annual, {"nosuch"}, {}, {}, "ERROR, \"nosuch\" is not a variable of the annual output.\n"},
    };
    for (const auto& c : cases) {
        std::vector<output_series> series;
        sb::message_sink errors;
        SCOPED_TRACE(c.asked.back());
        EXPECT_EQ(outputSeries(outputs, c.table, c.asked, series, errors), c.errors.empty());
        EXPECT_EQ(errors.text(), c.errors);
        std::vector<std::string> names;
        for (const auto& s : series) names.push_back(s.name);
        EXPECT_EQ(names, c.names);
        if (!series.empty()) { EXPECT_EQ(series.front().points, c.points); }
    }
}
