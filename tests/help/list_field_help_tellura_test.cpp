// The help index: loading the help file, its messages, look-up and the texts shown.
#include "help/list_field_help_tellura.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "app/app_soilbench.h"
#include "help/help_tables.h"
#include "test_support.h"

namespace {

using namespace sb;

const std::string kHeaderLine = "Variable,Table,VersionFirst,VersionLast\n";

struct loaded {
    list_field_help_tellura help;
    sb::message_sink messages;
    bool ok = false;
    explicit loaded(const std::string& text) { ok = help.loadText(text, "help.csv", messages); }
};

TEST(FieldHelp, LoadsFindsAndDescribes) {
    loaded l(kHeaderLine +
             "prdx(1),1,1,3,gC/m2/month,Old production coefficient\r\n"
             "PRDX(1),1,4,0,\"g C, per month\",\"Newer \"\"potential\"\" production, by radiation\"\r\n"
             "\n\r\nsand,12,1,6,,Sand fraction of the soil\n"
             "aneref(1),11,2,2,short,\n"
             "x,1,1,6,,all\nx,1,3,3,,three\n\n"
             "b,1,1,6,," +
             std::string(20000, 'h') + ",x\n");
    EXPECT_TRUE(l.ok);
    EXPECT_EQ(l.messages, "");
    EXPECT_EQ(l.help.size(), 5u);  // the two prdx(1) rows share one entry, and so do the two x rows

    auto old = l.help.find("PRDX(1)", kHelpCrop, 2);
    ASSERT_TRUE(old);
    EXPECT_EQ(old.version->helpText, "Old production coefficient");
    auto newer = l.help.find("prdx(1)", kHelpCrop, 6);  // 0 stands for the last version
    ASSERT_TRUE(newer);
    EXPECT_EQ(newer.version->first, 4);
    EXPECT_EQ(newer.version->last, 6);
    EXPECT_EQ(newer.version->shortText, "g C, per month");
    EXPECT_EQ(newer.version->helpText, "Newer \"potential\" production, by radiation");
    EXPECT_FALSE(l.help.find("prdx(1)", kHelpTree, 4));  // another table
    EXPECT_FALSE(l.help.find("prdx(1)", kHelpCrop, 7));
    EXPECT_FALSE(l.help.find("sand", kHelpSite, 0));
    EXPECT_EQ(l.help.find("x", 1, 3).version->helpText, "all");               // the first matching range wins
    EXPECT_EQ(l.help.find("b", 1, 1).version->helpText.size(), 10240u - 9u);  // long lines are cut

    // The name as the help file spells it.
    EXPECT_EQ(l.help.describe("PRDX(1)", kHelpCrop, 5),
              "prdx(1) (g C, per month): Newer \"potential\" production, by radiation\r\n"
              "Versions: Diurna 4.5, Tellura 4.6, Tellura 5");
    EXPECT_EQ(l.help.describe("sand", kHelpSite, 1),
              "sand: Sand fraction of the soil\r\nVersions: Tellura 4 Agricultural, Tellura 4 Original, "
              "Tellura 4.5, Diurna 4.5, Tellura 4.6, Tellura 5");
    EXPECT_EQ(l.help.describe("aneref(1)", kHelpFixed, 2), "aneref(1) (short): \r\nVersions: Tellura 4 Original");
    EXPECT_EQ(l.help.describe("nothing", kHelpFixed, 2), "Not Found: nothing");
    EXPECT_EQ(l.help.helpBoxText("sand", kHelpSite, 4), "[Diurna 4.5] Sand fraction of the soil");
    EXPECT_EQ(l.help.helpBoxText("sand", kHelpSite, 9), "Not Found: sand");
}

TEST(FieldHelp, HeaderMustBeExact) {
    for (const char* header : {"Variable,Table,VersionFirst,VersionLast,Short\n", "Variable,Table\n", "",
                               "variable,table,versionfirst,versionlast\n"}) {
        loaded l(std::string(header) + "x,1,1,6,,text\n");
        EXPECT_FALSE(l.ok);
        EXPECT_EQ(l.messages, "ERROR in format of \"help.csv\".  Old version?\r\n");
        EXPECT_EQ(l.help.size(), 0u);
    }
    loaded crlf("\xEF\xBB\xBFVariable,Table,VersionFirst,VersionLast\r\nx,1,1,6,,text\r\n");
    EXPECT_TRUE(crlf.ok);
    EXPECT_EQ(crlf.help.size(), 1u);
}

TEST(FieldHelp, BadLinesStopTheLoadAndKeepWhatCameBefore) {
    const std::string longName(300, 'n');
    struct bad_case {
        std::string line;
        std::string message;
    } cases[] = {
        {longName + ",one", "ERROR, unable to parse help text table, name=\"" + longName + "\", line=2.\r\n"},
        {",1,1,6,,x", "ERROR, unable to parse help text.\r\n"},
        {"name,one,1,6,,x", "ERROR, unable to parse help text table, name=\"name\", line=2.\r\n"},
        {"name,1,,6,,x", "ERROR, unable to parse help text first version, name=\"name\", line=2.\r\n.\r\n"},
        {"name,1,1,6x,,x", "ERROR, unable to parse help text last version, name=\"name\", line=2.\r\n.\r\n"},
        {"name,1,1", "ERROR, unable to parse help text last version, name=\"name\", line=2.\r\n.\r\n"},
        {"name,1,99999,6", "ERROR, unable to parse help text first version, name=\"name\", line=2.\r\n.\r\n"},
        {"name,99999999999,1,6", "ERROR, unable to parse help text table, name=\"name\", line=2.\r\n"},
        {"2name,1,1,6,,x", "ERROR, invalid field name \"2name\" in help text file.\r\n"},
        {"_x,1,1,6,,x", "ERROR, invalid field name \"_x\" in help text file.\r\n"},
    };
    for (const bad_case& c : cases) {
        loaded l(kHeaderLine + "good,1,1,6,,kept\n" + c.line + "\nlater,1,1,6,,never\n");
        EXPECT_FALSE(l.ok) << c.line;
        EXPECT_EQ(l.messages, c.message);
        EXPECT_TRUE(l.help.find("good", 1, 1)) << c.line;
        EXPECT_FALSE(l.help.find("later", 1, 1)) << c.line;
        EXPECT_EQ(l.help.findEntry("2name", 1), nullptr);
    }
}

TEST(FieldHelp, UnreadableFilesAndTheLetterIndex) {
    sbtest::temp_dir dir;
    sbtest::writeFile(dir.file("empty.csv"), "");
    const std::pair<std::string, std::string> files[] = {
        {dir.file("none.csv"), "ERROR, unable to open help file \"" + dir.file("none.csv") + "\"\r\n"},
        {dir.path(), "ERROR, unable to open help file \"" + dir.path() + "\"\r\n"},
        {dir.file("empty.csv"), "ERROR in format of \"" + dir.file("empty.csv") + "\".  Old version?\r\n"},
    };
    for (const auto& [path, message] : files) {
        list_field_help_tellura help;
        sb::message_sink messages;
        EXPECT_FALSE(help.load(path, messages));
        EXPECT_EQ(messages.text(), message);
    }
    const std::pair<const char*, int> letters[] = {{"abc", 0}, {"Zed", 25}, {"9", -1}, {"", -1}, {"\xE9t\xE9", -1}};
    for (auto [name, index] : letters) EXPECT_EQ(list_field_help::letterIndex(name), index) << name;
}

// The user's own help file wins; the shipped name is looked for among the shipped files.
TEST(FieldHelp, HelpFileLocation) {
    sbtest::temp_dir dir;
    sbtest::writeFile(dir.file("SoilbenchHelp.csv"), kHeaderLine);
    const std::pair<const char*, std::string> cases[] = {
        {"/etc/own-help.csv", "/etc/own-help.csv"},
        {"SoilbenchHelp.csv", dir.file("SoilbenchHelp.csv")},
        {"help/own.csv", std::filesystem::current_path().string() + "/help/own.csv"},
    };
    for (const auto& [setting, expected] : cases) {
        app_soilbench settings;
        settings.helpFile = setting;
        EXPECT_EQ(findHelpFile(dir.path(), settings), expected) << setting;
    }
    // The help file shipped beside the program loads whole.
    list_field_help_tellura help;
    sb::message_sink messages;
    EXPECT_TRUE(help.load(findHelpFile(app_soilbench()), messages));
    EXPECT_EQ(messages.text(), "");
}

}  // namespace
