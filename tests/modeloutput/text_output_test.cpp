// Year summaries, the daily output file, the comma-separated files of version 6
// and keeping the daily files of chosen years.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <map>

#include "app/text_format.h"
#include "modeloutput/csv_output_reader.h"
#include "modeloutput/daily_file_keeper.h"
#include "modeloutput/text_output_readers.h"
#include "output_test_files.h"
#include "test_support.h"

using namespace sb;

namespace {

const char* const kSummaryHeader =
    "    time       N2Oflux        NOflux        N2flux           CH4           NIT      ANNPPT\n";

std::string summaryRow(double time, double base) {
    return strprintf("%8.2f%14.6f%14.6f%14.6f%14.6f%14.6f%13.6f\n", time, base, base + 1, base + 2, base + 3, base + 4,
                     base + 5);
}

float cell(const table_record& r, const char* name) { return r.single(r.column(name)); }

}  // namespace

TEST(YearSummary, HeaderIsCheckedExactly) {
    sbtest::temp_dir dir;
    std::string header = kSummaryHeader;
    header.replace(header.find("N2Oflux"), 7, "n2oflux");
    sbtest::writeFile(dir.file("summary.out"), header + summaryRow(1900.92, 1));
    tellura_outputs outputs;
    sb::message_sink errors;
    EXPECT_FALSE(readYearSummary(dir.file("summary.out"), outputs, errors));
    EXPECT_EQ(errors.text(), "ERROR in columns of \"summary.out\": read \"n2oflux\", expected \"N2Oflux\".\n");
    EXPECT_TRUE(outputs.annual.empty());

    errors.clear();
    EXPECT_FALSE(readYearSummary(dir.file("none.out"), outputs, errors));
    EXPECT_EQ(errors.text(), "ERROR, can't open annual summary file \"" + dir.file("none.out") + "\".\n");

    errors.clear();
    sbtest::writeFile(dir.file("empty.out"), "");
    EXPECT_FALSE(readYearSummary(dir.file("empty.out"), outputs, errors));
    EXPECT_EQ(errors.text(), "ERROR in columns of \"empty.out\": read \"\", expected \"time\".\n");
}

TEST(DailyOutput, OptionalColumnsAreReadAndOthersRefused) {
    sbtest::temp_dir dir;
    // The summary form: ppt, CH4 and NIT stand between the required names.
    std::string text =
        "      time  dayofyr     tmax     tmin      ppt      N2Oflux       NOflux          CH4          NIT      "
        "CO2resp\n"
        " 1900.0000    1    10.60     3.90      .50       1.0952       1.1213       2.5821      43.9735    3429.2802\n"
        " 1901.0000  365    10.60     3.90      .50          NaN       1.1213       2.5821      43.9735    3429.2802\n";
    sbtest::writeFile(dir.file("summary.out"), text);
    tellura_outputs outputs;
    sb::message_sink errors;
    ASSERT_TRUE(readDailyOutput(dir.file("summary.out"), outputs, errors)) << errors;
    EXPECT_EQ(errors.text(),
              "WARNING, daily output file line 3: value \"NaN\" of \"N2Oflux\" is not a finite number; left unset.\n"
              "SUMMARY.OUT: 2 days read, from 1900 to 1901.\n");
    ASSERT_EQ(outputs.daily.size(), 2u);
    EXPECT_EQ(outputs.daily[1].year() * 1000 + outputs.daily[1].julianDay(), 1901365);
    EXPECT_TRUE(outputs.daily[1].isMissing(outputs.daily[1].column("N2Oflux")));
    EXPECT_FLOAT_EQ(cell(outputs.daily[0], "ppt"), 0.5f);
    EXPECT_FLOAT_EQ(cell(outputs.daily[0], "CH4"), 2.5821f);
    EXPECT_FLOAT_EQ(cell(outputs.daily[0], "NIT"), 43.9735f);
    EXPECT_FLOAT_EQ(cell(outputs.daily[0], "CO2resp"), 3429.2802f);

    // "time" and the day of the year lead; the other columns are taken by
    // name, those the table has no column for passed over.
    const std::map<std::string, std::string> jday = {{"jday", "dayofyr"}};
    struct header_case {
        const char* header;
        std::map<std::string, std::string> aliases;
        const char* read;  // the name refused, and the one expected there; none: the row is read
        const char* expected;
        float tmax;
    } cases[] = {
        {"      time jday tmax tmin N2Oflux NOflux CO2resp", {}, "jday", "dayofyr", 0},
        {"      time jday tmax tmin N2Oflux NOflux CO2resp", jday, nullptr, nullptr, 7},
        {"dayofyr time tmax", {}, "dayofyr", "time", 0},
        {"", {}, "", "time", 0},
        {"      time  dayofyr      PET(cm)      tmax", {}, nullptr, nullptr, 8},
        // Names before the time or the day: rows are read as time and day first.
        {"CH4 NIT time dayofyr tmax tmin N2Oflux NOflux CO2resp", {}, "CH4", "time", 0},
        {"time ppt dayofyr tmax tmin N2Oflux NOflux CO2resp", {}, "ppt", "dayofyr", 0},
    };
    for (const auto& c : cases) {
        sbtest::writeFile(dir.file("daily.out"), std::string(c.header) + "\n 1900.0 1 7 8 9 9 9\n");
        tellura_outputs other;
        errors.clear();
        EXPECT_EQ(readDailyOutput(dir.file("daily.out"), c.aliases, other, errors), c.read == nullptr) << c.header;
        if (c.read) {
            EXPECT_EQ(errors.text(), strprintf("ERROR in columns of \"daily.out\": read \"%s\", expected \"%s\".\n",
                                               c.read, c.expected));
            EXPECT_TRUE(other.daily.empty());
            continue;
        }
        EXPECT_EQ(errors.text(), "DAILY.OUT: 1 days read, from 1900 to 1900.\n");
        ASSERT_EQ(other.daily.size(), 1u);
        EXPECT_FLOAT_EQ(cell(other.daily[0], "tmax"), c.tmax);
        EXPECT_TRUE(other.daily[0].isMissing(other.daily[0].column("CH4")));  // no column: missing, not 0
    }
    errors.clear();
    EXPECT_FALSE(readDailyOutput(dir.file("gone.out"), outputs, errors));
    EXPECT_EQ(errors.text(), "ERROR, can't open daily output file \"" + dir.file("gone.out") + "\".\n");
}

TEST(CsvOutputs, FilesOfTheSameYearFillOneRecordAndMissingFilesOnlyReport) {
    sbtest::temp_dir dir;
    sbtest::writeFile(dir.file("sb.cropC.csv"),
                      "time,agcacc,aglcis(1),aglcis(2),bgcacc,bglivc,cgrain,cinput,cprodc,creta,sdrema,shrema,stdedc\n"
                      "1990.0000,1,2,3,4,5,6,7,8,9,10,11,12\n"
                      "1991.0000,21,22,23,24,25,26,27,28,29,30,31,32,99\n");
    std::string co2;
    for (int i = 0; i < 12; ++i) co2 += "# header\n";
    co2 += "time,resp(1),resp(2),totsysc\n1990.5,100,200,300\n1991.5,101,201,1e999\n";
    sbtest::writeFile(dir.file("sb.CO2.csv"), co2);
    sbtest::writeFile(dir.file("sb.nps.csv"), "time,aminrl(1),aminrl(2),aminrl(3)\n1990,5,6,7\n1991,8,9,10\n");
    tellura_outputs outputs;
    sb::message_sink errors;
    EXPECT_TRUE(readCsvOutputs(dir.path(), outputs, errors));
    EXPECT_EQ(errors.text(),
              "2 years read, from 1990 to 1991.\n"
              "ERROR, unable to open output file: " +
                  dir.file("sb.soilC.csv") +
                  "\n"
                  "WARNING, sb.CO2.csv line 15: value \"1e999\" of \"totsysc\" is not a finite number; left unset.\n"
                  "2 years read, from 1990 to 1991.\n"
                  "ERROR, unable to open output file: " +
                  dir.file("sb.ForestC.csv") +
                  "\n"
                  "2 years read, from 1990 to 1991.\n"
                  "ERROR, unable to open output file: " +
                  dir.file("sb.wt.csv") + "\n");
    const auto& annual = outputs.annual;
    ASSERT_EQ(annual.size(), 2u);
    EXPECT_FLOAT_EQ(cell(annual[0], "agcacc"), 1.0f);
    EXPECT_FLOAT_EQ(cell(annual[0], "stdedc"), 12.0f);
    EXPECT_FLOAT_EQ(cell(annual[0], "creta"), 9.0f);
    EXPECT_FLOAT_EQ(cell(annual[0], "resp(2)"), 200.0f);
    EXPECT_FLOAT_EQ(cell(annual[1], "shrema"), 31.0f);
    EXPECT_FLOAT_EQ(cell(annual[1], "resp(1)"), 101.0f);
    EXPECT_TRUE(annual[1].isMissing(annual[1].column("totsysc")));
    EXPECT_FLOAT_EQ(cell(annual[1], "aminrl(3)"), 10.0f);
    ASSERT_TRUE(outputs.hasEndOfRun);  // the last year's mineral pools
    EXPECT_FLOAT_EQ(cell(outputs.endOfRun, "aminrl(1)"), 8.0f);
}

TEST(DailyFiles, KeptInYearFoldersUnderThePrefix) {
    sbtest::temp_dir run, out;
    for (const char* name : {"daily.out", "nflux.out", "summary.out"}) sbtest::writeFile(run.file(name), name);
    sb::message_sink errors;
    ASSERT_TRUE(moveDailyFiles(run.path(), out.path(), "siteA_", 1995, 1996, errors)) << errors;
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(sbtest::readFile(out.file("1995/siteA_daily.out")), "daily.out");
    EXPECT_EQ(sbtest::readFile(out.file("1995/siteA_summary.out")), "summary.out");
    EXPECT_TRUE(std::filesystem::exists(out.file("1995/siteA_nflux.out")));
    EXPECT_FALSE(std::filesystem::exists(out.file("1995/siteA_mresp.out")));  // never written
    EXPECT_TRUE(std::filesystem::is_directory(out.file("1996")));
    EXPECT_FALSE(std::filesystem::exists(run.file("daily.out")));

    // A file where the year's folder should be: the message names it.
    sbtest::writeFile(run.file("daily.out"), "again");
    sbtest::writeFile(out.file("0007"), "in the way");
    EXPECT_FALSE(moveDailyFiles(run.path(), out.path(), "", 7, 7, errors));
    EXPECT_EQ(errors.text().rfind("ERROR, unable to make folder \"" + out.file("0007") + "\": ", 0), 0u) << errors;
    EXPECT_TRUE(std::filesystem::exists(run.file("daily.out")));  // nothing lost
}
