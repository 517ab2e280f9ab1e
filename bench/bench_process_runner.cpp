// Cost of the process runner's own work around a model run: starting a process
// with a console file, and reading a large console back in 64-byte pieces.
#include "run/process_runner.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace {

std::string tempFolder() {
    char pattern[] = "/tmp/sbbench-XXXXXX";
    const char* made = mkdtemp(pattern);
    return made ? made : "/tmp";
}

void BM_StartAndWaitCaptured(benchmark::State& state) {
    std::string folder = tempFolder();
    sb::process_runner runner(60000);
    for (auto _ : state) {
        std::string runLog;
        sb::message_sink errors;
        bool ok = runner.runCaptured("\"/bin/echo\" Execution success.", "Soilbench.con", folder, true, runLog, errors);
        if (!ok) state.SkipWithError(errors.text().c_str());
        benchmark::DoNotOptimize(runLog);
    }
    rmdir(folder.c_str());
}
BENCHMARK(BM_StartAndWaitCaptured)->Unit(benchmark::kMillisecond);

void BM_ReadConsole(benchmark::State& state) {
    std::string folder = tempFolder();
    std::string path = folder + "/Soilbench.con";
    std::string line = "stand-in model console line of a long run\r\n";
    std::string text;
    while (text.size() < static_cast<size_t>(state.range(0))) text += line;
    FILE* file = std::fopen(path.c_str(), "wb");
    std::fwrite(text.data(), 1, text.size(), file);
    std::fclose(file);
    int fd = open(path.c_str(), O_RDONLY);
    for (auto _ : state) {
        std::string runLog;
        sb::message_sink errors;
        sb::process_runner::readConsole(fd, true, runLog, errors);
        benchmark::DoNotOptimize(runLog);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
    close(fd);
    unlink(path.c_str());
    rmdir(folder.c_str());
}
BENCHMARK(BM_ReadConsole)->Arg(64 << 10)->Arg(4 << 20)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
