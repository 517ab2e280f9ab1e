#include "modeloutput/output_variable_set.h"

#include <cstdio>
#include <filesystem>

#include "app/text_file.h"
#include "app/text_format.h"
#include "modeloutput/list_file_layout.h"
#include "modeloutput/output_value_parse.h"
#include "records/tellura_control_record.h"

namespace sb {

namespace {
std::vector<output_column_definition> definitionsOf(const std::vector<std::string>& names) {
    std::vector<output_column_definition> list;
    list.reserve(names.size());
    for (const auto& name : names) list.emplace_back(name);
    return list;
}

const std::vector<output_column_definition>& noDefinitions() {
    static const std::vector<output_column_definition> none;
    return none;
}

bool validSlot(int versionIndex) { return versionIndex >= 1 && versionIndex <= output_variable_set::kVersionSlots; }
}  // namespace

output_variable_set::output_variable_set() {
    main_[2 - 1] = definitionsOf(outputListA());
    main_[3 - 1] = definitionsOf(outputListB());
    main_[4 - 1] = definitionsOf(outputListC());
    extra_[4 - 1] = definitionsOf(outputListD());
    main_[5 - 1] = main_[3 - 1];  // version 4.6 asks for the same variables as 4.5
}

// A version index outside 1..6 has no lists: it gets an empty one of its own
// that nothing else shares.
std::vector<output_column_definition>& output_variable_set::mainList(int versionIndex) {
    if (!validSlot(versionIndex)) return none_ = {};
    return main_[static_cast<size_t>(versionIndex - 1)];
}

std::vector<output_column_definition>& output_variable_set::extraList(int versionIndex) {
    if (!validSlot(versionIndex)) return none_ = {};
    return extra_[static_cast<size_t>(versionIndex - 1)];
}

const std::vector<output_column_definition>& output_variable_set::mainList(int versionIndex) const {
    return validSlot(versionIndex) ? main_[static_cast<size_t>(versionIndex - 1)] : noDefinitions();
}

const std::vector<output_column_definition>& output_variable_set::extraList(int versionIndex) const {
    return validSlot(versionIndex) ? extra_[static_cast<size_t>(versionIndex - 1)] : noDefinitions();
}

bool output_variable_set::extraListWanted(int versionIndex, const std::vector<tellura_event_block>& blocks) {
    if (versionIndex == 4) return true;
    for (const auto& block : blocks)
        if (block.outputInterval < 12.0f) return true;
    return false;
}

bool output_variable_set::writeRequestFile(const std::string& runDirectory, const tellura_control_record& record,
                                           message_sink& errors) const {
    std::string path = (std::filesystem::path(runDirectory) / "sb_outvars.txt").string();
    std::string text;
    auto writeList = [&](const std::vector<output_column_definition>& list) {
        for (const auto& definition : list) text += definition.name + "\n";
    };
    writeList(mainList(current_));
    if (extraListWanted(current_, record.blocks)) writeList(extraList(current_));
    if (writeTextFile(path, text)) return true;
    errors.errorf("ERROR, can't open outvars file \"%s\".\n", path.c_str());
    return false;
}

void output_variable_set::resetColumns() {
    for (auto* lists : {&main_, &extra_})
        for (auto& list : *lists)
            for (auto& definition : list) definition.column = -1;
}

bool output_variable_set::matchName(definition_list& list, std::string_view name, int column) {
    bool found = false;
    for (auto& definition : list)
        if (iequals(definition.name, name)) {
            definition.column = column;
            found = true;
        }
    return found;
}

void output_variable_set::matchHeader(std::string_view header, size_t lengthAsRead, bool extraWanted,
                                      message_sink& errors) {
    list_file_layout layout = list_file_layout::forVersion(current_);
    int columns = layout.columnCount(lengthAsRead);
    for (int i = 0; i < columns; ++i) {
        size_t first = layout.headerFirst(i);
        std::string_view name = trim(fieldRange(header, first, first + layout.pitch - 1));
        bool found = matchName(mainList(current_), name, i);
        if (extraWanted && matchName(extraList(current_), name, i)) found = true;
        if (!found)
            errors.warningf("WARNING, LIS file column %d name not requested: \"%s\".\n", i + 1,
                            std::string(name).c_str());
    }
}

}  // namespace sb
