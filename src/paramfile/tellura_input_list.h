#pragma once
// An ordered list of named parameter records of one kind, read from and
// written to a ".100" file.
//
// Reading rules (importFile):
// - A line whose first character is a letter is a header: name up to the
//   first space (cut to 20 characters), the rest without leading and trailing
//   blanks is the description. A name already in the list updates that record.
// - Any other line is a value line: a number, then the field name (single
//   quotes around the name are accepted, as in 'PRDX(1)'); anything after
//   the name is not read. A line whose first word starts with "*" is a
//   section heading ("*** Climate parameters") and is passed over; any other
//   first word that is not a finite decimal number is refused ("ERROR, value
//   \"%s\" is not a number.\n").
// - A name given twice within one record is reported with its line ("ERROR,
//   ... is given twice ...") and the second value is not used.
// - A second record of one name within the file is reported with its line
//   ("WARNING, ... a second record ...") and not imported: the model takes the
//   first record of a name it looks up.
// - A name no field takes is offered to the record's keepValue().
// - Every other message a line gives is followed by "File: \"<path>\", line <n>\n".
// - Reading stops at the end of the file or at the first empty line (a line
//   holding nothing but blanks counts as empty).
// - Line ends may be LF or CR LF.
// - A line longer than 131 characters is cut to its first 131 characters and
//   the rest of it is skipped (it is not read as a line of its own): the
//   model's own files carry headers padded with blanks far beyond that.
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/message_sink.h"
#include "paramfile/tellura_input.h"

namespace sb {

struct import_counts {
    int imported = 0;          // records new to the list
    int updated = 0;           // records already in the list, overwritten
    int badLines = 0;          // lines that gave an error message (each followed by the file and line)
    int duplicates = 0;        // value lines naming a parameter their record gave already (reported, not used)
    int duplicateRecords = 0;  // records of a name the file gave before (reported, not imported)
    bool unread = false;       // the file could not be read at all
    // Nothing wrong: every line read and at least one record in the file.
    bool clean() const { return !unread && badLines == 0 && duplicates == 0 && imported + updated > 0; }
};

class tellura_input_list {
public:
    static constexpr size_t kMaxLineLength = 131;

    virtual ~tellura_input_list() = default;

    // An empty record of this list's kind.
    virtual std::unique_ptr<tellura_input> makeRecord() const = 0;

    // Appends the record and returns it.
    tellura_input& add(std::unique_ptr<tellura_input> record);
    // First record whose name equals `name` without regard to case.
    tellura_input* find(std::string_view name);
    const tellura_input* find(std::string_view name) const;

    size_t size() const { return records_.size(); }
    bool empty() const { return records_.empty(); }
    tellura_input& at(size_t index) { return *records_.at(index); }
    const tellura_input& at(size_t index) const { return *records_.at(index); }
    void clear() { records_.clear(); }
    const std::vector<std::unique_ptr<tellura_input>>& records() const { return records_; }

    // Reads a ".100" file into the list. Problems go to `errors`; the
    // closing "Imported %d records and updated %d records from \"%s\".\n"
    // goes to `status`.
    import_counts importFile(const std::string& path, message_sink& errors, std::string& status);
    // The same on text already in memory; `path` only names it in messages.
    import_counts importText(std::string_view text, const std::string& path, message_sink& errors, std::string& status);

    // Creates (replaces) the file with every record in list order.
    bool write(const std::string& path, message_sink& errors, int version) const;
    void writeText(std::string& out, int version) const;

private:
    std::vector<std::unique_ptr<tellura_input>> records_;
};

// The list of one record kind: makeRecord() makes a Record, and every record
// added to it must be a Record (the typed accessors rely on that).
template <class Record>
class tellura_input_list_of : public tellura_input_list {
public:
    std::unique_ptr<tellura_input> makeRecord() const override { return std::make_unique<Record>(); }
    Record& recordAt(size_t index) { return static_cast<Record&>(at(index)); }
    const Record& recordAt(size_t index) const { return static_cast<const Record&>(at(index)); }
    Record* findRecord(std::string_view name) { return static_cast<Record*>(find(name)); }
};

}  // namespace sb
