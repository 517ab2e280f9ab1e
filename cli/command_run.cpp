// Running: prepare (write a run directory only), run, status, read-bin.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>

#include "app/text_file.h"
#include "app/text_format.h"
#include "cli_context.h"
#include "cli_options.h"
#include "modelinput/run_directory.h"
#include "modeloutput/binary_layout.h"
#include "modeloutput/binary_output_reader.h"
#include "modeloutput/output_table_text.h"
#include "modeloutput/tellura_output.h"
#include "app/program_location.h"
#include "progress_reporter.h"
#include "run/run_task.h"
#include "records/tellura_control_record.h"
#include "run/run_controller.h"
#include "run/slurm_batch.h"

namespace sbcli {
namespace {

// "1,3" -> {1, 3}; false on anything but block numbers (1 to 32767) separated by commas or blanks.
bool parseBlockList(const std::string& text, std::vector<int>& blocks) {
    std::string token;
    auto flush = [&]() -> bool {
        if (token.empty()) return true;
        long long n = 0;
        if (!sb::readWholeNumber(token, 1, 32767, n)) return false;
        blocks.push_back(static_cast<int>(n));
        token.clear();
        return true;
    };
    for (char c : text) {
        if (c == ',' || c == ' ') {
            if (!flush()) return false;
        } else {
            token += c;
        }
    }
    return flush() && !blocks.empty();
}

sb::slurm_options slurmOptions(const run_options& opt, const sb::app_soilbench& settings) {
    sb::slurm_options slurm;
    slurm.sharedFolder = sb::localPath(opt.sharedDir.empty() ? settings.slurmFolder : opt.sharedDir);
    slurm.partition = opt.partition;
    slurm.timeLimit = opt.timeLimit;
    slurm.maxParallel = opt.maxParallel;
    slurm.taskProgram = sb::programDirectory() + "/soilbench";
    return slurm;
}

}  // namespace

int cmdCollect(const collect_options& opt) {
    auto db = openProject(opt.project);
    if (!db) return kExitFailed;
    std::string runLog;
    sb::message_sink errors;
    sb::collect_result result;
    {
        progress_reporter progress;
        result = sb::collectSlurmTasks(*db, loadUserSettings(), progress, runLog);
        errors = progress;
    }
    std::cout << runLog;
    report(errors);
    std::cout << sb::strprintf("%ld records collected: %ld good, %ld failed; %ld still running.\n",
                               result.good + result.failed, result.good, result.failed, result.stillRunning);
    return result.failed == 0 && result.stillRunning == 0 && !result.unreadable ? kExitOk : kExitFailed;
}

int cmdRunTask(const run_task_options& opt) {
    sb::message_sink errors;
    const int status = sb::runTask(opt.folder, errors);
    report(errors);
    return status;
}

int cmdPrepare(const prepare_options& opt) {
    if (opt.dir.empty()) {
        std::cerr << "ERROR, --dir names no folder: give the folder to write the run directory into.\n";
        return kExitUsage;
    }
    sb::message_sink errors;
    std::error_code ec;
    const bool holdsFiles = std::filesystem::is_directory(opt.dir, ec) && !std::filesystem::is_empty(opt.dir, ec);
    if (!allowedToReplace(holdsFiles, opt.force, "the folder \"" + opt.dir + "\" is not empty", "another --dir",
                          "write into it", errors))
        return finish(false, errors);
    auto db = openProject(opt.project);
    if (!db) return kExitFailed;
    sb::app_soilbench settings = loadUserSettings();
    int version = opt.version ? opt.version : settings.version;
    std::filesystem::create_directories(opt.dir, ec);
    if (ec) {
        errors.errorf("ERROR, unable to make the folder \"%s\": %s.\n", opt.dir.c_str(), ec.message().c_str());
        return finish(false, errors);
    }
    sb::run_controller controller(*db, settings);
    controller.loadProjectData(errors);
    sb::tellura_control_record record;
    if (!sb::loadControlRecord(*db, opt.id, record, errors)) return finish(false, errors);
    std::string dir = opt.dir;
    if (dir.back() != '/') dir += '/';
    sb::message_sink profileErrors;
    sb::release_profile_catalogue profiles = loadReleaseProfiles(settings, profileErrors);
    const std::string profileName = opt.profile.empty() ? settings.releaseProfile(version) : opt.profile;
    const sb::release_profile* profile = sb::chooseReleaseProfile(profiles, profileName, version, errors);
    if (!profile) return finish(false, errors);
    // The run directory is the folder of the model executable: name one in the chosen folder.
    bool ok = sb::prepareRunDirectory(record, *profile, dir + "model", settings.outfileSelected,
                                      controller.optionLists(), controller.soils(), controller.stations(), errors);
    if (ok)
        std::cout << "Wrote the run directory of record " << opt.id << " for " << sb::versionDisplayName(version)
                  << " (release profile \"" << profile->name << "\") in " << opt.dir << ".\n";
    return finish(ok, errors);
}

int cmdRun(const run_options& opt) {
    auto db = openProject(opt.project);
    if (!db) return kExitFailed;
    sb::app_soilbench settings = loadUserSettings();
    if (opt.version) settings.version = static_cast<int16_t>(opt.version);
    if (opt.binary) settings.readBinaryOutput = true;
    // A batch run captures the model's console so that its messages are
    // checked and kept in the run log; the desktop's "visible console" setting
    // does not apply here unless asked for.
    settings.runVisible = opt.visible;
    if (!opt.dailyYears.empty()) {
        // Years as the daily folders name them: four digits. The run keeps only
        // those it simulates.
        int first = 0, last = 0;
        if (!parseRange(opt.dailyYears, 0, 9999, first, last)) {
            std::cerr << "ERROR, --daily-years takes two years from 0 to 9999 joined by '-', the first not after the "
                         "second, like 1990-2000; not \""
                      << opt.dailyYears << "\".\n";
            return kExitUsage;
        }
        settings.saveDailyFirstYear = first;
        settings.saveDailyLastYear = last;
    }
    sb::run_set_options runSet;
    if (!opt.selection.filter(runSet.filter)) return kExitUsage;
    runSet.stopOnPrecheckErrors = opt.stopOnPrecheck;
    runSet.jobs = opt.jobs ? opt.jobs : std::max(1, settings.jobs);
    if (!opt.blocks.empty() && !parseBlockList(opt.blocks, runSet.blockOrder)) {
        std::cerr << "ERROR, --blocks takes block numbers from 1 to 32767 like \"1,3\"; not \"" << opt.blocks
                  << "\".\n";
        return kExitUsage;
    }

    sb::message_sink onlyErrors;
    if (!opt.only.empty() && !sb::parseRecordStates(opt.only, runSet.only, onlyErrors)) {
        report(onlyErrors);
        return kExitUsage;
    }

    sb::run_controller controller(*db, settings);
    std::string runLog;
    sb::message_sink errors;
    sb::run_set_result result;
    {
        progress_reporter progress;
        if (opt.slurm) {
            sb::slurm_batch batch(*db, controller, slurmOptions(opt, settings));
            result = batch.run(runSet, progress, runLog);
        } else {
            result = controller.runMultipleRecords(runSet, progress, runLog);
        }
        errors = progress;
    }
    std::cout << runLog;
    report(errors);
    std::cout << sb::strprintf("%ld records run: %ld good, %ld failed%s.\n", result.runNumber, result.good,
                               result.failed, result.cancelled ? " (cancelled)" : "");
    return result.failed == 0 && !result.cancelled && !result.unreadable && !result.refused ? kExitOk : kExitFailed;
}

namespace {

// One cell of the status table: the first line of a failed run's first error,
// with tabs as blanks. A row written before the history kept the first error
// has only the run's messages as one text: there it is the first line starting
// "ERROR" (else the first line), as those messages were written.
std::string failureLine(const sb::run_history_entry& run) {
    const std::string& text = run.firstError.empty() ? run.message : run.firstError;
    size_t from = 0;
    if (run.firstError.empty() && text.compare(0, 5, "ERROR") != 0) {
        const size_t error = text.find("\nERROR");
        if (error != std::string::npos) from = error + 1;
    }
    std::string line = text.substr(from, text.find('\n', from) - from);
    std::replace(line.begin(), line.end(), '\t', ' ');
    return line;
}

std::string statusMessage(const sb::record_status& status) {
    if (status.state == sb::record_state::stale) return status.staleBecause;
    if (status.state == sb::record_state::running) return "running in " + status.lastRun.runFolder;
    if (status.state == sb::record_state::failed) return failureLine(status.lastRun);
    return "";
}

}  // namespace

int cmdStatus(const status_options& opt) {
    std::string filter;
    if (!opt.selection.filter(filter)) return kExitUsage;
    auto db = openProject(opt.project);
    if (!db) return kExitFailed;
    sb::app_soilbench settings = loadUserSettings();
    if (opt.version) settings.version = static_cast<int16_t>(opt.version);
    sb::run_controller controller(*db, settings);
    sb::message_sink errors;
    std::vector<sb::record_status> statuses;
    if (!controller.recordStatuses(filter, {}, statuses, errors)) return finish(false, errors);

    const bool tsv = opt.format == "tsv";
    std::cout << (tsv ? "ID\tState\tStarted\tEnded\tMessage\n"
                      : sb::strprintf("%-10s %-6s %-24s %s\n", "ID", "State", "Last run", "Message"));
    std::map<sb::record_state, long> counts;
    for (const sb::record_status& status : statuses) {
        ++counts[status.state];
        const long id = static_cast<long>(status.id);
        const char* state = sb::recordStateWord(status.state);
        const std::string message = statusMessage(status);
        if (tsv)
            std::cout << sb::strprintf("%ld\t%s\t%s\t%s\t%s\n", id, state, status.lastRun.started.c_str(),
                                       status.lastRun.ended.c_str(), message.c_str());
        else
            std::cout << sb::trim(sb::strprintf("%-10ld %-6s %-24s %s", id, state, status.lastRun.started.c_str(),
                                                message.c_str()))
                      << "\n";
    }
    if (!tsv) {
        using sb::record_state;
        std::cout << sb::strprintf("%zu records: %ld never run, %ld failed, %ld good, %ld stale", statuses.size(),
                                   counts[record_state::never], counts[record_state::failed],
                                   counts[record_state::good], counts[record_state::stale]);
        // Runs going on (another program running the project) are counted only when there are some.
        if (counts[record_state::running] > 0) std::cout << ", " << counts[record_state::running] << " running";
        std::cout << ".\n";
    }
    return finish(true, errors);
}

int cmdReadBin(const read_bin_options& opt) {
    sb::message_sink errors;
    sb::app_soilbench settings = loadUserSettings();
    sb::tellura_outputs outputs;
    const sb::binary_layout_catalogue layouts = sb::loadBinaryLayouts(settings.binaryLayoutFiles(), errors);
    bool ok = sb::readWholeBinaryOutput(opt.file, opt.version, layouts, opt.monthly, outputs, errors);
    std::cout << sb::outputCsv(outputs, opt.monthly ? sb::table_id::output_monthly : sb::table_id::output_annual);
    return finish(ok, errors);
}

}  // namespace sbcli
