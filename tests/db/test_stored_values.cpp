// What an insert leaves in a project file, byte for byte: bulk stores bind
// values straight into SQLite, and must store exactly what Qt's driver stores.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <string>

#include "app/text_format.h"
#include "db/database.h"
#include "db_test_support.h"
#include "test_support.h"

using namespace sb;

namespace {

struct stored_value_case {
    const char* column;  // of Control Records
    double number;       // for a numeric column
    std::string text;    // for a text column
    int storedType;      // SQLITE_INTEGER, SQLITE_FLOAT or SQLITE_TEXT
    std::string stored;  // the integer or text as stored; for a float, its %.17g
};

std::string storedAs(sqlite3_stmt* row, int type) {
    if (type == SQLITE_INTEGER) return std::to_string(sqlite3_column_int64(row, 0));
    if (type == SQLITE_FLOAT) return sb::strprintf("%.17g", sqlite3_column_double(row, 0));
    return std::string(reinterpret_cast<const char*>(sqlite3_column_text(row, 0)),
                       static_cast<size_t>(sqlite3_column_bytes(row, 0)));
}

}  // namespace

TEST(StoredValues, EachColumnTypeIsStoredAsTheDriverStoresIt) {
    SB_FILE_STORE_ONLY();
    const stored_value_case cases[] = {
        {"Description", 0, "Plain 'quoted' \"text\" [x]", SQLITE_TEXT, "Plain 'quoted' \"text\" [x]"},
        {"Description", 0, "Ünïcödé ß", SQLITE_TEXT, "Ünïcödé ß"},
        {"Description", 0, "bad \xff byte", SQLITE_TEXT, "bad \xef\xbf\xbd byte"},  // read as UTF-8 by the driver
        {"Description", 0, "", SQLITE_TEXT, ""},                                    // empty, not NULL
        {"TEXEPP(1)", kBitTrue, "", SQLITE_INTEGER, "1"},
        {"Simulate Microcosm", 0, "", SQLITE_INTEGER, "0"},
        {"Rotation", 255, "", SQLITE_INTEGER, "255"},
        {"State FIPS", -32768, "", SQLITE_INTEGER, "-32768"},
        {"Soil ID", 2147483647, "", SQLITE_INTEGER, "2147483647"},
        {"Latitude", 0.1, "", SQLITE_FLOAT, "0.10000000149011612"},  // kept at SINGLE precision
        {"Longitude", -1e-30, "", SQLITE_FLOAT, "-1.0000000031710769e-30"},
    };
    sbtest::temp_dir dir;
    const std::string path = dir.file("values.sbproj");
    auto db = sbtest::makeProject(path);
    ASSERT_TRUE(db);
    {
        session s(*db);
        db_status status;
        auto rows = db->openTable(table_id::control_records, "", "", status);
        ASSERT_TRUE(rows);
        int id = 0;
        for (const auto& c : cases) {
            table_record r(table_id::control_records);
            r.setNumber("ID", ++id);
            if (r.isText(r.column(c.column))) r.setText(c.column, c.text);
            else r.setNumber(c.column, c.number);
            ASSERT_TRUE(rows->insert(r).ok()) << c.column;
        }
        rows.reset();
        ASSERT_TRUE(s.commit()) << s.storeError();
    }
    db.reset();
    sqlite3* file = nullptr;
    ASSERT_EQ(sqlite3_open_v2(path.c_str(), &file, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    int id = 0;
    for (const auto& c : cases) {
        const std::string sql = sb::strprintf("SELECT \"%s\" FROM \"Control Records\" WHERE ID = %d", c.column, ++id);
        sqlite3_stmt* row = nullptr;
        ASSERT_EQ(sqlite3_prepare_v2(file, sql.c_str(), -1, &row, nullptr), SQLITE_OK) << sql;
        ASSERT_EQ(sqlite3_step(row), SQLITE_ROW) << sql;
        const int type = sqlite3_column_type(row, 0);
        EXPECT_EQ(type, c.storedType) << c.column << " of row " << id;
        EXPECT_EQ(storedAs(row, type), c.stored) << c.column << " of row " << id;
        sqlite3_finalize(row);
    }
    sqlite3_close(file);
}

// Many rows at once (in groups where the store takes groups): each refused row is
// told as a single insert tells it, the rest are stored in order, and the insert
// ends at the first refusal the caller does not ride over.
TEST(RowSet, InsertAllTellsEachRefusedRowAndKeepsTheOrder) {
    sbtest::temp_dir dir;
    auto db = sbtest::makeProject(dir.file("many.sbproj"));
    ASSERT_TRUE(db);
    const size_t kDuplicate = 300, kOutOfRange = 900;  // in different groups
    std::vector<table_record> rows;
    for (int n = 0; n < 1200; ++n) {
        rows.emplace_back(table_id::output_daily);
        rows.back().setNumber("ID", 1);
        rows.back().setNumber("Year", 1900 + n / 365);
        rows.back().setNumber("Julian Day", n % 365 + 1);
        rows.back().setNumber("tmax", n * 0.25);
    }
    rows[kDuplicate].setNumber("Julian Day", 11);  // the key of row 10
    rows[kDuplicate].setNumber("Year", 1900);
    rows[kOutOfRange].setNumber("Year", 40000);  // beyond a SMALLINT
    std::vector<const table_record*> pointers;
    for (const auto& r : rows) pointers.push_back(&r);
    std::vector<std::pair<size_t, status_code>> refused;
    {
        session s(*db);
        db_status status;
        auto rs = db->openTable(table_id::output_daily, "", "", status);
        ASSERT_TRUE(rs);
        rs->insertAll(pointers, [&](size_t index, const db_status& st) {
            refused.emplace_back(index, st.code);
            return st.code == kStatusIntegrityViolation;  // ride over duplicates only
        });
        rs.reset();
        EXPECT_TRUE(s.commit()) << s.storeError();
    }
    const std::vector<std::pair<size_t, status_code>> expected = {{kDuplicate, kStatusIntegrityViolation},
                                                                  {kOutOfRange, kStatusValueOutOfRange}};
    EXPECT_EQ(refused, expected);
    db_status status;
    auto back = db->openTable(table_id::output_daily, "", "", status);
    ASSERT_TRUE(back);
    size_t n = 0;
    for (db_status st = back->moveFirst(); st.ok(); st = back->moveNext(), ++n) {
        if (n == kDuplicate) ++n;  // skipped
        ASSERT_LT(n, kOutOfRange);
        EXPECT_TRUE(back->row() == rows[n]) << "row " << n;
    }
    EXPECT_EQ(n, kOutOfRange);
}
