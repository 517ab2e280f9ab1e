// Settings: defaults, every profile key in its order and section, the INI
// file round trip, the version lookups and the Linux path rule.
#include "app/app_soilbench.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "app/ini_settings_store.h"
#include "app/settings_store.h"
#include "test_support.h"

namespace {

using namespace sb;

// Serves reads from a map and keeps what is written in it.
class recording_store : public settings_store {
public:
    std::map<std::string, std::string> values;  // "Section/Key" -> text

    bool readInt(std::string_view section, std::string_view key, long long& value) override {
        auto it = values.find(full(section, key));
        if (it == values.end()) return false;
        value = std::stoll(it->second);
        return true;
    }
    bool readString(std::string_view section, std::string_view key, std::string& value) override {
        auto it = values.find(full(section, key));
        if (it == values.end()) return false;
        value = it->second;
        return true;
    }
    void writeInt(std::string_view section, std::string_view key, long long value) override {
        values[full(section, key)] = std::to_string(value);
    }
    void writeString(std::string_view section, std::string_view key, std::string_view value) override {
        values[full(section, key)] = std::string(value);
    }
    void remove(std::string_view section, std::string_view key) override { values.erase(full(section, key)); }
    bool flush(std::string&) override { return true; }

private:
    static std::string full(std::string_view section, std::string_view key) {
        return std::string(section) + "/" + std::string(key);
    }
};

TEST(AppSoilbench, FreshDefaults) {
    app_soilbench app("/nonexistent/profile.ini");
    EXPECT_TRUE(app.runVisible);
    EXPECT_TRUE(app.recordList);
    EXPECT_EQ(app.runTimeout, 250000u);
    EXPECT_EQ(app.version, 1);
    EXPECT_FALSE(app.readBinaryOutput);
    EXPECT_EQ(app.saveDailyFirstYear, 1);
    EXPECT_EQ(app.saveDailyLastYear, 1);
    EXPECT_EQ(app.helpFile, "SoilbenchHelp.csv");
    EXPECT_EQ(app.outputPath, "c:\\TelluraOutput\\");
    EXPECT_EQ(app.outputPrefix, "sb");
    EXPECT_EQ(app.jobs, 1);
    EXPECT_EQ(app.binaryLayouts, "");
    EXPECT_EQ(app.wineCommand, "wine");
    EXPECT_EQ(app.winePrefix, "");
    std::vector<int> selected;
    for (int i = 0; i < kOutfileCount; ++i)
        if (app.outfileSelected[i]) selected.push_back(i + 1);
    EXPECT_EQ(selected, (std::vector<int>{11, 14, 15, 16, 18, 28}));
    EXPECT_EQ(app.modelExecutables[0], "tellura\\tellx.exe");
    EXPECT_EQ(app.list100Executables[1], "tellura4C\\list100.exe");
    EXPECT_EQ(app.modelExecutables[5], "\\Program Files\\Tellura Model\\version5\\tellura.exe");
    EXPECT_EQ(app.list100Executables[5], "");
    EXPECT_EQ(app.modelExecutables[3], "");

    // A missing profile changes nothing.
    app.loadSettings();
    EXPECT_EQ(app.runTimeout, 250000u);
    EXPECT_EQ(app.version, 1);
}

TEST(AppSoilbench, LoadNormalisesAndKeepsDefaultsForBadValues) {
    recording_store store;
    store.values = {{"Settings/RunVisible", "0"},
                    {"Settings/RecordList", "7"},
                    {"Settings/TELLURAVersion", "6"},
                    {"Settings/RunTimeout", "-5"},
                    {"Settings/Outfile1", "-1"},
                    {"Settings/Outfile11", "0"},
                    {"Settings/Jobs", "0"},
                    {"Settings/SaveDailyFirstYear", "1990"},
                    {"Files/Diurna 4.5", "/opt/diurna/dd"}};
    app_soilbench app;
    app.loadSettings(store);
    EXPECT_FALSE(app.runVisible);
    EXPECT_TRUE(app.recordList);
    EXPECT_EQ(app.version, 6);           // kept although the dialog does not offer it
    EXPECT_EQ(app.runTimeout, 250000u);  // a negative timeout is not a timeout
    EXPECT_TRUE(app.outfileSelected[0]);
    EXPECT_FALSE(app.outfileSelected[10]);
    EXPECT_EQ(app.jobs, 1);
    EXPECT_EQ(app.saveDailyFirstYear, 1990);
    EXPECT_EQ(app.modelExecutables[3], "/opt/diurna/dd");
}

TEST(AppSoilbench, IniFileRoundTrip) {
    sbtest::temp_dir dir;
    std::string profile = dir.file("Soilbench.ini");
    app_soilbench app(profile);
    app.runVisible = false;
    app.runTimeout = 5000000;
    app.version = 4;
    app.modelExecutables[3] = "C:\\Diurna\\dd45.exe";
    app.list100Executables[3] = "/opt/dd, with comma/list100";
    app.outputPath = "/tmp/out/";
    app.helpFile = "help file.csv";
    app.outfileSelected[0] = true;
    app.saveDailyLastYear = -3;
    app.readBinaryOutput = true;
    app.jobs = 2;
    app.binaryLayouts = "/a/one.tsv; /b/two.tsv;;";
    std::string errors;
    ASSERT_TRUE(app.saveSettings(errors)) << errors;
    std::string text = sbtest::readFile(profile);
    // Profiles written by earlier versions are read by these key names (QSettings
    // percent-encodes blanks in keys and doubles backslashes in values).
    for (const char* line :
         {"[Settings]", "[Files]", "RunVisible=0", "TELLURAVersion=4", "RunTimeout=5000000", "Outfile1=1",
          "Outfile11=1", "Outfile12=0", "ReadBinaryOutput=1", "Jobs=2", "SaveDailyLastYear=-3",
          "Diurna%204.5=C:\\\\Diurna\\\\dd45.exe", "Tellura%204%20Agricultural%20LIST100=tellura\\\\list100.exe"})
        EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;

    app_soilbench back(profile);
    back.loadSettings();
    EXPECT_FALSE(back.runVisible);
    EXPECT_EQ(back.runTimeout, 5000000u);
    EXPECT_EQ(back.version, 4);
    EXPECT_EQ(back.modelExecutables[3], "C:\\Diurna\\dd45.exe");
    EXPECT_EQ(back.list100Executables[3], "/opt/dd, with comma/list100");
    EXPECT_EQ(back.outputPath, "/tmp/out/");
    EXPECT_EQ(back.helpFile, "help file.csv");
    EXPECT_TRUE(back.outfileSelected[0]);
    EXPECT_EQ(back.saveDailyLastYear, -3);
    EXPECT_TRUE(back.readBinaryOutput);
    EXPECT_EQ(back.jobs, 2);
    EXPECT_EQ(back.binaryLayoutFiles(), (std::vector<std::string>{"/a/one.tsv", "/b/two.tsv"}));
}

TEST(AppSoilbench, HandWrittenProfileAndUnwritableProfile) {
    sbtest::temp_dir dir;
    sbtest::writeFile(dir.file("p.ini"), "[Settings]\nTELLURAVersion=6\nRunTimeout=abc\nRecordList=0\n");
    app_soilbench app(dir.file("p.ini"));
    app.loadSettings();
    EXPECT_EQ(app.version, 6);
    EXPECT_EQ(app.runTimeout, 250000u);
    EXPECT_FALSE(app.recordList);

    // A directory where the file should be: not writable, even for root.
    std::filesystem::create_directory(dir.file("taken.ini"));
    app_soilbench nowhere(dir.file("taken.ini"));
    std::string errors;
    EXPECT_FALSE(nowhere.saveSettings(errors));
    EXPECT_EQ(errors, "ERROR, unable to save the settings to \"" + dir.file("taken.ini") + "\"\n");
}

TEST(AppSoilbench, RecentFilesKeepFourNewestFirst) {
    app_soilbench app;
    for (const char* path : {"/a.db", "/b.db", "/c.db", "/d.db", "/e.db", "/c.db"}) app.addRecentFile(path);
    EXPECT_EQ(app.recentFiles, (std::vector<std::string>{"/c.db", "/e.db", "/d.db", "/b.db"}));
    recording_store store;
    store.values["Recent File List/File4"] = "stale";
    app.recentFiles.resize(2);
    app.saveRecentFiles(store);
    EXPECT_EQ(store.values["Recent File List/File1"], "/c.db");
    EXPECT_EQ(store.values["Recent File List/File2"], "/e.db");
    EXPECT_EQ(store.values.count("Recent File List/File4"), 0u);
    app_soilbench back;
    back.loadRecentFiles(store);
    EXPECT_EQ(back.recentFiles, (std::vector<std::string>{"/c.db", "/e.db"}));

    // Through the profile file, beside the settings.
    sbtest::temp_dir dir;
    app_soilbench withFile(dir.file("p.ini"));
    withFile.addRecentFile("/projects/one.sbproj");
    std::string errors;
    ASSERT_TRUE(withFile.saveRecentFiles(errors)) << errors;
    ASSERT_TRUE(withFile.saveSettings(errors)) << errors;
    app_soilbench reread(dir.file("p.ini"));
    reread.loadRecentFiles();
    EXPECT_EQ(reread.recentFiles, (std::vector<std::string>{"/projects/one.sbproj"}));
    EXPECT_NE(sbtest::readFile(dir.file("p.ini")).find("[Recent%20File%20List]"), std::string::npos);
}

TEST(AppSoilbench, VersionLookupsSelectNothingOutside1To6) {
    app_soilbench app;
    EXPECT_EQ(app.versionName(4), "Diurna 4.5");
    EXPECT_EQ(app.versionName(6), "Tellura 5");
    EXPECT_EQ(app.modelExecutable(2), "tellura4C\\tellx.exe");
    EXPECT_EQ(app.list100Executable(1), "tellura\\list100.exe");
    for (int code : {0, 7, -1, 32767}) {
        EXPECT_EQ(app.versionName(code), "");
        EXPECT_EQ(app.modelExecutable(code), "");
        EXPECT_EQ(app.list100Executable(code), "");
        EXPECT_EQ(app.runDirectory(code), "");
    }
}

TEST(AppSoilbench, LinuxPathsAndRunDirectories) {
    std::string here = std::filesystem::current_path().string();
    app_soilbench app;
    EXPECT_EQ(app.modelExecutablePath(1), here + "/tellura/tellx.exe");
    EXPECT_EQ(app.runDirectory(1), here + "/tellura/");
    EXPECT_EQ(app.list100ExecutablePath(2), here + "/tellura4C/list100.exe");
    EXPECT_EQ(app.modelExecutablePath(6), "/Program Files/Tellura Model/version5/tellura.exe");
    EXPECT_EQ(app.runDirectory(6), "/Program Files/Tellura Model/version5/");
    EXPECT_EQ(app.modelExecutablePath(3), "");
    EXPECT_EQ(app.runDirectory(3), "");
    app.modelExecutables[3] = "/opt/diurna/./bin/dd45";
    EXPECT_EQ(app.runDirectory(4), "/opt/diurna/bin/");
    EXPECT_EQ(localPath("c:\\TelluraOutput\\"), "/TelluraOutput/");
    EXPECT_EQ(localPath("D:run\\model"), here + "/run/model");
    EXPECT_EQ(localPath("model"), here + "/model");
    EXPECT_EQ(directoryOf("/x/y/z"), "/x/y/");
    EXPECT_EQ(directoryOf(""), "");
}

}  // namespace
