// Preparing the run directory of a typical record (the daily model's sample
// set-up: its option files, soil and 55 years of daily weather) for each release.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "modelinput/run_directory.h"
#include "modelinput/run_files_import.h"

namespace {

const char* kSampleDir = SB_SAMPLES_DIR "/diurna-2012/inputs";

struct typical_run {
    sb::imported_run run;
    sb::tellura_soils soils;
    sb::tellura_weather_stations stations;
    bool ok = false;
};

const typical_run& typicalRun() {
    static typical_run typical = [] {
        typical_run t;
        sb::message_sink messages;
        t.ok = std::filesystem::is_directory(kSampleDir) &&
               sb::readRunFiles(kSampleDir, "example.sch", 4, 1, 1, 1, t.run, messages);
        t.soils.soils.push_back(t.run.soil);
        t.stations.stations.push_back(t.run.station);
        // Monthly history for the monthly releases: one year record per daily year.
        for (const sb::weather_daily_year& year : t.run.station.daily)
            for (int month = 1; month <= 12; ++month)
                t.stations.stations.back().monthlyYear(year.year).monthRecord(month).precip = 1.0f;
        return t;
    }();
    return typical;
}

void BM_PrepareRunDirectory(benchmark::State& state) {
    const int version = static_cast<int>(state.range(0));
    const typical_run& typical = typicalRun();
    if (!typical.ok) {
        state.SkipWithError("sample run directory not found beside the project");
        return;
    }
    std::string folder =
        (std::filesystem::temp_directory_path() / ("sb_bench_run_" + std::to_string(version))).string();
    std::filesystem::create_directories(folder);
    sb::outfile_flags flags{};
    for (auto _ : state) {
        sb::message_sink errors;
        bool ok = sb::prepareRunDirectory(typical.run.record, version, folder + "/model", flags, typical.run.options,
                                          typical.soils, typical.stations, errors);
        benchmark::DoNotOptimize(ok);
    }
    std::filesystem::remove_all(folder);
}
BENCHMARK(BM_PrepareRunDirectory)->DenseRange(1, 6)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
