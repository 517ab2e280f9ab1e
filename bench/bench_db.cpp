// Project database speed: bulk saves of whole records, and reaching rows of a big
// control record table without reading the rest.
#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

#include "app/text_format.h"
#include "db/database.h"
#include "db/database_maker.h"
#include "bench_support.h"

using namespace sb;

namespace {

std::string benchPath(const char* name) { return sbbench::benchPath("soilbench-bench", name); }
std::unique_ptr<database> newProject(const std::string& path) { return sbbench::emptyProject(path); }

std::unique_ptr<rowset> openTable(database& db, table_id t, std::string_view filter = {}, std::string_view order = {}) {
    db_status status;
    return db.openTable(t, filter, order, status);
}

table_record controlRecord(int id) {
    table_record r(table_id::control_records);
    for (int col = 0; col < r.columnCount(); ++col)
        if (!r.isText(col)) r.setNumber(col, (col * 7 + id) % 200);
    r.setNumber("ID", id);
    r.setText("Description", "Benchmark record " + std::to_string(id));
    return r;
}

void insertControlRecords(database& db, int count) {
    session s(db);
    auto rs = openTable(db, table_id::control_records);
    for (int id = 1; id <= count; ++id) rs->insert(controlRecord(id));
    rs.reset();
    s.commit();
}

// 10,000 records, each with 5 event blocks of 40 events, saved in one session,
// then every row read back.
void BM_SaveAndReadRecordsWithEvents(benchmark::State& state) {
    const int records = static_cast<int>(state.range(0));
    for (auto _ : state) {
        const std::string path = benchPath("save.sbproj");
        auto db = newProject(path);
        if (!db) {
            state.SkipWithError("cannot make the project");
            return;
        }
        auto started = std::chrono::steady_clock::now();
        {
            session s(*db);
            auto rows = openTable(*db, table_id::control_records);
            auto blocks = openTable(*db, table_id::event_blocks);
            auto events = openTable(*db, table_id::events);
            table_record block(table_id::event_blocks), event(table_id::events);
            block.setText("Description", "Block");
            event.setText("Item", "C4");
            for (int id = 1; id <= records; ++id) {
                rows->insert(controlRecord(id));
                for (int b = 1; b <= 5; ++b) {
                    block.setNumber("ID", id);
                    block.setNumber("Block Number", b);
                    blocks->insert(block);
                    for (int e = 1; e <= 40; ++e) {
                        event.setNumber("ID", id);
                        event.setNumber("Block Number", b);
                        event.setNumber("Order", e);
                        event.setNumber("Year", 1900 + e);
                        events->insert(event);
                    }
                }
            }
            rows.reset(), blocks.reset(), events.reset();
            s.commit();
        }
        auto saved = std::chrono::steady_clock::now();
        long rowsRead = 0;
        for (table_id t : {table_id::control_records, table_id::event_blocks, table_id::events}) {
            auto rs = openTable(*db, t);
            for (db_status st = rs->moveFirst(); st.ok(); st = rs->moveNext()) ++rowsRead;
        }
        if (rowsRead != records * 206L) state.SkipWithError("rows missing on read-back");
        auto read = std::chrono::steady_clock::now();
        state.counters["rows"] = static_cast<double>(rowsRead);
        state.counters["save_s"] = std::chrono::duration<double>(saved - started).count();
        state.counters["read_s"] = std::chrono::duration<double>(read - saved).count();
        db.reset();
        std::filesystem::remove(path);
    }
}
BENCHMARK(BM_SaveAndReadRecordsWithEvents)->Arg(10000)->Arg(1000)->Iterations(1)->Unit(benchmark::kSecond);

// One big project shared by the look-up benchmarks below.
database& bigProject() {
    static std::unique_ptr<database> db = [] {
        const std::string path = benchPath("big.sbproj");
        auto made = newProject(path);
        if (made) insertControlRecords(*made, 100000);
        return made;
    }();
    return *db;
}

void reachRow(benchmark::State& state, std::string_view filter, std::string_view order, int expectedId) {
    database& db = bigProject();
    const int id = tableDef(table_id::control_records).fieldIndex("ID");
    for (auto _ : state) {
        auto rs = openTable(db, table_id::control_records, filter, order);
        if (!rs || !rs->moveFirst().ok() || rs->row().integer(id) != expectedId) {
            state.SkipWithError("wrong row");
            return;
        }
    }
}

void BM_BigTableFirstRow(benchmark::State& state) { reachRow(state, "", "", 1); }
void BM_BigTableLastRowByDescendingOrder(benchmark::State& state) { reachRow(state, "", "ID DESC", 100000); }
void BM_BigTableRow50000ByFilter(benchmark::State& state) { reachRow(state, "ID > 49999", "ID ASC", 50000); }
BENCHMARK(BM_BigTableFirstRow)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_BigTableLastRowByDescendingOrder)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_BigTableRow50000ByFilter)->Unit(benchmark::kMicrosecond);

// Walking to the end through the row set itself (no reverse order available).
void BM_BigTableMoveLast(benchmark::State& state) {
    database& db = bigProject();
    const int id = tableDef(table_id::control_records).fieldIndex("ID");
    for (auto _ : state) {
        auto rs = openTable(db, table_id::control_records);
        if (!rs || !rs->moveLast().ok() || rs->row().integer(id) != 100000) state.SkipWithError("wrong row");
    }
}
BENCHMARK(BM_BigTableMoveLast)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
