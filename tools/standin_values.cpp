#include "standin_values.h"

#include "standin_text.h"

#include <algorithm>
#include <cmath>

namespace standin {
namespace {

float modelTime(int year, int monthsAfter) {
    // The model rounds its time to two decimals before writing it.
    double exact = year + monthsAfter / 12.0;
    return static_cast<float>(std::round(exact * 100.0) / 100.0);
}

// A monthly block's output runs to the end of its last year (time
// lastYear + 1.00, December of that year), as the model writes it.
// `throughLastYear`: annual times are those ends of years too, as the real
// releases write them; otherwise each year is written as year.00.
void addBlockTimes(const schedule_block& block, int index, bool throughLastYear, std::vector<output_time>& times) {
    int first = std::min(std::max(block.outputStartYear, block.firstYear), block.lastYear);
    if (!block.monthlyOutput()) {
        const int shift = throughLastYear ? 1 : 0;
        for (int year = first; year <= block.lastYear; ++year)
            times.push_back({modelTime(year + shift, 0), index, false});
        return;
    }
    int step = std::max(1, static_cast<int>(std::lround(block.intervalMonths)));
    for (int months = step;; months += step) {
        float time = modelTime(first, months);
        times.push_back({time, index, true});
        if (time >= static_cast<float>(block.lastYear + 1)) break;
    }
}

}  // namespace

std::vector<output_time> outputTimes(const schedule_file& schedule, bool throughLastYear) {
    std::vector<output_time> times;
    for (size_t i = 0; i < schedule.blocks.size(); ++i)
        addBlockTimes(schedule.blocks[i], static_cast<int>(i), throughLastYear, times);
    return times;
}

standin_values::standin_values(const run_inputs& inputs) : inputs_(inputs), clay_(inputs.siteValue("clay", 0.2)) {}

double standin_values::precipitation(int year) const {
    auto it = inputs_.precipitationByYear.find(year);
    if (it != inputs_.precipitationByYear.end()) return it->second;
    double total = 0;  // the site's long-term monthly means
    for (int month = 1; month <= 12; ++month)
        total += inputs_.siteValue(("precip(" + std::to_string(month) + ")").c_str(), 5.0);
    return total;
}

double standin_values::fertilizerUpTo(int year) const {
    double total = 0;
    for (const schedule_block& block : inputs_.schedule.blocks) {
        double perYear = 0;
        for (const schedule_event& event : block.events)
            if (event.command == "FERT") perYear += inputs_.optionValue("fert.100", event.item, "feramt(1)", 0.0);
        perYear /= std::max(1, block.repeats);
        int years = std::min(year, block.lastYear) - block.firstYear + 1;
        if (years > 0) total += perYear * years;
    }
    return total;
}

double standin_values::cropProduction(int blockIndex) const {
    std::string crop = inputs_.schedule.initialCrop;
    for (int i = 0; i <= blockIndex; ++i)
        for (const schedule_event& event : inputs_.schedule.blocks[i].events)
            if (event.command == "CROP") crop = event.item;
    return inputs_.optionValue("crop.100", crop, "prdx(1)", 0.0);
}

double standin_values::value(const std::string& name, const output_time& when) const {
    int year = static_cast<int>(std::floor(when.time));
    double elapsed = when.time - inputs_.schedule.startYear;
    double season = 1.0;
    if (when.monthly) {  // live biomass peaks in summer
        double month = (when.time - year) * 12.0;
        season = 0.5 + 0.5 * std::sin((month - 3.0) * 3.14159265 / 6.0);
    }
    double somsc = 1000.0 + 4000.0 * clay_ + 2.0 * fertilizerUpTo(year) + 3.0 * elapsed;
    double aglivc = 100.0 * cropProduction(when.blockIndex) * season;
    std::string key = lower(name);
    if (key == "somsc") return somsc;
    if (key == "somtc") return somsc + 150.0;
    if (key == "aglivc") return aglivc;
    if (key == "bglivc") return 0.6 * aglivc;
    if (key == "cgrain") return 0.3 * aglivc;
    if (key == "totc") return somsc + 1.6 * aglivc;
    if (key == "prcann") return precipitation(year);
    // Every other variable: its own fixed mix of the two, from its name.
    unsigned hash = nameHash(key);
    return (hash % 1000) / 10.0 + somsc * ((hash >> 10) % 50) / 1000.0 + aglivc * ((hash >> 16) % 10) / 10.0;
}

std::vector<std::vector<float>> binaryRecords(const run_inputs& inputs, const binary_layout& layout,
                                              const array_counts& counts, bool throughLastYear) {
    standin_values values(inputs);
    std::vector<std::vector<float>> records;
    for (const output_time& when : outputTimes(inputs.schedule, throughLastYear)) {
        std::vector<float> record(1 + counts.count1 + counts.count2 + counts.count3, 0.0f);
        record[0] = when.time;
        for (const layout_entry& entry : layout.entries())
            record[1 + entry.offset(counts)] = static_cast<float>(values.value(entry.name, when));
        records.push_back(std::move(record));
    }
    return records;
}

}  // namespace standin
