// Nothing reported good that is not, and nothing lost: the real soilbench
// program under a locked project, a killed process, failed imports, bounds,
// bad text and wrong usage. Each case fails with a clear message and a
// non-zero exit status, and what the project held before is still there.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <thread>

#include "app/text_format.h"
#include "cli_fixture.h"
#include "db/database.h"
#include "records/option_lists.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"

namespace {

// What the imported demo project holds, read through the core.
struct project_state {
    long days = 0;                       // daily weather of station 1
    int layers = 0, numberOfLayers = 0;  // soil 1
    size_t crops = 0, soils = 0, stations = 0, records = 0;
    bool operator==(const project_state&) const = default;
};

// The soil and weather station of the demo record (ID 2), as the import numbered them.
sb::tellura_control_record demoRecord(sb::database& db) {
    sb::tellura_control_record record;
    sb::message_sink errors;
    EXPECT_TRUE(sb::loadControlRecord(db, 2, record, errors)) << errors;
    return record;
}

project_state stateOf(const std::string& path) {
    project_state state;
    sb::message_sink errors;
    auto db = sb::database::open(path, errors);
    EXPECT_TRUE(db) << errors;
    if (!db) return state;
    const sb::tellura_control_record record = demoRecord(*db);
    sb::tellura_weather_station station;
    station.id = record.weatherId();
    EXPECT_TRUE(sb::loadDailyHistory(*db, station, errors)) << errors;
    for (const auto& year : station.daily) state.days += static_cast<long>(year.days.size());
    sb::tellura_soils soils;
    EXPECT_TRUE(soils.load(*db, errors)) << errors;
    if (const sb::tellura_soil* soil = soils.find(record.soilId())) {
        state.layers = soil->layerCount;
        state.numberOfLayers = static_cast<int>(soil->value("Number of Layers"));
    }
    state.soils = soils.soils.size();
    sb::tellura_weather_stations stations;
    EXPECT_TRUE(sb::loadWeatherStations(*db, stations, errors)) << errors;
    state.stations = stations.stations.size();
    sb::db_status status;
    auto records = db->openTable(sb::table_id::control_records, "", "", status);
    for (sb::db_status s = records->moveFirst(); s.ok(); s = records->moveNext()) ++state.records;
    sb::option_lists lists;
    EXPECT_TRUE(lists.loadAll(*db, errors)) << errors;
    state.crops = lists.list(sb::option_kind::crop).size();
    return state;
}

class Reliability : public CliTest {
public:
    void SetUp() override {
        CliTest::SetUp();
        makeRunnableProject();
        before = stateOf(project);
        ASSERT_EQ(before.days, 7670);
        ASSERT_EQ(before.layers, 6);
        sb::message_sink errors;
        auto db = sb::database::open(project, errors);
        ASSERT_TRUE(db) << errors;
        const sb::tellura_control_record record = demoRecord(*db);
        station = std::to_string(record.weatherId());
        soil = std::to_string(record.soilId());
    }
    project_state before;
    std::string station, soil;  // the demo record's, as command arguments
};

// --- Locked project --------------------------------------------------------------

// Another program holds the project's write lock for the whole command: the
// command waits its time, then fails the save with the store's words.
TEST_F(Reliability, LockedProjectFailsTheSaveAndTheRecordAndChangesNothing) {
    sb::message_sink errors;
    auto other = sb::database::open(project, errors);
    ASSERT_TRUE(other) << errors;
    sb::session holder(*other);
    ASSERT_TRUE(holder.ok()) << holder.storeError();
    const std::string locked = "ERROR, unable to create session on database.\ndatabase is locked\n";

    sbtest::writeFile(dir.file("more.wth"), "1 1 2011 1 5.0 -1.0 0.0\n");
    auto imported = run({"import", "weather-daily", project, dir.file("more.wth"), "--station", station});
    EXPECT_EQ(imported.exitCode, 1);
    EXPECT_THAT(imported.err, HasSubstr(locked));

    auto ran = run({"run", project, "--ids", "2"});
    EXPECT_EQ(ran.exitCode, 1);
    EXPECT_THAT(ran.err, HasSubstr(locked));
    EXPECT_THAT(ran.out, HasSubstr("1 records run: 0 good, 1 failed."));
    holder.rollback();
    EXPECT_EQ(stateOf(project), before);
}

// --- Killed process during a save ------------------------------------------------

// A save killed at any moment leaves the project wholly as it was or wholly
// saved: sixty years of days into a station, or a whole run directory (soil,
// station with its days, option lists and record).
struct killed_save {
    const char* what;
    std::vector<std::string> args;
    bool (*whole)(const project_state& before, const project_state& after);
};

TEST_F(Reliability, ASaveKilledAtAnyMomentLeavesTheOldOrTheNewProject) {
    std::string days;
    for (int year = 2020; year < 2080; ++year)
        for (int month = 1; month <= 12; ++month)
            for (int day = 1; day <= 28; ++day)
                sb::appendf(days, "%d %d %d %d 10.5 -2.5 0.3\n", day, month, year, (month - 1) * 28 + day);
    sbtest::writeFile(dir.file("long.wth"), days);
    const killed_save saves[] = {
        {"daily weather",
         {"import", "weather-daily", project, dir.file("long.wth"), "--station", station},
         [](const project_state& b, const project_state& a) {
             project_state imported = b;
             imported.days += 60 * 336;
             return a == b || a == imported;
         }},
        {"run directory",
         {"import", "run-files", project, demoSetup(), "--schedule", "demo.sch", "--id", "3"},
         [](const project_state& b, const project_state& a) {
             project_state imported = b;
             ++imported.records, ++imported.soils, ++imported.stations;
             return a == b || a == imported;
         }},
    };
    for (const killed_save& save : saves) {
        for (int delayMs : {10, 30, 60, 100, 150, 200, 300, 450, 700, 3000}) {
            const project_state was = stateOf(project);
            pid_t pid = sbtest::startSoilbench(save.args, env, "/dev/null", "/dev/null");
            ASSERT_GT(pid, 0);
            std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
            const project_state now = stateOf(project);
            EXPECT_TRUE(save.whole(was, now))
                << save.what << ", killed after " << delayMs << " ms: " << now.days << " days, " << now.records
                << " records, " << now.soils << " soils, " << now.stations << " stations";
            if (!(now == was)) break;  // saved whole: a later kill finds nothing to break
        }
    }
}

// --- Failed imports ---------------------------------------------------------------

// Each import with a bad file, and with /dev/zero (no line end at all): the
// import stops with its message and the project holds what it held.
TEST_F(Reliability, AFailedImportKeepsAllThatWasThere) {
    const std::string goodDay = "2 1 2011 2 5.0 -1.0 0.0\n";
    const std::string endless = "ERROR, line 1 of \"/dev/zero\" is longer than 1048576 characters.\n";
    const std::vector<std::string> daily{"weather-daily", "FILE", "--station", station},
        layers{"soil-layers", "FILE", "--soil", soil}, crops{"option-list", "crop", "FILE"},
        averages{"weather-averages", "FILE", "--station", station};
    const struct bad_import {
        const char* what;
        std::vector<std::string> args;       // FILE stands for the bad file
        std::optional<std::string> content;  // none: /dev/zero
        std::string message;
    } cases[] = {
        {"a nan day", daily, goodDay + "3 1 2011 3 nan -3.0 0.0\n", "ERROR, line 2 of daily weather file"},
        {"a cut day", daily, goodDay + "4 1 20", "ERROR, line 2 of daily weather file"},
        {"garbage layers", layers,
         "\x7f"
         "ELF\x02\x01garbage\n",
         "ERROR, line 1 of soil layer file"},
        {"an empty layer file", layers, "", "ERROR, no soil layers in soil file"},
        {"garbage crops", crops, "\x01\x02\x03\n", "Syntax error in cultivation parameter file.\nFile: \""},
        {"a crop value that is no number", crops, "WWHT\n-nan PRDX(1)\n",
         "ERROR, value \"-nan\" is not a number.\nFile: \""},
        {"no crops", crops, "", "ERROR, no option records in"},
        {"a site name without subscripts", averages, "Site\n1.5  PRECIP(-)\n2.5  PRECIP(99999999999999999999)\n",
         "ERROR, array subscript below 1: PRECIP(-)\n"},
        {"endless daily weather", daily, std::nullopt, endless},
        {"endless monthly weather", {"weather-monthly", "FILE", "--station", station}, std::nullopt, endless},
        {"endless averages", averages, std::nullopt, endless},
        {"endless layers", layers, std::nullopt, endless},
        {"endless crops", crops, std::nullopt, endless},
    };
    for (const bad_import& c : cases) {
        SCOPED_TRACE(c.what);
        const std::string file = c.content ? dir.file("bad.in") : "/dev/zero";
        if (c.content) sbtest::writeFile(file, *c.content);
        std::vector<std::string> args{"import", c.args[0], project};
        for (size_t i = 1; i < c.args.size(); ++i) args.push_back(c.args[i] == "FILE" ? file : c.args[i]);
        auto result = run(args);
        EXPECT_EQ(result.exitCode, 1) << result.err;
        EXPECT_THAT(result.err, HasSubstr(c.message));
        EXPECT_EQ(stateOf(project), before);
    }
}

// --- Bad text ---------------------------------------------------------------------

// A description or name with line breaks, tabs or other control characters
// never breaks the lines of a model file; a link in the run directory is
// replaced, its target left alone.
TEST_F(Reliability, TextNeverBreaksModelFilesAndLinksAreNotFollowed) {
    sbtest::writeFile(dir.file("crops.100"), "EVIL First line\x0bsecond\x01\n0.5   PRDX(1)\n");
    ASSERT_EQ(run({"import", "option-list", project, "crop", dir.file("crops.100")}).exitCode, 0);
    fs::create_directories(dir.file("rd"));
    sbtest::writeFile(dir.file("precious.100"), "the user's own file\n");
    fs::create_symlink(dir.file("precious.100"), dir.file("rd/crop.100"));
    auto prepared = run({"prepare", project, "--id", "2", "--version", "4", "--dir", dir.file("rd"), "--force"});
    EXPECT_EQ(prepared.exitCode, 0) << prepared.err;
    EXPECT_EQ(sbtest::readFile(dir.file("precious.100")), "the user's own file\n");
    EXPECT_FALSE(fs::is_symlink(dir.file("rd/crop.100")));
    const std::string crops = sbtest::readFile(dir.file("rd/crop.100"));
    EXPECT_THAT(crops, HasSubstr("EVIL  First line second \n")) << crops.substr(0, 200);
    for (char c : crops) EXPECT_TRUE(c == '\n' || static_cast<unsigned char>(c) >= 0x20) << int(c);
}

// A project in a write-protected folder is read as it stands; a save says why it cannot be made.
TEST_F(Reliability, AReadOnlyProjectIsListedShownAndExportedButNotChanged) {
    fs::create_directories(dir.file("ro"));
    fs::copy_file(project, dir.file("ro/p.sbproj"));
    const std::string readOnly = dir.file("ro/p.sbproj");
    chmod(dir.file("ro").c_str(), 0555);
    EXPECT_EQ(run({"list", readOnly}).exitCode, 0);
    EXPECT_EQ(run({"show", readOnly, "--id", "2"}).exitCode, 0);
    auto copied = run({"copy", readOnly, "--id", "2", "--to", "5"});
    EXPECT_EQ(copied.exitCode, 1);
    EXPECT_THAT(copied.err,
                HasSubstr("ERROR, unable to create session on database.\nThe project file is read-only, nothing "
                          "can be saved in it: " +
                          readOnly + " (its folder is write-protected)\n"));
    chmod(dir.file("ro").c_str(), 0755);
}

// --- Exit status --------------------------------------------------------------------

struct failing_command {
    const char* what;
    std::vector<std::string> args;
    int exitCode;
    std::string message;
};

TEST_F(Reliability, EveryFailureEndsWithAMessageAndANonZeroStatus) {
    sbtest::writeFile(dir.file("not-a-project.sbproj"), "just text\n");
    fs::copy_file(project, dir.file("no-table.sbproj"));
    {
        sb::message_sink errors;
        auto db = sb::database::open(dir.file("no-table.sbproj"), errors);
        ASSERT_TRUE(db->execute("DROP TABLE `Output Annual`").ok());
    }
    fs::create_directories(dir.file("full"));
    sbtest::writeFile(dir.file("full/mine.txt"), "mine\n");
    sbtest::writeFile(dir.file("notes.100"), "Crops to try\n  maize and beans\nSeeds ordered\n");
    // A run directory with a bad file stores nothing: no record, no soil, no lists.
    fs::copy(demoSetup(), dir.file("bad-run"));
    const std::string site = dir.file("bad-run/demo-site.100");
    sbtest::writeFile(site, sbtest::readFile(site) + "7.0  PRECIP(-)\n");
    const failing_command cases[] = {
        {"run files with a bad site file",
         {"import", "run-files", project, dir.file("bad-run"), "--schedule", "demo.sch", "--id", "3"},
         1,
         "ERROR, array subscript below 1: PRECIP(-)\nFile: \"" + site},
        // Numbers and IDs out of range are refused, not wrapped; "DROP TABLE" is never anything but a bad ID.
        {"daily years past 9999",
         {"run", project, "--daily-years", "1-2000000000"},
         2,
         "ERROR, --daily-years takes two years from 0 to 9999"},
        {"daily years past 64 bits",
         {"run", project, "--daily-years", "1990-99999999999999999999"},
         2,
         "ERROR, --daily-years takes two years"},
        {"daily years backwards",
         {"run", project, "--daily-years", "2000-1990"},
         2,
         "ERROR, --daily-years takes two years"},
        {"block past 32 bits",
         {"run", project, "--blocks", "4294967297"},
         2,
         "ERROR, --blocks takes block numbers from 1 to 32767"},
        {"SQL for an ID",
         {"run", project, "--ids", "1; DROP TABLE Crops"},
         2,
         "ERROR, \"1;\" in the ID list is not an ID"},
        {"letters for an ID", {"list", project, "--ids", "abc"}, 2, "ERROR, \"abc\" in the ID list is not an ID"},
        {"open range", {"list", project, "--ids", "5-"}, 2, "ERROR, \"5-\" in the ID list is not an ID"},
        {"negative ID", {"list", project, "--ids", "-3"}, 2, "ERROR, \"-3\" in the ID list is not an ID"},
        {"ID past 32 bits",
         {"list", project, "--ids", "4294967298"},
         2,
         "ERROR, \"4294967298\" in the ID list is past the largest ID"},
        {"option list missing",
         {"import", "option-list", project, "crop", dir.file("none.100")},
         1,
         "ERROR, unable to open file \""},
        {"option list a folder",
         {"import", "option-list", project, "crop", dir.path()},
         1,
         "ERROR, unable to open file \""},
        {"option list of text",
         {"import", "option-list", project, "crop", dir.file("notes.100")},
         1,
         "ERROR, option record \"Crops\" has no values.\nFile: \"" + dir.file("notes.100") + "\", line 1\n"},
        {"run: not a project", {"run", dir.file("not-a-project.sbproj")}, 1, "ERROR, unable to open database: "},
        {"run: a table missing",
         {"run", dir.file("no-table.sbproj"), "--ids", "2"},
         1,
         "ERROR, unable to delete from [Output Annual]\n"},
        {"delete: no such ID",
         {"delete", project, "--id", "99"},
         1,
         "ERROR, can't find record, ID=99, in [Control Records].\n"},
        {"export: no such ID",
         {"export", project, "--id", "99", "--table", "annual"},
         1,
         "ERROR, can't find record, ID=99, in [Control Records].\n"},
        {"new over a project",
         {"new", project},
         1,
         "ERROR, \"" + project +
             "\" exists already: give another name, or --force to replace it with a new empty project.\n"},
        {"copy onto a record",
         {"copy", project, "--id", "1", "--to", "2"},
         1,
         "ERROR, record 2 exists already: give another --to, or --force to replace it.\n"},
        {"run files onto a record",
         {"import", "run-files", project, demoSetup(), "--schedule", "demo.sch", "--id", "2"},
         1,
         "ERROR, record 2 exists already: give another --id, or --force to replace it.\n"},
        {"prepare into a full folder",
         {"prepare", project, "--id", "2", "--dir", dir.file("full")},
         1,
         "is not empty: give another --dir, or --force to write into it.\n"},
        {"prepare into no folder", {"prepare", project, "--id", "2", "--dir", ""}, 2, "ERROR, --dir names no folder"},
    };
    for (const failing_command& c : cases) {
        auto result = run(c.args);
        EXPECT_EQ(result.exitCode, c.exitCode) << c.what << ": " << result.err;
        EXPECT_THAT(result.err, HasSubstr(c.message)) << c.what << ": " << result.err;
    }
    EXPECT_EQ(sbtest::readFile(dir.file("full/mine.txt")), "mine\n");
    EXPECT_EQ(stateOf(project), before);
    EXPECT_THAT(run({"list", project}).out, HasSubstr("    2     2      2       2  Demo cropland"));
}

}  // namespace
