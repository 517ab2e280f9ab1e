#pragma once
// Where the editors get the help of a parameter: the help file of the
// settings, restricted to the current model version. The file is read when
// first needed and read again when the help file setting names another file
// or the file itself changes.
#include <string>

#include "ui/property_page_columns.h"

namespace sb {

class app_soilbench;

// `table` is the help file's table number of the parameters being edited
// (help_table: option files, fixed file, site file).
field_help_lookup makeFieldHelpLookup(const app_soilbench& settings, int table);
// Messages of the latest load of the help file (empty when it loaded cleanly).
std::string fieldHelpLoadMessages(const app_soilbench& settings);

}  // namespace sb
