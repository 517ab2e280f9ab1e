#pragma once
// What a set-up's files hold beyond the project's columns, so that nothing
// read is lost: values of names no column holds (or that a release profile
// keeps apart from the database's place), per control record and per
// management option, and whole further files a schedule needs beside it
// (nscale.dat and the like), per control record.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "app/message_sink.h"

namespace sb {

class database;

struct kept_value {
    std::string file;  // "fix.100", "site.100", "sitepar.in", "crop.100", ...
    std::string name;  // as the file spells it, e.g. "VARAT1(2,1)"
    double value = 0;
};

class kept_values {
public:
    // Replaces the value of the same file and name (case ignored).
    void set(std::string_view file, std::string_view name, double value);
    // nullptr when none is kept.
    const double* find(std::string_view file, std::string_view name) const;
    const std::vector<kept_value>& all() const { return values_; }
    bool empty() const { return values_.empty(); }
    void clear() { values_.clear(); }
    bool operator==(const kept_values& other) const;

private:
    std::vector<kept_value> values_;
};

struct record_file {
    std::string name;     // as the schedule's release looks for it, e.g. "nscale.dat"
    std::string content;  // the whole file, bytes as read
    bool operator==(const record_file&) const = default;
};

// A record's kept values and files: read replaces `values` / `files` (a
// project opened read-only that predates their tables reads none); write
// replaces what is stored under the ID and belongs in the caller's session.
bool loadKeptValues(database& db, int32_t id, kept_values& values, message_sink& errors);
bool saveKeptValues(database& db, int32_t id, const kept_values& values, message_sink& errors);
bool loadRecordFiles(database& db, int32_t id, std::vector<record_file>& files, message_sink& errors);
bool saveRecordFiles(database& db, int32_t id, const std::vector<record_file>& files, message_sink& errors);

// The kept values of one option file: one entry per option with values.
struct option_kept_values {
    std::string option;
    kept_values values;
};
bool loadOptionKeptValues(database& db, const std::string& file, std::vector<option_kept_values>& options,
                          message_sink& errors);
// Replaces every kept value of the file.
bool saveOptionKeptValues(database& db, const std::string& file, const std::vector<option_kept_values>& options,
                          message_sink& errors);

}  // namespace sb
