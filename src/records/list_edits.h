#pragma once
// The changes an editor of a list (soils, weather stations) keeps until the
// user saves them: the stored IDs to delete and the items to write, each in
// one or more parts (a station, its monthly history, its daily history). An
// item is named by a key of the editor's choosing: its ID, or its position
// where the user may change the ID itself.
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>

#include "app/message_sink.h"

namespace sb {

class database;

class list_edits {
public:
    void change(int key, int part = 0) { changed_.insert({part, key}); }
    // The stored item leaves the project; the changes made to it are forgotten.
    void remove(int32_t storedId, int key);
    // As remove, for a list kept by position: the items after it move up one.
    void removeAt(int32_t storedId, int position);

    // The deletes, then the changed items part by part (every station before
    // any history), each part in key order, as one unit:
    // each step runs, so that every failure is reported, and the work is kept
    // only when every step worked and the commit did.
    bool save(database& db, const std::function<bool(int32_t storedId, message_sink& errors)>& deleteItem,
              const std::function<bool(int key, int part, message_sink& errors)>& writePart,
              message_sink& errors) const;

private:
    std::set<int32_t> deleted_;
    std::set<std::pair<int, int>> changed_;  // (part, key)
};

}  // namespace sb
