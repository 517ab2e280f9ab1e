#include "run/run_task.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>

#include "app/text_file.h"
#include "app/text_format.h"
#include "run/record_runner.h"
#include "run/run_history.h"

namespace sb {
namespace {

namespace fs = std::filesystem;

std::string withSlash(std::string dir) {
    if (!dir.empty() && dir.back() != '/') dir += '/';
    return dir;
}

// A value may not break its line: paths with a line end are refused, not mangled.
bool addLine(std::string& text, const char* key, const std::string& value, message_sink& errors) {
    if (value.find_first_of("\r\n") != std::string::npos) {
        errors.errorf("ERROR, the %s \"%s\" holds a line end: a task cannot be written for it.\n", key, value.c_str());
        return false;
    }
    appendf(text, "%s=%s\n", key, value.c_str());
    return true;
}

using key_values = std::map<std::string, std::string, std::less<>>;

// "key=value" lines up to the first empty line; `rest` receives what follows it.
bool parseKeyValues(const std::string& text, const std::string& path, key_values& values, std::string* rest,
                    message_sink& errors) {
    size_t at = 0;
    long line = 0;
    while (at < text.size()) {
        const size_t end = text.find('\n', at);
        if (end == std::string::npos) break;
        ++line;
        const std::string entry = text.substr(at, end - at);
        at = end + 1;
        if (entry.empty()) {
            if (rest) *rest = text.substr(at);
            return true;
        }
        const size_t equals = entry.find('=');
        if (equals == std::string::npos) {
            errors.errorf("ERROR, line %ld of \"%s\" is not \"key=value\".\n", line, path.c_str());
            return false;
        }
        values[entry.substr(0, equals)] = entry.substr(equals + 1);
    }
    if (rest) {
        errors.errorf("ERROR, \"%s\" is cut short.\n", path.c_str());
        return false;
    }
    return true;
}

bool readWhole(const key_values& values, const char* key, long long low, long long high, long long& number,
               const std::string& path, message_sink& errors) {
    auto found = values.find(key);
    if (found != values.end() && readWholeNumber(found->second, low, high, number)) return true;
    errors.errorf("ERROR, \"%s\" has no whole number from %lld to %lld for \"%s\".\n", path.c_str(), low, high, key);
    return false;
}

std::string valueOf(const key_values& values, const char* key) {
    auto found = values.find(key);
    return found == values.end() ? std::string() : found->second;
}

const run_state kStates[] = {run_state::good, run_state::failed, run_state::cancelled, run_state::timedOut,
                             run_state::crashed};

// The words of the result's message list, in the order of message_severity.
const char* const kSeverityWords[] = {"note", "warning", "error"};

std::string messageList(const message_sink& messages) {
    std::string list;
    for (const message& m : messages.messages())
        appendf(list, "%s%s:%zu", list.empty() ? "" : ",", kSeverityWords[static_cast<int>(m.severity)], m.text.size());
    return list;
}

using message_lengths = std::vector<std::pair<message_severity, size_t>>;

// The result's message list: each message's severity and length. A result
// written by a Soilbench that kept the messages as one text has only their
// length: a run that ended well said nothing worse than warnings.
bool readMessageList(const key_values& values, run_state state, const std::string& path, message_lengths& lengths,
                     message_sink& errors) {
    long long bytes = 0;
    if (values.count("messages") == 0 && values.count("message-bytes") == 1) {
        if (!readWhole(values, "message-bytes", 0, text_file::kMaxTextFileBytes, bytes, path, errors)) return false;
        lengths.emplace_back(state == run_state::good ? message_severity::warning : message_severity::error,
                             static_cast<size_t>(bytes));
        return true;
    }
    const std::string list = valueOf(values, "messages");
    for (std::string_view entry : list.empty() ? std::vector<std::string_view>() : splitFieldViews(list, ',')) {
        const size_t colon = entry.find(':');
        const auto* word = std::find(std::begin(kSeverityWords), std::end(kSeverityWords), entry.substr(0, colon));
        if (colon == std::string_view::npos || word == std::end(kSeverityWords) ||
            !readWholeNumber(entry.substr(colon + 1), 0, text_file::kMaxTextFileBytes, bytes)) {
            errors.errorf(
                "ERROR, the task result \"%s\" lists a message \"%.*s\" that is not a severity and its "
                "length in bytes.\n",
                path.c_str(), static_cast<int>(entry.size()), entry.data());
            return false;
        }
        lengths.emplace_back(static_cast<message_severity>(word - std::begin(kSeverityWords)),
                             static_cast<size_t>(bytes));
    }
    return true;
}

}  // namespace

app_soilbench task_order::runSettings(const app_soilbench& base) const {
    app_soilbench settings = base;
    settings.version = static_cast<int16_t>(version);
    settings.modelExecutables[static_cast<size_t>(version - 1)] = model;
    settings.list100Executables[static_cast<size_t>(version - 1)] = listUtility;
    settings.runTimeout = runTimeoutMs;
    settings.readBinaryOutput = readBinaryOutput;
    settings.wineCommand = wineCommand;
    settings.winePrefix = winePrefix;
    settings.saveDailyFirstYear = saveDailyFirstYear;
    settings.saveDailyLastYear = saveDailyLastYear;
    settings.runVisible = false;  // nobody watches a node's terminal
    return settings;
}

bool writeTaskOrder(const std::string& folder, const task_order& order, message_sink& errors) {
    std::string text, blocks;
    for (int block : order.blockOrder) appendf(blocks, "%s%d", blocks.empty() ? "" : ",", block);
    appendf(text, "id=%ld\nversion=%d\ntimeout-ms=%lu\nbinary=%d\ndaily-years=%ld-%ld\n", static_cast<long>(order.id),
            order.version, static_cast<unsigned long>(order.runTimeoutMs), order.readBinaryOutput ? 1 : 0,
            static_cast<long>(order.saveDailyFirstYear), static_cast<long>(order.saveDailyLastYear));
    bool ok = addLine(text, "blocks", blocks, errors) && addLine(text, "model", order.model, errors) &&
              addLine(text, "list-utility", order.listUtility, errors) &&
              addLine(text, "wine", order.wineCommand, errors) &&
              addLine(text, "wine-prefix", order.winePrefix, errors) &&
              addLine(text, "inputs-sha256", order.inputsDigest, errors) &&
              addLine(text, "marker", order.marker, errors) && addLine(text, "marker-text", order.markerText, errors);
    if (!ok) return false;
    const std::string path = withSlash(folder) + kTaskOrderFile;
    if (text_file::writeTextFile(path, text)) return true;
    errors.errorf("ERROR, unable to write the task file \"%s\".\n", path.c_str());
    return false;
}

bool readTaskOrder(const std::string& folder, task_order& order, message_sink& errors) {
    const std::string path = withSlash(folder) + kTaskOrderFile;
    std::string text;
    key_values values;
    if (!text_file::readTextFile(path, text, errors, "ERROR, unable to read the task file \"" + path + "\".\n") ||
        !parseKeyValues(text, path, values, nullptr, errors))
        return false;
    long long id = 0, version = 0, timeout = 0, binary = 0;
    bool ok = readWhole(values, "id", 0, 2147483647, id, path, errors) &&
              readWhole(values, "version", 1, kVersionCount, version, path, errors) &&
              readWhole(values, "timeout-ms", 0, kMaxRunTimeout, timeout, path, errors) &&
              readWhole(values, "binary", 0, 1, binary, path, errors);
    int first = 1, last = 1;
    const std::string years = valueOf(values, "daily-years");
    const size_t dash = years.find('-', 1);
    long long firstYear = 0, lastYear = 0;
    if (ok && (dash == std::string::npos || !readWholeNumber(years.substr(0, dash), -9999, 9999, firstYear) ||
               !readWholeNumber(years.substr(dash + 1), -9999, 9999, lastYear))) {
        errors.errorf("ERROR, \"%s\" has no daily years \"A-B\".\n", path.c_str());
        ok = false;
    }
    first = static_cast<int>(firstYear);
    last = static_cast<int>(lastYear);
    order.blockOrder.clear();
    const std::string blocks = valueOf(values, "blocks");
    for (std::string_view block : blocks.empty() ? std::vector<std::string_view>() : splitFieldViews(blocks, ',')) {
        long long number = 0;
        if (!readWholeNumber(block, 1, 32767, number)) {
            errors.errorf("ERROR, \"%s\" has a block \"%s\" that is not a block number.\n", path.c_str(),
                          std::string(block).c_str());
            ok = false;
        }
        order.blockOrder.push_back(static_cast<int>(number));
    }
    if (!ok) return false;
    order.id = static_cast<int32_t>(id);
    order.version = static_cast<int>(version);
    order.runTimeoutMs = static_cast<uint32_t>(timeout);
    order.readBinaryOutput = binary != 0;
    order.saveDailyFirstYear = first;
    order.saveDailyLastYear = last;
    order.model = valueOf(values, "model");
    order.listUtility = valueOf(values, "list-utility");
    order.wineCommand = valueOf(values, "wine");
    order.winePrefix = valueOf(values, "wine-prefix");
    order.inputsDigest = valueOf(values, "inputs-sha256");
    order.marker = valueOf(values, "marker");
    order.markerText = valueOf(values, "marker-text");
    return true;
}

bool writeTaskResult(const std::string& folder, const task_result& result, message_sink& errors) {
    std::string text;
    appendf(text, "state=%s\nstarted=%s\nended=%s\nhost=%s\nlog-bytes=%zu\nmessages=%s\n\n", runStateText(result.state),
            result.started.c_str(), result.ended.c_str(), result.host.c_str(), result.runLog.size(),
            messageList(result.messages).c_str());
    text += result.runLog;
    text += result.messages.text();
    const std::string path = withSlash(folder) + kTaskResultFile;
    if (text_file::writeTextFile(path, text)) return true;
    errors.errorf("ERROR, unable to write the task result \"%s\".\n", path.c_str());
    return false;
}

bool hasTaskResult(const std::string& folder) {
    std::error_code ec;
    return fs::is_regular_file(withSlash(folder) + kTaskResultFile, ec);
}

bool readTaskResult(const std::string& folder, task_result& result, message_sink& errors) {
    if (!hasTaskResult(folder)) return false;
    const std::string path = withSlash(folder) + kTaskResultFile;
    std::string text, rest;
    key_values values;
    if (!text_file::readTextFile(path, text, errors, "ERROR, unable to read the task result \"" + path + "\".\n") ||
        !parseKeyValues(text, path, values, &rest, errors))
        return false;
    long long logBytes = 0;
    if (!readWhole(values, "log-bytes", 0, text_file::kMaxTextFileBytes, logBytes, path, errors)) return false;
    const std::string state = valueOf(values, "state");
    result.state = run_state::failed;
    bool known = false;
    for (run_state candidate : kStates)
        if (state == runStateText(candidate)) {
            result.state = candidate;
            known = true;
        }
    if (!known) {
        errors.errorf("ERROR, the task result \"%s\" names no known end: \"%s\".\n", path.c_str(), state.c_str());
        return false;
    }
    message_lengths lengths;
    if (!readMessageList(values, result.state, path, lengths, errors)) return false;
    unsigned long long bytes = static_cast<unsigned long long>(logBytes);
    for (const auto& length : lengths) bytes += length.second;
    if (bytes != rest.size()) {
        errors.errorf("ERROR, the task result \"%s\" holds %zu bytes of run log and messages, not %llu.\n",
                      path.c_str(), rest.size(), bytes);
        return false;
    }
    result.runLog = rest.substr(0, static_cast<size_t>(logBytes));
    result.messages.clear();
    size_t at = static_cast<size_t>(logBytes);
    for (const auto& [severity, length] : lengths) {
        result.messages.add(severity, rest.substr(at, length));
        at += length;
    }
    result.started = valueOf(values, "started");
    result.ended = valueOf(values, "ended");
    result.host = valueOf(values, "host");
    return true;
}

int runTask(const std::string& folder, message_sink& errors) {
    task_order order;
    std::string markerText;
    message_sink ignored;
    // Unreadable: the task is not on a machine that shares the folder.
    if (!readTaskOrder(folder, order, errors) || !text_file::readTextFile(order.marker, markerText, ignored, "") ||
        markerText != order.markerText) {
        errors.errorf(
            "ERROR, the run folder \"%s\" is not shared with this host (%s): the marker its submitter wrote is "
            "not there.\n",
            folder.c_str(), hostName().c_str());
        return kTaskNotSharedStatus;
    }
    task_result result;
    result.host = hostName();
    result.started = historyTimeNow();
    result.state =
        record_runner::runPrograms(order.runSettings(app_soilbench()), folder, result.runLog, result.messages);
    result.ended = historyTimeNow();
    return writeTaskResult(folder, result, errors) ? 0 : 1;
}

}  // namespace sb
