#include <gtest/gtest.h>

#include <map>
#include <set>

#include "app/text_format.h"
#include "records/tellura_event_block.h"
#include "records/tellura_weather_station.h"
#include "records_test_project.h"

namespace {

using namespace sb;

// Option names per list, as the project's option lists would answer.
class fake_options : public option_name_lookup {
public:
    fake_options& add(option_kind kind, std::string name) {
        names_[kind].insert(toUpper(name));
        return *this;
    }
    bool hasOption(option_kind kind, std::string_view name) const override {
        auto found = names_.find(kind);
        return found != names_.end() && found->second.count(toUpper(name)) > 0;
    }

private:
    std::map<option_kind, std::set<std::string>> names_;
};

tellura_event event(int type, std::string item, int year = 2, int month = 5) {
    tellura_event e;
    e.type = static_cast<uint8_t>(type);
    e.item = std::move(item);
    e.year = static_cast<int16_t>(year);
    e.month = static_cast<uint8_t>(month);
    return e;
}

tellura_event_block block(int number, int first, int last, int outputStart) {
    tellura_event_block b;
    b.blockNumber = static_cast<int16_t>(number);
    b.firstYear = static_cast<int16_t>(first);
    b.lastYear = static_cast<int16_t>(last);
    b.outputStartingYear = static_cast<int16_t>(outputStart);
    return b;
}

// One event checked for the releases first..last, with the options C6 (crop), G
// (harvest), GL (graze) and N30 (fertilizer) in the project.
struct event_case {
    int type;
    const char* item;
    int first, last;
    const char* message;  // "" when the event is valid
};

TEST(EventValidation, ItemsNameAnOptionOfTheirListAndInlineFormsFollowTheRelease) {
    const event_case cases[] = {
        {kEventCrop, "c6", 1, 6, ""},
        {kEventGraz, "GL", 1, 6, ""},
        {kEventFert, "n30", 2, 2, ""},
        {kEventCrop, "W4", 3, 3, "ERROR, unknown crop \"W4\" selected in event for year 2, month 5.\n"},
        {kEventHarv, "C6", 3, 3, "ERROR, unknown harvest \"C6\" selected in event for year 2, month 5.\n"},
        {kEventCult, "K", 3, 3, "ERROR, unknown cultivation \"K\" selected in event for year 2, month 5.\n"},
        {kEventIrri, "A75", 3, 3, "ERROR, unknown irrigation \"A75\" selected in event for year 2, month 5.\n"},
        {kEventFert, "N90", 1, 1, "ERROR, unknown fertilizer \"N90\" selected in event for year 2, month 5.\n"},
        {kEventFire, "C", 3, 3, "ERROR, unknown fire \"C\" selected in event for year 2, month 5.\n"},
        {kEventTree, "WOOD", 3, 3, "ERROR, unknown tree \"WOOD\" selected in event for year 2, month 5.\n"},
        {kEventTrem, "CLEAR", 3, 3, "ERROR, unknown tree removal \"CLEAR\" selected in event for year 2, month 5.\n"},
        // Inline amounts: fertilizer only for the agricultural release, fire and trees for all.
        {kEventFert, "(10N)", 1, 1, ""},
        {kEventFert, "(10N)", 2, 6,
         "ERROR, FERT event with specified amounts \"(10N)\" is invalid for Tellura version, year 2, month 5.\n"},
        {kEventFire, "(0.5)", 1, 6, ""},
        {kEventTree, "(1)", 1, 6, ""},
        {kEventTrem, "(2)", 1, 6, ""},
        {kEventDran, "0.5", 1, 1, ""},
        {kEventDran, "0.5", 2, 6, "ERROR, DRAN event invalid for Tellura version, year 2, month 5.\n"},
        // The schedule cannot carry these, so they are kept out of a run.
        {kEventExtr, "", 4, 4, "ERROR, event type EXTR cannot be written to a schedule, year 2, month 5.\n"},
        {0, "", 4, 4, "ERROR, event type ERROR cannot be written to a schedule, year 2, month 5.\n"},
    };
    fake_options options;
    options.add(option_kind::crop, "C6")
        .add(option_kind::harvest, "G")
        .add(option_kind::graze, "GL")
        .add(option_kind::fertilizer, "N30");
    for (const event_case& c : cases) {
        for (int version = c.first; version <= c.last; ++version) {
            SCOPED_TRACE(strprintf("%s %s, release %d", eventTypeName(c.type), c.item, version));
            sb::message_sink errors;
            EXPECT_EQ(validateEvent(event(c.type, c.item), version, options, errors), *c.message == '\0');
            EXPECT_EQ(errors.text(), c.message);
        }
    }
    // Operations without an item take anything.
    for (int type : {kEventPltm, kEventFrst, kEventLast, kEventSenm, kEventOmad, kEventErod, kEventTfst, kEventTlst}) {
        sb::message_sink errors;
        EXPECT_TRUE(validateEvent(event(type, "anything"), 4, options, errors)) << eventTypeName(type);
        EXPECT_EQ(errors.text(), "");
    }
}

TEST(BlockValidation, EveryBlockAndEveryEventIsCheckedAndNamed) {
    fake_options options;
    options.add(option_kind::crop, "C6");
    tellura_weather_stations stations;
    std::vector<tellura_event_block> blocks{block(1, 1990, 1990, 1990), block(2, 2000, 1999, 2001)};
    blocks[0].events = {event(kEventCrop, "C6"), event(kEventCrop, "X", 1, 3), event(kEventCrop, "Y", 1, 4)};
    sb::message_sink errors;
    EXPECT_FALSE(validateEventBlocks(blocks, 3, options, stations, errors));
    EXPECT_EQ(errors.text(),
              "ERROR, unknown crop \"X\" selected in event for year 1, month 3.\n"
              "Error occured in block number 1\n"
              "ERROR, unknown crop \"Y\" selected in event for year 1, month 4.\n"
              "Error occured in block number 1\n"
              "ERROR, first year after last year.\n"
              "ERROR, output starting year after last year.\n");
    errors.clear();
    EXPECT_TRUE(validateEventBlocks({block(1, 1990, 1990, 1990)}, 3, options, stations, errors));
    EXPECT_EQ(errors.text(), "");
}

TEST(BlockValidation, WeatherFileChoiceNeedsAKnownStationAndAsksForCoverage) {
    fake_options none;
    tellura_weather_stations stations;
    stations.stations.resize(1);
    stations.stations[0].id = 7;
    auto fileBlock = [](int number, int station) {
        tellura_event_block b = block(number, 2000, 2005, 2000);
        b.weatherChoice = kWeatherFile;
        b.weatherId = station;
        return b;
    };
    std::vector<std::string> asked;
    weather_coverage_check coverage = [&](const tellura_weather_station& s, const tellura_event_block& b, int version,
                                          sb::message_sink& errors) {
        asked.push_back(strprintf("%d:%d:%d", s.id, b.blockNumber, version));
        errors.warning("WARNING, coverage\n");
    };
    sb::message_sink errors;
    EXPECT_FALSE(
        validateEventBlocks({fileBlock(1, 0), fileBlock(2, 9), fileBlock(3, 7)}, 4, none, stations, errors, coverage));
    EXPECT_EQ(errors.text(),
              "ERROR, no weather data specified for event block weather choice.\n"
              "ERROR, weather data 9 not found for event block weather choice, block 2.\n"
              "WARNING, coverage\n");
    EXPECT_EQ(asked, std::vector<std::string>{"7:3:4"});
    // Coverage only warns: a covered block alone is valid.
    errors.clear();
    EXPECT_TRUE(validateEventBlocks({fileBlock(1, 7)}, 4, none, stations, errors, coverage));
    // Continued weather (C) is not checked here.
    tellura_event_block continued = fileBlock(1, 0);
    continued.weatherChoice = kWeatherContinue;
    errors.clear();
    EXPECT_TRUE(validateEventBlocks({continued}, 4, none, stations, errors, coverage));
    EXPECT_EQ(errors.text(), "");
}

TEST(EventParsing, LongItemsAreCutNumbersKeptForErosionAndUnknownOperationsRefused) {
    text_line_source none("");
    tellura_event e;
    sb::message_sink errors;
    ASSERT_TRUE(parseEvent(" OMAD ABCDEFGHIJKLMNOPQRSTUVWXYZ", none, 3, 4, e, errors));
    EXPECT_EQ(e.item, "ABCDEFGHIJKLMNOPQRST");
    ASSERT_TRUE(parseEvent(" EROD 0.250000 1.500000", none, 3, 4, e, errors));
    EXPECT_EQ(e.type, kEventErod);
    EXPECT_FLOAT_EQ(e.parameter1, 0.25f);
    EXPECT_FLOAT_EQ(e.parameter2, 1.5f);
    text_line_source nextLine("0.125000\n");
    ASSERT_TRUE(parseEvent(" EROD", nextLine, 3, 4, e, errors));
    EXPECT_FLOAT_EQ(e.parameter1, 0.125f);
    EXPECT_EQ(errors.text(), "");
    // Unknown and missing operations.
    EXPECT_FALSE(parseEvent("  PLOW X", none, 4, 6, e, errors));
    EXPECT_FALSE(parseEvent("   \r\n", none, 4, 6, e, errors));
    EXPECT_EQ(errors.text(),
              "ERROR, unknown operation name: \"PLOW\" Year=4 Month=6.\n"
              "ERROR, unable to parse tellura event.\n");
}

// --- Storage ---------------------------------------------------------------

std::vector<tellura_event_block> sampleBlocks() {
    tellura_event_block first = block(1, 1900, 1919, 1900);
    first.description = "Initial grass";
    first.outputInterval = 1;
    first.weatherChoice = kWeatherFile;
    first.weatherId = 3;
    first.events = {event(kEventCrop, "G3N", 1, 1), event(kEventGraz, "W", 1, 2), event(kEventFrst, "", 1, 4)};
    first.events[2].day = 15;
    tellura_event_block second = block(2, 1920, 2006, 1990);
    second.description = "Irrigated corn";
    second.repeatingYears = 2;
    tellura_event erosion = event(kEventErod, "0.25", 2, 6);
    erosion.parameter1 = 0.25f;
    erosion.parameter2 = 1.5f;
    second.events = {event(kEventCult, "FAL", 1, 4), erosion};
    for (tellura_event_block* b : {&first, &second}) {
        int16_t order = 0;
        for (tellura_event& e : b->events) e.order = ++order;
    }
    return {first, second};
}

using EventStorage = sbtest::project_test;

TEST_F(EventStorage, SavedBlocksReadBackInOrderAndReplaceEarlierOnes) {
    std::vector<tellura_event_block> blocks = sampleBlocks();
    ASSERT_TRUE(saveEventBlocks(project.db(), 5, blocks, errors)) << errors;
    ASSERT_TRUE(saveEventBlocks(project.db(), 6, {blocks[1]}, errors)) << errors;
    std::vector<tellura_event_block> read;
    ASSERT_TRUE(loadEventBlocks(project.db(), 5, read, errors)) << errors;
    EXPECT_EQ(read, blocks);

    // Saving fewer blocks removes the ones left out; other records keep theirs.
    ASSERT_TRUE(saveEventBlocks(project.db(), 5, {blocks[0]}, errors)) << errors;
    ASSERT_TRUE(loadEventBlocks(project.db(), 5, read, errors));
    EXPECT_EQ(read, std::vector<tellura_event_block>{blocks[0]});
    ASSERT_TRUE(loadEventBlocks(project.db(), 6, read, errors));
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0].events.size(), 2u);
    EXPECT_EQ(errors.text(), "");

    // One block is replaced alone.
    ASSERT_TRUE(saveEventBlocks(project.db(), 5, blocks, errors));
    tellura_event_block changed = blocks[1];
    changed.description = "Dryland corn";
    changed.events.pop_back();
    ASSERT_TRUE(saveEventBlock(project.db(), 5, changed, errors)) << errors;
    ASSERT_TRUE(loadEventBlocks(project.db(), 5, read, errors));
    EXPECT_EQ(read, (std::vector<tellura_event_block>{blocks[0], changed}));

    // Events are numbered in list order when saved, whatever an editor left in them.
    for (tellura_event& e : blocks[0].events) e.order = 9;
    ASSERT_TRUE(saveEventBlocks(project.db(), 1, blocks, errors)) << errors;
    ASSERT_TRUE(loadEventBlocks(project.db(), 1, read, errors));
    ASSERT_EQ(read[0].events.size(), 3u);
    EXPECT_EQ(read[0].events[0].order, 1);
    EXPECT_EQ(read[0].events[2].order, 3);
    EXPECT_EQ(read[0].events[2].type, kEventFrst);
}

TEST_F(EventStorage, EventsWithoutTheirBlockAreLeftOutWithAWarning) {
    ASSERT_TRUE(saveEventBlocks(project.db(), 5, sampleBlocks(), errors));
    ASSERT_TRUE(project.db().execute("DELETE * FROM `Event Blocks` WHERE ID = 5 AND [Block Number] = 2").ok());
    std::vector<tellura_event_block> read;
    EXPECT_TRUE(loadEventBlocks(project.db(), 5, read, errors));
    EXPECT_EQ(errors.text(), "WARNING, events of block 2 have no event block, ID=5; they are left out.\n");
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0], sampleBlocks()[0]);
}

TEST_F(EventStorage, FailuresAreReported) {
    std::vector<tellura_event_block> twice = sampleBlocks();
    twice[1].blockNumber = 1;  // two blocks under one key
    EXPECT_FALSE(saveEventBlocks(project.db(), 1, twice, errors));
    EXPECT_EQ(errors.text().rfind("ERROR, unable to write Tellura event.\n", 0), 0u) << errors;

    project.dropTable(table_id::events);
    errors.clear();
    EXPECT_FALSE(saveEventBlocks(project.db(), 1, sampleBlocks(), errors));
    EXPECT_NE(errors.text().find("ERROR, unable to delete from [Events]\n"), std::string::npos) << errors;
    EXPECT_NE(errors.text().find("Unable to open table Events\n"), std::string::npos) << errors;
    errors.clear();
    std::vector<tellura_event_block> read;
    EXPECT_FALSE(loadEventBlocks(project.db(), 1, read, errors));
    EXPECT_EQ(errors.text().rfind("ERROR, unable to open table [Events]\n", 0), 0u) << errors;
}

}  // namespace
