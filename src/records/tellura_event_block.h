#pragma once
// A control record's management history: event blocks (spans of years,
// repeated with a period) each holding an ordered list of management events.
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "app/message_sink.h"
#include "records/option_member.h"

namespace sb {

class database;
class option_lists;
class tellura_weather_station;
class tellura_weather_stations;

// Operation codes, one per schedule command of the model.
enum event_type : uint8_t {
    kEventCrop = 1,
    kEventPltm,
    kEventHarv,
    kEventFrst,
    kEventLast,
    kEventSenm,
    kEventFert,
    kEventCult,
    kEventOmad,
    kEventIrri,
    kEventGraz,
    kEventErod,
    kEventFire,
    kEventTree,
    kEventTrem,
    kEventTfst,
    kEventTlst,
    kEventDran,
    kEventExtr
};
constexpr int kEventTypeCount = 19;
// "CROP" ... "EXTR"; "ERROR" for a code outside 1..19.
const char* eventTypeName(int type);
// 0 when the name is not an operation (case ignored).
int eventTypeFromName(std::string_view name);
// Operations whose schedule line carries an item (an option name or a value).
bool eventTypeTakesItem(int type);

// Weather choices of a block.
enum weather_choice : uint8_t { kWeatherMean = 1, kWeatherStochastic = 2, kWeatherFile = 3, kWeatherContinue = 4 };
// "M Mean values from the site.100 file" ... as offered to the user; "" for other codes.
const char* weatherChoiceText(int choice);

struct tellura_event {
    static constexpr size_t kMaxItemLength = 20;
    int16_t order = 0;
    int16_t year = 1;  // year within the block, 1 = the block's first year
    uint8_t month = 1;
    uint8_t day = 1;  // used by the daily-step release
    uint8_t type = kEventCrop;
    std::string item;  // option name or value text, at most 20 characters
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

// --- Storage -------------------------------------------------------------

// Blocks of a record in block order, each with its events in event order.
// Missing tables or rows are reported; an event whose block is absent is left out.
bool loadEventBlocks(database& db, int32_t recordId, std::vector<tellura_event_block>& blocks, message_sink& errors);
// Replaces every block and event stored under the record's ID with the given
// ones (blocks deleted in the editor disappear too), in one session. Saved on
// their own (not as part of the whole record), they count as a save of the
// record: `readCount` is the record's change count when they were read.
bool saveEventBlocks(database& db, int32_t recordId, const std::vector<tellura_event_block>& blocks,
                     message_sink& errors, int64_t readCount = -1);
// Replaces one block and its events ("... WHERE ID = %ld AND [Block Number] = %d").
bool saveEventBlock(database& db, int32_t recordId, const tellura_event_block& block, message_sink& errors);

// --- Validation ------------------------------------------------------------

// Which option names exist, per list. The management option lists answer it;
// tests answer it from small tables.
class option_name_lookup {
public:
    virtual ~option_name_lookup() = default;
    virtual bool hasOption(option_kind kind, std::string_view name) const = 0;
};

// The project's option lists answering for the event checks.
class project_option_names : public option_name_lookup {
public:
    explicit project_option_names(const option_lists& lists) : lists_(lists) {}
    bool hasOption(option_kind kind, std::string_view name) const override;

private:
    const option_lists& lists_;
};

// Checks that a station's history covers a weather-file block (warnings only).
using weather_coverage_check = std::function<void(const tellura_weather_station& station,
                                                  const tellura_event_block& block, int version, message_sink& errors)>;

// The option list an operation's item must name; false when it names none.
bool eventItemOptionKind(int type, option_kind& kind);

// One event against the version and the option lists; every message is appended.
bool validateEvent(const tellura_event& event, int version, const option_name_lookup& options, message_sink& errors);
// Every block is checked and every message collected; false when any check failed.
bool validateEventBlocks(const std::vector<tellura_event_block>& blocks, int version, const option_name_lookup& options,
                         const tellura_weather_stations& stations, message_sink& errors,
                         const weather_coverage_check& coverage = {});

// --- Schedule text -----------------------------------------------------------

// Further lines of a schedule: an item may stand on the line after its command.
class schedule_line_source {
public:
    virtual ~schedule_line_source() = default;
    // The next line without its line end; false at the end of the text.
    virtual bool nextLine(std::string& line) = 0;
};

// Lines of a text held in memory.
class text_line_source : public schedule_line_source {
public:
    explicit text_line_source(std::string_view text) : text_(text) {}
    bool nextLine(std::string& line) override;
    // The number of the line read last, from 1.
    long lineNumber() const { return lineNumber_; }

private:
    std::string_view text_;
    size_t pos_ = 0;
    long lineNumber_ = 0;
};

// Reads the operation (and its item) that follows the date of a schedule line.
// `rest` is what is left of the line after year and month were read.
bool parseEvent(std::string_view rest, schedule_line_source& more, int year, int month, tellura_event& event,
                message_sink& errors);

// --- Text form -----------------------------------------------------------------

// Tab-separated block header, years, weather and one line per event.
void appendEventBlockText(const tellura_event_block& block, std::string& text);

}  // namespace sb
