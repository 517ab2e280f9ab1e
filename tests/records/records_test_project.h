#pragma once
// A fresh project database with every table, in a temporary folder.
#include <memory>
#include <string>

#include "db/database.h"
#include "db/database_maker.h"
#include "test_support.h"

#include <gtest/gtest.h>

namespace sbtest {

class records_project {
public:
    records_project() {
        path_ = projectLocation(dir_.file("project.sbproj"));
        sb::message_sink errors;
        created_ = sb::database::create(path_, errors);
        db_ = sb::database::open(path_, errors);
        if (db_) created_ = sb::database_maker(*db_).createAllTables(errors) && created_;
        setupErrors_ = errors.text();
    }
    bool ok() const { return created_ && db_ != nullptr; }
    const std::string& setupErrors() const { return setupErrors_; }
    sb::database& db() { return *db_; }
    const std::string& path() const { return path_; }  // the file, or the URL on a server
    // Closes the database (everything written is in the file afterwards).
    void close() { db_.reset(); }
    // Drops a table so that the next operation on it fails as with a damaged file.
    void dropTable(sb::table_id table) { db_->execute(std::string("DROP TABLE [") + sb::tableName(table) + "]"); }

private:
    temp_dir dir_;
    std::string path_;
    std::unique_ptr<sb::database> db_;
    bool created_ = false;
    std::string setupErrors_;
};

}  // namespace sbtest

#define SB_REQUIRE_PROJECT(project) ASSERT_TRUE((project).ok()) << (project).setupErrors()

namespace sbtest {

// A test on a fresh project, with `errors` for the messages of its steps.
class project_test : public ::testing::Test {
protected:
    void SetUp() override { SB_REQUIRE_PROJECT(project); }
    records_project project;
    sb::message_sink errors;
};

}  // namespace sbtest
