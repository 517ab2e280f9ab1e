// Every subcommand of the soilbench program, run as a user would run it.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "cli_fixture.h"
#include "db/database.h"

namespace fs = std::filesystem;
using sbtest::runSoilbench;

namespace {

TEST_F(CliTest, NewListCopyDeleteAndShow) {
    auto created = run({"new", project});
    EXPECT_EQ(created.exitCode, 0) << created.err;
    auto listed = run({"list", project});
    EXPECT_EQ(listed.exitCode, 0);
    EXPECT_THAT(listed.out, HasSubstr("    1     1      1       1  Default record\n"));

    EXPECT_EQ(run({"copy", project, "--id", "1", "--to", "7"}).exitCode, 0);
    listed = run({"list", project, "--ids", "5-9"});
    EXPECT_THAT(listed.out, HasSubstr("    1     7 "));
    EXPECT_THAT(listed.out, Not(HasSubstr("    1     1 "))) << "the ID list must filter";

    EXPECT_EQ(run({"delete", project, "--id", "7"}).exitCode, 0);
    listed = run({"list", project, "--where", "ID = 7"});
    EXPECT_THAT(listed.out, Not(HasSubstr("     7 ")));

    // The record text needs the record's weather station in the project.
    auto shown = run({"show", project, "--id", "1"});
    EXPECT_EQ(shown.exitCode, 0);
    EXPECT_TRUE(shown.out.empty());
    EXPECT_THAT(shown.err, HasSubstr("WARNING, weather station 1 of record 1 is not in the project"));
    fs::copy_file(demoSetup() + "/demo.wth", dir.file("w.wth"));
    EXPECT_EQ(run({"import", "weather-daily", project, dir.file("w.wth"), "--station", "1"}).exitCode, 0);
    shown = run({"show", project, "--id", "1"});
    EXPECT_THAT(shown.out, StartsWith("Soilbench Record\t\n1\nSoil ID\t1\n"));
    EXPECT_THAT(shown.out, HasSubstr("Weather ID\t1\t"));
}

TEST_F(CliTest, ExitStatusTellsUsageErrorsFromFailedOperations) {
    auto version = run({"--version"});  // the build's version, and no command needed
    EXPECT_EQ(version.exitCode, 0) << version.err;
    EXPECT_THAT(version.out, StartsWith("soilbench " SB_PROJECT_VERSION));
    EXPECT_THAT(version.out, Not(HasSubstr("Usage")));
    EXPECT_EQ(run({}).exitCode, 2);
    EXPECT_EQ(run({"list"}).exitCode, 2);
    EXPECT_EQ(run({"run", project, "--jobs", "0"}).exitCode, 2);
    auto missing = run({"list", dir.file("none.sbproj")});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.err, StartsWith("ERROR, unable to open database: " + dir.file("none.sbproj") + "\n"));
    ASSERT_EQ(run({"new", project}).exitCode, 0);
    auto noIds = run({"list", project, "--ids", ", ,"});
    EXPECT_EQ(noIds.exitCode, 2);
    EXPECT_THAT(noIds.err, HasSubstr("names no record"));
    for (const char* sub : {"new", "import", "export", "list", "show", "copy", "delete", "prepare", "run", "plot",
                            "read-bin", "config", "demo"}) {
        auto help = run({sub, "--help"});
        EXPECT_EQ(help.exitCode, 0) << sub;
        EXPECT_THAT(help.out, HasSubstr("Usage")) << sub;
    }
}

TEST_F(CliTest, ImportsAndOptionListExport) {
    ASSERT_EQ(run({"new", project}).exitCode, 0);
    auto crops = run({"import", "option-list", project, "crop", demoSetup() + "/crop.100"});
    EXPECT_EQ(crops.exitCode, 0) << crops.err;
    EXPECT_THAT(crops.out, HasSubstr("Imported 3 records and updated 0 records from"));
    auto exported = run({"export", "option-list", project, "crop", dir.file("crop4.100"), "--version", "4"});
    EXPECT_EQ(exported.exitCode, 0) << exported.err;
    std::string text = sbtest::readFile(dir.file("crop4.100"));
    EXPECT_THAT(text, StartsWith("WWHT  Winter wheat (demo values)\n0.55000        PRDX(1)\n")) << text.substr(0, 80);
    EXPECT_EQ(run({"import", "option-list", project, "grass", dir.file("crop4.100")}).exitCode, 2);

    auto soil = run({"import", "soil-layers", project, demoSetup() + "/soils.in", "--soil", "3"});
    EXPECT_EQ(soil.exitCode, 0) << soil.err;
    EXPECT_THAT(soil.out, HasSubstr("Imported 6 layers into soil 3."));

    auto averages = run({"import", "weather-averages", project, demoSetup() + "/demo-site.100", "--station", "4"});
    EXPECT_EQ(averages.exitCode, 0) << averages.err;

    auto runFiles = run({"import", "run-files", project, demoSetup(), "--id", "9", "--version", "4"});
    EXPECT_EQ(runFiles.exitCode, 0) << runFiles.err;
    EXPECT_THAT(run({"list", project}).out, HasSubstr("    2     9 "));

    // Without --id the next free ID; an ID in use only with --force.
    struct {
        std::vector<std::string> extra;
        int exitCode;
        std::string said;
    } imports[] = {
        {{}, 0, "as record 10 (Diurna 4.5, release profile \"diurna45\")."},
        {{"--id", "10", "--force"}, 0, "as record 10 (Diurna 4.5, release profile \"diurna45\")."},
    };
    for (const auto& i : imports) {
        std::vector<std::string> args = {"import", "run-files", project, demoSetup(), "--version", "4"};
        args.insert(args.end(), i.extra.begin(), i.extra.end());
        auto imported = run(args);
        EXPECT_EQ(imported.exitCode, i.exitCode) << imported.err;
        EXPECT_THAT((imported.out + imported.err), HasSubstr(i.said)) << imported.out << imported.err;
    }
    // Records 9 and 10, described by the schedule; 10 was replaced, not added.
    const std::string listed = run({"list", project}).out;
    size_t described = 0;
    for (size_t at = 0; (at = listed.find("  Demo cropland\n", at)) != std::string::npos; ++at) ++described;
    EXPECT_EQ(described, 2u) << listed;
}

TEST_F(CliTest, PrepareWritesExactlyTheRunDirectoryFiles) {
    makeRunnableProject();  // record 1 names station 1: the imported station is 2
    auto prepared = run({"prepare", project, "--id", "2", "--version", "4", "--dir", dir.file("rd")});
    EXPECT_EQ(prepared.exitCode, 0) << prepared.err;
    std::set<std::string> files;
    for (const auto& entry : fs::directory_iterator(dir.file("rd"))) files.insert(entry.path().filename());
    std::set<std::string> expected{"fix.100",  "sbsite.100", "sb.sch",     "crop.100",    "cult.100",    "harv.100",
                                   "graz.100", "irri.100",   "fert.100",   "omad.100",    "tree.100",    "trem.100",
                                   "fire.100", "soils.in",   "sitepar.in", "outfiles.in", "sb000002.wth"};
    EXPECT_EQ(files, expected);

    prepared = run({"prepare", project, "--id", "2", "--version", "1", "--dir", dir.file("rd1")});
    files.clear();
    for (const auto& entry : fs::directory_iterator(dir.file("rd1"))) files.insert(entry.path().filename());
    EXPECT_TRUE(files.count("sb.evt") && !files.count("sb.sch") && !files.count("soils.in")) << prepared.err;
}

TEST_F(CliTest, RunExportPlotAndReadBin) {
    makeRunnableProject();
    ASSERT_EQ(run({"config", "--set", "Settings/KeepRunFolders=1"}).exitCode, 0);
    auto ran = run({"run", project, "--ids", "2", "--jobs", "1"});
    EXPECT_EQ(ran.exitCode, 0) << ran.err;
    EXPECT_THAT(ran.out, HasSubstr("1 records run: 1 good, 0 failed."));
    EXPECT_THAT(ran.out, HasSubstr("2:"));
    EXPECT_THAT(ran.out, HasSubstr("Elapsed: "));

    auto exported = run({"export", project, "--id", "2", "--table", "monthly", "--csv", dir.file("m.csv")});
    EXPECT_EQ(exported.exitCode, 0) << exported.err;
    std::string csv = sbtest::readFile(dir.file("m.csv"));
    EXPECT_THAT(csv, StartsWith("ID,Year,Month,crpval,agcacc,agcmth,")) << csv.substr(0, 60);
    EXPECT_GT(std::count(csv.begin(), csv.end(), '\n'), 100);

    auto plotted = run(
        {"plot", project, "--id", "2", "--table", "monthly", "--var", "somsc,clittr(1,1)", "--png", dir.file("c.png")});
    EXPECT_EQ(plotted.exitCode, 0) << plotted.err;
    EXPECT_EQ(sbtest::readFile(dir.file("c.png")).substr(1, 3), "PNG");
    auto badVar =
        run({"plot", project, "--id", "2", "--table", "monthly", "--var", "nosuch", "--png", dir.file("d.png")});
    EXPECT_EQ(badVar.exitCode, 1);
    EXPECT_THAT(badVar.err, HasSubstr("\"nosuch\" is not a variable of the monthly output"));

    // The run's folder was kept as asked: the only one in the runs folder.
    std::string runFolder;
    for (const auto& entry : fs::directory_iterator(dir.file("soilbench/runs"))) runFolder = entry.path();
    EXPECT_THAT(fs::path(runFolder).filename().string(), StartsWith("p-2-")) << runFolder;
    auto bin = run({"read-bin", runFolder + "/sb.bin", "--version", "4", "--monthly"});
    EXPECT_EQ(bin.exitCode, 0) << bin.err;
    EXPECT_THAT(bin.out, StartsWith("ID,Year,Month,"));
    EXPECT_THAT(bin.err, HasSubstr("records read, from years"));
    auto noLayout = run({"read-bin", runFolder + "/sb.bin", "--version", "3"});
    EXPECT_EQ(noLayout.exitCode, 1);
    EXPECT_THAT(noLayout.err,
                HasSubstr("ERROR, no binary layout is known for \"Tellura 4.5\" (version 3), so its binary "
                          "output file \"" +
                          runFolder + "/sb.bin\" (records of 3212 bytes) cannot be read."));
}

TEST_F(CliTest, RunReportsPrecheckFailuresAndStops) {
    // A new project's default record names soil 1 and station 1, which it does not hold.
    ASSERT_EQ(run({"new", project}).exitCode, 0);
    auto ran = run({"run", project, "--stop-on-precheck"});
    EXPECT_EQ(ran.exitCode, 1);
    EXPECT_THAT(ran.err, HasSubstr("ERROR, No soil record to run.\n"));
    EXPECT_THAT(ran.err, HasSubstr("Stop due to precheck error at 1\n"));
    EXPECT_THAT(ran.out, HasSubstr("1 records run: 0 good, 1 failed."));
}

// Status shows a failed run's first error, worded "ERROR" or not (here the
// list utility that cannot start, before the missing list file's ERROR). A
// project whose history is older than that column shows its first "ERROR"
// line: given the column when opened, or read without it when read-only.
TEST_F(CliTest, StatusShowsTheFirstErrorOfAFailedRun) {
    makeRunnableProject();
    ASSERT_EQ(run({"config", "--set", "Files/Diurna 4.5 LIST100=" + dir.file("model/none")}).exitCode, 0);
    ASSERT_EQ(run({"run", project, "--ids", "2"}).exitCode, 1);
    const std::string older = dir.file("older/p.sbproj"), readOnly = dir.file("ro/p.sbproj");
    for (const std::string& path : {older, readOnly}) {
        fs::create_directories(fs::path(path).parent_path());
        fs::copy_file(project, path);
        sb::message_sink errors;
        auto db = sb::database::open(path, errors);
        ASSERT_TRUE(db && db->execute("ALTER TABLE [Run History] DROP COLUMN [First Error]").ok()) << errors;
    }
    fs::permissions(dir.file("ro"), fs::perms::owner_write, fs::perm_options::remove);
    const std::pair<std::string, std::string> cases[] = {
        {project, "Unable to create process, code=2.\n"},
        {older, "ERROR, unable to open LIS file: " + dir.file("soilbench/runs/p-2-")},
        {readOnly, "ERROR, unable to open LIS file: " + dir.file("soilbench/runs/p-2-")},
    };
    for (const auto& [path, message] : cases) {
        auto status = run({"status", path, "--ids", "2", "--format", "tsv"});
        EXPECT_EQ(status.exitCode, 0) << status.err;
        EXPECT_THAT(status.out.substr(status.out.rfind('\t') + 1), StartsWith(message)) << path;
    }
    fs::permissions(dir.file("ro"), fs::perms::owner_write, fs::perm_options::add);
}

TEST_F(CliTest, ConfigReadsAndChecksSettings) {
    EXPECT_EQ(run({"config", "--get", "Settings/RunTimeout"}).out, "250000\n");
    EXPECT_EQ(run({"config", "--set", "Settings/RunTimeout=1000"}).exitCode, 0);
    EXPECT_EQ(run({"config", "--get", "Settings/RunTimeout"}).out, "1000\n");
    EXPECT_EQ(run({"config", "--set", "Settings/RunTimeout=abc"}).exitCode, 1);
    EXPECT_EQ(run({"config", "--set", "Settings/RunTimeout=5000001"}).exitCode, 1);
    EXPECT_EQ(run({"config", "--get", "Settings/RunTimeout"}).out, "1000\n");
    EXPECT_EQ(run({"config", "--get", "Settings/NoSuchKey"}).exitCode, 1);
    auto listed = run({"config", "--list"});
    EXPECT_THAT(listed.out, HasSubstr("Files/Diurna 4.5 LIST100="));
    EXPECT_THAT(listed.out, HasSubstr("Settings/Outfile28=1\n"));
}

}  // namespace

namespace {
std::map<std::string, std::string> filesOf(const std::string& dir) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(dir))
        files[entry.path().filename()] = sbtest::readFile(entry.path());
    return files;
}
}  // namespace

// The demo's records, moved into a fresh project through a site archive, give
// the same run directories and, run again, the same outputs.
TEST_F(CliTest, ArchiveOfTheDemoGivesTheSameRunDirectoriesAndOutputs) {
    ASSERT_EQ(run({"demo", dir.file("demo")}).exitCode, 0);
    const std::string demo = dir.file("demo/demo.sbproj"), archive = dir.file("demo.esa");
    auto exported = run({"export", "archive", demo, archive});
    EXPECT_EQ(exported.out, "Exported 24 records to \"" + archive + "\".\n") << exported.err;
    configureStandIn();
    ASSERT_EQ(run({"config", "--set", "Settings/Outfile13=1"}).exitCode, 0);  // year_summary.out, as the demo
    ASSERT_EQ(run({"delete", project, "--id", "1"}).exitCode, 0);  // the new project's record uses the demo's IDs
    auto imported = run({"import", "archive", project, archive});
    ASSERT_EQ(imported.exitCode, 0) << imported.err;
    EXPECT_EQ(imported.out, "Imported 24 records from \"" + archive + "\".\n");
    for (int id = 1; id <= 24; ++id) {
        const std::string n = std::to_string(id), a = dir.file("a" + n), b = dir.file("b" + n);
        ASSERT_EQ(run({"prepare", demo, "--id", n, "--version", "4", "--dir", a}).exitCode, 0);
        ASSERT_EQ(run({"prepare", project, "--id", n, "--version", "4", "--dir", b}).exitCode, 0);
        const auto before = filesOf(a), after = filesOf(b);
        EXPECT_EQ(before.size(), after.size()) << "record " << id;
        for (const auto& [name, text] : before)
            EXPECT_TRUE(after.count(name) && after.at(name) == text) << "record " << id << ": " << name;
    }
    auto ran = run({"run", project, "--jobs", "2"});
    ASSERT_EQ(ran.exitCode, 0) << ran.err;
    const std::vector<std::string> before = storedOutputs(demo);
    std::set<std::string> tableAndId;  // "<table>|<ID>": the demo stores annual and monthly rows of each record
    for (const std::string& row : before) tableAndId.insert(row.substr(0, row.find('|', row.find('|') + 1)));
    EXPECT_EQ(tableAndId.size(), 2u * 24u);
    EXPECT_TRUE(before == storedOutputs(project));
}
