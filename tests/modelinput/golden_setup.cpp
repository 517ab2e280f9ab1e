#include "golden_setup.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "app/text_file.h"
#include "test_support.h"

namespace sbtest {

using namespace sb;

namespace {

option_kind kindOf(const std::string& name) {
    static const std::map<std::string, option_kind> kinds{{"crop", option_kind::crop},
                                                          {"cultivation", option_kind::cultivation},
                                                          {"fertilizer", option_kind::fertilizer},
                                                          {"fire", option_kind::fire},
                                                          {"graze", option_kind::graze},
                                                          {"harvest", option_kind::harvest},
                                                          {"irrigation", option_kind::irrigation},
                                                          {"omad", option_kind::omad},
                                                          {"tree", option_kind::tree},
                                                          {"tree_removal", option_kind::tree_removal}};
    return kinds.at(name);
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

TelluraWeatherStations& station(tellura_weather_station_list& list, int32_t id) {
    if (TelluraWeatherStations* found = list.find(id)) return *found;
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
        TelluraSoils& soil = setup.soils.soils.front();
        int n = whole(1);
        soil.layerCount = std::max(soil.layerCount, n);
        soil.layers[static_cast<size_t>(n - 1)].setNumber("Layer Number", n);
        soil.layers[static_cast<size_t>(n - 1)].setNumber("Soil ID", soil.soilId());
        setChecked(soil.layers[static_cast<size_t>(n - 1)], f[2], num(3));
    } else if (kind == "means") {
        TelluraWeatherStations& s = station(setup.stations, setup.record.weatherId());
        weather_month_means& m = s.means[static_cast<size_t>(whole(1) - 1)];
        m = {static_cast<float>(num(2)), static_cast<float>(num(3)), static_cast<float>(num(4)),
             static_cast<float>(num(5)), static_cast<float>(num(6))};
        s.hasMeans = true;
    } else if (kind == "monthly") {
        weather_month_record& m = station(setup.stations, whole(1)).monthlyYear(whole(2)).monthRecord(whole(3));
        m.precip = static_cast<float>(num(4));
        m.tmn2m = static_cast<float>(num(5));
        m.tmx2m = static_cast<float>(num(6));
    } else if (kind == "daily") {
        weather_day_record day;
        day.year = static_cast<int16_t>(whole(2));
        day.month = static_cast<int16_t>(whole(3));
        day.day = static_cast<int16_t>(whole(4));
        day.precip = static_cast<float>(num(5));
        day.tmn2m = static_cast<float>(num(6));
        day.tmx2m = static_cast<float>(num(7));
        day.solrad = static_cast<float>(num(8));
        day.rhumid = static_cast<float>(num(9));
        day.windsp = static_cast<float>(num(10));
        station(setup.stations, whole(1)).dailyYear(whole(2)).days.push_back(day);
    } else if (kind == "block") {
        tellura_event_block block;
        block.blockNumber = static_cast<int16_t>(whole(1));
        block.description = f[2];
        block.firstYear = static_cast<int16_t>(whole(3));
        block.lastYear = static_cast<int16_t>(whole(4));
        block.repeatingYears = static_cast<int16_t>(whole(5));
        block.outputStartingYear = static_cast<int16_t>(whole(6));
        block.outputMonth = static_cast<uint8_t>(whole(7));
        block.outputInterval = static_cast<float>(num(8));
        block.weatherChoice = static_cast<uint8_t>(whole(9));
        block.weatherId = whole(10);
        setup.record.blocks.push_back(block);
    } else if (kind == "event") {
        tellura_event_block& block = setup.record.blocks.at(static_cast<size_t>(whole(1) - 1));
        tellura_event event;
        event.order = static_cast<int16_t>(block.events.size() + 1);
        event.year = static_cast<int16_t>(whole(2));
        event.month = static_cast<uint8_t>(whole(3));
        event.day = static_cast<uint8_t>(whole(4));
        event.type = static_cast<uint8_t>(whole(5));
        event.item = f[6];
        event.parameter1 = static_cast<float>(num(7));
        event.parameter2 = static_cast<float>(num(8));
        block.events.push_back(event);
    } else if (kind == "option") {
        setup.options.list(kindOf(f[1])).addRecord(f[2]);
    } else if (kind == "outfiles") {
        for (size_t i = 0; i < setup.outfiles.size(); ++i) setup.outfiles[i] = f[1].at(i) == '1';
    } else {
        ADD_FAILURE() << "unknown line kind " << kind;
    }
}

}  // namespace

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
    std::string text, errors;
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
