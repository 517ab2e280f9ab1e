// Whole control records: saving and reading back records with their event
// blocks, and paging through a big project with the lazy record list.
#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

#include "app/text_format.h"
#include "db/database.h"
#include "db/database_maker.h"
#include "bench_support.h"
#include "records/list_control_record_proxies.h"
#include "records/tellura_control_record.h"

using namespace sb;

namespace {

std::string benchPath(const char* name) { return sbbench::benchPath("soilbench-bench-records", name); }
std::unique_ptr<database> newProject(const std::string& path) { return sbbench::emptyProject(path); }

// The default record with 5 blocks of 40 events each.
tellura_control_record recordWithEvents() {
    tellura_control_record r;
    static const std::string kItems[2] = {"GL", "C6"};
    tellura_event_block block = r.blocks[0];
    r.blocks.clear();
    for (int b = 1; b <= 5; ++b) {
        block.blockNumber = static_cast<int16_t>(b);
        block.description = strprintf("Block %d", b);
        block.events.clear();
        for (int e = 1; e <= 40; ++e) {
            tellura_event event;
            event.order = static_cast<int16_t>(e);
            event.year = static_cast<int16_t>(1 + e / 12);
            event.month = static_cast<uint8_t>(1 + e % 12);
            event.type = e % 2 ? kEventCrop : kEventGraz;
            event.item = kItems[e % 2];
            block.events.push_back(event);
        }
        r.blocks.push_back(block);
    }
    return r;
}

// Saves `count` records; with `oneSession` the saves share one transaction (an
// import), otherwise each save commits on its own (the user's Save).
bool writeRecords(database& db, int count, bool oneSession, sb::message_sink& errors) {
    tellura_control_record r = recordWithEvents();
    std::unique_ptr<session> outer = oneSession ? std::make_unique<session>(db) : nullptr;
    for (int id = 1; id <= count; ++id) {
        r.setId(id);
        if (!saveControlRecord(db, r, errors)) return false;
    }
    return true;
}

void BM_SaveAndReadRecords(benchmark::State& state) {
    const int records = static_cast<int>(state.range(0));
    const bool oneSession = state.range(1) != 0;
    for (auto _ : state) {
        const std::string path = benchPath("save.sbproj");
        auto db = newProject(path);
        if (!db) {
            state.SkipWithError("cannot make the project");
            return;
        }
        sb::message_sink errors;
        auto started = std::chrono::steady_clock::now();
        if (!writeRecords(*db, records, oneSession, errors)) {
            state.SkipWithError(errors.text().c_str());
            return;
        }
        auto saved = std::chrono::steady_clock::now();
        long events = 0;
        tellura_control_record read;
        for (int id = 1; id <= records; ++id) {
            if (!loadControlRecord(*db, id, read, errors)) {
                state.SkipWithError(errors.text().c_str());
                return;
            }
            for (const tellura_event_block& b : read.blocks) events += static_cast<long>(b.events.size());
        }
        auto done = std::chrono::steady_clock::now();
        if (events != records * 200L) state.SkipWithError("events missing on read-back");
        state.counters["save_ms_per_record"] =
            std::chrono::duration<double, std::milli>(saved - started).count() / records;
        state.counters["read_ms_per_record"] =
            std::chrono::duration<double, std::milli>(done - saved).count() / records;
        db.reset();
        std::filesystem::remove(path);
    }
}
BENCHMARK(BM_SaveAndReadRecords)->Args({10000, 1})->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(BM_SaveAndReadRecords)->Args({1000, 0})->Iterations(1)->Unit(benchmark::kSecond);

// One project of 100,000 control records, shared by the list benchmarks.
database& bigProject() {
    static std::unique_ptr<database> db = [] {
        const std::string path = benchPath("big.sbproj");
        auto made = newProject(path);
        if (!made) return made;
        session s(*made);
        db_status status;
        auto rows = made->openTable(table_id::control_records, "", "", status);
        tellura_control_record r;
        for (int id = 1; id <= 100000; ++id) {
            r.setId(id);
            r.row.setText("Description", strprintf("Record %d", id));
            rows->insert(r.row);
        }
        rows.reset();
        s.commit();
        return made;
    }();
    return *db;
}

// Opening the project shows its first record: attach the lazy list and reach it.
void BM_LazyListFirst(benchmark::State& state) {
    database& db = bigProject();
    for (auto _ : state) {
        list_control_record_proxies list;
        sb::message_sink errors;
        list.attach(&db, false, errors);
        const control_record_proxy* h = list.first(errors);
        if (!h || h->id != 1) state.SkipWithError("wrong first record");
    }
}
BENCHMARK(BM_LazyListFirst)->Unit(benchmark::kMillisecond);

void BM_LazyListRecord50000(benchmark::State& state) {
    database& db = bigProject();
    for (auto _ : state) {
        list_control_record_proxies list;
        sb::message_sink errors;
        list.attach(&db, false, errors);
        const control_record_proxy* h = list.forward(nullptr, 49999, errors);
        if (!h || h->recordNumber != 50000 || h->id != 50000) state.SkipWithError("wrong record");
    }
}
BENCHMARK(BM_LazyListRecord50000)->Iterations(3)->Unit(benchmark::kMillisecond);

void BM_LazyListLast(benchmark::State& state) {
    database& db = bigProject();
    for (auto _ : state) {
        list_control_record_proxies list;
        sb::message_sink errors;
        list.attach(&db, false, errors);
        const control_record_proxy* h = list.last(errors);
        if (!h || h->recordNumber != 100000 || !list.complete()) state.SkipWithError("wrong last record");
    }
}
BENCHMARK(BM_LazyListLast)->Iterations(3)->Unit(benchmark::kMillisecond);

// The "Prebuild Control Record List" setting: every handle made at once.
void BM_LoadAllRecords(benchmark::State& state) {
    database& db = bigProject();
    for (auto _ : state) {
        list_control_record_proxies list;
        sb::message_sink errors;
        long reports = 0;
        list.attach(&db, true, errors, [&](const std::string&) { ++reports; });
        if (list.size() != 100000 || reports != 200) state.SkipWithError("wrong list");
    }
}
BENCHMARK(BM_LoadAllRecords)->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
