// The stand-in model writes its outputs in the model's exact formats: the
// binary framings byte by byte, the list file's column positions, the text
// files' headers. Checked here with parsers of our own, independent of the
// workbench's readers.
#include "standin_fixture.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <sstream>

namespace {

using sbtest::floatAt;
using sbtest::parseFourByteFraming;
using sbtest::parseOneByteFraming;
using sbtest::standin_run_dir;
using sbtest::standin_setup;
using sbtest::uint32At;

std::vector<float> times(const std::vector<std::string>& records) {
    std::vector<float> result;
    for (const std::string& record : records) result.push_back(floatAt(record, 0));
    return result;
}

// Year and month of a monthly time, as the readers split it (32-bit floats).
std::pair<int, int> yearMonth(float time) {
    int year = static_cast<int>(std::floor(time));
    float fraction = (time - static_cast<float>(year)) / 0.083333336f + 0.5f;
    int month = static_cast<int>(std::floor(fraction));
    return month == 0 ? std::make_pair(year - 1, 12) : std::make_pair(year, month);
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) result.push_back(line);
    return result;
}

std::string field(const std::string& line, size_t first, size_t last) {  // 1-based, inclusive
    if (line.size() < first) return "";
    std::string text = line.substr(first - 1, last - first + 1);
    size_t start = text.find_first_not_of(' ');
    size_t end = text.find_last_not_of(' ');
    return start == std::string::npos ? "" : text.substr(start, end - start + 1);
}

// A layout of our own, so that tests know where the stand-in puts three variables.
class test_layout {
public:
    explicit test_layout(const sbtest::temp_dir& dir) : path_(dir.file("layout.tsv")) {
        sbtest::writeFile(path_, "block\tindex\tname\nplot1\t1\tsomsc\nplot2\t3\taglivc\nplot3\t5\tcgrain\n");
        setenv("SB_STANDIN_LAYOUT", path_.c_str(), 1);
    }
    ~test_layout() { unsetenv("SB_STANDIN_LAYOUT"); }

private:
    std::string path_;
};

std::vector<std::string> modelRecords(const standin_setup& setup, std::string* console = nullptr) {
    standin_run_dir dir(setup);
    std::string output = dir.runModel();
    if (console) *console = output;
    std::vector<std::string> records;
    EXPECT_TRUE(parseOneByteFraming(sbtest::readFile(dir.file("sb.bin")), records)) << output;
    return records;
}

TEST(StandinBinary, OneByteMarkersRecordSizesAndTimes) {
    standin_run_dir dir;  // release 3: 2360-byte records
    std::string console = dir.runModel();
    EXPECT_THAT(console, Not(HasSubstr("error")));
    EXPECT_EQ(console.substr(console.size() - 19), "Execution success.\n");
    std::vector<std::string> records;
    std::vector<std::vector<int>> markers;
    ASSERT_TRUE(parseOneByteFraming(sbtest::readFile(dir.file("sb.bin")), records, &markers));
    // Block 1: annual 1950 to 1955; block 2: monthly from January 1956 to the
    // first time at or after 1960 (1960.00, December 1959).
    ASSERT_EQ(records.size(), 6u + 48u);
    std::vector<int> split(18, 129);  // 2360 = 18 x 128 + 56
    split.push_back(56);
    for (size_t i = 0; i < records.size(); ++i) {
        ASSERT_EQ(records[i].size(), 2360u);
        ASSERT_EQ(markers[i], split) << i;
    }
    std::vector<float> t = times(records);
    for (int year = 1950; year <= 1955; ++year) EXPECT_EQ(t[year - 1950], static_cast<float>(year));
    for (size_t i = 6; i < t.size(); ++i) {
        int monthIndex = static_cast<int>(i) - 6;  // 0 = January 1956
        EXPECT_EQ(yearMonth(t[i]), std::make_pair(1956 + monthIndex / 12, monthIndex % 12 + 1)) << t[i];
        EXPECT_EQ(t[i] < 1960.0f, i + 1 < t.size());  // only the last reaches the block's last year
    }
    EXPECT_FLOAT_EQ(t[6], 1956.08f);
    EXPECT_FLOAT_EQ(t.back(), 1960.0f);
}

TEST(StandinBinary, RecordSizesFollowTheRelease) {
    const std::pair<int, size_t> sizes[] = {{2, 1984}, {4, 3212}, {5, 2360}};
    for (auto [release, bytes] : sizes) {
        standin_setup setup;
        setup.release = release;
        std::vector<std::string> records = modelRecords(setup);
        ASSERT_FALSE(records.empty()) << release;
        EXPECT_EQ(records[0].size(), bytes) << release;
    }
}

TEST(StandinBinary, ReleaseOneUsesFourByteMarkersAndWritesTheNewSiteFile) {
    standin_setup setup;
    setup.release = 1;
    standin_run_dir dir(setup);
    std::string console = dir.runModel();
    std::string file = sbtest::readFile(dir.file("sb.bin"));
    ASSERT_GE(file.size(), 4u) << console;
    EXPECT_EQ(uint32At(file, 0), 2076u);
    std::vector<std::string> records;
    ASSERT_TRUE(parseFourByteFraming(file, records));
    EXPECT_EQ(records.size(), 54u);  // interval 1.00000 years, then 0.08333 years
    EXPECT_EQ(file.size(), 54u * (2076 + 8));
    EXPECT_EQ(sbtest::readFile(dir.file("sbNew.100")), sbtest::readFile(dir.file("sbsite.100")));
}

TEST(StandinBinary, ValuesFollowClayFertilizerAndCrop) {
    sbtest::temp_dir layoutDir;
    test_layout layout(layoutDir);
    const size_t aglivc = 4 * (1 + 340 + 2), cgrain = 4 * (1 + 340 + 120 + 4);
    auto somscIn1955 = [](double clay, double nitrogen) {
        standin_setup setup;
        setup.clay = clay;
        setup.nitrogen = nitrogen;
        std::vector<std::string> records = modelRecords(setup);
        return records.size() > 5 ? floatAt(records[5], 4) : 0.0f;
    };
    float base = somscIn1955(0.30, 30);
    EXPECT_GT(base, 0.0f);
    EXPECT_GT(somscIn1955(0.50, 30), base);
    EXPECT_GT(somscIn1955(0.30, 60), base);

    std::vector<std::string> records = modelRecords({});
    ASSERT_EQ(records.size(), 54u);
    EXPECT_LT(floatAt(records[0], 4), floatAt(records[5], 4));  // soil carbon builds up
    // Block 1 grows C8 (PRDX(1) 0.7), block 2 G3 (0.4) with a season.
    EXPECT_FLOAT_EQ(floatAt(records[0], aglivc), 70.0f);
    EXPECT_FLOAT_EQ(floatAt(records[0], cgrain), 21.0f);
    float peak = 0;
    for (size_t i = 6; i < records.size(); ++i) peak = std::max(peak, floatAt(records[i], aglivc));
    EXPECT_NEAR(peak, 40.0f, 0.5f);
    EXPECT_NE(floatAt(records[7], aglivc), floatAt(records[10], aglivc));
}

TEST(StandinBinary, GarbageModeBreaksTheFraming) {
    standin_run_dir dir;
    setenv("SB_STANDIN_MODE", "garbage", 1);
    dir.runModel();
    unsetenv("SB_STANDIN_MODE");
    std::vector<std::string> records;
    EXPECT_FALSE(parseOneByteFraming(sbtest::readFile(dir.file("sb.bin")), records));
}

TEST(StandinBinary, RealLayoutAndRealFramingAgree) {
    SB_REQUIRE_SAMPLES();
    std::string layout = sbtest::samplesDir() + "/diurna-2012/outputs/binary-layout.tsv";
    setenv("SB_STANDIN_LAYOUT", layout.c_str(), 1);
    standin_setup setup;
    setup.release = 4;
    standin_run_dir dir(setup);
    std::string console = dir.runModel();
    std::string listConsole = dir.runList100("somsc\naglivc\n");
    unsetenv("SB_STANDIN_LAYOUT");
    std::vector<std::string> ours, real;
    std::vector<std::vector<int>> ourMarkers, realMarkers;
    ASSERT_TRUE(parseOneByteFraming(sbtest::readFile(dir.file("sb.bin")), ours, &ourMarkers)) << console;
    ASSERT_TRUE(parseOneByteFraming(sbtest::readFile(sbtest::samplesDir() + "/diurna-2012/outputs/example.bin"), real,
                                    &realMarkers));
    EXPECT_EQ(ourMarkers[0], realMarkers[0]);  // the same split of a 3212-byte record
    // The real layout puts somsc at plot1 339 and aglivc at plot1 18.
    std::vector<std::string> list = lines(sbtest::readFile(dir.file("sb.lis")));
    ASSERT_GE(list.size(), 3u) << listConsole;
    EXPECT_EQ(field(list[0], 17, 32), "somsc");
    EXPECT_EQ(field(list[0], 33, 48), "aglivc");
    EXPECT_NEAR(std::atof(field(list[2], 17, 32).c_str()), floatAt(ours[0], 4 * 339), 0.0001);
    EXPECT_NEAR(std::atof(field(list[2], 33, 48).c_str()), floatAt(ours[0], 4 * 18), 0.0001);
}

TEST(StandinList, WideLayoutColumnsMatchTheBinaryValues) {
    sbtest::temp_dir layoutDir;
    test_layout layout(layoutDir);
    standin_run_dir dir;
    dir.runModel();
    std::string console = dir.runList100("aglivc\nnotavariable\nsomsc\n");
    EXPECT_THAT(console, HasSubstr("Variable not found, skipping: notavariable\n"));
    EXPECT_THAT(console, Not(HasSubstr("error")));
    std::vector<std::string> records;
    ASSERT_TRUE(parseOneByteFraming(sbtest::readFile(dir.file("sb.bin")), records));
    std::vector<std::string> list = lines(sbtest::readFile(dir.file("sb.lis")));
    ASSERT_EQ(list.size(), 2 + records.size());
    EXPECT_EQ(list[0], "       time     aglivc          somsc      ");
    EXPECT_EQ(list[1], "");
    for (size_t i = 0; i < records.size(); ++i) {
        const std::string& row = list[2 + i];
        ASSERT_EQ(row.size(), 11u + 2 * 16);
        EXPECT_NEAR(std::atof(field(row, 1, 11).c_str()), floatAt(records[i], 0), 0.005);
        EXPECT_NEAR(std::atof(field(row, 17, 32).c_str()), floatAt(records[i], 4 * (1 + 340 + 2)), 0.00005);
        EXPECT_NEAR(std::atof(field(row, 33, 48).c_str()), floatAt(records[i], 4), 0.00005);
        EXPECT_EQ(row.substr(11, 5), "     ");
    }
    EXPECT_EQ(list[2].substr(0, 11), "    1950.00");
    EXPECT_EQ(list[8].substr(0, 11), "    1956.08");
}

TEST(StandinList, NarrowLayoutForReleaseTwoAndYearFirstForReleaseOne) {
    sbtest::temp_dir layoutDir;
    test_layout layout(layoutDir);
    standin_setup setup;
    setup.release = 2;
    standin_run_dir dir(setup);
    dir.runModel();
    dir.runList100("somsc\naglivc\n");
    std::vector<std::string> records;
    ASSERT_TRUE(parseOneByteFraming(sbtest::readFile(dir.file("sb.bin")), records));
    std::vector<std::string> list = lines(sbtest::readFile(dir.file("sb.lis")));
    ASSERT_EQ(list.size(), 2 + records.size());
    EXPECT_EQ(field(list[0], 10, 24), "somsc");
    EXPECT_EQ(field(list[0], 25, 39), "aglivc");
    EXPECT_EQ(list[2].substr(0, 7), "1950.00");
    EXPECT_NEAR(std::atof(field(list[2], 8, 22).c_str()), floatAt(records[0], 4), 0.00005);
    EXPECT_NEAR(std::atof(field(list[2], 23, 37).c_str()), floatAt(records[0], 4 * (1 + 279 + 2)), 0.00005);

    setup.release = 1;
    standin_run_dir first(setup);
    first.runModel();
    first.runList100("somsc\n");
    list = lines(sbtest::readFile(first.file("sb.lis")));
    ASSERT_GE(list.size(), 3u);
    EXPECT_EQ(list[2].substr(0, 4), "1950");
    EXPECT_NEAR(std::atof(field(list[2], 17, 32).c_str()), 1000 + 4000 * 0.3 + 2 * 30, 0.01);
}

TEST(StandinInputs, MissingOrMalformedFilesStopWithAnError) {
    struct broken_input {
        int release;
        const char* file;
        const char* content;  // nullptr: the file is removed
        const char* expected;
    };
    const broken_input cases[] = {
        {3, "fix.100", nullptr, "stand-in model: error: cannot read fix.100"},
        {3, "fert.100", nullptr, "stand-in model: error: cannot read fert.100"},
        {3, "crop.100", "0.7  PRDX(1)\n", "stand-in model: error: malformed crop.100 line 1"},
        {3, "crop.100", "G3  grass\n0.4  PRDX(1)\n", "block 1 CROP: option \"C8\" not found in crop.100"},
        {3, "sbsite.100", "Site x\n5.0  PRECIP(1)\n", "sbsite.100 has no CLAY value"},
        {3, "sb.sch", "#7 x\n1950 starting year\n", "stand-in model: error: sb.sch line"},
        {1, "sb.evt", nullptr, "stand-in model: error: cannot read sb.evt"},
        {4, "soils.in", nullptr, "stand-in model: error: cannot read soils.in"},
        {4, "outfiles.in", "no header\n", "outfiles.in has no \"Output (0/1)\" header"},
        {6, "sb.ini", nullptr, "stand-in model: error: cannot read sb.ini"},
        {6, "sbfix.100", nullptr, "stand-in model: error: cannot read sbfix.100"},
    };
    for (const broken_input& test : cases) {
        standin_setup setup;
        setup.release = test.release;
        standin_run_dir dir(setup);
        if (test.content) sbtest::writeFile(dir.file(test.file), test.content);
        else std::filesystem::remove(dir.file(test.file));
        std::string console = dir.runModel();
        EXPECT_THAT(console, HasSubstr(test.expected)) << test.file << ":\n" << console;
        EXPECT_THAT(console, Not(HasSubstr("Execution success."))) << test.file;
        EXPECT_FALSE(std::filesystem::exists(dir.file("sb.bin"))) << test.file;
    }
}

TEST(StandinInputs, AcceptsTheRealDailyReleasesOwnInputSet) {
    SB_REQUIRE_SAMPLES();
    sbtest::temp_dir dir;
    std::string inputs = sbtest::samplesDir() + "/diurna-2012/inputs";
    for (const auto& entry : std::filesystem::directory_iterator(inputs))
        sbtest::writeFile(dir.file(entry.path().filename().string()), sbtest::readFile(entry.path().string()));
    sbtest::writeFile(dir.file("sb.sch"), sbtest::readFile(inputs + "/example.sch"));
    sbtest::writeFile(dir.file("sbsite.100"), sbtest::readFile(inputs + "/site2012.100"));
    std::string console = sbtest::runInDirectory(dir.path(), "'" + sbtest::standinPath() + "' --release 4 -s sb -n sb");
    EXPECT_THAT(console, Not(HasSubstr("error")));
    ASSERT_GE(console.size(), 19u);
    EXPECT_EQ(console.substr(console.size() - 19), "Execution success.\n");
    std::vector<std::string> records;
    ASSERT_TRUE(parseOneByteFraming(sbtest::readFile(dir.file("sb.bin")), records));
    // Blocks: annual 1900-1919; monthly to 1992.00 from 1990; from 1993; from 1995 to 2006.00.
    ASSERT_EQ(records.size(), 20u + 24 + 12 + 132);
    std::vector<float> t = times(records);
    EXPECT_EQ(t[0], 1900.0f);
    EXPECT_EQ(t[19], 1919.0f);
    EXPECT_FLOAT_EQ(t[20], 1990.08f);
    EXPECT_FLOAT_EQ(t[43], 1992.0f);
    EXPECT_FLOAT_EQ(t[44], 1993.08f);
    EXPECT_FLOAT_EQ(t.back(), 2006.0f);
}

TEST(StandinText, DailyReleaseFilesHaveTheCheckedHeaders) {
    standin_setup setup;
    setup.release = 4;
    standin_run_dir dir(setup);
    std::string console = dir.runModel();
    EXPECT_THAT(console, Not(HasSubstr("error")));
    const char* const names[] = {"time", "N2Oflux", "NOflux", "N2flux", "CH4", "NIT", "ANNPPT"};
    const size_t ranges[][2] = {{1, 8}, {9, 22}, {23, 36}, {37, 50}, {51, 64}, {65, 78}, {79, 91}};
    for (const char* file : {"year_summary.out", "summary.out"}) {
        std::vector<std::string> text = lines(sbtest::readFile(dir.file(file)));
        ASSERT_GT(text.size(), 1u) << file;
        for (int i = 0; i < 7; ++i) EXPECT_EQ(field(text[0], ranges[i][0], ranges[i][1]), names[i]) << file;
        EXPECT_EQ(std::floor(std::atof(field(text[1], 1, 8).c_str())), 1950) << file;
        EXPECT_EQ(std::floor(std::atof(field(text.back(), 1, 8).c_str())), 1960) << file;
        EXPECT_GT(std::atof(field(text[1], 79, 91).c_str()), 0.0) << file;
    }
    EXPECT_EQ(lines(sbtest::readFile(dir.file("year_summary.out"))).size(), 1u + 11);
    std::vector<std::string> daily = lines(sbtest::readFile(dir.file("daily.out")));
    ASSERT_EQ(daily.size(), 1u + 11 * 365 + 3);  // 1952, 1956 and 1960 are leap years
    std::istringstream header(daily[0]);
    std::vector<std::string> columns{std::istream_iterator<std::string>(header), {}};
    EXPECT_EQ(columns, (std::vector<std::string>{"time", "dayofyr", "tmax", "tmin", "N2Oflux", "NOflux", "CO2resp"}));
    std::istringstream row(daily[1 + 365 + 365]);  // 1952, day 1
    double time = 0, day = 0;
    row >> time >> day;
    EXPECT_EQ(time, 1952.0);
    EXPECT_EQ(day, 1.0);
    EXPECT_FALSE(std::filesystem::exists(dir.file("nflux.out")));  // not selected in outfiles.in
}

TEST(StandinText, ReleaseSixWritesSixCommaSeparatedFiles) {
    standin_setup setup;
    setup.release = 6;
    standin_run_dir dir(setup);
    std::string console = dir.runModel();
    EXPECT_THAT(console, Not(HasSubstr("error")));
    const std::pair<const char*, size_t> files[] = {{"sb.cropC.csv", 1},    {"sb.soilC.csv", 1}, {"sb.CO2.csv", 13},
                                                    {"sb.ForestC.csv", 13}, {"sb.nps.csv", 1},   {"sb.wt.csv", 13}};
    for (auto [name, headerLines] : files) {
        std::vector<std::string> text = lines(sbtest::readFile(dir.file(name)));
        ASSERT_EQ(text.size(), headerLines + 11) << name;
        EXPECT_THAT(text[headerLines - 1], StartsWith("time,")) << name;
        EXPECT_THAT(text[headerLines], StartsWith("1950.0000,")) << name;
        EXPECT_THAT(text.back(), StartsWith("1960.0000,")) << name;
    }
    EXPECT_EQ(lines(sbtest::readFile(dir.file("sb.cropC.csv")))[0],
              "time,agcacc,aglcis(1),aglcis(2),bgcacc,bglivc,cgrain,cinput,cprodc,creta,sdrema,shrema,stdedc");
    EXPECT_FALSE(std::filesystem::exists(dir.file("sb.bin")));
}

TEST(StandinLabel, ReleaseIsWorkedOutFromCommandLineAndSchedule) {
    // Releases 3 and 5 write the same schedule and the same outputs: 3 stands for both.
    for (int release : {1, 2, 3, 4, 6}) {
        standin_setup setup;
        setup.release = release;
        standin_run_dir dir(setup);
        std::string console = dir.runModel(true);
        EXPECT_THAT(console,
                    StartsWith("Stand-in model (not the model), imitating release " + std::to_string(release) + "\n"));
        EXPECT_THAT(console, Not(HasSubstr("error")));
    }
}

TEST(StandinLabel, HelpSaysItIsAStandIn) {
    std::string help = sbtest::runInDirectory("/", "'" + sbtest::standinPath() + "' --help");
    EXPECT_THAT(help, HasSubstr("STAND-IN for the Tellura model"));
    EXPECT_THAT(help, HasSubstr("It is not the model"));
    std::string bad = sbtest::runInDirectory("/", "'" + sbtest::standinPath() + "' --mode sideways");
    EXPECT_EQ(bad, "stand-in model: error: unknown test mode \"sideways\"\n");
}

}  // namespace
