// Settings: the profile file's keys read and written, values the fields cannot
// hold, the version lookups and the Linux path rule.
#include "app/app_soilbench.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "test_support.h"

namespace {

using namespace sb;

TEST(AppSoilbench, HandWrittenValuesTheFieldsCannotHoldKeepTheDefaults) {
    sbtest::temp_dir dir;
    sbtest::writeFile(dir.file("p.ini"),
                      "[Settings]\nRunVisible=0\nKeepRunFolders=7\nTELLURAVersion=6\nRunTimeout=-5\nOutfile1=-1\n"
                      "Outfile11=0\nJobs=0\nSaveDailyFirstYear=1990\nSaveDailyLastYear=abc\n"
                      "[Files]\nDiurna%204.5=/opt/diurna/dd\n");
    app_soilbench app(dir.file("p.ini"));
    app.loadSettings();
    EXPECT_FALSE(app.runVisible);
    EXPECT_TRUE(app.keepRunFolders);     // any nonzero number is true
    EXPECT_EQ(app.version, 6);           // kept although the dialog does not offer it
    EXPECT_EQ(app.runTimeout, 250000u);  // a negative timeout is not a timeout
    EXPECT_TRUE(app.outfileSelected[0]);
    EXPECT_FALSE(app.outfileSelected[10]);
    EXPECT_EQ(app.jobs, 1);
    EXPECT_EQ(app.saveDailyFirstYear, 1990);
    EXPECT_EQ(app.saveDailyLastYear, 1);
    EXPECT_EQ(app.modelExecutables[3], "/opt/diurna/dd");
    // Saved again under the keys earlier versions wrote (QSettings percent-encodes
    // blanks in keys and doubles backslashes in values).
    sb::message_sink errors;
    ASSERT_TRUE(app.saveSettings(errors)) << errors;
    const std::string text = sbtest::readFile(dir.file("p.ini"));
    for (const char* line : {"TELLURAVersion=6", "RunTimeout=250000", "Diurna%204.5=/opt/diurna/dd",
                             "Tellura%204%20Agricultural%20LIST100=tellura\\\\list100.exe"})
        EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;

    // A directory where the file should be: not writable, even for root.
    std::filesystem::create_directory(dir.file("taken.ini"));
    app_soilbench nowhere(dir.file("taken.ini"));
    EXPECT_FALSE(nowhere.saveSettings(errors));
    EXPECT_EQ(errors.text(), "ERROR, unable to save the settings to \"" + dir.file("taken.ini") + "\"\n");
}

TEST(AppSoilbench, VersionLookupsAndLinuxPaths) {
    const std::string here = std::filesystem::current_path().string();
    app_soilbench app;
    app.modelExecutables[3] = "/opt/diurna/./bin/dd45";
    // name | executable | list100 | executable on Linux | list100 on Linux | run folder
    const std::pair<int, std::string> cases[] = {
        {1, "Tellura 4 Agricultural|tellura\\tellx.exe|tellura\\list100.exe|" + here + "/tellura/tellx.exe|" + here +
                "/tellura/list100.exe|" + here + "/tellura/"},
        {2, "Tellura 4 Original|tellura4C\\tellx.exe|tellura4C\\list100.exe|" + here + "/tellura4C/tellx.exe|" + here +
                "/tellura4C/list100.exe|" + here + "/tellura4C/"},
        {4, "Diurna 4.5|/opt/diurna/./bin/dd45||/opt/diurna/bin/dd45||/opt/diurna/bin/"},
        {6,
         "Tellura 5|\\Program Files\\Tellura Model\\version5\\tellura.exe||/Program Files/Tellura "
         "Model/version5/tellura.exe||/Program Files/Tellura Model/version5/"},
        {0, "|||||"},
        {7, "|||||"},
        {-1, "|||||"},
        {32767, "|||||"},
    };
    for (const auto& [code, expected] : cases)
        EXPECT_EQ(app.versionName(code) + "|" + app.modelExecutable(code) + "|" + app.list100Executable(code) + "|" +
                      app.modelExecutablePath(code) + "|" + app.list100ExecutablePath(code) + "|" +
                      app.runDirectory(code),
                  expected)
            << code;
    EXPECT_EQ(localPath("c:\\TelluraOutput\\"), "/TelluraOutput/");
    EXPECT_EQ(localPath("D:run\\model"), here + "/run/model");
    EXPECT_EQ(localPath("c:"), "");
    EXPECT_EQ(directoryOf("/x/y/z"), "/x/y/");
    EXPECT_EQ(directoryOf("model"), "");
}

}  // namespace
