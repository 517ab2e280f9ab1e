#pragma once
// The project's run history: one row per run of a record, good or not, with
// when it ran, how it ended, the message, the folder it ran in and what is
// needed to say later exactly what produced a record's outputs (the model
// executable and its SHA-256, the release, a digest of the input files,
// Soilbench's version and the host). A record's last run is its latest row.
#include <cstdint>
#include <string>
#include <vector>

#include "run/run_state.h"

namespace sb {

class database;

struct run_history_entry {
    int32_t id = 0;
    std::string started, ended;  // UTC, "2024-05-01T08:15:02.123Z"
    run_state state = run_state::failed;
    std::string message;  // the run's messages, cut to the column's length
    std::string runFolder;
    std::string model, modelSha256;
    std::string releaseProfile;
    std::string inputsSha256;
    std::string soilbenchVersion;
    std::string host;
    int32_t processId = 0;
};

// Projects made before the history existed get its table here.
bool ensureRunHistoryTable(database& db, std::string& errors);
// Adds one row, within the caller's session when there is one.
bool appendRunHistory(database& db, const run_history_entry& entry, std::string& errors);
// The record's runs, oldest first.
bool readRunHistory(database& db, int32_t id, std::vector<run_history_entry>& entries, std::string& errors);

// The time now as the history writes it.
std::string historyTimeNow();
// The name of this machine.
std::string hostName();

}  // namespace sb
