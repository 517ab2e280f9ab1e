// The results store on each kind of project: rows stored per second (a record's
// 100 years of daily outputs, of monthly outputs, and a whole record's outputs),
// reading one record's 100 years of daily outputs back for a chart, and opening
// a project of 10,000 records that all have outputs.
//
// SQLite projects are files in the temporary folder. PostgreSQL runs only when
// SB_BENCH_POSTGRESQL names a server URL without a database, e.g.
//   SB_BENCH_POSTGRESQL='postgresql:///?host=/tmp/soilbench-pg-XXXX/socket'
// (tests/support/postgresql-test-server start INFO makes such a server); the
// benchmark makes and removes its own database there.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "db/database.h"
#include "db/database_maker.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/record_outputs.h"
#include "modeloutput/tellura_output.h"
#include "records/list_control_record_proxies.h"
#include "records/tellura_control_record.h"

namespace fs = std::filesystem;
using namespace sb;

namespace {

constexpr int kFirstYear = 1901;
constexpr int kYears = 100;
constexpr int kChartRecords = 20;  // records with daily outputs beside the one read

double valueOf(int row, int column) { return static_cast<float>(std::fmod(row * 0.37 + column * 1.1, 900.0)); }

template <class Record>
void fillValues(Record& r, int firstValueColumn, int row) {
    for (int col = firstValueColumn; col < r.columnCount(); ++col) r.setNumber(col, valueOf(row, col));
}

tellura_outputs dailyOutputs() {
    tellura_outputs out;
    out.daily.reserve(kYears * 365);
    for (int year = kFirstYear; year < kFirstYear + kYears; ++year)
        for (int day = 1; day <= 365; ++day) {
            out.daily.emplace_back();
            out.daily.back().setYearDay(year, day);
            fillValues(out.daily.back(), 3, static_cast<int>(out.daily.size()));
        }
    return out;
}

tellura_outputs monthlyOutputs() {
    tellura_outputs out;
    for (int year = kFirstYear; year < kFirstYear + kYears; ++year)
        for (int month = 1; month <= 12; ++month) fillValues(out.monthlyFor(year, month), 4, year * 12 + month);
    return out;
}

tellura_outputs wholeRecordOutputs() {
    tellura_outputs out = dailyOutputs();
    tellura_outputs monthly = monthlyOutputs();
    out.monthly = std::move(monthly.monthly);
    for (int year = kFirstYear; year < kFirstYear + kYears; ++year) fillValues(out.annualFor(year), 3, year);
    fillValues(out.endOfRun, 1, 0);
    out.hasEndOfRun = true;
    for (int layer = 1; layer <= 10; ++layer) fillValues(out.soilLayerFor(layer), 2, layer);
    return out;
}

size_t rowCount(const tellura_outputs& o) {
    return o.daily.size() + o.monthlyCount() + o.annual.size() + o.soilLayers.size() + (o.hasEndOfRun ? 1 : 0);
}

// The project of one kind of store, made afresh for each benchmark.
struct bench_project {
    std::string location;
    std::unique_ptr<database> db;

    bench_project(const std::string& store, const char* name) {
        if (store == "sqlite") {
            fs::path dir = fs::temp_directory_path() / "soilbench-bench-store";
            fs::create_directories(dir);
            location = (dir / (std::string(name) + ".sbproj")).string();
        } else {
            const char* server = std::getenv("SB_BENCH_POSTGRESQL");
            if (!server || !*server) return;
            std::string url = server;
            size_t slash = url.find(":///");
            if (slash == std::string::npos) return;
            location = url.substr(0, slash + 4) + "sbbench_" + name + url.substr(slash + 4);
        }
        sb::message_sink errors;
        database::remove(location, errors);
        errors.clear();
        if (!database::create(location, errors)) return;
        db = database::open(location, errors);
        if (db) database_maker(*db).createAllTables(errors);
        if (!errors.empty()) {
            std::fprintf(stderr, "%s", errors.text().c_str());
            db.reset();
        }
    }
    ~bench_project() {
        db.reset();
        sb::message_sink errors;
        if (!location.empty()) database::remove(location, errors);
    }
};

const char* skipReason(const std::string& store) {
    return store == "sqlite" ? "cannot make the project"
                             : "no PostgreSQL server (set SB_BENCH_POSTGRESQL) or it cannot make the project";
}

// Stores the outputs under one ID again and again (each store replaces the last).
void storeRows(benchmark::State& state, const std::string& store, const char* name, tellura_outputs outputs) {
    bench_project project(store, name);
    if (!project.db) {
        state.SkipWithError(skipReason(store));
        return;
    }
    for (auto _ : state) {
        sb::message_sink errors;
        if (!saveOutputs(*project.db, 1, outputs, errors) || !errors.empty()) {
            state.SkipWithError(errors.text().substr(0, 300).c_str());
            return;
        }
    }
    state.counters["rows_per_s"] =
        benchmark::Counter(static_cast<double>(rowCount(outputs)), benchmark::Counter::kIsIterationInvariantRate);
}

void BM_StoreDaily(benchmark::State& state, std::string store) { storeRows(state, store, "daily", dailyOutputs()); }
void BM_StoreMonthly(benchmark::State& state, std::string store) {
    storeRows(state, store, "monthly", monthlyOutputs());
}
void BM_StoreWholeRecord(benchmark::State& state, std::string store) {
    storeRows(state, store, "whole", wholeRecordOutputs());
}

// A chart of daily outputs reads the last record's 36,500 rows among other records' rows.
void BM_ChartReadDaily(benchmark::State& state, std::string store) {
    bench_project project(store, "chart");
    if (!project.db) {
        state.SkipWithError(skipReason(store));
        return;
    }
    tellura_outputs outputs = dailyOutputs();
    sb::message_sink errors;
    for (int id = 1; id <= kChartRecords; ++id) saveOutputs(*project.db, id, outputs, errors);
    if (!errors.empty()) {
        state.SkipWithError(errors.text().substr(0, 300).c_str());
        return;
    }
    for (auto _ : state) {
        tellura_outputs read;
        if (!loadOutputs(*project.db, kChartRecords, read, errors) || read.daily.size() != outputs.daily.size() ||
            !(read.daily.back() == outputs.daily.back())) {
            state.SkipWithError(("wrong read-back " + errors.text().substr(0, 300)).c_str());
            return;
        }
    }
}

// 10,000 records, each with its end-of-run state and 20 years of annual outputs.
constexpr int kManyRecords = 10000;

bool fillManyRecords(database& db) {
    sb::message_sink errors;
    tellura_outputs outputs;
    fillValues(outputs.endOfRun, 1, 0);
    outputs.hasEndOfRun = true;
    for (int year = kFirstYear; year < kFirstYear + 20; ++year) fillValues(outputs.annualFor(year), 3, year);
    session s(db);
    tellura_control_record record;
    for (int id = 1; id <= kManyRecords; ++id) {
        record.setId(id);
        if (!saveControlRecordWithOutputs(db, record, outputs, errors)) break;
    }
    if (errors.empty() && !s.commit()) errors.error(s.storeError() + "\n");
    if (!errors.empty()) std::fprintf(stderr, "%s", errors.text().substr(0, 300).c_str());
    return errors.empty();
}

// What the desktop does on opening a project and moving to another record: the
// lazy record list reaches the first record, which is read with its outputs;
// then the list moves to the middle record, read the same way.
void BM_OpenManyRecords(benchmark::State& state, std::string store) {
    bench_project project(store, "many");
    if (!project.db || !fillManyRecords(*project.db)) {
        state.SkipWithError(skipReason(store));
        return;
    }
    project.db.reset();
    double moveSeconds = 0;
    for (auto _ : state) {
        sb::message_sink errors;
        auto db = database::open(project.location, errors);
        list_control_record_proxies list;
        tellura_control_record record;
        tellura_outputs outputs;
        const control_record_proxy* first = db && list.attach(db.get(), false, errors) ? list.first(errors) : nullptr;
        if (!first || !loadControlRecordWithOutputs(*db, first->id, record, outputs, errors) ||
            outputs.annual.size() != 20) {
            state.SkipWithError(("cannot open " + errors.text().substr(0, 300)).c_str());
            return;
        }
        auto moveStarted = std::chrono::steady_clock::now();
        const control_record_proxy* middle = list.forward(first, kManyRecords / 2, errors);
        if (!middle || !loadControlRecordWithOutputs(*db, middle->id, record, outputs, errors)) {
            state.SkipWithError(("cannot move " + errors.text().substr(0, 300)).c_str());
            return;
        }
        moveSeconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - moveStarted).count();
    }
    state.counters["move_ms"] = 1000 * moveSeconds / static_cast<double>(state.iterations());
}

}  // namespace

BENCHMARK_CAPTURE(BM_StoreDaily, sqlite, "sqlite")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_StoreDaily, postgresql, "postgresql")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_StoreMonthly, sqlite, "sqlite")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_StoreMonthly, postgresql, "postgresql")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_StoreWholeRecord, sqlite, "sqlite")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_StoreWholeRecord, postgresql, "postgresql")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_ChartReadDaily, sqlite, "sqlite")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_ChartReadDaily, postgresql, "postgresql")->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_CAPTURE(BM_OpenManyRecords, sqlite, "sqlite")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_OpenManyRecords, postgresql, "postgresql")->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_MAIN();
