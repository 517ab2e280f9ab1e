#pragma once
// File | New: a new project file with every table and one default control
// record, opened and ready.
#include <memory>
#include <string>

#include "app/message_sink.h"

namespace sb {

class database;

// Replaces any file at the path. "Unable to create database\n" when the file
// itself could not be made; whether or not it was, the file is then opened and,
// when that works, the default record is written as the first record.
std::unique_ptr<database> createNewProject(const std::string& path, message_sink& errors);

}  // namespace sb
