#include "modeloutput/list_file_reader.h"

#include "app/text_format.h"
#include "modeloutput/list_file_layout.h"
#include "modeloutput/output_field_target.h"
#include "modeloutput/output_line_reader.h"
#include "modeloutput/output_time.h"
#include "modeloutput/output_value_parse.h"
#include "modeloutput/tellura_output.h"
#include "modeloutput/output_variable_set.h"
#include "records/tellura_event_block.h"

namespace sb {

namespace {

// Versions 4.5 and 4.6 report the first twenty names of their list (the litter
// pools' isotope and element contents) as end-of-run state, not per row.
constexpr size_t kEndOfRunNames = 20;

struct fill_step {
    const output_column_definition* definition;
    output_field_target target;
    bool endOfRun;
};

class list_file_filler {
public:
    list_file_filler(output_variable_set& variables, int versionIndex, bool monthly, tellura_outputs& outputs)
        : version_(versionIndex), outputs_(outputs) {
        bool splitEndOfRun = versionIndex == 3 || versionIndex == 5;
        const auto& rowTable = tableDef(monthly ? table_id::output_monthly : table_id::output_annual);
        const auto& endTable = tableDef(table_id::output);
        auto add = [&](const output_column_definition& definition, bool endOfRun) {
            if (!definition.matched()) return;  // a variable the file lacks stays unset
            output_field_target target =
                resolveOutputField(endOfRun ? endTable : rowTable, definition.name, monthly && !endOfRun);
            if (target.placed()) steps_.push_back({&definition, std::move(target), endOfRun});
        };
        const auto& main = variables.mainList(versionIndex);
        for (size_t i = 0; i < main.size(); ++i) add(main[i], splitEndOfRun && i < kEndOfRunNames);
        if (monthly)
            for (const auto& definition : variables.extraList(versionIndex)) add(definition, false);
    }

    // False when a name check failed (the message is written).
    bool fill(std::string_view row, long lineNumber, table_record& record, int month, message_sink& errors) {
        bool error = false;
        for (const auto& step : steps_) {
            if (!step.endOfRun && !step.target.takesMonth(month)) continue;
            float value = 0;
            int got =
                step.definition->extractFloat(row, version_, true, step.target.expectedName, error, value, errors);
            if (error) return false;
            if (!got) {
                noteUnreadable(row, lineNumber, *step.definition, errors);
                continue;
            }
            table_record& target = step.endOfRun ? endOfRunRecord() : record;
            storeOutputValue(target, step.target.column, value);
        }
        return true;
    }

    void finish(message_sink& errors) const { badValues_.finish(errors); }

private:
    table_record& endOfRunRecord() { return outputs_.endOfRunRecord(); }

    void noteUnreadable(std::string_view row, long lineNumber, const output_column_definition& definition,
                        message_sink& errors) {
        std::string_view text = definition.valueText(row, version_);
        float ignored = 0;
        parse_result r = parseOutputFloat(text, ignored);
        // An empty field (a short row) simply leaves the value unset.
        if (r == parse_result::not_finite || r == parse_result::not_a_number)
            badValues_.note(lineNumber, text, definition.name, errors);
    }

    int version_;
    tellura_outputs& outputs_;
    std::vector<fill_step> steps_;
    bad_value_log badValues_{"LIS file"};
};

// Reads one event block's rows; false when a row could not be stored.
bool readBlock(output_line_reader& reader, const tellura_event_block& block, int versionIndex, bool monthly,
               list_file_filler& filler, tellura_outputs& outputs, message_sink& errors) {
    output_year_span span;
    bool ok = true;
    bool last = false;
    size_t timeLast = listTimeFieldLast(versionIndex);
    while (!last && reader.next()) {
        std::string_view row = reader.line();
        if (trim(row).empty()) continue;  // a blank line (e.g. at the end) is no output time
        double time = 0;
        std::string_view timeText = fieldRange(row, 1, timeLast);
        if (parseOutputDouble(timeText, time) != parse_result::ok) {
            errors.errorf("ERROR, LIS file line %ld: time \"%s\" is not a number.\n", reader.lineNumber(),
                          std::string(trim(timeText)).c_str());
            ok = false;
            break;
        }
        if (closesBlock(time, block.lastYear)) last = true;
        table_record* target = nullptr;
        int month = 0;
        long year = 0;
        if (monthly) {
            output_year_month ym = monthlyTime(static_cast<float>(time));
            target = &outputs.monthlyFor(ym.year, ym.month);
            month = ym.month;
            year = ym.year;
        } else {
            year = annualYear(time);
            target = &outputs.annualFor(static_cast<int>(year));
        }
        span.see(year);
        if (!filler.fill(row, reader.lineNumber(), *target, month, errors)) {
            ok = false;
            break;
        }
        ++span.count;
    }
    span.appendRecordsMessage(errors);
    return ok;
}

}  // namespace

bool readListFile(output_variable_set& variables, const std::string& path, int versionIndex,
                  const std::vector<tellura_event_block>& blocks, tellura_outputs& outputs, message_sink& errors) {
    variables.setCurrentVersion(versionIndex);
    bool extraWanted = output_variable_set::extraListWanted(versionIndex, blocks);
    output_line_reader reader;
    if (!reader.open(path)) {
        errors.error("ERROR, unable to open LIS file: " + path + "\n");
        return false;
    }
    if (!reader.next()) {
        if (reader.withinLimit(errors)) errors.error("ERROR, LIS file is empty.\n");
        return false;
    }
    variables.resetColumns();
    variables.matchHeader(reader.line(), reader.lengthAsRead(), extraWanted, errors);
    if (!reader.next()) {
        if (reader.withinLimit(errors)) errors.error("ERROR, LIS file missing data.\n");
        return false;
    }
    if (blocks.empty()) return true;
    // Each block's rows are annual or monthly as its interval says, as in the
    // binary file: the two readings of one run store the same records.
    list_file_filler annualFiller(variables, versionIndex, false, outputs);
    list_file_filler monthlyFiller(variables, versionIndex, true, outputs);
    bool ok = true;
    for (const auto& block : blocks) {
        bool monthly = block.outputInterval < 12.0f;
        if (!readBlock(reader, block, versionIndex, monthly, monthly ? monthlyFiller : annualFiller, outputs, errors)) {
            ok = false;
            break;
        }
    }
    annualFiller.finish(errors);
    monthlyFiller.finish(errors);
    return reader.withinLimit(errors) && ok;
}

}  // namespace sb
