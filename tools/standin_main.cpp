// tellura-standin: a stand-in for the Tellura model, used by Soilbench's tests
// and demo. It is NOT the model. It checks the input files that Soilbench
// writes and writes outputs in the model's formats, with simple numbers
// computed from the inputs.
#include "binary_file.h"
#include "binary_layout.h"
#include "list_file.h"
#include "run_inputs.h"
#include "standin_options.h"
#include "standin_text.h"
#include "standin_values.h"
#include "strict_outputs.h"
#include "strict_release.h"
#include "test_modes.h"
#include "text_outputs.h"

#include <cstdio>
#include <fstream>
#include <string>
#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace standin {
namespace {

std::string exeDirectory(const char* argv0) {
    char buffer[4096];
#ifdef _WIN32
    long length = static_cast<long>(GetModuleFileNameA(nullptr, buffer, sizeof buffer));
#else
    long length = static_cast<long>(readlink("/proc/self/exe", buffer, sizeof buffer - 1));
#endif
    std::string path = length > 0 ? std::string(buffer, static_cast<size_t>(length)) : argv0;
    size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

bool writeText(const std::string& path, const std::string& content, std::string& errors) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
    if (!out) errors += "stand-in model: error: cannot write " + path + "\n";
    return static_cast<bool>(out);
}

run_file_names fileNames(const standin_options& options, int release) {
    run_file_names names;
    if (release == 6) {
        names.site = options.arg("-s");
        names.schedule = options.arg("-m");
        names.fixed = options.arg("-f");
    } else {
        names.schedule = options.arg("-s") + (release == 1 ? ".evt" : ".sch");
    }
    return names;
}

bool checkArguments(const standin_options& options, int release, std::string& errors) {
    const char* const needed6[] = {"-s", "-m", "-f", "-o", "-i"};
    const char* const needed[] = {"-s", "-n"};
    bool ok = true;
    auto need = [&](const char* flag) {
        if (options.arg(flag).empty()) {
            errors += std::string("stand-in model: error: missing argument ") + flag + "\n";
            ok = false;
        }
    };
    if (release == 6)
        for (const char* flag : needed6) need(flag);
    else
        for (const char* flag : needed) need(flag);
    if (release == 6 && ok && !fileExists(options.arg("-i"))) {
        errors += "stand-in model: error: cannot read " + options.arg("-i") + "\n";
        ok = false;
    }
    return ok;
}

int workOutRelease(const standin_options& options) {
    if (options.release) return options.release;
    if (int release = options.releaseFromArguments()) return release;
    schedule_file schedule;
    std::string ignored;
    schedule.read(options.arg("-s") + ".sch", ignored);
    return releaseFromSchedule(schedule, false);
}

std::string binaryFileName(const standin_options& options) {
    std::string name = options.arg("-n");
    return name.find('.') == std::string::npos ? name + ".bin" : name;
}

bool writeOutputs(const standin_options& options, const run_inputs& inputs, const std::string& exeDir,
                  const test_mode& mode, std::string& console, std::string& errors) {
    standin_values values(inputs);
    if (inputs.release == 6) {
        std::string prefix = options.arg("-o");
        bool ok = writeRelease6Files(inputs, values, prefix, errors);
        if (mode.kind == mode_kind::garbage) spoilFile(prefix + ".cropC.csv");
        return ok;
    }
    binary_layout layout;
    if (!layout.load(inputs.release, exeDir, errors)) return false;
    console += "Variable layout: " + layout.source() + "\n";
    std::vector<std::vector<float>> records = binaryRecords(inputs, layout, arrayCounts(inputs.release));
    std::string binaryName = binaryFileName(options);
    bool ok = writeText(binaryName, encodeBinaryFile(records, framingOfRelease(inputs.release)), errors);
    if (mode.kind == mode_kind::garbage) spoilFile(binaryName);
    console += std::to_string(records.size()) + " output records written to " + binaryName + "\n";
    if (inputs.release == 1) {  // -W: the site file as it stands at the end of the run
        std::ifstream site(fileNames(options, 1).site, std::ios::binary);
        std::string text((std::istreambuf_iterator<char>(site)), std::istreambuf_iterator<char>());
        ok = writeText(options.arg("-W"), text, errors) && ok;
    }
    if (inputs.release == 4) ok = writeDailyReleaseFiles(inputs, values, errors) && ok;
    return ok;
}

int runModel(const standin_options& options, const std::string& exeDir, const test_mode& mode, std::string& console,
             std::string& errors) {
    int release = workOutRelease(options);
    if (release < 1 || release > 6) {
        errors += "stand-in model: error: cannot tell which release to imitate (use --release)\n";
        return 1;
    }
    console += "Stand-in model (not the model), imitating release " + std::to_string(release) + "\n";
    if (!checkArguments(options, release, errors)) return 1;
    run_inputs inputs;
    if (!inputs.read(release, fileNames(options, release), errors)) return 1;
    console += "Simulating years " + std::to_string(inputs.schedule.startYear) + " to " +
               std::to_string(inputs.schedule.lastYear) + " in " + std::to_string(inputs.schedule.blocks.size()) +
               " block(s)\n";
    if (!writeOutputs(options, inputs, exeDir, mode, console, errors)) return 1;
    return 0;
}

int runList100(const standin_options& options, const std::string& exeDir, const test_mode& mode, std::string& console,
               std::string& errors) {
    if (options.positional.size() < 3) {
        errors += "stand-in list100: error: expected BINARY LIST VARIABLES file names\n";
        return 1;
    }
    list_request request{options.positional[0], options.positional[1], options.positional[2]};
    if (!writeListFile(request, exeDir, console, errors)) return 1;
    if (mode.kind == mode_kind::garbage)
        spoilFile(request.listFile.find('.') == std::string::npos ? request.listFile + ".lis" : request.listFile);
    return 0;
}

// Strict mode: the run directory is read as the real release reads it. Like the
// release, the stand-in then exits with status 0 whatever happened: only the
// console tells a good run from a refused one.
void runStrictModel(const standin_options& options, const release_behaviour& release, const reference_setup& reference,
                    std::string& console, std::string& errors) {
    std::string binaryName = binaryFileName(options);
    std::string scheduleName = options.arg("-s") + ".sch";
    if (!checkArguments(options, 4, errors) || !readAsRelease(release, reference, scheduleName, console, errors)) {
        if (!options.arg("-n").empty()) writeRefusedBinary(release, binaryName);
        return;
    }
    run_file_names names;
    names.schedule = scheduleName;
    schedule_file schedule;
    schedule.read(scheduleName, errors, true);
    names.site = schedule.siteFile;
    run_inputs inputs;
    if (!inputs.read(4, names, errors, true)) return writeRefusedBinary(release, binaryName);
    if (!writeStrictBinary(inputs, release, reference, binaryName, console, errors)) return;
    if (!writeStrictTextFiles(inputs, release, reference, errors)) return;
    if (release.year == 2012)  // printed during good runs of that release, which go on
        console += "ERROR!  N balance boundary check exceeded.\n  (imitated by the stand-in: the run goes on)\n";
    console += std::string(release.successLine) + "\n";
}

int runStrict(const standin_options& options, const std::string& exeDir, const test_mode& mode) {
    const release_behaviour* release = releaseBehaviour(options.strictYear);
    reference_setup reference;
    std::string console, errors;
    if (!reference.load(options.reference, options.referenceOutputs, errors)) {
        std::fputs(errors.c_str(), stdout);
        return 2;  // the stand-in itself is not set up: not something the release would do
    }
    std::string year = std::to_string(release->year);
    if (options.list100) {
        console += "Stand-in list100 (not the list utility), imitating the " + year + " release strictly\n";
        bool named = options.positional.size() >= 3;
        if (!named) errors += "stand-in list100: error: expected BINARY LIST VARIABLES file names\n";
        list_request request;
        if (named) request = {options.positional[0], options.positional[1], options.positional[2]};
        if (named && writeListFile(request, exeDir, console, errors, {release, &reference})) {
            console += "Done.\n";
            if (release->listStopLine) console += "Stop - Program terminated.\n";
        }
    } else {
        console += "Stand-in model (not the model), imitating the " + year + " release strictly\n";
        runStrictModel(options, *release, reference, console, errors);
        if (mode.kind == mode_kind::garbage) spoilFile(binaryFileName(options));
    }
    if (mode.kind == mode_kind::error) errors += "stand-in model: error: printed on request (test mode \"error\")\n";
    if (mode.kind == mode_kind::silent) return 0;
    std::fputs(console.c_str(), stdout);
    std::fputs(errors.c_str(), stdout);
    return 0;
}

}  // namespace
}  // namespace standin

int main(int argc, char** argv) {
    using namespace standin;
    standin_options options = parseOptions(argc, argv);
    if (options.help) {
        std::fputs(helpText(), stdout);
        return 0;
    }
    test_mode mode;
    std::string console, errors;
    if (!options.problem.empty()) {
        std::printf("stand-in model: error: %s\n", options.problem.c_str());
        return 2;
    }
    if (!parseMode(options.mode, mode)) {
        std::printf("stand-in model: error: unknown test mode \"%s\"\n", options.mode.c_str());
        return 2;
    }
    runModeBeforeWork(mode);
    std::string exeDir = exeDirectory(argv[0]);
    if (options.strictYear) return runStrict(options, exeDir, mode);
    int status = options.list100 ? runList100(options, exeDir, mode, console, errors)
                                 : runModel(options, exeDir, mode, console, errors);
    if (mode.kind == mode_kind::error) errors += "stand-in model: error: printed on request (test mode \"error\")\n";
    if (mode.kind == mode_kind::silent) return status;
    std::fputs(console.c_str(), stdout);
    std::fputs(errors.c_str(), stdout);
    if (status == 0 && !options.list100) std::fputs("Execution success.\n", stdout);
    return status;
}
