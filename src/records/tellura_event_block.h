#pragma once
// A control record's management history: event blocks (spans of years,
// repeated with a period) each holding an ordered list of management events.
#include <cstdint>
#include <string>
#include <vector>

namespace sb {

// Operation codes, one per schedule command of the model.
enum event_type : uint8_t {
    kEventCrop = 1, kEventPltm, kEventHarv, kEventFrst, kEventLast, kEventSenm, kEventFert,
    kEventCult, kEventOmad, kEventIrri, kEventGraz, kEventErod, kEventFire, kEventTree,
    kEventTrem, kEventTfst, kEventTlst, kEventDran, kEventExtr
};
// "CROP" ... "EXTR"; "ERROR" for a code outside 1..19.
const char* eventTypeName(int type);
// 0 when the name is not an operation (case ignored).
int eventTypeFromName(std::string_view name);

// Weather choices of a block.
enum weather_choice : uint8_t { kWeatherMean = 1, kWeatherStochastic = 2, kWeatherFile = 3, kWeatherContinue = 4 };

struct tellura_event {
    int16_t order = 0;
    int16_t year = 1;     // year within the block, 1 = the block's first year
    uint8_t month = 1;
    uint8_t day = 1;      // used by the daily-step release
    uint8_t type = kEventCrop;
    std::string item;     // option name or value text, at most 20 characters
    float parameter1 = 0;
    float parameter2 = 0;
    bool operator==(const tellura_event&) const = default;
};

struct tellura_event_block {
    int16_t blockNumber = 1;
    std::string description;
    int16_t firstYear = 1;
    int16_t lastYear = 1;
    int16_t repeatingYears = 1;
    int16_t outputStartingYear = 1;
    uint8_t outputMonth = 12;
    float outputInterval = 12;  // months
    uint8_t weatherChoice = kWeatherMean;
    int32_t weatherId = 0;
    std::vector<tellura_event> events;
    bool operator==(const tellura_event_block&) const = default;
};

}  // namespace sb
