#pragma once
// What a site archive holds, in memory: the IDs of its control records and the
// rows of every table that travels with them, whatever the table (the
// catalogue says what each table's rows belong to), so that tables added to
// the project later travel without code of their own here.
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "app/message_sink.h"
#include "db/table_record.h"
#include "records/option_member.h"

namespace sb {

class database;

// Rows of tables that belong to a record's set-up, a soil, a weather station or
// an option entry travel; outputs and bookkeeping stay in their project.
bool travelsInArchive(table_id table);

struct archive_table {
    table_id table;
    std::vector<table_record> rows;
};

// The ID columns that name a soil or a weather station from another table's
// rows (a record's soil and station, a block's station).
struct id_reference {
    table_id table;
    const char* column;
    row_owner refersTo;
};
const std::vector<id_reference>& idReferences();

class site_archive_content {
public:
    std::vector<int32_t> records;  // in table order

    // The table's rows; made (empty) when the content has none yet. Tables are
    // kept in catalogue order whatever order they are added in.
    archive_table& table(table_id id);
    const archive_table* find(table_id id) const;
    const std::vector<archive_table>& tables() const { return tables_; }
    std::vector<archive_table>& tables() { return tables_; }
    size_t rowCount(table_id id) const;

    // The IDs (or, for options, the names in lower case per list) that the
    // content holds: its soils, stations and option entries.
    std::set<int32_t> ownerIds(row_owner owner) const;
    std::set<std::string> optionNames(option_kind kind) const;

private:
    std::vector<archive_table> tables_;
};

// What the records' rows name: soils, stations and option entries. Those the
// records need to run are `required`; a block's station under weather choice
// M or S and an OMAD item are only carried when there.
struct archive_needs {
    struct need {
        std::string what;  // "record 5 names soil 3", for messages
        bool required = true;
    };
    std::map<int32_t, std::vector<need>> soils, stations;
    std::map<option_kind, std::map<std::string, std::vector<need>>> options;  // name in lower case
};
archive_needs recordNeeds(const site_archive_content& content);

// Appends one "ERROR, <need>, which <holder> does not hold.\n" per required
// piece the content lacks; false when there was any.
bool checkNeedsMet(const site_archive_content& content, const archive_needs& needs, const char* holder,
                   message_sink& errors);

// Loads the records (a WHERE filter on Control Records; table order) and
// everything they name from the project into the content: their soils,
// stations and the option entries they name, whole; with `allOptions` every
// entry of the project's option lists, as their run directories' option files
// hold them all.
bool loadSiteArchiveContent(database& db, const std::string& recordFilter, bool allOptions,
                            site_archive_content& content, message_sink& errors);

// Every row of a table matching the filter ("" for all), in stored order.
bool loadRows(database& db, table_id table, const std::string& filter, std::vector<table_record>& out,
              message_sink& errors);

// The option entry a row of an option-owned table belongs to: the entry of
// an option list's own table, or the entry a kept option value is kept for
// (its list told by the run file it was read from). False for other rows.
bool optionEntryOf(const table_record& row, option_kind& kind, std::string& name);

// "crop", "tree removal", "OMAD": an option list in messages.
const char* optionWord(option_kind kind);

}  // namespace sb
