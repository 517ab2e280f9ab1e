#pragma once
// What the user chose for a run: the Run dialog's answers (or the command
// line's), passed to the run controller as data.
#include <cstdint>
#include <vector>

namespace sb {

struct run_choices {
    // Block numbers to run, in the order to run them; empty runs every block as stored.
    std::vector<int> blockOrder;
    // Daily output years to keep (the daily-step release only).
    int32_t saveDailyFirstYear = 1;
    int32_t saveDailyLastYear = 1;
    bool readBinaryOutput = false;
};

}  // namespace sb
