#include "cli_fixture.h"

#include <algorithm>

#include "app/text_format.h"
#include "db/database.h"
#include "records/tellura_control_record.h"

void addDemoCopies(const std::string& path, int count, int lengths, const std::vector<std::string>& fertilizers) {
    sb::message_sink errors;
    auto db = sb::database::open(path, errors);
    ASSERT_TRUE(db) << errors;
    sb::tellura_control_record base;
    ASSERT_TRUE(sb::loadControlRecord(*db, 2, base, errors)) << errors;
    for (int n = 0; n < count; ++n) {
        sb::tellura_control_record record = base;
        record.setId(101 + n);
        for (auto& block : record.blocks) {
            block.lastYear = static_cast<int16_t>(block.lastYear - n % lengths);
            for (auto& event : block.events)
                if (event.type == sb::kEventFert && !fertilizers.empty())
                    event.item = fertilizers[static_cast<size_t>(n) % fertilizers.size()];
        }
        ASSERT_TRUE(sb::saveControlRecord(*db, record, errors)) << errors;
    }
}

std::vector<std::string> storedOutputs(const std::string& path) {
    sb::message_sink errors;
    auto db = sb::database::open(path, errors);
    EXPECT_TRUE(db) << errors;
    std::vector<std::string> rows;
    for (sb::table_id table : {sb::table_id::output, sb::table_id::output_annual, sb::table_id::output_monthly,
                               sb::table_id::output_daily, sb::table_id::output_soil_layers}) {
        sb::db_status status;
        auto set = db ? db->openTable(table, "", "", status) : nullptr;
        for (sb::db_status s = set ? set->moveFirst() : status; set && s.ok(); s = set->moveNext()) {
            std::string text = sb::tableName(table);
            for (int c = 0; c < set->row().columnCount(); ++c) text += sb::strprintf("|%.9g", set->row().number(c));
            rows.push_back(text);
        }
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}
