#pragma once
// Helpers for the database tests: a fresh project with every table, and
// records filled with values anywhere in each column's range.
#include <memory>
#include <random>
#include <string>

#include "db/database.h"
#include "db/database_maker.h"
#include "test_support.h"

namespace sbtest {

// Creates and opens a new project with all tables (at the path, or on the test
// server in its place); fails the test on any message.
inline std::unique_ptr<sb::database> makeProject(const std::string& path) {
    sb::message_sink errors;
    const std::string location = projectLocation(path);
    EXPECT_TRUE(sb::database::create(location, errors)) << errors;
    auto db = sb::database::open(location, errors);
    EXPECT_TRUE(db) << errors;
    if (!db) return nullptr;
    sb::database_maker maker(*db);
    EXPECT_TRUE(maker.createAllTables(errors)) << errors;
    EXPECT_EQ(errors.text(), "");
    return db;
}

// A value anywhere in the column's range (text of any length up to its size,
// including blanks, quotes and non-ASCII letters).
inline void fillRandom(sb::table_record& r, std::mt19937& rng) {
    static const char* const kPieces[] = {"a", "Z", " ", "'", "\"", "[", "ä", "é", "7", ";", "%"};
    for (int col = 0; col < r.columnCount(); ++col) {
        const auto& f = r.def().fields()[static_cast<size_t>(col)];
        auto pick = [&](double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); };
        switch (f.type) {
            case sb::kTypeText:
            case sb::kTypeMemo: {
                std::string text;
                // MEMO holds any length: well past what a TEXT column takes.
                int length = std::uniform_int_distribution<int>(0, f.type == sb::kTypeMemo ? 2000 : f.size)(rng);
                for (int i = 0; i < length; ++i) text += kPieces[rng() % std::size(kPieces)];
                r.setText(col, text);
                break;
            }
            case sb::kTypeByte:
                r.setNumber(col, std::floor(pick(0, 256)));
                break;
            case sb::kTypeSmallint:
                r.setNumber(col, std::floor(pick(-32768, 32768)));
                break;
            case sb::kTypeInteger:
                r.setNumber(col, std::floor(pick(-2147483648.0, 2147483648.0)));
                break;
            case sb::kTypeBit:
                r.setNumber(col, rng() % 2);
                break;
            default: {
                // Floats of every magnitude, both signs, and the extremes.
                int kind = static_cast<int>(rng() % 8);
                double v = kind == 0   ? 3.4028234663852886e38
                           : kind == 1 ? -1.17549435e-38
                           : kind == 2 ? 0.0
                                       : pick(-1, 1) * std::pow(10.0, pick(-30, 30));
                r.setNumber(col, v);
            }
        }
    }
}

}  // namespace sbtest
