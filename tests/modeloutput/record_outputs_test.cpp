// A control record together with its outputs: reading and pasting stop at an
// output store that cannot be read.
#include <gtest/gtest.h>

#include "db/database.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/output_to_input.h"
#include "modeloutput/record_outputs.h"
#include "modeloutput/tellura_output.h"
#include "output_test_files.h"
#include "records/record_clipboard.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"

using namespace sb;

namespace {

tellura_control_record plot(int32_t id) {
    tellura_control_record r;
    r.setId(id);
    r.row.setText("Description", "Plot " + std::to_string(id));
    return r;
}

// Puts another output store in the output tables' place for one test.
struct substitute_store {
    explicit substitute_store(output_store store) { setOutputStore(std::move(store)); }
    ~substitute_store() { setOutputStore({}); }
};

bool failWith(sb::message_sink& errors, const char* text) {
    errors.error(text);
    return false;
}

}  // namespace

TEST(RecordOutputs, ReadAndPasteStopAtAnUnreadableOutputStore) {
    sbtest::temp_dir dir;
    auto db = sbtest::makeOutputProject(dir);
    ASSERT_TRUE(db);
    sb::message_sink errors;
    tellura_control_record r = plot(42);
    ASSERT_TRUE(saveControlRecord(*db, r, errors));
    substitute_store unreadable({nullptr, [](database&, int32_t, tellura_outputs&, sb::message_sink& e) {
                                     return failWith(e, "READ FAILED\n");
                                 }});
    tellura_control_record read;
    tellura_outputs outputs;
    EXPECT_FALSE(loadControlRecordWithOutputs(*db, 42, read, outputs, errors));
    EXPECT_EQ(read.description(), "Plot 42");  // the record itself is read
    EXPECT_EQ(errors.text(), "READ FAILED\n");
    errors.clear();
    EXPECT_FALSE(pasteRecord(*db, record_clipboard::encodeId(42), 43, errors));
    EXPECT_EQ(errors.text(), "READ FAILED\n");
    EXPECT_FALSE(loadControlRecord(*db, 43, read, errors));
}

// Record 1 takes its outputs back as inputs; record 2 uses the same soil or
// another. A shared soil stays as it was and record 1 gets a copy of its own;
// a failure in the middle of the save (the soil layers refused after the
// record's rows went in) keeps everything as it was.
TEST(RecordOutputs, CopyToInputChangesOnlyThisRecord) {
    struct {
        bool shared, refused;
        int32_t soilAfter;  // record 1's
        const char* said;   // all of it, or how a refused save begins
    } cases[] = {
        {false, false, 1, "Monthly copied for record.\nSoil 1 took the soil layers of the outputs of record 1.\n"},
        {true, false, 8,
         "Monthly copied for record.\nSoil 1 is used by other records too: the soil layers went into new soil 8, "
         "\"Schluffiger Lehm über ö "
         "(from outputs of record 1)\", which record 1 now uses.\n"},
        {false, true, 1, "ERROR, unable to insert soil layer.\n"},
        {true, true, 1, "ERROR, unable to insert soil layer.\n"},
    };
    const char* const kName = "Schluffiger Lehm über öde Böden am Nordhang";
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.shared) + std::to_string(c.refused));
        sbtest::temp_dir dir;
        auto db = sbtest::makeOutputProject(dir);
        ASSERT_TRUE(db);
        sb::message_sink errors;
        for (int32_t soilId : {1, 7}) {
            tellura_soil soil;
            soil.setSoilId(soilId);
            soil.setName(kName);
            soil.layerCount = 3;
            for (auto& layer : soil.layers) layer.setNumber("Mineral N", 1.0);
            ASSERT_TRUE(saveSoil(*db, soil, errors)) << errors;
        }
        for (int32_t id : {1, 2}) {
            tellura_control_record r = plot(id);
            r.row.setNumber("Soil ID", id == 1 || c.shared ? 1 : 7);
            ASSERT_TRUE(saveControlRecord(*db, r, errors)) << errors;
        }
        tellura_outputs outputs;
        outputs.monthlyFor(1990, 12).setNumber("aglive(1)", 3.5);
        for (int l : {1, 2}) outputs.soilLayerFor(l).setNumber("Mineral N", 10.0 * l);
        ASSERT_TRUE(saveOutputs(*db, 1, outputs, errors)) << errors;
        const char* refuse =
            "CREATE TRIGGER refuse BEFORE INSERT ON `Soil Layers` BEGIN SELECT RAISE(ABORT, 'no'); END";
        if (c.refused) { ASSERT_TRUE(db->execute(refuse).ok()); }

        EXPECT_EQ(copyOutputToInput(*db, 1, errors), !c.refused);
        EXPECT_EQ(errors.hasErrors(), c.refused);
        // Nothing is said to be copied when nothing was kept.
        EXPECT_EQ(errors.text().substr(0, c.refused ? 36 : std::string::npos), c.said);
        tellura_control_record one, two;
        tellura_soils soils;
        ASSERT_TRUE(loadControlRecord(*db, 1, one, errors) && loadControlRecord(*db, 2, two, errors));
        ASSERT_TRUE(soils.load(*db, errors));
        EXPECT_EQ(one.soilId(), c.soilAfter);
        EXPECT_EQ(two.soilId(), c.shared ? 1 : 7);
        EXPECT_EQ(one.site.number("AGLIVE(1)"), c.refused ? 0.0 : 3.5);
        EXPECT_EQ(soils.soils.size(), c.soilAfter == 8 ? 3u : 2u);
        ASSERT_TRUE(soils.find(c.soilAfter));
        const bool filled = !c.refused;
        const double mineralN[] = {filled ? 10.0 : 1.0, filled ? 20.0 : 1.0, 1.0};  // layer 3 has no output
        for (size_t l = 0; l < 3; ++l) EXPECT_EQ(soils.find(c.soilAfter)->layers[l].number("Mineral N"), mineralN[l]);
        if (c.shared && filled) {
            EXPECT_EQ(soils.find(8)->name(), "Schluffiger Lehm über ö (from outputs of record 1)");
            for (size_t l = 0; l < 3; ++l) EXPECT_EQ(soils.find(1)->layers[l].number("Mineral N"), 1.0);
        }
    }
}
