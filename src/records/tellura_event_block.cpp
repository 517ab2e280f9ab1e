#include "records/tellura_event_block.h"

#include <algorithm>
#include <cstdlib>
#include <map>

#include "app/model_version.h"
#include "app/text_format.h"
#include "db/database.h"
#include "db/table_columns.h"
#include "records/option_lists.h"
#include "records/record_changes.h"
#include "records/store_session.h"
#include "records/tellura_weather_station.h"

namespace sb {

namespace {

constexpr const char* kEventTypeNames[kEventTypeCount] = {"CROP", "PLTM", "HARV", "FRST", "LAST", "SENM", "FERT",
                                                          "CULT", "OMAD", "IRRI", "GRAZ", "EROD", "FIRE", "TREE",
                                                          "TREM", "TFST", "TLST", "DRAN", "EXTR"};

constexpr const char* kMonthNames[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// The columns of the two tables, looked up once by name.
const table_columns& blockColumns() {
    static const table_columns columns(
        table_id::event_blocks,
        {"ID", "Block Number", "Description", "First Year", "Last Year", "Repeating Years", "Output Starting Year",
         "Output Month", "Output Interval", "Weather Choice", "Weather ID"});
    return columns;
}
const table_columns& eventColumns() {
    static const table_columns columns(table_id::events, {"ID", "Block Number", "Order", "Year", "Month", "Day", "Type",
                                                          "Parameter 1", "Parameter 2", "Item"});
    return columns;
}

// Each column with the member that holds it, for reading and writing alike;
// the ID and block number a row is stored under come from its owners.
template <class Block, class Visit>  // Block: tellura_event_block, const when writing
void blockMembers(Block& b, Visit&& visit) {
    visit("Block Number", b.blockNumber);
    visit("Description", b.description);
    visit("First Year", b.firstYear);
    visit("Last Year", b.lastYear);
    visit("Repeating Years", b.repeatingYears);
    visit("Output Starting Year", b.outputStartingYear);
    visit("Output Month", b.outputMonth);
    visit("Output Interval", b.outputInterval);
    visit("Weather Choice", b.weatherChoice);
    visit("Weather ID", b.weatherId);
}

// The item is read and written apart: it is cut to the column's width on writing.
template <class Event, class Visit>
void eventMembers(Event& e, Visit&& visit) {
    visit("Order", e.order);
    visit("Year", e.year);
    visit("Month", e.month);
    visit("Day", e.day);
    visit("Type", e.type);
    visit("Parameter 1", e.parameter1);
    visit("Parameter 2", e.parameter2);
}

tellura_event_block blockFromRow(const table_record& row) {
    tellura_event_block b;
    blockMembers(b, blockColumns().reading(row));
    return b;
}

void blockToRow(int32_t recordId, const tellura_event_block& b, table_record& row) {
    row.setNumber(blockColumns()["ID"], recordId);
    blockMembers(b, blockColumns().writing(row));
}

tellura_event eventFromRow(const table_record& row) {
    const table_columns& c = eventColumns();
    tellura_event e;
    eventMembers(e, c.reading(row));
    e.item = row.text(c["Item"]);
    return e;
}

void eventToRow(int32_t recordId, int16_t blockNumber, const tellura_event& e, table_record& row) {
    const table_columns& c = eventColumns();
    row.setNumber(c["ID"], recordId);
    row.setNumber(c["Block Number"], blockNumber);
    eventMembers(e, c.writing(row));
    row.setText(c["Item"], e.item.substr(0, tellura_event::kMaxItemLength));
}

bool deleteRows(database& db, table_id table, const std::string& where, message_sink& errors) {
    std::string sql = strprintf("DELETE * FROM `%s` WHERE %s", tableName(table), where.c_str());
    if (db.execute(sql).ok()) return true;
    errors.errorf("ERROR, unable to delete from [%s]\n", tableName(table));
    return false;
}

// Inserts the blocks and their events; the caller holds the session and has
// deleted the old rows. Events are numbered in list order as they are stored,
// so the stored order is always 1, 2, ... whatever the editor left behind.
bool insertBlocks(database& db, int32_t recordId, const std::vector<const tellura_event_block*>& blocks,
                  message_sink& errors) {
    db_status status;
    std::unique_ptr<rowset> blockRows = db.openTable(table_id::event_blocks, "", "", status);
    if (!blockRows) {
        errors.errorf("Unable to open table %s\n", tableName(table_id::event_blocks));
        return false;
    }
    std::unique_ptr<rowset> eventRows = db.openTable(table_id::events, "", "", status);
    if (!eventRows) {
        errors.errorf("Unable to open table %s\n", tableName(table_id::events));
        return false;
    }
    bool ok = true;
    table_record blockRow(table_id::event_blocks);
    table_record eventRow(table_id::events);
    for (const tellura_event_block* block : blocks) {
        blockToRow(recordId, *block, blockRow);
        db_status inserted = blockRows->insert(blockRow);
        if (!inserted.ok()) {
            errors.error("ERROR, unable to write Tellura event.\n");
            appendStatusText(inserted, errors);
            ok = false;
            continue;
        }
        int16_t order = 0;
        for (const tellura_event& event : block->events) {
            tellura_event numbered = event;
            numbered.order = ++order;
            eventToRow(recordId, block->blockNumber, numbered, eventRow);
            inserted = eventRows->insert(eventRow);
            if (!inserted.ok()) {
                errors.error("ERROR, unable to write Tellura event.\n");
                appendStatusText(inserted, errors);
                ok = false;
            }
        }
    }
    return ok;
}

}  // namespace

const char* eventTypeName(int type) {
    if (type < 1 || type > kEventTypeCount) return "ERROR";
    return kEventTypeNames[type - 1];
}

int eventTypeFromName(std::string_view name) {
    for (int i = 0; i < kEventTypeCount; ++i)
        if (iequals(name, kEventTypeNames[i])) return i + 1;
    return 0;
}

bool eventTypeTakesItem(int type) {
    switch (type) {
        case kEventCrop:
        case kEventHarv:
        case kEventFert:
        case kEventCult:
        case kEventOmad:
        case kEventIrri:
        case kEventGraz:
        case kEventErod:
        case kEventFire:
        case kEventTree:
        case kEventTrem:
        case kEventDran:
            return true;
        default:
            return false;
    }
}

const char* weatherChoiceText(int choice) {
    switch (choice) {
        case kWeatherMean:
            return "M Mean values from the site.100 file";
        case kWeatherStochastic:
            return "S Stochastic precipitation from the site.100 file";
        case kWeatherFile:
            return "F From the beginning of an actual weather file";
        case kWeatherContinue:
            return "C Continued from an actual weather file, without rewinding";
        default:
            return "";
    }
}

// --- Storage -------------------------------------------------------------

bool loadEventBlocks(database& db, int32_t recordId, std::vector<tellura_event_block>& blocks, message_sink& errors) {
    blocks.clear();
    db_status status;
    std::unique_ptr<rowset> rows = db.openTable(
        table_id::event_blocks, strprintf("ID = %ld ORDER BY [Block Number]", static_cast<long>(recordId)), "", status);
    if (!rows) {
        errors.errorf("ERROR, unable to open table [%s]\n", tableName(table_id::event_blocks));
        appendStatusText(status, errors);
        return false;
    }
    db_status s;
    for (s = rows->moveFirst(); s.ok(); s = rows->moveNext()) blocks.push_back(blockFromRow(rows->row()));
    if (!readToTheEnd(s, tableName(table_id::event_blocks), errors)) return false;

    std::map<int, tellura_event_block*> byNumber;
    for (tellura_event_block& b : blocks) byNumber[b.blockNumber] = &b;

    rows =
        db.openTable(table_id::events,
                     strprintf("ID = %ld ORDER BY [Block Number], [Order]", static_cast<long>(recordId)), "", status);
    if (!rows) {
        errors.errorf("ERROR, unable to open table [%s]\n", tableName(table_id::events));
        appendStatusText(status, errors);
        return false;
    }
    // Events whose block is gone (a file edited by hand) are left out with a warning;
    // the record itself reads well.
    const int blockColumn = eventColumns()["Block Number"];
    for (s = rows->moveFirst(); s.ok(); s = rows->moveNext()) {
        int number = rows->row().integer(blockColumn);
        auto found = byNumber.find(number);
        if (found == byNumber.end()) {
            errors.warningf("WARNING, events of block %d have no event block, ID=%ld; they are left out.\n", number,
                            static_cast<long>(recordId));
            byNumber[number] = nullptr;  // one warning per missing block
            continue;
        }
        if (found->second) found->second->events.push_back(eventFromRow(rows->row()));
    }
    return readToTheEnd(s, tableName(table_id::events), errors);
}

bool saveEventBlocks(database& db, int32_t recordId, const std::vector<tellura_event_block>& blocks,
                     message_sink& errors, int64_t readCount) {
    store_session s(db, errors);
    if (!s.ok()) return false;
    if (db.sessionDepth() == 1) claimRecordSave(db, recordId, readCount, errors);
    std::string where = strprintf("ID = %ld", static_cast<long>(recordId));
    bool ok = deleteRows(db, table_id::event_blocks, where, errors);
    ok = deleteRows(db, table_id::events, where, errors) && ok;
    std::vector<const tellura_event_block*> all;
    for (const tellura_event_block& b : blocks) all.push_back(&b);
    ok = insertBlocks(db, recordId, all, errors) && ok;
    return s.commitIf(ok);
}

bool saveEventBlock(database& db, int32_t recordId, const tellura_event_block& block, message_sink& errors) {
    store_session s(db, errors);
    if (!s.ok()) return false;
    std::string where =
        strprintf("ID = %ld AND [Block Number] = %d", static_cast<long>(recordId), static_cast<int>(block.blockNumber));
    bool ok = deleteRows(db, table_id::event_blocks, where, errors);
    ok = deleteRows(db, table_id::events, where, errors) && ok;
    ok = insertBlocks(db, recordId, {&block}, errors) && ok;
    return s.commitIf(ok);
}

// --- Validation ------------------------------------------------------------

namespace {

// The list an operation's item must name, and the word its message uses.
struct item_rule {
    int type;
    option_kind kind;
    const char* word;
    bool parenthesisAccepted;  // "(...)" gives the amounts inline
};

constexpr item_rule kItemRules[] = {
    {kEventCrop, option_kind::crop, "crop", false},
    {kEventHarv, option_kind::harvest, "harvest", false},
    {kEventCult, option_kind::cultivation, "cultivation", false},
    {kEventIrri, option_kind::irrigation, "irrigation", false},
    {kEventGraz, option_kind::graze, "graze", false},
    {kEventFert, option_kind::fertilizer, "fertilizer", false},
    {kEventFire, option_kind::fire, "fire", true},
    {kEventTree, option_kind::tree, "tree", true},
    {kEventTrem, option_kind::tree_removal, "tree removal", true},
};

const item_rule* itemRule(int type) {
    for (const item_rule& rule : kItemRules)
        if (rule.type == type) return &rule;
    return nullptr;
}

bool validateBlockFields(const tellura_event_block& block, int version, const tellura_weather_stations& stations,
                         message_sink& errors, const weather_coverage_check& coverage) {
    bool ok = true;
    if (block.firstYear > block.lastYear) {
        errors.error("ERROR, first year after last year.\n");
        ok = false;
    }
    if (block.outputStartingYear > block.lastYear) {
        errors.error("ERROR, output starting year after last year.\n");
        ok = false;
    }
    if (block.weatherChoice == kWeatherFile) {
        if (block.weatherId == 0) {
            errors.error("ERROR, no weather data specified for event block weather choice.\n");
            ok = false;
        } else if (const tellura_weather_station* station = stations.find(block.weatherId)) {
            if (coverage) coverage(*station, block, version, errors);
        } else {
            errors.errorf("ERROR, weather data %ld not found for event block weather choice, block %d.\n",
                          static_cast<long>(block.weatherId), static_cast<int>(block.blockNumber));
            ok = false;
        }
    }
    return ok;
}

}  // namespace

bool eventItemOptionKind(int type, option_kind& kind) {
    const item_rule* rule = itemRule(type);
    if (rule) kind = rule->kind;
    return rule != nullptr;
}

bool project_option_names::hasOption(option_kind kind, std::string_view name) const {
    return lists_.contains(kind, name);
}

bool validateEvent(const tellura_event& event, int version, const option_name_lookup& options, message_sink& errors) {
    const bool startsWithParenthesis = !event.item.empty() && event.item[0] == '(';
    if (event.type == kEventFert && startsWithParenthesis) {
        if (version == kTellura4Agricultural) return true;
        errors.errorf(
            "ERROR, FERT event with specified amounts \"%s\" is invalid for Tellura version, year %d, month %d.\n",
            event.item.c_str(), event.year, event.month);
        return false;
    }
    if (event.type == kEventDran) {
        if (version == kTellura4Agricultural) return true;
        errors.errorf("ERROR, DRAN event invalid for Tellura version, year %d, month %d.\n", event.year, event.month);
        return false;
    }
    if (event.type < kEventCrop || event.type >= kEventExtr) {
        // The schedule has no command line for these, so a run must not see them.
        errors.errorf("ERROR, event type %s cannot be written to a schedule, year %d, month %d.\n",
                      eventTypeName(event.type), event.year, event.month);
        return false;
    }
    const item_rule* rule = itemRule(event.type);
    if (!rule) return true;  // PLTM, FRST, LAST, SENM, OMAD, EROD, TFST, TLST
    if (rule->parenthesisAccepted && startsWithParenthesis) return true;
    if (options.hasOption(rule->kind, event.item)) return true;
    errors.errorf("ERROR, unknown %s \"%s\" selected in event for year %d, month %d.\n", rule->word, event.item.c_str(),
                  event.year, event.month);
    return false;
}

bool validateEventBlocks(const std::vector<tellura_event_block>& blocks, int version, const option_name_lookup& options,
                         const tellura_weather_stations& stations, message_sink& errors,
                         const weather_coverage_check& coverage) {
    bool ok = true;
    for (const tellura_event_block& block : blocks) {
        ok = validateBlockFields(block, version, stations, errors, coverage) && ok;
        for (const tellura_event& event : block.events) {
            if (validateEvent(event, version, options, errors)) continue;
            errors.errorf("Error occured in block number %d\n", static_cast<int>(block.blockNumber));
            ok = false;
        }
    }
    return ok;
}

// --- Schedule text -----------------------------------------------------------

bool text_line_source::nextLine(std::string& line) {
    if (pos_ >= text_.size()) return false;
    size_t end = text_.find('\n', pos_);
    if (end == std::string_view::npos) end = text_.size();
    line.assign(text_.substr(pos_, end - pos_));
    pos_ = end + 1;
    ++lineNumber_;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

namespace {

// Schedule tokens are separated by blanks and line ends; tabs are accepted too,
// as hand-edited schedules carry them.
bool isSeparator(char c) { return c == ' ' || c == '\r' || c == '\n' || c == '\t'; }

std::string_view nextToken(std::string_view& text) {
    size_t start = 0;
    while (start < text.size() && isSeparator(text[start])) ++start;
    size_t end = start;
    while (end < text.size() && !isSeparator(text[end])) ++end;
    std::string_view token = text.substr(start, end - start);
    text.remove_prefix(end);
    return token;
}

// The model's reader takes the continuation line into a 256-byte buffer.
constexpr size_t kScheduleLineBuffer = 256;

}  // namespace

bool parseEvent(std::string_view rest, schedule_line_source& more, int year, int month, tellura_event& event,
                message_sink& errors) {
    std::string_view name = nextToken(rest);
    if (name.empty()) {
        errors.error("ERROR, unable to parse tellura event.\n");
        return false;
    }
    int type = eventTypeFromName(name);
    if (type == 0) {
        errors.errorf("ERROR, unknown operation name: \"%.*s\" Year=%d Month=%d.\n", static_cast<int>(name.size()),
                      name.data(), year, month);
        return false;
    }
    event = tellura_event{};
    event.type = static_cast<uint8_t>(type);
    event.year = static_cast<int16_t>(year);
    event.month = static_cast<uint8_t>(month);
    if (!eventTypeTakesItem(type)) return true;

    std::string_view item = nextToken(rest);
    std::string nextLine;
    if (item.empty() && more.nextLine(nextLine)) {
        if (nextLine.size() > kScheduleLineBuffer - 1) nextLine.resize(kScheduleLineBuffer - 1);
        rest = nextLine;
        item = nextToken(rest);
    }
    event.item.assign(item.substr(0, tellura_event::kMaxItemLength));
    if (type == kEventErod) {
        // The erosion amount (and the second amount of the newest release) are numbers.
        event.parameter1 = static_cast<float>(std::strtod(event.item.c_str(), nullptr));
        std::string second(nextToken(rest));
        if (!second.empty()) event.parameter2 = static_cast<float>(std::strtod(second.c_str(), nullptr));
    }
    return true;
}

// --- Text form -----------------------------------------------------------------

void appendEventBlockText(const tellura_event_block& block, std::string& text) {
    appendf(text, "%d\t%s\n", static_cast<int>(block.blockNumber), block.description.c_str());
    appendf(text, "Years\t%d\t%d\tRepeating\t%d\n", static_cast<int>(block.firstYear), static_cast<int>(block.lastYear),
            static_cast<int>(block.repeatingYears));
    std::string choice = weatherChoiceText(block.weatherChoice);
    std::string letter = choice.empty() ? std::string("?") : choice.substr(0, 1);
    std::string meaning = choice.size() > 2 ? choice.substr(2) : std::string();
    appendf(text, "%d\t%s\t%s\t%s\n", static_cast<int>(block.weatherId), "Weather", letter.c_str(), meaning.c_str());
    for (const tellura_event& e : block.events) {
        const char* monthName = e.month >= 1 && e.month <= 12 ? kMonthNames[e.month - 1] : "?";
        appendf(text, "%d\t%s\t%d\t%s\t%s\n", static_cast<int>(e.year), monthName, static_cast<int>(e.day),
                eventTypeName(e.type), e.item.c_str());
    }
}

}  // namespace sb
