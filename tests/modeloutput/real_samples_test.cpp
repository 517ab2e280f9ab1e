// The readers against real files of the model line (beside the project, not in it).
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <map>

#include "app/text_file.h"
#include "app/text_format.h"
#include "modeloutput/binary_layout.h"
#include "modeloutput/binary_output_reader.h"
#include "modeloutput/binary_record_reader.h"
#include "modeloutput/list_file_reader.h"
#include "modeloutput/output_variable_set.h"
#include "modeloutput/text_output_readers.h"
#include "output_test_files.h"
#include "test_support.h"

using namespace sb;

namespace {

std::string sample(const std::string& relative) { return sbtest::samplesDir() + "/" + relative; }

// A list file split at blanks: names of the header, then rows of numbers.
struct plain_table {
    std::vector<std::string> names;
    std::vector<std::vector<double>> rows;
};

plain_table readPlainTable(const std::string& path) {
    plain_table table;
    for (const std::string& line : splitLines(sbtest::readFile(path))) {
        std::vector<std::string> fields = splitTokens(line);
        if (fields.empty()) continue;
        if (table.names.empty()) {
            table.names = fields;
            continue;
        }
        std::vector<double>& row = table.rows.emplace_back();
        for (const auto& f : fields) row.push_back(std::strtod(f.c_str(), nullptr));
    }
    return table;
}

float floatAt(const std::vector<unsigned char>& record, int position) {
    float v;
    std::memcpy(&v, record.data() + 4 * position, 4);
    return v;
}

// The list utility prints a 32-bit float to four decimals, or to seven
// significant digits when the value is large ("1147.958").
void expectListed(double listed, float value, const std::string& what) {
    EXPECT_NEAR(value, listed, 0.00006 + std::fabs(listed) * 6e-7) << what;
}

binary_layout_catalogue shipped() {
    binary_layout_catalogue catalogue;
    sb::message_sink errors;
    EXPECT_TRUE(catalogue.loadShipped(std::string(SB_SHARE_DIR) + "/binary-layouts", errors)) << errors;
    return catalogue;
}

float cell(const table_record& r, const std::string& name) { return r.single(r.column(name)); }

}  // namespace

TEST(RealSamples, BinaryOf2012ReleaseMatchesItsListFileRecordByRecord) {
    SB_REQUIRE_SAMPLES();
    plain_table lis = readPlainTable(sample("diurna-2012/outputs/example.lis"));
    ASSERT_EQ(lis.names.size(), 11u);  // time and the ten names of outvars.txt
    ASSERT_EQ(lis.rows.size(), 215u);

    binary_layout_catalogue catalogue = shipped();
    binary_record_reader reader;
    sb::message_sink errors;
    ASSERT_TRUE(reader.open(sample("diurna-2012/outputs/example.bin"), errors));
    int first = 0;
    ASSERT_TRUE(reader.readFirstByte(first));
    ASSERT_TRUE(reader.detectFraming(errors)) << errors;
    EXPECT_EQ(reader.framing(), binary_framing::byte_markers);
    ASSERT_EQ(reader.firstRecordBytes(), 3212);
    const binary_layout* layout = catalogue.find(4, 3212);
    ASSERT_NE(layout, nullptr);

    // Where each of the ten names sits.
    std::vector<int> positions;
    for (size_t c = 1; c < lis.names.size(); ++c) {
        int position = -1;
        for (int a = 0; a < 3 && position < 0; ++a)
            for (int i = 0; i < layout->count(a); ++i)
                if (layout->names[static_cast<size_t>(a)][static_cast<size_t>(i)] == lis.names[c])
                    position = layout->floatPosition(a, i);
        ASSERT_GE(position, 0) << lis.names[c];
        positions.push_back(position);
    }
    std::vector<unsigned char> record;
    bool error = false;
    for (size_t r = 0; r < lis.rows.size(); ++r) {
        ASSERT_TRUE(reader.readRecord(3212, record, error, errors)) << "record " << r + 1 << errors;
        EXPECT_NEAR(floatAt(record, 0), lis.rows[r][0], 0.006) << "time of record " << r + 1;
        for (size_t c = 0; c < positions.size(); ++c)
            expectListed(lis.rows[r][c + 1], floatAt(record, positions[c]),
                         lis.names[c + 1] + " in record " + std::to_string(r + 1));
    }
    EXPECT_FALSE(reader.readRecord(3212, record, error, errors));  // then the end byte
    EXPECT_FALSE(error);
    EXPECT_EQ(errors.text(), "");
}

TEST(RealSamples, BinaryOf2012ReleaseFillsTheRecordsOfItsSchedule) {
    SB_REQUIRE_SAMPLES();
    plain_table lis = readPlainTable(sample("diurna-2012/outputs/example.lis"));
    // The sample's schedule: yearly output to 1919, then monthly blocks to 1992, 1994, 2006.
    const auto blocks = sbtest::blocksOf({{1919, 12.0f}, {1992, 1.0f}, {1994, 1.0f}, {2006, 1.0f}});
    tellura_outputs out;
    sb::message_sink errors;
    ASSERT_TRUE(readBinaryOutput(sample("diurna-2012/outputs/example.bin"), 4, shipped(), blocks, out, errors))
        << errors;
    EXPECT_EQ(errors.text(),
              "21 records read, from years 1 to 1920.\n"
              "25 records read, from years 1990 to 1992.\n"
              "24 records read, from years 1993 to 1994.\n"
              "144 records read, from years 1995 to 2006.\n");
    // A block to year Y ends with the record of time Y+1.00: 1920.00 closes the first.
    ASSERT_EQ(out.annual.size(), 21u);
    EXPECT_EQ(out.annual.back().year(), 1920);
    // December 2006 (time 2007.00), the last simulated month, is stored.
    const monthly_output* lastMonth = out.monthlyInOrder().back();
    EXPECT_EQ(lastMonth->year() * 100 + lastMonth->month(), 200612);
    // Row 3 of the list file is 1902.00; agcacc, aglivc, cproda and somtc are output columns.
    EXPECT_EQ(out.annual[2].year(), 1902);
    for (size_t c = 1; c < lis.names.size(); ++c) {
        int column = out.annual[2].column(lis.names[c]);
        if (column >= 0) expectListed(lis.rows[2][c], out.annual[2].single(column), lis.names[c]);
    }
    // 1995.50 is June 1995.
    size_t row = 0;
    while (row < lis.rows.size() && std::fabs(lis.rows[row][0] - 1995.50) > 1e-6) ++row;
    ASSERT_LT(row, lis.rows.size());
    const monthly_output* june = nullptr;
    for (const auto* m : out.monthlyInOrder())
        if (m->year() == 1995 && m->month() == 6) june = m;
    ASSERT_NE(june, nullptr);
    ASSERT_EQ(lis.names[5], "aglivc");
    ASSERT_EQ(lis.names[9], "somtc");
    expectListed(lis.rows[row][5], cell(*june, "aglivc"), "aglivc");
    expectListed(lis.rows[row][9], cell(*june, "somtc"), "somtc");
    EXPECT_TRUE(out.hasEndOfRun);
    // The state array leaves the end state of the site's five layers (NLAYER)
    // and of the layer below them, which holds only leached minerals; the
    // array's further layers hold nothing and are not kept.
    ASSERT_EQ(out.soilLayers.size(), 6u);
    for (const soil_layer_output& layer : out.soilLayers) {
        const float water = cell(layer, "Initial Relative Water Content");
        EXPECT_TRUE(layer.layerNumber() == 6 ? water == 0.0f : water > 0.0f && water <= 1.01f) << layer.layerNumber();
        EXPECT_GT(cell(layer, "Mineral N"), 0.0f) << layer.layerNumber();
    }
}

TEST(RealSamples, GfortranBinaryOf2008BuildWithItsLayout) {
    SB_REQUIRE_SAMPLES();
    binary_layout_catalogue catalogue = shipped();
    const auto blocks = sbtest::blocksOf({{2005, 1.0f}});
    tellura_outputs outputs;
    sb::message_sink errors;
    // Only the first 30 records are kept in the sample: the block cannot finish.
    EXPECT_FALSE(readBinaryOutput(sample("diurna45-2008-outputs/sb.bin"), 4, catalogue, blocks, outputs, errors));
    EXPECT_EQ(errors.text(), "30 records read, from years 1799 to 1802.\n");
    auto months = outputs.monthlyInOrder();
    ASSERT_EQ(months.size(), 30u);
    EXPECT_EQ(months[0]->year(), 1799);  // time 1800.0 is December 1799
    EXPECT_EQ(months[0]->month(), 12);
    EXPECT_NEAR(cell(*months[0], "somsc"), 1851.537f, 0.001);

    // Read as yearly output the same first record lands in year 1800.
    tellura_outputs yearly;
    errors.clear();
    ASSERT_TRUE(readBinaryOutput(sample("diurna45-2008-outputs/sb.bin"), 4, catalogue,
                                 sbtest::blocksOf({{1799, 12.0f}}), yearly, errors))
        << errors;
    EXPECT_EQ(errors.text(), "1 records read, from years 1800 to 1800.\n");
    EXPECT_NEAR(cell(yearly.annual.at(0), "somsc"), 1851.537f, 0.001);
}

TEST(RealSamples, ListFileOf2008BuildFillsItsMonths) {
    SB_REQUIRE_SAMPLES();
    // The request this build was given is exactly our version-4 request.
    std::ifstream request(sample("diurna45-2008-outputs/sb_outvars.txt"));
    std::vector<std::string> requested;
    for (std::string name; request >> name;) requested.push_back(name);
    output_variable_set set;
    std::vector<std::string> ours;
    for (const auto& d : set.mainList(4)) ours.push_back(d.name);
    for (const auto& d : set.extraList(4)) ours.push_back(d.name);
    EXPECT_EQ(requested, ours);

    // The schedule runs to 2005: 2006.00 (December 2005) closes it.
    const auto blocks = sbtest::blocksOf({{2005, 1.0f}});
    tellura_outputs outputs;
    sb::message_sink errors;
    ASSERT_TRUE(readListFile(set, sample("diurna45-2008-outputs/sb.lis"), 4, blocks, outputs, errors)) << errors;
    EXPECT_EQ(errors.text(), "133 records read, from years 1994 to 2005.\n");
    auto months = outputs.monthlyInOrder();
    ASSERT_EQ(months.size(), 133u);
    EXPECT_EQ(months[0]->year(), 1994);  // 1995.00 is December 1994
    EXPECT_EQ(months[1]->year(), 1995);
    EXPECT_EQ(months[1]->month(), 1);
    EXPECT_FLOAT_EQ(cell(*months[1], "agcacc"), 21.2827f);
    EXPECT_FLOAT_EQ(cell(*months[1], "aglcis(1)"), 18.4471f);
    EXPECT_FLOAT_EQ(cell(*months[1], "aminrl(1)"), 185.3719f);

    // Every cell of every row whose name is a monthly column.
    plain_table lis = readPlainTable(sample("diurna45-2008-outputs/sb.lis"));
    size_t checked = 0;
    for (size_t r = 0; r < months.size(); ++r)
        for (size_t c = 1; c < lis.names.size(); ++c) {
            int column = months[r]->column(lis.names[c]);
            if (column < 0) continue;
            EXPECT_FLOAT_EQ(months[r]->single(column), static_cast<float>(lis.rows[r][c]))
                << lis.names[c] << " row " << r;
            ++checked;
        }
    EXPECT_GT(checked, 133u * 70u);
}

TEST(RealSamples, YearSummariesOfBothReleasesReadWhole) {
    SB_REQUIRE_SAMPLES();
    struct expected_summary {
        const char* file;
        const char* message;
        int firstYear;
        float firstN2O, firstPpt;
    } cases[] = {
        {"diurna-2012/outputs/year_summary.out", "Year Summary: 37 years read, from 1900 to 2006.\n", 1900, 0.040587f,
         111.82f},
        {"diurna45-2008-outputs/year_summary.out", "Year Summary: 206 years read, from 1800 to 2005.\n", 1800,
         0.009763f, 13.84f},
    };
    for (const auto& c : cases) {
        tellura_outputs outputs;
        sb::message_sink errors;
        ASSERT_TRUE(readYearSummary(sample(c.file), outputs, errors)) << errors;
        EXPECT_EQ(errors.text(), c.message);
        const auto& first = outputs.annual.at(0);
        EXPECT_EQ(first.year(), c.firstYear);
        EXPECT_FLOAT_EQ(cell(first, "n2oflux"), c.firstN2O);
        EXPECT_FLOAT_EQ(cell(first, "ppt"), c.firstPpt);
    }
}

TEST(RealSamples, DailyFilesOfBothReleasesFillTheDailyTableByColumnName) {
    SB_REQUIRE_SAMPLES();
    const std::map<std::string, std::string> jday = {{"jday", "dayofyr"}};
    struct daily_case {
        const char* folder;
        std::map<std::string, std::string> aliases;
        int firstYear;
    } cases[] = {{"diurna-2012/outputs/", {}, 1900}, {"diurna45-2008-outputs/", jday, 1800}};
    for (const auto& c : cases) {
        tellura_outputs outputs;
        sb::message_sink errors;
        // summary.out holds the daily table's columns; daily.out holds none of
        // them and adds no day of its own.
        ASSERT_TRUE(readDailyOutput(sample(std::string(c.folder) + "summary.out"), c.aliases, outputs, errors));
        ASSERT_TRUE(readDailyOutput(sample(std::string(c.folder) + "daily.out"), c.aliases, outputs, errors));
        EXPECT_EQ(errors.text(),
                  strprintf("SUMMARY.OUT: 730 days read, from %d to %d.\nDAILY.OUT: 730 days read, from %d to "
                            "%d.\n",
                            c.firstYear, c.firstYear + 1, c.firstYear, c.firstYear + 1));
        ASSERT_EQ(outputs.daily.size(), 730u);
        EXPECT_EQ(outputs.daily.at(729).julianDay(), 365);
        // Every value of every column the table has, row for row.
        plain_table summary = readPlainTable(sample(std::string(c.folder) + "summary.out"));
        size_t checked = 0;
        for (size_t r = 0; r < summary.rows.size(); ++r)
            for (size_t n = 2; n < summary.names.size(); ++n) {
                int column = outputs.daily[r].column(summary.names[n]);
                ASSERT_GE(column, 0) << summary.names[n];
                EXPECT_FLOAT_EQ(outputs.daily[r].single(column), static_cast<float>(summary.rows[r][n]))
                    << c.folder << summary.names[n] << " row " << r;
                ++checked;
            }
        EXPECT_EQ(checked, 730u * 8u);
    }
    // Without its alias the 2008 build's day column is not known.
    tellura_outputs outputs;
    sb::message_sink errors;
    EXPECT_FALSE(readDailyOutput(sample("diurna45-2008-outputs/summary.out"), outputs, errors));
    EXPECT_EQ(errors.text(), "ERROR in columns of \"summary.out\": read \"jday\", expected \"dayofyr\".\n");
    // A daily summary is not a year summary: its columns message says why.
    errors.clear();
    EXPECT_FALSE(readYearSummary(sample("diurna-2012/outputs/summary.out"), outputs, errors));
    EXPECT_EQ(errors.text(), "ERROR in columns of \"summary.out\": read \"ti\", expected \"time\".\n");
}

// One run read in binary mode and in list mode stores the same records, and
// every value the list file holds equals the binary one to its printed digits.
TEST(RealSamples, BinaryAndListModesOfOneRunStoreTheSameValues) {
    SB_REQUIRE_SAMPLES();
    const auto blocks = sbtest::blocksOf({{1919, 12.0f}, {1992, 1.0f}, {1994, 1.0f}, {2006, 1.0f}});
    tellura_outputs binary, list;
    sb::message_sink errors;
    ASSERT_TRUE(readBinaryOutput(sample("diurna-2012/outputs/example.bin"), 4, shipped(), blocks, binary, errors))
        << errors;
    output_variable_set set;
    ASSERT_TRUE(readListFile(set, sample("diurna-2012/outputs/example.lis"), 4, blocks, list, errors)) << errors;
    auto binaryMonths = binary.monthlyInOrder(), listMonths = list.monthlyInOrder();
    ASSERT_EQ(list.annual.size(), binary.annual.size());
    ASSERT_EQ(listMonths.size(), binaryMonths.size());
    size_t compared = 0;
    auto compare = [&](const table_record& fromList, const table_record& fromBinary) {
        for (int c = 0; c < fromList.columnCount(); ++c) {
            // A name the list file does not hold; the keys and the whole-number crop
            // code (crpval, which no missing state covers yet) are not model reals.
            const auto& field = fromList.def().fields()[static_cast<size_t>(c)];
            if (fromList.isMissing(c) || field.type != kTypeSingle) continue;
            const std::string what = field.name;
            ASSERT_FALSE(fromBinary.isMissing(c)) << what;
            expectListed(fromList.number(c), fromBinary.single(c), what);
            ++compared;
        }
    };
    for (size_t i = 0; i < list.annual.size(); ++i) compare(list.annual[i], binary.annual[i]);
    for (size_t i = 0; i < listMonths.size(); ++i) compare(*listMonths[i], *binaryMonths[i]);
    EXPECT_EQ(compared, 1284u);  // every listed value of every record
}
