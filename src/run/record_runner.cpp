#include "run/record_runner.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

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

namespace sb {
namespace {

bool fileExists(const std::string& path) {
    std::error_code ec;
    return std::filesystem::is_regular_file(path, ec);
}

// The daily-step release's text outputs that are read back, by their place
// in the daily output file selection (from 1).
struct read_text_output {
    const char* file;
    int outfileNumber;
};
const read_text_output kReadTextOutputs[] = {{"year_summary.out", 13}, {"daily.out", 26}};

// A text output left by an earlier run must not be read as this run's.
void removeStaleTextOutputs(const std::string& runDirectory, int version) {
    if (version != kDiurna45) return;
    std::error_code ec;
    for (const auto& output : kReadTextOutputs) std::filesystem::remove(runDirectory + output.file, ec);
}

// The daily years to keep are at most as many as the record simulates: the
// files of one run go to the first year's folder and each further year gets a
// folder of its own, so a range wider than the run would only make empty
// folders (without end for an absurd range). A wider range is cut, with a warning.
void keepToSimulatedYears(const tellura_control_record& record, int first, int& last, std::string& errors) {
    if (record.blocks.empty()) return;
    int simulatedFirst = record.blocks.front().firstYear, simulatedLast = record.blocks.front().lastYear;
    for (const auto& block : record.blocks) {
        simulatedFirst = std::min<int>(simulatedFirst, block.firstYear);
        simulatedLast = std::max<int>(simulatedLast, block.lastYear);
    }
    const long long years = std::max(1, simulatedLast - simulatedFirst + 1);
    if (static_cast<long long>(last) - first + 1 <= years) return;
    appendf(errors,
            "WARNING, daily output years %d to %d are more than the %lld years record %ld simulates: years %d to %lld "
            "are kept.\n",
            first, last, years, static_cast<long>(record.id()), first, first + years - 1);
    last = static_cast<int>(first + years - 1);
}

std::string withSlash(std::string dir) {
    if (!dir.empty() && dir.back() != '/') dir += '/';
    return dir;
}

// An executable path with its folder replaced by the scratch folder's: the
// program itself is started from where it is installed.
std::string executableIn(const std::string& configured) { return localPath(configured); }

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

bool record_runner::run(tellura_control_record& record, tellura_outputs& outputs, const std::string& workDirectory,
                        std::string& runLog, std::string& errors, const std::function<bool()>& cancelNow) const {
    const int version = settings_.version;
    const std::string modelExe = executableIn(settings_.modelExecutable(version));
    const std::string listExe = executableIn(settings_.list100Executable(version));
    const std::string runDirectory = workDirectory.empty() ? directoryOf(modelExe) : withSlash(workDirectory);

    // The writers take the executable's path to find the run directory: point
    // them at the working directory with a name that is only used for its folder.
    std::string prepareErrors;
    prepareRunDirectory(record, version, runDirectory + "model", settings_.outfileSelected, inputs_.options,
                        inputs_.soils, inputs_.stations, prepareErrors);
    errors += prepareErrors;

    process_runner processes(settings_.runTimeout);
    if (cancelNow) processes.setCancelCheck(cancelNow);
    processes.setWine({settings_.wineCommand, settings_.winePrefix});
    model_process_runner model(processes);
    model.setWorkingDirectory(workDirectory.empty() ? "" : runDirectory);

    outputs.clear();
    record.runDone = false;
    removeStaleTextOutputs(runDirectory, version);
    if (!model.runModel(version, modelExe, settings_.runVisible, runLog, errors)) return false;

    bool ok = true;
    if (!settings_.readBinaryOutput) {
        // Release 6 has no list utility: asking for it reports the process-start failure.
        output_variable_set variables;
        variables.setCurrentVersion(version);
        if (!variables.writeRequestFile(runDirectory, record, errors)) ok = false;
        else if (!model.runList100(version, listExe, settings_.runVisible, runLog, errors)) ok = false;
    }
    if (!readOutputs(record, outputs, runDirectory, errors)) ok = false;
    if (ok) record.runDone = true;
    return ok;
}

bool record_runner::readOutputs(const tellura_control_record& record, tellura_outputs& outputs,
                                const std::string& runDirectory, std::string& errors) const {
    const int version = settings_.version;
    bool ok = true;
    if (version == kTellura5) return readCsvOutputs(runDirectory, outputs, errors);

    // Release 1 is always read from its binary file: it has no variable lists.
    if (settings_.readBinaryOutput || version == kTellura4Agricultural) {
        ok = readBinaryOutput(runDirectory + "sb.bin", version, inputs_.layouts, record.blocks, outputs, errors) && ok;
    } else {
        output_variable_set variables;
        ok = readListFile(variables, runDirectory + "sb.lis", version, record.blocks, outputs, errors) && ok;
    }
    if (version == kDiurna45) {
        // Only the files the model was asked to write are read back.
        auto selected = [&](const read_text_output& output) {
            return settings_.outfileSelected[static_cast<size_t>(output.outfileNumber - 1)] &&
                   fileExists(runDirectory + output.file);
        };
        if (selected(kReadTextOutputs[0]))
            ok = readYearSummary(runDirectory + kReadTextOutputs[0].file, outputs, errors) && ok;
        if (selected(kReadTextOutputs[1]))
            ok = readDailyOutput(runDirectory + kReadTextOutputs[1].file, outputs, errors) && ok;
        int first = settings_.saveDailyFirstYear, last = settings_.saveDailyLastYear;
        if (first <= last && !settings_.outputPath.empty()) {
            keepToSimulatedYears(record, first, last, errors);
            ok = saveDailyFiles(runDirectory, dailyOutputFolder(), settings_.outputPrefix, first, last, errors) && ok;
        }
    }
    return ok;
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
