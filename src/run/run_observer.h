#pragma once
// How a run of many records talks to whoever shows it (a progress dialog, a
// terminal progress bar, a test): progress texts going out, cancel coming in.
#include <cstdint>
#include <string>

namespace sb {

enum class cancel_request {
    none,
    finish_running,  // start no further record; let the running ones end and be stored
    end_running,     // start no further record and end the running models now
};

class run_observer {
public:
    virtual ~run_observer() = default;
    // "Running TELLURA #%ld Record=%ld ID=%ld"
    virtual void progressText(const std::string&) {}
    // "Run %6d, Good=%6d "
    virtual void statusText(const std::string&) {}
    // A record's run is over and stored: its ID and the messages it added (its
    // precheck's, the run's and the store's), in the run set's order.
    virtual void recordFinished(int32_t /*id*/, const std::string& /*messages*/) {}
    // Records finished so far out of the records in the run set.
    virtual void recordsDone(long /*done*/, long /*good*/, long /*failed*/, long /*total*/) {}
    // Asked between records and while models run.
    virtual cancel_request cancelRequested() { return cancel_request::none; }
    // A precheck failed with "Stop if any precheck errors" on: the messages to show
    // under "Don't run TELLURA til this is fixed".
    virtual void precheckStopped(const std::string& /*messages*/) {}
};

}  // namespace sb
