// The Configuration dialog's logic: what it lists, what OK and Cancel change.
#include "app/configuration_form.h"

#include <gtest/gtest.h>

namespace {

using namespace sb;

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
        sb::message_sink errors;
        EXPECT_FALSE(form.accept(errors)) << input.first;
        EXPECT_EQ(errors.text(), message);
        EXPECT_TRUE(app.recordList);  // nothing was copied
        EXPECT_EQ(app.winePrefix, "");
    }
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
