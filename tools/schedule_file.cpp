#include "schedule_file.h"

#include "standin_text.h"

#include <optional>
#include <set>

namespace standin {
namespace {

struct command_info {
    const char* name;
    const char* optionFile;  // nullptr: no item, or an item without an option file
    bool takesItem;
};

const command_info kCommands[] = {
    {"CROP", "crop.100", true}, {"PLTM", nullptr, false},   {"HARV", "harv.100", true}, {"FRST", nullptr, false},
    {"LAST", nullptr, false},   {"SENM", nullptr, false},   {"FERT", "fert.100", true}, {"CULT", "cult.100", true},
    {"OMAD", "omad.100", true}, {"IRRI", "irri.100", true}, {"GRAZ", "graz.100", true}, {"EROD", nullptr, false},
    {"FIRE", "fire.100", true}, {"TREE", "tree.100", true}, {"TREM", "trem.100", true}, {"TFST", nullptr, false},
    {"TLST", nullptr, false},   {"DRAN", nullptr, true},
};

const command_info* findCommand(const std::string& name) {
    for (const command_info& info : kCommands)
        if (name == info.name) return &info;
    return nullptr;
}

// Walks the file line by line and reports errors with the line number.
class line_reader {
public:
    line_reader(const std::string& path, std::vector<std::string> lines, std::string& errors)
        : path_(path), lines_(std::move(lines)), errors_(errors) {}
    bool atEnd() const { return next_ >= lines_.size(); }
    const std::string& take() { return lines_[next_++]; }
    const std::string& peek() const { return lines_[next_]; }
    bool fail(const std::string& what) {
        errors_ += "stand-in model: error: " + path_ + " line " + std::to_string(next_) + ": " + what + "\n";
        return false;
    }
    // The leading integer of the next line (the value before its label).
    bool takeInteger(const char* label, int& value) {
        if (atEnd()) return fail(std::string("missing ") + label);
        std::vector<std::string> tokens = splitBlanks(take());
        std::optional<long> number = tokens.empty() ? std::nullopt : parseInteger(tokens[0]);
        if (!number) return fail(std::string("expected a number for ") + label);
        value = static_cast<int>(*number);
        return true;
    }

private:
    std::string path_;
    std::vector<std::string> lines_;
    size_t next_ = 0;
    std::string& errors_;
};

bool readHeader(line_reader& in, schedule_file& schedule) {
    if (!in.atEnd() && in.peek().rfind("#", 0) == 0) {
        schedule.hasIdLine = true;
        in.take();
    }
    if (!in.takeInteger("starting year", schedule.startYear)) return false;
    if (!in.takeInteger("last year", schedule.lastYear)) return false;
    if (in.atEnd()) return in.fail("missing site file name");
    std::vector<std::string> site = splitBlanks(in.take());
    if (site.empty()) return in.fail("missing site file name");
    schedule.siteFile = site[0];
    while (!in.atEnd()) {
        const std::string& line = in.take();
        std::string label = lower(line);
        if (label.find("year month option") != std::string::npos) return true;
        if (label.find("ph shift") != std::string::npos) schedule.hasPhShift = true;
        bool named = !line.empty() && line[0] != ' ';
        if (label.find("initial crop") != std::string::npos && named) schedule.initialCrop = splitBlanks(line)[0];
        if (label.find("initial tree") != std::string::npos && named) schedule.initialTree = splitBlanks(line)[0];
        if (label.find("n input scalar option") != std::string::npos)
            schedule.nScalingOption = static_cast<int>(parseInteger(splitBlanks(line)[0]).value_or(0));
    }
    return in.fail("missing \"Year Month Option\" line");
}

bool readInterval(line_reader& in, schedule_block& block, bool impliedDecimals) {
    if (in.atEnd()) return in.fail("missing output interval");
    std::vector<std::string> tokens = splitBlanks(in.take());
    std::optional<double> value = tokens.empty() ? std::nullopt : parseNumber(tokens[0]);
    if (!value || *value < 0) return in.fail("bad output interval");
    bool hasPoint = tokens[0].find('.') != std::string::npos;
    if (impliedDecimals) {  // a fixed-point read: "1" is 0.001 years
        block.intervalMonths = (hasPoint ? *value : *value / 1000.0) * 12.0;
        return true;
    }
    // Releases 3 to 5 are given whole months; the others a fraction of a year.
    block.intervalMonths = hasPoint ? *value * 12.0 : *value;
    return true;
}

bool readWeather(line_reader& in, schedule_block& block) {
    if (in.atEnd()) return in.fail("missing weather choice");
    std::vector<std::string> tokens = splitBlanks(in.take());
    std::string choice = tokens.empty() ? "" : tokens[0];
    if (choice != "M" && choice != "S" && choice != "F" && choice != "C")
        return in.fail("bad weather choice \"" + choice + "\"");
    block.weatherChoice = choice[0];
    if (choice == "F") {
        if (in.atEnd()) return in.fail("missing weather file name");
        std::vector<std::string> file = splitBlanks(in.take());
        if (file.empty()) return in.fail("missing weather file name");
        block.weatherFile = file[0];
    }
    return true;
}

// The item (or EROD amount) is on the command's line, or on the next line
// for release 2.
std::optional<std::string> takeArgument(line_reader& in, const std::vector<std::string>& tokens,
                                        schedule_file& schedule) {
    if (tokens.size() > 3) return tokens[3];
    std::vector<std::string> next;
    if (!in.atEnd()) next = splitBlanks(in.take());
    if (next.empty()) {
        in.fail("missing item of " + tokens[2]);
        return std::nullopt;
    }
    schedule.itemsOnOwnLine = true;
    return next.front();
}

bool readEvent(line_reader& in, const std::string& line, schedule_file& schedule, schedule_block& block) {
    std::vector<std::string> tokens = splitBlanks(line);
    std::optional<long> year = tokens.size() > 2 ? parseInteger(tokens[0]) : std::nullopt;
    std::optional<long> when = tokens.size() > 2 ? parseInteger(tokens[1]) : std::nullopt;
    if (!year || !when) return in.fail("malformed event line \"" + line + "\"");
    const command_info* command = findCommand(tokens[2]);
    if (!command) return in.fail("unknown command \"" + tokens[2] + "\"");
    if (tokens[0].size() == 4 && tokens[1].size() == 3) schedule.dayOfYearDates = true;
    schedule_event event;
    event.year = static_cast<int>(*year);
    event.monthOrDay = static_cast<int>(*when);
    event.command = tokens[2];
    std::string argument;
    if (command->takesItem || event.command == "EROD") {
        std::optional<std::string> taken = takeArgument(in, tokens, schedule);
        if (!taken) return false;
        argument = *taken;
    }
    if (event.command == "EROD") {
        std::optional<double> amount = parseNumber(argument);
        if (!amount) return in.fail("bad EROD amount \"" + argument + "\"");
        event.parameter = *amount;
    } else {
        event.item = argument;
    }
    block.events.push_back(event);
    return true;
}

bool readBlock(line_reader& in, schedule_file& schedule, schedule_block& block, bool impliedDecimals) {
    if (!in.takeInteger("block last year", block.lastYear)) return false;
    if (!in.takeInteger("repeats", block.repeats)) return false;
    if (!in.takeInteger("output starting year", block.outputStartYear)) return false;
    int outputMonth = 0;
    if (!in.takeInteger("output month", outputMonth)) return false;
    if (!readInterval(in, block, impliedDecimals) || !readWeather(in, block)) return false;
    while (!in.atEnd()) {
        const std::string& line = in.take();
        if (trimBlanks(line).empty()) continue;
        if (line.rfind("-999", 0) == 0) return true;
        if (!readEvent(in, line, schedule, block)) return false;
    }
    return in.fail("block " + std::to_string(block.number) + " has no \"-999 -999 X\" end line");
}

}  // namespace

const char* optionFileOfCommand(const std::string& command) {
    const command_info* info = findCommand(command);
    return info ? info->optionFile : nullptr;
}

bool commandTakesItem(const std::string& command) {
    const command_info* info = findCommand(command);
    return info && info->takesItem;
}

bool schedule_file::read(const std::string& path, std::string& errors, bool impliedDecimals) {
    std::vector<std::string> lines;
    if (!readLines(path, lines)) {
        errors += "stand-in model: error: cannot read " + path + "\n";
        return false;
    }
    line_reader in(path, std::move(lines), errors);
    if (!readHeader(in, *this)) return false;
    int nextFirstYear = startYear;
    while (!in.atEnd()) {
        std::vector<std::string> tokens = splitBlanks(in.take());
        if (tokens.empty()) continue;
        if (tokens.size() < 2 || tokens[1] != "Block") return in.fail("expected a block line");
        schedule_block block;
        block.number = static_cast<int>(blocks.size()) + 1;
        block.firstYear = nextFirstYear;
        if (!readBlock(in, *this, block, impliedDecimals)) return false;
        if (block.lastYear < block.firstYear)
            return in.fail("block " + std::to_string(block.number) + " ends before it starts");
        nextFirstYear = block.lastYear + 1;
        blocks.push_back(std::move(block));
    }
    if (blocks.empty()) return in.fail("no event block");
    if (lastYear < startYear) return in.fail("last year before starting year");
    return true;
}

}  // namespace standin
