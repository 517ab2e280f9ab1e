#pragma once
// Carries control records from the database to stored model output: loads a
// record and everything it refers to, checks it, has the run directory
// written, runs the model, stores the outputs, and reports times and messages.
// Widget-free: the Run dialog's choices come in as data and progress goes out
// through a run_observer, so the desktop, the command line and tests share it.
//
// Every record runs in a run folder of its own (see run_folder.h), also when
// many run at once (the "Jobs" setting); everything a run produces (outputs,
// run log, messages) is stored and reported in table order, so the result is
// the same as one after another. Only a good run's outputs replace the
// record's earlier ones, and only together with its row in the run history;
// any other run keeps the earlier outputs and its folder, which the messages
// name.
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "app/app_soilbench.h"
#include "app/message_sink.h"
#include "app/release_profile_catalogue.h"
#include "modeloutput/binary_layout.h"
#include "modeloutput/tellura_output.h"
#include "records/option_lists.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"
#include "run/record_status.h"
#include "run/run_choices.h"
#include "run/run_observer.h"
#include "run/run_state.h"

namespace sb {

class database;
struct task_order;

// Checks a record before it may run; every failing check appends its message.
bool precheck(const tellura_control_record& record, int version, const tellura_soils& soils,
              const tellura_weather_stations& stations, const option_lists& options, message_sink& errors);

struct run_set_options {
    std::string filter;  // WHERE text for [Control Records]; empty = every record
    bool stopOnPrecheckErrors = false;
    int jobs = 1;                    // records run at once
    std::vector<int> blockOrder;     // blocks to run in each record, in order; empty = all
    std::vector<record_state> only;  // run just the records in these states; empty = whatever their state
};

struct run_set_result {
    long runNumber = 0;  // records attempted
    long good = 0;
    long failed = 0;  // precheck failures and failed runs together
    double elapsedSeconds = 0;
    bool cancelled = false;
    bool stoppedOnPrecheck = false;
    bool refused = false;     // no program to run is configured: nothing was run
    bool unreadable = false;  // the record table could not be read: nothing was run
};

class run_controller {
public:
    run_controller(database& db, const app_soilbench& settings);
    ~run_controller();

    // Soils, weather stations with their history, option lists, binary
    // layouts and release profiles: read once, shared by every record of a command.
    bool loadProjectData(message_sink& errors);

    // Run one record, first half: check that there is a model to run, load the
    // record with its blocks and events and check it. False when it cannot run
    // (the messages say why).
    bool loadAndCheck(int32_t id, tellura_control_record& record, message_sink& errors);
    // Second half, after the Run dialog: write the record's run folder, run the
    // model, read its outputs into `outputs` and, when the run is good, store
    // them under the record's ID. `cancelNow`, asked while the model runs, ends
    // it early (the run then fails with "Process Cancelled/Error"). True only
    // when the outputs and the run's history are committed.
    //
    // `host`, when given, is handed the model's run (the run folder, the model,
    // its outputs read) to carry out on a thread of its own, returning when it
    // has ended: the desktop keeps its window live that way. The database is
    // touched only before and after, on the controller's thread.
    using model_run_host = std::function<void(const std::function<void()>& modelRun)>;
    bool runLoadedRecord(tellura_control_record& record, tellura_outputs& outputs, const run_choices& choices,
                         std::string& runLog, message_sink& errors, const std::function<bool()>& cancelNow = {},
                         const model_run_host& host = {});
    // Both halves with the given choices, then "Total Elapsed: %.3f seconds\n"
    // in the run log.
    bool runOneRecord(int32_t id, const run_choices& choices, std::string& runLog, message_sink& errors);

    // Every record of the run set, in table order; its messages go to the observer.
    run_set_result runMultipleRecords(const run_set_options& options, run_observer& observer, std::string& runLog);

    // The state of every record the filter chooses (every record for ""), in
    // table order. Stale is told by writing each good record's inputs into a
    // folder of its own, as its run would with `blockOrder`, and comparing their
    // digest, the model's SHA-256 and the release with those of its last run.
    bool recordStatuses(const std::string& filter, const std::vector<int>& blockOrder,
                        std::vector<record_status>& statuses, message_sink& errors);

    // --- Runs whose programs run elsewhere (the nodes of a cluster) ---
    // The run set's records (chosen by its filter and states), in table order.
    bool readRunSetIds(const run_set_options& options, std::vector<int32_t>& ids, message_sink& errors);
    // Writes the loaded and checked record's run folder under `root` with the
    // task order a node runs it by (see run_task.h); the folder is then the
    // task's and stays. False with the messages when it cannot be written.
    bool prepareDetached(const tellura_control_record& record, const std::string& root, task_order& order,
                         std::string& folder, message_sink& errors);
    // Reads back what the task left in `folder`, checked and stored exactly as
    // a local run's outputs (the same reading, rules and store), or notes the
    // run as failed with `failure` when there is no result to read (a missing
    // folder: the task never ran). `alsoInStore` runs inside the good run's
    // commit; after a failure it runs alone. True when the record is good.
    bool collectDetached(tellura_control_record& record, const std::string& folder, const task_order& order,
                         const std::string& failure, run_state endWithoutResult,
                         const std::function<bool(message_sink&)>& alsoInStore, std::string& runLog,
                         message_sink& errors);

    // The settings a run uses (version, executables, time limit, flags).
    const app_soilbench& settings() const { return settings_; }
    app_soilbench& settings() { return settings_; }
    const option_lists& optionLists() const { return options_; }
    const tellura_soils& soils() const { return soils_; }
    const tellura_weather_stations& stations() const { return stations_; }

private:
    struct record_run;
    struct pending_record;
    struct run_set_progress;
    std::unique_ptr<pending_record> checkNextRecord(const std::pair<long, int32_t>& row, run_set_progress& set);
    void reportRecord(pending_record& p, run_set_progress& set);
    bool checkRecord(const tellura_control_record& record, message_sink& errors) const;
    bool checkPrograms(message_sink& errors) const;
    // Before the first run: folders of Soilbench processes that died are
    // removed, and the run history table made in a project that lacks it.
    void prepareRuns(message_sink& errors);
    // The run itself, in a folder of its own; safe to call from several threads at once.
    void runRecord(tellura_control_record& record, tellura_outputs& outputs, record_run& run,
                   const std::function<bool()>& cancelNow) const;
    // Stores a good run's outputs with its history row, or keeps a failed run's
    // folder and notes it in the history; true when the record is good.
    bool finishRun(const tellura_control_record& record, tellura_outputs& outputs, record_run& run,
                   message_sink& errors, const std::function<bool(message_sink&)>& alsoInStore = {});
    const std::string& modelDigest();
    // The name of the release profile the records run with (what the history keeps).
    std::string releaseProfile() const;
    // The record's history row as the run stands (started, or ended).
    run_history_entry historyEntry(int32_t id, const record_run& run);
    // A record that failed its precheck did not run: its history says so, with why.
    void noteRefusedRun(int32_t id, const message_sink& messages);
    // Makes the run's folder and marks the run as started in the history, so
    // that one that never ends shows as failed (as running while its folder's
    // owner lives).
    void beginRun(const tellura_control_record& record, record_run& run);
    // Leaves the run set's rows of records in the states `options.only` names.
    bool keepRowsInStates(const run_set_options& options, std::vector<std::pair<long, int32_t>>& rows,
                          message_sink& errors);
    // Why a record whose last run was good would run differently now ("" when it would not).
    std::string staleBecause(int32_t id, const std::vector<int>& blockOrder, const run_history_entry& lastRun,
                             message_sink& errors);

    database& db_;
    app_soilbench settings_;
    std::string runsRoot_;
    std::string projectName_;
    bool runsPrepared_ = false;
    std::string modelDigest_;
    bool modelDigestDone_ = false;
    option_lists options_;
    tellura_soils soils_;
    tellura_weather_stations stations_;
    binary_layout_catalogue layouts_;
    release_profile_catalogue profiles_;
    bool loaded_ = false;
};

// The text shown after a command: the messages, a blank line and the run log.
std::string runReport(const message_sink& errors, const std::string& runLog);

}  // namespace sb
