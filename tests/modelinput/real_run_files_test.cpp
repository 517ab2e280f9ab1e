// Real run directories of the daily model imported into a project and written
// back as a version-4 run directory: every parameter value must survive.
// Layout differences against the samples are listed in the test output.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <iostream>
#include <map>

#include "db/database.h"
#include "modelinput/parameter_names.h"
#include "modelinput/run_directory.h"
#include "modelinput/run_files_import.h"
#include "modelinput/schedule_file.h"
#include "modelinput/site_file.h"
#include "app/text_format.h"
#include "app/text_file.h"
#include "modelinput/weather_file.h"
#include "paramfile/generic_tellura_input.h"
#include "records/new_project.h"
#include "test_support.h"

using namespace sb;

namespace {

using value_map = std::map<std::string, double>;

// "value name" lines of a single-record parameter file (its first line is the title).
value_map parameterLines(const std::string& path) {
    value_map values;
    std::vector<std::string> lines = splitLines(sbtest::readFile(path));
    for (size_t i = 1; i < lines.size(); ++i) {
        std::vector<std::string> tokens = splitTokens(lines[i]);
        if (tokens.size() < 2 || tokens[0].front() == '*') continue;
        values[canonicalParameterName(tokens[1])] = toReal(tokens[0]);
    }
    return values;
}

bool same(double a, double b) { return std::fabs(a - b) <= 1e-5 * std::max(1.0, std::fabs(a)); }

struct comparison {
    std::vector<std::string> changed;  // "NAME sample -> ours"
    std::vector<std::string> missing;  // in the sample, not written by us
};

comparison compare(const value_map& sample, const value_map& ours) {
    comparison result;
    for (const auto& [name, value] : sample) {
        auto found = ours.find(name);
        if (found == ours.end()) result.missing.push_back(name);
        else if (!same(value, found->second))
            result.changed.push_back(name + " " + std::to_string(value) + " -> " + std::to_string(found->second));
    }
    return result;
}

std::string joined(const std::vector<std::string>& names) {
    std::string out;
    for (const std::string& name : names) out += (out.empty() ? "" : ", ") + name;
    return out.empty() ? "(none)" : out;
}

// Every record and value of a sample option file against ours.
comparison compareOptionFile(const std::string& samplePath, const std::string& oursPath) {
    generic_tellura_input_list sample, ours;
    std::string errors, status;
    sample.importFile(samplePath, errors, status);
    ours.importFile(oursPath, errors, status);
    comparison result;
    for (size_t r = 0; r < sample.size(); ++r) {
        const generic_tellura_input& record = sample.recordAt(r);
        const auto* mine = static_cast<const generic_tellura_input*>(ours.find(record.name));
        if (!mine) {
            result.missing.push_back(record.name + " (whole record)");
            continue;
        }
        for (const parameter_value& pair : record.values) {
            const parameter_value* found = mine->findValue(pair.name);
            if (!found) result.missing.push_back(record.name + "." + pair.name);
            else if (!same(pair.value, found->value)) result.changed.push_back(record.name + "." + pair.name);
        }
    }
    return result;
}

std::vector<double> numbersOf(const std::string& path) {
    std::vector<double> numbers;
    for (const std::string& token : splitTokens(sbtest::readFile(path))) numbers.push_back(toReal(token));
    return numbers;
}

struct real_case {
    const char* folder;
    const char* schedule;
    const char* siteFile;
    const char* weatherFile;
};

class RealRunFiles : public ::testing::TestWithParam<real_case> {};

TEST_P(RealRunFiles, ImportThenWriteBackKeepsEveryValue) {
    SB_REQUIRE_SAMPLES();
    const real_case& c = GetParam();
    const std::string inputs = sbtest::samplesDir() + "/" + c.folder;
    sbtest::temp_dir dir;
    std::string errors;
    std::unique_ptr<database> db = createNewProject(dir.file("import.sbproj"), errors);
    ASSERT_TRUE(db) << errors;
    errors.clear();
    ASSERT_TRUE(importRunFiles(*db, inputs, c.schedule, 4, 500, errors)) << errors;
    EXPECT_EQ(errors.find("ERROR"), std::string::npos) << errors;

    // Read everything back from the project, as a run would.
    tellura_control_record record;
    std::string readErrors;
    ASSERT_TRUE(readControlRecord(*db, 500, record, readErrors)) << readErrors;
    tellura_soil_list soils;
    soils.load(*db, readErrors);
    tellura_weather_station_list stations;
    loadWeatherStations(*db, stations, readErrors);
    for (TelluraWeatherStations& station : stations.stations) loadDailyHistory(*db, station, readErrors);
    option_lists options;
    options.loadAll(*db, readErrors);
    EXPECT_EQ(readErrors, "");
    ASSERT_NE(soils.find(record.soilId()), nullptr);
    ASSERT_NE(stations.find(record.weatherId()), nullptr);

    outfile_flags flags{};
    std::string runErrors;
    std::filesystem::create_directory(dir.file("run"));
    EXPECT_TRUE(prepareRunDirectory(record, 4, dir.file("run") + "/model", flags, options, soils, stations, runErrors))
        << runErrors;
    const std::string run = dir.file("run") + "/";

    comparison fixed = compare(parameterLines(inputs + "/fix.100"), parameterLines(run + "fix.100"));
    comparison site = compare(parameterLines(inputs + "/" + c.siteFile), parameterLines(run + "sbsite.100"));
    std::cout << "[" << c.folder << "] fix.100 changed: " << joined(fixed.changed) << "\n"
              << "[" << c.folder << "] fix.100 not written: " << joined(fixed.missing) << "\n"
              << "[" << c.folder << "] site changed: " << joined(site.changed) << "\n"
              << "[" << c.folder << "] site not written: " << joined(site.missing) << "\n";
    EXPECT_TRUE(fixed.changed.empty()) << joined(fixed.changed);
    // The daily release takes its layers from soils.in, which the soil is read
    // from after the site file; and it always simulates nine layers.
    for (const std::string& change : site.changed)
        EXPECT_TRUE(change.rfind("AWILT(", 0) == 0 || change.rfind("AFIEL(", 0) == 0 || change.rfind("NLAYER ", 0) == 0)
            << change;

    // sitepar.in: every value the sample gives, read back from ours.
    tellura_control_record sampleSitepar, ourSitepar;
    std::string siteparMessages;
    importSitepar(inputs + "/sitepar.in", sampleSitepar, siteparMessages);
    importSitepar(run + "sitepar.in", ourSitepar, siteparMessages);
    std::vector<std::string> siteparChanged;
    for (const auto& field : sampleSitepar.site.def().fields()) {
        int col = sampleSitepar.site.column(field.name);
        if (!same(sampleSitepar.site.number(col), ourSitepar.site.number(col))) siteparChanged.push_back(field.name);
    }
    std::cout << "[" << c.folder << "] sitepar.in not kept: " << joined(siteparChanged) << "\n";
    for (const std::string& name : siteparChanged)  // the lines a version-4 sitepar.in does not have
        EXPECT_TRUE(name == "TIMSTEP" || name.rfind("LYRM", 0) == 0) << name;

    // The schedule: the same blocks and events.
    tellura_control_record sampleSchedule, ourSchedule;
    schedule_references sampleReferences, ourReferences;
    std::string scheduleErrors;
    ASSERT_TRUE(readScheduleFile(inputs + "/" + c.schedule, 4, sampleSchedule, sampleReferences, scheduleErrors));
    ASSERT_TRUE(readScheduleFile(run + "sb.sch", 4, ourSchedule, ourReferences, scheduleErrors));
    EXPECT_EQ(scheduleErrors, "");
    ASSERT_EQ(ourSchedule.blocks.size(), sampleSchedule.blocks.size());
    for (size_t b = 0; b < sampleSchedule.blocks.size(); ++b) {
        tellura_event_block expected = sampleSchedule.blocks[b];
        expected.weatherId = record.weatherId();
        // Releases 3 to 5 write the interval as a whole number: 0.0833 becomes 0.
        expected.outputInterval = std::trunc(expected.outputInterval);
        EXPECT_TRUE(ourSchedule.blocks[b] == expected) << "block " << b + 1;
    }
    for (const char* column :
         {"Labeling Type", "Labeling Year", "CO2SYS", "Ninput", "Nstart", "OMADinput", "WTHINPUT", "Initial System"})
        EXPECT_EQ(ourSchedule.row.number(column), sampleSchedule.row.number(column)) << column;
    EXPECT_EQ(ourSchedule.initialCrop(), sampleSchedule.initialCrop());

    for (const char* file : {"crop.100", "cult.100", "fert.100", "fire.100", "graz.100", "harv.100", "irri.100",
                             "omad.100", "tree.100", "trem.100"}) {
        comparison option = compareOptionFile(inputs + "/" + file, run + file);
        std::cout << "[" << c.folder << "] " << file << " changed: " << joined(option.changed)
                  << "; not written: " << joined(option.missing) << "\n";
        EXPECT_TRUE(option.changed.empty()) << file << ": " << joined(option.changed);
    }

    // The daily weather: the same numbers, line for line (our lines also carry
    // the three extra drivers, zero when the sample has none).
    std::vector<std::string> sampleDays = splitLines(sbtest::readFile(inputs + "/" + c.weatherFile));
    std::vector<std::string> ourDays = splitLines(sbtest::readFile(run + weatherFileName(record.weatherId())));
    while (!sampleDays.empty() && trim(sampleDays.back()).empty()) sampleDays.pop_back();
    ASSERT_EQ(ourDays.size(), sampleDays.size());
    for (size_t i = 0; i < sampleDays.size(); ++i) {
        std::vector<std::string> a = splitTokens(sampleDays[i]), b = splitTokens(ourDays[i]);
        ASSERT_GE(b.size(), a.size());
        for (size_t k = 0; k < a.size(); ++k)
            ASSERT_TRUE(same(toReal(a[k]), toReal(b[k])))
                << "weather line " << i + 1 << ": " << sampleDays[i] << " | " << ourDays[i];
    }

    // soils.in: the same layers, value for value.
    std::vector<double> sampleSoil = numbersOf(inputs + "/soils.in"), ourSoil = numbersOf(run + "soils.in");
    ASSERT_EQ(ourSoil.size(), sampleSoil.size());
    for (size_t i = 0; i < sampleSoil.size(); ++i)
        EXPECT_NEAR(ourSoil[i], sampleSoil[i], 1e-5) << "soils.in value " << i;
}

INSTANTIATE_TEST_SUITE_P(
    Samples, RealRunFiles,
    ::testing::Values(real_case{"diurna-2012/inputs", "example.sch", "site2012.100", "weather.wth"},
                      real_case{"diurna45-2008-inputs", "sch_TESTgrass.sch", "site_grass.100", "TEST_Daily.wth"}));

}  // namespace
