// soilbench: the command-line workbench. Every core operation of the desktop
// application is scriptable here; both programs share the same core library.
#include <CLI/CLI.hpp>

#include <QCoreApplication>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <memory>
#ifdef SB_HAVE_CHARTS
#include <QApplication>
#endif

#include "app/program_version.h"
#include "cli_options.h"

using namespace sbcli;

namespace {

// The records a command works on: an ID list or an SQL condition, not both.
void addSelection(CLI::App* cmd, record_selection& sel) {
    auto* ids = cmd->add_option("--ids", sel.ids, "record IDs and ranges, like \"1, 2, 5-9\"");
    auto* where = cmd->add_option("--where", sel.where, "an SQL condition on [Control Records]");
    ids->excludes(where);
}

// The model version a command works for, as its code; the help says what
// leaving it out means where a command has a default.
CLI::Option* addVersion(CLI::App* cmd, int& version, const std::string& help = "model version code 1-6") {
    return cmd->add_option("--version", version, help)->check(CLI::Range(1, 6));
}

// Charts are drawn with the graphical libraries (offscreen, no display needed);
// every other command runs without them.
bool wantsCharts(int argc, char** argv) {
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "plot") == 0 || std::strcmp(argv[i], "demo") == 0) return true;
    return false;
}

std::unique_ptr<QCoreApplication> makeQtApplication(int& argc, char** argv) {
#ifdef SB_HAVE_CHARTS
    if (wantsCharts(argc, argv)) {
        if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
        return std::make_unique<QApplication>(argc, argv);
    }
#endif
    return std::make_unique<QCoreApplication>(argc, argv);
}

// "soilbench 0.1.0 (git 1a2b3c4)" and the date of the sources on a second line.
std::string versionText() {
    std::string text = "soilbench " + sb::programVersion();
    if (!sb::programSourceDate().empty()) text += "\nSource date: " + sb::programSourceDate();
    return text;
}

// The end of the main help, laid out as the option lists are (the manual page
// is made from the help texts).
constexpr const char* kHelpFooter =
    "Environment:\n"
    "  SOILBENCH_PROFILE           the per-user profile to use instead of ~/.config/Varnak/Soilbench.ini\n"
    "  SOILBENCH_DATA_DIR          the folder of the files shipped with the program (help file, binary\n"
    "                              layouts, demo set-up) instead of ../share/soilbench beside the program\n"
    "\n"
    "Files:\n"
    "  ~/.config/Varnak/Soilbench.ini\n"
    "                              the per-user profile: model executables, run settings\n"
    "  ../share/soilbench          beside the program's folder (/usr/share/soilbench when installed from\n"
    "                              the package): help file, binary layouts, demo set-up\n"
    "  ../libexec/soilbench        the stand-in model the demo runs (it is not the model)\n"
    "\n"
    "Exit status:\n"
    "  0                           the operation succeeded\n"
    "  1                           the operation reported an error (messages on standard error)\n"
    "  2                           the command line was wrong\n";

// What the parsed command line asks for: set by the chosen command's callback.
using command_action = std::function<int()>;

// A command's options, parsed into one struct that lives as long as the
// program, and what runs them once the whole line has been parsed.
template <class Options>
std::shared_ptr<Options> runs(CLI::App* cmd, command_action& action, int (*command)(const Options&)) {
    auto opt = std::make_shared<Options>();
    cmd->callback([opt, command, &action] { action = [opt, command] { return command(*opt); }; });
    return opt;
}

constexpr const char* kOptionKinds = "crop cult fert fire graz harv irri omad tree trem";

void addNew(CLI::App& app, command_action& action) {
    auto* cmd = app.add_subcommand("new", "create a project with every table and a default record");
    auto opt = runs(cmd, action, cmdNew);
    cmd->add_option("PROJECT", opt->project,
                    "project file to create, or a postgresql:// URL of a database "
                    "(made if it does not exist; an existing one must hold no tables)")
        ->required();
    cmd->add_flag("--force", opt->force, "replace an existing file, losing everything in it");
}

void addCopyProject(CLI::App& app, command_action& action) {
    auto* cmd = app.add_subcommand("copy-project",
                                   "copy a whole project between files and PostgreSQL databases, in either direction");
    auto opt = runs(cmd, action, cmdCopyProject);
    cmd->add_option("SOURCE", opt->source, "the project to copy (file or postgresql:// URL)")->required();
    cmd->add_option("TARGET", opt->target, "where the copy goes (made if it does not exist)")->required();
    cmd->add_flag("--force", opt->force, "replace a target that already holds data");
}

void addImportRunFiles(CLI::App& import, command_action& action) {
    auto* cmd = import.add_subcommand("run-files", "import a whole run directory as one control record");
    auto opt = runs(cmd, action, cmdImportRunFiles);
    cmd->add_option("PROJECT", opt->project)->required();
    cmd->add_option("DIR", opt->dir, "the run directory")->required();
    cmd->add_option("--schedule", opt->schedule, "schedule file (default: the only .sch in DIR)");
    cmd->add_option("--id", opt->id, "ID of the new record (default: one past the highest)")
        ->check(CLI::Range(0, 2147483647));
    cmd->add_flag("--force", opt->force, "replace the record of that ID (and its outputs) if there is one");
    addVersion(cmd, opt->version,
               "model version the files are written for (default: that of the release profile they match, "
               "else the configured one)");
    cmd->add_option("--profile", opt->profile,
                    "release profile to read the files with (default: the one they match, else the version's "
                    "configured one)");
}

void addImportWeather(CLI::App& import, command_action& action) {
    auto* daily = import.add_subcommand("weather-daily", "import daily weather into a station");
    auto dailyOpt = runs(daily, action, cmdImportWeatherDaily);
    daily->add_option("PROJECT", dailyOpt->project)->required();
    daily->add_option("FILE", dailyOpt->file)->required();
    daily->add_option("--station", dailyOpt->station)->required();
    daily->add_option("--description", dailyOpt->description, "station description for a new station");
    auto* monthly = import.add_subcommand("weather-monthly", "import a monthly weather file into a station");
    auto monthlyOpt = runs(monthly, action, cmdImportWeatherMonthly);
    monthly->add_option("PROJECT", monthlyOpt->project)->required();
    monthly->add_option("FILE", monthlyOpt->file)->required();
    monthly->add_option("--station", monthlyOpt->station)->required();
    auto* averages =
        import.add_subcommand("weather-averages", "import a station's climate means from a <site>.100 file");
    auto averagesOpt = runs(averages, action, cmdImportWeatherAverages);
    averages->add_option("PROJECT", averagesOpt->project)->required();
    averages->add_option("SITEFILE", averagesOpt->file)->required();
    averages->add_option("--station", averagesOpt->station)->required();
}

void addImportOptionList(CLI::App& import, command_action& action) {
    auto* cmd = import.add_subcommand("option-list", "import a .100 option file into its list");
    auto opt = runs(cmd, action, cmdImportOptionList);
    cmd->add_option("PROJECT", opt->project)->required();
    cmd->add_option("KIND", opt->kind, std::string("one of: ") + kOptionKinds)->required();
    cmd->add_option("FILE", opt->file)->required();
}

void addImportSoilLayers(CLI::App& import, command_action& action) {
    auto* cmd = import.add_subcommand("soil-layers", "import a soil layer file (soils.in layout) into a soil");
    auto opt = runs(cmd, action, cmdImportSoilLayers);
    cmd->add_option("PROJECT", opt->project)->required();
    cmd->add_option("FILE", opt->file)->required();
    cmd->add_option("--soil", opt->soil)->required();
}

void addImportArchive(CLI::App& import, command_action& action) {
    auto* cmd = import.add_subcommand(
        "archive", "import a site archive (.esa): its records, with new IDs where the project uses theirs");
    auto opt = runs(cmd, action, cmdImportArchive);
    cmd->add_option("PROJECT", opt->project)->required();
    cmd->add_option("FILE", opt->file)->required();
}

void addImport(CLI::App& app, command_action& action) {
    auto* import = app.add_subcommand("import", "import files into a project");
    import->require_subcommand(1);
    for (auto add : {addImportRunFiles, addImportWeather, addImportOptionList, addImportSoilLayers, addImportArchive})
        add(*import, action);
}

void addExport(CLI::App& app, command_action& action) {
    auto* group = app.add_subcommand("export", "export a record's stored outputs, or an option list");
    auto outputs = std::make_shared<export_options>();
    group->add_option("PROJECT", outputs->project);
    group->add_option("--id", outputs->id, "control record ID");
    group->add_option("--table", outputs->table, "annual|monthly|daily|layers|end")
        ->check(CLI::IsMember({"annual", "monthly", "daily", "layers", "end"}));
    group->add_option("--csv", outputs->csv, "write CSV to this file instead of standard output");
    auto* optionList = group->add_subcommand("option-list", "export an option list as a .100 file");
    auto listOpt = runs(optionList, action, cmdExportOptionList);
    optionList->add_option("PROJECT", listOpt->project)->required();
    optionList->add_option("KIND", listOpt->kind, std::string("one of: ") + kOptionKinds)->required();
    optionList->add_option("FILE", listOpt->file)->required();
    addVersion(optionList, listOpt->version)->required();
    auto* archive = group->add_subcommand(
        "archive", "export records (all without --ids/--where) with everything they use as a site archive (.esa)");
    auto archiveOpt = runs(archive, action, cmdExportArchive);
    archive->add_option("PROJECT", archiveOpt->project)->required();
    archive->add_option("FILE", archiveOpt->file)->required();
    addSelection(archive, archiveOpt->selection);
    // Without a subcommand the group exports a record's stored outputs.
    group->callback([=, &action] {
        if (optionList->parsed() || archive->parsed()) return;
        if (outputs->project.empty() || outputs->table.empty() || outputs->id == 0)
            throw CLI::RequiredError("export needs PROJECT, --id and --table (or the option-list subcommand)");
        action = [outputs] { return cmdExport(*outputs); };
    });
}

void addList(CLI::App& app, command_action& action) {
    auto* cmd = app.add_subcommand("list", "list control records");
    auto opt = runs(cmd, action, cmdList);
    cmd->add_option("PROJECT", opt->project)->required();
    addSelection(cmd, opt->selection);
}

void addShow(CLI::App& app, command_action& action) {
    auto* cmd = app.add_subcommand("show", "print the text form of a control record");
    auto opt = runs(cmd, action, cmdShow);
    cmd->add_option("PROJECT", opt->project)->required();
    cmd->add_option("--id", opt->id)->required();
}

void addCopy(CLI::App& app, command_action& action) {
    auto* cmd = app.add_subcommand("copy", "copy a control record (with its outputs) under a new ID");
    auto opt = runs(cmd, action, cmdCopy);
    cmd->add_option("PROJECT", opt->project)->required();
    cmd->add_option("--id", opt->id)->required();
    cmd->add_option("--to", opt->to)->required();
    cmd->add_flag("--force", opt->force, "replace an existing record of that ID");
}

void addDelete(CLI::App& app, command_action& action) {
    auto* cmd = app.add_subcommand("delete", "delete a control record and everything stored under its ID");
    auto opt = runs(cmd, action, cmdDelete);
    cmd->add_option("PROJECT", opt->project)->required();
    cmd->add_option("--id", opt->id)->required();
}

void addPrepare(CLI::App& app, command_action& action) {
    auto* cmd = app.add_subcommand("prepare", "write the run directory of a record, without running");
    auto opt = runs(cmd, action, cmdPrepare);
    cmd->add_option("PROJECT", opt->project)->required();
    cmd->add_option("--id", opt->id)->required();
    addVersion(cmd, opt->version);
    cmd->add_option("--dir", opt->dir, "directory to write into")->required();
    cmd->add_flag("--force", opt->force, "write into a folder that already holds files");
    cmd->add_option("--profile", opt->profile, "release profile (default: the version's configured one)");
}

void addRun(CLI::App& app, command_action& action) {
    auto* cmd = app.add_subcommand("run", "run records through the model and store their outputs");
    auto opt = runs(cmd, action, cmdRun);
    cmd->add_option("PROJECT", opt->project)->required();
    addSelection(cmd, opt->selection);
    addVersion(cmd, opt->version);
    cmd->add_option("--jobs", opt->jobs, "records run at once")->check(CLI::Range(1, 256));
    cmd->add_flag("--stop-on-precheck", opt->stopOnPrecheck, "stop if any precheck errors");
    cmd->add_option("--blocks", opt->blocks, "event blocks to run, in this order, like \"1,3\"");
    cmd->add_option("--daily-years", opt->dailyYears, "daily output years to save, like 1990-2000");
    cmd->add_flag("--binary", opt->binary, "read the binary output instead of the list file");
    cmd->add_flag("--visible", opt->visible, "let the model print to this terminal instead of capturing it");
    cmd->add_option("--only", opt->only,
                    "run just the records in these states, comma-separated: never, failed, stale, good, running");
    auto* slurm = cmd->add_flag("--slurm", opt->slurm, "run the records as one Slurm job array");
    cmd->add_option("--partition", opt->partition, "the Slurm partition (with --slurm)")->needs(slurm);
    cmd->add_option("--time", opt->timeLimit, "each task's Slurm time limit, like 30 or 2:00:00 (with --slurm)")
        ->needs(slurm);
    cmd->add_option("--max-parallel", opt->maxParallel, "tasks of the array at once (with --slurm)")
        ->check(CLI::Range(1, 1000000))
        ->needs(slurm);
    cmd->add_option("--shared-dir", opt->sharedDir,
                    "a folder every node sees, for the run folders (with --slurm; default: Files/SlurmFolder)")
        ->needs(slurm);
}

void addStatus(CLI::App& app, command_action& action) {
    auto* cmd = app.add_subcommand(
        "status", "list each record's state: never run, failed, good, or stale (inputs or model changed since)");
    auto opt = runs(cmd, action, cmdStatus);
    cmd->add_option("PROJECT", opt->project)->required();
    addSelection(cmd, opt->selection);
    addVersion(cmd, opt->version, "model version code 1-6 the runs would use");
    cmd->add_option("--format", opt->format, "text (a table and the counts) or tsv (one line per record)")
        ->check(CLI::IsMember({"text", "tsv"}));
}

void addCollect(CLI::App& app, command_action& action) {
    auto* cmd = app.add_subcommand("collect",
                                   "store the records of Slurm jobs that ended while no \"run --slurm\" followed them");
    auto opt = runs(cmd, action, cmdCollect);
    cmd->add_option("PROJECT", opt->project)->required();
}

void addRunTask(CLI::App& app, command_action& action) {
    auto* cmd = app.add_subcommand(
        "run-task", "run the programs of one prepared run folder and write its result (a Slurm task's work)");
    auto opt = runs(cmd, action, cmdRunTask);
    cmd->add_option("FOLDER", opt->folder)->required();
}

void addPlot(CLI::App& app, command_action& action) {
    auto* cmd = app.add_subcommand("plot", "chart output variables over time to a PNG");
    auto opt = runs(cmd, action, cmdPlot);
    cmd->add_option("PROJECT", opt->project)->required();
    cmd->add_option("--id", opt->id)->required();
    cmd->add_option("--table", opt->table)->required()->check(CLI::IsMember({"annual", "monthly", "daily"}));
    cmd->add_option("--var", opt->vars, "variable names, comma-separated")->required();
    cmd->add_option("--png", opt->png)->required();
}

void addReadBin(CLI::App& app, command_action& action) {
    auto* cmd = app.add_subcommand("read-bin", "read a model binary output file and list what was read");
    auto opt = runs(cmd, action, cmdReadBin);
    cmd->footer(
        "The file is read through the binary layout of its release whose record size matches: the shipped ones\n"
        "(share/soilbench/binary-layouts: release 2, and two builds of release 4) and the files named in the\n"
        "setting Files/BinaryLayouts, one \"block<TAB>index<TAB>name\" line per variable.");
    cmd->add_option("FILE", opt->file)->required();
    addVersion(cmd, opt->version)->required();
    cmd->add_flag("--monthly", opt->monthly, "read the records as monthly output (default: annual)");
}

void addConfig(CLI::App& app, command_action& action) {
    auto* cmd = app.add_subcommand("config", "read or change the per-user profile");
    auto opt = runs(cmd, action, cmdConfig);
    auto* get = cmd->add_option("--get", opt->get, "print one key, e.g. Settings/RunTimeout");
    auto* set = cmd->add_option("--set", opt->set, "KEY=VALUE, e.g. \"Files/Diurna 4.5=/opt/diurna/dd\"");
    auto* list = cmd->add_flag("--list", opt->list, "print every key");
    get->excludes(set)->excludes(list);
    set->excludes(list);
}

void addProfile(CLI::App& app, command_action& action) {
    auto* profile = app.add_subcommand("profile", "the model release profiles: list them, derive one from a set-up");
    profile->require_subcommand(1);
    auto* list = profile->add_subcommand("list", "list the release profiles and any that cannot be read");
    auto listOpt = runs(list, action, cmdProfileList);
    addVersion(list, listOpt->version, "only those of this version code");
    auto* derive = profile->add_subcommand("derive", "write the release profile of a release's own sample set-up");
    auto opt = runs(derive, action, cmdProfileDerive);
    derive->add_option("DIR", opt->dir, "the sample set-up")->required();
    derive->add_option("--schedule", opt->schedule, "its schedule (default: the first .sch in DIR by name)");
    derive->add_option("--outputs", opt->outputs, "a folder of that set-up's outputs (binary, daily files)");
    derive->add_option("--title", opt->title, "the profile's title")->required();
    addVersion(derive, opt->version, "the version code it serves (default 4)");
    derive->add_option("--success", opt->success, "the console line of a good run (default \"Execution success.\")");
    derive->add_option("--failure", opt->failures, "a console line by which the release refuses a run");
    derive->add_option("--list-skip", opt->listSkip,
                       "what the list utility prints before a name it does not know "
                       "(default \"Variable not found, skipping:\")");
    derive->add_option("--out", opt->out, "the profile file to write (default: standard output)");
}

void addDemo(CLI::App& app, command_action& action) {
    auto* cmd = app.add_subcommand("demo", "build and run the demo project through the stand-in model");
    auto opt = runs(cmd, action, cmdDemo);
    cmd->add_option("DIR", opt->dir, "where to put the demo (default: ./soilbench-demo)");
}

// The commands, in the order the help lists them.
constexpr void (*kCommands[])(CLI::App&, command_action&) = {
    addNew, addCopyProject, addImport,  addExport,  addList, addShow,    addCopy,   addDelete,  addPrepare,
    addRun, addStatus,      addCollect, addRunTask, addPlot, addReadBin, addConfig, addProfile, addDemo,
};

}  // namespace

int main(int argc, char** argv) {
    auto qtApp = makeQtApplication(argc, argv);
    QCoreApplication::setOrganizationName("Varnak");
    QCoreApplication::setApplicationName("Soilbench");
    std::setlocale(LC_NUMERIC, "C");  // model files use '.' decimals whatever the user's locale

    CLI::App app{"Soilbench: a workbench for the Tellura soil-organic-matter model family", "soilbench"};
    app.require_subcommand(1);
    app.set_help_all_flag("--help-all", "show help for every subcommand");
    app.set_version_flag("--version", versionText(), "print the version and exit");
    app.footer(kHelpFooter);
    command_action action;
    for (auto add : kCommands) add(app, action);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) { return app.exit(e); } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) { return app.exit(e); } catch (const CLI::ParseError& e) {
        app.exit(e);
        return kExitUsage;
    }
    if (!action) return kExitUsage;
    return action();
}
