// The real releases' own set-ups, read into a project and written back under
// their own release profiles: every file the release reads holds the same
// names, in the same order, with the same values (as the 32-bit reals the
// model reads them) as the sample file. Names a sample spells otherwise than
// its own other records are listed in the test output.
#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <set>

#include "app/release_profile_catalogue.h"
#include "app/text_file.h"
#include "app/text_format.h"
#include "db/database.h"
#include "golden_setup.h"
#include "modelinput/parameter_names.h"
#include "modelinput/profile_match.h"
#include "modelinput/run_directory.h"
#include "modelinput/run_files_import.h"
#include "modelinput/schedule_file.h"
#include "modelinput/weather_file.h"
#include "records/new_project.h"
#include "test_support.h"

using namespace sb;

namespace {

struct named_value {
    std::string name;
    double value;
};
using value_lines = std::vector<named_value>;

bool same(double a, double b) { return static_cast<float>(a) == static_cast<float>(b); }

// "value name" lines of a single-record parameter file (its first line is the title).
value_lines parameterLines(const std::string& path) {
    value_lines lines;
    std::vector<std::string> text = splitLines(sbtest::readFile(path));
    for (size_t i = 1; i < text.size(); ++i) {
        std::vector<std::string> tokens = splitTokens(text[i]);
        if (tokens.size() >= 2 && tokens[0].front() != '*')
            lines.push_back({canonicalParameterName(tokens[1]), toReal(tokens[0])});
    }
    return lines;
}

// The numbers each line starts with (what the model reads of it).
std::vector<std::vector<double>> leadingNumbers(const std::string& path) {
    std::vector<std::vector<double>> lines;
    for (const std::string& line : splitLines(sbtest::readFile(path))) {
        std::vector<double> numbers;
        for (const std::string& token : splitTokens(line)) {
            if (token.find_first_not_of("0123456789.-+eE") != std::string::npos) break;
            numbers.push_back(toReal(token));
        }
        if (!numbers.empty()) lines.push_back(numbers);
    }
    return lines;
}

// The records of an option file: header name, then their value lines.
std::vector<std::pair<std::string, value_lines>> optionRecords(const std::string& path) {
    std::vector<std::pair<std::string, value_lines>> records;
    for (const std::string& line : splitLines(sbtest::readFile(path))) {
        std::vector<std::string> tokens = splitTokens(line);
        if (tokens.empty()) continue;
        if (std::isalpha(static_cast<unsigned char>(line.front()))) records.push_back({tokens[0], {}});
        else if (!records.empty() && tokens.size() >= 2)
            records.back().second.push_back({canonicalParameterName(tokens[1]), toReal(tokens[0])});
    }
    return records;
}

// The samples spell a name in several ways within one file (with or without
// its subscript, another plant index, shortened to six letters): one base.
bool sameParameter(const std::string& a, const std::string& b) {
    std::string baseA = a.substr(0, a.find('(')), baseB = b.substr(0, b.find('('));
    size_t shorter = std::min(baseA.size(), baseB.size());
    return baseA == baseB || (shorter >= 5 && baseA.compare(0, shorter, baseB, 0, shorter) == 0);
}

// Line by line: same names in the same order, same values. Returns what
// differs; names spelled otherwise (with or without a subscript) go to `spelled`.
std::vector<std::string> compareLines(const value_lines& sample, const value_lines& ours,
                                      std::vector<std::string>& spelled) {
    std::vector<std::string> differences;
    if (sample.size() != ours.size())
        differences.push_back(strprintf("%zu lines, ours %zu", sample.size(), ours.size()));
    for (size_t i = 0; i < std::min(sample.size(), ours.size()); ++i) {
        const std::string& a = sample[i].name;
        const std::string& b = ours[i].name;
        if (a != b && sameParameter(a, b)) spelled.push_back(a + " / " + b);
        else if (a != b) differences.push_back(strprintf("line %zu: %s, ours %s", i + 1, a.c_str(), b.c_str()));
        if (!same(sample[i].value, ours[i].value))
            differences.push_back(strprintf("%s: %.9g, ours %.9g", a.c_str(), sample[i].value, ours[i].value));
    }
    return differences;
}

std::string joined(const std::vector<std::string>& items) {
    std::string out;
    for (const std::string& item : items) out += (out.empty() ? "" : "; ") + item;
    return out.empty() ? "(none)" : out;
}

struct release_case {
    const char* folder;
    const char* schedule;
    const char* siteFile;
    const char* weatherFile;
    const char* profile;
};

// A sample set-up imported into a fresh project under its own profile.
class imported_sample {
public:
    explicit imported_sample(const release_case& c) : inputs(sbtest::samplesDir() + "/" + c.folder) {
        sb::message_sink errors;
        db = createNewProject(dir.file("import.sbproj"), errors);
        profile = release_profile_catalogue::shipped().find(c.profile);
    }
    void importAndLoad(sb::message_sink& errors) {
        importRunFiles(*db, inputs, schedule, *profile, 500, errors);
        sbtest::loadProjectSetup(*db, 500, loaded, errors);
    }
    // Writes the record's run directory under a profile into a folder of its own.
    std::string prepare(const release_profile& under, sb::message_sink& errors) {
        const std::string run = dir.file(under.name) + "/";
        std::filesystem::create_directory(run);
        EXPECT_TRUE(prepareRunDirectory(loaded.record, under, run + "model", loaded.outfiles, loaded.options,
                                        loaded.soils, loaded.stations, errors));
        return run;
    }

    sbtest::temp_dir dir;
    std::string inputs;
    std::string schedule;
    std::unique_ptr<database> db;
    const release_profile* profile = nullptr;
    sbtest::golden_setup loaded;  // what the project holds after the import
};

class RealRunFiles : public ::testing::TestWithParam<release_case> {};

TEST_P(RealRunFiles, ReadThenWrittenUnderItsOwnProfileEveryFileHoldsTheSampleValues) {
    SB_REQUIRE_SAMPLES();
    const release_case& c = GetParam();
    imported_sample sample(c);
    sample.schedule = c.schedule;
    ASSERT_TRUE(sample.db && sample.profile);

    // The set-up is recognised as its own release's.
    std::vector<const release_profile*> all;
    for (const release_profile& p : release_profile_catalogue::shipped().profiles()) all.push_back(&p);
    sb::message_sink verdict;
    EXPECT_EQ(recogniseReleaseProfile(sample.inputs, c.siteFile, all, "", verdict), sample.profile) << verdict;
    EXPECT_EQ(verdict, "The set-up in " + sample.inputs + " matches release profile \"" + c.profile + "\" (" +
                           sample.profile->title + ").\n");

    sb::message_sink errors;
    sample.importAndLoad(errors);
    EXPECT_EQ(errors.text().find("ERROR"), std::string::npos) << errors;
    sb::message_sink runErrors;
    const std::string run = sample.prepare(*sample.profile, runErrors);
    EXPECT_EQ(runErrors.text().find("ERROR"), std::string::npos) << runErrors;

    std::vector<std::string> spelled;
    EXPECT_EQ(
        joined(compareLines(parameterLines(sample.inputs + "/fix.100"), parameterLines(run + "fix.100"), spelled)),
        "(none)");
    EXPECT_EQ(joined(compareLines(parameterLines(sample.inputs + "/" + c.siteFile), parameterLines(run + "sbsite.100"),
                                  spelled)),
              "(none)");
    for (const char* file : {"sitepar.in", "soils.in"})
        EXPECT_EQ(leadingNumbers(run + file), leadingNumbers(sample.inputs + "/" + file)) << file;
    EXPECT_EQ(leadingNumbers(run + weatherFileName(sample.loaded.record.weatherId())),
              leadingNumbers(sample.inputs + "/" + c.weatherFile));

    // Every record of every option file, among ours (the project's own options
    // come too); of two records of one name only the first, which the release reads.
    for (const std::string& file : profileParameterFiles()) {
        if (file == "fix.100" || file == "site.100") continue;
        auto ours = optionRecords(run + file);
        std::set<std::string> seen;
        for (const auto& [name, lines] : optionRecords(sample.inputs + "/" + file)) {
            if (!seen.insert(name).second) continue;
            auto mine = std::find_if(ours.begin(), ours.end(), [&](const auto& r) { return r.first == name; });
            ASSERT_NE(mine, ours.end()) << file << " " << name;
            EXPECT_EQ(joined(compareLines(lines, mine->second, spelled)), "(none)") << file << " " << name;
        }
    }

    // The schedule reads back to the same blocks and events, intervals included.
    tellura_control_record theirs, ours;
    schedule_references theirRefs, ourRefs;
    ASSERT_TRUE(readScheduleFile(sample.inputs + "/" + c.schedule, *sample.profile, theirs, theirRefs, errors));
    ASSERT_TRUE(readScheduleFile(run + "sb.sch", *sample.profile, ours, ourRefs, errors));
    ASSERT_EQ(ours.blocks.size(), theirs.blocks.size());
    for (size_t b = 0; b < theirs.blocks.size(); ++b) {
        theirs.blocks[b].weatherId = ours.blocks[b].weatherId;
        EXPECT_TRUE(ours.blocks[b] == theirs.blocks[b]) << "block " << b + 1;
    }
    // The rows of outfiles.in name the sample's files in its order.
    auto files = [](const std::string& path) {
        std::vector<std::string> names;
        for (const std::string& line : splitLines(sbtest::readFile(path)))
            if (splitTokens(line).size() > 1 && std::isdigit(static_cast<unsigned char>(line[0])))
                names.push_back(splitTokens(line)[1]);
        return names;
    };
    EXPECT_EQ(files(run + "outfiles.in"), files(sample.inputs + "/outfiles.in"));
    for (const profile_extra_file& extra : sample.profile->extraFiles)
        EXPECT_EQ(sbtest::readFile(run + extra.file), sbtest::readFile(sample.inputs + "/" + extra.file));
    std::set<std::string> spellings(spelled.begin(), spelled.end());
    std::cout << "[" << c.profile << "] names the sample spells otherwise than its profile: "
              << joined({spellings.begin(), spellings.end()}) << "\n";
}

INSTANTIATE_TEST_SUITE_P(Samples, RealRunFiles,
                         ::testing::Values(release_case{"diurna-2012/inputs", "example.sch", "site2012.100",
                                                        "weather.wth", "diurna-2012"},
                                           release_case{"diurna45-2008-inputs", "sch_TESTgrass.sch", "site_grass.100",
                                                        "TEST_Daily.wth", "diurna-2008"}));

}  // namespace
