// The stand-in's strict mode against the real releases' own sample set-ups:
// each set-up as shipped is accepted, and every refusal observed on the real
// programs is reproduced, word for word, after one fault is applied to a copy.
#include "standin_fixture.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <sstream>

namespace {

namespace fs = std::filesystem;

struct release_setup {
    int year;
    const char* inputs;  // under the samples folder
    const char* outputs;
    const char* schedule;
    const char* siteFile;
};

const release_setup k2012{2012, "diurna-2012/inputs", "diurna-2012/outputs", "example", "site2012.100"};
const release_setup k2008{2008, "diurna45-2008-inputs", "diurna45-2008-outputs", "sch_TESTgrass", "site_grass.100"};

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
}

// Edits one file of the copy line by line.
void editLines(const std::string& path, const std::function<void(std::vector<std::string>&)>& edit) {
    std::vector<std::string> lines = linesOf(sbtest::readFile(path));
    edit(lines);
    sbtest::writeFile(path, joined(lines));
}

// Replaces (or, with nullptr, removes) the first line holding `text`.
void replaceLineWith(std::vector<std::string>& lines, const std::string& text, const char* line) {
    auto found = std::find_if(lines.begin(), lines.end(), [&](auto& l) { return l.find(text) != std::string::npos; });
    ASSERT_NE(found, lines.end()) << "no line with " << text;
    if (line) *found = line;
    else lines.erase(found);
}

// The three lines a version-4 crop (or tree) holds and these releases do not read.
void addLinesAfterEach(std::vector<std::string>& lines, const std::string& text) {
    std::vector<std::string> result;
    for (const std::string& line : lines) {
        result.push_back(line);
        if (line.find(text) != std::string::npos)
            for (const char* extra : {"0.00000  'WSCOEFF(1,1)'", "1.00000  'WSCOEFF(1,2)'", "1.00000  'SFAVAIL(1)'"})
                result.push_back(extra);
    }
    ASSERT_GT(result.size(), lines.size()) << "no line with " << text;
    lines = result;
}

// A copy of a release's sample set-up, run through the strict stand-in.
class strict_run {
public:
    explicit strict_run(const release_setup& setup) : setup_(setup) {
        fs::copy(reference(), dir_.path(), fs::copy_options::recursive | fs::copy_options::overwrite_existing);
        for (const auto& entry : fs::directory_iterator(dir_.path()))
            fs::permissions(entry.path(), fs::perms::owner_write, fs::perm_options::add);
    }
    std::string reference() const { return sbtest::samplesDir() + "/" + setup_.inputs; }
    std::string file(const std::string& name) const { return dir_.file(name); }
    std::string label(const char* role) const {
        return std::string(role) + " imitating the " + std::to_string(setup_.year) + " release strictly\n";
    }
    // Console text, then "status=N" (the stand-in's exit status).
    std::string runModel(const std::string& schedule = "") const {
        return run(sbtest::standinPath(), " -s " + (schedule.empty() ? setup_.schedule : schedule) + " -n run");
    }
    std::string runList(const std::string& variables) const {
        sbtest::writeFile(file("vars.txt"), variables);
        return run(sbtest::binDir() + "/list100-standin", " run run vars.txt");
    }

private:
    std::string run(const std::string& program, const std::string& arguments) const {
        std::string command = "'" + program + "' --strict " + std::to_string(setup_.year) + " --reference '" +
                              reference() + "'" + arguments + "; echo status=$?";
        return sbtest::runInDirectory(dir_.path(), command);
    }

    release_setup setup_;
    sbtest::temp_dir dir_;
};

std::vector<float> recordTimes(const release_setup& setup, const std::string& bytes) {
    std::vector<std::string> records;
    bool framed =
        setup.year == 2012 ? sbtest::parseOneByteFraming(bytes, records) : sbtest::parseFourByteFraming(bytes, records);
    EXPECT_TRUE(framed);
    std::vector<float> times;
    for (const std::string& record : records) {
        EXPECT_EQ(record.size(), setup.year == 2012 ? 3212u : 2432u);
        times.push_back(sbtest::floatAt(record, 0));
    }
    return times;
}

// Its list utility too, skipping an unknown name.
TEST(StrictStandin, EachReleaseAcceptsItsOwnSampleSetUp) {
    SB_REQUIRE_SAMPLES();
    for (const release_setup& setup : {k2012, k2008}) {
        SCOPED_TRACE(setup.year);
        strict_run run(setup);
        std::string console = run.runModel();
        std::string success = setup.year == 2012 ? "Execution success.\n" : " Execution success.\n";
        EXPECT_THAT(console, StartsWith(run.label("Stand-in model (not the model),")));
        EXPECT_THAT(console, HasSubstr("\n" + success + "status=0\n"));
        EXPECT_THAT(console, Not(HasSubstr("error")));
        EXPECT_EQ(setup.year == 2012,
                  console.find("ERROR!  N balance boundary check exceeded.\n") != std::string::npos);
        EXPECT_GT(recordTimes(setup, sbtest::readFile(run.file("run.bin"))).size(), 100u);
        for (const char* text : {"daily.out", "summary.out", "nflux.out"}) {
            std::string reference = sbtest::samplesDir() + "/" + setup.outputs + "/" + text;
            std::string header = linesOf(sbtest::readFile(reference)).at(0);
            std::vector<std::string> written = linesOf(sbtest::readFile(run.file(text)));
            ASSERT_GT(written.size(), 365u) << text;
            EXPECT_EQ(written[0], header.substr(0, header.find_last_not_of(" \r") + 1)) << text;
            // The 2012 release prints small numbers without their leading zero (".0118").
            EXPECT_EQ(written[1].find(" 0.") == std::string::npos, setup.year == 2012) << written[1];
        }
        // The list utility skips an unknown name and ends as the release does.
        EXPECT_EQ(run.runList("somsc\nnosuchname\naglivc\n"),
                  run.label("Stand-in list100 (not the list utility),") + "Variable not found, skipping: nosuchname\n" +
                      (setup.year == 2012 ? "Done.\nStop - Program terminated.\n" : "Done.\n") + "status=0\n");
        const std::string lineEnd = setup.year == 2012 ? "\r\n" : "\n";
        EXPECT_THAT(sbtest::readFile(run.file("run.lis")),
                    StartsWith("       time     somsc           aglivc     " + lineEnd + lineEnd));
    }
}

struct refusal_case {
    const char* what;
    release_setup setup;
    const char* schedule;  // "" for the set-up's own
    const char* file;      // edited in the copy; "" for the site file
    std::function<void(std::vector<std::string>&)> fault;
    const char* console;  // the release's own lines
};

TEST(StrictStandin, RefusesWhatEachReleaseRefusedWithItsOwnMessages) {
    SB_REQUIRE_SAMPLES();
    const std::string fixMessage =
        "There is an error in your fix.100 file.\nThe data for fleach was read when the data for favail was "
        "expected.\nStop - Program terminated.\n";
    auto nlayer9 = [](std::vector<std::string>& lines) { replaceLineWith(lines, "'NLAYER'", "9.00000  'NLAYER'"); };
    const refusal_case cases[] = {
        {"fix.100 without FAVAIL(1)", k2012, "", "fix.100", [](auto& l) { replaceLineWith(l, "'FAVAIL(1)'", nullptr); },
         fixMessage.c_str()},
        {"fix.100 without FAVAIL(1)", k2008, "", "fix.100", [](auto& l) { replaceLineWith(l, "'FAVAIL(1)'", nullptr); },
         fixMessage.c_str()},
        {"sitepar.in with a line more", k2012, "", "sitepar.in", [](auto& l) { l.push_back("0.5  / one line more"); },
         "ERROR:  Incorrect number of lines in sitepar.in file.\nEnding simulation!\n"},
        {"sitepar.in with a line less", k2012, "", "sitepar.in", [](auto& l) { l.pop_back(); },
         "ERROR:  Incorrect number of lines in sitepar.in file.\nEnding simulation!\n"},
        {"NLAYER 9", k2012, "", "", nlayer9, "Soil structures in fix.100 and soils.in are not compatible.\n"},
        {"NLAYER 9", k2008, "", "", nlayer9, "Soil structures in fix.100 and soils.in are not compatible.\n"},
        {"soils.in one layer short", k2012, "", "soils.in", [](auto& l) { l.pop_back(); },
         "Soil structures in fix.100 and soils.in are not compatible.\n"},
        {"crop.100 with version-4 lines", k2012, "", "crop.100", [](auto& l) { addLinesAfterEach(l, "'NPP2CS(1)'"); },
         "run-time error F6103: READ(crop.100) - invalid REAL\n"},
        {"crop.100 with version-4 lines", k2008, "", "crop.100", [](auto& l) { addLinesAfterEach(l, "'MXDDHRV'"); },
         "Fortran runtime error: Bad real number in item 1 of list input\n"},
        {"N scaling without nscale.dat", k2008, "", "nscale.dat", nullptr, "STOP    The nscale.dat file is missing!\n"},
        {"tree.100 with version-4 lines", k2008, "sch_TESTtree", "tree.100",
         [](auto& l) { addLinesAfterEach(l, "'TMPLFS'"); },
         "Fortran runtime error: Bad real number in item 1 of list input\n"},
    };
    for (const refusal_case& test : cases) {
        SCOPED_TRACE(std::to_string(test.setup.year) + ": " + test.what);
        strict_run run(test.setup);
        std::string file = run.file(*test.file ? test.file : test.setup.siteFile);
        if (test.fault) editLines(file, test.fault);
        else fs::remove(file);
        std::string console = run.runModel(test.schedule);
        EXPECT_EQ(console, run.label("Stand-in model (not the model),") + test.console + "status=0\n");
        // A refused run leaves an empty (2008) or 2-byte (2012) binary file and no other output.
        EXPECT_EQ(fs::file_size(run.file("run.bin")), test.setup.year == 2012 ? 2u : 0u);
        EXPECT_FALSE(fs::exists(run.file("summary.out")));
    }
}

// "1" has three implied decimals: 0.001 years, so the annual first block
// silently turns into monthly output.
TEST(StrictStandin, OutputIntervalWithoutDecimalPointIsThousandthsOfAYear) {
    SB_REQUIRE_SAMPLES();
    for (const char* interval : {"1.000", "1"}) {
        SCOPED_TRACE(interval);
        strict_run run(k2012);
        editLines(run.file("example.sch"), [&](auto& lines) {
            replaceLineWith(lines, "1.000         Output interval",
                            (std::string(interval) + "    Output interval").c_str());
        });
        std::string console = run.runModel();
        ASSERT_THAT(console, HasSubstr("Execution success.\n"));
        std::vector<float> times = recordTimes(k2012, sbtest::readFile(run.file("run.bin")));
        ASSERT_GT(times.size(), 2u);
        EXPECT_NEAR(times[1] - times[0], std::string(interval) == "1" ? 1.0f / 12 : 1.0f, 0.01f);
    }
}

}  // namespace
