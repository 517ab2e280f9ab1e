#include "modeloutput/output_time.h"

#include <cmath>
#include <limits>

#include "app/text_format.h"

namespace sb {

namespace {
// A time outside the range of int (a broken file) must not overflow the cast.
int clampedFloor(double t) {
    if (!(t == t)) return 0;
    double f = std::floor(t);
    if (f < std::numeric_limits<int>::min()) return std::numeric_limits<int>::min();
    if (f > std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
    return static_cast<int>(f);
}
}  // namespace

output_year_month monthlyTime(float time) {
    int year = clampedFloor(time);
    const float twelfth = 0.083333336f;  // 1/12 as the model's 32-bit float
    float fraction = time - static_cast<float>(year);
    float m = std::floor(fraction / twelfth + 0.5f);
    int month = (m >= 0.0f && m <= 13.0f) ? static_cast<int>(m) : 0;
    if (month == 0) return {year == std::numeric_limits<int>::min() ? year : year - 1, 12};
    return {year, month > 12 ? 12 : month};
}

int annualYear(double time) { return clampedFloor(time); }

bool closesBlock(double time, int lastYear) {
    // The times are written with two decimals: half a hundredth is no time step.
    return time + 0.005 >= static_cast<double>(lastYear) + 1.0;
}

void output_year_span::see(long year) {
    if (year < low) low = year;
    if (year > high) high = year;
}

void output_year_span::appendRecordsMessage(message_sink& errors) const {
    errors.notef("%ld records read, from years %ld to %ld.\n", count, low, high);
}

}  // namespace sb
