// Reading and storing a long run's outputs: a 2,000-year monthly list file of
// 110 columns (24,000 rows), the binary file of the same run, and a 100-year
// daily output file; parsing alone and parsing plus storing in one transaction.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

#include "app/text_format.h"
#include "db/database.h"
#include "db/database_maker.h"
#include "modeloutput/binary_layout.h"
#include "modeloutput/binary_output_reader.h"
#include "modeloutput/list_file_reader.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/output_variable_set.h"
#include "modeloutput/text_output_readers.h"
#include "modeloutput/tellura_output.h"
#include "records/tellura_event_block.h"

namespace fs = std::filesystem;
using namespace sb;

namespace {

constexpr int kFirstYear = 1;
constexpr int kYears = 2000;
constexpr int kMonthlyRows = kYears * 12;

const fs::path& benchDir() {
    static fs::path dir = [] {
        fs::path d = fs::temp_directory_path() / ("sb_bench_output_" + std::to_string(::getpid()));
        fs::create_directories(d);
        return d;
    }();
    return dir;
}

float valueOf(int row, int column) { return static_cast<float>(std::fmod(row * 0.37 + column * 1.1, 900.0)); }

// What the list utility writes for version 4: every list C and D name.
const std::string& monthlyListFile() {
    static std::string path = [] {
        std::string p = (benchDir() / "sb.lis").string();
        output_variable_set set;
        std::vector<std::string> names;
        for (const auto& d : set.mainList(4)) names.push_back(d.name);
        for (const auto& d : set.extraList(4)) names.push_back(d.name);
        std::FILE* f = std::fopen(p.c_str(), "w");
        std::fprintf(f, "%11s     ", "time");
        for (const auto& n : names) std::fprintf(f, "     %-11s", n.substr(0, 11).c_str());
        std::fprintf(f, "\n\n");
        for (int r = 0; r < kMonthlyRows; ++r) {
            double t = kFirstYear + (r + 1) / 12.0;
            std::fprintf(f, "%11.2f", t);
            for (size_t c = 0; c < names.size(); ++c) std::fprintf(f, "     %11.4f", valueOf(r, static_cast<int>(c)));
            std::fprintf(f, "\n");
        }
        std::fclose(f);
        return p;
    }();
    return path;
}

// The same run as the model's binary output, 1-byte-marker framing, 3212-byte records.
const std::string& binaryFile() {
    static std::string path = [] {
        std::string p = (benchDir() / "sb.bin").string();
        std::FILE* f = std::fopen(p.c_str(), "wb");
        std::fputc(75, f);
        std::vector<float> record(803);
        std::vector<unsigned char> bytes(record.size() * 4);
        for (int r = 0; r < kMonthlyRows; ++r) {
            record[0] = static_cast<float>(kFirstYear + (r + 1) / 12.0);
            for (size_t i = 1; i < record.size(); ++i) record[i] = valueOf(r, static_cast<int>(i));
            std::memcpy(bytes.data(), record.data(), bytes.size());
            for (size_t done = 0; done < bytes.size();) {
                size_t piece = std::min<size_t>(128, bytes.size() - done);
                int marker = done + piece < bytes.size() ? 129 : static_cast<int>(piece);
                std::fputc(marker, f);
                std::fwrite(bytes.data() + done, 1, piece, f);
                std::fputc(marker, f);
                done += piece;
            }
        }
        std::fputc(130, f);
        std::fclose(f);
        return p;
    }();
    return path;
}

const std::string& dailyFile() {
    static std::string path = [] {
        std::string p = (benchDir() / "daily.out").string();
        std::FILE* f = std::fopen(p.c_str(), "w");
        std::fprintf(f, "%10s%9s%9s%9s%13s%13s%13s\n", "time", "dayofyr", "tmax", "tmin", "N2Oflux", "NOflux",
                     "CO2resp");
        for (int year = 1901; year <= 2000; ++year)
            for (int day = 1; day <= 365; ++day)
                std::fprintf(f, "%10.4f%9d%9.2f%9.2f%13.4f%13.4f%13.4f\n", static_cast<double>(year), day,
                             valueOf(day, 1), valueOf(day, 2), valueOf(day, 3), valueOf(day, 4), valueOf(day, 5));
        std::fclose(f);
        return p;
    }();
    return path;
}

// One block of monthly output over every year of the files.
const std::vector<tellura_event_block>& monthlyBlocks() {
    static const std::vector<tellura_event_block> blocks = [] {
        std::vector<tellura_event_block> one(1);
        one[0].lastYear = kFirstYear + kYears;
        one[0].outputInterval = 1.0f;
        return one;
    }();
    return blocks;
}

std::unique_ptr<database> project() {
    std::string path = (benchDir() / "bench.db").string();
    sb::message_sink errors;
    database::create(path, errors);
    auto db = database::open(path, errors);
    if (db) {
        database_maker maker(*db);
        maker.createAllTables(errors);
    }
    if (!errors.empty()) std::fprintf(stderr, "%s", errors.text().c_str());
    return db;
}

void reportRate(benchmark::State& state, long rows, const std::string& file) {
    state.SetItemsProcessed(state.iterations() * rows);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(fs::file_size(file)));
}

bool readList(tellura_outputs& outputs) {
    output_variable_set set;
    sb::message_sink errors;
    return readListFile(set, monthlyListFile(), 4, monthlyBlocks(), outputs, errors);
}

void BM_ListFileParse(benchmark::State& state) {
    for (auto _ : state) {
        tellura_outputs outputs;
        if (!readList(outputs)) state.SkipWithError("list file read failed");
        benchmark::DoNotOptimize(outputs.monthlyCount());
    }
    reportRate(state, kMonthlyRows, monthlyListFile());
}

void BM_ListFileParseAndStore(benchmark::State& state) {
    auto db = project();
    for (auto _ : state) {
        tellura_outputs outputs;
        sb::message_sink errors;
        if (!readList(outputs) || !saveOutputs(*db, 1, outputs, errors)) state.SkipWithError(errors.text().c_str());
    }
    reportRate(state, kMonthlyRows, monthlyListFile());
}

void BM_BinaryParse(benchmark::State& state) {
    binary_layout_catalogue layouts;
    sb::message_sink errors;
    layouts.loadShipped(binary_layout_catalogue::shippedDirectory(), errors);
    for (auto _ : state) {
        tellura_outputs outputs;
        if (!readBinaryOutput(binaryFile(), 4, layouts, monthlyBlocks(), outputs, errors))
            state.SkipWithError(errors.text().substr(0, 200).c_str());
        benchmark::DoNotOptimize(outputs.monthlyCount());
        errors.clear();
    }
    reportRate(state, kMonthlyRows, binaryFile());
}

void BM_BinaryParseAndStore(benchmark::State& state) {
    auto db = project();
    binary_layout_catalogue layouts;
    sb::message_sink errors;
    layouts.loadShipped(binary_layout_catalogue::shippedDirectory(), errors);
    for (auto _ : state) {
        tellura_outputs outputs;
        if (!readBinaryOutput(binaryFile(), 4, layouts, monthlyBlocks(), outputs, errors) ||
            !saveOutputs(*db, 1, outputs, errors))
            state.SkipWithError(errors.text().substr(0, 200).c_str());
        errors.clear();
    }
    reportRate(state, kMonthlyRows, binaryFile());
}

void BM_DailyParse(benchmark::State& state) {
    for (auto _ : state) {
        tellura_outputs outputs;
        sb::message_sink errors;
        if (!readDailyOutput(dailyFile(), outputs, errors)) state.SkipWithError(errors.text().c_str());
        benchmark::DoNotOptimize(outputs.daily.size());
    }
    reportRate(state, 36500, dailyFile());
}

void BM_DailyParseAndStore(benchmark::State& state) {
    auto db = project();
    for (auto _ : state) {
        tellura_outputs outputs;
        sb::message_sink errors;
        if (!readDailyOutput(dailyFile(), outputs, errors) || !saveOutputs(*db, 1, outputs, errors))
            state.SkipWithError(errors.text().c_str());
    }
    reportRate(state, 36500, dailyFile());
}

}  // namespace

BENCHMARK(BM_ListFileParse)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ListFileParseAndStore)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BinaryParse)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BinaryParseAndStore)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DailyParse)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DailyParseAndStore)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::error_code ec;
    fs::remove_all(benchDir(), ec);
    return 0;
}
