// An editor's changes saved as one unit: the deletes first, then the items
// part by part, positions closing up after a removal, and nothing kept when
// one step fails.
#include <gtest/gtest.h>

#include "app/text_format.h"
#include "records/list_edits.h"
#include "records/tellura_soil.h"
#include "records_test_project.h"
#include "test_support.h"

namespace {

using namespace sb;
using sbtest::records_project;

TEST(ListEdits, SavedInOrderAndKeptOnlyWhole) {
    const struct {
        const char* name;
        int failingKey;  // -1: every write works
        bool ok;
        const char* steps;
        const char* errors;
        bool soil8Stored;
    } cases[] = {
        {"every step works", -1, true, "w0.0 w2.0 w1.1 ", "", false},
        {"a write fails: the delete is undone too", 2, false, "w0.0 w2.0 w1.1 ", "refused 2\n", true},
    };
    for (const auto& c : cases) {
        records_project project;
        SB_REQUIRE_PROJECT(project);
        sb::message_sink errors;
        for (int32_t id : {7, 8}) {
            tellura_soil soil;
            soil.setSoilId(id);
            ASSERT_TRUE(saveSoil(project.db(), soil, errors)) << errors;
        }
        list_edits edits;
        edits.change(0);
        edits.change(3);
        edits.change(2);
        edits.change(1, 1);
        edits.removeAt(8, 2);  // its changes go; position 3 becomes 2
        std::string steps;
        const bool ok = edits.save(
            project.db(), [&](int32_t id, sb::message_sink& e) { return deleteSoil(project.db(), id, e); },
            [&](int key, int part, sb::message_sink& e) {
                appendf(steps, "w%d.%d ", key, part);
                if (key != c.failingKey) return true;
                e.errorf("refused %d\n", key);
                return false;
            },
            errors);
        EXPECT_EQ(ok, c.ok) << c.name;
        EXPECT_EQ(steps, c.steps) << c.name;
        EXPECT_EQ(errors.text(), c.errors) << c.name;
        tellura_soils stored;
        ASSERT_TRUE(stored.load(project.db(), errors)) << errors;
        EXPECT_EQ(stored.find(8) != nullptr, c.soil8Stored) << c.name;
        EXPECT_NE(stored.find(7), nullptr) << c.name;
    }
}

}  // namespace
