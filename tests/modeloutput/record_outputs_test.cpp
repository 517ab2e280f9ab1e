// A control record together with its outputs: reading and pasting stop at an
// output store that cannot be read.
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
