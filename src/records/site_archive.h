#pragma once
// Export and import of site archives: control records with everything they
// reference (site values, soil and layers, weather station with its means and
// history, event blocks and events, the option entries they name), moved
// between projects as one ".esa" file. The command line and the desktop both
// call these two.
#include <string>

#include "app/message_sink.h"

namespace sb {

class database;

// Writes the records the filter selects (a WHERE condition on Control Records,
// "" for every record), what they reference and the whole option lists (their
// run directories hold them all) into the file; "Exported N records to ..."
// goes to `messages`.
bool exportSiteArchive(database& db, const std::string& recordFilter, const std::string& path, message_sink& messages,
                       message_sink& errors);

// Adds the archive's records to the project in one transaction. A record,
// soil or station ID the project already uses is given the next free one, and
// each such change is reported ("record 5 -> 12"). An option entry is added
// when the project has none of that name and left out when the project's is
// the same; a differing one is refused (naming it) when a record uses it, and
// otherwise left out with a note. A damaged, cut-short, foreign or
// newer file, or one whose records name pieces it does not hold, imports
// nothing.
bool importSiteArchive(database& db, const std::string& path, message_sink& messages, message_sink& errors);

}  // namespace sb
