// The schema held in code: its keys and the DDL text built from it.
#include <gtest/gtest.h>

#include "db/database_maker.h"
#include "db/table_catalogue.h"
#include "db/table_record.h"

using namespace sb;

TEST(DatabaseMaker, TypeTextForEveryCode) {
    const std::pair<int, const char*> codes[] = {{2, "SMALLINT"},
                                                 {3, "INTEGER"},
                                                 {4, "SINGLE"},
                                                 {5, "DOUBLE"},
                                                 {6, "CURRENCY"},
                                                 {7, "datetime"},
                                                 {11, "BIT"},
                                                 {16, "BYTE"},
                                                 {17, "BYTE"},
                                                 {128, "BLOB(2G)"},
                                                 {129, "TEXT"},
                                                 {130, "WIDETEXT"},
                                                 {131, "NUMERIC"},
                                                 {136, "MEMO"},
                                                 {0, "ERROR, Unknown field type"},
                                                 {8, "ERROR, Unknown field type"}};
    for (auto [code, text] : codes) EXPECT_STREQ(sqlTypeText(code), text) << code;
    database_maker_table table("T");
    table.addField("a", 99);
    EXPECT_EQ(table.createTableText(), "Create Table [T]([a] ERROR, Unknown field type)");
}

TEST(TableRecord, ValuesKeepTheirColumnKinds) {
    table_record r(table_id::events);
    r.setNumber("Parameter 1", 0.1);
    EXPECT_EQ(r.number("Parameter 1"), static_cast<double>(0.1f));
    EXPECT_EQ(r.single(r.column("Parameter 1")), 0.1f);
    r.setNumber("Year", 1999.6);
    EXPECT_EQ(r.integer(r.column("year")), 2000);
    EXPECT_TRUE(r.setText("item", "C4"));
    EXPECT_EQ(r.text("ITEM"), "C4");
    EXPECT_FALSE(r.setText("Year", "x"));
    EXPECT_FALSE(r.setNumber("No Such Column", 1));
    EXPECT_EQ(r.number("No Such Column"), 0.0);
    EXPECT_EQ(r.text("No Such Column"), "");

    table_record h(table_id::harvest);
    int flag = h.column("flghrv");
    h.setNumber(flag, 1);
    EXPECT_EQ(h.number(flag), kBitTrue);
    EXPECT_TRUE(h.flag(flag));
    h.setFlag(flag, false);
    EXPECT_EQ(h.number(flag), 0.0);

    table_record copy = r;
    EXPECT_TRUE(copy == r);
    copy.setText("Item", "C5");
    EXPECT_FALSE(copy == r);
    copy = r;
    copy.setNumber("Parameter 2", 3);
    EXPECT_FALSE(copy == r);
    copy.clear();
    EXPECT_TRUE(copy == table_record(table_id::events));
}
