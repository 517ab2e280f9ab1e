// Status texts shown to users, and the project SQL as the embedded store receives it.
#include <gtest/gtest.h>

#include "db/db_status.h"
#include "db/sql_dialect.h"

using namespace sb;

namespace {
std::string textOf(status_code code, std::vector<std::string> descriptions = {}) {
    std::string errors = "before\n";
    appendStatusText(db_status{code, std::move(descriptions)}, errors);
    return errors;
}
}  // namespace

TEST(StatusText, MessagesByCode) {
    EXPECT_EQ(textOf(0x80040E2F, {"UNIQUE constraint failed: Crops.Name"}),
              "before\nA specified value violated the integrity constraints for a column or table.\n"
              "UNIQUE constraint failed: Crops.Name\n");
    EXPECT_EQ(textOf(0x80040E21, {"one", "two"}),
              "before\nAn error occurred while setting data for one or more columns and data was not "
              "successfully set for any columns.\n"
              "To determine the columns for which values were invalid, the consumer checks the status values.\n"
              "For a list of status values that can be returned by this method, see \"Status Values Used When "
              "Setting Data\" in \"Status\" in Chapter 6.\n"
              "one\ntwo\n");
    EXPECT_EQ(textOf(0x80040E99), "before\nOther error: 80040E99\n");
    EXPECT_EQ(textOf(0x00000ABC), "before\nOther error: ABC\n");
    EXPECT_EQ(textOf(0x80004005), "before\nUnspecified error: 80004005\n");
    EXPECT_EQ(textOf(0x800401F3), "before\nERROR 800401F3 Invalid class string (driver for x64?)\n");
    EXPECT_EQ(textOf(0x80004002), "before\nNo such interface supported.\n");
    EXPECT_EQ(textOf(0x80040E37), "before\nThe specified table does not exist.\n");
    EXPECT_EQ(textOf(0x80040E55), "before\nThe specified column did not exist.\n");
    EXPECT_EQ(textOf(0x00040EC6), "before\nReached start or end of rowset or chapter.\n");
    EXPECT_EQ(textOf(0x8000FFFF),
              "before\nITransaction::Commit or ITransaction::Abort was called and the object is in a zombie state.\n");
    EXPECT_EQ(textOf(kStatusValueOutOfRange, {"The value 300 ..."}),
              "before\nOther error: 8004F001\nThe value 300 ...\n");
}

TEST(StatusText, Kinds) {
    EXPECT_TRUE(db_status{}.ok());
    EXPECT_TRUE((db_status{kStatusEndOfRowset, {}}).endOfRowset());
    EXPECT_FALSE((db_status{kStatusEndOfRowset, {}}).failed());
    EXPECT_TRUE((db_status{kStatusNoTable, {}}).failed());
}

TEST(SqliteDialect, ProjectSqlBecomesStoreSql) {
    auto d = sql_dialect::sqlite();
    EXPECT_EQ(d->translate("SELECT * FROM `Control Records` WHERE ID > 5 ORDER BY ID ASC"),
              "SELECT * FROM `Control Records` WHERE ID > 5 ORDER BY ID ASC");
    EXPECT_EQ(d->translate("SELECT * FROM `Output Annual` WHERE [ID] = 7 ORDER BY [Year]"),
              "SELECT * FROM `Output Annual` WHERE `ID` = 7 ORDER BY `Year`");
    EXPECT_EQ(d->translate("DELETE * FROM `Events` WHERE ID = 3 AND [Block Number] = 2"),
              "DELETE FROM `Events` WHERE ID = 3 AND `Block Number` = 2");
    EXPECT_EQ(d->translate("delete  *  from `Crops`"), "DELETE FROM `Crops`");
    EXPECT_EQ(d->translate("DELETE FROM `Weather Stations` WHERE ID = 1"),
              "DELETE FROM `Weather Stations` WHERE ID = 1");
    // Literals pass untouched; the project's double-quoted strings become literals.
    EXPECT_EQ(d->translate("SELECT * FROM `Soils` WHERE [Name] = 'a [b] `c`' OR [Name] = \"it's\""),
              "SELECT * FROM `Soils` WHERE `Name` = 'a [b] `c`' OR `Name` = 'it''s'");
    EXPECT_EQ(d->translate("SELECT * FROM `T` WHERE [x] = 'o''k'"), "SELECT * FROM `T` WHERE `x` = 'o''k'");
}

TEST(SqliteDialect, DdlTypesKeysAndInserts) {
    auto d = sql_dialect::sqlite();
    EXPECT_EQ(d->translate("Create Table [Demo]([ID] INTEGER, [Description] TEXT(80), [DAMR(1,2)] SINGLE, "
                           "[f] BIT, [b] BYTE, [s] SMALLINT)"),
              "CREATE TABLE `Demo`(`ID` INTEGER, `Description` TEXT, `DAMR(1,2)` REAL, `f` INTEGER, "
              "`b` INTEGER, `s` INTEGER) STRICT");
    // An unknown type is passed on, so the store refuses the statement.
    EXPECT_EQ(d->translate("Create Table [T]([a] ERROR, Unknown field type)"),
              "CREATE TABLE `T`(`a` ERROR, Unknown field type) STRICT");
    EXPECT_EQ(d->translate("Create Index [Primary] on [Soils]([Soil ID]) with primary"),
              "CREATE UNIQUE INDEX `Soils.Primary` ON `Soils`(`Soil ID`)");
    EXPECT_EQ(d->translate("Create Index [ByID] on [Events]([ID], [Block Number], [Order]) with primary"),
              "CREATE UNIQUE INDEX `Events.ByID` ON `Events`(`ID`, `Block Number`, `Order`)");
    EXPECT_EQ(d->translate("Create Index [Other] on [Soils]([Name])"), "CREATE INDEX `Soils.Other` ON `Soils`(`Name`)");
    EXPECT_EQ(d->insertText("Weather Stations", {"ID", "Description"}),
              "INSERT INTO `Weather Stations` (`ID`, `Description`) VALUES (?, ?)");
    EXPECT_EQ(d->quoteIdentifier("a`b"), "`a``b`");
}

TEST(SqliteDialect, StoreFailuresByKind) {
    auto d = sql_dialect::sqlite();
    EXPECT_EQ(d->classifyError("19", "UNIQUE constraint failed: Crops.Name"), kStatusIntegrityViolation);
    EXPECT_EQ(d->classifyError("1", "no such table: Crops"), kStatusNoTable);
    EXPECT_EQ(d->classifyError("1", "no such column: Yaer"), kStatusNoColumn);
    EXPECT_EQ(d->classifyError("1", "table Crops has no column named x"), kStatusNoColumn);
    EXPECT_EQ(d->classifyError("1", "near \"WHER\": syntax error"), kStatusCommandError);
    EXPECT_EQ(d->classifyError("8", "attempt to write a readonly database"), kStatusReadOnly);
    EXPECT_EQ(d->classifyError("5", "database is locked"), kStatusBusy);
    EXPECT_EQ(d->classifyError("26", "file is not a database"), kStatusNotADatabase);
    EXPECT_EQ(d->classifyError("13", "database or disk is full"), kStatusStoreError);
}
