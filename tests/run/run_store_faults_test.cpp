// A record is good only when its outputs reached the project: a full disk or a
// project locked by another program fails each record, with a message, and the
// outputs stored before stay as they were.
#include "run/run_controller.h"
#include "run_controller_fixture.h"

#include <filesystem>
#include <functional>
#include <memory>

#include "db/database.h"
#include "run/run_folder.h"

namespace {

using namespace sbtest;

struct store_fault {
    const char* name;
    // Breaks the project for storing; what it returns stays alive during the run.
    std::function<std::shared_ptr<void>(run_project&)> inflict;
    const char* message;
};

// The file may not grow: every store of new rows finds the disk full.
std::shared_ptr<void> fillDisk(run_project& project) {
    EXPECT_TRUE(project.db().execute("PRAGMA max_page_count = 1").ok());
    return nullptr;
}

// Another connection holds the write lock for the whole run; ours gives up after a short wait.
std::shared_ptr<void> lockProject(run_project& project) {
    EXPECT_TRUE(project.db().execute("PRAGMA busy_timeout = 50").ok());
    sb::message_sink errors;
    std::shared_ptr<sb::database> other = sb::database::open(project.db().path(), errors);
    EXPECT_TRUE(other) << errors;
    auto holder = std::make_shared<sb::session>(*other);
    EXPECT_TRUE(holder->ok()) << holder->storeError();
    return std::shared_ptr<void>(new std::pair(other, holder), [](void* p) {
        auto* held = static_cast<std::pair<std::shared_ptr<sb::database>, std::shared_ptr<sb::session>>*>(p);
        held->second.reset();  // the session before its database
        delete held;
    });
}

const store_fault kFaults[] = {
    {"full disk", fillDisk, "database or disk is full"},
    {"locked project", lockProject, "ERROR, unable to create session on database.\ndatabase is locked\n"},
};

TEST(RunStoreFaults, NoRecordIsGoodUnlessItsOutputsAreStored) {
    for (const store_fault& fault : kFaults) {
        for (int jobs : {1, 2}) {
            SCOPED_TRACE(std::string(fault.name) + ", jobs " + std::to_string(jobs));
            run_project project(3, 10);
            sb::run_controller first(project.db(), project.settings());
            std::string runLog;
            sb::message_sink errors;
            recording_observer observer;
            sb::run_set_options one;
            one.filter = "ID = 1";
            ASSERT_EQ(first.runMultipleRecords(one, observer, runLog).good, 1) << observer;
            const long storedBefore = project.storedOutputRows(1);
            ASSERT_GT(storedBefore, 0);
            const std::vector<std::string> before = project.storedOutputs();

            std::shared_ptr<void> held = fault.inflict(project);
            sb::run_controller controller(project.db(), project.settings());
            // Records 2 and 3 have no outputs yet (record 1, replacing its own, would fit).
            sb::run_set_options all;
            all.filter = "ID > 1";
            all.jobs = jobs;
            runLog.clear(), errors.clear();
            observer.clear();
            sb::run_set_result result = controller.runMultipleRecords(all, observer, runLog);
            errors.add(observer);
            held.reset();
            EXPECT_EQ(result.good, 0) << errors;
            EXPECT_EQ(result.failed, 2);
            EXPECT_THAT(errors.text(), HasSubstr(fault.message));
            EXPECT_EQ(project.storedOutputs(), before) << "the outputs stored before are kept whole";
            // Each record's run folder is kept, named, and left to the user.
            for (int32_t id : {2, 3}) {
                const std::string kept =
                    "ERROR, the outputs of record " + std::to_string(id) +
                    " were not stored: its earlier outputs are kept, and the run's files are in \"";
                size_t at = errors.text().find(kept);
                ASSERT_NE(at, std::string::npos) << errors;
                std::string folder = errors.text().substr(at + kept.size(),
                                                          errors.text().find('"', at + kept.size()) - at - kept.size());
                EXPECT_TRUE(std::filesystem::exists(folder + "sb.sch")) << folder;
                EXPECT_FALSE(std::filesystem::exists(folder + sb::run_folder::kOwnerFile)) << folder;
            }
        }
    }
}

TEST(RunStoreFaults, OneRecordRunFailsWhenItsOutputsAreNotStored) {
    run_project project(1, 10);
    fillDisk(project);
    sb::run_controller controller(project.db(), project.settings());
    std::string runLog;
    sb::message_sink errors;
    EXPECT_FALSE(controller.runOneRecord(1, {}, runLog, errors));
    EXPECT_THAT(errors.text(), HasSubstr("database or disk is full"));
    EXPECT_EQ(project.storedOutputRows(1), 0);
}

}  // namespace
