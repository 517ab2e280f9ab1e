// The Configuration dialog's logic: what it lists, what OK and Cancel change.
#include "app/configuration_form.h"

#include <gtest/gtest.h>

namespace {

using namespace sb;

std::vector<std::string> markedLabels(const configuration_form& form) {
    std::vector<std::string> labels;
    for (const auto& row : form.locationRows())
        if (row.marked) labels.push_back(row.label);
    return labels;
}

TEST(ConfigurationForm, ListsVersionsOneToFiveWithTwoRowsEach) {
    app_soilbench app;
    app.version = 3;
    configuration_form form(app);
    EXPECT_EQ(form.versionChoices(), (std::vector<std::string>{"Tellura 4 Agricultural", "Tellura 4 Original",
                                                               "Tellura 4.5", "Diurna 4.5", "Tellura 4.6"}));
    ASSERT_EQ(form.locationRows().size(), 10u);
    EXPECT_EQ(form.locationRows()[0].label, "Tellura 4 Agricultural executable");
    EXPECT_EQ(form.locationRows()[9].label, "Tellura 4.6 LIST100 executable");
    EXPECT_EQ(form.selectedVersionIndex(), 2);
    EXPECT_EQ(markedLabels(form),
              (std::vector<std::string>{"Tellura 4.5 executable", "Tellura 4.5 LIST100 executable"}));

    form.selectVersion(3);
    EXPECT_EQ(markedLabels(form), (std::vector<std::string>{"Diurna 4.5 executable", "Diurna 4.5 LIST100 executable"}));
    form.selectVersion(5);  // version 6 is not in the list
    form.selectVersion(-1);
    EXPECT_EQ(form.selectedVersionIndex(), 3);
    EXPECT_EQ(app.version, 3);  // nothing changes before OK
}

TEST(ConfigurationForm, OkRefusesABadTimeoutOrNoWineCommandAndCopiesNothing) {
    const std::string timeout = "Please enter an integer between 0 and 5000000.\n";
    const std::string wine = "Please enter the Wine command, e.g. wine.\n";
    const std::pair<std::pair<const char*, const char*>, std::string> refusals[] = {
        {{"5000001", "wine"}, timeout},
        {{"-1", "wine"}, timeout},
        {{"", "wine"}, timeout},
        {{"12a", "wine"}, timeout},
        {{"1.5", "wine"}, timeout},
        {{"99999999999999999999", "wine"}, timeout},
        {{"0", ""}, wine},
        {{"0", "   "}, wine},
    };
    for (const auto& [input, message] : refusals) {
        app_soilbench app;
        configuration_form form(app);
        form.recordList = false;
        form.runTimeoutText = input.first;
        form.wineCommand = input.second;
        form.winePrefix = "/data/wine-prefix";
        std::string errors;
        EXPECT_FALSE(form.accept(errors)) << input.first;
        EXPECT_EQ(errors, message);
        EXPECT_TRUE(app.recordList);  // nothing was copied
        EXPECT_EQ(app.winePrefix, "");
    }
}

TEST(ConfigurationForm, OkCopiesEveryControlBackAndNeverKeepsVersionSix) {
    app_soilbench app;
    app.version = 6;
    configuration_form form(app);
    EXPECT_EQ(form.selectedVersionIndex(), 0);
    EXPECT_EQ(form.runTimeoutText, "250000");
    EXPECT_EQ(form.wineCommand, "wine");
    EXPECT_EQ(form.rowPath(10), "");
    form.editRowPath(-1, "x");  // ignored
    form.selectVersion(4);
    form.readBinaryOutput = true;
    form.outputPrefix = "run";
    form.outputPath = "/data/daily/";
    form.recordList = false;
    form.runVisible = false;
    form.runTimeoutText = " 5000000 ";
    form.wineCommand = "/opt/wine/bin/wine64";
    form.winePrefix = "  /data/wine-prefix ";
    std::string errors;
    ASSERT_TRUE(form.accept(errors)) << errors;
    EXPECT_EQ(errors, "");
    EXPECT_EQ(app.version, 5);
    EXPECT_TRUE(app.readBinaryOutput);
    EXPECT_EQ(app.outputPrefix, "run");
    EXPECT_EQ(app.outputPath, "/data/daily/");
    EXPECT_FALSE(app.recordList);
    EXPECT_FALSE(app.runVisible);
    EXPECT_EQ(app.runTimeout, 5000000u);
    EXPECT_EQ(app.wineCommand, "/opt/wine/bin/wine64");
    EXPECT_EQ(app.winePrefix, "/data/wine-prefix");

    app_soilbench unoffered;
    unoffered.version = 6;
    ASSERT_TRUE(configuration_form(unoffered).accept(errors));
    EXPECT_EQ(unoffered.version, 1);  // what the drop-down showed
}

TEST(ConfigurationForm, CancelChangesNothingButTheHelpFile) {
    app_soilbench app;
    configuration_form form(app);
    form.selectVersion(3);
    form.runVisible = false;
    form.runTimeoutText = "10";
    form.outputPrefix = "x";
    form.editRowPath(6, "/opt/diurna/dd45");                 // Diurna 4.5 executable
    form.editRowPath(7, "/opt/diurna/list100");              // Diurna 4.5 LIST100 executable
    EXPECT_EQ(app.modelExecutables[3], "/opt/diurna/dd45");  // bound directly to the field
    EXPECT_EQ(form.rowPath(7), "/opt/diurna/list100");
    form.chooseHelpFile("/usr/share/help.csv");
    EXPECT_EQ(form.helpFileText(), "/usr/share/help.csv");
    form.cancel();
    EXPECT_EQ(app.version, 1);
    EXPECT_TRUE(app.runVisible);
    EXPECT_EQ(app.runTimeout, 250000u);
    EXPECT_EQ(app.outputPrefix, "sb");
    EXPECT_EQ(app.modelExecutables[3], "");
    EXPECT_EQ(app.list100Executables[3], "");
    EXPECT_EQ(app.helpFile, "/usr/share/help.csv");  // the chooser's choice is not undone
}

}  // namespace
