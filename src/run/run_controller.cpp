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

#include "app/text_format.h"
#include "db/database.h"
#include "modelinput/weather_file.h"
#include "modeloutput/output_tables.h"
#include "run/elapsed_timer.h"
#include "run/record_runner.h"

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

void coverageCheck(const TelluraWeatherStations& station, const tellura_event_block& block, int version,
                   std::string& errors) {
    checkWeatherCoverage(station, block.firstYear, block.lastYear, version, block.blockNumber, errors);
}

// A scratch copy of the run directory for one of several records running at
// once: the data files the model reads beside its inputs come along, the
// executables stay where they are. `copied` receives the names of the files
// copied.
bool makeScratchCopy(const std::filesystem::path& runDirectory, const std::filesystem::path& scratch,
                     std::set<std::string>& copied, std::string& errors) {
    namespace fs = std::filesystem;
    std::error_code ec;
    fs::create_directories(scratch, ec);
    if (ec) {
        appendf(errors, "ERROR, unable to make scratch run directory \"%s\": %s.\n", scratch.c_str(),
                ec.message().c_str());
        return false;
    }
    if (runDirectory.empty() || !fs::is_directory(runDirectory, ec)) return true;
    for (const auto& entry : fs::directory_iterator(runDirectory, ec)) {
        if (!entry.is_regular_file(ec)) continue;
        auto perms = entry.status(ec).permissions();
        if ((perms & fs::perms::owner_exec) != fs::perms::none) continue;
        fs::copy_file(entry.path(), scratch / entry.path().filename(), fs::copy_options::overwrite_existing, ec);
        if (!ec) copied.insert(entry.path().filename().string());
    }
    return true;
}

// Removes what the previous record left in a scratch copy (its inputs and
// outputs), keeping the copied data files. No output of another record can
// then be read as this one's, and the new inputs are written as new files,
// which the file system does much faster than truncating and rewriting the
// old ones.
void clearScratchCopy(const std::filesystem::path& scratch, const std::set<std::string>& keep) {
    namespace fs = std::filesystem;
    std::error_code ec;
    std::vector<fs::path> stale;
    for (const auto& entry : fs::directory_iterator(scratch, ec))
        if (!keep.count(entry.path().filename().string())) stale.push_back(entry.path());
    for (const auto& path : stale) fs::remove_all(path, ec);
}

// Records held finished but not yet reported, per job.
constexpr size_t kLookaheadPerJob = 4;

// Wakes the run set's loop as soon as any worker has finished a record.
class finish_signal {
public:
    void signal() {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            ++count_;
        }
        changed_.notify_one();
    }
    // Returns when a record finished since the last call, or after `limit`.
    void waitForNext(std::chrono::milliseconds limit) {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, limit, [this] { return count_ != seen_; });
        seen_ = count_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    long count_ = 0, seen_ = 0;
};

// IDs of the control records in table order, one query's worth.
bool readRecordIds(database& db, const std::string& filter, std::vector<int32_t>& ids, std::string& errors) {
    db_status status;
    auto table = db.openTable(table_id::control_records, filter, "", status);
    if (!table) {
        errors += "ERROR, cannot open control record table.\n";
        appendStatusText(status, errors);
        return false;
    }
    db_status s;
    for (s = table->moveFirst(); s.ok(); s = table->moveNext()) ids.push_back(table->row().integer(0));
    return readToTheEnd(s, tableName(table_id::control_records), errors);
}

// The records of a run set as (position in the whole table, ID), in table
// order. The position counts every row of the table, so that the progress
// text names the row the user sees in the record list, not the row's place
// in the run set.
bool readRunSet(database& db, const std::string& filter, std::vector<std::pair<long, int32_t>>& rows,
                std::string& errors) {
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

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    if (from.empty()) return;
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

// A record run in a scratch copy reports its files as if it had run in the
// run directory: the scratch copy is gone when the command ends, and the
// messages must not depend on how many records ran at once.
void nameRunDirectory(std::string& text, const std::string& scratch, const std::string& runDirectory) {
    std::string shown = runDirectory;
    if (!shown.empty() && shown.back() == '/') shown.pop_back();
    replaceAll(text, scratch + "/", shown + "/");
    replaceAll(text, scratch, shown);
}

}  // namespace

bool precheck(const tellura_control_record& record, int version, const tellura_soil_list& soils,
              const tellura_weather_station_list& stations, const option_lists& options, std::string& errors) {
    bool ok = true;
    if (version == kTellura4Original &&
        record.row.number("Organic Matter Decomposition Model") != kExponentialDecomposition) {
        appendf(errors, "ERROR, Organic Matter Decomposition Model must be exponential for \"%s\" version.\n",
                versionDisplayName(kTellura4Original));
        ok = false;
    }
    if (const TelluraSoils* soil = soils.find(record.soilId())) {
        soil->checkForRun(version, errors);
    } else {
        errors += "ERROR, No soil record to run.\n";
        ok = false;
    }
    if (!stations.find(record.weatherId())) {
        errors += "ERROR, No weather record to run.\n";
        ok = false;
    }
    const std::string crop = std::string(trim(record.initialCrop()));
    if (!crop.empty() && !options.contains(option_kind::crop, crop)) {
        errors += "ERROR, Initial Crop is not in crop list.\n";
        ok = false;
    }
    const std::string tree = std::string(trim(record.initialTree()));
    if (!tree.empty() && !options.contains(option_kind::tree, tree)) {
        errors += "ERROR, Initial Tree is not in tree list.\n";
        ok = false;
    }
    option_lists_lookup lookup(options);
    if (!validateEventBlocks(record.blocks, version, lookup, stations, errors, coverageCheck)) ok = false;
    return ok;
}

std::string runReport(const std::string& errors, const std::string& runLog) {
    if (errors.empty()) return runLog;
    return errors + "\n" + runLog;
}

run_controller::run_controller(database& db, const app_soilbench& settings) : db_(db), settings_(settings) {}
run_controller::~run_controller() = default;

bool run_controller::loadProjectData(std::string& errors) {
    bool ok = options_.loadAll(db_, errors);
    ok = soils_.load(db_, errors) && ok;
    ok = loadWeatherStations(db_, stations_, errors) && ok;
    for (auto& station : stations_.stations) {
        ok = loadMonthlyHistory(db_, station, errors) && ok;
        ok = loadDailyHistory(db_, station, errors) && ok;
    }
    layouts_ = loadBinaryLayouts(settings_.binaryLayoutFiles(), errors);
    loaded_ = true;
    return ok;
}

bool run_controller::checkRecord(const tellura_control_record& record, std::string& errors) const {
    return precheck(record, settings_.version, soils_, stations_, options_, errors);
}

bool run_controller::loadAndCheck(int32_t id, tellura_control_record& record, std::string& errors) {
    if (!loaded_) loadProjectData(errors);
    if (!readControlRecord(db_, id, record, errors)) return false;
    return checkRecord(record, errors);
}

bool run_controller::storeRun(const tellura_control_record& record, tellura_outputs& outputs, std::string& errors) {
    return storeOutputs(db_, record.id(), outputs, errors);
}

bool run_controller::runLoadedRecord(tellura_control_record& record, tellura_outputs& outputs,
                                     const run_choices& choices, std::string& runLog, std::string& errors,
                                     const std::function<bool()>& cancelNow) {
    settings_.saveDailyFirstYear = choices.saveDailyFirstYear;
    settings_.saveDailyLastYear = choices.saveDailyLastYear;
    settings_.readBinaryOutput = choices.readBinaryOutput;
    record_runner::applyBlockChoice(record, choices);
    record_runner runner(settings_, run_inputs{options_, soils_, stations_, layouts_});
    bool ok = runner.run(record, outputs, "", runLog, errors, cancelNow);
    // Stored also after a failed run (with whatever was read); a record whose
    // outputs did not reach the project is a failure whatever the model did.
    ok = storeRun(record, outputs, errors) && ok;
    return ok;
}

bool run_controller::runOneRecord(int32_t id, const run_choices& choices, std::string& runLog, std::string& errors) {
    elapsed_timer timer;
    tellura_control_record record;
    tellura_outputs outputs;
    bool ok = loadAndCheck(id, record, errors) && runLoadedRecord(record, outputs, choices, runLog, errors);
    appendf(runLog, "Total Elapsed: %.3f seconds\n", timer.seconds());
    return ok;
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
    std::string precheckMessages;
    std::string runLog;
    std::string errors;
    bool ok = false;
    std::string scratch;     // the scratch copy it ran in, when it ran beside others
    std::future<void> done;  // valid while it runs on a worker
};

run_set_result run_controller::runMultipleRecords(const run_set_options& options, run_observer& observer,
                                                  std::string& runLog, std::string& errors) {
    elapsed_timer timer;
    run_set_result result;

    std::vector<std::pair<long, int32_t>> rows;  // (position in the table, ID)
    result.unreadable = !readRunSet(db_, options.filter, rows, errors);
    if (!rows.empty() && !loaded_) loadProjectData(errors);

    const int jobs = std::max(1, options.jobs);
    std::atomic<bool> endNow{false};
    std::vector<std::filesystem::path> slots;
    std::set<std::string> dataFiles;  // copied into every scratch copy
    std::filesystem::path scratchRoot;
    const std::string runDirectory = directoryOf(localPath(settings_.modelExecutable(settings_.version)));
    if (jobs > 1 && rows.size() > 1) {
        scratchRoot = std::filesystem::temp_directory_path() /
                      strprintf("soilbench-run-%ld-%p", static_cast<long>(getpid()), static_cast<void*>(&result));
        for (int k = 0; k < jobs; ++k) {
            slots.push_back(scratchRoot / strprintf("job-%d", k + 1));
            makeScratchCopy(runDirectory, slots.back(), dataFiles, errors);
        }
    }
    std::vector<bool> slotBusy(slots.size(), false);
    finish_signal finished;
    std::vector<int> slotOf;  // per pending record, -1 when none

    record_runner runner(settings_, run_inputs{options_, soils_, stations_, layouts_});
    std::vector<std::unique_ptr<pending_record>> pending;
    size_t nextRow = 0, nextCommit = 0;
    bool stopDispatch = false;
    const long total = static_cast<long>(rows.size());

    auto cancelNow = [&endNow] { return endNow.load(); };
    auto pollCancel = [&] {
        cancel_request request = observer.cancelRequested();
        if (request != cancel_request::none) {
            stopDispatch = true;
            result.cancelled = true;
            if (request == cancel_request::end_running) endNow = true;
        }
    };

    auto commit = [&](pending_record& p) {
        const size_t messagesBefore = errors.size();
        errors += p.precheckMessages;
        if (!p.prechecked) {
            ++result.failed;
            if (!options.stopOnPrecheckErrors) {
                appendf(errors, "Precheck warning, %d\n", static_cast<int>(p.runNumber));
            } else {
                observer.precheckStopped(p.precheckMessages);
                appendf(errors, "Stop due to precheck error at %d\n", static_cast<int>(p.runNumber));
                result.stoppedOnPrecheck = true;
            }
        } else {
            if (!p.scratch.empty()) {
                nameRunDirectory(p.runLog, p.scratch, runDirectory);
                nameRunDirectory(p.errors, p.scratch, runDirectory);
            }
            appendf(runLog, "%ld:", static_cast<long>(p.id));
            runLog += p.runLog;
            errors += p.errors;
            // A record whose outputs could not be stored is no good run, whatever the model did.
            p.ok = storeRun(p.record, p.outputs, errors) && p.ok;
            if (p.ok) ++result.good;
            else ++result.failed;
        }
        observer.recordFinished(p.id, errors.substr(messagesBefore));
        observer.statusText(
            strprintf("Run %6d, Good=%6d ", static_cast<int>(p.runNumber), static_cast<int>(result.good)));
        observer.recordsDone(static_cast<long>(nextCommit + 1), result.good, result.failed, total);
        p.record = tellura_control_record();  // outputs stored: free them and the record
        p.outputs = tellura_outputs();
    };

    while (true) {
        // Start records while a job is free.
        while (!stopDispatch && nextRow < rows.size()) {
            int slot = -1;
            if (!slots.empty()) {
                // Finished records wait in memory for those before them to be
                // reported; a slow record must not make that queue grow without end.
                if (pending.size() - nextCommit >= kLookaheadPerJob * slots.size()) break;
                for (size_t k = 0; k < slots.size(); ++k)
                    if (!slotBusy[k]) {
                        slot = static_cast<int>(k);
                        break;
                    }
                if (slot < 0) break;
            } else if (nextCommit < pending.size()) {
                break;  // one at a time: the previous record is not reported yet
            }
            auto p = std::make_unique<pending_record>();
            p->runNumber = ++result.runNumber;
            p->position = rows[nextRow].first;
            p->id = rows[nextRow].second;
            ++nextRow;
            observer.progressText(strprintf("Running TELLURA #%ld Record=%ld ID=%ld", p->runNumber, p->position,
                                            static_cast<long>(p->id)));
            readControlRecord(db_, p->id, p->record, p->precheckMessages);
            if (!options.blockOrder.empty()) {
                run_choices choice;
                choice.blockOrder = options.blockOrder;
                record_runner::applyBlockChoice(p->record, choice);
            }
            p->prechecked = checkRecord(p->record, p->precheckMessages);
            if (!p->prechecked && options.stopOnPrecheckErrors) stopDispatch = true;
            if (p->prechecked) {
                pending_record* raw = p.get();
                if (slot >= 0) {
                    slotBusy[static_cast<size_t>(slot)] = true;
                    std::string dir = slots[static_cast<size_t>(slot)].string();
                    raw->scratch = dir;
                    raw->done = std::async(std::launch::async, [&runner, raw, dir, cancelNow, &finished, &dataFiles] {
                        clearScratchCopy(dir, dataFiles);
                        raw->ok = runner.run(raw->record, raw->outputs, dir, raw->runLog, raw->errors, cancelNow);
                        finished.signal();
                    });
                } else {
                    // One at a time the model runs on this thread: a request to end
                    // it is taken straight from the observer.
                    auto endRequested = [&] {
                        if (observer.cancelRequested() == cancel_request::end_running) endNow = true;
                        return endNow.load();
                    };
                    raw->ok = runner.run(raw->record, raw->outputs, "", raw->runLog, raw->errors, endRequested);
                }
            }
            // A record that failed its precheck never took its slot: when it is
            // reported it must not free the slot a later record runs in.
            slotOf.push_back(p->prechecked ? slot : -1);
            pending.push_back(std::move(p));
            if (slots.empty()) break;  // report before starting the next
            pollCancel();
        }
        // A finished record's scratch copy is free for the next record at once,
        // even while records before it still run.
        for (size_t k = nextCommit; k < pending.size(); ++k) {
            if (slotOf[k] < 0 || !pending[k]->done.valid()) continue;
            if (pending[k]->done.wait_for(std::chrono::milliseconds(0)) != std::future_status::ready) continue;
            slotBusy[static_cast<size_t>(slotOf[k])] = false;
            slotOf[k] = -1;
        }
        // Report and store finished records in table order.
        while (nextCommit < pending.size()) {
            pending_record& p = *pending[nextCommit];
            if (p.done.valid()) {
                if (p.done.wait_for(std::chrono::milliseconds(0)) != std::future_status::ready) break;
                p.done.get();
            }
            int slot = slotOf[nextCommit];
            if (slot >= 0) slotBusy[static_cast<size_t>(slot)] = false;
            commit(p);
            ++nextCommit;
            if (slots.empty()) pollCancel();
        }
        bool allReported = nextCommit == pending.size();
        if (allReported && (stopDispatch || nextRow >= rows.size())) break;
        if (!slots.empty()) {
            // Wait for any running record to finish, watching for a cancel meanwhile.
            finished.waitForNext(std::chrono::milliseconds(50));
            pollCancel();
        }
    }

    if (!scratchRoot.empty()) {
        std::error_code ec;
        std::filesystem::remove_all(scratchRoot, ec);
    }
    result.elapsedSeconds = timer.seconds();
    double average = result.runNumber > 0 ? result.elapsedSeconds / static_cast<double>(result.runNumber) : 0.0;
    appendf(runLog, "Elapsed: %.3f seconds, ave=%.3f Fail count=%ld\n", result.elapsedSeconds, average, result.failed);
    return result;
}

}  // namespace sb
