#pragma once
// Output variables over time drawn as a chart and saved as a PNG, without a
// display (Qt's offscreen platform).
#include <string>
#include <vector>

#include "app/message_sink.h"
#include "modeloutput/tellura_output.h"

namespace sbcli {

struct chart_request {
    std::string title;
    std::string table;  // "annual", "monthly" or "daily"
    std::vector<std::string> variables;
    int width = 1000, height = 600;
};

bool renderOutputChart(const sb::tellura_outputs& outputs, const chart_request& request, const std::string& pngPath,
                       sb::message_sink& errors);

}  // namespace sbcli
