// Settings: defaults, the profile file's keys read and written, values the
// fields cannot hold, the recent files, the version lookups and the Linux path rule.
#include "app/app_soilbench.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "test_support.h"

namespace {

using namespace sb;

// Every setting on one line, so that a whole set of settings is compared at once.
std::string shown(const app_soilbench& a) {
    std::ostringstream s;
    s << a.runVisible << a.recordList << a.readBinaryOutput << a.keepRunFolders << " timeout=" << a.runTimeout
      << " version=" << a.version << " daily=" << a.saveDailyFirstYear << ".." << a.saveDailyLastYear
      << " jobs=" << a.jobs << " help=" << a.helpFile << " out=" << a.outputPath << " prefix=" << a.outputPrefix
      << " layouts=" << a.binaryLayouts << " wine=" << a.wineCommand << "," << a.winePrefix << " runs=" << a.runsFolder
      << " slurm=" << a.slurmFolder << " profiles=" << a.profileFolder << " outfiles=";
    for (int i = 0; i < kOutfileCount; ++i)
        if (a.outfileSelected[i]) s << i + 1 << ",";
    for (int v = 0; v < kVersionCount; ++v)
        s << "\n" << a.modelExecutables[v] << ";" << a.list100Executables[v] << ";" << a.releaseProfiles[v];
    return s.str();
}

TEST(AppSoilbench, DefaultsAndAMissingProfile) {
    app_soilbench app("/nonexistent/profile.ini");
    const std::string defaults = shown(app);
    EXPECT_EQ(defaults,
              "1100 timeout=250000 version=1 daily=1..1 jobs=1 help=SoilbenchHelp.csv out=c:\\TelluraOutput\\ "
              "prefix=sb layouts= wine=wine, runs= slurm= profiles= outfiles=11,14,15,16,18,28,\n"
              "tellura\\tellx.exe;tellura\\list100.exe;tellura4-agricultural\n"
              "tellura4C\\tellx.exe;tellura4C\\list100.exe;tellura4-original\n"
              ";;tellura45\n"
              ";;diurna45\n"
              ";;tellura46\n"
              "\\Program Files\\Tellura Model\\version5\\tellura.exe;;tellura5");
    app.loadSettings();  // a missing profile changes nothing
    EXPECT_EQ(shown(app), defaults);
}

TEST(AppSoilbench, ProfileRoundTripUnderTheKeysEarlierVersionsWrote) {
    sbtest::temp_dir dir;
    const std::string profile = dir.file("Soilbench.ini");
    app_soilbench app(profile);
    app.runVisible = app.recordList = false;
    app.readBinaryOutput = app.keepRunFolders = true;
    app.runTimeout = 5000000;
    app.version = 4;
    app.modelExecutables[3] = "C:\\Diurna\\dd45.exe";
    app.list100Executables[3] = "/opt/dd, with comma/list100";
    app.releaseProfiles[3] = "diurna-2008";
    app.outputPath = "/tmp/out/";
    app.outputPrefix = "zz";
    app.helpFile = "help file.csv";
    app.outfileSelected[0] = true;
    app.outfileSelected[10] = false;
    app.saveDailyFirstYear = 1990;
    app.saveDailyLastYear = -3;
    app.jobs = 2;
    app.binaryLayouts = "/a/one.tsv; /b/two.tsv;;";
    app.wineCommand = "wine64";
    app.winePrefix = "/w";
    app.runsFolder = "/runs";
    app.slurmFolder = "/shared";
    app.profileFolder = "/profiles";
    std::string errors;
    ASSERT_TRUE(app.saveSettings(errors)) << errors;
    const std::string text = sbtest::readFile(profile);
    // Profiles written by earlier versions are read by these key names (QSettings
    // percent-encodes blanks in keys and doubles backslashes in values).
    for (const char* line :
         {"[Settings]", "[Files]", "RunVisible=0", "TELLURAVersion=4", "RunTimeout=5000000", "Outfile1=1",
          "Outfile11=0", "Outfile12=0", "ReadBinaryOutput=1", "Jobs=2", "SaveDailyLastYear=-3",
          "Diurna%204.5=C:\\\\Diurna\\\\dd45.exe", "Tellura%204%20Agricultural%20LIST100=tellura\\\\list100.exe"})
        EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;

    app_soilbench back(profile);
    back.loadSettings();
    EXPECT_EQ(shown(back), shown(app));
    EXPECT_EQ(back.binaryLayoutFiles(), (std::vector<std::string>{"/a/one.tsv", "/b/two.tsv"}));
}

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

    // A directory where the file should be: not writable, even for root.
    std::filesystem::create_directory(dir.file("taken.ini"));
    app_soilbench nowhere(dir.file("taken.ini"));
    std::string errors;
    EXPECT_FALSE(nowhere.saveSettings(errors));
    EXPECT_EQ(errors, "ERROR, unable to save the settings to \"" + dir.file("taken.ini") + "\"\n");
}

TEST(AppSoilbench, RecentFilesKeepFourNewestFirstBesideTheSettings) {
    sbtest::temp_dir dir;
    sbtest::writeFile(dir.file("p.ini"), "[Recent%20File%20List]\nFile3=/stale.db\nFile4=/stale.db\n");
    app_soilbench app(dir.file("p.ini"));
    for (const char* path : {"/a.db", "/b.db", "/c.db", "/d.db", "/e.db", "/c.db"}) app.addRecentFile(path);
    EXPECT_EQ(app.recentFiles, (std::vector<std::string>{"/c.db", "/e.db", "/d.db", "/b.db"}));
    app.recentFiles.resize(2);
    std::string errors;
    ASSERT_TRUE(app.saveRecentFiles(errors)) << errors;
    ASSERT_TRUE(app.saveSettings(errors)) << errors;
    app_soilbench back(dir.file("p.ini"));
    back.loadRecentFiles();
    EXPECT_EQ(back.recentFiles, (std::vector<std::string>{"/c.db", "/e.db"}));
    const std::string text = sbtest::readFile(dir.file("p.ini"));
    EXPECT_NE(text.find("[Recent%20File%20List]\nFile1=/c.db\nFile2=/e.db\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("stale"), std::string::npos) << text;
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
