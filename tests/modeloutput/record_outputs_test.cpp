// A control record together with its outputs: its text form, reading and saving
// both, copying both under another ID, and failures of the output store.
#include <gtest/gtest.h>

#include "db/database.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/record_outputs.h"
#include "modeloutput/tellura_output.h"
#include "output_test_files.h"
#include "records/record_clipboard.h"
#include "records/tellura_control_record.h"

using namespace sb;

namespace {

tellura_control_record plot(int32_t id) {
    tellura_control_record r;
    r.setId(id);
    r.row.setText("Description", "Plot " + std::to_string(id));
    return r;
}

tellura_outputs oneYear(double somsc) {
    tellura_outputs out;
    out.annualFor(1990).setNumber("somsc", somsc);
    return out;
}

// Puts another output store in the output tables' place for one test.
struct substitute_store {
    explicit substitute_store(output_store store) { setOutputStore(std::move(store)); }
    ~substitute_store() { setOutputStore({}); }
};

bool failWith(std::string& errors, const char* text) {
    errors += text;
    return false;
}

}  // namespace

TEST(RecordOutputs, ReadAndPasteStopAtAnUnreadableOutputStore) {
    sbtest::temp_dir dir;
    auto db = sbtest::makeOutputProject(dir);
    ASSERT_TRUE(db);
    std::string errors;
    tellura_control_record r = plot(42);
    ASSERT_TRUE(writeControlRecord(r, *db, errors));
    substitute_store unreadable(
        {nullptr, [](database&, int32_t, tellura_outputs&, std::string& e) { return failWith(e, "READ FAILED\n"); }});
    tellura_control_record read;
    tellura_outputs outputs;
    EXPECT_FALSE(readControlRecordWithOutputs(*db, 42, read, outputs, errors));
    EXPECT_EQ(read.description(), "Plot 42");  // the record itself is read
    EXPECT_EQ(errors, "READ FAILED\n");
    errors.clear();
    EXPECT_FALSE(pasteRecord(*db, record_clipboard::encodeId(42), 43, errors));
    EXPECT_EQ(errors, "READ FAILED\n");
    EXPECT_FALSE(readControlRecord(*db, 43, read, errors));
}

TEST(RecordOutputs, SaveStoresTheOutputsInTheRecordsSession) {
    struct save_case {
        const char* name;
        bool storeFails;
        std::string expectedErrors;
    } cases[] = {
        {"store succeeds", false, ""},
        {"store fails", true, "STORE FAILED\n"},
    };
    for (const auto& c : cases) {
        sbtest::temp_dir dir;
        auto db = sbtest::makeOutputProject(dir);
        ASSERT_TRUE(db);
        int depthAtStore = -1;
        substitute_store store({[&](database& d, int32_t, tellura_outputs&, std::string& e) {
                                    depthAtStore = d.sessionDepth();
                                    return c.storeFails ? failWith(e, "STORE FAILED\n") : true;
                                },
                                nullptr});
        tellura_control_record r = plot(7);
        tellura_outputs outputs = oneYear(1);
        std::string errors;
        EXPECT_EQ(writeControlRecordWithOutputs(r, outputs, *db, errors), !c.storeFails) << c.name;
        EXPECT_EQ(errors, c.expectedErrors) << c.name;
        EXPECT_EQ(depthAtStore, 1) << c.name;  // inside the save's own session, not a session of its own
        // A failing part leaves nothing of the save: the record is there only when all of it was stored.
        tellura_control_record back;
        std::string readErrors;
        EXPECT_EQ(readControlRecord(*db, 7, back, readErrors), !c.storeFails) << c.name << readErrors;
    }
}
