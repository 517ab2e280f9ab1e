#include "records/list_control_record_proxies.h"

#include <climits>

#include "app/text_format.h"
#include "db/database.h"

namespace sb {

namespace {

constexpr const char* kFirstFailure =
    "ERROR, cannot open table [Control Records] in list_control_record_proxies.record_first.\n";
// Previous reports its failure with Next's text; users and scripts know it by that text.
constexpr const char* kNextFailure =
    "ERROR, cannot open Control Records table in list_control_record_proxies.record_next.\n";
constexpr const char* kFirstRowFailure = "ERROR, unable to find first record of [Control Records].\n";
constexpr const char* kAfterFailure =
    "ERROR, can't open table Control Records in list_control_record_proxies.search_after.\n";
constexpr const char* kBeforeFailure =
    "ERROR, can't open table Control Records in list_control_record_proxies.search_before.\n";

}  // namespace

bool list_control_record_proxies::attach(database* db, bool loadAllRecords, message_sink& errors,
                                         const progress_callback& progress) {
    db_ = db;
    handles_.clear();
    complete_ = false;
    if (loadAllRecords) return loadAll(errors, progress);
    auto placeholder = std::make_unique<control_record_proxy>();
    placeholder->recordNumber = 1;
    handles_[1] = std::move(placeholder);
    return true;
}

std::unique_ptr<rowset> list_control_record_proxies::open(const std::string& filter, const char* order,
                                                          message_sink& errors, const char* failure) {
    if (!db_) return nullptr;
    ++queries_;
    db_status status;
    std::unique_ptr<rowset> rows = db_->openTable(table_id::control_records, filter, order, status);
    if (!rows && failure) errors.error(failure);
    return rows;
}

const control_record_proxy* list_control_record_proxies::store(int32_t number, const table_record& row) {
    std::unique_ptr<control_record_proxy>& slot = handles_[number];
    if (!slot) slot = std::make_unique<control_record_proxy>();
    slot->setFromRow(number, row);
    return slot.get();
}

const control_record_proxy* list_control_record_proxies::at(int32_t recordNumber) const {
    auto found = handles_.find(recordNumber);
    return found == handles_.end() ? nullptr : found->second.get();
}

const control_record_proxy* list_control_record_proxies::held(int32_t recordNumber) const {
    const control_record_proxy* h = at(recordNumber);
    return h && !h->label.empty() ? h : nullptr;
}

const control_record_proxy* list_control_record_proxies::findId(int32_t id) const {
    for (const auto& [number, h] : handles_)
        if (h->id == id && !h->label.empty()) return h.get();
    return nullptr;
}

// Step by step the navigation order is ascending ID, so the first record is the
// smallest ID; the store's own row order would not agree with "ID > %ld" steps.
const control_record_proxy* list_control_record_proxies::first(message_sink& errors) {
    if (complete_) return held(1);
    std::unique_ptr<rowset> rows = open("", "ID ASC", errors, kFirstFailure);
    if (!rows) return nullptr;
    if (!rows->moveFirst().ok()) {  // no records at all
        handles_.clear();
        complete_ = true;
        return nullptr;
    }
    return store(1, rows->row());
}

const control_record_proxy* list_control_record_proxies::next(const record_proxy& from, message_sink& errors) {
    if (const control_record_proxy* known = held(from.recordNumber + 1)) return known;
    if (complete_) return nullptr;
    std::unique_ptr<rowset> rows =
        open(strprintf("ID > %ld", static_cast<long>(from.id)), "ID ASC", errors, kNextFailure);
    if (!rows) return nullptr;
    if (!rows->moveFirst().ok()) {
        complete_ = true;
        return nullptr;
    }
    return store(from.recordNumber + 1, rows->row());
}

const control_record_proxy* list_control_record_proxies::previous(const record_proxy& from, message_sink& errors) {
    if (const control_record_proxy* known = held(from.recordNumber - 1)) return known;
    if (from.recordNumber <= 1) return nullptr;
    std::unique_ptr<rowset> rows =
        open(strprintf("ID < %ld", static_cast<long>(from.id)), "ID DESC", errors, kNextFailure);
    if (!rows || !rows->moveFirst().ok()) return nullptr;
    return store(from.recordNumber - 1, rows->row());
}

bool list_control_record_proxies::loadAll(message_sink& errors, const progress_callback& progress) {
    handles_.clear();
    complete_ = false;
    if (!db_) return false;
    ++queries_;
    db_status status;
    std::unique_ptr<rowset> rows = db_->openTable(table_id::control_records, "", "", status);
    if (!rows) {
        errors.errorf("ERROR, unable to open table [%s].\n", tableName(table_id::control_records));
        appendStatusText(status, errors);
        return false;
    }
    long count = 0;
    db_status s;
    for (s = rows->moveFirst(); s.ok(); s = rows->moveNext()) {
        store(static_cast<int32_t>(++count), rows->row());
        if (count % kProgressStep == 0 && progress) progress(strprintf("Scanning Records %ld", count));
    }
    if (!readToTheEnd(s, tableName(table_id::control_records), errors)) return false;
    complete_ = true;
    return true;
}

const control_record_proxy* list_control_record_proxies::forward(const record_proxy* from, int32_t n,
                                                                 message_sink& errors) {
    if (!from) {
        std::unique_ptr<rowset> rows = open("", "ID ASC", errors, kFirstRowFailure);
        if (!rows) return nullptr;
        if (!rows->moveFirst().ok()) {
            errors.error(kFirstRowFailure);
            return nullptr;
        }
        from = store(1, rows->row());
    }
    return step(*from, n, true, errors, kAfterFailure);
}

const control_record_proxy* list_control_record_proxies::back(const record_proxy* from, int32_t n,
                                                              message_sink& errors) {
    if (!from) return first(errors);  // nothing lies before the first record
    return step(*from, n, false, errors, kBeforeFailure);
}

const control_record_proxy* list_control_record_proxies::last(message_sink& errors) {
    const control_record_proxy* furthest = handles_.empty() ? nullptr : held(handles_.rbegin()->first);
    if (complete_) return furthest;
    return forward(furthest, INT32_MAX, errors);
}

// Walks the handles already held first and goes to the database only for the rest.
const control_record_proxy* list_control_record_proxies::step(const record_proxy& from, int32_t n, bool ahead,
                                                              message_sink& errors, const char* failure) {
    const int32_t direction = ahead ? 1 : -1;
    const record_proxy* reached = &from;
    int32_t steps = 0;
    while (steps < n) {
        const control_record_proxy* known = held(reached->recordNumber + direction);
        if (!known) break;
        reached = known;
        ++steps;
    }
    bool exhausted = (ahead && complete_) || (!ahead && reached->recordNumber <= 1);
    if (steps < n && !exhausted) {
        std::string filter = strprintf(ahead ? "ID > %ld" : "ID < %ld", static_cast<long>(reached->id));
        std::unique_ptr<rowset> rows = open(filter, ahead ? "ID ASC" : "ID DESC", errors, failure);
        if (!rows) return nullptr;
        int32_t number = reached->recordNumber;
        db_status s = rows->moveFirst();
        for (; s.ok() && steps < n && (ahead || number > 1); s = rows->moveNext(), ++steps) {
            number += direction;
            reached = store(number, rows->row());
        }
        if (ahead && steps < n) complete_ = true;  // the rows ran out: the last record is reached
    }
    return at(reached->recordNumber);
}

}  // namespace sb
