#include "records/soil_relayer.h"

#include <algorithm>

namespace sb {

namespace {

// Running sums for the target layer in progress.
struct weighted_sum {
    double thickness = 0.0;
    double valueTimesThickness = 0.0;
    int contributions = 0;
    double lastValue = 0.0;

    void add(double value, double overlap) {
        thickness += overlap;
        valueTimesThickness += value * overlap;
        ++contributions;
        lastValue = value;
    }
    // A layer fed by one source layer takes its value as it stands: the
    // weighted mean would equal it but for rounding, and an unchanged
    // structure must give back unchanged values.
    double mean(double currentSourceValue) const {
        if (thickness <= 0.0) return currentSourceValue;
        if (contributions == 1) return lastValue;
        return valueTimesThickness / thickness;
    }
};

}  // namespace

std::vector<double> relayer(const std::vector<int>& sourceBottoms, const std::vector<double>& sourceValues,
                            const std::vector<int>& targetBottoms) {
    std::vector<double> out(targetBottoms.size(), 0.0);
    size_t sourceCount = std::min(sourceBottoms.size(), sourceValues.size());
    if (sourceCount == 0) return out;
    size_t s = 0;
    size_t t = 0;
    weighted_sum sum;
    while (s < sourceCount && t < targetBottoms.size()) {
        int sourceTop = s == 0 ? 0 : sourceBottoms[s - 1];
        int targetTop = t == 0 ? 0 : targetBottoms[t - 1];
        int top = std::max(sourceTop, targetTop);
        int bottom = std::min(sourceBottoms[s], targetBottoms[t]);
        if (bottom > top) sum.add(sourceValues[s], bottom - top);
        if (targetBottoms[t] <= sourceBottoms[s]) {
            out[t++] = sum.mean(sourceValues[s]);
            sum = weighted_sum{};
        } else {
            ++s;
        }
    }
    // The source profile ended first: the rest, the layer in progress
    // included, takes the deepest source value.
    for (; t < targetBottoms.size(); ++t) out[t] = sourceValues[sourceCount - 1];
    return out;
}

}  // namespace sb
