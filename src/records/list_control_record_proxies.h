#pragma once
// The record list the user pages through. It is built lazily, one handle per
// step, so that a project of many thousands of records opens at once; with the
// "Prebuild Control Record List" setting on it is built whole when attached.
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "app/message_sink.h"
#include "records/control_record_proxy.h"

namespace sb {

class database;
class rowset;
class table_record;

class list_record_proxies {
public:
    virtual ~list_record_proxies() = default;
    using progress_callback = std::function<void(const std::string& text)>;

    virtual const record_proxy* first(message_sink& errors) = 0;
    // The handle with that record number when the list already holds it.
    virtual const record_proxy* at(int32_t recordNumber) const = 0;
    virtual const record_proxy* next(const record_proxy& from, message_sink& errors) = 0;
    virtual const record_proxy* previous(const record_proxy& from, message_sink& errors) = 0;
    virtual bool loadAll(message_sink& errors, const progress_callback& progress = {}) = 0;
    // From the handle (or, with none, from the first record) up to n records on.
    virtual const record_proxy* forward(const record_proxy* from, int32_t n, message_sink& errors) = 0;
    virtual const record_proxy* back(const record_proxy* from, int32_t n, message_sink& errors) = 0;
    virtual std::unique_ptr<record_proxy> makeProxy() const = 0;
};

class list_control_record_proxies : public list_record_proxies {
public:
    // Forgets every handle; then loads all (setting on) or holds one handle for
    // record 1 whose ID is filled when it is first reached.
    bool attach(database* db, bool loadAllRecords, message_sink& errors, const progress_callback& progress = {});

    const control_record_proxy* first(message_sink& errors) override;
    const control_record_proxy* at(int32_t recordNumber) const override;
    const control_record_proxy* next(const record_proxy& from, message_sink& errors) override;
    const control_record_proxy* previous(const record_proxy& from, message_sink& errors) override;
    bool loadAll(message_sink& errors, const progress_callback& progress = {}) override;
    const control_record_proxy* forward(const record_proxy* from, int32_t n, message_sink& errors) override;
    const control_record_proxy* back(const record_proxy* from, int32_t n, message_sink& errors) override;
    std::unique_ptr<record_proxy> makeProxy() const override { return std::make_unique<control_record_proxy>(); }

    // The last record: forward from the furthest handle held until the end.
    const control_record_proxy* last(message_sink& errors);
    // The handle of a record ID already held, else nullptr.
    const control_record_proxy* findId(int32_t id) const;

    bool complete() const { return complete_; }
    size_t size() const { return handles_.size(); }
    // How many times the list has gone to the database (each table opening counts).
    long queryCount() const { return queries_; }

    static constexpr int kProgressStep = 500;

private:
    // Opens `Control Records`; on failure appends `failure`. Counts the query.
    std::unique_ptr<rowset> open(const std::string& filter, const char* order, message_sink& errors,
                                 const char* failure);
    const control_record_proxy* store(int32_t number, const table_record& row);
    // A handle already held whose record has been reached (not the unfilled first one).
    const control_record_proxy* held(int32_t recordNumber) const;
    const control_record_proxy* step(const record_proxy& from, int32_t n, bool ahead, message_sink& errors,
                                     const char* failure);

    database* db_ = nullptr;
    std::map<int32_t, std::unique_ptr<control_record_proxy>> handles_;  // by record number
    bool complete_ = false;
    long queries_ = 0;
};

}  // namespace sb
