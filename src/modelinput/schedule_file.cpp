#include "modelinput/schedule_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

#include "app/number_text.h"
#include "app/text_format.h"
#include "app/text_file.h"
#include "paramfile/value_line_writer.h"

namespace sb {

namespace {

constexpr std::array<int, 12> kDaysBeforeMonth{0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
constexpr size_t kScheduleNameLength = 8;  // the model reads 8-character crop and tree names

bool hasScalarOptions(int version) { return version >= 3 && version <= 5; }
bool hasIdLine(int version) { return version >= 3 && version <= 6; }

int column(const tellura_control_record& record, const char* name) { return static_cast<int>(record.row.number(name)); }

// A name cut to 8 characters and padded with blanks to 8.
std::string scheduleName(const std::string& name) {
    std::string out = name.substr(0, std::min(name.size(), kScheduleNameLength));
    out.resize(kScheduleNameLength, ' ');
    return out;
}

void appendYearsAndOptions(std::string& out, const tellura_control_record& record, int version) {
    int first = 0;
    int last = 0;
    if (!record.blocks.empty()) {
        first = record.blocks.front().firstYear;
        last = record.blocks.front().lastYear;
        for (const tellura_event_block& block : record.blocks) {
            first = std::min<int>(first, block.firstYear);
            last = std::max<int>(last, block.lastYear);
        }
    }
    if (hasIdLine(version))
        appendf(out, "#%ld %s\n", static_cast<long>(record.id()), oneLine(record.description()).c_str());
    appendf(out, "%-5d         starting year\n", first);
    appendf(out, "%-5d         Last year\n", last);
    out += "sbsite.100    Site file name\n";
    appendf(out, "%1d             Labeling type\n", column(record, "Labeling Type"));
    appendf(out, "%-4d          Labeling year\n", column(record, "Labeling Year"));
    writeSignedBoolean(out, static_cast<uint16_t>(record.row.number("Simulate Microcosm")), "Microcosm");
    if (int co2 = column(record, "CO2SYS"); co2 != 0) {
        writeSmallInt(out, co2, "CO2 Systems");
        writeLargeInt(out, column(record, "CO2TM(1)"));
        writeLargeInt(out, column(record, "CO2TM(2)"));
    } else {
        writeLargeIntShortGap(out, -1, "CO2 Systems");
    }
}

void appendScalarOptions(std::string& out, const tellura_control_record& record) {
    if (int ph = column(record, "PHSYS"); ph != 0) {
        writeSmallInt(out, ph, "pH Shift");
        writeLargeInt(out, column(record, "PHTM"));
    } else {
        writeLargeIntShortGap(out, -1, "pH Shift");
    }
    if (int warming = column(record, "STSYS"); warming != 0) {
        writeSmallInt(out, warming, "Soil warming");
        writeLargeIntShortGap(out, column(record, "STSTART"), "Soil Warming Year");
        writeReal(out, record.row.number("STAMT"), "Soil Warming");
    } else {
        writeLargeIntShortGap(out, -1, "Soil warming");
    }
    struct scalar_option {
        const char* option;
        const char* year;
        const char* label;
        const char* yearLabel;
    };
    // The climate option's year is labelled "N scalar year" as well.
    static constexpr std::array<scalar_option, 3> kOptions{{
        {"Ninput", "Nstart", "N input scalar option", "N scalar year"},
        {"OMADinput", "OMADstart", "OMAD input scalar option", "OMAD scalar year"},
        {"WTHINPUT", "WTHSTART", "Climate scalar option", "N scalar year"},
    }};
    for (const scalar_option& option : kOptions) {
        int value = column(record, option.option);
        writeLargeIntShortGap(out, value, option.label);
        if (value != 0) writeSmallInt(out, column(record, option.year), option.yearLabel);
    }
}

// The option named by the record, or nullptr when the list has no such name.
const tellura_input* findOption(const tellura_input_list& list, const std::string& name) {
    return name.empty() ? nullptr : list.find(name);
}

void appendInitialCropAndTree(std::string& out, const tellura_control_record& record, const tellura_input_list& crops,
                              const tellura_input_list& trees, message_sink& errors) {
    const std::string cropName = record.initialCrop();
    const tellura_input* crop = findOption(crops, cropName);
    if (!crop && !crops.empty()) crop = &crops.at(0);
    if (!cropName.empty() && (!crop || !iequals(crop->name, cropName)))
        errors.warningf("WARNING, initial crop \"%s\" not found in the crop list, \"%s\" written instead.\n",
                        cropName.c_str(), crop ? crop->name.c_str() : "G3");
    if (crop) appendf(out, "%s      Initial Crop\n", scheduleName(oneLine(crop->name)).c_str());
    else out += "G3            Initial crop\n";

    const std::string treeName = record.initialTree();
    const tellura_input* tree = findOption(trees, treeName);
    if (!treeName.empty() && !tree)
        errors.warningf("WARNING, initial tree \"%s\" not found in the tree list, no initial tree written.\n",
                        treeName.c_str());
    if (tree) appendf(out, "%s      Initial Tree\n", scheduleName(oneLine(tree->name)).c_str());
    else out += "              Initial Tree\n";
}

// The releases read the interval in years by a fixed-point read: a number
// without a decimal point has three implied decimals ("12" is 0.012 years).
// Months as Soilbench holds them come from years as round(years * 12000) / 1000.
double monthsOfYears(double years) { return std::round(years * 12000.0) / 1000.0; }

// Years with a decimal point and as few decimals (three at least) as give the
// months back: "1.000" for 12 months, "0.0833" for one.
std::string yearsWithDecimalPoint(float months) {
    const double years = months / 12.0;
    std::string text;
    for (int decimals = 3; decimals <= 9; ++decimals) {
        text = strprintf("%.*f", decimals, years);
        if (static_cast<float>(monthsOfYears(toReal(text))) == months) break;
    }
    return text;
}

void appendOutputInterval(std::string& out, float months, output_interval_form form) {
    switch (form) {
        case output_interval_form::months:
            appendf(out, "%-5d         Output interval\n", static_cast<int>(months));
            break;
        case output_interval_form::years:
            appendf(out, "%-10.5f    Output interval\n", months / 12.0);
            break;
        case output_interval_form::years_decimal:
            appendf(out, "%-14sOutput interval\n", yearsWithDecimalPoint(months).c_str());
            break;
    }
}

void appendEvent(std::string& out, const tellura_event& event, int version, int blockNumber, message_sink& errors) {
    if (version == 4) appendf(out, "%04d %03d", event.year, dayOfYear(event.month, event.day));
    else appendf(out, "%02d  %02d", event.year, event.month);
    if (event.type < 1 || event.type >= kEventExtr) return;  // kept out of runs by validation
    const char* command = eventTypeName(event.type);
    if (event.type == kEventErod) {
        const std::string first = exactDecimals(event.parameter1, 6);
        if (version == 6)
            appendf(out, " %s %s %s\n", command, first.c_str(), exactDecimals(event.parameter2, 6).c_str());
        else if (version == 2) appendf(out, " %s\n%s\n", command, first.c_str());
        else appendf(out, " %s %s\n", command, first.c_str());
        return;
    }
    if (!eventTypeTakesItem(event.type)) {
        appendf(out, " %s\n", command);
        return;
    }
    std::string item = oneLine(event.item);
    if (item.size() > tellura_event::kMaxItemLength) {
        item.resize(tellura_event::kMaxItemLength);
        errors.warningf("WARNING, item \"%s\" of a %s event in block %d cut to \"%s\".\n", event.item.c_str(), command,
                        blockNumber, item.c_str());
    }
    appendf(out, version == 2 ? " %s\n%s\n" : " %s %s\n", command, item.c_str());
}

void appendBlock(std::string& out, const tellura_event_block& block, int number, int version,
                 output_interval_form interval, message_sink& errors) {
    appendf(out, "%-2d            Block #    %s\n", number, oneLine(block.description).c_str());
    appendf(out, "%-5d         Last year\n", block.lastYear);
    appendf(out, "%-4d          Repeats # years\n", block.repeatingYears);
    appendf(out, "%-5d         Output starting year\n", block.outputStartingYear);
    appendf(out, "%-4d          Output Month\n", block.outputMonth);
    appendOutputInterval(out, block.outputInterval, interval);
    switch (block.weatherChoice) {
        case kWeatherMean:
            out += "M             Weather choice\n";
            break;
        case kWeatherStochastic:
            out += "S             Weather choice\n";
            break;
        case kWeatherFile:
            out += "F             Weather choice\n";
            out += weatherFileName(block.weatherId) + "\n";
            break;
        case kWeatherContinue:
            out += "C             Weather choice\n";
            break;
        default:
            break;
    }
    for (const tellura_event& event : block.events) appendEvent(out, event, version, number, errors);
    out += "-999 -999 X\n";
}

}  // namespace

int dayOfYear(int month, int day) {
    if (month < 1 || month > 12) return day;
    return kDaysBeforeMonth[static_cast<size_t>(month - 1)] + day;
}

void monthAndDay(int dayOfYear, int& month, int& day) {
    month = 1;
    while (month < 12 && dayOfYear > kDaysBeforeMonth[static_cast<size_t>(month)]) ++month;
    day = dayOfYear - kDaysBeforeMonth[static_cast<size_t>(month - 1)];
}

std::string scheduleFileText(const tellura_control_record& record, const tellura_input_list& crops,
                             const tellura_input_list& trees, int version, message_sink& errors) {
    release_profile profile;
    profile.version = version;
    profile.interval = version >= 3 && version <= 5 ? output_interval_form::months : output_interval_form::years;
    return scheduleFileText(record, crops, trees, profile, errors);
}

std::string scheduleFileText(const tellura_control_record& record, const tellura_input_list& crops,
                             const tellura_input_list& trees, const release_profile& profile, message_sink& errors) {
    const int version = profile.version;
    std::string out;
    appendYearsAndOptions(out, record, version);
    if (hasScalarOptions(version)) appendScalarOptions(out, record);
    appendf(out, "%1d             Initial system\n", column(record, "Initial System"));
    appendInitialCropAndTree(out, record, crops, trees, errors);
    out += "\nYear Month Option\n";
    int number = 1;
    for (const tellura_event_block& block : record.blocks)
        appendBlock(out, block, number++, version, profile.interval, errors);
    return out;
}

std::vector<tellura_weather_recorded_for_block> gatherBlockWeather(const std::vector<tellura_event_block>& blocks,
                                                                   const tellura_weather_stations& stations,
                                                                   message_sink& errors) {
    std::vector<tellura_weather_recorded_for_block> gathered;
    for (const tellura_event_block& block : blocks) {
        if (block.weatherChoice != kWeatherFile && block.weatherChoice != kWeatherContinue) continue;
        const tellura_weather_station* station = stations.find(block.weatherId);
        if (!station) {
            errors.error("ERROR, weather station not found for event block.\n");
            continue;
        }
        auto found = std::find_if(gathered.begin(), gathered.end(),
                                  [&](const auto& entry) { return entry.stationId() == station->id; });
        if (found == gathered.end())
            found = gathered.insert(gathered.end(), tellura_weather_recorded_for_block(*station));
        found->addBlockYears(block.firstYear, block.lastYear);
    }
    return gathered;
}

bool writeScheduleFile(const tellura_control_record& record, const tellura_input_list& crops,
                       const tellura_input_list& trees, const release_profile& profile, const std::string& path,
                       const std::string& runDirectory, const tellura_weather_stations& stations,
                       message_sink& errors) {
    bool written = writeTextFile(path, scheduleFileText(record, crops, trees, profile, errors));
    for (const tellura_weather_recorded_for_block& weather : gatherBlockWeather(record.blocks, stations, errors))
        weather.write(weather.filePath(runDirectory), profile.weatherColumns, errors);
    return written;
}

// ---------------------------------------------------------------------------
// Reading

namespace {

// A header line: its first token and the label after it.
struct labelled_line {
    std::string value;
    std::string label;  // lower case, blanks trimmed
};

labelled_line splitLabelled(const std::string& line) {
    std::string_view text = trim(line);
    size_t end = text.find_first_of(" \t");
    labelled_line out;
    out.value = std::string(text.substr(0, end));
    if (end != std::string_view::npos) out.label = toLower(trim(text.substr(end)));
    return out;
}

class schedule_reader {
public:
    schedule_reader(const std::string& text, const std::string& path, int version, output_interval_form interval,
                    tellura_control_record& record, schedule_references& references, message_sink& errors)
        : source_(text),
          path_(path),
          version_(version),
          interval_(interval),
          record_(record),
          references_(references),
          errors_(errors) {}

    bool read() {
        if (!readHeader()) return false;
        record_.blocks.clear();
        references_.weatherFiles.clear();
        std::string line;
        while (nextNonBlank(line)) {
            labelled_line block = splitLabelled(line);
            if (block.label.rfind("block #", 0) != 0) {
                errors_.errorf("ERROR, expected a block in schedule file \"%s\": \"%s\".\n", path_.c_str(),
                               line.c_str());
                return false;
            }
            if (!readBlock(line)) return false;
        }
        return true;
    }

private:
    bool nextLine(std::string& line) { return source_.nextLine(line); }
    bool nextNonBlank(std::string& line) {
        while (nextLine(line))
            if (!trim(line).empty()) return true;
        return false;
    }
    long nextValue() {
        std::string line;
        return nextNonBlank(line) ? toInteger(splitLabelled(line).value) : 0;
    }
    bool nextShort(const char* what, int16_t& value) {
        const long read = nextValue();
        if (!fitsShort(read, what)) return false;
        value = static_cast<int16_t>(read);
        return true;
    }
    void set(const char* column, double value) { record_.row.setNumber(column, value); }

    // Years, counts and block and event numbers are kept in 16 bits: a larger
    // value is refused here rather than wrapped into another year.
    bool fitsShort(long value, const char* what) {
        if (value >= std::numeric_limits<int16_t>::min() && value <= std::numeric_limits<int16_t>::max()) return true;
        errors_.errorf("ERROR, line %ld of schedule file \"%s\": %s %ld is out of range (-32768 to 32767).\n",
                       source_.lineNumber(), path_.c_str(), what, value);
        return false;
    }

    // False with the reason appended for a value out of range or no "Year Month Option" line.
    bool readHeader() {
        std::string line;
        while (nextLine(line)) {
            if (!line.empty() && line.front() == '#') {
                readIdLine(line);
                continue;
            }
            labelled_line entry = splitLabelled(line);
            if (entry.value.empty()) continue;
            if (toLower(trim(line)) == "year month option") return true;
            if (!readHeaderEntry(entry, line)) return false;
        }
        errors_.errorf("ERROR, no \"Year Month Option\" line in schedule file \"%s\".\n", path_.c_str());
        return false;
    }

    void readIdLine(const std::string& line) {
        std::string_view rest = std::string_view(line).substr(1);
        size_t blank = rest.find(' ');
        if (blank != std::string_view::npos) record_.row.setText("Description", std::string(rest.substr(blank + 1)));
    }

    bool readHeaderEntry(const labelled_line& entry, const std::string& line) {
        const std::string& label = entry.label;
        long value = toInteger(entry.value);
        if (label == "starting year") {
            if (!fitsShort(value, "starting year")) return false;
            startingYear_ = static_cast<int>(value);
        } else if (label == "site file name") {
            references_.siteFile = entry.value;
        } else if (label == "labeling type") {
            set("Labeling Type", value);
        } else if (label == "labeling year") {
            set("Labeling Year", value);
        } else if (label == "microcosm") {
            record_.row.setFlag(record_.row.column("Simulate Microcosm"), toReal(entry.value) > 0);
        } else if (label == "co2 systems") {
            readOption("CO2SYS", value, {"CO2TM(1)", "CO2TM(2)"});
        } else if (label == "ph shift") {
            readOption("PHSYS", value, {"PHTM"});
        } else if (label == "soil warming") {
            readOption("STSYS", value, {"STSTART", "STAMT"});
        } else if (label == "n input scalar option") {
            readOption("Ninput", value, {"Nstart"}, true);
        } else if (label == "omad input scalar option" || label == "omad scalar option") {
            readOption("OMADinput", value, {"OMADstart"}, true);
        } else if (label == "climate scalar option") {
            readOption("WTHINPUT", value, {"WTHSTART"}, true);
        } else if (label == "initial system") {
            set("Initial System", value);
        } else if (label.rfind("initial crop", 0) == 0 || label.rfind("initial tree", 0) == 0) {
            record_.row.setText(label.rfind("initial crop", 0) == 0 ? "Initial Crop" : "Initial Tree", entry.value);
        } else if (toLower(trim(line)).rfind("initial tree", 0) == 0) {
            record_.row.setText("Initial Tree", "");  // the blank form: no initial tree
        }
        return true;
    }

    // An option whose further values follow on lines of their own. -1 (and 0
    // for the on/off systems) means the option is off and nothing follows.
    void readOption(const char* column, long value, std::initializer_list<const char*> following,
                    bool zeroIsOff = false) {
        bool on = zeroIsOff ? value != 0 : value > 0;
        set(column, on ? static_cast<double>(value) : 0.0);
        if (!on) return;
        for (const char* next : following) {
            std::string line;
            if (!nextNonBlank(line)) return;
            set(next, toReal(splitLabelled(line).value));
        }
    }

    bool readBlock(const std::string& headerLine) {
        tellura_event_block block;
        block.blockNumber = static_cast<int16_t>(record_.blocks.size() + 1);
        std::string_view header = headerLine;
        size_t mark = header.find("Block #");
        if (mark == std::string_view::npos) mark = toLower(headerLine).find("block #");
        block.description = std::string(trim(header.substr(mark + 7)));
        const long firstYear = record_.blocks.empty() ? startingYear_ : record_.blocks.back().lastYear + 1L;
        if (!fitsShort(firstYear, "first year")) return false;
        block.firstYear = static_cast<int16_t>(firstYear);
        if (!nextShort("last year", block.lastYear) || !nextShort("repeating years", block.repeatingYears) ||
            !nextShort("output starting year", block.outputStartingYear))
            return false;
        block.outputMonth = static_cast<uint8_t>(nextValue());
        std::string line;
        nextNonBlank(line);
        block.outputInterval = static_cast<float>(intervalMonths(splitLabelled(line).value));
        readWeatherChoice(block);
        return readEvents(block);
    }

    void readWeatherChoice(tellura_event_block& block) {
        std::string line;
        nextNonBlank(line);
        std::string choice = toUpper(splitLabelled(line).value);
        static const std::string kCodes = "MSFC";
        size_t code = choice.size() == 1 ? kCodes.find(choice[0]) : std::string::npos;
        block.weatherChoice = static_cast<uint8_t>(code == std::string::npos ? 0 : code + 1);
        std::string file;
        if (block.weatherChoice == kWeatherFile) {
            nextNonBlank(line);
            file = std::string(trim(line));
            unsigned id = 0;
            if (std::sscanf(file.c_str(), "sb%6u.wth", &id) == 1) block.weatherId = static_cast<int32_t>(id);
        }
        references_.weatherFiles.push_back(file);
    }

    bool readEvents(tellura_event_block& block) {
        std::string line;
        while (nextNonBlank(line)) {
            if (trim(line).rfind("-999", 0) == 0) {
                record_.blocks.push_back(std::move(block));
                return true;
            }
            std::string_view rest = line;
            std::vector<std::string> date = splitTokens(line.substr(0, line.find_first_not_of(" \t0123456789-")));
            if (date.size() < 2) {
                errors_.errorf("ERROR, unable to parse tellura event.\n");
                continue;
            }
            // Skip the two date numbers; the operation follows.
            for (int skipped = 0; skipped < 2; ++skipped) {
                size_t start = rest.find_first_not_of(" \t");
                size_t end = rest.find_first_of(" \t", start);
                rest.remove_prefix(end == std::string_view::npos ? rest.size() : end);
            }
            const long year = toInteger(date[0]);
            if (!fitsShort(year, "year")) return false;
            int month = static_cast<int>(toInteger(date[1]));
            int day = 1;
            if (version_ == 4) monthAndDay(month, month, day);
            tellura_event event;
            if (!parseEvent(rest, source_, static_cast<int>(year), month, event, errors_)) continue;
            event.day = static_cast<uint8_t>(day);
            event.order = static_cast<int16_t>(block.events.size() + 1);
            if (event.type == kEventErod) event.item.clear();  // its amounts are the parameters
            block.events.push_back(std::move(event));
        }
        errors_.errorf("ERROR, block %d of schedule file \"%s\" has no \"-999 -999 X\" end.\n",
                       static_cast<int>(block.blockNumber), path_.c_str());
        return false;
    }

    // The interval in months. A release that reads years gets years; the
    // releases that read them by a fixed-point read take a number without a
    // decimal point with three implied decimals ("12" is 0.012 years). A
    // whole-month release's own schedules often carry the year fraction (0.0833
    // for monthly output): a value below one month is read as years there too.
    double intervalMonths(const std::string& text) const {
        double value = toReal(text);
        if (interval_ == output_interval_form::months) return value > 0.0 && value < 1.0 ? monthsOfYears(value) : value;
        bool impliedDecimals = interval_ == output_interval_form::years_decimal && text.find('.') == std::string::npos;
        return monthsOfYears(impliedDecimals ? value / 1000.0 : value);
    }

    text_line_source source_;
    const std::string& path_;
    int version_;
    output_interval_form interval_;
    tellura_control_record& record_;
    schedule_references& references_;
    message_sink& errors_;
    int startingYear_ = 0;
};

}  // namespace

bool readScheduleText(const std::string& text, const std::string& path, int version, tellura_control_record& record,
                      schedule_references& references, message_sink& errors) {
    output_interval_form interval =
        hasScalarOptions(version) ? output_interval_form::months : output_interval_form::years;
    return schedule_reader(text, path, version, interval, record, references, errors).read();
}

bool readScheduleFile(const std::string& path, const release_profile& profile, tellura_control_record& record,
                      schedule_references& references, message_sink& errors) {
    std::string text;
    if (!readTextFile(path, text, errors, strprintf("ERROR, can't open file \"%s\".\n", path.c_str()))) return false;
    return schedule_reader(text, path, profile.version, profile.interval, record, references, errors).read();
}

bool readScheduleFile(const std::string& path, int version, tellura_control_record& record,
                      schedule_references& references, message_sink& errors) {
    release_profile profile;
    profile.version = version;
    profile.interval = hasScalarOptions(version) ? output_interval_form::months : output_interval_form::years;
    return readScheduleFile(path, profile, record, references, errors);
}

}  // namespace sb
