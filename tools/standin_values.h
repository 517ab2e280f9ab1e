#pragma once
// The stand-in's numbers. They are not simulated: they are simple formulas of
// the inputs (soil clay, fertilizer, the crop's production) and the time, so
// that tests can tell different set-ups and different output times apart.
#include "binary_layout.h"
#include "run_inputs.h"

#include <string>
#include <vector>

namespace standin {

struct output_time {
    float time = 0;      // as the model writes it: year + month / 12, two decimals
    int blockIndex = 0;  // 0-based
    bool monthly = false;
};

// The output times of every block: annual blocks give one time per year
// (year.00); monthly blocks one per output interval from January of their
// first output year to the end of their last year (the first time at or after
// lastYear + 1.00, where the readers close the block). With `throughLastYear`
// (the real releases) annual times are the ends of the years (year + 1.00).
std::vector<output_time> outputTimes(const schedule_file& schedule, bool throughLastYear = false);

// One binary record per output time: the time, then the three arrays with
// each variable of the layout at its position.
std::vector<std::vector<float>> binaryRecords(const run_inputs& inputs, const binary_layout& layout,
                                              const array_counts& counts, bool throughLastYear = false);

class standin_values {
public:
    explicit standin_values(const run_inputs& inputs);
    // The value of one output variable (names as the model spells them).
    double value(const std::string& name, const output_time& when) const;
    double precipitation(int year) const;   // cm per year
    double fertilizerUpTo(int year) const;  // cumulative N, g/m2

private:
    double cropProduction(int blockIndex) const;  // the block's crop PRDX(1)

    const run_inputs& inputs_;
    double clay_;
};

}  // namespace standin
