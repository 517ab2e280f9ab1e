#include "run/slurm_batch.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>
#include <set>
#include <thread>
#include <unistd.h>

#include "app/text_file.h"
#include "app/text_format.h"
#include "db/database.h"
#include "db/project_location.h"
#include "records/tellura_control_record.h"
#include "run/cluster_command.h"
#include "run/elapsed_timer.h"
#include "run/record_runner.h"
#include "run/run_history.h"
#include "run/run_task.h"
#include "run/slurm_submissions.h"

namespace sb {
namespace {

namespace fs = std::filesystem;

constexpr const char* kJobScript = "soilbench-job.sh";
constexpr const char* kMarkerFile = ".soilbench-shared";

// One record out on the cluster.
struct out_task {
    slurm_task_entry entry;
    task_order order;
    bool orderRead = false;
    message_sink orderErrors;    // why it could not be read
    bool noted = false;          // the project notes it as out
    int endedWithoutResult = 0;  // looks at the queue that found it ended and no result yet
    bool done = false;
};

// Where readQueue puts the state of the array's tasks that squeue does not list one by one.
constexpr int kRestOfArray = -1;

// A task's state as squeue tells it.
struct queued_task {
    std::string state;
    int exitStatus = 0;
};

bool isTerminal(const std::string& state) {
    static const char* const kEnded[] = {"COMPLETED", "FAILED",        "CANCELLED", "TIMEOUT",   "NODE_FAIL",
                                         "BOOT_FAIL", "OUT_OF_MEMORY", "DEADLINE",  "PREEMPTED", "SPECIAL_EXIT"};
    for (const char* ended : kEnded)
        if (state == ended) return true;
    return false;
}

// The task indexes squeue names: one ("3"), or, for tasks that were never
// started on their own (pending, or cancelled before they ran), a list of
// them and ranges ("1-3,5", with "%N" after it when a limit was set).
std::vector<int> taskIndexes(const std::string& text) {
    std::vector<int> indexes;
    const std::string list = text.substr(0, text.find('%'));
    for (std::string_view part : splitFieldViews(list, ',')) {
        const size_t dash = part.find('-');
        long long first = 0, last = 0;
        if (!readWholeNumber(part.substr(0, dash), 0, 1 << 30, first)) continue;
        last = first;
        if (dash != std::string_view::npos && !readWholeNumber(part.substr(dash + 1), first, 1 << 30, last)) continue;
        for (long long index = first; index <= last && indexes.size() < (1u << 20); ++index)
            indexes.push_back(static_cast<int>(index));
    }
    return indexes;
}

// A task's state as squeue or sacct write it: "CANCELLED by 0" is CANCELLED.
std::string stateWord(const std::string& text) { return text.substr(0, text.find_first_of(" +")); }

// The array's tasks by index as Slurm's accounting keeps them once the queue has
// forgotten the job; false with why when accounting cannot be read here (no
// sacct, or a cluster that keeps none).
bool readAccounting(long job, std::map<int, queued_task>& tasks, std::string& why) {
    cluster_command_result result;
    message_sink failure;
    if (!runClusterCommand("sacct",
                           {"--noheader", "--parsable2", "--allocations", "--jobs", std::to_string(job), "--format",
                            "JobID,State,ExitCode"},
                           result, failure)) {
        const std::vector<std::string> lines = splitLines(result.ran ? result.output : failure.text());
        why = lines.empty() ? "sacct failed" : std::string(trim(lines.front()));
        return false;
    }
    const std::string prefix = std::to_string(job) + "_";
    for (const std::string& line : splitLines(result.output)) {
        const std::vector<std::string_view> fields = splitFieldViews(line, '|');
        if (fields.size() < 3 || !fields[0].starts_with(prefix)) continue;
        std::string indexes(fields[0].substr(prefix.size()));  // "3", or "[4-9%2]" for tasks never started
        indexes.erase(std::remove_if(indexes.begin(), indexes.end(), [](char c) { return c == '[' || c == ']'; }),
                      indexes.end());
        long long status = 0;  // "exit code:signal"
        readWholeNumber(fields[2].substr(0, fields[2].find(':')), 0, 255, status);
        for (int index : taskIndexes(indexes))
            tasks[index] = {stateWord(std::string(fields[1])), static_cast<int>(status)};
    }
    return true;
}

// The array's tasks by index: from squeue while it lists the job, then from
// sacct. `gone`: Slurm tells nothing more of the job (it ended long ago), so
// every task without a result has ended without one; `noAccounting` says why
// sacct could not tell instead.
bool readQueue(long job, std::map<int, queued_task>& tasks, bool& gone, std::string& noAccounting,
               message_sink& errors) {
    tasks.clear();
    gone = false;
    cluster_command_result result;
    message_sink failure;
    if (!runClusterCommand("squeue",
                           {"--noheader", "--array", "--states=all", "--jobs", std::to_string(job), "--Format",
                            "ArrayTaskID:20,State:24,exit_code:12"},
                           result, failure)) {
        if (!result.ran || result.output.find("Invalid job id") == std::string::npos) {
            errors.add(failure);
            return false;
        }
        result.output.clear();  // the queue no longer lists the job
    }
    for (const std::string& line : splitLines(result.output)) {
        const std::vector<std::string> fields = splitTokens(line);
        if (fields.size() < 2) continue;
        long long status = 0;
        queued_task seen{stateWord(fields[1]), 0};
        if (fields.size() > 2 && readWholeNumber(fields[2], 0, 1 << 30, status))
            seen.exitStatus = static_cast<int>(status);
        const std::vector<int> indexes = taskIndexes(fields[0]);
        for (int index : indexes) tasks[index] = seen;
        // The array's own line without indexes ("N/A": the rest of an array
        // cancelled before its tasks started) stands for every task not listed.
        if (indexes.empty()) tasks[kRestOfArray] = seen;
    }
    // A job that squeue lists no task of is over (and kept there for MinJobAge
    // only): how each task ended is in the accounting, where the cluster keeps it.
    if (tasks.empty()) gone = !readAccounting(job, tasks, noAccounting) || tasks.empty();
    return true;
}

bool cancelJob(long job, message_sink& errors) {
    cluster_command_result result;
    return runClusterCommand("scancel", {std::to_string(job)}, result, errors);
}

std::string timeStamp() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y%m%d-%H%M%S", &local);
    return text;
}

// "<shared>/<project>-slurm-<time>[-N]/", made here; "" with a message when it cannot be.
std::string makeSubmissionFolder(const std::string& shared, const std::string& project, message_sink& errors) {
    std::error_code ec;
    fs::create_directories(shared, ec);
    if (ec || !fs::is_directory(shared, ec)) {
        errors.errorf("ERROR, unable to make the shared folder \"%s\" for Slurm runs: %s.\n", shared.c_str(),
                      ec ? ec.message().c_str() : "not a folder");
        return "";
    }
    const std::string base = (fs::path(shared) / (project + "-slurm-" + timeStamp())).string();
    for (int n = 1; n < 1000; ++n) {
        const std::string folder = n == 1 ? base : strprintf("%s-%d", base.c_str(), n);
        if (fs::create_directory(folder, ec)) return folder + "/";
        if (ec) break;
    }
    errors.errorf("ERROR, unable to make a folder for the Slurm job in \"%s\": %s.\n", shared.c_str(),
                  ec ? ec.message().c_str() : "every name is taken");
    return "";
}

// A word the shell reads back exactly: in single quotes, a quote in it closed, escaped and reopened.
std::string shellWord(const std::string& text) {
    std::string word = "'";
    for (char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return word + "'";
}

std::string jobScript(const std::string& program, const std::vector<out_task>& tasks) {
    std::string script =
        "#!/bin/sh\n"
        "# Written by Soilbench: array task N runs the programs of one record in its own run folder.\n"
        "case \"$SLURM_ARRAY_TASK_ID\" in\n";
    for (const out_task& task : tasks)
        appendf(script, "  %d) exec %s run-task %s ;;\n", task.entry.task, shellWord(program).c_str(),
                shellWord(task.entry.folder).c_str());
    script += "esac\necho \"Soilbench: no run folder for array task $SLURM_ARRAY_TASK_ID\" >&2\nexit 1\n";
    return script;
}

std::string projectNameOf(const database& db) {
    const project_location& location = db.location();
    std::string name = location.onServer() ? location.databaseName() : fs::path(location.path()).stem().string();
    std::replace(name.begin(), name.end(), '/', '_');
    return name.empty() ? "project" : name;
}

// Brings records in as their tasks end; shared by a run that follows its
// job and by a later collect.
class task_collector {
public:
    task_collector(database& db, run_controller& controller, run_observer& observer, std::string& runLog,
                   message_sink& errors)
        : db_(db), controller_(controller), observer_(observer), runLog_(runLog), errors_(errors) {}

    long good = 0, failed = 0;

    // Takes in every task of `tasks` whose result is there or whose end the
    // queue tells; false when the queue cannot be read.
    bool collectEnded(long job, std::vector<out_task>& tasks) {
        std::map<int, queued_task> queue;
        bool gone = false;
        std::string noAccounting;
        if (!readQueue(job, queue, gone, noAccounting, errors_)) return false;
        if (!noAccounting.empty() && toldNoAccounting_.insert(job).second)
            errors_.notef(
                "Slurm no longer lists job %ld and its accounting cannot be read (%s): its tasks without a result "
                "are taken as ended.\n",
                job, noAccounting.c_str());
        for (out_task& task : tasks) {
            if (task.done) continue;
            if (hasTaskResult(task.entry.folder)) {
                collect(task, "", run_state::failed);
                continue;
            }
            auto found = queue.find(task.entry.task);
            if (found == queue.end()) found = queue.find(kRestOfArray);
            const bool ended = gone || (found != queue.end() && isTerminal(found->second.state));
            // A result written just before the task ended may take a moment to
            // show on a network file system: one more look before it counts as missing.
            if (!ended || ++task.endedWithoutResult < 2) continue;
            if (task.noted && !slurmTaskNoted(db_, job, task.entry.id)) {
                task.done = true;  // taken in by another Soilbench, which removed its folder
                continue;
            }
            const queued_task seen = found != queue.end() ? found->second : queued_task{"gone", 0};
            collect(task, endedWithoutResultMessage(job, task, seen),
                    seen.state == "CANCELLED" ? run_state::cancelled
                    : seen.state == "TIMEOUT" ? run_state::timedOut
                                              : run_state::failed);
        }
        return true;
    }

    // Takes the record in (stored, or noted as failed) and forgets the task.
    void collect(out_task& task, const std::string& failure, run_state endWithoutResult) {
        task.done = true;
        const long id = static_cast<long>(task.entry.id);
        const long job = task.entry.job;
        message_sink messages;  // this record's
        auto forget = [this, &task](message_sink& errors) {
            return !task.noted || forgetSlurmTask(db_, task.entry.job, task.entry.id, errors);
        };
        bool ok = false;
        tellura_control_record record;
        if (loadControlRecord(db_, task.entry.id, record, messages)) {
            run_choices choices;
            choices.blockOrder = task.order.blockOrder;
            record_runner::applyBlockChoice(record, choices);
            runLog_ += strprintf("%ld:", id);
            // A task whose order cannot be read is not read back either.
            ok = controller_.collectDetached(record, task.orderRead ? task.entry.folder : std::string(), task.order,
                                             task.orderRead ? failure : task.orderErrors.text(), endWithoutResult,
                                             forget, runLog_, messages);
        } else {
            messages.errorf("ERROR, record %ld ran in Slurm job %ld but is no longer in the project.\n", id, job);
            forget(messages);
        }
        ok ? ++good : ++failed;
        errors_.add(messages);
        observer_.recordFinished(task.entry.id, messages.text());
    }

private:
    static std::string endedWithoutResultMessage(long job, const out_task& task, const queued_task& seen) {
        if (seen.exitStatus / 256 == kTaskNotSharedStatus || seen.exitStatus == kTaskNotSharedStatus)
            return strprintf(
                "ERROR, the folder \"%s\" is not shared with the Slurm nodes: task %d of job %ld could not see it. "
                "Give --shared-dir a folder every node sees (a network file system).\n",
                task.entry.folder.c_str(), task.entry.task, job);
        return strprintf("ERROR, task %d of Slurm job %ld ended (%s, exit status %d) without a result in \"%s\".\n",
                         task.entry.task, job, seen.state.c_str(),
                         seen.exitStatus / 256 ? seen.exitStatus / 256 : seen.exitStatus, task.entry.folder.c_str());
    }

    database& db_;
    run_controller& controller_;
    run_observer& observer_;
    std::string& runLog_;
    message_sink& errors_;
    std::set<long> toldNoAccounting_;  // the jobs whose users know
};

long openCount(const std::vector<out_task>& tasks) {
    long open = 0;
    for (const out_task& task : tasks) open += task.done ? 0 : 1;
    return open;
}

// The marker goes last, with the script; a folder left with run folders in it stays.
void removeSubmissionFolder(const std::string& folder) {
    std::error_code ec;
    fs::remove(fs::path(folder) / kJobScript, ec);
    fs::remove(fs::path(folder) / kMarkerFile, ec);
    fs::remove(folder, ec);  // only when empty
}

std::string submissionFolderOf(const std::string& runFolder) {
    fs::path path(runFolder);
    if (!path.has_filename()) path = path.parent_path();
    return path.parent_path().string();
}

}  // namespace

slurm_batch::slurm_batch(database& db, run_controller& controller, slurm_options options)
    : db_(db), controller_(controller), options_(std::move(options)) {}

run_set_result slurm_batch::run(const run_set_options& runSet, run_observer& observer, std::string& runLog) {
    message_sink& errors = observer;
    elapsed_timer timer;
    run_set_result result;
    std::vector<int32_t> ids;
    result.unreadable = !controller_.readRunSetIds(runSet, ids, errors);
    if (ids.empty()) return result;
    if (options_.sharedFolder.empty()) {
        errors.error(
            "ERROR, no shared folder for Slurm runs: give --shared-dir, or set Files/SlurmFolder to a folder "
            "every node sees. Nothing was run.\n");
        result.refused = true;
        return result;
    }
    const std::string submission = makeSubmissionFolder(options_.sharedFolder, projectNameOf(db_), errors);
    if (submission.empty()) {
        result.refused = true;
        return result;
    }
    // The marker's text is this submission's own, so an old marker elsewhere cannot pass for it.
    const std::string marker = submission + kMarkerFile;
    const std::string markerText =
        strprintf("%s %ld %s", hostName().c_str(), static_cast<long>(getpid()), historyTimeNow().c_str());
    if (!text_file::writeTextFile(marker, markerText)) {
        errors.errorf("ERROR, unable to write the marker \"%s\" into the shared folder.\n", marker.c_str());
        removeSubmissionFolder(submission);
        result.refused = true;
        return result;
    }

    std::vector<out_task> tasks;
    std::string noRunLog;
    task_collector collector(db_, controller_, observer, noRunLog, errors);
    for (int32_t id : ids) {
        ++result.runNumber;
        observer.progressText(
            strprintf("Preparing TELLURA #%ld ID=%ld for Slurm", result.runNumber, static_cast<long>(id)));
        tellura_control_record record;
        message_sink messages;
        if (!controller_.loadAndCheck(id, record, messages)) {
            errors.add(messages);
            errors.warningf("Precheck warning, %d\n", static_cast<int>(result.runNumber));
            ++result.failed;
            observer.recordFinished(id, messages.text());
            if (runSet.stopOnPrecheckErrors) {
                result.stoppedOnPrecheck = true;
                break;
            }
            continue;
        }
        run_choices choices;
        choices.blockOrder = runSet.blockOrder;
        record_runner::applyBlockChoice(record, choices);
        out_task task;
        task.entry.id = id;
        task.entry.task = static_cast<int>(tasks.size());
        task.order.blockOrder = runSet.blockOrder;
        task.order.marker = marker;
        task.order.markerText = markerText;
        task.orderRead = true;
        message_sink folderErrors;
        if (!controller_.prepareDetached(record, submission, task.order, task.entry.folder, folderErrors)) {
            std::string ignoredLog;
            controller_.collectDetached(record, "", task.order, folderErrors.text(), run_state::failed, {}, ignoredLog,
                                        errors);
            ++result.failed;
            continue;
        }
        tasks.push_back(std::move(task));
    }
    if (tasks.empty()) {
        removeSubmissionFolder(submission);
        result.elapsedSeconds = timer.seconds();
        return result;
    }

    // One job array for every record.
    const std::string script = submission + kJobScript;
    std::vector<std::string> arguments = {"--parsable", "--job-name=soilbench", "--output=/dev/null", "--chdir=/"};
    std::string array = strprintf("--array=0-%zu", tasks.size() - 1);
    if (options_.maxParallel > 0) appendf(array, "%%%d", options_.maxParallel);
    arguments.push_back(array);
    if (!options_.partition.empty()) arguments.push_back("--partition=" + options_.partition);
    if (!options_.timeLimit.empty()) arguments.push_back("--time=" + options_.timeLimit);
    arguments.push_back(script);
    cluster_command_result submitted;
    message_sink submitErrors;
    long long job = 0;
    bool ok = text_file::writeTextFile(script, jobScript(options_.taskProgram, tasks));
    if (!ok) submitErrors.errorf("ERROR, unable to write the job script \"%s\".\n", script.c_str());
    ok = ok && runClusterCommand("sbatch", arguments, submitted, submitErrors);
    if (ok) {
        const std::string text = submitted.output.substr(0, submitted.output.find_first_of(";\n"));
        ok = readWholeNumber(text, 1, 1LL << 40, job);
        if (!ok) submitErrors.errorf("ERROR, sbatch answered \"%s\", not a job number.\n", text.c_str());
    }
    if (ok) {
        std::vector<slurm_task_entry> entries;
        for (out_task& task : tasks) {
            task.entry.job = static_cast<long>(job);
            task.entry.submitted = historyTimeNow();
            task.entry.host = hostName();
            entries.push_back(task.entry);
        }
        if (!recordSlurmTasks(db_, entries, submitErrors)) {
            // Unnoted, nobody could collect it: the job must not run.
            cancelJob(static_cast<long>(job), submitErrors);
            ok = false;
        }
        for (out_task& task : tasks) task.noted = ok;
    }
    if (!ok) {
        // Nothing ran: every record is failed with the reason, and its folder goes.
        for (out_task& task : tasks) {
            std::error_code ec;
            fs::remove_all(task.entry.folder, ec);
            task.entry.folder.clear();
            collector.collect(task, submitErrors.text(), run_state::failed);
        }
        removeSubmissionFolder(submission);
        result.failed += collector.failed;
        result.elapsedSeconds = timer.seconds();
        return result;
    }

    // Follow the array, taking records in as their tasks end.
    task_collector follower(db_, controller_, observer, runLog, errors);
    bool cancelSent = false, following = true;
    const long total = static_cast<long>(tasks.size()) + result.failed;
    while (openCount(tasks) > 0) {
        if (!cancelSent && observer.cancelRequested() != cancel_request::none) {
            result.cancelled = true;
            cancelSent = true;
            cancelJob(static_cast<long>(job), errors);
        }
        if (!follower.collectEnded(static_cast<long>(job), tasks)) {
            errors.errorf(
                "ERROR, Slurm job %lld can no longer be followed: its records stay out, and \"soilbench collect\" "
                "brings them in when it has ended.\n",
                job);
            following = false;
            break;
        }
        const long done = static_cast<long>(tasks.size()) - openCount(tasks);
        observer.progressText(strprintf("Slurm job %lld: %ld of %zu records in", job, done, tasks.size()));
        observer.recordsDone(done + result.failed, follower.good, follower.failed + result.failed, total);
        if (openCount(tasks) > 0) std::this_thread::sleep_for(std::chrono::milliseconds(options_.pollMs));
    }
    result.good += follower.good;
    result.failed += follower.failed + (following ? 0 : openCount(tasks));
    if (following) removeSubmissionFolder(submission);
    result.elapsedSeconds = timer.seconds();
    const double average = result.runNumber > 0 ? result.elapsedSeconds / static_cast<double>(result.runNumber) : 0.0;
    appendf(runLog, "Elapsed: %.3f seconds, ave=%.3f Fail count=%ld\n", result.elapsedSeconds, average, result.failed);
    return result;
}

collect_result collectSlurmTasks(database& db, const app_soilbench& settings, run_observer& observer,
                                 std::string& runLog) {
    message_sink& errors = observer;
    collect_result result;
    std::vector<slurm_task_entry> entries;
    if (!readSlurmTasks(db, entries, errors)) {
        result.unreadable = true;
        return result;
    }
    std::map<long, std::vector<out_task>> jobs;
    for (slurm_task_entry& entry : entries) {
        out_task task;
        task.entry = std::move(entry);
        task.noted = true;
        task.orderRead = readTaskOrder(task.entry.folder, task.order, task.orderErrors);
        jobs[task.entry.job].push_back(std::move(task));
    }
    for (auto& [job, tasks] : jobs) {
        // Each job's records are read back with the settings its tasks ran with.
        app_soilbench jobSettings = settings;
        for (const out_task& task : tasks)
            if (task.orderRead) {
                jobSettings = task.order.runSettings(settings);
                break;
            }
        run_controller controller(db, jobSettings);
        controller.loadProjectData(errors);
        task_collector collector(db, controller, observer, runLog, errors);
        for (out_task& task : tasks)
            if (!task.orderRead) collector.collect(task, "", run_state::failed);
        bool followed = collector.collectEnded(job, tasks);
        // A task seen ended without a result gets the second look a follower would give it.
        auto awaitingSecondLook = [&tasks] {
            return std::any_of(tasks.begin(), tasks.end(),
                               [](const out_task& task) { return !task.done && task.endedWithoutResult > 0; });
        };
        if (followed && awaitingSecondLook()) {
            std::this_thread::sleep_for(std::chrono::seconds(1));
            followed = collector.collectEnded(job, tasks);
        }
        result.good += collector.good;
        result.failed += collector.failed;
        result.stillRunning += openCount(tasks);
        if (followed && openCount(tasks) == 0 && !tasks.empty())
            removeSubmissionFolder(submissionFolderOf(tasks.front().entry.folder));
    }
    return result;
}

}  // namespace sb
