#include "records/tellura_weather_station.h"

#include "app/text_file.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <unordered_map>

#include "app/text_format.h"
#include "db/database.h"
#include "db/table_columns.h"
#include "paramfile/field_setter.h"
#include "records/store_session.h"

namespace sb {

namespace {

// The five climate series of a month, in the order the site file names them.
struct climate_series {
    const char* name;   // site-file parameter name
    const char* label;  // label of the exported row
    float weather_month_means::*member;
};

constexpr climate_series kClimateSeries[] = {
    {"PRECIP", "Precipitation", &weather_month_means::precip},
    {"PRCSTD", "Precipitation STD", &weather_month_means::prcstd},
    {"PRCSKW", "Precipitation Skew", &weather_month_means::prcskw},
    {"TMN2M", "Temperature Min", &weather_month_means::tmn2m},
    {"TMX2M", "Temperature Max", &weather_month_means::tmx2m},
};

// The columns of the station list and the three climate tables, looked up once by name.
const table_columns& stationColumns() {
    static const table_columns c(table_id::weather_stations, {"ID", "Description"});
    return c;
}
const table_columns& meansColumns() {
    static const table_columns c(table_id::weather_averages,
                                 {"ID", "Month", "PRECIP", "TMN2M", "TMX2M", "PRCSTD", "PRCSKW"});
    return c;
}
const table_columns& monthlyColumns() {
    static const table_columns c(
        table_id::weather_historical_monthly,
        {"ID", "Year", "Month", "PRECIP", "TMN2M", "TMX2M", "SOLRAD", "RHUMID", "WINDSP", "PRCSTD", "PRCSKW"});
    return c;
}
const table_columns& dailyColumns() {
    static const table_columns c(table_id::weather_historical_daily, {"ID", "Year", "Month", "Day", "PRECIP", "TMN2M",
                                                                      "TMX2M", "SOLRAD", "RHUMID", "WINDSP"});
    return c;
}

// Each climate column with the member that holds it, for reading and writing
// alike, walked in the order the lookups above name them: the series every
// weather table has, the ones the history adds, and the ones of the monthly
// tables.
template <class Values, class Visit>  // Values: const when writing
void seriesMembers(Values& v, Visit&& visit) {
    visit("PRECIP", v.precip);
    visit("TMN2M", v.tmn2m);
    visit("TMX2M", v.tmx2m);
}
template <class Values, class Visit>
void historyMembers(Values& v, Visit&& visit) {
    seriesMembers(v, visit);
    visit("SOLRAD", v.solrad);
    visit("RHUMID", v.rhumid);
    visit("WINDSP", v.windsp);
}
template <class Month, class Visit>
void meansMembers(Month& m, Visit&& visit) {
    seriesMembers(m, visit);
    visit("PRCSTD", m.prcstd);
    visit("PRCSKW", m.prcskw);
}
template <class Month, class Visit>
void monthMembers(Month& m, Visit&& visit) {
    historyMembers(m, visit);
    visit("PRCSTD", m.prcstd);
    visit("PRCSKW", m.prcskw);
}
template <class Day, class Visit>
void dayMembers(Day& d, Visit&& visit) {
    visit("Year", d.year);
    visit("Month", d.month);
    visit("Day", d.day);
    historyMembers(d, visit);
}

long asLong(int32_t id) { return static_cast<long>(id); }

bool deleteStationRows(database& db, table_id table, int32_t stationId, message_sink& errors) {
    if (db.execute(strprintf("DELETE FROM `%s` WHERE ID = %ld", tableName(table), asLong(stationId))).ok()) return true;
    errors.errorf("ERROR, unable to delete from [%s]\n", tableName(table));
    return false;
}

bool stationExists(database& db, int32_t stationId) {
    db_status status;
    std::unique_ptr<rowset> rows =
        db.openTable(table_id::weather_stations, strprintf("ID = %ld", asLong(stationId)), "", status);
    return rows && rows->moveFirst().ok();
}

// Opens a table for inserting and inserts each row that `fill` produces, stopping at
// the first failure: one refused row usually means every later one is refused too.
template <class Fill>
bool insertRows(database& db, table_id table, size_t count, Fill fill, message_sink& errors) {
    db_status status;
    std::unique_ptr<rowset> rows = db.openTable(table, "", "", status);
    if (!rows) {
        errors.errorf("Unable to open table [%s]\n", tableName(table));
        appendStatusText(status, errors);
        return false;
    }
    table_record row(table);
    for (size_t i = 0; i < count; ++i) {
        fill(i, row);
        db_status inserted = rows->insert(row);
        if (!inserted.ok()) {
            errors.errorf("ERROR, unable to insert into table [%s]\n", tableName(table));
            appendStatusText(inserted, errors);
            return false;
        }
    }
    return true;
}

// Replaces one station's rows in a history table, in one session.
template <class Fill>
bool replaceHistory(database& db, table_id table, int32_t stationId, size_t count, Fill fill, message_sink& errors) {
    store_session s(db, errors);
    if (!s.ok()) return false;
    if (!stationExists(db, stationId)) {
        errors.errorf("ERROR, weather station %ld not found.\n", asLong(stationId));
        return false;
    }
    bool ok = deleteStationRows(db, table, stationId, errors);
    ok = insertRows(db, table, count, fill, errors) && ok;
    return s.commitIf(ok);
}

std::unique_ptr<rowset> openStationRows(database& db, table_id table, int32_t stationId, const char* order,
                                        message_sink& errors) {
    db_status status;
    std::unique_ptr<rowset> rows =
        db.openTable(table, strprintf("[ID] = %ld ORDER BY %s", asLong(stationId), order), "", status);
    if (!rows) {
        errors.errorf("ERROR, unable to open table [%s]\n", tableName(table));
        appendStatusText(status, errors);
    }
    return rows;
}

// Whole numbers and reals of a line, split at blanks and tabs; false when a token
// is not a finite number ("nan" or "inf" would empty a station's history on saving).
bool readNumbers(std::string_view text, std::vector<double>& values) {
    values.clear();
    for (std::string_view token : splitTokenViews(text)) {
        double v = 0;
        if (!readFiniteNumber(token, v)) return false;
        values.push_back(v);
    }
    return true;
}

// Years of weather history: four digits at most, as the model's files write them.
constexpr int kFirstWeatherYear = 0, kLastWeatherYear = 9999;
bool validYear(double year) {
    return year >= kFirstWeatherYear && year <= kLastWeatherYear && year == std::trunc(year);
}

// The model's monthly layout "%-6s%4d" then twelve "%7.2f" fields; wide values may
// touch each other, so the columns are the fallback when splitting at blanks fails.
bool readMonthlyColumns(std::string_view line, std::vector<double>& values) {
    constexpr size_t kFirst = 10, kWidth = 7;
    if (line.size() < kFirst + 11 * kWidth + 1) return false;
    values.clear();
    double year = 0;
    if (!readFiniteNumber(trim(line.substr(6, 4)), year)) return false;
    values.push_back(year);
    for (size_t m = 0; m < 12; ++m) {
        std::string_view field = trim(line.substr(kFirst + m * kWidth, kWidth));
        double v = 0;
        if (!readFiniteNumber(field, v)) return false;
        values.push_back(v);
    }
    return true;
}

bool isBlank(std::string_view line) {
    return std::all_of(line.begin(), line.end(), [](char c) { return std::isspace(static_cast<unsigned char>(c)); });
}

}  // namespace

weather_month_record& weather_monthly_year::monthRecord(int month) {
    for (weather_month_record& m : months)
        if (m.month == month) return m;
    weather_month_record added;
    added.month = static_cast<int16_t>(month);
    months.push_back(added);
    return months.back();
}

weather_monthly_year& tellura_weather_station::monthlyYear(int year) {
    for (weather_monthly_year& y : monthly)
        if (y.year == year) return y;
    monthly.push_back({static_cast<int16_t>(year), {}});
    return monthly.back();
}

weather_daily_year& tellura_weather_station::dailyYear(int year) {
    for (weather_daily_year& y : daily)
        if (y.year == year) return y;
    daily.push_back({static_cast<int16_t>(year), {}});
    return daily.back();
}

bool tellura_weather_station::setClimateMean(std::string_view name, double value, message_sink& errors) {
    for (const climate_series& series : kClimateSeries) {
        field_setter setter(name, value, errors);
        int index = setter.locate1(series.name, 12);
        if (index == field_setter::kNoMatch) continue;
        if (index >= 0) {
            means[static_cast<size_t>(index)].*series.member = static_cast<float>(value);
            hasMeans = true;
        }
        return true;
    }
    return false;
}

tellura_weather_station* tellura_weather_stations::find(int32_t id) {
    for (tellura_weather_station& s : stations)
        if (s.id == id) return &s;
    return nullptr;
}

const tellura_weather_station* tellura_weather_stations::find(int32_t id) const {
    for (const tellura_weather_station& s : stations)
        if (s.id == id) return &s;
    return nullptr;
}

// --- Storage ---------------------------------------------------------------

bool loadWeatherStations(database& db, tellura_weather_stations& list, message_sink& errors) {
    list.stations.clear();
    db_status status;
    std::unique_ptr<rowset> rows = db.openTable(table_id::weather_stations, "", "ID ASC", status);
    if (!rows) {
        errors.errorf("ERROR, unable to open table [%s]\n", tableName(table_id::weather_stations));
        appendStatusText(status, errors);
        return false;
    }
    const table_columns& stationColumn = stationColumns();
    db_status s;
    for (s = rows->moveFirst(); s.ok(); s = rows->moveNext()) {
        tellura_weather_station station;
        station.id = rows->row().integer(stationColumn["ID"]);
        station.description = rows->row().text(stationColumn["Description"]);
        list.stations.push_back(std::move(station));
    }
    if (!readToTheEnd(s, tableName(table_id::weather_stations), errors)) return false;

    rows = db.openTable(table_id::weather_averages, "", "", status);
    if (!rows) {
        errors.errorf("ERROR, unable to open table [%s]\n", tableName(table_id::weather_averages));
        appendStatusText(status, errors);
        return false;
    }
    const table_columns& c = meansColumns();
    bool ok = true;
    for (s = rows->moveFirst(); s.ok(); s = rows->moveNext()) {
        const table_record& row = rows->row();
        tellura_weather_station* station = list.find(row.integer(c["ID"]));
        if (!station) continue;  // means of a deleted station
        int month = row.integer(c["Month"]);
        if (month < 1 || month > 12) {
            errors.errorf("ERROR, month out of bounds in table [%s]\n", tableName(table_id::weather_averages));
            ok = false;
            continue;
        }
        meansMembers(station->means[static_cast<size_t>(month - 1)], c.reading(row));
        station->hasMeans = true;
    }
    return readToTheEnd(s, tableName(table_id::weather_averages), errors) && ok;
}

namespace {

bool emptyTable(database& db, table_id table, message_sink& errors) {
    if (db.execute(strprintf("DELETE FROM `%s`", tableName(table))).ok()) return true;
    errors.errorf("ERROR, unable to delete from [%s]\n", tableName(table));
    return false;
}

// Inserts the station rows and the means of the stations that have them; the
// caller has deleted what they replace.
bool insertStations(database& db, const std::vector<const tellura_weather_station*>& stations, message_sink& errors) {
    const table_columns& stationColumn = stationColumns();
    bool ok = insertRows(
        db, table_id::weather_stations, stations.size(),
        [&](size_t i, table_record& row) {
            row.setNumber(stationColumn["ID"], stations[i]->id);
            row.setText(stationColumn["Description"], stations[i]->description);
        },
        errors);
    std::vector<std::pair<const tellura_weather_station*, size_t>> means;  // (station, month index)
    for (const tellura_weather_station* s : stations)
        if (s->hasMeans)  // no means yet: a site file import fills them later
            for (size_t m = 0; m < 12; ++m) means.emplace_back(s, m);
    const table_columns& c = meansColumns();
    return insertRows(
               db, table_id::weather_averages, means.size(),
               [&](size_t i, table_record& row) {
                   row.setNumber(c["ID"], means[i].first->id);
                   row.setNumber(c["Month"], static_cast<double>(means[i].second + 1));
                   meansMembers(means[i].first->means[means[i].second], c.writing(row));
               },
               errors) &&
           ok;
}

}  // namespace

bool saveWeatherStation(database& db, const tellura_weather_station& station, message_sink& errors) {
    store_session s(db, errors);
    if (!s.ok()) return false;
    bool ok = deleteStationRows(db, table_id::weather_stations, station.id, errors);
    ok = deleteStationRows(db, table_id::weather_averages, station.id, errors) && ok;
    ok = insertStations(db, {&station}, errors) && ok;
    return s.commitIf(ok);
}

bool saveWeatherStations(database& db, const tellura_weather_stations& list, message_sink& errors) {
    store_session s(db, errors);
    if (!s.ok()) return false;
    bool ok = emptyTable(db, table_id::weather_stations, errors);
    ok = emptyTable(db, table_id::weather_averages, errors) && ok;
    std::vector<const tellura_weather_station*> all;
    for (const tellura_weather_station& station : list.stations) all.push_back(&station);
    ok = insertStations(db, all, errors) && ok;
    return s.commitIf(ok);
}

bool deleteWeatherStation(database& db, int32_t stationId, message_sink& errors) {
    store_session s(db, errors);
    if (!s.ok()) return false;
    bool ok = true;
    for (table_id table : {table_id::weather_stations, table_id::weather_averages, table_id::weather_historical_monthly,
                           table_id::weather_historical_daily})
        ok = deleteStationRows(db, table, stationId, errors) && ok;
    return s.commitIf(ok);
}

bool loadMonthlyHistory(database& db, tellura_weather_station& station, message_sink& errors) {
    station.monthly.clear();
    const table_id table = table_id::weather_historical_monthly;
    std::unique_ptr<rowset> rows = openStationRows(db, table, station.id, "[Year], [Month]", errors);
    if (!rows) return false;
    const table_columns& c = monthlyColumns();
    bool ok = true;
    db_status s;
    for (s = rows->moveFirst(); s.ok(); s = rows->moveNext()) {
        const table_record& row = rows->row();
        int month = row.integer(c["Month"]);
        if (month < 1 || month > 12) {
            errors.errorf("ERROR, month out of bounds in table [%s]\n", tableName(table));
            ok = false;
            continue;
        }
        weather_month_record m;
        m.month = static_cast<int16_t>(month);
        monthMembers(m, c.reading(row));
        int year = row.integer(c["Year"]);
        if (station.monthly.empty() || station.monthly.back().year != year)
            station.monthly.push_back({static_cast<int16_t>(year), {}});
        station.monthly.back().months.push_back(m);
    }
    return readToTheEnd(s, tableName(table), errors) && ok;
}

bool loadDailyHistory(database& db, tellura_weather_station& station, message_sink& errors) {
    station.daily.clear();
    std::unique_ptr<rowset> rows =
        openStationRows(db, table_id::weather_historical_daily, station.id, "[Year], [Month], [Day]", errors);
    if (!rows) return false;
    const table_columns& c = dailyColumns();
    db_status s;
    for (s = rows->moveFirst(); s.ok(); s = rows->moveNext()) {
        const table_record& row = rows->row();
        weather_day_record d;
        dayMembers(d, c.reading(row));
        if (station.daily.empty() || station.daily.back().year != d.year) station.daily.push_back({d.year, {}});
        station.daily.back().days.push_back(d);
    }
    return readToTheEnd(s, tableName(table_id::weather_historical_daily), errors);
}

bool saveMonthlyHistory(database& db, const tellura_weather_station& station, message_sink& errors) {
    std::vector<std::pair<int16_t, const weather_month_record*>> flat;
    for (const weather_monthly_year& y : station.monthly)
        for (const weather_month_record& m : y.months) flat.emplace_back(y.year, &m);
    const table_columns& c = monthlyColumns();
    return replaceHistory(
        db, table_id::weather_historical_monthly, station.id, flat.size(),
        [&](size_t i, table_record& row) {
            const weather_month_record& m = *flat[i].second;
            row.setNumber(c["ID"], station.id);
            row.setNumber(c["Year"], flat[i].first);
            row.setNumber(c["Month"], m.month);
            monthMembers(m, c.writing(row));
        },
        errors);
}

bool saveDailyHistory(database& db, const tellura_weather_station& station, message_sink& errors) {
    std::vector<const weather_day_record*> flat;
    for (const weather_daily_year& y : station.daily)
        for (const weather_day_record& d : y.days) flat.push_back(&d);
    const table_columns& c = dailyColumns();
    return replaceHistory(
        db, table_id::weather_historical_daily, station.id, flat.size(),
        [&](size_t i, table_record& row) {
            row.setNumber(c["ID"], station.id);
            dayMembers(*flat[i], c.writing(row));
        },
        errors);
}

// --- Weather files -----------------------------------------------------------

namespace {

// The keyword's fourth letter names the series: preC, tmiN, tmaX.
float weather_month_record::*monthlySeries(std::string_view keyword) {
    if (keyword.size() < 4) return nullptr;
    switch (std::toupper(static_cast<unsigned char>(keyword[3]))) {
        case 'C':
            return &weather_month_record::precip;
        case 'N':
            return &weather_month_record::tmn2m;
        case 'X':
            return &weather_month_record::tmx2m;
        default:
            return nullptr;
    }
}

}  // namespace

bool readMonthlyWeatherFile(const std::string& path, tellura_weather_station& station, message_sink& errors) {
    std::string text;
    if (!readTextFile(path, text, errors, strprintf("ERROR, unable to open weather file: \"%s\"\n", path.c_str())))
        return false;
    // Read into a copy: a file with any bad line leaves the station as it was.
    tellura_weather_station read = station;
    int rows = 0;
    long lineNumber = 0;
    std::set<std::pair<int, int>> records;  // (year, month) records set by this import
    bool ok = true;
    std::vector<double> values;
    forEachLine(text, [&](std::string_view line) {
        ++lineNumber;
        if (isBlank(line)) return;
        size_t start = line.find_first_not_of(" \t");
        size_t end = line.find_first_of(" \t", start);
        std::string_view keyword =
            line.substr(start, end == std::string_view::npos ? line.size() - start : end - start);
        float weather_month_record::*series = monthlySeries(keyword);
        if (!series) {
            errors.errorf("ERROR, unknown text in weather file: \"%.*s\"\nFile: \"%s\", line %ld\n",
                          static_cast<int>(line.size()), line.data(), path.c_str(), lineNumber);
            ok = false;
            return;
        }
        std::string_view numbers = end == std::string_view::npos ? std::string_view() : line.substr(end);
        if ((!(readNumbers(numbers, values) && values.size() == 13) && !readMonthlyColumns(line, values)) ||
            !validYear(values[0])) {
            errors.errorf(
                "ERROR, a year (%d to %d) and twelve monthly values expected in weather file: \"%.*s\"\nFile: "
                "\"%s\", line %ld\n",
                kFirstWeatherYear, kLastWeatherYear, static_cast<int>(line.size()), line.data(), path.c_str(),
                lineNumber);
            ok = false;
            return;
        }
        int year = static_cast<int>(values[0]);
        weather_monthly_year& y = read.monthlyYear(year);
        for (int month = 1; month <= 12; ++month) {
            y.monthRecord(month).*series = static_cast<float>(values[static_cast<size_t>(month)]);
            records.insert({year, month});
        }
        ++rows;
    });
    if (!ok) {
        errors.errorf("Nothing imported from \"%s\".\n", path.c_str());
        return false;
    }
    station = std::move(read);
    errors.notef("%d rows imported.\n", rows);
    errors.notef("Imported %d records from \"%s\".\n", static_cast<int>(records.size()), path.c_str());
    return true;
}

bool readDailyWeatherFile(const std::string& path, tellura_weather_station& station, message_sink& errors) {
    std::string text;
    if (!readTextFile(path, text, errors, strprintf("ERROR, unable to open weather file: \"%s\"\n", path.c_str())))
        return false;
    return readDailyWeatherText(text, path, station, errors);
}

namespace {

// A day already held is replaced, so importing a file twice does not double it.
void storeDay(weather_daily_year& y, const weather_day_record& d) {
    auto same = [&](const weather_day_record& held) { return held.month == d.month && held.day == d.day; };
    if (!y.days.empty() && same(y.days.back())) {
        y.days.back() = d;
        return;
    }
    auto found = std::find_if(y.days.begin(), y.days.end(), same);
    if (found != y.days.end()) *found = d;
    else y.days.push_back(d);
}

// Compared as read: a huge number is out of range, not cast into one.
bool validDate(double day, double month) { return month >= 1 && month < 13 && day >= 1 && day < 32; }

}  // namespace

bool readDailyWeatherText(std::string_view text, const std::string& path, tellura_weather_station& target,
                          message_sink& errors) {
    if (!checkTextLimits(text, path, errors)) return false;
    // Read into a copy: a file with any bad line leaves the station's history as it was.
    tellura_weather_station station = target;
    long days = 0, firstYear = 999999, lastYear = -999999, lineNumber = 0;
    bool ok = true;
    std::vector<double> v;
    std::unordered_map<int, size_t> yearIndex;  // year -> position in station.daily
    for (size_t i = 0; i < station.daily.size(); ++i) yearIndex[station.daily[i].year] = i;
    forEachLine(text, [&](std::string_view line) {
        ++lineNumber;
        if (isBlank(line)) return;
        bool readable = readNumbers(line, v) && v.size() >= 7 && v.size() <= 10 && validYear(v[2]);
        if (!readable || !validDate(v[0], v[1])) {
            errors.errorf(
                "ERROR, line %ld of daily weather file \"%s\" is not \"day month year day-of-year tmax tmin "
                "precipitation [solrad rhumid windsp]\": \"%.*s\"\n",
                lineNumber, path.c_str(), static_cast<int>(line.size()), line.data());
            ok = false;
            return;
        }
        weather_day_record d;
        d.day = static_cast<int16_t>(v[0]);
        d.month = static_cast<int16_t>(v[1]);
        d.year = static_cast<int16_t>(v[2]);
        d.tmx2m = static_cast<float>(v[4]);
        d.tmn2m = static_cast<float>(v[5]);
        d.precip = static_cast<float>(v[6]);
        if (v.size() > 7) d.solrad = static_cast<float>(v[7]);
        if (v.size() > 8) d.rhumid = static_cast<float>(v[8]);
        if (v.size() > 9) d.windsp = static_cast<float>(v[9]);
        auto [where, added] = yearIndex.try_emplace(d.year, station.daily.size());
        if (added) station.daily.push_back({d.year, {}});
        storeDay(station.daily[where->second], d);
        ++days;
        firstYear = std::min<long>(firstYear, d.year);
        lastYear = std::max<long>(lastYear, d.year);
    });
    if (!ok) {
        errors.errorf("Nothing imported from \"%s\".\n", path.c_str());
        return false;
    }
    target = std::move(station);
    errors.notef("%ld days read, from years %ld to %ld.\n", days, firstYear, lastYear);
    return true;
}

// --- Text form -----------------------------------------------------------------

void appendClimateMeansText(const tellura_weather_station& station, std::string& text) {
    appendf(text, "Weather ID\t%ld\t%s\n", asLong(station.id), station.description.c_str());
    for (const climate_series& series : kClimateSeries) {
        text += series.label;
        // Adding zero turns a stored -0 into 0, which is what the user typed.
        for (const weather_month_means& m : station.means)
            appendf(text, "\t%g", static_cast<double>(m.*series.member) + 0.0);
        text += "\n";
    }
}

std::string deleteDailyRecordQuestion(int32_t stationId, const weather_day_record& day) {
    return strprintf("Delete %ld %04d-%02d-%02d ?", asLong(stationId), day.year, day.month, day.day);
}

}  // namespace sb
