#include "ui/field_help_source.h"

#include <filesystem>
#include <memory>

#include "app/app_soilbench.h"
#include "help/list_field_help_tellura.h"

namespace sb {
namespace {

struct loaded_help {
    std::string path;
    std::filesystem::file_time_type stamp;
    list_field_help_tellura index;
    message_sink messages;
};

std::filesystem::file_time_type stampOf(const std::string& path) {
    std::error_code ec;
    const auto stamp = std::filesystem::last_write_time(path, ec);
    return ec ? std::filesystem::file_time_type::min() : stamp;
}

// The index of the help file the settings name, kept while neither the
// setting nor the file changes. Lookups made earlier keep the index they were
// made with, so an open editor is not disturbed by a reload.
std::shared_ptr<const loaded_help> helpIndex(const app_soilbench& settings) {
    static std::shared_ptr<const loaded_help> cached;
    const std::string path = findHelpFile(settings);
    const auto stamp = stampOf(path);
    if (!cached || cached->path != path || cached->stamp != stamp) {
        auto help = std::make_shared<loaded_help>();
        help->path = path;
        help->stamp = stamp;
        help->index.load(path, help->messages);
        cached = std::move(help);
    }
    return cached;
}

}  // namespace

field_help_lookup makeFieldHelpLookup(const app_soilbench& settings, int table) {
    const std::shared_ptr<const loaded_help> help = helpIndex(settings);
    const int version = settings.version;
    field_help_lookup lookup;
    lookup.line = [help, table, version](const std::string& name) {
        return QString::fromStdString(help->index.helpBoxText(name, table, version));
    };
    lookup.toolTip = [help, table, version](const std::string& name) {
        if (!help->index.find(name, table, version)) return QString();
        return QString::fromStdString(help->index.describe(name, table, version)).replace(QStringLiteral("\r\n"), "\n");
    };
    return lookup;
}

std::string fieldHelpLoadMessages(const app_soilbench& settings) { return helpIndex(settings)->messages.text(); }

}  // namespace sb
