#include "parameter_file.h"

#include "standin_text.h"

#include <cctype>

namespace standin {

std::optional<double> parameter_record::value(const std::string& field) const {
    auto it = values.find(lower(field));
    if (it == values.end()) return std::nullopt;
    return it->second;
}

static std::string fieldName(std::string token) {
    // Names may be written in single quotes ('PRDX(1)').
    std::string name;
    for (char c : token)
        if (c != '\'') name += c;
    return lower(name);
}

bool parameter_file::read(const std::string& path, bool requireRecord, std::string& errors) {
    records_.clear();
    std::vector<std::string> lines;
    if (!readLines(path, lines)) {
        errors += "stand-in model: error: cannot read " + path + "\n";
        return false;
    }
    bool ok = true;
    for (size_t i = 0; i < lines.size(); ++i) {
        const std::string& line = lines[i];
        std::string where = path + " line " + std::to_string(i + 1);
        if (trimBlanks(line).empty()) break;  // the model stops at an empty line
        if (line[0] == '*') continue;         // comment lines of hand-made site files
        if (std::isalpha(static_cast<unsigned char>(line[0]))) {
            records_.push_back({splitBlanks(line).front(), {}});
            continue;
        }
        std::vector<std::string> tokens = splitBlanks(line);
        std::optional<double> value = tokens.empty() ? std::nullopt : parseNumber(tokens[0]);
        if (records_.empty() || !value || tokens.size() < 2) {
            errors += "stand-in model: error: malformed " + where + ": \"" + line + "\"\n";
            ok = false;
            continue;
        }
        records_.back().values[fieldName(tokens[1])] = *value;
    }
    if (ok && requireRecord && records_.empty()) {
        errors += "stand-in model: error: " + path + " holds no parameter record\n";
        ok = false;
    }
    return ok;
}

const parameter_record* parameter_file::find(const std::string& name) const {
    for (const parameter_record& record : records_)
        if (lower(record.name) == lower(name)) return &record;
    return nullptr;
}

}  // namespace standin
