#include "modeloutput/tellura_output.h"

#include <algorithm>

#include "db/table_columns.h"

namespace sb {

namespace {
// Years before 0 can come from a broken file; keep the bucket index in range.
size_t bucketOf(int year) {
    int b = year % kMonthlyBuckets;
    return static_cast<size_t>(b < 0 ? b + kMonthlyBuckets : b);
}

struct output_table_keys {
    output_key_columns endOfRun, annual, monthly, daily, layers;
};

output_table_keys findKeyColumns() {
    const table_columns endOfRun(table_id::output, {"ID"});
    const table_columns annual(table_id::output_annual, {"ID", "Year"});
    const table_columns monthly(table_id::output_monthly, {"ID", "Year", "Month"});
    const table_columns daily(table_id::output_daily, {"ID", "Year", "Julian Day"});
    const table_columns layers(table_id::output_soil_layers, {"ID", "Layer Number"});
    return {{endOfRun["ID"]},
            {annual["ID"], annual["Year"]},
            {monthly["ID"], monthly["Year"], monthly["Month"]},
            {daily["ID"], daily["Year"], daily["Julian Day"]},
            {layers["ID"], layers["Layer Number"]}};
}

}  // namespace

const output_key_columns& outputKeyColumns(table_id table) {
    static const output_table_keys keys = findKeyColumns();
    static const output_key_columns none;
    switch (table) {
        case table_id::output:
            return keys.endOfRun;
        case table_id::output_annual:
            return keys.annual;
        case table_id::output_monthly:
            return keys.monthly;
        case table_id::output_daily:
            return keys.daily;
        case table_id::output_soil_layers:
            return keys.layers;
        default:
            return none;
    }
}

end_of_run_output& tellura_outputs::endOfRunRecord() {
    if (!hasEndOfRun) endOfRun.setValuesMissing();
    hasEndOfRun = true;
    return endOfRun;
}

daily_output& tellura_outputs::dailyFor(int year, int day) {
    for (auto it = daily.rbegin(); it != daily.rend() && it->year() >= year; ++it)
        if (it->year() == year && it->julianDay() == day) return *it;
    daily.emplace_back();
    daily.back().setValuesMissing();
    daily.back().setYearDay(year, day);
    return daily.back();
}

void tellura_outputs::clear() {
    endOfRun.clear();
    hasEndOfRun = false;
    annual.clear();
    for (auto& bucket : monthly) bucket.clear();
    daily.clear();
    soilLayers.clear();
}

bool tellura_outputs::empty() const {
    return !hasEndOfRun && annual.empty() && monthlyCount() == 0 && daily.empty() && soilLayers.empty();
}

annual_output& tellura_outputs::annualFor(int year) {
    // Readers go through the years in order, so the wanted record is almost always
    // the last one; searching from the back keeps a long run linear.
    for (auto it = annual.rbegin(); it != annual.rend(); ++it)
        if (it->year() == year) return *it;
    annual.emplace_back();
    annual.back().setValuesMissing();  // what no output file gives stays missing
    annual.back().setYear(year);
    return annual.back();
}

monthly_output& tellura_outputs::monthlyFor(int year, int month) {
    auto& bucket = monthly[bucketOf(year)];
    for (auto it = bucket.rbegin(); it != bucket.rend(); ++it)
        if (it->year() == year && it->month() == month) return *it;
    bucket.emplace_back();
    bucket.back().setValuesMissing();
    bucket.back().setYearMonth(year, month);
    return bucket.back();
}

soil_layer_output& tellura_outputs::soilLayerFor(int layer) {
    auto at = std::find_if(soilLayers.begin(), soilLayers.end(),
                           [layer](const soil_layer_output& l) { return l.layerNumber() >= layer; });
    if (at != soilLayers.end() && at->layerNumber() == layer) return *at;
    at = soilLayers.insert(at, soil_layer_output());
    at->setValuesMissing();
    at->setLayerNumber(layer);
    return *at;
}

std::vector<const monthly_output*> tellura_outputs::monthlyInOrder() const {
    std::vector<const monthly_output*> out;
    out.reserve(monthlyCount());
    for (const auto& bucket : monthly)
        for (const auto& record : bucket) out.push_back(&record);
    std::stable_sort(out.begin(), out.end(), [](const auto* a, const auto* b) {
        return a->year() != b->year() ? a->year() < b->year() : a->month() < b->month();
    });
    return out;
}

size_t tellura_outputs::monthlyCount() const {
    size_t n = 0;
    for (const auto& bucket : monthly) n += bucket.size();
    return n;
}

}  // namespace sb
