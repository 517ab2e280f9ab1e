#include "modelinput/site_file.h"

#include <array>
#include <utility>

#include "app/text_format.h"
#include "modelinput/parameter_names.h"
#include "modelinput/soil_site_names.h"
#include "app/text_file.h"
#include "paramfile/tellura_input_list.h"
#include "paramfile/value_line_writer.h"

namespace sb {

namespace {

constexpr int kSiteLayerSlots = 10;  // the site file always carries ten layer slots
constexpr int kDiurnaLayerCount = 9;

bool hasRockAndRunoff(int version) { return version >= 3 && version <= 5; }
bool hasFullSom2(int version) { return version == 4 || version == 5; }

// Value lines of the Site Data row: the line name is the column's own name.
class site_lines {
public:
    site_lines(std::string& out, const TelluraSiteData& site) : out_(out), site_(site) {}

    void real(const char* name) { writeReal(out_, site_.number(name), name); }
    void indexed(const char* name, int n) {
        for (int i = 1; i <= n; ++i) writeElement(out_, site_.number(subscripted(name, i)), name, i);
    }
    void twoIndex(const char* name, int rows, int cols) {
        for (int i = 1; i <= rows; ++i)
            for (int j = 1; j <= cols; ++j) writeElement(out_, site_.number(subscripted(name, i, j)), name, i, j);
    }
    // The older releases read the first row of a matrix as a plain array.
    void firstRowAsArray(const char* name, int cols) {
        for (int j = 1; j <= cols; ++j) writeReal(out_, site_.number(subscripted(name, 1, j)), subscripted(name, j));
    }
    void indexedGroup(std::initializer_list<std::pair<const char*, int>> arrays) {
        for (const auto& [name, n] : arrays) indexed(name, n);
    }

private:
    std::string& out_;
    const TelluraSiteData& site_;
};

void appendClimate(std::string& out, const TelluraWeatherStations* station) {
    static const std::array<std::pair<const char*, float weather_month_means::*>, 5> kSeries{{
        {"PRECIP", &weather_month_means::precip},
        {"PRCSTD", &weather_month_means::prcstd},
        {"PRCSKW", &weather_month_means::prcskw},
        {"TMN2M", &weather_month_means::tmn2m},
        {"TMX2M", &weather_month_means::tmx2m},
    }};
    const std::array<weather_month_means, 12> none{};
    const std::array<weather_month_means, 12>& means = station ? station->means : none;
    for (const auto& [name, member] : kSeries)
        for (int month = 1; month <= 12; ++month)
            writeElement(out, means[static_cast<size_t>(month - 1)].*member, name, month);
}

void appendSoil(std::string& out, const TelluraSoils& soil, int version) {
    auto real = [&](const char* name) { writeReal(out, soilSiteValue(soil, name), name); };
    real("SAND");
    real("SILT");
    real("CLAY");
    if (hasRockAndRunoff(version)) real("ROCK");
    real("BULKD");
    // The daily release always simulates nine layers, whatever the soil holds.
    int layers = version == 4 ? kDiurnaLayerCount : static_cast<int>(soilSiteValue(soil, "NLAYER"));
    writeSmallInt(out, layers, "NLAYER");
    writeSmallInt(out, static_cast<int>(soilSiteValue(soil, "NLAYPG")), "NLAYPG");
    real("DRAIN");
    real("BASEF");
    real("STORMF");
    if (hasRockAndRunoff(version)) {
        real("PRECRO");
        real("FRACRO");
    }
    writeSmallInt(out, static_cast<int>(soilSiteValue(soil, "SWFLAG")), "SWFLAG");
    for (const char* name : {"AWILT", "AFIEL"})
        for (int layer = 1; layer <= kSiteLayerSlots; ++layer)
            writeElement(out, soilLayerValue(soil, name, layer), name, layer);
    real("PH");
    real("PSLSRB");
    real("SORPMX");
}

void appendOrganicMatter(std::string& out, site_lines& lines, int version) {
    out += "*** Organic matter initial values\n";
    lines.twoIndex("SOM1CI", 2, 2);
    if (hasFullSom2(version)) lines.twoIndex("SOM2CI", 2, 2);
    else lines.firstRowAsArray("SOM2CI", 2);
    lines.indexed("SOM3CI", 2);
    lines.twoIndex("RCES1", 2, 3);
    if (hasFullSom2(version)) lines.twoIndex("RCES2", 2, 3);
    else lines.firstRowAsArray("RCES2", 3);
    lines.indexed("RCES3", 3);
    lines.twoIndex("CLITTR", 2, 2);
    lines.twoIndex("RCELIT", 2, 3);
    lines.indexedGroup({{"AGLCIS", 2}, {"AGLIVE", 3}, {"BGLCIS", 2}, {"BGLIVE", 3}, {"STDCIS", 2}, {"STDEDE", 3}});
    out += "*** Forest organic matter initial parameters\n";
    lines.indexedGroup({{"RLVCIS", 2},
                        {"RLEAVE", 3},
                        {"FBRCIS", 2},
                        {"FBRCHE", 3},
                        {"RLWCIS", 2},
                        {"RLWODE", 3},
                        {"FRTCIS", 2},
                        {"FROOTE", 3},
                        {"CRTCIS", 2},
                        {"CROOTE", 3},
                        {"WD1CIS", 2},
                        {"WD2CIS", 2},
                        {"WD3CIS", 2}});
    // The releases without ROCK read the wood lignin fractions here.
    if (!hasRockAndRunoff(version)) {
        lines.real("W1LIG");
        lines.real("W2LIG");
        lines.real("W3LIG");
    }
}

void appendMineralAndWater(std::string& out, site_lines& lines, const TelluraSoils& soil) {
    out += "*** Mineral initial parameters\n";
    for (int element = 1; element <= 3; ++element)
        for (int layer = 1; layer <= kSiteLayerSlots; ++layer)
            writeElement(out, soilMineralValue(soil, layer, element), "MINERL", layer, element);
    lines.indexedGroup({{"PARENT", 3}, {"SECNDY", 3}});
    lines.real("OCCLUD");
    out += "*** water initial parameters\n";
    for (int layer = 1; layer <= kSiteLayerSlots; ++layer)
        writeElement(out, soilLayerValue(soil, "RWCF", layer), "RWCF", layer);
    lines.real("SNLQ");
    lines.real("SNOW");
}

void appendEnhanced(std::string& out, site_lines& lines) {
    out += "*** Enhanced extend parameters\n";
    lines.twoIndex("STRCIS", 2, 2);
    lines.twoIndex("METCIS", 2, 2);
    lines.twoIndex("STRUCE", 2, 3);
    lines.twoIndex("METABE", 2, 3);
    lines.twoIndex("SOM1E", 2, 3);
    lines.indexedGroup({{"SOM2E", 3},
                        {"SOM3E", 3},
                        {"WOOD1E", 3},
                        {"WOOD2E", 3},
                        {"WOOD3E", 3},
                        {"AMINRL", 3},
                        {"CRPSTG", 3},
                        {"STRLIG", 2}});
}

}  // namespace

std::string siteFileText(const tellura_control_record& record, int version, const TelluraSoils* soil,
                         const TelluraWeatherStations* station) {
    const TelluraSoils noSoil;
    const TelluraSoils& soilValues = soil ? *soil : noSoil;
    std::string out;
    out.reserve(16384);
    site_lines lines(out, record.site);
    appendf(out, "X  Archived site file record. ID=%ld\n", static_cast<long>(record.id()));
    out += "*** Climate parameters\n";
    appendClimate(out, station);
    out += "*** Site and control parameters\n";
    lines.real("IVAUTO");
    lines.real("NELEM");
    writeReal(out, record.row.number("Latitude"), "SITLAT");
    writeReal(out, record.row.number("Longitude"), "SITLNG");
    appendSoil(out, soilValues, version);
    out += "*** External nutrient input parameters\n";
    lines.indexedGroup({{"EPNFA", 2}, {"EPNFS", 2}, {"SATMOS", 2}});
    lines.real("SIRRI");
    appendOrganicMatter(out, lines, version);
    appendMineralAndWater(out, lines, soilValues);
    if (version == 1) appendEnhanced(out, lines);
    return out;
}

bool writeSiteFile(const tellura_control_record& record, int version, const std::string& path,
                   const tellura_soil_list& soils, const tellura_weather_station_list& stations, std::string& errors) {
    const TelluraSoils* soil = soils.find(record.soilId());
    const TelluraWeatherStations* station = stations.find(record.weatherId());
    if (!soil)
        appendf(errors, "WARNING, soil %ld of record %ld not found, site file soil values written as zero.\n",
                static_cast<long>(record.soilId()), static_cast<long>(record.id()));
    if (!station)
        appendf(errors,
                "WARNING, weather station %ld of record %ld not found, site file climate values written as zero.\n",
                static_cast<long>(record.weatherId()), static_cast<long>(record.id()));
    else if (!station->hasMeans)
        appendf(
            errors,
            "WARNING, weather station %ld has no monthly climate means, site file climate values written as zero.\n",
            static_cast<long>(station->id));
    return writeTextFile(path, siteFileText(record, version, soil, station));
}

// ---------------------------------------------------------------------------
// sitepar.in

namespace {

// Comments of sitepar.in lines; the model reads only the values before them.
constexpr const char* kExtraDriversText =
    "1 = Use extra weather drivers (solrad, rhumid, windsp), 0 = don't use (for PET)";
constexpr const char* kBottomTempText = "min and max temperature for bottom soil layer (degrees C)\n";
constexpr const char* kDampingText = "DMP - damping factor for calculating soil temperature by layer";
constexpr const char* kTimlagText = "TIMLAG - timlag, days from Jan 1 to coolest temp at bottom of soil (days)";
constexpr const char* kNcoeffText = "NCOEFF - min water/temperature limitation coefficient for nitrify";
constexpr const char* kJulianText = "JDAYEND - turn off respiration restraint on denit between these Julian dates\n";
constexpr const char* kN2oadjText = "N2OADJ - proportion of nitrified N that is lost as N2O (0.0-1.0)";
constexpr const char* kMaxNitText = "MaxNitAmt - maximum daily nitrification amount (gN/m^2)";
constexpr const char* kSnowText = "snow effect on soil surface temp: 0 = not insulating, 1 = insulating";
constexpr const char* kNetmnText = "Netmn to NO3 - fraction of new net mineralization that goes to NO3 (0.0-1.0)";
constexpr int kPairWidth = 15;

// `Site Data` has no column for the soil temperature damping factor; the
// model's own default is written (and an imported value is not kept).
constexpr double kDampingFactor = 0.003;

void appendMonthPairs(std::string& out, const TelluraSiteData& site, const char* base, bool asFlag) {
    for (int month = 1; month <= 12; ++month) {
        std::string column = subscripted(base, month);
        int value = asFlag ? (site.flag(site.column(column)) ? 1 : 0) : static_cast<int>(site.number(column));
        appendf(out, "%-2d %d\n", month, value);
    }
}

void appendPaddedPair(std::string& out, const std::string& pair, const char* text) {
    out += pair;
    if (pair.size() < kPairWidth) out.append(kPairWidth - pair.size(), ' ');
    out += text;
}

}  // namespace

std::string siteparText(const TelluraSiteData& site, int version) {
    std::string out;
    auto number = [&](const char* column) { return site.number(column); };
    if (version != 4)
        writeSmallInt(out, static_cast<int>(number("TIMSTEP")), "timstep: 1=monthly production, 2=weekly production");
    writeSmallInt(out, site.flag(site.column("USEXDRVRS")) ? 1 : 0, kExtraDriversText);
    for (const char* column : {"SUBLIMSCALE", "REFLEC", "ALBEDO", "FSWCINIT"}) writeReal(out, number(column));
    writeRealWidth(out, number("DMPFLUX"), 10, 6, "DMPFLUX");
    writeLargeInt(out, static_cast<int32_t>(number("HOURS_RAIN")));
    writeLargeInt(out, static_cast<int32_t>(number("DRAINLAG")));
    appendMonthPairs(out, site, "WATERTABLE", true);
    writeLargeInt(out, static_cast<int32_t>(number("HPOTDEEP")), "HPOTDEEP");
    writeReal(out, number("KSATDEEP"), "KSATDEEP");
    appendMonthPairs(out, site, "CLDCOV", false);
    appendPaddedPair(out, strprintf("%.1f %.1f", number("TBOTMN"), number("TBOTMX")), kBottomTempText);
    writeReal(out, kDampingFactor, kDampingText);
    writeReal(out, number("TIMLAG"), kTimlagText);
    writeReal(out, number("NCOEFF"), kNcoeffText);
    // The model reads the two dates list-directed: the comment must stand apart.
    appendPaddedPair(out,
                     strprintf("%d %d", static_cast<int>(number("JDAYSTART")), static_cast<int>(number("JDAYEND"))),
                     kJulianText);
    if (version == 4) {
        writeReal(out, number("N2Oadjust_fc"), "N2Oadjust_fc");
        writeReal(out, number("N2Oadjust_wp"), "N2Oadjust_wp");
    } else {
        writeReal(out, number("N2OADJ"), kN2oadjText);
    }
    writeReal(out, number("Maximum Daily Nitrification"), kMaxNitText);
    writeSmallInt(out, static_cast<int>(number("Snow Effect Soil Surface Temp")), kSnowText);
    writeReal(out, number("NO3 Mineralization"), kNetmnText);
    if (version == 4) {
        writeReal(out, number("wfpsdnitadj"), "wfpsdnitadj");
        writeReal(out, number("n2n2oadj"), "n2n2oadj");
    }
    return out;
}

bool writeSitepar(const TelluraSiteData& site, const std::string& path, int version, std::string& errors) {
    if (!writeTextFile(path, siteparText(site, version))) {
        appendf(errors, "ERROR, unable to open 'outfiles' file \"%s\".\n", path.c_str());
        return false;
    }
    return true;
}

// ---------------------------------------------------------------------------
// Importers

namespace {

// One record of a site file: every value line is routed by its name.
class site_file_target : public tellura_input {
public:
    site_file_target(tellura_control_record& record, TelluraSoils* soil, TelluraWeatherStations* station,
                     bool& climateRead)
        : record_(record), soil_(soil), station_(station), climateRead_(climateRead) {}

    bool setField(std::string_view fieldName, double value, std::string& errors) override {
        std::string name = canonicalParameterName(fieldName);
        if (isClimateName(name)) {
            if (!station_ || !station_->setClimateMean(name, value, errors)) return false;
            climateRead_ = true;
            return true;
        }
        if (isSoilSiteName(name)) return soil_ && setSoilBySiteName(*soil_, name, value, errors);
        if (name == "SITLAT") return record_.row.setNumber("Latitude", value);
        if (name == "SITLNG") return record_.row.setNumber("Longitude", value);
        if (name == "ID") return false;  // the key is the record's own
        return record_.site.setNumber(siteColumnOfName(name), value);
    }
    void writeValues(std::string&, int) const override {}

private:
    tellura_control_record& record_;
    TelluraSoils* soil_;
    TelluraWeatherStations* station_;
    bool& climateRead_;
};

class site_file_reader : public tellura_input_list {
public:
    site_file_reader(tellura_control_record& record, TelluraSoils* soil, TelluraWeatherStations* station)
        : record_(record), soil_(soil), station_(station) {}
    std::unique_ptr<tellura_input> makeRecord() const override {
        return std::make_unique<site_file_target>(record_, soil_, station_, climateRead);
    }
    // Set when a climate mean went to the station.
    mutable bool climateRead = false;

private:
    tellura_control_record& record_;
    TelluraSoils* soil_;
    TelluraWeatherStations* station_;
};

}  // namespace

bool importSiteFile(const std::string& path, tellura_control_record& record, TelluraSoils* soil,
                    TelluraWeatherStations* station, std::string& messages) {
    std::string text;
    if (!readTextFile(path, text, messages, strprintf("ERROR, cannot open site file \"%s\"\n", path.c_str())))
        return false;
    site_file_reader reader(record, soil, station);
    std::string status;
    import_counts counts = reader.importText(text, path, messages, status);
    if (reader.climateRead) station->hasMeans = true;
    appendf(messages, "Imported site data from \"%s\"\n", path.c_str());
    return counts.badLines == 0;
}

namespace {

// Reads sitepar.in line by line in the order the writer writes it.
class sitepar_reader {
public:
    sitepar_reader(std::vector<std::string> lines, TelluraSiteData& site, std::string& messages)
        : lines_(std::move(lines)), site_(site), messages_(messages) {}

    void read() {
        if (commentHas("timstep")) integer("TIMSTEP");
        flag("USEXDRVRS");
        for (const char* column : {"SUBLIMSCALE", "REFLEC", "ALBEDO", "FSWCINIT", "DMPFLUX"}) real(column);
        integer("HOURS_RAIN");
        integer("DRAINLAG");
        months("WATERTABLE", true);
        integer("HPOTDEEP");
        real("KSATDEEP");
        months("CLDCOV", false);
        pair("TBOTMN", "TBOTMX");
        skip();  // damping factor: no column holds it
        real("TIMLAG");
        real("NCOEFF");
        for (int region = 1; region <= 4 && commentHas("layers composing"); ++region)
            pair(subscripted("LYRMIN", region).c_str(), subscripted("LYRMAX", region).c_str());
        pair("JDAYSTART", "JDAYEND");
        if (commentHas("N2OADJ - ")) {
            real("N2OADJ");
        } else {
            real("N2Oadjust_fc");
            real("N2Oadjust_wp");
        }
        for (const char* column : {"Maximum Daily Nitrification", "Snow Effect Soil Surface Temp", "NO3 Mineralization",
                                   "wfpsdnitadj", "n2n2oadj"})
            real(column);
    }

private:
    bool atEnd() const { return next_ >= lines_.size(); }
    bool commentHas(const char* text) const {
        return !atEnd() && toLower(lines_[next_]).find(toLower(text)) != std::string::npos;
    }
    std::vector<std::string> take(size_t count) {
        if (atEnd()) return {};
        std::vector<std::string> tokens = splitTokens(lines_[next_++]);
        if (tokens.size() > count) tokens.resize(count);
        return tokens;
    }
    void real(const char* column) {
        std::vector<std::string> tokens = take(1);
        if (!tokens.empty()) site_.setNumber(column, toReal(tokens[0]));
    }
    void integer(const char* column) {
        std::vector<std::string> tokens = take(1);
        if (!tokens.empty()) site_.setNumber(column, static_cast<double>(toInteger(tokens[0])));
    }
    void flag(const char* column) {
        std::vector<std::string> tokens = take(1);
        if (!tokens.empty()) site_.setFlag(site_.column(column), toInteger(tokens[0]) != 0);
    }
    void pair(const char* first, const char* second) {
        std::vector<std::string> tokens = take(2);
        if (tokens.size() > 0) site_.setNumber(first, toReal(tokens[0]));
        if (tokens.size() > 1) site_.setNumber(second, toReal(tokens[1]));
    }
    void skip() { take(0); }
    // Twelve "month value" lines; storing stops at the first month out of
    // sequence, but all twelve lines are consumed so later values stay in place.
    void months(const char* base, bool asFlag) {
        bool inOrder = true;
        for (int month = 1; month <= 12; ++month) {
            std::vector<std::string> tokens = take(2);
            if (!inOrder) continue;
            if (tokens.size() < 2 || toInteger(tokens[0]) != month) {
                appendf(messages_, "ERROR, %s month out of order in site parameters file.\n", base);
                inOrder = false;
                continue;
            }
            std::string column = subscripted(base, month);
            if (asFlag) site_.setFlag(site_.column(column), toInteger(tokens[1]) != 0);
            else site_.setNumber(column, static_cast<double>(toInteger(tokens[1])));
        }
    }

    std::vector<std::string> lines_;
    size_t next_ = 0;
    TelluraSiteData& site_;
    std::string& messages_;
};

}  // namespace

bool importSitepar(const std::string& path, tellura_control_record& record, std::string& messages) {
    std::string text;
    if (!readTextFile(path, text, messages,
                      strprintf("ERROR, cannot open site parameters file \"%s\"\n", path.c_str())))
        return false;
    sitepar_reader(splitLines(text), record.site, messages).read();
    appendf(messages, "Imported site parameters from \"%s\"\n", path.c_str());
    return true;
}

}  // namespace sb
