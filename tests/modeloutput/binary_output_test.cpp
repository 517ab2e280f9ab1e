// The binary output: layout files, both framings, and filling the output records.
#include <gtest/gtest.h>

#include "app/text_format.h"
#include "modeloutput/binary_layout.h"
#include "modeloutput/binary_output_reader.h"
#include "modeloutput/binary_record_reader.h"
#include "output_test_files.h"
#include "test_support.h"

using namespace sb;
using sbtest::binaryRecord;

namespace {

// A small build: 3 + 3 + 2 floats after the time, 36-byte records.
const std::vector<std::vector<std::string>> kSmallLayout = {
    {"agcacc", "strcis(1,1)", "somsc"}, {"aglcn", "bgcjmth(1)", "bgcjmth(2)"}, {"frstc", "mystery"}};

binary_layout_catalogue smallCatalogue(const sbtest::temp_dir& dir, int version = 4) {
    sbtest::writeFile(dir.file("small.tsv"), sbtest::layoutText(kSmallLayout, version));
    binary_layout_catalogue catalogue;
    sb::message_sink errors;
    EXPECT_TRUE(catalogue.addFile(dir.file("small.tsv"), errors)) << errors;
    return catalogue;
}

// Record values: time t, then 8 floats derived from t so every cell is checkable.
std::vector<unsigned char> smallRecord(float t) {
    return binaryRecord(t, {t + 1, t + 2, t + 3, t + 4, t + 5, t + 6, t + 7, t + 8});
}

struct binary_run {
    bool ok;
    std::string errors;
    tellura_outputs outputs;
};

binary_run readBinary(const std::string& bytes, const std::vector<sbtest::block_shape>& blocks, int version = 4) {
    sbtest::temp_dir dir;
    binary_layout_catalogue catalogue = smallCatalogue(dir);
    sbtest::writeFile(dir.file("sb.bin"), bytes);
    binary_run run{false, "", {}};
    sb::message_sink errors;
    run.ok = readBinaryOutput(dir.file("sb.bin"), version, catalogue, sbtest::blocksOf(blocks), run.outputs, errors);
    run.errors = errors.text();
    // Paths differ per run; messages name them, so make them comparable.
    for (size_t at; (at = run.errors.find(dir.path())) != std::string::npos;)
        run.errors.replace(at, dir.path().size(), "DIR");
    return run;
}

}  // namespace

TEST(BinaryLayout, FilesGiveArraysVersionsAndRecordSizes) {
    sbtest::temp_dir dir;
    binary_layout_catalogue catalogue = smallCatalogue(dir, 4);
    ASSERT_EQ(catalogue.layouts().size(), 1u);
    const binary_layout& layout = catalogue.layouts()[0];
    EXPECT_EQ(layout.version, 4);
    EXPECT_EQ(layout.count(0), 3);
    EXPECT_EQ(layout.count(2), 2);
    EXPECT_EQ(layout.recordBytes(), 36);
    EXPECT_EQ(layout.floatPosition(1, 0), 4);
    EXPECT_EQ(layout.floatPosition(2, 1), 8);
    EXPECT_EQ(catalogue.find(4, 36), &layout);
    EXPECT_EQ(catalogue.find(3, 36), nullptr);  // tied to version 4
    EXPECT_EQ(catalogue.find(4, 40), nullptr);
    EXPECT_EQ(catalogue.knownSizes(4), "36");
    EXPECT_EQ(catalogue.knownSizes(3), "");

    // Without "# version" a layout serves every version.
    sbtest::writeFile(dir.file("any.tsv"), "plot1 1 agcacc\nplot3 4 frstc\n");
    sb::message_sink errors;
    ASSERT_TRUE(catalogue.addFile(dir.file("any.tsv"), errors)) << errors;
    EXPECT_EQ(catalogue.layouts()[1].recordBytes(), 4 * (1 + 1 + 0 + 4));
    EXPECT_NE(catalogue.find(2, 24), nullptr);
    EXPECT_EQ(catalogue.knownSizes(4), "24, 36");

    sbtest::writeFile(dir.file("bad.tsv"), "block\tindex\tname\nplot1\t1\ta\nplot4\t2\tb\n");
    EXPECT_FALSE(catalogue.addFile(dir.file("bad.tsv"), errors));
    sbtest::writeFile(dir.file("twice.tsv"), "plot2\t1\ta\nplot2\t1\tb\n");
    EXPECT_FALSE(catalogue.addFile(dir.file("twice.tsv"), errors));
    EXPECT_FALSE(catalogue.addFile(dir.file("none.tsv"), errors));
    EXPECT_EQ(errors.text(), "ERROR, binary layout file \"" + dir.file("bad.tsv") +
                                 "\" line 3: expected \"block index name\" with block plot1, plot2 or plot3, an index "
                                 "from 1 and a place not used before.\n"
                                 "ERROR, binary layout file \"" +
                                 dir.file("twice.tsv") +
                                 "\" line 2: expected \"block index name\" with block plot1, plot2 or plot3, an index "
                                 "from 1 and a place not used before.\n"
                                 "ERROR, unable to open binary layout file \"" +
                                 dir.file("none.tsv") + "\".\n");
    EXPECT_EQ(catalogue.layouts().size(), 2u);
}

// Every record a file gives, read at the sizes given (the last size repeats),
// until the reader stops; and a further read after that must fail too.
struct framed_read {
    int firstByte = -1;
    binary_framing framing = binary_framing::unknown;
    long firstBytes = 0;
    std::vector<std::string> records;
    bool error = false;
    sb::message_sink errors;
};

framed_read readFramed(const std::string& bytes, const std::vector<long>& sizes) {
    sbtest::temp_dir dir;
    sbtest::writeFile(dir.file("f.bin"), bytes);
    binary_record_reader reader;
    framed_read out;
    EXPECT_TRUE(reader.open(dir.file("f.bin"), out.errors));
    EXPECT_TRUE(reader.readFirstByte(out.firstByte));
    EXPECT_TRUE(reader.detectFraming(out.errors)) << out.errors;
    out.framing = reader.framing();
    out.firstBytes = reader.firstRecordBytes();
    std::vector<unsigned char> record;
    while (reader.readRecord(sizes[std::min(out.records.size(), sizes.size() - 1)], record, out.error, out.errors))
        out.records.emplace_back(record.begin(), record.end());
    EXPECT_FALSE(reader.readRecord(sizes.back(), record, out.error, out.errors));
    return out;
}

TEST(BinaryFraming, PhysicalRecordsAndDamageInBothFramings) {
    const auto marked = [](int length, const std::string& data) {
        return static_cast<char>(length) + data + static_cast<char>(length);
    };
    const std::string start(1, 75), end(1, static_cast<char>(130)), abcd = marked(4, "abcd");
    const std::string a128(128, 'a'), b128(128, 'b'), c72(72, 'c');
    std::string spoiled = sbtest::lengthMarkedFile({smallRecord(1), smallRecord(2), smallRecord(3)});
    spoiled[44] = 35;  // the leading marker of record 2
    const std::vector<unsigned char> first = smallRecord(1);
    const std::string firstRecord(first.begin(), first.end());
    // A 128-byte record is one physical record with L = 128; a 200-byte record
    // is 129 + 72; L = 130 is the end, without a message.
    const std::string two = start + marked(128, a128) + marked(129, b128) + marked(72, c72) + end;
    const std::string badTrailer = start + abcd + marked(4, "efgh").replace(5, 1, 1, 5) + abcd;
    // The end byte before the record is complete ends reading without a message.
    const std::string endInside = start + marked(129, std::string(128, 'x')) + end;
    const auto bytes = binary_framing::byte_markers, lengths = binary_framing::length_markers;
    struct framing_case {
        std::string bytes;
        std::vector<long> sizes;
        binary_framing framing;
        long firstBytes;
        std::vector<std::string> records;
        std::string errors;  // and the error flag set when there are any
    } cases[] = {
        {two, {128, 200}, bytes, 128, {a128, b128 + c72}, ""},
        {badTrailer, {4}, bytes, 4, {"abcd"}, "ERROR in physical record (length = 4, trailer length = 5).\n"},
        {start + abcd + static_cast<char>(4) + "ef", {4}, bytes, 4, {"abcd"}, "ERROR in physical record.\n"},
        {endInside, {200}, bytes, 128, {}, ""},
        {spoiled, {36}, lengths, 36, {firstRecord}, "ERROR in record marker (length = 35, expected 36).\n"},
    };
    for (const auto& c : cases) {
        framed_read read = readFramed(c.bytes, c.sizes);
        SCOPED_TRACE(c.bytes.size());
        EXPECT_EQ(read.firstByte, static_cast<unsigned char>(c.bytes[0]));
        EXPECT_EQ(read.framing, c.framing);
        EXPECT_EQ(read.firstBytes, c.firstBytes);
        EXPECT_EQ(read.records, c.records);
        EXPECT_EQ(read.error, !c.errors.empty());
        EXPECT_EQ(read.errors, c.errors);
    }
}

TEST(BinaryOutput, BadFilesReportAndKeepWhatWasRead) {
    std::vector<std::vector<unsigned char>> records;
    for (float t : {1990.0f, 1991.0f, 1992.0f, 1993.0f}) records.push_back(smallRecord(t));

    binary_run empty = readBinary("", {{1993, 12.0f}});
    EXPECT_FALSE(empty.ok);
    EXPECT_EQ(empty.errors, "ERROR, binary output file is empty: DIR/sb.bin\n");

    binary_run noBlocks = readBinary("garbage", {});
    EXPECT_TRUE(noBlocks.ok);
    EXPECT_EQ(noBlocks.errors, "");

    binary_run reserved = readBinary("garbage that is no binary output", {{1993, 12.0f}});
    EXPECT_FALSE(reserved.ok);
    EXPECT_EQ(reserved.errors, "ERROR, format of bin file invalid, reserved=103.\n");

    // A wrong trailer in the third record: two records stay, the read fails.
    std::string file = sbtest::byteMarkedFile(records);
    size_t third = 1 + 2 * 38;
    ASSERT_EQ(static_cast<unsigned char>(file[third]), 36);
    file[third + 37] = 7;
    binary_run damaged = readBinary(file, {{1990, 12.0f}, {1992, 12.0f}});
    EXPECT_FALSE(damaged.ok);
    EXPECT_EQ(damaged.errors,
              "2 records read, from years 1990 to 1991.\n"
              "ERROR in physical record (length = 36, trailer length = 7).\n"
              "0 records read, from years 999999 to -999999.\n");
    EXPECT_EQ(damaged.outputs.annual.size(), 2u);

    // Truncated: the file ends inside the last record.
    std::string cut = sbtest::byteMarkedFile(records, false);
    cut.resize(cut.size() - 10);
    binary_run truncated = readBinary(cut, {{1993, 12.0f}});
    EXPECT_FALSE(truncated.ok);
    EXPECT_EQ(truncated.errors,
              "ERROR in physical record.\n"
              "3 records read, from years 1990 to 1992.\n");
    EXPECT_EQ(truncated.outputs.annual.size(), 3u);

    // Values the model could not compute are left unset and reported once each.
    records[1] = binaryRecord(1991, {1, 2, std::numeric_limits<float>::quiet_NaN(), 4, 5, 6, 7, 8});
    binary_run nan = readBinary(sbtest::byteMarkedFile(records), {{1992, 12.0f}});
    EXPECT_TRUE(nan.ok);
    EXPECT_EQ(nan.errors,
              "WARNING, binary output file record 2: value \"NaN\" of \"somsc\" is not a finite number; left unset.\n"
              "4 records read, from years 1990 to 1993.\n");
    EXPECT_TRUE(nan.outputs.annual[1].isMissing(nan.outputs.annual[1].column("somsc")));
}

// Without a layout of the file's size the read fails saying which sizes are
// known (and from which files), how to add a layout, and what works meanwhile.
TEST(BinaryOutput, NoLayoutOfTheRecordSizeSaysHowToAddOne) {
    sbtest::temp_dir dir;
    sbtest::writeFile(dir.file("sb.bin"), sbtest::byteMarkedFile({smallRecord(1990), smallRecord(1991)}));
    sbtest::writeFile(dir.file("v3.tsv"), "# version 3\nplot1\t1\tsomsc\nplot3\t4\tcgrain\n");
    const std::string shipped = binary_layout_catalogue::shippedDirectory();
    const std::string howTo =
        " To add the layout of this model build, write one line \"block<TAB>index<TAB>name\" per variable (block "
        "plot1, plot2 or plot3 for arrays 1 to 3, index from 1) and a line \"# version %d\", as the shipped layouts "
        "in " +
        shipped +
        " are written, and name the file in the setting Files/BinaryLayouts (see \"Binary output layouts\" "
        "in the README).";
    const std::string listMeanwhile =
        " Meanwhile its outputs can be read through the list utility: turn \"Read binary output\" off.\n";
    const std::string bin = "\"" + dir.file("sb.bin") + "\"";
    struct {
        int version;
        std::vector<std::string> userFiles;
        std::string expected;
    } cases[] = {
        {4,
         {},
         "ERROR, binary output file " + bin +
             " has records of 36 bytes, but the binary layouts known for \"Diurna "
             "4.5\" (version 4) have 3212 bytes (" +
             shipped + "/version4.tsv), 2432 bytes (" + shipped + "/version4-2008.tsv)." + strprintf(howTo.c_str(), 4) +
             listMeanwhile},
        {3,
         {},
         "ERROR, no binary layout is known for \"Tellura 4.5\" (version 3), so its binary output file " + bin +
             " (records of 36 bytes) cannot be read." + strprintf(howTo.c_str(), 3) + listMeanwhile},
        {3,
         {dir.file("v3.tsv")},
         "ERROR, binary output file " + bin +
             " has records of 36 bytes, but the binary layouts known for \"Tellura "
             "4.5\" (version 3) have 24 bytes (" +
             dir.file("v3.tsv") + ")." + strprintf(howTo.c_str(), 3) + listMeanwhile},
        {1,
         {},
         "ERROR, no binary layout is known for \"Tellura 4 Agricultural\" (version 1), so its binary output file " +
             bin + " (records of 36 bytes) cannot be read." + strprintf(howTo.c_str(), 1) +
             " Release 1 is read from its binary file only: its runs fail until the layout is added.\n"},
    };
    for (const auto& c : cases) {
        sb::message_sink errors;
        const binary_layout_catalogue layouts = loadBinaryLayouts(c.userFiles, errors);
        ASSERT_EQ(errors.text(), "");
        tellura_outputs outputs;
        EXPECT_FALSE(readBinaryOutput(dir.file("sb.bin"), c.version, layouts, sbtest::blocksOf({{1991, 12.0f}}),
                                      outputs, errors));
        EXPECT_EQ(errors.text(), c.expected) << "version " << c.version;
        EXPECT_TRUE(outputs.annual.empty());
    }
}
