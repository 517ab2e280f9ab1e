// Option lists and soils: reading and writing big ".100" option files (a
// project's crop list runs to hundreds of crops), saving a list, and writing
// a re-layered soils.in.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <string>

#include "app/model_version.h"
#include "db/database.h"
#include "db/database_maker.h"
#include "records/option_list.h"
#include "records/soil_layer_file.h"
#include "records/tellura_soil.h"

using namespace sb;

namespace {

// `count` crops with every column filled, in the daily model's form.
std::string cropFile(int count) {
    list_tellura_crops crops;
    for (int i = 0; i < count; ++i) {
        option_record& crop = crops.addRecord("C" + std::to_string(i));
        crop.description = "generated crop";
        for (int col = 2; col < crop.columnCount(); ++col) crop.setNumber(col, (col * 7 + i) % 100 * 0.125);
    }
    std::string text;
    crops.writeText(text, kDiurna45);
    return text;
}

void BM_ImportCropFile(benchmark::State& state) {
    std::string text = cropFile(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        list_tellura_crops crops;
        sb::message_sink errors;
        std::string status;
        crops.importText(text, "crop.100", errors, status);
        benchmark::DoNotOptimize(crops.size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ImportCropFile)->Arg(100)->Arg(1000);

void BM_WriteCropFile(benchmark::State& state) {
    list_tellura_crops crops;
    sb::message_sink errors;
    std::string status;
    crops.importText(cropFile(static_cast<int>(state.range(0))), "crop.100", errors, status);
    for (auto _ : state) {
        std::string text;
        crops.writeText(text, kDiurna45);
        benchmark::DoNotOptimize(text.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_WriteCropFile)->Arg(100)->Arg(1000);

void BM_SaveCropList(benchmark::State& state) {
    auto path = (std::filesystem::temp_directory_path() / "soilbench-bench-options.sbproj").string();
    sb::message_sink errors;
    database::create(path, errors);
    auto db = database::open(path, errors);
    if (!db || !database_maker(*db).createAllTables(errors)) {
        state.SkipWithError(errors.text().c_str());
        return;
    }
    list_tellura_crops crops;
    std::string status;
    crops.importText(cropFile(static_cast<int>(state.range(0))), "crop.100", errors, status);
    for (auto _ : state) {
        if (!crops.saveToDatabase(*db, errors)) state.SkipWithError(errors.text().c_str());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    db.reset();
    std::filesystem::remove(path);
}
BENCHMARK(BM_SaveCropList)->Arg(100)->Unit(benchmark::kMillisecond);

void BM_SoilsInOntoOtherLayers(benchmark::State& state) {
    tellura_soil soil;
    sb::message_sink errors;
    for (int i = 0; i < kMaxSoilLayers; ++i) {
        soil.insertLayer(i, errors);
        soil.layers[static_cast<size_t>(i)].setDepth((i + 1) * 7);
        soil.layers[static_cast<size_t>(i)].setValue("Field Capacity", 0.3 + i * 0.01);
    }
    std::vector<int> target = {2, 5, 10, 20, 30, 45, 60, 75, 90, 105, 120, 150};
    for (auto _ : state) benchmark::DoNotOptimize(soilsInText(soil, target).size());
}
BENCHMARK(BM_SoilsInOntoOtherLayers);

}  // namespace

BENCHMARK_MAIN();
