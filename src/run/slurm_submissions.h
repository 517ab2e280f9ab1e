#pragma once
// The project's note of records handed to Slurm and not yet brought back: one
// row per record (its job, array task and run folder). A row is added when the
// job array is submitted and goes when its record's run is stored or marked
// failed, so "soilbench collect" knows what is still out.
#include <cstdint>
#include <string>
#include <vector>

#include "app/message_sink.h"

namespace sb {

class database;

struct slurm_task_entry {
    int32_t id = 0;  // the control record
    long job = 0;    // the Slurm job array
    int task = 0;    // the record's array task
    std::string folder;
    std::string submitted, host;
};

// Adds every entry in one commit, or none.
bool recordSlurmTasks(database& db, const std::vector<slurm_task_entry>& entries, message_sink& errors);
// Every entry, by job and task.
bool readSlurmTasks(database& db, std::vector<slurm_task_entry>& entries, message_sink& errors);
// Whether the record's entry of that job is still there (another Soilbench
// following or collecting the job may have taken the record in meanwhile).
bool slurmTaskNoted(database& db, long job, int32_t id);
// Removes the record's entry of that job, within the caller's session when there is one.
bool forgetSlurmTask(database& db, long job, int32_t id, message_sink& errors);

}  // namespace sb
