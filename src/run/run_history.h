#pragma once
// The project's run history: one row per run of a record, good or not, with
// when it ran, how it ended, the message, the folder it ran in and what is
// needed to say later exactly what produced a record's outputs (the model
// executable and its SHA-256, the release, a digest of the input files,
// Soilbench's version and the host). A record's last run is its latest row.
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "app/message_sink.h"
#include "run/run_state.h"

namespace sb {

class database;

struct run_history_entry {
    int32_t id = 0;
    std::string started, ended;  // UTC, "2024-05-01T08:15:02.123Z"
    run_state state = run_state::failed;
    std::string message;  // the run's messages, cut to the column's length
    // The first of them that is an error, as it was told: what a list of runs
    // shows of a failed one. Empty when none was, and in rows written before
    // the history kept it.
    std::string firstError;
    std::string runFolder;
    std::string model, modelSha256;
    std::string releaseProfile;
    std::string inputsSha256;
    std::string soilbenchVersion;
    std::string host;
    int32_t processId = 0;

    // A run's row is written when it starts and replaced by its outcome when it
    // ends: a row still without an end is a run that never finished (its
    // process was killed or its machine went down).
    bool finished() const { return !ended.empty(); }
    // The message and the first error, from a run's messages.
    void setMessages(const message_sink& messages);
};

// Adds one row, within the caller's session when there is one.
bool appendRunHistory(database& db, const run_history_entry& entry, message_sink& errors);
// Replaces the row of the run `started` (the row written when it started: the
// same record, start, host and process) by `entry`, within the caller's session
// when there is one.
bool replaceRunHistory(database& db, const run_history_entry& started, const run_history_entry& entry,
                       message_sink& errors);
// The record's runs, oldest first.
bool readRunHistory(database& db, int32_t id, std::vector<run_history_entry>& entries, message_sink& errors);

// Every record's latest run, by record ID; records never run have none.
bool readLastRuns(database& db, std::map<int32_t, run_history_entry>& lastRuns, message_sink& errors);

// The time now as the history writes it.
std::string historyTimeNow();
// The name of this machine.
std::string hostName();

}  // namespace sb
