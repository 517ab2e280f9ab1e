#pragma once
// Runs a run set on a Slurm cluster: every record's run folder is written
// into a folder the nodes share, one job array is submitted (task N runs
// record N's programs with "soilbench run-task FOLDER"), the array is followed
// with squeue (then sacct, once squeue has forgotten the job), and each record is read back and stored as its task
// ends, through the same reading, rules and store as a local run. Ctrl-C cancels the array (scancel). The project notes
// what is out (slurm_submissions.h), so "soilbench collect" brings in what ended while nobody followed it.
//
//   <shared>/<project>-slurm-<YYYYMMDD-HHMMSS>[-N]/
//       soilbench-job.sh        the array's script (given to sbatch)
//       .soilbench-shared       the marker a task must see, or the folder is not shared
//       <project>-<ID>-<time>/  one run folder per record (see run_folder.h)
#include <cstdint>
#include <string>

#include "app/message_sink.h"
#include "run/run_controller.h"

namespace sb {

struct slurm_options {
    std::string sharedFolder;  // seen by the submitting host and every node
    std::string partition;     // "": the cluster's default
    std::string timeLimit;     // per task, as sbatch takes it ("30", "2:00:00"); "": the partition's
    int maxParallel = 0;       // tasks at once; 0: as many as the cluster gives
    std::string taskProgram;   // the soilbench a node runs a task with
    int pollMs = 1000;         // between two looks at the queue
};

class slurm_batch {
public:
    slurm_batch(database& db, run_controller& controller, slurm_options options);

    // Submits the run set and follows it until every record is stored or failed;
    // its messages go to the observer.
    run_set_result run(const run_set_options& runSet, run_observer& observer, std::string& runLog);

private:
    database& db_;
    run_controller& controller_;
    slurm_options options_;
};

struct collect_result {
    long good = 0, failed = 0;
    long stillRunning = 0;  // tasks not ended yet: their records stay out
    bool unreadable = false;
};

// Brings in every record whose task has ended, with the settings its task was
// written with (`settings` gives the rest); tasks still queued or running stay.
// The messages go to the observer.
collect_result collectSlurmTasks(database& db, const app_soilbench& settings, run_observer& observer,
                                 std::string& runLog);

}  // namespace sb
