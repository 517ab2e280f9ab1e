#include "golden_setup.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "app/text_file.h"
#include "test_support.h"

namespace sbtest {

using namespace sb;

namespace {

option_kind kindOf(const std::string& name) {
    static const char* const kNames[] = {"crop",       "cultivation", "fertilizer", "fire",        "graze", "harvest",
                                         "irrigation", "omad",        "tree",       "tree_removal"};  // in kind order
    const auto at = std::find(std::begin(kNames), std::end(kNames), name);
    EXPECT_NE(at, std::end(kNames)) << name;
    return static_cast<option_kind>(at - std::begin(kNames));
}

std::vector<std::string> splitTabs(const std::string& line) {
    std::vector<std::string> fields;
    size_t start = 0;
    while (true) {
        size_t tab = line.find('\t', start);
        fields.push_back(line.substr(start, tab == std::string::npos ? std::string::npos : tab - start));
        if (tab == std::string::npos) return fields;
        start = tab + 1;
    }
}

tellura_weather_station& station(tellura_weather_stations& list, int32_t id) {
    if (tellura_weather_station* found = list.find(id)) return *found;
    list.stations.emplace_back();
    list.stations.back().id = id;
    return list.stations.back();
}

void setChecked(table_record& record, const std::string& column, double value) {
    EXPECT_TRUE(record.setNumber(column, value)) << "no column " << column;
}

void loadLine(golden_setup& setup, const std::vector<std::string>& f) {
    const std::string& kind = f[0];
    auto num = [&](size_t i) { return std::stod(f.at(i)); };
    auto whole = [&](size_t i) { return std::stoi(f.at(i)); };
    auto real = [&](size_t i) { return static_cast<float>(num(i)); };
    auto i16 = [&](size_t i) { return static_cast<int16_t>(whole(i)); };
    auto u8 = [&](size_t i) { return static_cast<uint8_t>(whole(i)); };
    if (kind == "text") {
        EXPECT_TRUE(setup.record.row.setText(f[2], f[3])) << f[2];
    } else if (kind == "row") {
        if (f[1] == "TEXEPP(1)" || f[1] == "Simulate Microcosm")
            setup.record.row.setFlag(setup.record.row.column(f[1]), num(2) == 65535.0);
        else setChecked(setup.record.row, f[1], num(2));
    } else if (kind == "site") {
        if (f[1] == "USEXDRVRS" || f[1].rfind("WATERTABLE", 0) == 0)
            setup.record.site.setFlag(setup.record.site.column(f[1]), num(2) == 65535.0);
        else setChecked(setup.record.site, f[1], num(2));
    } else if (kind == "soil") {
        setChecked(setup.soils.soils.front(), f[1], num(2));
    } else if (kind == "layer") {
        tellura_soil& soil = setup.soils.soils.front();
        int n = whole(1);
        soil.layerCount = std::max(soil.layerCount, n);
        soil.layers[static_cast<size_t>(n - 1)].setNumber("Layer Number", n);
        soil.layers[static_cast<size_t>(n - 1)].setNumber("Soil ID", soil.soilId());
        setChecked(soil.layers[static_cast<size_t>(n - 1)], f[2], num(3));
    } else if (kind == "means") {
        tellura_weather_station& s = station(setup.stations, setup.record.weatherId());
        s.means[static_cast<size_t>(whole(1) - 1)] = {real(2), real(3), real(4), real(5), real(6)};
        s.hasMeans = true;
    } else if (kind == "monthly") {
        weather_month_record& m = station(setup.stations, whole(1)).monthlyYear(whole(2)).monthRecord(whole(3));
        m.precip = real(4);
        m.tmn2m = real(5);
        m.tmx2m = real(6);
    } else if (kind == "daily") {
        station(setup.stations, whole(1))
            .dailyYear(whole(2))
            .days.push_back({i16(2), i16(3), i16(4), real(5), real(6), real(7), real(8), real(9), real(10)});
    } else if (kind == "block") {
        setup.record.blocks.push_back(
            {i16(1), f[2], i16(3), i16(4), i16(5), i16(6), u8(7), real(8), u8(9), whole(10), {}});
    } else if (kind == "event") {
        std::vector<tellura_event>& events = setup.record.blocks.at(static_cast<size_t>(whole(1) - 1)).events;
        events.push_back(
            {static_cast<int16_t>(events.size() + 1), i16(2), u8(3), u8(4), u8(5), f[6], real(7), real(8)});
    } else if (kind == "option") {
        setup.options.list(kindOf(f[1])).addRecord(f[2]);
    } else if (kind == "outfiles") {
        for (size_t i = 0; i < setup.outfiles.size(); ++i) setup.outfiles[i] = f[1].at(i) == '1';
    } else {
        ADD_FAILURE() << "unknown line kind " << kind;
    }
}

}  // namespace

bool loadProjectSetup(database& db, int32_t id, golden_setup& setup, sb::message_sink& errors) {
    if (!loadControlRecord(db, id, setup.record, errors)) return false;
    setup.soils.load(db, errors);
    loadWeatherStations(db, setup.stations, errors);
    for (tellura_weather_station& station : setup.stations.stations) loadDailyHistory(db, station, errors);
    setup.options.loadAll(db, errors);
    return true;
}

bool prepare(const golden_setup& setup, int version, const std::string& executable, sb::message_sink& errors) {
    return prepareRunDirectory(setup.record, version, executable, setup.outfiles, setup.options, setup.soils,
                               setup.stations, errors);
}

std::vector<std::string> filesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> withOptionFiles(std::vector<std::string> names) {
    for (const char* file : {"crop.100", "cult.100", "fert.100", "fire.100", "graz.100", "harv.100", "irri.100",
                             "omad.100", "tree.100", "trem.100"})
        names.push_back(file);
    std::sort(names.begin(), names.end());
    return names;
}

std::string goldenDir() { return testDataDir() + "/golden"; }

bool loadGoldenSetup(golden_setup& setup) {
    std::string text;
    sb::message_sink errors;
    if (!readTextFile(goldenDir() + "/record.txt", text, errors, "cannot read " + goldenDir() + "/record.txt")) {
        ADD_FAILURE() << errors;
        return false;
    }
    setup.record.blocks.clear();
    setup.soils.soils.emplace_back();
    setup.soils.soils.front().setSoilId(3);
    setup.soils.soils.front().setName("Golden loam");
    for (const std::string& line : splitLines(text)) {
        if (line.empty()) continue;
        loadLine(setup, splitTabs(line));
    }
    setup.record.setId(42);
    return true;
}

}  // namespace sbtest
