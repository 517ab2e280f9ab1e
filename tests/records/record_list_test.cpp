#include <gtest/gtest.h>

#include "app/text_format.h"
#include "records/id_list_filter.h"
#include "records/list_control_record_proxies.h"
#include "records/tellura_control_record.h"
#include "records_test_project.h"

namespace {

using namespace sb;
using sbtest::records_project;

// Inserts bare `Control Records` rows in the given ID order, in one session.
void addRecords(database& db, const std::vector<int32_t>& ids) {
    session s(db);
    ASSERT_TRUE(s.ok());
    db_status status;
    std::unique_ptr<rowset> rows = db.openTable(table_id::control_records, "", "", status);
    ASSERT_TRUE(rows);
    TelluraControlRecords row;
    for (int32_t id : ids) {
        row.setNumber(0, id);
        row.setText(1, strprintf("Site %d", id));
        ASSERT_TRUE(rows->insert(row).ok());
    }
    ASSERT_TRUE(s.commit()) << s.storeError();
}

class RecordList : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(project.ok()) << project.setupErrors();
        addRecords(project.db(), {30, 10, 20, 50, 40});  // stored out of ID order
    }
    records_project project;
    list_control_record_proxies list;
    std::string errors;
};

TEST_F(RecordList, StepsThroughAscendingIdsAndStopsAtTheEnd) {
    ASSERT_TRUE(list.attach(&project.db(), false, errors));
    EXPECT_EQ(list.size(), 1u);
    const control_record_proxy* h = list.first(errors);
    ASSERT_TRUE(h);
    EXPECT_EQ(h->recordNumber, 1);
    EXPECT_EQ(h->id, 10);
    EXPECT_EQ(h->label, "    1    10 Site 10");
    std::vector<int32_t> ids{h->id};
    while ((h = list.next(*h, errors))) ids.push_back(h->id);
    EXPECT_EQ(ids, (std::vector<int32_t>{10, 20, 30, 40, 50}));
    EXPECT_TRUE(list.complete());
    const control_record_proxy* last = list.at(5);
    ASSERT_TRUE(last);
    EXPECT_EQ(last->label, "    5    50 Site 50");
    long queries = list.queryCount();
    EXPECT_EQ(list.next(*last, errors), nullptr);  // no new query once complete
    EXPECT_EQ(list.queryCount(), queries);
    // Going back uses the handles already made.
    const control_record_proxy* back = list.previous(*last, errors);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->id, 40);
    EXPECT_EQ(list.queryCount(), queries);
    EXPECT_EQ(errors, "");
}

TEST_F(RecordList, ForwardAndBackByN) {
    ASSERT_TRUE(list.attach(&project.db(), false, errors));
    const control_record_proxy* h = list.forward(nullptr, 2, errors);  // from the first record
    ASSERT_TRUE(h);
    EXPECT_EQ(h->recordNumber, 3);
    EXPECT_EQ(h->id, 30);
    EXPECT_EQ(list.size(), 3u);
    h = list.forward(h, 10, errors);  // only two more exist
    ASSERT_TRUE(h);
    EXPECT_EQ(h->recordNumber, 5);
    EXPECT_EQ(h->id, 50);
    EXPECT_TRUE(list.complete());
    h = list.back(h, 3, errors);
    ASSERT_TRUE(h);
    EXPECT_EQ(h->id, 20);
    EXPECT_EQ(h->recordNumber, 2);
    EXPECT_EQ(list.findId(40)->recordNumber, 4);
    EXPECT_EQ(errors, "");
}

TEST_F(RecordList, BackFromAHandleNotYetConnectedGoesToTheDatabase) {
    ASSERT_TRUE(list.attach(&project.db(), false, errors));
    const control_record_proxy* last = list.last(errors);
    ASSERT_TRUE(last);
    EXPECT_EQ(last->id, 50);
    EXPECT_EQ(last->recordNumber, 5);
    // A fresh list that knows only the last record reached through "ID < %ld".
    list_control_record_proxies other;
    ASSERT_TRUE(other.attach(&project.db(), false, errors));
    control_record_proxy known;
    known.recordNumber = 5;
    known.id = 50;
    const control_record_proxy* h = other.previous(known, errors);
    ASSERT_TRUE(h);
    EXPECT_EQ(h->id, 40);
    EXPECT_EQ(h->recordNumber, 4);
    h = other.back(h, 2, errors);
    ASSERT_TRUE(h);
    EXPECT_EQ(h->id, 20);
    EXPECT_EQ(h->recordNumber, 2);
}

TEST_F(RecordList, LoadAllKeepsTheStoresOrder) {
    std::vector<std::string> progress;
    ASSERT_TRUE(list.attach(&project.db(), true, errors, [&](const std::string& t) { progress.push_back(t); }));
    EXPECT_TRUE(list.complete());
    ASSERT_EQ(list.size(), 5u);
    EXPECT_EQ(list.at(1)->id, 30);
    EXPECT_EQ(list.at(2)->label, "    2    10 Site 10");
    EXPECT_TRUE(progress.empty());
    long queries = list.queryCount();
    const control_record_proxy* h = list.first(errors);
    ASSERT_TRUE(h);
    EXPECT_EQ(h->id, 30);
    EXPECT_EQ(list.next(*h, errors)->id, 10);
    EXPECT_EQ(list.queryCount(), queries);
}

TEST_F(RecordList, MissingTableMessages) {
    project.dropTable(table_id::control_records);
    ASSERT_TRUE(list.attach(&project.db(), false, errors));
    EXPECT_EQ(list.first(errors), nullptr);
    control_record_proxy h;
    h.recordNumber = 2;
    h.id = 20;
    EXPECT_EQ(list.next(h, errors), nullptr);
    EXPECT_EQ(list.previous(h, errors), nullptr);
    EXPECT_EQ(list.forward(&h, 2, errors), nullptr);
    EXPECT_EQ(list.back(&h, 2, errors), nullptr);
    EXPECT_EQ(list.forward(nullptr, 2, errors), nullptr);
    EXPECT_EQ(errors,
              "ERROR, cannot open table [Control Records] in list_control_record_proxies.record_first.\n"
              "ERROR, cannot open Control Records table in list_control_record_proxies.record_next.\n"
              "ERROR, cannot open Control Records table in list_control_record_proxies.record_next.\n"
              "ERROR, can't open table Control Records in list_control_record_proxies.search_after.\n"
              "ERROR, can't open table Control Records in list_control_record_proxies.search_before.\n"
              "ERROR, unable to find first record of [Control Records].\n");
    errors.clear();
    EXPECT_FALSE(list.loadAll(errors));
    EXPECT_EQ(errors.rfind("ERROR, unable to open table [Control Records].\n", 0), 0u) << errors;
}

TEST(RecordListProgress, ReportedEveryFiveHundredRecords) {
    records_project project;
    SB_REQUIRE_PROJECT(project);
    std::vector<int32_t> ids;
    for (int32_t id = 1; id <= 1234; ++id) ids.push_back(id);
    addRecords(project.db(), ids);
    list_control_record_proxies list;
    std::vector<std::string> progress;
    std::string errors;
    ASSERT_TRUE(list.attach(&project.db(), true, errors, [&](const std::string& t) { progress.push_back(t); }));
    EXPECT_EQ(progress, (std::vector<std::string>{"Scanning Records 500", "Scanning Records 1000"}));
    EXPECT_EQ(list.size(), 1234u);
    EXPECT_EQ(list.at(1234)->label, " 1234  1234 Site 1234");
}

TEST(RecordListEmpty, NoRecordsMeansNoFirst) {
    records_project project;
    SB_REQUIRE_PROJECT(project);
    list_control_record_proxies list;
    std::string errors;
    ASSERT_TRUE(list.attach(&project.db(), false, errors));
    EXPECT_EQ(list.first(errors), nullptr);
    EXPECT_TRUE(list.complete());
    EXPECT_EQ(list.size(), 0u);
    EXPECT_EQ(errors, "");
}

TEST(IdListFilter, WhereClauseFromTheList) {
    const struct {
        const char* list;
        const char* clause;
        const char* errors;
    } cases[] = {
        {"1, 2, 5-9", " (ID = 1 OR ID = 2 OR ID = 5 OR ID = 6 OR ID = 7 OR ID = 8 OR ID = 9)", ""},
        {"9-5", "", ""},
        {"3, 3", " (ID = 3 OR ID = 3)", ""},
        {"  ,,", "", ""},
        {"", "", ""},
        {"7", " (ID = 7)", ""},
        {"4-4 x +12", " (ID = 4 OR ID = 0 OR ID = 12)", ""},
        {"1-2-9,9-5,3", " (ID = 1 OR ID = 2 OR ID = 3)", ""},
        // Huge ranges are refused, not spelt out.
        {"2, 1-999999999", " (ID = 2)",
         "ERROR, ID range 1-999999999 is too long, at most 1000000 IDs can be listed.\n"},
        {"9223372036854775806-9223372036854775807", " (ID = 9223372036854775806 OR ID = 9223372036854775807)", ""},
    };
    for (const auto& c : cases) {
        std::string errors;
        EXPECT_EQ(id_list_filter::whereClause(c.list, errors), c.clause) << c.list;
        EXPECT_EQ(errors, c.errors) << c.list;
        EXPECT_EQ(id_list_filter::whereClause(c.list), c.clause) << c.list;
    }
}

TEST(IdListFilter, ClauseSelectsTheListedRecords) {
    records_project project;
    SB_REQUIRE_PROJECT(project);
    addRecords(project.db(), {1, 2, 3, 5, 6, 8, 12});
    db_status status;
    std::string clause = id_list_filter::whereClause("2, 5-8, 40");
    auto rows = project.db().openTable(table_id::control_records, clause, "ID ASC", status);
    ASSERT_TRUE(rows) << clause;
    std::vector<int32_t> ids;
    for (db_status s = rows->moveFirst(); s.ok(); s = rows->moveNext()) ids.push_back(rows->row().integer(0));
    EXPECT_EQ(ids, (std::vector<int32_t>{2, 5, 6, 8}));
}

}  // namespace
