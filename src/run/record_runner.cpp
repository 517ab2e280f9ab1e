#include "run/record_runner.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "app/file_digest.h"
#include "app/release_profile_catalogue.h"
#include "app/text_file.h"
#include "app/text_format.h"
#include "modelinput/run_directory.h"
#include "modeloutput/binary_layout.h"
#include "modeloutput/binary_output_reader.h"
#include "modeloutput/csv_output_reader.h"
#include "modeloutput/daily_file_keeper.h"
#include "modeloutput/list_file_reader.h"
#include "modeloutput/output_variable_set.h"
#include "modeloutput/tellura_output.h"
#include "modeloutput/text_output_readers.h"
#include "records/option_lists.h"
#include "records/tellura_control_record.h"
#include "run/model_process_runner.h"
#include "run/process_runner.h"
#include "run/run_folder.h"

namespace sb {
namespace {

namespace fs = std::filesystem;

bool fileExists(const std::string& path) {
    std::error_code ec;
    return fs::is_regular_file(path, ec);
}

// Whether the run asked the model for a text output: its outfiles.in row is
// switched on, or it has no row (the release always writes it). A file the
// run did not ask for is never read, even when one stands in the run directory.
bool askedFor(const release_profile& profile, const outfile_flags& selected, const std::string& file) {
    for (const profile_outfile_row& row : profile.outfiles) {
        if (row.file != file) continue;
        return row.setting >= 1 && row.setting <= static_cast<int>(selected.size()) &&
               selected[static_cast<size_t>(row.setting - 1)];
    }
    return true;
}

// The daily years to keep are at most as many as the record simulates: the
// files of one run go to the first year's folder and each further year gets a
// folder of its own, so a range wider than the run would only make empty
// folders (without end for an absurd range). A wider range is cut, with a warning.
void keepToSimulatedYears(const tellura_control_record& record, int first, int& last, message_sink& errors) {
    if (record.blocks.empty()) return;
    int simulatedFirst = record.blocks.front().firstYear, simulatedLast = record.blocks.front().lastYear;
    for (const auto& block : record.blocks) {
        simulatedFirst = std::min<int>(simulatedFirst, block.firstYear);
        simulatedLast = std::max<int>(simulatedLast, block.lastYear);
    }
    const long long years = std::max(1, simulatedLast - simulatedFirst + 1);
    if (static_cast<long long>(last) - first + 1 <= years) return;
    errors.warningf(
        "WARNING, daily output years %d to %d are more than the %lld years record %ld simulates: years %d to %lld "
        "are kept.\n",
        first, last, years, static_cast<long>(record.id()), first, first + years - 1);
    last = static_cast<int>(first + years - 1);
}

// The lines of a console text, without blanks around them.
std::vector<std::string_view> consoleLines(std::string_view console) {
    std::vector<std::string_view> lines;
    text_file::forEachLine(console, [&](std::string_view line) { lines.push_back(trim(line)); });
    return lines;
}

// A release tells success by a line of its console, not by its exit status:
// a run whose console lacks that line failed, whatever else it printed. The
// release's own words for a refusal are quoted.
bool consoleTellsSuccess(std::string_view console, const release_profile& profile, message_sink& errors) {
    bool success = false;
    std::string refusals;
    for (std::string_view line : consoleLines(console)) {
        success = success || line == trim(profile.successLine);
        for (const std::string& failure : profile.failureLines)
            if (line.find(failure) != std::string_view::npos)
                appendf(refusals, "  %.*s\n", static_cast<int>(line.size()), line.data());
    }
    if (success) return true;
    errors.errorf("ERROR, the model's console lacks its success line \"%s\" (%s): the run failed.\n",
                  profile.successLine.c_str(), profile.where(0).c_str());
    if (!refusals.empty()) errors.error("The model said:\n" + refusals);
    return false;
}

// The names the list utility said it does not know: their values stay missing.
void reportSkippedNames(std::string_view console, const release_profile& profile, message_sink& errors) {
    if (profile.listSkipText.empty()) return;
    std::string names;
    for (std::string_view line : consoleLines(console)) {
        size_t at = line.find(profile.listSkipText);
        if (at == std::string_view::npos) continue;
        std::string_view name = trim(line.substr(at + profile.listSkipText.size()));
        appendf(names, "%s%.*s", names.empty() ? "" : ", ", static_cast<int>(name.size()), name.data());
    }
    if (!names.empty())
        errors.warningf("WARNING, the list utility does not know %s: stored as missing, not as 0.\n", names.c_str());
}

std::string withSlash(std::string dir) {
    if (!dir.empty() && dir.back() != '/') dir += '/';
    return dir;
}

// Files a run writes or reads back as its results: an old one lying in the
// model's folder must never come along into a run folder and be read as the
// new run's.
bool isRunResult(const std::string& name) {
    static const char* const kResults[] = {"sb.bin",    "sb.lis",    "sb_outvars.txt",
                                           "sbNew.100", "mresp.out", model_process_runner::kConsoleFile};
    for (const char* result : kResults)
        if (name == result) return true;
    for (const auto& daily : dailyOutputFiles())
        if (name == daily.file) return true;
    return name.rfind("sb.", 0) == 0 && name.size() > 7 && name.compare(name.size() - 4, 4, ".csv") == 0;
}

// The data files the model reads beside its inputs (any file of the model's
// folder that is not a program, not one of the inputs just written and not a
// result) are copied into the run folder; the programs stay where they are.
void bringDataFiles(const std::string& modelFolder, const std::string& runFolder, message_sink& errors) {
    std::error_code ec;
    if (modelFolder.empty() || !fs::is_directory(modelFolder, ec)) return;
    for (const auto& entry : fs::directory_iterator(modelFolder, ec)) {
        const std::string name = entry.path().filename().string();
        if (!entry.is_regular_file(ec) || isRunResult(name) || fs::exists(runFolder + name, ec)) continue;
        if ((entry.status(ec).permissions() & fs::perms::owner_exec) != fs::perms::none) continue;
        if (!fs::copy_file(entry.path(), runFolder + name, ec))
            errors.warningf("WARNING, unable to copy the data file \"%s\" into the run folder: %s.\n",
                            entry.path().c_str(), ec.message().c_str());
    }
}

// One digest over every input file written for the run, by name and content
// in name order, so that the same inputs always give the same digest.
std::string digestOfInputs(const std::string& runFolder) {
    std::error_code ec;
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(runFolder, ec)) {
        std::string name = entry.path().filename().string();
        if (entry.is_regular_file(ec) && name != run_folder::kOwnerFile) names.push_back(std::move(name));
    }
    std::sort(names.begin(), names.end());
    sha256_digest digest;
    for (const std::string& name : names) {
        digest.add(name);
        digest.add(std::string_view("\0", 1));
        digest.addFile(runFolder + name);
    }
    return digest.hex();
}

// The list utility must have written the list file during this run: one
// older than the request file ("sb_outvars.txt") written just before it was
// left from before.
bool listFileIsNew(const std::string& runFolder, message_sink& errors) {
    std::error_code ec, requestEc;
    const std::string list = runFolder + "sb.lis";
    auto written = fs::last_write_time(list, ec);
    auto requested = fs::last_write_time(runFolder + "sb_outvars.txt", requestEc);
    if (ec || requestEc || written >= requested) return true;  // a missing file is the reader's to report
    errors.errorf("ERROR, the list file \"%s\" is older than this run: the list utility did not write it.\n",
                  list.c_str());
    return false;
}

run_state failedEnd(const process_runner& processes) {
    return processes.lastEnd() == run_state::good ? run_state::failed : processes.lastEnd();
}

}  // namespace

record_runner::record_runner(const app_soilbench& settings, const run_inputs& inputs)
    : settings_(settings), inputs_(inputs) {}

void record_runner::applyBlockChoice(tellura_control_record& record, const run_choices& choices) {
    if (choices.blockOrder.empty()) return;
    std::vector<tellura_event_block> chosen;
    for (int number : choices.blockOrder)
        for (const auto& block : record.blocks)
            if (block.blockNumber == number) chosen.push_back(block);
    record.blocks = std::move(chosen);
}

bool record_runner::writeInputs(const tellura_control_record& record, const std::string& runFolder,
                                std::string& inputsDigest, message_sink& errors) const {
    const int version = settings_.version;
    const release_profile* profile =
        chooseReleaseProfile(inputs_.profiles, settings_.releaseProfile(version), version, errors);
    if (!profile) return false;
    const std::string folder = withSlash(runFolder);
    // The writers take the executable's path to find the run directory: point
    // them at the run folder with a name that is only used for its folder.
    // A run directory the release would read wrongly is not run at all.
    if (!prepareRunDirectory(record, *profile, folder + "model", settings_.outfileSelected, inputs_.options,
                             inputs_.soils, inputs_.stations, errors)) {
        errors.errorf(
            "ERROR, the run directory of record %ld could not be written as %s reads it; the model was "
            "not started.\n",
            static_cast<long>(record.id()), profile->where(0).c_str());
        return false;
    }
    inputsDigest = digestOfInputs(folder);
    return true;
}

bool record_runner::prepare(const tellura_control_record& record, const std::string& runFolder, message_sink& errors,
                            std::string* inputsDigest) const {
    const int version = settings_.version;
    const std::string folder = withSlash(runFolder);
    std::string digest;
    // The model must not run on inputs that are not all there.
    if (!writeInputs(record, folder, digest, errors)) return false;
    if (inputsDigest) *inputsDigest = digest;
    bringDataFiles(directoryOf(localPath(settings_.modelExecutable(version))), folder, errors);
    if (settings_.readBinaryOutput) return true;
    output_variable_set variables;
    variables.setCurrentVersion(version);
    return variables.writeRequestFile(folder, record, errors);
}

run_state record_runner::runPrograms(const app_soilbench& settings, const std::string& runFolder, std::string& runLog,
                                     message_sink& errors, const std::function<bool()>& cancelNow, bool* modelGood) {
    const int version = settings.version;
    const std::string folder = withSlash(runFolder);
    if (modelGood) *modelGood = false;
    process_runner processes(settings.runTimeout);
    if (cancelNow) processes.setCancelCheck(cancelNow);
    processes.setWine({settings.wineCommand, settings.winePrefix});
    model_process_runner model(processes);
    model.setWorkingDirectory(folder);
    if (!model.runModel(version, localPath(settings.modelExecutable(version)), settings.runVisible, runLog, errors))
        return failedEnd(processes);
    if (modelGood) *modelGood = true;
    if (settings.readBinaryOutput) return run_state::good;
    // Release 6 has no list utility: asking for it reports the process-start failure.
    if (!model.runList100(version, localPath(settings.list100Executable(version)), settings.runVisible, runLog, errors))
        return failedEnd(processes);
    return run_state::good;
}

bool record_runner::collect(tellura_control_record& record, tellura_outputs& outputs, const std::string& runFolder,
                            bool programsGood, std::string_view console, message_sink& errors) const {
    const std::string folder = withSlash(runFolder);
    outputs.clear();
    record.runDone = false;
    const int version = settings_.version;
    const release_profile* profile =
        chooseReleaseProfile(inputs_.profiles, settings_.releaseProfile(version), version, errors);
    if (!profile) return false;
    bool ok = programsGood;
    // A visible run's console is the user's terminal: there is nothing to check.
    if (ok && !settings_.runVisible && !consoleTellsSuccess(console, *profile, errors)) return false;
    if (ok && version != kTellura5 && !binaryOutputHoldsRecord(folder + "sb.bin")) {
        errors.errorf("ERROR, the model's binary output file \"%ssb.bin\" holds no record: the run failed.\n",
                      folder.c_str());
        return false;
    }
    if (!settings_.readBinaryOutput) {
        if (ok && version != kTellura4Agricultural && !listFileIsNew(folder, errors)) ok = false;
        reportSkippedNames(console, *profile, errors);
    }
    if (!loadOutputs(record, outputs, folder, *profile, errors)) ok = false;
    if (outputs.empty()) {
        errors.error("ERROR, no output was read from the model's output files: the run failed.\n");
        ok = false;
    }
    // Daily files replace the kept ones of an earlier run only for a good run.
    if (ok && !keepDailyFiles(record, folder, errors)) ok = false;
    record.runDone = ok;
    return ok;
}

run_state record_runner::run(tellura_control_record& record, tellura_outputs& outputs, const std::string& runFolder,
                             std::string& runLog, message_sink& errors, const std::function<bool()>& cancelNow,
                             std::string* inputsDigest) const {
    outputs.clear();
    record.runDone = false;
    if (!prepare(record, runFolder, errors, inputsDigest)) return run_state::failed;
    bool modelGood = false;
    const size_t consoleStart = runLog.size();
    const run_state programs = runPrograms(settings_, runFolder, runLog, errors, cancelNow, &modelGood);
    if (!modelGood) return programs;
    const bool programsGood = programs == run_state::good;
    const std::string_view console = std::string_view(runLog).substr(consoleStart);
    if (collect(record, outputs, runFolder, programsGood, console, errors)) return run_state::good;
    return programsGood ? run_state::failed : programs;
}

bool record_runner::loadOutputs(const tellura_control_record& record, tellura_outputs& outputs,
                                const std::string& runDirectory, const release_profile& profile,
                                message_sink& errors) const {
    const int version = settings_.version;
    bool ok = true;
    if (version == kTellura5) return readCsvOutputs(runDirectory, outputs, errors);

    // Release 1 is always read from its binary file: it has no variable lists.
    if (settings_.readBinaryOutput || version == kTellura4Agricultural) {
        ok = readBinaryOutput(runDirectory + "sb.bin", version, inputs_.layouts, record.blocks, outputs, errors,
                              &profile) &&
             ok;
    } else {
        output_variable_set variables;
        ok = readListFile(variables, runDirectory + "sb.lis", version, record.blocks, outputs, errors) && ok;
    }
    // The text outputs this run asked for and wrote (a run folder starts
    // without any): year summaries first, then the daily files, whose columns
    // are taken by their names.
    for (const std::string& file : profile.annualFiles) {
        const std::string path = runDirectory + file;
        if (askedFor(profile, settings_.outfileSelected, file) && fileExists(path))
            ok = readYearSummary(path, outputs, errors) && ok;
    }
    for (const std::string& file : profile.dailyFiles) {
        const std::string path = runDirectory + file;
        if (askedFor(profile, settings_.outfileSelected, file) && fileExists(path))
            ok = readDailyOutput(path, profile.dailyAliases, outputs, errors) && ok;
    }
    addAnnualSumsOfDailyValues(outputs);
    return ok;
}

bool record_runner::keepDailyFiles(const tellura_control_record& record, const std::string& runFolder,
                                   message_sink& errors) const {
    int first = settings_.saveDailyFirstYear, last = settings_.saveDailyLastYear;
    if (settings_.version != kDiurna45 || first > last || settings_.outputPath.empty()) return true;
    keepToSimulatedYears(record, first, last, errors);
    return moveDailyFiles(runFolder, dailyOutputFolder(), settings_.outputPrefix, first, last, errors);
}

// The shipped default output path is a Windows folder at the root of drive C:
// on Linux that folder becomes "TelluraOutput" in the user's home directory.
std::string record_runner::dailyOutputFolder() const {
    if (iequals(settings_.outputPath, "c:\\TelluraOutput\\")) {
        const char* home = std::getenv("HOME");
        return withSlash(std::string(home ? home : ".") + "/TelluraOutput");
    }
    return withSlash(localPath(settings_.outputPath));
}

}  // namespace sb
