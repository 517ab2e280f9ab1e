#pragma once
// Reads ".100" parameter files (option lists, site and fixed files) the way the
// model does: header lines start with a letter, value lines are "value name".
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace standin {

struct parameter_record {
    std::string name;
    std::map<std::string, double> values;  // keyed by the lower-case field name

    std::optional<double> value(const std::string& field) const;
};

class parameter_file {
public:
    // False with a message (containing "error") when the file is missing or
    // has a line the model could not read. Option lists may be empty (a user
    // without fire options still gets a fire.100); site and fixed files may not.
    bool read(const std::string& path, bool requireRecord, std::string& errors);
    const std::vector<parameter_record>& records() const { return records_; }
    const parameter_record* find(const std::string& name) const;  // case ignored

private:
    std::vector<parameter_record> records_;
};

}  // namespace standin
