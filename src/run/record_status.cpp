#include "run/record_status.h"

#include "app/text_format.h"
#include "run/run_folder.h"

namespace sb {
namespace {

constexpr record_state kStates[] = {record_state::never, record_state::failed, record_state::good, record_state::stale,
                                    record_state::running};

}  // namespace

const char* recordStateWord(record_state state) {
    switch (state) {
        case record_state::never:
            return "never";
        case record_state::good:
            return "good";
        case record_state::stale:
            return "stale";
        case record_state::running:
            return "running";
        case record_state::failed:
            break;
    }
    return "failed";
}

const char* recordStateText(record_state state) {
    return state == record_state::never ? "never run" : recordStateWord(state);
}

bool parseRecordStates(const std::string& text, std::vector<record_state>& states, message_sink& errors) {
    bool ok = true;
    size_t from = 0;
    while (from <= text.size()) {
        size_t comma = text.find(',', from);
        if (comma == std::string::npos) comma = text.size();
        const std::string word(trim(std::string_view(text).substr(from, comma - from)));
        bool known = false;
        for (record_state state : kStates) {
            if (word != recordStateWord(state)) continue;
            known = true;
            states.push_back(state);
        }
        if (!known) {
            errors.errorf(
                "ERROR, \"%s\" is not a record state: give never, failed, stale, good or running, comma-separated.\n",
                word.c_str());
            ok = false;
        }
        from = comma + 1;
    }
    return ok;
}

record_state lastRunState(const run_history_entry* lastRun) {
    if (!lastRun) return record_state::never;
    // A run that never finished is still going while its folder's owner lives.
    if (!lastRun->finished())
        return run_folder::inUse(lastRun->runFolder) ? record_state::running : record_state::failed;
    return lastRun->state == run_state::good ? record_state::good : record_state::failed;
}

}  // namespace sb
