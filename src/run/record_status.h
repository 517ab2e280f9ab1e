#pragma once
// Where each record stands with its runs, from its latest row in the run
// history: never run, failed (the last run ended badly or never finished),
// running (not finished, and the process running it lives), good, or stale (good, but the inputs a run would write now,
// the model executable or the release differ from those of that run). The command line's status and --only and the
// desktop's record list all read it from here.
#include <cstdint>
#include <string>
#include <vector>

#include "app/message_sink.h"
#include "run/run_history.h"

namespace sb {

enum class record_state { never, failed, good, stale, running };

// "never", "failed", "good", "stale", "running": the words of --only and of the status table.
const char* recordStateWord(record_state state);
// "never run", "failed", "good", "stale": as counts and the desktop name them.
const char* recordStateText(record_state state);
// "failed,stale" -> {failed, stale}; false with a message naming the unknown word.
bool parseRecordStates(const std::string& text, std::vector<record_state>& states, message_sink& errors);

// The state the latest run gives without looking at the inputs: never (no
// run), good, running, or failed. Only a good run can later turn stale.
record_state lastRunState(const run_history_entry* lastRun);

struct record_status {
    int32_t id = 0;
    record_state state = record_state::never;
    run_history_entry lastRun;  // meaningful unless never
    std::string staleBecause;   // why a good run is stale now, for the user
};

}  // namespace sb
