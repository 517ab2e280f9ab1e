#include "run/run_controller.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <future>
#include <mutex>
#include <set>
#include <unistd.h>

#include "app/file_digest.h"
#include "app/program_version.h"
#include "app/text_format.h"
#include "db/database.h"
#include "db/project_location.h"
#include "db/table_columns.h"
#include "modelinput/weather_file.h"
#include "modeloutput/output_tables.h"
#include "records/store_session.h"
#include "run/capped_text.h"
#include "run/elapsed_timer.h"
#include "run/job_pool.h"
#include "run/record_runner.h"
#include "run/run_folder.h"
#include "run/run_history.h"
#include "run/run_task.h"

namespace sb {
namespace {

constexpr int kExponentialDecomposition = 2;

class option_lists_lookup : public option_name_lookup {
public:
    explicit option_lists_lookup(const option_lists& lists) : lists_(lists) {}
    bool hasOption(option_kind kind, std::string_view name) const override { return lists_.contains(kind, name); }

private:
    const option_lists& lists_;
};

void coverageCheck(const tellura_weather_station& station, const tellura_event_block& block, int version,
                   message_sink& errors) {
    checkWeatherCoverage(station, block.firstYear, block.lastYear, version, block.blockNumber, errors);
}

// Records held finished but not yet reported, per job.
constexpr size_t kLookaheadPerJob = 4;

// IDs of the control records in table order, one query's worth.
bool readRecordIds(database& db, const std::string& filter, std::vector<int32_t>& ids, message_sink& errors) {
    db_status status;
    auto table = db.openTable(table_id::control_records, filter, "", status);
    if (!table) {
        errors.error("ERROR, cannot open control record table.\n");
        appendStatusText(status, errors);
        return false;
    }
    static const table_columns c(table_id::control_records, {"ID"});
    const int id = c["ID"];
    db_status s;
    for (s = table->moveFirst(); s.ok(); s = table->moveNext()) ids.push_back(table->row().integer(id));
    return readToTheEnd(s, tableName(table_id::control_records), errors);
}

// The records of a run set as (position in the whole table, ID), in table
// order. The position counts every row of the table, so that the progress
// text names the row the user sees in the record list, not the row's place
// in the run set.
bool readRunSet(database& db, const std::string& filter, std::vector<std::pair<long, int32_t>>& rows,
                message_sink& errors) {
    std::vector<int32_t> all;
    if (!readRecordIds(db, "", all, errors)) return false;
    std::vector<int32_t> chosen;
    if (!filter.empty() && !readRecordIds(db, filter, chosen, errors)) return false;
    std::sort(chosen.begin(), chosen.end());
    long position = 0;
    for (int32_t id : all) {
        ++position;
        if (filter.empty() || std::binary_search(chosen.begin(), chosen.end(), id)) rows.emplace_back(position, id);
    }
    return true;
}

// How the history and the messages name the way a run ended.
const char* endPhrase(run_state state) {
    switch (state) {
        case run_state::cancelled:
            return "was cancelled";
        case run_state::timedOut:
            return "timed out";
        case run_state::crashed:
            return "crashed";
        default:
            return "failed";
    }
}

// The name a project's run folders start with: its file name without the
// extension, or the name of its database on a server.
std::string projectNameOf(const project_location& location) {
    std::string name =
        location.onServer() ? location.databaseName() : std::filesystem::path(location.path()).stem().string();
    std::replace(name.begin(), name.end(), '/', '_');
    return name.empty() ? "project" : name;
}

// A run log of thousands of records keeps its first and last records whole
// and says how much was cut between them.
constexpr size_t kRunLogHeadBytes = 8 * 1024 * 1024;
constexpr size_t kRunLogTailBytes = 8 * 1024 * 1024;

}  // namespace

bool precheck(const tellura_control_record& record, int version, const tellura_soils& soils,
              const tellura_weather_stations& stations, const option_lists& options, message_sink& errors) {
    bool ok = true;
    if (version == kTellura4Original &&
        record.row.number("Organic Matter Decomposition Model") != kExponentialDecomposition) {
        errors.errorf("ERROR, Organic Matter Decomposition Model must be exponential for \"%s\" version.\n",
                      versionDisplayName(kTellura4Original));
        ok = false;
    }
    if (const tellura_soil* soil = soils.find(record.soilId())) {
        soil->checkForRun(version, errors);
    } else {
        errors.error("ERROR, No soil record to run.\n");
        ok = false;
    }
    if (!stations.find(record.weatherId())) {
        errors.error("ERROR, No weather record to run.\n");
        ok = false;
    }
    const std::string crop = std::string(trim(record.initialCrop()));
    if (!crop.empty() && !options.contains(option_kind::crop, crop)) {
        errors.error("ERROR, Initial Crop is not in crop list.\n");
        ok = false;
    }
    const std::string tree = std::string(trim(record.initialTree()));
    if (!tree.empty() && !options.contains(option_kind::tree, tree)) {
        errors.error("ERROR, Initial Tree is not in tree list.\n");
        ok = false;
    }
    option_lists_lookup lookup(options);
    if (!validateEventBlocks(record.blocks, version, lookup, stations, errors, coverageCheck)) ok = false;
    return ok;
}

std::string runReport(const message_sink& errors, const std::string& runLog) {
    if (errors.empty()) return runLog;
    return errors.text() + "\n" + runLog;
}

// One record's run from its folder to its stored outputs (or its kept folder).
struct run_controller::record_run {
    run_folder folder;
    run_state state = run_state::failed;
    std::string started, ended;
    std::string inputsDigest;
    std::string host = hostName();  // where the programs ran
    std::string runLog;
    message_sink errors;
};

run_controller::run_controller(database& db, const app_soilbench& settings)
    : db_(db),
      settings_(settings),
      runsRoot_(run_folder::rootFor(settings.runsFolder)),
      projectName_(projectNameOf(db.location())) {}
run_controller::~run_controller() = default;

bool run_controller::loadProjectData(message_sink& errors) {
    bool ok = options_.loadAll(db_, errors);
    ok = soils_.load(db_, errors) && ok;
    ok = loadWeatherStations(db_, stations_, errors) && ok;
    for (auto& station : stations_.stations) {
        ok = loadMonthlyHistory(db_, station, errors) && ok;
        ok = loadDailyHistory(db_, station, errors) && ok;
    }
    layouts_ = loadBinaryLayouts(settings_.binaryLayoutFiles(), errors);
    // A profile that cannot be read is reported when a run needs it.
    message_sink profileProblems;
    profiles_.load(release_profile_catalogue::shippedFolder(), settings_.userProfileFolder(), profileProblems);
    loaded_ = true;
    return ok;
}

bool run_controller::checkRecord(const tellura_control_record& record, message_sink& errors) const {
    return precheck(record, settings_.version, soils_, stations_, options_, errors);
}

// Nothing is written anywhere for a run that has no program to run.
bool run_controller::checkPrograms(message_sink& errors) const {
    const int version = settings_.version;
    bool ok = true;
    if (trim(settings_.modelExecutable(version)).empty()) {
        errors.errorf(
            "ERROR, no model executable is configured for \"%s\": nothing was run. See \"File\" | "
            "\"Configure\".\n",
            versionDisplayName(version));
        ok = false;
    }
    // Releases 2 to 5 read the list utility's list file unless binary output is read.
    const bool listNeeded = version > kTellura4Agricultural && version < kTellura5 && !settings_.readBinaryOutput;
    if (listNeeded && trim(settings_.list100Executable(version)).empty()) {
        errors.errorf(
            "ERROR, no list utility is configured for \"%s\": nothing was run. See \"File\" | \"Configure\", "
            "or read binary output.\n",
            versionDisplayName(version));
        ok = false;
    }
    return ok;
}

bool run_controller::loadAndCheck(int32_t id, tellura_control_record& record, message_sink& errors) {
    if (!checkPrograms(errors)) return false;
    if (!loaded_) loadProjectData(errors);
    if (!loadControlRecord(db_, id, record, errors)) return false;
    return checkRecord(record, errors);
}

void run_controller::prepareRuns(message_sink& errors) {
    if (runsPrepared_) return;
    runsPrepared_ = true;
    run_folder::removeStale(runsRoot_, errors);
}

void run_controller::runRecord(tellura_control_record& record, tellura_outputs& outputs, record_run& run,
                               const std::function<bool()>& cancelNow) const {
    if (!run.folder.path().empty()) {  // made when the run began
        record_runner runner(settings_, run_inputs{options_, soils_, stations_, layouts_, profiles_});
        run.state =
            runner.run(record, outputs, run.folder.path(), run.runLog, run.errors, cancelNow, &run.inputsDigest);
    }
    run.ended = historyTimeNow();
}

const std::string& run_controller::modelDigest() {
    if (!modelDigestDone_) {
        modelDigest_ = sha256OfFile(localPath(settings_.modelExecutable(settings_.version)));
        modelDigestDone_ = true;
    }
    return modelDigest_;
}

std::string run_controller::releaseProfile() const {
    return releaseProfileName(settings_.releaseProfile(settings_.version), settings_.version);
}

run_history_entry run_controller::historyEntry(int32_t id, const record_run& run) {
    run_history_entry entry;
    entry.id = id;
    entry.started = run.started;
    entry.ended = run.ended;
    entry.state = run.state;
    entry.setMessages(run.errors);
    entry.runFolder = run.folder.path();
    entry.model = localPath(settings_.modelExecutable(settings_.version));
    entry.modelSha256 = modelDigest();
    entry.releaseProfile = releaseProfile();
    entry.inputsSha256 = run.inputsDigest;
    entry.soilbenchVersion = programVersion();
    entry.host = run.host;
    entry.processId = static_cast<int32_t>(getpid());
    return entry;
}

void run_controller::beginRun(const tellura_control_record& record, record_run& run) {
    run.started = historyTimeNow();
    // The folder is made first, so that the history names it while the run goes on.
    run.folder.create(runsRoot_, projectName_, record.id(), run.errors);
    run_history_entry entry = historyEntry(record.id(), run);
    entry.state = run_state::failed;
    message_sink unfinished;
    unfinished.errorf("ERROR, the run started by process %ld on %s did not finish.\n",
                      static_cast<long>(entry.processId), entry.host.c_str());
    entry.setMessages(unfinished);
    appendRunHistory(db_, entry, run.errors);
}

void run_controller::noteRefusedRun(int32_t id, const message_sink& messages) {
    record_run run;
    run.started = run.ended = historyTimeNow();
    run.errors = messages;
    message_sink ignored;  // the run set's messages say already why the record did not run
    appendRunHistory(db_, historyEntry(id, run), ignored);
}

bool run_controller::finishRun(const tellura_control_record& record, tellura_outputs& outputs, record_run& run,
                               message_sink& errors, const std::function<bool(message_sink&)>& alsoInStore) {
    const long id = static_cast<long>(record.id());
    const run_history_entry startedEntry = historyEntry(record.id(), run);
    run_history_entry entry = startedEntry;

    if (run.state == run_state::good) {
        // The outputs and their history row are kept together or not at all.
        message_sink storeErrors;
        bool stored = false;
        {
            store_session s(db_, storeErrors);
            stored = s.ok() && s.commitIf(saveOutputs(db_, record.id(), outputs, storeErrors) &&
                                          replaceRunHistory(db_, startedEntry, entry, storeErrors) &&
                                          (!alsoInStore || alsoInStore(storeErrors)));
        }
        errors.add(storeErrors);
        if (stored) {
            if (settings_.keepRunFolders) run.folder.keep();
            else run.folder.remove(errors);
            return true;
        }
        run.folder.keep();
        errors.errorf(
            "ERROR, the outputs of record %ld were not stored: its earlier outputs are kept, and the run's files "
            "are in \"%s\".\n",
            id, run.folder.path().c_str());
        entry.state = run_state::failed;
        entry.setMessages(storeErrors);
        message_sink ignored;  // the store that just failed most likely refuses this too
        replaceRunHistory(db_, startedEntry, entry, ignored);
        if (alsoInStore) alsoInStore(ignored);
        return false;
    }
    run.folder.keep();
    if (run.folder.path().empty())
        errors.errorf("ERROR, the run of record %ld %s: its earlier outputs are kept.\n", id, endPhrase(run.state));
    else
        errors.errorf(
            "ERROR, the run of record %ld %s: its earlier outputs are kept, and what it wrote is in \"%s\".\n", id,
            endPhrase(run.state), run.folder.path().c_str());
    replaceRunHistory(db_, startedEntry, entry, errors);
    if (alsoInStore) alsoInStore(errors);
    return false;
}

bool run_controller::readRunSetIds(const run_set_options& options, std::vector<int32_t>& ids, message_sink& errors) {
    std::vector<std::pair<long, int32_t>> rows;
    if (!readRunSet(db_, options.filter, rows, errors)) return false;
    if (!rows.empty() && !options.only.empty() && !keepRowsInStates(options, rows, errors)) return false;
    for (const auto& row : rows) ids.push_back(row.second);
    return true;
}

bool run_controller::prepareDetached(const tellura_control_record& record, const std::string& root, task_order& order,
                                     std::string& folder, message_sink& errors) {
    prepareRuns(errors);
    run_folder made;
    if (!made.create(root, projectName_, record.id(), errors)) return false;
    record_runner runner(settings_, run_inputs{options_, soils_, stations_, layouts_, profiles_});
    const int version = settings_.version;
    order.id = record.id();
    order.version = version;
    order.model = localPath(settings_.modelExecutable(version));
    order.listUtility = localPath(settings_.list100Executable(version));
    order.runTimeoutMs = settings_.runTimeout;
    order.readBinaryOutput = settings_.readBinaryOutput;
    order.wineCommand = settings_.wineCommand;
    order.winePrefix = settings_.winePrefix;
    order.saveDailyFirstYear = settings_.saveDailyFirstYear;
    order.saveDailyLastYear = settings_.saveDailyLastYear;
    if (!runner.prepare(record, made.path(), errors, &order.inputsDigest) ||
        !writeTaskOrder(made.path(), order, errors))
        return false;  // the folder, still ours, goes with `made`
    made.keep();
    folder = made.path();
    return true;
}

bool run_controller::collectDetached(tellura_control_record& record, const std::string& folder, const task_order& order,
                                     const std::string& failure, run_state endWithoutResult,
                                     const std::function<bool(message_sink&)>& alsoInStore, std::string& runLog,
                                     message_sink& errors) {
    prepareRuns(errors);
    record_run run;
    run.folder.adopt(folder);
    run.inputsDigest = order.inputsDigest;
    task_result result;
    tellura_outputs outputs;
    if (!folder.empty() && readTaskResult(folder, result, run.errors)) {
        run.state = result.state;
        run.started = result.started;
        run.ended = result.ended;
        run.host = result.host;
        run.runLog = result.runLog;
        run.errors.add(result.messages);  // the node's messages, with their severities
        record_runner runner(settings_, run_inputs{options_, soils_, stations_, layouts_, profiles_});
        const bool programsGood = run.state == run_state::good;
        if (programsGood && !runner.collect(record, outputs, folder, programsGood, run.runLog, run.errors))
            run.state = run_state::failed;
    } else {
        run.state = endWithoutResult;
        run.started = run.ended = historyTimeNow();
        run.errors.error(failure);
    }
    runLog += run.runLog;
    errors.add(run.errors);
    return finishRun(record, outputs, run, errors, alsoInStore);
}

bool run_controller::runLoadedRecord(tellura_control_record& record, tellura_outputs& outputs,
                                     const run_choices& choices, std::string& runLog, message_sink& errors,
                                     const std::function<bool()>& cancelNow, const model_run_host& host) {
    settings_.saveDailyFirstYear = choices.saveDailyFirstYear;
    settings_.saveDailyLastYear = choices.saveDailyLastYear;
    settings_.readBinaryOutput = choices.readBinaryOutput;
    record_runner::applyBlockChoice(record, choices);
    if (!checkPrograms(errors)) return false;
    prepareRuns(errors);
    record_run run;
    beginRun(record, run);
    const auto modelRun = [&] { runRecord(record, outputs, run, cancelNow); };
    if (host) host(modelRun);
    else modelRun();
    runLog += run.runLog;
    errors.add(run.errors);
    return finishRun(record, outputs, run, errors);
}

bool run_controller::runOneRecord(int32_t id, const run_choices& choices, std::string& runLog, message_sink& errors) {
    elapsed_timer timer;
    tellura_control_record record;
    tellura_outputs outputs;
    bool ok = loadAndCheck(id, record, errors) && runLoadedRecord(record, outputs, choices, runLog, errors);
    appendf(runLog, "Total Elapsed: %.3f seconds\n", timer.seconds());
    return ok;
}

// --- Record states ------------------------------------------------------------

std::string run_controller::staleBecause(int32_t id, const std::vector<int>& blockOrder,
                                         const run_history_entry& lastRun, message_sink& errors) {
    if (storedReleaseProfileName(lastRun.releaseProfile) != releaseProfile())
        return strprintf("it ran as \"%s\", the release is now \"%s\"", lastRun.releaseProfile.c_str(),
                         releaseProfile().c_str());
    const std::string model = localPath(settings_.modelExecutable(settings_.version));
    if (modelDigest().empty()) return strprintf("the model executable \"%s\" cannot be read", model.c_str());
    if (modelDigest() != lastRun.modelSha256) return strprintf("the model executable \"%s\" changed", model.c_str());

    tellura_control_record record;
    message_sink recordErrors;
    if (!loadControlRecord(db_, id, record, recordErrors)) {
        errors.add(recordErrors);
        return "its record cannot be read";
    }
    if (!blockOrder.empty()) {
        run_choices choice;
        choice.blockOrder = blockOrder;
        record_runner::applyBlockChoice(record, choice);
    }
    // The inputs are written by the run's own writer into a folder of their
    // own, which goes again at once (or at the next start, if we die here).
    run_folder folder;
    std::string digest;
    message_sink writeErrors, ignored;
    record_runner runner(settings_, run_inputs{options_, soils_, stations_, layouts_, profiles_});
    const bool written = folder.create(runsRoot_, projectName_, id, writeErrors) &&
                         runner.writeInputs(record, folder.path(), digest, writeErrors);
    folder.remove(ignored);
    if (!written) {
        const message* error = writeErrors.firstError();
        const std::string first = error ? error->text : std::string();
        std::string reason = first.substr(0, first.find('\n'));
        return "its input files cannot be written now: " + reason;
    }
    return digest == lastRun.inputsSha256 ? "" : "its inputs changed";
}

bool run_controller::recordStatuses(const std::string& filter, const std::vector<int>& blockOrder,
                                    std::vector<record_status>& statuses, message_sink& errors) {
    std::vector<std::pair<long, int32_t>> rows;
    std::map<int32_t, run_history_entry> lastRuns;
    if (!readRunSet(db_, filter, rows, errors) || !readLastRuns(db_, lastRuns, errors)) return false;
    if (!loaded_) loadProjectData(errors);
    for (const auto& row : rows) {
        record_status status;
        status.id = row.second;
        auto last = lastRuns.find(status.id);
        status.state = lastRunState(last == lastRuns.end() ? nullptr : &last->second);
        if (last != lastRuns.end()) status.lastRun = last->second;
        if (status.state == record_state::good) {
            status.staleBecause = staleBecause(status.id, blockOrder, status.lastRun, errors);
            if (!status.staleBecause.empty()) status.state = record_state::stale;
        }
        statuses.push_back(std::move(status));
    }
    return true;
}

bool run_controller::keepRowsInStates(const run_set_options& options, std::vector<std::pair<long, int32_t>>& rows,
                                      message_sink& errors) {
    std::vector<record_status> statuses;
    if (!recordStatuses(options.filter, options.blockOrder, statuses, errors)) return false;
    std::set<int32_t> chosen;
    for (const record_status& status : statuses)
        if (std::find(options.only.begin(), options.only.end(), status.state) != options.only.end())
            chosen.insert(status.id);
    rows.erase(std::remove_if(rows.begin(), rows.end(), [&](const auto& row) { return !chosen.count(row.second); }),
               rows.end());
    return true;
}

// --- Many records ------------------------------------------------------------

// One record of a run set on its way: checked in table order, run (perhaps
// alongside others), then reported and stored in table order.
struct run_controller::pending_record {
    long runNumber = 0;
    long position = 0;
    int32_t id = 0;
    tellura_control_record record;
    tellura_outputs outputs;
    bool prechecked = false;
    message_sink precheckMessages;
    record_run run;
    bool running = false;  // its run was given to the job pool
    job_pool::ticket job = 0;
};

// What a run set carries from record to record.
struct run_controller::run_set_progress {
    const run_set_options& options;
    run_observer& observer;  // where the messages go too
    run_set_result& result;
    capped_text log{kRunLogHeadBytes, kRunLogTailBytes};
    long total = 0;
    long reported = 0;
};

// The next record of the set read, given the chosen blocks and checked.
std::unique_ptr<run_controller::pending_record> run_controller::checkNextRecord(const std::pair<long, int32_t>& row,
                                                                                run_set_progress& set) {
    auto p = std::make_unique<pending_record>();
    p->runNumber = ++set.result.runNumber;
    p->position = row.first;
    p->id = row.second;
    set.observer.progressText(
        strprintf("Running TELLURA #%ld Record=%ld ID=%ld", p->runNumber, p->position, static_cast<long>(p->id)));
    loadControlRecord(db_, p->id, p->record, p->precheckMessages);
    if (!set.options.blockOrder.empty()) {
        run_choices choice;
        choice.blockOrder = set.options.blockOrder;
        record_runner::applyBlockChoice(p->record, choice);
    }
    p->prechecked = checkRecord(p->record, p->precheckMessages);
    return p;
}

// A record's messages, run log and outputs reported and stored, in table order.
void run_controller::reportRecord(pending_record& p, run_set_progress& set) {
    run_set_result& result = set.result;
    message_sink messages = p.precheckMessages;  // this record's, in the order they are shown
    if (!p.prechecked) {
        ++result.failed;
        noteRefusedRun(p.id, p.precheckMessages);
        if (!set.options.stopOnPrecheckErrors) {
            messages.warningf("Precheck warning, %d\n", static_cast<int>(p.runNumber));
        } else {
            set.observer.precheckStopped(p.precheckMessages.text());
            messages.errorf("Stop due to precheck error at %d\n", static_cast<int>(p.runNumber));
            result.stoppedOnPrecheck = true;
        }
    } else {
        set.log.append(strprintf("%ld:", static_cast<long>(p.id)));
        set.log.append(p.run.runLog);
        messages.add(p.run.errors);
        // Good only when its outputs and its history are stored and committed in the project.
        if (finishRun(p.record, p.outputs, p.run, messages)) ++result.good;
        else ++result.failed;
    }
    ++set.reported;
    set.observer.add(messages);
    set.observer.recordFinished(p.id, messages.text());
    set.observer.statusText(
        strprintf("Run %6d, Good=%6d ", static_cast<int>(p.runNumber), static_cast<int>(result.good)));
    set.observer.recordsDone(set.reported, result.good, result.failed, set.total);
    p.record = tellura_control_record();  // outputs stored: free them and the record
    p.outputs = tellura_outputs();
    p.run.runLog = std::string();
    p.run.errors.clear();
}

run_set_result run_controller::runMultipleRecords(const run_set_options& options, run_observer& observer,
                                                  std::string& runLog) {
    message_sink& errors = observer;
    elapsed_timer timer;
    run_set_result result;

    std::vector<std::pair<long, int32_t>> rows;  // (position in the table, ID)
    result.unreadable = !readRunSet(db_, options.filter, rows, errors);
    if (!rows.empty() && !checkPrograms(errors)) {
        result.refused = true;
        rows.clear();
    }
    if (!rows.empty() && !options.only.empty() && !keepRowsInStates(options, rows, errors)) {
        result.unreadable = true;
        rows.clear();
    }
    if (!rows.empty()) {
        if (!loaded_) loadProjectData(errors);
        prepareRuns(errors);
    }

    // More jobs than records would only wait.
    const int jobs = static_cast<int>(std::min<size_t>(static_cast<size_t>(std::max(1, options.jobs)), rows.size()));
    job_pool pool(jobs);
    run_set_progress set{options, observer, result};
    set.total = static_cast<long>(rows.size());
    std::vector<std::unique_ptr<pending_record>> pending;
    size_t nextRow = 0, nextReport = 0;
    bool stopDispatch = false;

    auto pollCancel = [&] {
        cancel_request request = observer.cancelRequested();
        if (request != cancel_request::none) {
            stopDispatch = true;
            result.cancelled = true;
            if (request == cancel_request::end_running) pool.cancel();
        }
    };
    // One at a time the model runs on this thread: a request to end it is
    // taken straight from the observer.
    const std::function<bool()> cancelNow = jobs > 1 ? pool.cancelCheck() : [&] {
        if (observer.cancelRequested() == cancel_request::end_running) pool.cancel();
        return pool.cancelled();
    };

    while (true) {
        // Start records while a job is free. Finished records wait in memory
        // for those before them to be reported; a slow record must not make
        // that queue grow without end. One at a time, each record is reported
        // before the next starts.
        while (!stopDispatch && nextRow < rows.size() && pool.hasFreeSlot() &&
               pending.size() - nextReport < (jobs > 1 ? kLookaheadPerJob * static_cast<size_t>(jobs) : 1)) {
            pending.push_back(checkNextRecord(rows[nextRow++], set));
            pending_record* p = pending.back().get();
            if (!p->prechecked && options.stopOnPrecheckErrors) stopDispatch = true;
            if (p->prechecked) {
                beginRun(p->record, p->run);
                p->running = true;
                p->job = pool.start([this, p, &cancelNow] { runRecord(p->record, p->outputs, p->run, cancelNow); });
            }
            if (jobs > 1) pollCancel();
        }
        // Report and store finished records in table order.
        while (nextReport < pending.size()) {
            pending_record& p = *pending[nextReport];
            if (p.running && !pool.ended(p.job)) break;
            reportRecord(p, set);
            ++nextReport;
            if (jobs <= 1) pollCancel();
        }
        const bool allReported = nextReport == pending.size();
        if (allReported && (stopDispatch || nextRow >= rows.size())) break;
        if (jobs > 1) {
            // Wait for any running record to finish, watching for a cancel meanwhile.
            pool.waitForAnyEnd(std::chrono::milliseconds(50));
            pollCancel();
        }
    }

    runLog += set.log.text("the run log");
    result.elapsedSeconds = timer.seconds();
    double average = result.runNumber > 0 ? result.elapsedSeconds / static_cast<double>(result.runNumber) : 0.0;
    appendf(runLog, "Elapsed: %.3f seconds, ave=%.3f Fail count=%ld\n", result.elapsedSeconds, average, result.failed);
    return result;
}

}  // namespace sb
