// A server that goes away in the middle of a save: the save fails, says why, and
// the record stays whole as it was before it.
#include <gtest/gtest.h>

#include "db/database.h"
#include "db/project_location.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/record_outputs.h"
#include "modeloutput/tellura_output.h"
#include "records/tellura_control_record.h"
#include "run_controller_fixture.h"

using namespace sb;

TEST(ServerLost, ASaveCutOffHalfWayLeavesTheRecordAsItWas) {
    SB_REQUIRE_SERVER();
    if (!std::getenv("SB_TEST_POSTGRESQL_MAY_STOP"))
        GTEST_SKIP() << "stops the test server: it runs alone, as postgresql.server.lost.run";
    sbtest::run_project project;
    tellura_control_record record;
    tellura_outputs outputs;
    sb::message_sink errors;
    ASSERT_TRUE(loadControlRecord(project.db(), 1, record, errors)) << errors;
    record.row.setText("Description", "before");
    for (int year = 1; year <= 30; ++year) {
        annual_output annual;
        annual.setNumber("Year", year);
        outputs.annual.push_back(annual);
    }
    ASSERT_TRUE(saveControlRecordWithOutputs(project.db(), record, outputs, errors)) << errors;

    // The next save stores part of the outputs, then the server dies under it.
    std::string why;
    setOutputStore({[&why](database& db, int32_t id, tellura_outputs& o, sb::message_sink& e) {
                        bool ok = saveAnnualOutput(db, id, o, e);
                        EXPECT_TRUE(sbtest::killPostgresqlServer(why)) << why;
                        return saveMonthlyOutput(db, id, o, e) && ok;
                    },
                    {}});
    record.row.setText("Description", "after");
    outputs.annual.resize(10);
    EXPECT_FALSE(saveControlRecordWithOutputs(project.db(), record, outputs, errors));
    setOutputStore({});
    ASSERT_TRUE(sbtest::restartPostgresqlServer(why)) << why;
    EXPECT_THAT(errors.text(), HasSubstr("ERROR, unable to delete from [Output Monthly]\n"));
    EXPECT_THAT(errors.text(), HasSubstr("terminat")) << "the server's going is told: " << errors;

    // Opened afresh, the project holds the record as it was before the cut-off save.
    auto db = database::open(project.db().location().text(), errors);
    ASSERT_TRUE(db) << errors;
    tellura_control_record stored;
    tellura_outputs storedOutputs;
    ASSERT_TRUE(loadControlRecordWithOutputs(*db, 1, stored, storedOutputs, errors)) << errors;
    EXPECT_EQ(stored.description(), "before");
    EXPECT_EQ(storedOutputs.annual.size(), 30u);
}
