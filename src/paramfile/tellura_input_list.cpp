#include "paramfile/tellura_input_list.h"

#include "app/text_file.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "app/text_format.h"

namespace sb {

namespace {

constexpr std::string_view kHeaderBreak = " \t\r";
constexpr std::string_view kValueDelimiters = " \t\r\n";
constexpr std::string_view kNameDelimiters = " '\t\r\n";

// Hands out the lines of a text one by one: LF or CR LF line ends, each line
// cut to the reader's limit (the rest of a longer line is skipped).
class line_reader {
public:
    line_reader(std::string_view text, size_t limit) : text_(text), limit_(limit) {}

    bool next(std::string_view& line) {
        if (pos_ >= text_.size()) return false;
        size_t end = text_.find('\n', pos_);
        if (end == std::string_view::npos) end = text_.size();
        line = text_.substr(pos_, end - pos_);
        pos_ = end + 1;
        ++number_;
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (line.size() > limit_) line = line.substr(0, limit_);
        return true;
    }
    int number() const { return number_; }

private:
    std::string_view text_;
    size_t limit_;
    size_t pos_ = 0;
    int number_ = 0;
};

// strtok-style: skips leading delimiters and returns the token, moving `pos`
// past the one delimiter that ends it.
std::string_view nextToken(std::string_view line, size_t& pos, std::string_view delimiters) {
    pos = line.find_first_not_of(delimiters, pos);
    if (pos == std::string_view::npos) {
        pos = line.size();
        return {};
    }
    size_t end = line.find_first_of(delimiters, pos);
    if (end == std::string_view::npos) end = line.size();
    std::string_view token = line.substr(pos, end - pos);
    pos = end < line.size() ? end + 1 : end;
    return token;
}

std::string_view trimBlanks(std::string_view text) {
    size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return {};
    size_t last = text.find_last_not_of(" \t\r");
    return text.substr(first, last - first + 1);
}

// One import in progress: the list, the record the value lines go to, the counts.
class import_pass {
public:
    import_pass(tellura_input_list& list, const std::string& path, message_sink& errors)
        : list_(list), path_(path), errors_(errors) {}

    // One line of the file; its messages are followed by where it stands
    // (those that name their own line are not).
    void line(std::string_view text) {
        ++lineNumber_;
        const bool isHeader = std::isalpha(static_cast<unsigned char>(text.front()));
        if (isHeader) closeRecord();
        const size_t before = errors_.count();
        located_ = false;
        if (isHeader) header(text);
        else value(text);
        if (errors_.count() == before || located_) return;
        ++counts_.badLines;
        // Where, as part of what the line was found to be.
        errors_.add(errors_.messages().back().severity,
                    strprintf("File: \"%s\", line %ld\n", path_.c_str(), lineNumber_));
    }
    // After the last line.
    import_counts finish() {
        closeRecord();
        return counts_;
    }

private:
    // A name line with no value line after it is no option record: any text
    // whose lines begin with letters would otherwise pass for a list of them.
    void closeRecord() {
        if (!current_ || valuesSeen_) return;
        errors_.errorf("ERROR, option record \"%s\" has no values.\n", current_->name.c_str());
        errors_.errorf("File: \"%s\", line %ld\n", path_.c_str(), headerLine_);
        ++counts_.badLines;
        current_ = nullptr;
    }
    void header(std::string_view line);
    void value(std::string_view line);

    tellura_input_list& list_;
    const std::string& path_;
    message_sink& errors_;
    tellura_input* current_ = nullptr;
    // The names the current record's lines gave so far (upper case), and where.
    std::map<std::string, long> seen_;
    // The records of this file so far (upper case), and their header lines.
    std::map<std::string, long> records_;
    bool skipping_ = false;  // the lines of a second record of one name
    import_counts counts_;
    long lineNumber_ = 0;
    long headerLine_ = 0;
    bool valuesSeen_ = true;
    bool located_ = false;  // the line's message names its file and line itself
};

void import_pass::header(std::string_view line) {
    size_t nameEnd = line.find_first_of(kHeaderBreak);
    if (nameEnd == std::string_view::npos) nameEnd = line.size();
    std::string_view name = line.substr(0, nameEnd);
    if (name.empty()) {
        errors_.errorf("ERROR, unable to parse input from \"%s\"\n", path_.c_str());
        return;
    }
    // Looked up by the name as it is kept (cut to 20 characters), so that a
    // long name read twice updates its record instead of making a second one.
    name = name.substr(0, tellura_input::kMaxNameLength);
    headerLine_ = lineNumber_;
    valuesSeen_ = false;
    seen_.clear();
    // A second record of one name within the file: the model looks its
    // options up from the top and takes the first, so the first one stands.
    auto [first, added] = records_.emplace(toUpper(name), lineNumber_);
    if (!added) {
        errors_.warningf(
            "WARNING, \"%s\" line %ld: a second record \"%.*s\" (the first is on line %ld); the model "
            "reads the first, so this one is not imported.\n",
            path_.c_str(), lineNumber_, static_cast<int>(name.size()), name.data(), first->second);
        ++counts_.duplicateRecords;
        located_ = true;
        current_ = nullptr;
        skipping_ = true;
        return;
    }
    skipping_ = false;
    current_ = list_.find(name);
    if (current_) {
        ++counts_.updated;
    } else {
        std::unique_ptr<tellura_input> record = list_.makeRecord();
        record->name = std::string(name);
        current_ = &list_.add(std::move(record));
        ++counts_.imported;
    }
    std::string_view description = trimBlanks(line.substr(nameEnd));
    if (description.size() > tellura_input::kMaxDescriptionLength) {
        errors_.error("ERROR, description too long for input.\n" + current_->name + "\n");
    } else if (!description.empty()) {
        current_->description = std::string(description);
    }
}

void import_pass::value(std::string_view line) {
    if (skipping_) return;
    if (!current_) {
        errors_.error("Syntax error in cultivation parameter file.\n");
        return;
    }
    size_t pos = 0;
    std::string_view token = nextToken(line, pos, kValueDelimiters);
    double value = 0;
    if (!token.empty() && token.front() == '*') return;  // "*** Climate parameters": a section heading
    if (!readFiniteNumber(token, value)) {
        errors_.errorf("ERROR, value \"%.*s\" is not a number.\n", static_cast<int>(token.size()), token.data());
        return;
    }
    std::string_view name = nextToken(line, pos, kNameDelimiters);
    if (name.empty()) {
        errors_.error("Syntax error, no field name, in cultivation parameter file.\n");
        return;
    }
    valuesSeen_ = true;
    // A name given twice in one record is a broken file: the model reads its
    // lines by position, so which value was meant cannot be told.
    auto [first, added] = seen_.emplace(toUpper(name), lineNumber_);
    if (!added) {
        errors_.errorf(
            "ERROR, \"%s\" line %ld: \"%.*s\" is given twice in \"%s\" (first on line %ld); the second "
            "value is not used.\n",
            path_.c_str(), lineNumber_, static_cast<int>(name.size()), name.data(), current_->name.c_str(),
            first->second);
        ++counts_.duplicates;
        located_ = true;
        return;
    }
    if (!current_->setField(name, value, errors_)) current_->keepValue(name, value);
}

}  // namespace

tellura_input& tellura_input_list::add(std::unique_ptr<tellura_input> record) {
    records_.push_back(std::move(record));
    return *records_.back();
}

tellura_input* tellura_input_list::find(std::string_view name) {
    for (auto& record : records_)
        if (iequals(record->name, name)) return record.get();
    return nullptr;
}

const tellura_input* tellura_input_list::find(std::string_view name) const {
    return const_cast<tellura_input_list*>(this)->find(name);
}

import_counts tellura_input_list::importFile(const std::string& path, message_sink& errors, std::string& status) {
    std::string text;
    if (!readTextFile(path, text, errors, strprintf("ERROR, unable to open file \"%s\"\n", path.c_str()))) {
        import_counts unread;
        unread.unread = true;
        return unread;
    }
    return importText(text, path, errors, status);
}

import_counts tellura_input_list::importText(std::string_view text, const std::string& path, message_sink& errors,
                                             std::string& status) {
    import_pass pass(*this, path, errors);
    line_reader reader(text, kMaxLineLength);
    std::string_view line;
    while (reader.next(line)) {
        if (trimBlanks(line).empty()) break;
        pass.line(line);
    }
    import_counts counts = pass.finish();
    appendf(status, "Imported %d records and updated %d records from \"%s\".\n", counts.imported, counts.updated,
            path.c_str());
    return counts;
}

void tellura_input_list::writeText(std::string& out, int version) const {
    for (const auto& record : records_) record->write(out, version);
}

bool tellura_input_list::write(const std::string& path, message_sink& errors, int version) const {
    std::string text;
    writeText(text, version);
    bool created = false;
    if (writeTextFile(path, text, &created)) return true;
    if (created) {
        errors.errorf("ERROR, unable to write file \"%s\"\n", path.c_str());
        return false;
    }
    // This message has never ended in a line end; callers show it as it is.
    errors.error("ERROR, unable to open file in tellura_input_list.write: " + path);
    return false;
}

}  // namespace sb
