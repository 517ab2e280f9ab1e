#include "records/new_project.h"

#include "db/database.h"
#include "db/database_maker.h"
#include "records/tellura_control_record.h"

namespace sb {

std::unique_ptr<database> createNewProject(const std::string& path, message_sink& errors) {
    bool created = database::create(path, errors);
    if (!created) errors.error("Unable to create database\n");
    auto db = database::open(path, errors);
    if (!db) return nullptr;
    if (created) {
        database_maker maker(*db);
        maker.createAllTables(errors);
    }
    tellura_control_record record;
    saveControlRecord(*db, record, errors);
    return db;
}

}  // namespace sb
