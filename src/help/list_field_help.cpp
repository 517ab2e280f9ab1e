#include "help/list_field_help.h"

#include "app/text_format.h"

namespace sb {

int list_field_help::letterIndex(std::string_view name) {
    if (name.empty()) return -1;
    char c = name.front();
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return c >= 'A' && c <= 'Z' ? c - 'A' : -1;
}

field_help* list_field_help::findEntry(std::string_view name, int32_t table) {
    int letter = letterIndex(name);
    if (letter < 0) return nullptr;
    for (field_help& entry : letters_[letter])
        if (entry.table == table && iequals(entry.name, name)) return &entry;
    return nullptr;
}

const field_help* list_field_help::findEntry(std::string_view name, int32_t table) const {
    return const_cast<list_field_help*>(this)->findEntry(name, table);
}

field_help* list_field_help::addEntry(std::string_view name, int32_t table) {
    int letter = letterIndex(name);
    if (letter < 0) return nullptr;
    field_help& entry = letters_[letter].emplace_back();
    entry.name = std::string(name);
    entry.table = table;
    return &entry;
}

size_t list_field_help::size() const {
    size_t count = 0;
    for (const auto& letter : letters_) count += letter.size();
    return count;
}

void list_field_help::clear() {
    for (auto& letter : letters_) letter.clear();
}

}  // namespace sb
