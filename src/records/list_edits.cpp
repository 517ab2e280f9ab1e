#include "records/list_edits.h"

#include "records/store_session.h"

namespace sb {

void list_edits::remove(int32_t storedId, int key) {
    deleted_.insert(storedId);
    std::erase_if(changed_, [key](const auto& change) { return change.second == key; });
}

void list_edits::removeAt(int32_t storedId, int position) {
    remove(storedId, position);
    std::set<std::pair<int, int>> moved;
    for (const auto& [part, key] : changed_) moved.insert({part, key > position ? key - 1 : key});
    changed_ = std::move(moved);
}

bool list_edits::save(database& db, const std::function<bool(int32_t, message_sink&)>& deleteItem,
                      const std::function<bool(int, int, message_sink&)>& writePart, message_sink& errors) const {
    store_session unit(db, errors);
    if (!unit.ok()) return false;
    bool ok = true;
    for (int32_t id : deleted_) ok = deleteItem(id, errors) && ok;
    for (const auto& [part, key] : changed_) ok = writePart(key, part, errors) && ok;
    return unit.commitIf(ok);
}

}  // namespace sb
