#pragma once
// The output variables each model version's list utility is asked for, the
// request file that names them, and the matching of the list file's header
// against them. One set is built fresh for every run.
#include <array>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "app/message_sink.h"
#include "modeloutput/output_column_definition.h"

namespace sb {

class tellura_control_record;
struct tellura_event_block;

class output_variable_set {
public:
    static constexpr int kVersionSlots = 6;  // version indexes 1..6

    output_variable_set();

    int currentVersion() const { return current_; }
    void setCurrentVersion(int versionIndex) { current_ = versionIndex; }

    // Empty for a version index without lists (1, 6, or outside 1..6).
    std::vector<output_column_definition>& mainList(int versionIndex);
    std::vector<output_column_definition>& extraList(int versionIndex);
    const std::vector<output_column_definition>& mainList(int versionIndex) const;
    const std::vector<output_column_definition>& extraList(int versionIndex) const;
    std::vector<output_column_definition>& mainList() { return mainList(current_); }
    std::vector<output_column_definition>& extraList() { return extraList(current_); }

    // Version index 4 always wants the monthly root names; other versions when an
    // event block writes output more often than every 12 months.
    static bool extraListWanted(int versionIndex, const std::vector<tellura_event_block>& blocks);

    // "sb_outvars.txt" in the run directory: the current version's main list, then
    // the extra list when wanted, one name per line.
    bool writeRequestFile(const std::string& runDirectory, const tellura_control_record& record,
                          message_sink& errors) const;

    // Every definition back to column -1.
    void resetColumns();
    // Matches the header line of a list file (lengthAsRead counts its line end).
    void matchHeader(std::string_view header, size_t lengthAsRead, bool extraWanted, message_sink& errors);

private:
    using definition_list = std::vector<output_column_definition>;
    // Sets the column of every definition of this name in the list; false when none.
    static bool matchName(definition_list& list, std::string_view name, int column);

    int current_ = 4;
    std::array<definition_list, kVersionSlots> main_;
    std::array<definition_list, kVersionSlots> extra_;
    definition_list none_;
};

// The variable names of each list, in the model's order (repeats kept).
const std::vector<std::string>& outputListA();
const std::vector<std::string>& outputListB();
const std::vector<std::string>& outputListC();
const std::vector<std::string>& outputListD();

}  // namespace sb
