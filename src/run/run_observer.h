#pragma once
// How a run of many records talks to whoever shows it (a progress dialog, a
// terminal progress bar, a test): the run set's messages, its progress texts
// going out and a cancel coming in, all through one sink, and what only a run
// set tells besides.
#include <cstdint>
#include <string>

#include "app/message_sink.h"

namespace sb {

// Its progressText is "Running TELLURA #%ld Record=%ld ID=%ld"; a cancel asked
// of a run set with finish_running starts no further record and lets the
// running ones end and be stored, end_running also ends the running models.
class run_observer : public message_sink {
public:
    // "Run %6d, Good=%6d "
    virtual void statusText(const std::string&) {}
    // A record's run is over and stored: its ID and the messages it added (its
    // precheck's, the run's and the store's), in the run set's order.
    virtual void recordFinished(int32_t /*id*/, const std::string& /*messages*/) {}
    // Records finished so far out of the records in the run set.
    virtual void recordsDone(long /*done*/, long /*good*/, long /*failed*/, long /*total*/) {}
    // A precheck failed with "Stop if any precheck errors" on: the messages to show
    // under "Don't run TELLURA til this is fixed".
    virtual void precheckStopped(const std::string& /*messages*/) {}
};

}  // namespace sb
