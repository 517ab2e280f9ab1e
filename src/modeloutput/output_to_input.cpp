#include "modeloutput/output_to_input.h"

#include "modeloutput/tellura_output.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"

namespace sb {

namespace {

// Output column -> site column, in the order the values are copied.
const char* const kCopiedValues[][2] = {
    {"aglcis(1)", "AGLCIS(1)"}, {"aglcis(2)", "AGLCIS(2)"}, {"aglive(1)", "AGLIVE(1)"}, {"aglive(2)", "AGLIVE(2)"},
    {"aglive(3)", "AGLIVE(3)"}, {"aminrl(1)", "AMINRL(1)"}, {"aminrl(2)", "AMINRL(2)"}, {"aminrl(3)", "AMINRL(3)"},
};

const char* const kSoilLayerValues[] = {"Mineral N", "Mineral P", "Mineral S", "Initial Relative Water Content"};

// None of the copied values given (each zero or missing).
bool allZero(const table_record& output) {
    for (const auto& pair : kCopiedValues) {
        int column = output.column(pair[0]);
        if (!output.isMissing(column) && output.number(column) != 0.0) return false;
    }
    return true;
}

// A value the run did not give (missing) leaves the input as it is.
void copyValues(const table_record& output, tellura_control_record& record) {
    for (const auto& pair : kCopiedValues) {
        int column = output.column(pair[0]);
        if (!output.isMissing(column)) record.site.setNumber(pair[1], output.number(column));
    }
    record.modified = true;
}

}  // namespace

bool copyAnnualOutputToInput(const tellura_outputs& outputs, tellura_control_record& record, message_sink& errors) {
    if (outputs.annual.empty()) {
        errors.error("No annual output exists for record.\n");
        return false;
    }
    const auto& last = outputs.annual.back();
    if (allZero(last)) return false;
    copyValues(last, record);
    return true;
}

bool copyMonthlyOutputToInput(const tellura_outputs& outputs, tellura_control_record& record, message_sink& errors) {
    auto ordered = outputs.monthlyInOrder();
    if (ordered.empty()) {
        errors.error("No monthly output exists for record.\n");
        return false;
    }
    copyValues(*ordered.back(), record);
    errors.note("Monthly copied for record.\n");
    return true;
}

bool fillSoilFromOutput(const tellura_outputs& outputs, tellura_soil* soil, message_sink& errors) {
    if (!soil) {
        errors.error("ERROR, No soil record to fill.\n");
        return false;
    }
    bool filled = false;
    for (const auto& layerOutput : outputs.soilLayers) {
        int number = layerOutput.layerNumber();
        if (number < 1 || number > soil->layerCount || number > kMaxSoilLayers) continue;
        auto& layer = soil->layers[static_cast<size_t>(number - 1)];
        for (const char* column : kSoilLayerValues)
            if (!layerOutput.isMissing(layerOutput.column(column))) layer.setNumber(column, layerOutput.number(column));
        filled = true;
    }
    return filled;
}

}  // namespace sb
