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

void addSelection(CLI::App* cmd, record_selection& sel) {
    auto* ids = cmd->add_option("--ids", sel.ids, "record IDs and ranges, like \"1, 2, 5-9\"");
    auto* where = cmd->add_option("--where", sel.where, "an SQL condition on [Control Records]");
    ids->excludes(where);
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
    static std::function<int()> action;
    auto on = [&](CLI::App* cmd, std::function<int()> fn) { cmd->callback([fn] { action = fn; }); };

    new_options newOpt;
    auto* cNew = app.add_subcommand("new", "create a project with every table and a default record");
    cNew->add_option("PROJECT", newOpt.project,
                     "project file to create, or a postgresql:// URL of a database "
                     "(made if it does not exist; an existing one must hold no tables)")
        ->required();
    cNew->add_flag("--force", newOpt.force, "replace an existing file, losing everything in it");
    on(cNew, [&] { return cmdNew(newOpt); });

    copy_project_options copyProjectOpt;
    auto* cCopyProject = app.add_subcommand(
        "copy-project", "copy a whole project between files and PostgreSQL databases, in either direction");
    cCopyProject->add_option("SOURCE", copyProjectOpt.source, "the project to copy (file or postgresql:// URL)")
        ->required();
    cCopyProject->add_option("TARGET", copyProjectOpt.target, "where the copy goes (made if it does not exist)")
        ->required();
    cCopyProject->add_flag("--force", copyProjectOpt.force, "replace a target that already holds data");
    on(cCopyProject, [&] { return cmdCopyProject(copyProjectOpt); });

    auto* cImport = app.add_subcommand("import", "import files into a project");
    cImport->require_subcommand(1);
    import_run_files_options runFiles;
    auto* cRunFiles = cImport->add_subcommand("run-files", "import a whole run directory as one control record");
    cRunFiles->add_option("PROJECT", runFiles.project)->required();
    cRunFiles->add_option("DIR", runFiles.dir, "the run directory")->required();
    cRunFiles->add_option("--schedule", runFiles.schedule, "schedule file (default: the only .sch in DIR)");
    cRunFiles->add_option("--id", runFiles.id, "ID of the new record (default: one past the highest)")
        ->check(CLI::Range(0, 2147483647));
    cRunFiles->add_flag("--force", runFiles.force, "replace the record of that ID (and its outputs) if there is one");
    cRunFiles
        ->add_option("--version", runFiles.version,
                     "model version the files are written for (default: the configured one)")
        ->check(CLI::Range(1, 6));
    on(cRunFiles, [&] { return cmdImportRunFiles(runFiles); });

    import_weather_options daily, monthly, averages;
    auto* cDaily = cImport->add_subcommand("weather-daily", "import daily weather into a station");
    cDaily->add_option("PROJECT", daily.project)->required();
    cDaily->add_option("FILE", daily.file)->required();
    cDaily->add_option("--station", daily.station)->required();
    cDaily->add_option("--description", daily.description, "station description for a new station");
    on(cDaily, [&] { return cmdImportWeatherDaily(daily); });
    auto* cMonthly = cImport->add_subcommand("weather-monthly", "import a monthly weather file into a station");
    cMonthly->add_option("PROJECT", monthly.project)->required();
    cMonthly->add_option("FILE", monthly.file)->required();
    cMonthly->add_option("--station", monthly.station)->required();
    on(cMonthly, [&] { return cmdImportWeatherMonthly(monthly); });
    auto* cAverages =
        cImport->add_subcommand("weather-averages", "import a station's climate means from a <site>.100 file");
    cAverages->add_option("PROJECT", averages.project)->required();
    cAverages->add_option("SITEFILE", averages.file)->required();
    cAverages->add_option("--station", averages.station)->required();
    on(cAverages, [&] { return cmdImportWeatherAverages(averages); });

    option_list_options optImport, optExport;
    const char* kinds = "crop cult fert fire graz harv irri omad tree trem";
    auto* cOptImport = cImport->add_subcommand("option-list", "import a .100 option file into its list");
    cOptImport->add_option("PROJECT", optImport.project)->required();
    cOptImport->add_option("KIND", optImport.kind, std::string("one of: ") + kinds)->required();
    cOptImport->add_option("FILE", optImport.file)->required();
    on(cOptImport, [&] { return cmdImportOptionList(optImport); });

    import_soil_layers_options soilLayers;
    auto* cSoil = cImport->add_subcommand("soil-layers", "import a soil layer file (soils.in layout) into a soil");
    cSoil->add_option("PROJECT", soilLayers.project)->required();
    cSoil->add_option("FILE", soilLayers.file)->required();
    cSoil->add_option("--soil", soilLayers.soil)->required();
    on(cSoil, [&] { return cmdImportSoilLayers(soilLayers); });

    archive_options archiveImport, archiveExport;
    auto* cArchiveImport = cImport->add_subcommand(
        "archive", "import a site archive (.esa): its records, with new IDs where the project uses theirs");
    cArchiveImport->add_option("PROJECT", archiveImport.project)->required();
    cArchiveImport->add_option("FILE", archiveImport.file)->required();
    on(cArchiveImport, [&] { return cmdImportArchive(archiveImport); });

    auto* cExportGroup = app.add_subcommand("export", "export a record's stored outputs, or an option list");
    export_options exportOpt;
    cExportGroup->add_option("PROJECT", exportOpt.project);
    cExportGroup->add_option("--id", exportOpt.id, "control record ID");
    cExportGroup->add_option("--table", exportOpt.table, "annual|monthly|daily|layers|end")
        ->check(CLI::IsMember({"annual", "monthly", "daily", "layers", "end"}));
    cExportGroup->add_option("--csv", exportOpt.csv, "write CSV to this file instead of standard output");
    auto* cOptExport = cExportGroup->add_subcommand("option-list", "export an option list as a .100 file");
    cOptExport->add_option("PROJECT", optExport.project)->required();
    cOptExport->add_option("KIND", optExport.kind, std::string("one of: ") + kinds)->required();
    cOptExport->add_option("FILE", optExport.file)->required();
    cOptExport->add_option("--version", optExport.version, "model version code 1-6")
        ->required()
        ->check(CLI::Range(1, 6));
    on(cOptExport, [&] { return cmdExportOptionList(optExport); });
    auto* cArchiveExport = cExportGroup->add_subcommand(
        "archive", "export records (all without --ids/--where) with everything they use as a site archive (.esa)");
    cArchiveExport->add_option("PROJECT", archiveExport.project)->required();
    cArchiveExport->add_option("FILE", archiveExport.file)->required();
    addSelection(cArchiveExport, archiveExport.selection);
    on(cArchiveExport, [&] { return cmdExportArchive(archiveExport); });
    cExportGroup->callback([&] {
        if (cOptExport->parsed() || cArchiveExport->parsed()) return;
        if (exportOpt.project.empty() || exportOpt.table.empty() || exportOpt.id == 0)
            throw CLI::RequiredError("export needs PROJECT, --id and --table (or the option-list subcommand)");
        action = [&] { return cmdExport(exportOpt); };
    });

    list_options listOpt;
    auto* cList = app.add_subcommand("list", "list control records");
    cList->add_option("PROJECT", listOpt.project)->required();
    addSelection(cList, listOpt.selection);
    on(cList, [&] { return cmdList(listOpt); });

    show_options showOpt;
    auto* cShow = app.add_subcommand("show", "print the text form of a control record");
    cShow->add_option("PROJECT", showOpt.project)->required();
    cShow->add_option("--id", showOpt.id)->required();
    on(cShow, [&] { return cmdShow(showOpt); });

    copy_options copyOpt;
    auto* cCopy = app.add_subcommand("copy", "copy a control record (with its outputs) under a new ID");
    cCopy->add_option("PROJECT", copyOpt.project)->required();
    cCopy->add_option("--id", copyOpt.id)->required();
    cCopy->add_option("--to", copyOpt.to)->required();
    cCopy->add_flag("--force", copyOpt.force, "replace an existing record of that ID");
    on(cCopy, [&] { return cmdCopy(copyOpt); });

    delete_options deleteOpt;
    auto* cDelete = app.add_subcommand("delete", "delete a control record and everything stored under its ID");
    cDelete->add_option("PROJECT", deleteOpt.project)->required();
    cDelete->add_option("--id", deleteOpt.id)->required();
    on(cDelete, [&] { return cmdDelete(deleteOpt); });

    prepare_options prepareOpt;
    auto* cPrepare = app.add_subcommand("prepare", "write the run directory of a record, without running");
    cPrepare->add_option("PROJECT", prepareOpt.project)->required();
    cPrepare->add_option("--id", prepareOpt.id)->required();
    cPrepare->add_option("--version", prepareOpt.version, "model version code 1-6")->check(CLI::Range(1, 6));
    cPrepare->add_option("--dir", prepareOpt.dir, "directory to write into")->required();
    cPrepare->add_flag("--force", prepareOpt.force, "write into a folder that already holds files");
    on(cPrepare, [&] { return cmdPrepare(prepareOpt); });

    run_options runOpt;
    auto* cRun = app.add_subcommand("run", "run records through the model and store their outputs");
    cRun->add_option("PROJECT", runOpt.project)->required();
    addSelection(cRun, runOpt.selection);
    cRun->add_option("--version", runOpt.version, "model version code 1-6")->check(CLI::Range(1, 6));
    cRun->add_option("--jobs", runOpt.jobs, "records run at once")->check(CLI::Range(1, 256));
    cRun->add_flag("--stop-on-precheck", runOpt.stopOnPrecheck, "stop if any precheck errors");
    cRun->add_option("--blocks", runOpt.blocks, "event blocks to run, in this order, like \"1,3\"");
    cRun->add_option("--daily-years", runOpt.dailyYears, "daily output years to save, like 1990-2000");
    cRun->add_flag("--binary", runOpt.binary, "read the binary output instead of the list file");
    cRun->add_flag("--visible", runOpt.visible, "let the model print to this terminal instead of capturing it");
    cRun->add_option("--only", runOpt.only,
                     "run just the records in these states, comma-separated: never, failed, stale, good");
    on(cRun, [&] { return cmdRun(runOpt); });

    status_options statusOpt;
    auto* cStatus = app.add_subcommand(
        "status", "list each record's state: never run, failed, good, or stale (inputs or model changed since)");
    cStatus->add_option("PROJECT", statusOpt.project)->required();
    addSelection(cStatus, statusOpt.selection);
    cStatus->add_option("--version", statusOpt.version, "model version code 1-6 the runs would use")
        ->check(CLI::Range(1, 6));
    cStatus->add_option("--format", statusOpt.format, "text (a table and the counts) or tsv (one line per record)")
        ->check(CLI::IsMember({"text", "tsv"}));
    on(cStatus, [&] { return cmdStatus(statusOpt); });

    plot_options plotOpt;
    auto* cPlot = app.add_subcommand("plot", "chart output variables over time to a PNG");
    cPlot->add_option("PROJECT", plotOpt.project)->required();
    cPlot->add_option("--id", plotOpt.id)->required();
    cPlot->add_option("--table", plotOpt.table)->required()->check(CLI::IsMember({"annual", "monthly", "daily"}));
    cPlot->add_option("--var", plotOpt.vars, "variable names, comma-separated")->required();
    cPlot->add_option("--png", plotOpt.png)->required();
    on(cPlot, [&] { return cmdPlot(plotOpt); });

    read_bin_options readBin;
    auto* cReadBin = app.add_subcommand("read-bin", "read a model binary output file and list what was read");
    cReadBin->footer(
        "The file is read through the binary layout of its release whose record size matches: the shipped ones\n"
        "(share/soilbench/binary-layouts: release 2, and two builds of release 4) and the files named in the\n"
        "setting Files/BinaryLayouts, one \"block<TAB>index<TAB>name\" line per variable.");
    cReadBin->add_option("FILE", readBin.file)->required();
    cReadBin->add_option("--version", readBin.version, "model version code 1-6")->required()->check(CLI::Range(1, 6));
    cReadBin->add_flag("--monthly", readBin.monthly, "read the records as monthly output (default: annual)");
    on(cReadBin, [&] { return cmdReadBin(readBin); });

    config_options configOpt;
    auto* cConfig = app.add_subcommand("config", "read or change the per-user profile");
    auto* get = cConfig->add_option("--get", configOpt.get, "print one key, e.g. Settings/RunTimeout");
    auto* set = cConfig->add_option("--set", configOpt.set, "KEY=VALUE, e.g. \"Files/Diurna 4.5=/opt/diurna/dd\"");
    auto* list = cConfig->add_flag("--list", configOpt.list, "print every key");
    get->excludes(set)->excludes(list);
    set->excludes(list);
    on(cConfig, [&] { return cmdConfig(configOpt); });

    demo_options demoOpt;
    auto* cDemo = app.add_subcommand("demo", "build and run the demo project through the stand-in model");
    cDemo->add_option("DIR", demoOpt.dir, "where to put the demo (default: ./soilbench-demo)");
    on(cDemo, [&] { return cmdDemo(demoOpt); });

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
