#pragma once
// One record's trip through the model, without the database: write its run
// folder, run the model (and the list utility), read the outputs back into
// the record's outputs. The run controller loads and stores around it; several
// records may run at once, each in its own run folder.
#include <functional>
#include <string>
#include <string_view>

#include "app/app_soilbench.h"
#include "app/message_sink.h"
#include "run/run_choices.h"
#include "run/run_state.h"

namespace sb {

class binary_layout_catalogue;
class release_profile_catalogue;
struct release_profile;
class option_lists;
class tellura_control_record;
class tellura_soils;
class tellura_weather_stations;
struct tellura_outputs;

// The project data every run of a run set reads; shared, read-only.
struct run_inputs {
    const option_lists& options;
    const tellura_soils& soils;
    const tellura_weather_stations& stations;
    const binary_layout_catalogue& layouts;
    const release_profile_catalogue& profiles;
};

class record_runner {
public:
    // `settings` is the run's own copy: version, executables, time limit, flags.
    record_runner(const app_soilbench& settings, const run_inputs& inputs);

    // A run in three steps, so that the programs may run elsewhere (a cluster
    // node) between writing the folder and reading it back:
    //
    // 1. Writes the record's inputs into `runFolder` (its own, empty), brings the
    //    model's data files along and writes the list utility's request file.
    //    False when the model must not run. `inputsDigest` receives the SHA-256
    //    of the input files written.
    bool prepare(const tellura_control_record& record, const std::string& runFolder, message_sink& errors,
                 std::string* inputsDigest = nullptr) const;
    // 2. Runs the model (and the list utility) in the prepared folder with the
    //    executables where they are installed; needs nothing of the project. The
    //    model is ended early when `cancelNow` returns true. `modelGood` tells
    //    whether the model itself ended well (the list utility may still fail).
    static run_state runPrograms(const app_soilbench& settings, const std::string& runFolder, std::string& runLog,
                                 message_sink& errors, const std::function<bool()>& cancelNow = {},
                                 bool* modelGood = nullptr);
    // 3. Reads the outputs the programs left in `runFolder` into `outputs` and
    //    keeps the daily files; `programsGood` is step 2's verdict and `console`
    //    what the programs printed (checked for the release's success line).
    //    Good only when those and every read succeeded; outputs read before a
    //    failure stay.
    bool collect(tellura_control_record& record, tellura_outputs& outputs, const std::string& runFolder,
                 bool programsGood, std::string_view console, message_sink& errors) const;

    // All three steps here, one after the other.
    run_state run(tellura_control_record& record, tellura_outputs& outputs, const std::string& runFolder,
                  std::string& runLog, message_sink& errors, const std::function<bool()>& cancelNow = {},
                  std::string* inputsDigest = nullptr) const;

    // Writes the record's input files into `runFolder` (its own, holding nothing
    // else yet) exactly as run() does, and gives their digest: what a run now
    // would record as its inputs. False when any file could not be written.
    bool writeInputs(const tellura_control_record& record, const std::string& runFolder, std::string& inputsDigest,
                     message_sink& errors) const;

    // The record's blocks reduced to and ordered as the choice says.
    static void applyBlockChoice(tellura_control_record& record, const run_choices& choices);

private:
    bool loadOutputs(const tellura_control_record& record, tellura_outputs& outputs, const std::string& runDirectory,
                     const release_profile& profile, message_sink& errors) const;
    // The daily-step release's daily files of the chosen years, into the output folder.
    bool keepDailyFiles(const tellura_control_record& record, const std::string& runFolder, message_sink& errors) const;
    std::string dailyOutputFolder() const;

    app_soilbench settings_;
    run_inputs inputs_;
};

}  // namespace sb
