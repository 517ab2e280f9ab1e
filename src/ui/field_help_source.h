#pragma once
// Where the editors get the one-line help of a parameter: the help file of
// the settings, read once per program run, restricted to the current model
// version.
#include <string>

#include "ui/property_page_columns.h"

namespace sb {

class app_soilbench;

// `table` is the help file's table number of the parameters being edited
// (help_table: option files, fixed file, site file).
field_help_lookup makeFieldHelpLookup(const app_soilbench& settings, int table);
// Messages of the one load of the help file (empty when it loaded cleanly).
const std::string& fieldHelpLoadMessages(const app_soilbench& settings);

}  // namespace sb
