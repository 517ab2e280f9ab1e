// The schema held in code: its keys and the DDL text built from it.
#include <gtest/gtest.h>

#include "db/database_maker.h"
#include "db/table_catalogue.h"
#include "db/table_record.h"

using namespace sb;

// Every table is made under its own name, of columns whose types have DDL text,
// and every key column is a column of its table.
TEST(TableCatalogue, EveryTableHasItsNameKnownColumnTypesAndKeysOfItsColumns) {
    for (int i = 0; i < kTableCount; ++i) {
        const database_maker_table& table = tableDef(static_cast<table_id>(i));
        SCOPED_TRACE(table.name());
        EXPECT_EQ(table.name(), tableName(static_cast<table_id>(i)));
        EXPECT_FALSE(table.fields().empty());
        for (const auto& f : table.fields()) {
            EXPECT_STRNE(sqlTypeText(f.type), "ERROR, Unknown field type") << f.name;
            EXPECT_NE(f.name.front(), ' ') << f.name;
            EXPECT_EQ(table.fieldIndex(f.name), &f - table.fields().data()) << "twice: " << f.name;
        }
        for (const auto& index : table.indexes())
            for (const auto& c : index.columns) EXPECT_GE(table.fieldIndex(c), 0) << c;
    }
}

TEST(DatabaseMaker, CompactColumnFormAndDdlText) {
    auto table = database_maker_table::fromColumnList("Demo",
                                                      "INTEGER: ID; TEXT(80): Description, Soils 5 ID; "
                                                      "SINGLE: DAMR(1,2), x(1) to x(2); BIT: flag; BYTE: b; "
                                                      "SMALLINT: s",
                                                      {});
    table.addIndex("Primary", true, true, {"ID", "Soils 5 ID"});
    table.addIndex("Other", false, false, {"s"});
    ASSERT_EQ(table.fields().size(), 9u);
    EXPECT_EQ(table.createTableText(),
              "Create Table [Demo]([ID] INTEGER, [Description] TEXT(80), [Soils 5 ID] TEXT(80), "
              "[DAMR(1,2)] SINGLE, [x(1)] SINGLE, [x(2)] SINGLE, [flag] BIT, [b] BYTE, [s] SMALLINT)");
    auto indexes = table.createIndexTexts();
    ASSERT_EQ(indexes.size(), 2u);
    EXPECT_EQ(indexes[0], "Create Index [Primary] on [Demo]([ID], [Soils 5 ID]) with primary");
    EXPECT_EQ(indexes[1], "Create Index [Other] on [Demo]([s])");
    EXPECT_EQ(table.textCount(), 2);
    EXPECT_EQ(table.textSlot(2), 1);
    EXPECT_EQ(table.textSlot(3), -1);
    EXPECT_EQ(table.fieldIndex("damr(1,2)"), 3);
    EXPECT_EQ(table.fieldIndex("DAMR(2,1)"), -1);
}

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
