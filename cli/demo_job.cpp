// soilbench demo: the main job. Builds a demo project from the set-up shipped
// with the program (share/soilbench/demo: option files, a site, a soil, a weather
// station with daily history, a schedule), adds variants (soils, rotations,
// fertiliser levels), runs them all through the stand-in model (a small
// program of ours that writes outputs in the model's formats: it is not the
// model) with one record per core at once, stores the outputs, prints a
// summary and draws a chart.
#include <filesystem>
#include <iostream>
#include <thread>

#include "app/program_location.h"
#include "app/text_format.h"
#include "chart_png.h"
#include "cli_context.h"
#include "cli_options.h"
#include "modelinput/run_directory.h"
#include "modelinput/run_files_import.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/record_outputs.h"
#include "modeloutput/tellura_output.h"
#include "progress_reporter.h"
#include "records/new_project.h"
#include "records/option_lists.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "run/run_controller.h"

namespace fs = std::filesystem;

namespace sbcli {
namespace {

constexpr int kDemoVersion = sb::kDiurna45;

struct soil_variant {
    const char* name;
    double sand, clay;  // fractions of the fine earth
};
// The shipped soil is a silt loam; two more textures show the soil's effect.
const soil_variant kSoils[] = {
    {"Demo silt loam", 0.20, 0.18},
    {"Demo sandy loam", 0.65, 0.10},
    {"Demo clay loam", 0.30, 0.35},
};

struct rotation_variant {
    const char* name;
    const char* crop;  // the crop planted every year
};
const rotation_variant kRotations[] = {
    {"winter wheat", "WWHT"},
    {"maize", "MAIZ"},
};

// Fertiliser options of the demo's fert.100, from none to a high rate.
const char* const kFertilizers[] = {"N0", "N45", "N90", "N135"};

std::string demoSetupDirectory() { return (fs::path(sb::dataDirectory()) / "demo").string(); }

std::string besideProgram(const char* name) { return (fs::path(sb::programDirectory()) / name).string(); }

// The stand-in sits beside this program in a build tree; an installed tree
// keeps it off the command path, in libexec/soilbench/.
std::string standinProgram(const char* name) {
    std::error_code ec;
    if (fs::exists(besideProgram(name), ec)) return besideProgram(name);
    return (fs::path(sb::programDirectory()) / ".." / "libexec" / "soilbench" / name).lexically_normal().string();
}

// The demo's own settings: the stand-in model as release 4, run quietly, one
// record per core. The user's profile is not touched.
// The model's input files are written beside its executable, so the demo
// gets a model folder of its own with links to the installed stand-in.
std::string linkInto(const fs::path& folder, const char* program, sb::message_sink& errors) {
    std::error_code ec;
    fs::create_directories(folder, ec);
    fs::path link = folder / program;
    const std::string target = standinProgram(program);
    if (!fs::exists(target, ec)) {
        errors.errorf("ERROR, the stand-in model is missing: %s.\n", target.c_str());
        return link.string();
    }
    fs::remove(link, ec);
    fs::create_symlink(target, link, ec);
    if (ec) errors.errorf("ERROR, unable to link \"%s\": %s.\n", link.c_str(), ec.message().c_str());
    return link.string();
}

sb::app_soilbench demoSettings(const fs::path& dir, sb::message_sink& errors) {
    sb::app_soilbench settings(std::string((dir / "demo-profile.ini").string()));
    settings.version = kDemoVersion;
    settings.modelExecutables[kDemoVersion - 1] = linkInto(dir / "model", "tellura-standin", errors);
    settings.list100Executables[kDemoVersion - 1] = linkInto(dir / "model", "list100-standin", errors);
    settings.runVisible = false;
    settings.runTimeout = 120000;
    settings.outputPath = (dir / "daily-output").string() + "/";
    settings.runsFolder = (dir / "runs").string();  // a failed run's folder stays beside the demo project
    settings.saveDailyFirstYear = 1;
    settings.saveDailyLastYear = 0;  // keep no daily files: the outputs are in the project
    // The daily-step release writes its annual trace gases and precipitation
    // to its year summary: asking for it fills the annual output table too.
    const auto& files = sb::dailyOutputFiles();
    for (size_t i = 0; i < files.size(); ++i)
        if (std::string_view(files[i].file) == "year_summary.out") settings.outfileSelected[i] = true;
    settings.jobs = static_cast<int32_t>(std::max(1u, std::thread::hardware_concurrency()));
    return settings;
}

// Record 1 as imported, varied by soil, rotation and fertiliser.
bool addVariants(sb::database& db, sb::message_sink& errors, int& records) {
    sb::tellura_control_record base;
    if (!sb::loadControlRecord(db, 1, base, errors)) return false;
    sb::tellura_soils soils;
    soils.load(db, errors);
    const sb::tellura_soil* shipped = soils.find(base.soilId());
    if (!shipped) {
        errors.error("ERROR, the demo set-up has no soil.\n");
        return false;
    }
    int soilId = base.soilId();
    int id = 0;
    for (const auto& soilVariant : kSoils) {
        sb::tellura_soil soil = *shipped;
        soil.setSoilId(soilId);
        soil.setName(soilVariant.name);
        soil.setNumber("Fraction of Sand", soilVariant.sand);
        soil.setNumber("Fraction of Clay", soilVariant.clay);
        soil.setNumber("Fraction of Silt", 1.0 - soilVariant.sand - soilVariant.clay);
        for (int l = 0; l < soil.layerCount; ++l) {
            soil.layers[static_cast<size_t>(l)].setNumber("Fraction Of Sand", soilVariant.sand);
            soil.layers[static_cast<size_t>(l)].setNumber("Fraction Of Clay", soilVariant.clay);
        }
        if (!sb::saveSoil(db, soil, errors)) return false;
        for (const auto& rotation : kRotations) {
            for (const char* fert : kFertilizers) {
                sb::tellura_control_record record = base;
                record.setId(++id);
                record.row.setText("Description",
                                   sb::strprintf("%s, %s, %s", soilVariant.name + 5, rotation.name, fert));
                record.row.setNumber("Soil ID", soilId);
                record.row.setText("Initial Crop", rotation.crop);
                for (auto& block : record.blocks)
                    for (auto& event : block.events) {
                        if (event.type == sb::kEventCrop) event.item = rotation.crop;
                        if (event.type == sb::kEventFert) event.item = fert;
                    }
                if (!sb::saveControlRecord(db, record, errors)) return false;
            }
        }
        ++soilId;
    }
    records = id;
    return true;
}

// The progress on the terminal, and each record's messages kept to be shown,
// under its ID, once the runs are over.
class demo_progress : public progress_reporter {
public:
    void recordFinished(int32_t id, const std::string& messages) override {
        if (messages.empty()) return;
        std::string shown;
        std::string label = sb::strprintf("  ID %ld: ", static_cast<long>(id));
        for (size_t start = 0; start < messages.size();) {
            size_t end = messages.find('\n', start);
            if (end == std::string::npos) end = messages.size();
            shown += label + messages.substr(start, end - start) + "\n";
            label.assign(label.size(), ' ');
            start = end + 1;
        }
        shown_ += shown;
    }
    const std::string& shown() const { return shown_; }

private:
    std::string shown_;
};

struct record_summary {
    int id = 0;
    std::string description;
    int years = 0;
    double finalSoilC = 0, meanProduction = 0, meanN2O = 0;
};

// Each year's last month: the daily-step release lists soil carbon and crop
// production monthly, so the year's last month holds the year's values.
std::vector<const sb::table_record*> yearEnds(const sb::tellura_outputs& outputs) {
    std::vector<const sb::table_record*> ends;
    auto months = outputs.monthlyInOrder();
    for (size_t i = 0; i < months.size(); ++i)
        if (i + 1 == months.size() || months[i + 1]->year() != months[i]->year()) ends.push_back(months[i]);
    return ends;
}

// Soil carbon and production from the year ends (or the annual rows of a
// release that lists annual output), N2O from the annual rows.
record_summary summarize(sb::database& db, int id, sb::message_sink& errors) {
    record_summary s;
    sb::tellura_control_record record;
    sb::tellura_outputs outputs;
    sb::loadControlRecordWithOutputs(db, id, record, outputs, errors);
    s.id = id;
    s.description = record.description();
    std::vector<const sb::table_record*> years = yearEnds(outputs);
    if (years.empty())
        for (const auto& year : outputs.annual) years.push_back(&year);
    s.years = static_cast<int>(years.size());
    if (!years.empty()) {
        s.finalSoilC = years.back()->number("somsc");
        double sum = 0;
        for (const auto* year : years) sum += year->number("cprodc");
        s.meanProduction = sum / static_cast<double>(years.size());
    }
    if (!outputs.annual.empty()) {
        double sum = 0;
        for (const auto& year : outputs.annual) sum += year.number("n2oflux");
        s.meanN2O = sum / static_cast<double>(outputs.annual.size());
    }
    return s;
}

}  // namespace

int cmdDemo(const demo_options& opt) {
    fs::path dir = fs::absolute(opt.dir.empty() ? "soilbench-demo" : opt.dir);
    std::error_code ec;
    fs::create_directories(dir, ec);
    if (ec) {
        std::cerr << "ERROR, unable to make the demo folder \"" << dir.string() << "\": " << ec.message() << ".\n";
        return kExitFailed;
    }
    const std::string project = (dir / "demo.sbproj").string();
    const std::string setup = demoSetupDirectory();
    sb::message_sink errors;

    std::cout << "Soilbench demo (outputs come from the stand-in model, not the real model)\n";
    std::cout << "Set-up files: " << setup << "\n";
    auto db = sb::createNewProject(project, errors);
    if (!db) return finish(false, errors);
    sb::message_sink importMessages;
    if (!sb::importRunFiles(*db, setup, "demo.sch", kDemoVersion, 1, importMessages)) {
        errors.add(importMessages);
        return finish(false, errors);
    }
    int records = 0;
    if (!addVariants(*db, errors, records)) return finish(false, errors);
    std::cout << "Project with " << records << " records: " << project << "\n";

    sb::message_sink setupErrors;
    sb::app_soilbench settings = demoSettings(dir, setupErrors);
    if (!setupErrors.empty()) {
        errors.add(setupErrors);
        return finish(false, errors);
    }
    // Messages are shown as they come, before the summary that sums them up.
    report(errors);
    errors.clear();
    sb::run_controller controller(*db, settings);
    sb::run_set_options runSet;
    runSet.jobs = settings.jobs;
    std::string runLog, shownMessages;
    sb::message_sink runMessages;
    sb::run_set_result result;
    std::cout << "Running " << records << " records, " << runSet.jobs << " at once...\n" << std::flush;
    {
        demo_progress progress;
        result = controller.runMultipleRecords(runSet, progress, runLog);
        runMessages = progress;
        shownMessages = progress.shown();
    }
    std::string logPath = (dir / "run-log.txt").string();
    if (FILE* f = std::fopen(logPath.c_str(), "w")) {
        std::fputs(sb::runReport(runMessages, runLog).c_str(), f);
        std::fclose(f);
    }
    if (!shownMessages.empty()) {
        std::cout << std::flush;
        std::cerr << "\nMessages of the runs:\n" << shownMessages << std::flush;
    }

    std::cout << "\n   ID  Years  Final soil C  Mean crop C  Mean N2O flux  Description\n";
    for (int id = 1; id <= records; ++id) {
        record_summary s = summarize(*db, id, errors);
        std::cout << sb::strprintf("%5d  %5d  %12.1f  %11.1f  %13.4f  %s\n", s.id, s.years, s.finalSoilC,
                                   s.meanProduction, s.meanN2O, s.description.c_str());
    }
    std::cout << sb::strprintf("\n%ld records run: %ld good, %ld failed, in %.1f seconds.\n", result.runNumber,
                               result.good, result.failed, result.elapsedSeconds);

    sb::tellura_outputs outputs;
    sb::loadOutputs(*db, 1, outputs, errors);
    chart_request chart;
    chart.title = "Demo record 1: soil organic C and crop production (stand-in model)";
    // Soil carbon and crop production are listed monthly by the daily-step release.
    chart.table = outputs.monthlyCount() > 0 ? "monthly" : "annual";
    chart.variables = {"somsc", "cprodc"};
    const std::string png = (dir / "demo-chart.png").string();
    bool charted = renderOutputChart(outputs, chart, png, errors);

    std::cout << "\nProject:  " << project << "\n";
    if (charted) std::cout << "Chart:    " << png << "\n";
    std::cout << "Run log:  " << logPath << "\n";
    std::cout << "Open the project in the desktop application with:\n  " << besideProgram("soilbench-gui") << " "
              << project << "\n";
    std::cout << "or look at it here: soilbench list " << project << "; soilbench export " << project
              << " --id 1 --table annual\n";
    return finish(result.failed == 0 && charted, errors);
}

}  // namespace sbcli
