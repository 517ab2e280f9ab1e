// Several users running and saving different records of one project on a
// server at once: none of them waits for another.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "db/database.h"
#include "db/project_location.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/tellura_output.h"
#include "records/tellura_control_record.h"
#include "run_controller_fixture.h"

using namespace sb;

namespace {

tellura_outputs annualOutputs(int years) {
    tellura_outputs outputs;
    for (int year = 1; year <= years; ++year) {
        annual_output annual;
        annual.setNumber("Year", year);
        outputs.annual.push_back(annual);
    }
    return outputs;
}

}  // namespace

TEST(SharedProject, DifferentRecordsNeverWaitForEachOther) {
    if (!sbtest::onPostgresql()) GTEST_SKIP() << "a project file takes one save at a time";
    sbtest::run_project project(2);
    const std::string location = project.db().location().text();
    std::atomic<bool> holding{false}, otherDone{false}, gaveUp{false};
    // One user saves record 1 with its outputs and keeps the transaction open ...
    std::thread holder([&] {
        sb::message_sink e;
        auto db = database::open(location, e);  // a database object stays on its own thread
        ASSERT_TRUE(db) << e;
        tellura_control_record first;
        ASSERT_TRUE(loadControlRecord(*db, 1, first, e)) << e;
        tellura_outputs outputs = annualOutputs(50);
        session unit(*db);
        EXPECT_TRUE(saveControlRecord(*db, first, e)) << e;
        EXPECT_TRUE(saveOutputs(*db, 1, outputs, e)) << e;
        holding = true;
        auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!otherDone && std::chrono::steady_clock::now() < until)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        gaveUp = !otherDone;
        EXPECT_TRUE(unit.commit()) << unit.storeError();
    });
    while (!holding) std::this_thread::yield();
    // ... while another saves record 2 and stores its run's outputs.
    sb::message_sink errors;
    tellura_control_record second;
    ASSERT_TRUE(loadControlRecord(project.db(), 2, second, errors)) << errors;
    second.row.setText("Description", "record 2 edited");
    tellura_outputs outputs = annualOutputs(60);
    EXPECT_TRUE(saveControlRecord(project.db(), second, errors)) << errors;
    EXPECT_TRUE(saveOutputs(project.db(), 2, outputs, errors)) << errors;
    otherDone = true;
    holder.join();
    EXPECT_FALSE(gaveUp) << "record 2's save waited for record 1's";
    EXPECT_EQ(errors.text(), "");
    for (int32_t id : {1, 2}) {
        tellura_outputs stored;
        ASSERT_TRUE(loadOutputs(project.db(), id, stored, errors)) << errors;
        EXPECT_EQ(stored.annual.size(), id == 1 ? 50u : 60u);
    }
}
