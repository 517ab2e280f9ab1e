// Every ".100" file of the real releases beside the project reads through the
// generic record kind: 2008 files quote names ('PRDX(1)'), 2012 files end
// lines in CR LF and pad headers with blanks far past 131 characters.
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "paramfile/generic_tellura_input.h"
#include "test_support.h"

namespace {

using namespace sb;

struct expected_counts {
    const char* file;
    int imported;
    int repeated;  // records of a name the file gave already
    int values;    // distinct names over all records
};

// Counted independently of this reader (header lines, value lines less
// repeated names within a record). The seven "*** Section" lines of site
// files are headings, not values.
const expected_counts kExpected[] = {
    {"diurna45-2008-inputs/crop.100", 34, 0, 3026},     {"diurna45-2008-inputs/cult.100", 13, 6, 143},
    {"diurna45-2008-inputs/fert.100", 1, 0, 7},         {"diurna45-2008-inputs/fire.100", 7, 0, 140},
    {"diurna45-2008-inputs/fix.100", 1, 0, 214},        {"diurna45-2008-inputs/graz.100", 7, 0, 77},
    {"diurna45-2008-inputs/harv.100", 1, 0, 6},         {"diurna45-2008-inputs/irri.100", 8, 0, 32},
    {"diurna45-2008-inputs/omad.100", 6, 1, 36},        {"diurna45-2008-inputs/site_grass.100", 1, 0, 237},
    {"diurna45-2008-inputs/site_shrub.100", 1, 0, 237}, {"diurna45-2008-inputs/site_tree.100", 1, 0, 237},
    {"diurna45-2008-inputs/tree.100", 5, 0, 630},       {"diurna45-2008-inputs/trem.100", 8, 0, 160},
    {"diurna-2012/inputs/crop.100", 11, 0, 1188},       {"diurna-2012/inputs/cult.100", 19, 0, 209},
    {"diurna-2012/inputs/example.100", 1, 0, 237},      {"diurna-2012/inputs/fert.100", 39, 0, 312},
    {"diurna-2012/inputs/fire.100", 6, 0, 120},         {"diurna-2012/inputs/fix.100", 1, 0, 205},
    {"diurna-2012/inputs/graz.100", 6, 0, 66},          {"diurna-2012/inputs/harv.100", 10, 0, 60},
    {"diurna-2012/inputs/irri.100", 14, 0, 56},         {"diurna-2012/inputs/omad.100", 17, 0, 102},
    {"diurna-2012/inputs/site2012.100", 1, 0, 237},     {"diurna-2012/inputs/tree.100", 1, 0, 146},
    {"diurna-2012/inputs/trem.100", 6, 0, 120},
};

std::string strprintfStatus(import_counts counts, const std::string& path) {
    return "Imported " + std::to_string(counts.imported) + " records and updated " + std::to_string(counts.updated) +
           " records from \"" + path + "\".\n";
}

int countValues(const generic_tellura_input_list& list) {
    int values = 0;
    for (size_t i = 0; i < list.size(); ++i) values += static_cast<int>(list.recordAt(i).values.size());
    return values;
}

TEST(SampleParameterFiles, ImportWithoutErrorsAndCountsRecorded) {
    SB_REQUIRE_SAMPLES();
    for (const expected_counts& e : kExpected) {
        SCOPED_TRACE(e.file);
        std::string path = sbtest::samplesDir() + "/" + e.file;
        generic_tellura_input_list list;
        sb::message_sink errors;
        std::string status;
        import_counts counts = list.importFile(path, errors, status);
        // A second record of a name the file gave already is reported and passed over.
        size_t warnings = 0;
        for (size_t at = errors.text().find("WARNING, \""); at != std::string::npos;
             at = errors.text().find("WARNING, \"", at + 1))
            ++warnings;
        EXPECT_EQ(errors.text().find("ERROR"), std::string::npos) << errors;
        EXPECT_EQ(warnings, static_cast<size_t>(e.repeated));
        EXPECT_EQ(status, strprintfStatus(counts, path));
        EXPECT_EQ(counts.imported, e.imported);
        EXPECT_EQ(counts.updated, 0);
        EXPECT_EQ(counts.duplicateRecords, e.repeated);
        EXPECT_EQ(countValues(list), e.values);
        for (size_t i = 0; i < list.size(); ++i) {
            const generic_tellura_input& record = list.recordAt(i);
            EXPECT_EQ(record.name.find_first_of("\r\n '"), std::string::npos) << record.name;
            EXPECT_EQ(record.description.find_first_of("\r\n"), std::string::npos);
            for (const parameter_value& pair : record.values)
                EXPECT_EQ(pair.name.find_first_of("\r\n '"), std::string::npos) << pair.name;
        }
    }
}

TEST(SampleParameterFiles, KnownValuesAndRoundTrip) {
    SB_REQUIRE_SAMPLES();
    std::string path = sbtest::samplesDir() + "/diurna45-2008-inputs/crop.100";
    generic_tellura_input_list list;
    sb::message_sink errors;
    std::string status;
    list.importFile(path, errors, status);
    ASSERT_GE(list.size(), 1u);
    const generic_tellura_input& angr = list.recordAt(0);
    EXPECT_EQ(angr.name, "ANGR");
    // The 2012 crops pad their headers with blanks far past 131 characters.
    generic_tellura_input_list padded;
    padded.importFile(sbtest::samplesDir() + "/diurna-2012/inputs/crop.100", errors, status);
    ASSERT_GE(padded.size(), 1u);
    EXPECT_EQ(padded.recordAt(0).name + " " + padded.recordAt(0).description,
              "KNZ Temperate_Tallgrass_[Konza_tallgrass]");
    EXPECT_EQ(angr.description, "Shortgrass_(steppe_or_desert)[CPER_or_Jornada]");
    ASSERT_NE(angr.findValue("PRDX(1)"), nullptr);
    EXPECT_DOUBLE_EQ(angr.findValue("prdx(1)")->value, 0.4);
    EXPECT_DOUBLE_EQ(angr.findValue("PPDF(2)")->value, 45.0);

    // Written back in our format and read again, every value survives to 5 decimals.
    sbtest::temp_dir dir;
    ASSERT_TRUE(list.write(dir.file("crop.100"), errors, 4));
    generic_tellura_input_list back;
    back.importFile(dir.file("crop.100"), errors, status);
    EXPECT_EQ(errors.text(), "");
    ASSERT_EQ(back.size(), list.size());
    for (size_t i = 0; i < list.size(); ++i) {
        const generic_tellura_input& a = list.recordAt(i);
        const generic_tellura_input& b = back.recordAt(i);
        EXPECT_EQ(a.name, b.name);
        EXPECT_EQ(a.description, b.description);
        ASSERT_EQ(a.values.size(), b.values.size());
        for (size_t v = 0; v < a.values.size(); ++v) {
            EXPECT_EQ(a.values[v].name, b.values[v].name);
            EXPECT_NEAR(a.values[v].value, b.values[v].value, 5e-6);
        }
    }
}

}  // namespace
