#pragma once
// How one record's run ended. Only a good run's outputs replace the record's
// earlier ones; every other end keeps them and keeps the run's folder.
namespace sb {

enum class run_state { good, failed, cancelled, timedOut, crashed };

// "good", "failed", "cancelled", "timed out", "crashed": as the run history stores them.
constexpr const char* runStateText(run_state state) {
    switch (state) {
        case run_state::good:
            return "good";
        case run_state::cancelled:
            return "cancelled";
        case run_state::timedOut:
            return "timed out";
        case run_state::crashed:
            return "crashed";
        case run_state::failed:
            break;
    }
    return "failed";
}

}  // namespace sb
