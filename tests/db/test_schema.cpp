// The schema held in code: column layouts, keys, and the DDL text built from them.
#include <gtest/gtest.h>

#include "db/database_maker.h"
#include "db/table_catalogue.h"
#include "db/table_record.h"

using namespace sb;

namespace {

const database_maker_field& field(table_id table, const char* name) {
    const auto& def = tableDef(table);
    int at = def.fieldIndex(name);
    EXPECT_GE(at, 0) << name << " missing in " << tableName(table);
    return def.fields()[static_cast<size_t>(at < 0 ? 0 : at)];
}

// Column name at a position, so spellings and order are checked together.
std::string nameAt(table_id table, int position) {
    return tableDef(table).fields()[static_cast<size_t>(position)].name;
}

}  // namespace

TEST(TableCatalogue, TablesInCreationOrderWithTheirColumnCounts) {
    struct expected {
        const char* name;
        size_t columns;
    };
    const expected tables[] = {
        {"Control Records", 246},
        {"Site Data", 211},
        {"Events", 10},
        {"Event Blocks", 11},
        {"Output", 136},
        {"Output Annual", 101},
        {"Output Monthly", 101},
        {"Output Daily", 11},
        {"Output Soil Layers", 6},
        {"Soil Layers", 19},
        {"Soils", 20},
        {"Weather Averages", 7},
        {"Weather Historical Monthly", 11},
        {"Weather Historical Daily", 10},
        {"Weather Stations", 2},
        {"Crops", 116},
        {"Cultivation", 13},
        {"Fertilizer", 10},
        {"Fire", 22},
        {"Harvest", 8},
        {"Graze", 13},
        {"Irrigation", 6},
        {"Omad", 9},
        {"Trees", 155},
        {"Tree Removal", 22},
        {"Record Changes", 2},
    };
    ASSERT_EQ(std::size(tables), static_cast<size_t>(kTableCount));
    for (int i = 0; i < kTableCount; ++i) {
        auto id = static_cast<table_id>(i);
        EXPECT_STREQ(tableName(id), tables[i].name);
        EXPECT_EQ(tableDef(id).name(), tables[i].name);
        EXPECT_EQ(tableDef(id).fields().size(), tables[i].columns) << tables[i].name;
        for (const auto& f : tableDef(id).fields()) {
            EXPECT_NE(sqlTypeText(f.type), std::string("ERROR, Unknown field type")) << f.name;
            EXPECT_EQ(f.name.find_first_of(" ", 0) == 0, false) << "name with leading blank: " << f.name;
        }
    }
}

TEST(TableCatalogue, KeysAreTheDesignedOnes) {
    auto key = [](table_id t) {
        const auto& idx = tableDef(t).indexes();
        if (idx.empty()) return std::string("none");
        EXPECT_EQ(idx.size(), 1u);
        EXPECT_TRUE(idx[0].primary);
        std::string text = idx[0].name + ":";
        for (const auto& c : idx[0].columns) text += " " + c;
        return text;
    };
    EXPECT_EQ(key(table_id::control_records), "Primary: ID");
    EXPECT_EQ(key(table_id::events), "ByID: ID Block Number Order");
    EXPECT_EQ(key(table_id::event_blocks), "Primary: ID Block Number");
    EXPECT_EQ(key(table_id::output_monthly), "Primary: ID Year Month");
    EXPECT_EQ(key(table_id::output_daily), "Primary: ID Year Julian Day");
    EXPECT_EQ(key(table_id::soil_layers), "Primary: Soil ID Layer Number");
    EXPECT_EQ(key(table_id::weather_historical_daily), "Primary: ID Year Month Day");
    EXPECT_EQ(key(table_id::crops), "Primary: Name");
    EXPECT_EQ(key(table_id::graze), "none");
    EXPECT_EQ(key(table_id::tree_removal), "none");
    EXPECT_EQ(key(table_id::record_changes), "Primary: ID");
    // Every key column is a column of its table.
    for (int i = 0; i < kTableCount; ++i)
        for (const auto& index : tableDef(static_cast<table_id>(i)).indexes())
            for (const auto& c : index.columns) EXPECT_GE(tableDef(static_cast<table_id>(i)).fieldIndex(c), 0) << c;
}

TEST(TableCatalogue, ControlRecordsKeepsItsOddSpellingsAndTypes) {
    const auto t = table_id::control_records;
    EXPECT_EQ(nameAt(t, 0), "ID");
    EXPECT_EQ(nameAt(t, 1), "Description");
    EXPECT_EQ(field(t, "Description").size, 80);
    EXPECT_EQ(field(t, "MLRA").size, 5);
    EXPECT_EQ(field(t, "NRI Crop 1992").type, kTypeSmallint);
    EXPECT_EQ(field(t, "Hydric").type, kTypeByte);
    // Dec4 and Dec5 are single columns next to the DEC5 array.
    int dec4 = tableDef(t).fieldIndex("Dec4");
    EXPECT_EQ(nameAt(t, dec4), "Dec4");
    EXPECT_EQ(nameAt(t, dec4 + 1), "Dec5");
    EXPECT_EQ(nameAt(t, dec4 + 2), "DEC5(1)");
    EXPECT_EQ(tableDef(t).fieldIndex("FAVAIL(2)"), -1);
    EXPECT_EQ(tableDef(t).fieldIndex("TEXESP(2)"), -1);
    EXPECT_EQ(field(t, "TEXEPP(1)").type, kTypeBit);
    EXPECT_EQ(field(t, "TEXEPP(2)").type, kTypeSingle);
    EXPECT_EQ(field(t, "CO2RMP").type, kTypeByte);
    EXPECT_EQ(field(t, "Simulate Microcosm").type, kTypeBit);
    // RAD1P is stored first subscript fastest, DAMR second subscript fastest.
    int rad = tableDef(t).fieldIndex("RAD1P(1,1)");
    EXPECT_EQ(nameAt(t, rad + 1), "RAD1P(2,1)");
    int damr = tableDef(t).fieldIndex("DAMR(1,1)");
    EXPECT_EQ(nameAt(t, damr + 1), "DAMR(1,2)");
    EXPECT_EQ(nameAt(t, 244), "Initial Crop");
    EXPECT_EQ(nameAt(t, 245), "Initial Tree");
    EXPECT_EQ(field(t, "Initial Tree").size, 5);
    // Names are found without regard to case.
    EXPECT_EQ(tableDef(t).fieldIndex("weather id"), tableDef(t).fieldIndex("Weather ID"));
}

TEST(TableCatalogue, SiteDataSoilsAndOptionListsAsDesigned) {
    EXPECT_EQ(field(table_id::site_data, "WATERTABLE(12)").type, kTypeBit);
    EXPECT_EQ(field(table_id::site_data, "CLDCOV(1)").type, kTypeByte);
    EXPECT_EQ(field(table_id::site_data, "HOURS_RAIN").type, kTypeSmallint);
    EXPECT_EQ(nameAt(table_id::site_data, 210), "n2n2oadj");
    EXPECT_EQ(nameAt(table_id::site_data, 207), "Snow Effect Soil Surface Temp");
    EXPECT_EQ(nameAt(table_id::soil_layers, 12), "Fraction Of Sand");
    EXPECT_EQ(nameAt(table_id::soils, 4), "Fraction of Sand");
    EXPECT_EQ(field(table_id::fire, "Name").size, 255);
    EXPECT_EQ(field(table_id::fire, "Description").size, 255);
    EXPECT_EQ(field(table_id::cultivation, "Name").size, 20);
    EXPECT_EQ(field(table_id::harvest, "flghrv").type, kTypeBit);
    EXPECT_EQ(field(table_id::graze, "grzeff").type, kTypeByte);
    EXPECT_EQ(field(table_id::omad, "omadtyp").type, kTypeByte);
    EXPECT_EQ(field(table_id::tree_removal, "evntyp").type, kTypeByte);
    EXPECT_EQ(field(table_id::events, "Item").size, 20);
    EXPECT_EQ(field(table_id::event_blocks, "Weather ID").type, kTypeInteger);
}

TEST(TableCatalogue, CropsTreesAndOutputsWrittenOutInFull) {
    EXPECT_EQ(nameAt(table_id::crops, 3), "prdx(1)4_5");
    EXPECT_EQ(nameAt(table_id::crops, 115), "sfavail(1)");
    EXPECT_EQ(field(table_id::crops, "claypg").type, kTypeByte);
    // cerfor(i,j,k), k fastest, follows ppdf(4).
    const auto t = table_id::trees;
    int ppdf4 = tableDef(t).fieldIndex("ppdf(4)");
    EXPECT_EQ(nameAt(t, ppdf4 - 3), "ppdf(1)");
    EXPECT_EQ(nameAt(t, ppdf4 + 1), "cerfor(1,1,1)");
    EXPECT_EQ(nameAt(t, ppdf4 + 2), "cerfor(1,1,2)");
    EXPECT_EQ(nameAt(t, ppdf4 + 4), "cerfor(1,2,1)");
    EXPECT_EQ(nameAt(t, ppdf4 + 45), "cerfor(3,5,3)");
    EXPECT_EQ(nameAt(t, ppdf4 + 46), "decw1");
    int fc = tableDef(t).fieldIndex("fcfrac(1,1)");
    EXPECT_EQ(nameAt(t, fc + 4), "fcfrac(5,1)");
    EXPECT_EQ(nameAt(t, fc + 5), "fcfrac(1,2)");
    EXPECT_EQ(field(t, "leafdr(12)").type, kTypeSingle);
    EXPECT_EQ(field(t, "tlaypg").type, kTypeByte);
    EXPECT_EQ(nameAt(t, 154), "sfavail(2)");

    EXPECT_EQ(nameAt(table_id::output, 135), "wd3cis(2)");
    EXPECT_EQ(field(table_id::output_annual, "crpval").type, kTypeSmallint);
    EXPECT_EQ(field(table_id::output_annual, "strmac(8)").type, kTypeSingle);
    EXPECT_EQ(nameAt(table_id::output_annual, 100), "ppt");
    const auto m = table_id::output_monthly;
    EXPECT_EQ(field(m, "Month").type, kTypeByte);
    EXPECT_EQ(nameAt(m, 3), "crpval");
    EXPECT_EQ(nameAt(m, 5), "agcmth");
    int bgcm = tableDef(m).fieldIndex("bgcmacc");
    EXPECT_EQ(nameAt(m, bgcm + 1), "bgcmth");
    EXPECT_EQ(nameAt(m, bgcm + 3), "bgcmmth");
    EXPECT_EQ(nameAt(m, tableDef(m).fieldIndex("fcprd") + 1), "fcmth");
    EXPECT_EQ(nameAt(m, 100), "woode(3)");
    EXPECT_EQ(tableDef(m).fieldIndex("n2oflux"), -1);
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

    EXPECT_EQ(tableDef(table_id::weather_stations).createTableText(),
              "Create Table [Weather Stations]([ID] INTEGER, [Description] TEXT(80))");
    EXPECT_EQ(tableDef(table_id::soils).createIndexTexts(),
              std::vector<std::string>{"Create Index [Primary] on [Soils]([Soil ID]) with primary"});
    EXPECT_EQ(tableDef(table_id::events).createIndexTexts(),
              std::vector<std::string>{"Create Index [ByID] on [Events]([ID], [Block Number], [Order]) with primary"});
    EXPECT_TRUE(tableDef(table_id::graze).createIndexTexts().empty());
}

TEST(DatabaseMaker, TypeTextForEveryCode) {
    const std::pair<int, const char*> codes[] = {
        {2, "SMALLINT"},
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
        {8, "ERROR, Unknown field type"},
    };
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
