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
    control_record_row row;
    for (int32_t id : ids) {
        row.setNumber("ID", id);
        row.setText("Description", strprintf("Site %d", id));
        ASSERT_TRUE(rows->insert(row).ok());
    }
    ASSERT_TRUE(s.commit()) << s.storeError();
}

// "recordNumber:id" of a handle, or "none".
std::string at(const control_record_proxy* h) { return h ? strprintf("%d:%d", h->recordNumber, h->id) : "none"; }

class RecordList : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(project.ok()) << project.setupErrors();
        addRecords(project.db(), {30, 10, 20, 50, 40});  // stored out of ID order
        ASSERT_TRUE(list.attach(&project.db(), false, errors));
    }
    records_project project;
    list_control_record_proxies list;
    sb::message_sink errors;
};

TEST_F(RecordList, StepsAndJumpsThroughAscendingIdsAndStopsAtTheEnd) {
    EXPECT_EQ(list.size(), 1u);
    const control_record_proxy* h = list.first(errors);
    ASSERT_EQ(at(h), "1:10");
    EXPECT_EQ(h->label, "    1    10 Site 10");
    std::vector<int32_t> ids{h->id};
    while ((h = list.next(*h, errors))) ids.push_back(h->id);
    EXPECT_EQ(ids, (std::vector<int32_t>{10, 20, 30, 40, 50}));
    EXPECT_TRUE(list.complete());
    const control_record_proxy* last = list.at(5);
    ASSERT_TRUE(last);
    EXPECT_EQ(last->label, "    5    50 Site 50");
    long queries = list.queryCount();
    EXPECT_EQ(list.next(*last, errors), nullptr);         // no new query once complete
    EXPECT_EQ(at(list.previous(*last, errors)), "4:40");  // going back uses the handles already made
    EXPECT_EQ(list.queryCount(), queries);

    list_control_record_proxies byN;
    ASSERT_TRUE(byN.attach(&project.db(), false, errors));
    h = byN.forward(nullptr, 2, errors);  // from the first record
    EXPECT_EQ(at(h), "3:30");
    EXPECT_EQ(byN.size(), 3u);
    EXPECT_EQ(at(h = byN.forward(h, 10, errors)), "5:50");  // only two more exist
    EXPECT_TRUE(byN.complete());
    EXPECT_EQ(at(byN.back(h, 3, errors)), "2:20");
    EXPECT_EQ(at(byN.findId(40)), "4:40");
    EXPECT_EQ(errors.text(), "");
}

TEST_F(RecordList, BackFromAHandleNotYetConnectedGoesToTheDatabase) {
    EXPECT_EQ(at(list.last(errors)), "5:50");
    // A fresh list that knows only the last record reached through "ID < %ld".
    list_control_record_proxies other;
    ASSERT_TRUE(other.attach(&project.db(), false, errors));
    control_record_proxy known;
    known.recordNumber = 5;
    known.id = 50;
    const control_record_proxy* h = other.previous(known, errors);
    EXPECT_EQ(at(h), "4:40");
    EXPECT_EQ(at(other.back(h, 2, errors)), "2:20");
}

TEST_F(RecordList, LoadAllKeepsTheStoresOrder) {
    std::vector<std::string> progress;
    list_control_record_proxies all;
    ASSERT_TRUE(all.attach(&project.db(), true, errors, [&](const std::string& t) { progress.push_back(t); }));
    EXPECT_TRUE(all.complete());
    ASSERT_EQ(all.size(), 5u);
    EXPECT_EQ(all.at(1)->id, 30);
    EXPECT_EQ(all.at(2)->label, "    2    10 Site 10");
    EXPECT_TRUE(progress.empty());
    long queries = all.queryCount();
    const control_record_proxy* h = all.first(errors);
    EXPECT_EQ(at(h), "1:30");
    EXPECT_EQ(at(all.next(*h, errors)), "2:10");
    EXPECT_EQ(all.queryCount(), queries);
}

TEST_F(RecordList, MissingTableMessages) {
    project.dropTable(table_id::control_records);
    EXPECT_EQ(list.first(errors), nullptr);
    control_record_proxy h;
    h.recordNumber = 2;
    h.id = 20;
    EXPECT_EQ(list.next(h, errors), nullptr);
    EXPECT_EQ(list.previous(h, errors), nullptr);
    EXPECT_EQ(list.forward(&h, 2, errors), nullptr);
    EXPECT_EQ(list.back(&h, 2, errors), nullptr);
    EXPECT_EQ(list.forward(nullptr, 2, errors), nullptr);
    EXPECT_EQ(errors.text(),
              "ERROR, cannot open table [Control Records] in list_control_record_proxies.record_first.\n"
              "ERROR, cannot open Control Records table in list_control_record_proxies.record_next.\n"
              "ERROR, cannot open Control Records table in list_control_record_proxies.record_next.\n"
              "ERROR, can't open table Control Records in list_control_record_proxies.search_after.\n"
              "ERROR, can't open table Control Records in list_control_record_proxies.search_before.\n"
              "ERROR, unable to find first record of [Control Records].\n");
    errors.clear();
    EXPECT_FALSE(list.loadAll(errors));
    EXPECT_EQ(errors.text().rfind("ERROR, unable to open table [Control Records].\n", 0), 0u) << errors;
}

// The clause of an ID list, or the message that refuses it naming the part that
// is not IDs (instead of reading it as some other ID or passing it to the store).
TEST(IdListFilter, WhereClauseFromTheListOrTheRefusal) {
    const std::string notAnId = "\" in the ID list is not an ID or a range of IDs like 5-9.\n";
    const std::string tooLarge = "\" in the ID list is past the largest ID, 2147483647.\n";
    const struct {
        const char* list;
        const char* clause;
        std::string message;
    } cases[] = {
        {"1, 2, 5-9", " (ID IN (1, 2) OR ID BETWEEN 5 AND 9)", ""},
        {"7", " (ID = 7)", ""},
        {"4-4 12\t0", " (ID IN (4, 12, 0))", ""},
        {"5 - 9,11-12", " (ID BETWEEN 5 AND 9 OR ID BETWEEN 11 AND 12)", ""},
        {"  ,,", "", ""},
        {"1; DROP TABLE Crops", "", "ERROR, \"1;" + notAnId},
        {"+12", "", "ERROR, \"+12" + notAnId},
        {"1-2-9", "", "ERROR, \"1-2-9" + notAnId},
        {"2147483648", "", "ERROR, \"2147483648" + tooLarge},
        {"1-99999999999999999999", "", "ERROR, \"1-99999999999999999999" + tooLarge},
    };
    for (const auto& c : cases) {
        sb::message_sink errors;
        EXPECT_EQ(id_list_filter::whereClause(c.list, errors), c.clause) << c.list;
        EXPECT_EQ(errors.text(), c.message) << c.list;
    }
}

using IdListSelection = sbtest::project_test;

// Thousands of IDs and ranges in one list select exactly their records, and an ID not stored nothing.
TEST_F(IdListSelection, AListOfAnyLengthSelectsItsRecords) {
    std::vector<int32_t> all;
    for (int32_t id = 1; id <= 6000; ++id) all.push_back(id);
    addRecords(project.db(), all);
    std::string list;
    std::vector<int32_t> expected;
    for (int32_t id = 1; id < 2000; id += 2) {  // a thousand single IDs
        list += std::to_string(id) + ",";
        expected.push_back(id);
    }
    for (int32_t id = 2000; id < 6000; id += 3) {  // and over a thousand ranges
        list += strprintf(" %d-%d", id, id + 1);
        expected.push_back(id), expected.push_back(id + 1);
    }
    list += " 7000";  // no such record: selects nothing
    std::string clause = id_list_filter::whereClause(list, errors);
    ASSERT_EQ(errors.text(), "");
    db_status status;
    auto rows = project.db().openTable(table_id::control_records, clause, "ID ASC", status);
    ASSERT_TRUE(rows) << status.code;
    std::vector<int32_t> ids;
    db_status s;
    for (s = rows->moveFirst(); s.ok(); s = rows->moveNext())
        ids.push_back(static_cast<int32_t>(rows->row().number("ID")));
    EXPECT_TRUE(s.endOfRowset());
    EXPECT_EQ(ids, expected);
}

}  // namespace
