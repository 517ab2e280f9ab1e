#pragma once
// What the command line asked for, one struct per subcommand, filled by the
// parser in main.cpp and carried out by the command functions.
#include <optional>
#include <string>
#include <vector>

namespace sbcli {

struct profile_list_options {
    int version = 0;  // 0 = every version
};
struct profile_derive_options {
    std::string dir, schedule, outputs, title, out, success, listSkip;
    std::vector<std::string> failures;
    int version = 4;
};

// Exit status: 0 success, 1 the operation reported an error, 2 usage error.
enum exit_status : int { kExitOk = 0, kExitFailed = 1, kExitUsage = 2 };

struct record_selection {
    std::string ids;    // "1,2,5-9"
    std::string where;  // an SQL condition on [Control Records]
    // The WHERE text for the record opener: the ID list's clause, or the user's own.
    // False with the message printed when the ID list is not IDs or names none.
    bool filter(std::string& clause) const;
};

struct new_options {
    std::string project;
    bool force = false;  // replace an existing file
};
struct copy_project_options {
    std::string source, target;
    bool force = false;
};
struct import_run_files_options {
    std::string project, dir, schedule;
    std::optional<int> id;
    int version = 0;      // 0 = the version of the profile the files match, else the configured one
    bool force = false;   // replace a record of that ID
    std::string profile;  // "" = the profile the files match, else the version's configured one
};
struct import_weather_options {
    std::string project, file, description;
    int station = 0;
};
struct option_list_options {
    std::string project, kind, file;
    int version = 0;
};
struct import_soil_layers_options {
    std::string project, file;
    int soil = 0;
};
struct list_options {
    std::string project;
    record_selection selection;
};
struct show_options {
    std::string project;
    int id = 0;
};
struct copy_options {
    std::string project;
    int id = 0, to = 0;
    bool force = false;  // replace an existing record of ID `to`
};
struct delete_options {
    std::string project;
    int id = 0;
};
struct prepare_options {
    std::string project, dir;
    int id = 0;
    int version = 0;
    bool force = false;   // write into a folder that already holds files
    std::string profile;  // "" = the version's configured release profile
};
struct run_options {
    std::string project;
    record_selection selection;
    int version = 0;  // 0 = the configured version
    int jobs = 0;     // 0 = the configured number
    bool stopOnPrecheck = false;
    std::string blocks;      // "1,3": blocks to run, in this order
    std::string dailyYears;  // "A-B"
    bool binary = false;
    bool visible = false;
    std::string only;  // "failed,stale": run just the records in these states
    // Through a Slurm job array instead of this machine's cores.
    bool slurm = false;
    std::string partition, timeLimit, sharedDir;
    int maxParallel = 0;
};
struct status_options {
    std::string project;
    record_selection selection;
    int version = 0;              // 0 = the configured version
    std::string format = "text";  // text | tsv
};
struct collect_options {
    std::string project;
};
struct run_task_options {
    std::string folder;
};
struct export_options {
    std::string project, table, csv;
    int id = 0;
};
struct plot_options {
    std::string project, table, vars, png;
    int id = 0;
};
struct read_bin_options {
    std::string file;
    int version = 0;
    bool monthly = false;
};
struct config_options {
    std::string get, set;
    bool list = false;
};
struct demo_options {
    std::string dir;
};
struct archive_options {
    std::string project, file;
    record_selection selection;  // export only; none: every record
};

int cmdNew(const new_options&);
int cmdCopyProject(const copy_project_options&);
int cmdImportRunFiles(const import_run_files_options&);
int cmdImportWeatherDaily(const import_weather_options&);
int cmdImportWeatherMonthly(const import_weather_options&);
int cmdImportWeatherAverages(const import_weather_options&);
int cmdImportOptionList(const option_list_options&);
int cmdExportOptionList(const option_list_options&);
int cmdImportSoilLayers(const import_soil_layers_options&);
int cmdList(const list_options&);
int cmdShow(const show_options&);
int cmdCopy(const copy_options&);
int cmdDelete(const delete_options&);
int cmdPrepare(const prepare_options&);
int cmdRun(const run_options&);
int cmdStatus(const status_options&);
int cmdCollect(const collect_options&);
int cmdRunTask(const run_task_options&);
int cmdExport(const export_options&);
int cmdPlot(const plot_options&);
int cmdReadBin(const read_bin_options&);
int cmdConfig(const config_options&);
int cmdDemo(const demo_options&);
int cmdExportArchive(const archive_options&);
int cmdImportArchive(const archive_options&);
int cmdProfileList(const profile_list_options&);
int cmdProfileDerive(const profile_derive_options&);

}  // namespace sbcli
