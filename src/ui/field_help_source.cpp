#include "ui/field_help_source.h"

#include "app/app_soilbench.h"
#include "help/list_field_help_tellura.h"

namespace sb {
namespace {

struct loaded_help {
    list_field_help_tellura index;
    std::string messages;
};

// The help file is read on first use and kept for the program's life; the
// index is only read afterwards.
const loaded_help& helpIndex(const app_soilbench& settings) {
    static const loaded_help help = [&] {
        loaded_help h;
        h.index.load(findHelpFile(settings), h.messages);
        return h;
    }();
    return help;
}

}  // namespace

field_help_lookup makeFieldHelpLookup(const app_soilbench& settings, int table) {
    const loaded_help& help = helpIndex(settings);
    const int version = settings.version;
    return [&help, table, version](const std::string& name) {
        return QString::fromStdString(help.index.helpBoxText(name, table, version));
    };
}

const std::string& fieldHelpLoadMessages(const app_soilbench& settings) { return helpIndex(settings).messages; }

}  // namespace sb
