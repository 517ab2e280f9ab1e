#include "records/option_layout.h"

#include <algorithm>
#include <charconv>
#include <memory>

#include "app/text_format.h"
#include "db/database_maker.h"

namespace sb {

namespace {

// Every option table holds its option's Name and Description beside the parameters.
bool isParameterColumn(const database_maker_table& def, int column) {
    return column != def.fieldIndex("Name") && column != def.fieldIndex("Description");
}

// "NAME(i,j)" -> base "NAME", subscripts {i, j}. False for names with no
// subscripts or with anything after the closing parenthesis.
bool splitSubscripted(std::string_view name, std::string& base, std::vector<int>& subscripts) {
    size_t open = name.find('(');
    if (open == std::string_view::npos || open == 0 || name.back() != ')') return false;
    base = toUpper(name.substr(0, open));
    subscripts.clear();
    std::string_view inside = name.substr(open + 1, name.size() - open - 2);
    while (true) {
        size_t comma = inside.find(',');
        std::string_view piece = inside.substr(0, comma);
        int value = 0;
        auto [end, ec] = std::from_chars(piece.data(), piece.data() + piece.size(), value);
        if (ec != std::errc() || end != piece.data() + piece.size() || value < 1) return false;
        subscripts.push_back(value);
        if (comma == std::string_view::npos) break;
        inside.remove_prefix(comma + 1);
    }
    return subscripts.size() <= 3;
}

void addUnique(std::vector<int>& columns, int column) {
    if (std::find(columns.begin(), columns.end(), column) == columns.end()) columns.push_back(column);
}

}  // namespace

const option_layout& option_layout::of(option_kind kind) {
    // Built on first use; the tables are constant, so each layout is built once.
    static const auto layouts = [] {
        std::array<std::unique_ptr<option_layout>, kOptionKindCount> all;
        for (int k = 0; k < kOptionKindCount; ++k)
            all[static_cast<size_t>(k)].reset(new option_layout(static_cast<option_kind>(k)));
        return all;
    }();
    return *layouts.at(static_cast<size_t>(kind));
}

option_layout::option_layout(option_kind kind) : kind_(kind) {
    const option_sequence& sequence = optionSequence(kind);
    for (const option_sequence_entry& entry : sequence.entries) addEntry(entry, true);
    for (const option_sequence_entry& entry : sequence.readAliases) addEntry(entry, false);
    addColumnNames();
    finishArrays();
}

void option_layout::addEntry(const option_sequence_entry& entry, bool writes) {
    const database_maker_table& def = tableDef(optionMember(kind_).table);
    std::vector<option_line> expanded;
    if (std::string_view(entry.written) == "*") {
        for (int column = 0; column < static_cast<int>(def.fields().size()); ++column)
            if (isParameterColumn(def, column))
                expanded.push_back({toUpper(def.fields()[static_cast<size_t>(column)].name), column});
    } else {
        std::vector<std::string> names = expandNamePattern(entry.written);
        std::vector<std::string> columns = entry.column ? expandNamePattern(entry.column) : names;
        if (names.empty() || names.size() != columns.size()) {
            problems_.push_back(strprintf("%s: pattern \"%s\" does not pair with \"%s\"", optionMember(kind_).cliName,
                                          entry.written, entry.column ? entry.column : entry.written));
            return;
        }
        for (size_t i = 0; i < names.size(); ++i) {
            int column = def.fieldIndex(columns[i]);
            if (column < 0 || !isParameterColumn(def, column)) {
                problems_.push_back(strprintf("%s: no column \"%s\" for \"%s\"", optionMember(kind_).cliName,
                                              columns[i].c_str(), names[i].c_str()));
                continue;
            }
            expanded.push_back({names[i], column});
        }
    }
    for (const option_line& line : expanded) {
        addReadForm(line.name, line.column);
        if (!writes) continue;
        for (int v = 1; v <= kVersionCount; ++v)
            if (entry.versions & versionBit(v)) lines_[static_cast<size_t>(v)].push_back(line);
    }
}

void option_layout::addReadForm(const std::string& name, int column) {
    std::string base;
    std::vector<int> subscripts;
    if (name.find('(') == std::string::npos) {
        addUnique(scalars_[toUpper(name)], column);
    } else if (splitSubscripted(name, base, subscripts)) {
        pendingElements_.push_back({base, subscripts, column});
    }
    // Other spellings (a column such as "prdx(1)4_5") are not names a file uses.
}

void option_layout::addColumnNames() {
    const database_maker_table& def = tableDef(optionMember(kind_).table);
    for (int column = 0; column < static_cast<int>(def.fields().size()); ++column)
        if (isParameterColumn(def, column)) addReadForm(def.fields()[static_cast<size_t>(column)].name, column);
}

void option_layout::finishArrays() {
    for (const pending_element& element : pendingElements_) {
        const std::string& base = element.base;
        const std::vector<int>& subscripts = element.subscripts;
        option_array_field& field = arrays_[base];
        if (field.subscripts == 0) {
            field.name = base;
            field.subscripts = static_cast<int>(subscripts.size());
        } else if (field.subscripts != static_cast<int>(subscripts.size())) {
            problems_.push_back(strprintf("%s: \"%s\" used with %d and %zu subscripts", optionMember(kind_).cliName,
                                          base.c_str(), field.subscripts, subscripts.size()));
            continue;
        }
        for (size_t d = 0; d < subscripts.size(); ++d) field.dims[d] = std::max(field.dims[d], subscripts[d]);
    }
    for (auto& [base, field] : arrays_) {
        size_t count = 1;
        for (int d = 0; d < field.subscripts; ++d) count *= static_cast<size_t>(field.dims[d]);
        field.elements.assign(count, {});
    }
    for (const pending_element& element : pendingElements_) {
        option_array_field& field = arrays_[element.base];
        const std::vector<int>& s = element.subscripts;
        if (static_cast<int>(s.size()) != field.subscripts) continue;
        size_t index = 0;
        for (int d = 0; d < field.subscripts; ++d)
            index = index * static_cast<size_t>(field.dims[d]) + static_cast<size_t>(s[static_cast<size_t>(d)] - 1);
        addUnique(field.elements[index], element.column);
    }
    pendingElements_.clear();
    pendingElements_.shrink_to_fit();
}

const std::vector<option_line>& option_layout::lines(int version) const {
    static const std::vector<option_line> kNone;
    if (version < 1 || version > kVersionCount) return kNone;
    return lines_[static_cast<size_t>(version)];
}

int option_layout::writtenColumn(std::string_view name, int version) const {
    for (const option_line& line : lines(version))
        if (iequals(line.name, name)) return line.column;
    if (const std::vector<int>* columns = scalarColumns(name)) return columns->empty() ? -1 : columns->front();
    std::string base;
    std::vector<int> subscripts;
    if (!splitSubscripted(name, base, subscripts)) return -1;
    const option_array_field* field = arrayField(base);
    if (!field || field->subscripts != static_cast<int>(subscripts.size())) return -1;
    size_t index = 0;
    for (int d = 0; d < field->subscripts; ++d) {
        if (subscripts[static_cast<size_t>(d)] > field->dims[d]) return -1;
        index =
            index * static_cast<size_t>(field->dims[d]) + static_cast<size_t>(subscripts[static_cast<size_t>(d)] - 1);
    }
    const std::vector<int>& columns = field->elements[index];
    return columns.empty() ? -1 : columns.front();
}

const std::vector<int>* option_layout::scalarColumns(std::string_view name) const {
    auto it = scalars_.find(toUpper(name));
    return it == scalars_.end() ? nullptr : &it->second;
}

const option_array_field* option_layout::arrayField(std::string_view baseName) const {
    auto it = arrays_.find(toUpper(baseName));
    return it == arrays_.end() ? nullptr : &it->second;
}

}  // namespace sb
