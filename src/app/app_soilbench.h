#pragma once
// The application object: every application-wide setting, read from the
// user's profile once at start-up and written back at exit.
//
// Profile (see ini_settings_store.h for where it lives), section "Settings":
//   RunVisible, RecordList, RunTimeout, TELLURAVersion, Outfile1..Outfile28,
//   SaveDailyFirstYear, SaveDailyLastYear, ReadBinaryOutput, Jobs, KeepRunFolders
// section "Files":
//   one key per version named after it ("Tellura 4 Agricultural", ...), the same
//   followed by " LIST100", the same followed by " PROFILE" (the release
//   profile the version's executable is driven with), TelluraHelp, OutputPath,
//   OutputPrefix, BinaryLayouts, WineCommand, WinePrefix, RunsFolder, SlurmFolder,
//   ProfileFolder
// section "Recent File List": File1..File4.
// Booleans are stored as 0 or 1; any nonzero integer reads as true.
//
// Executable paths on Linux. The defaults are Windows-style paths as the
// releases ship them ("tellura\tellx.exe"). A configured path is used as
// follows (localPath):
//   - every backslash becomes '/';
//   - a leading drive letter ("c:") is dropped, so "c:\x\" means "/x/";
//   - a path that is still relative is resolved against the process's current
//     directory at the time of use;
//   - an empty path stays empty (the run then fails to start, with the
//     process-start message).
// The run directory of a version is the directory part of its resolved
// executable path, ending in '/' (empty when the path is empty).
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "app/message_sink.h"
#include "app/model_version.h"

namespace sb {

class settings_store;

constexpr int kOutfileCount = 28;
constexpr int kRecentFileCount = 4;
constexpr uint32_t kMaxRunTimeout = 5000000;

class app_soilbench {
public:
    // Every field at its default; the profile is the user's own.
    app_soilbench();
    // Every field at its default; the profile is the INI file at `profilePath`.
    explicit app_soilbench(std::string profilePath);

    // Declaration order as the settings are documented.
    bool runVisible = true;
    bool recordList = true;
    uint32_t runTimeout = 250000;  // milliseconds
    std::array<std::string, kVersionCount> modelExecutables;
    std::array<std::string, kVersionCount> list100Executables;
    std::string outputPath = "c:\\TelluraOutput\\";
    std::string outputPrefix = "sb";
    std::string helpFile = "SoilbenchHelp.csv";
    int16_t version = kTellura4Agricultural;
    bool readBinaryOutput = false;
    std::array<bool, kOutfileCount> outfileSelected{};
    int32_t saveDailyFirstYear = 1;
    int32_t saveDailyLastYear = 1;
    // Ours: how many records a multiple run runs at once (1 or more).
    int32_t jobs = 1;
    // Ours: extra binary-layout files of the user's own model builds, ';'-separated.
    std::string binaryLayouts;
    // Ours: Windows builds (executables ending in ".exe") run through Wine: the
    // Wine program ("wine" also finds "wine64") and its prefix directory ("":
    // "~/.local/share/soilbench/wine").
    std::string wineCommand = "wine";
    std::string winePrefix;
    // Ours: every record runs in a folder of its own under this one ("":
    // "~/.local/share/soilbench/runs"). A good run's folder is removed once its
    // outputs are stored, unless keepRunFolders is set; other runs' folders stay.
    std::string runsFolder;
    bool keepRunFolders = false;
    // Ours: where runs through Slurm write their run folders; every node must see it.
    std::string slurmFolder;
    // Ours: per version, the name of the release profile its executable is
    // driven with (by default the profile of the files as Soilbench writes them).
    std::array<std::string, kVersionCount> releaseProfiles;
    // Ours: the folder of the user's own release profiles; "" means
    // ~/.local/share/soilbench/profiles.
    std::string profileFolder;
    // Most recently used project files, newest first, at most 4.
    std::vector<std::string> recentFiles;

    // "" means the user's profile.
    const std::string& profilePath() const { return profilePath_; }

    // Reads every key, the current value being the default of a missing one.
    void loadSettings();
    void loadSettings(settings_store& store);
    // Writes every key. False with a message when the profile cannot be written.
    bool saveSettings(message_sink& errors);
    void saveSettings(settings_store& store) const;

    // The recent-file list of the profile, section "Recent File List".
    void loadRecentFiles();
    bool saveRecentFiles(message_sink& errors);
    void loadRecentFiles(settings_store& store);
    void saveRecentFiles(settings_store& store) const;
    // Moves (or puts) the path at the top of the list, keeping 4.
    void addRecentFile(const std::string& path);

    // Codes outside 1..6 select nothing: "".
    std::string versionName(int code) const;
    std::string modelExecutable(int code) const;
    std::string list100Executable(int code) const;
    // As configured, made usable on Linux (see above).
    std::string modelExecutablePath(int code) const;
    std::string list100ExecutablePath(int code) const;
    std::string runDirectory(int code) const;

    // Codes outside 1..6 select nothing: "".
    std::string releaseProfile(int code) const;
    // The profile folder as configured, or the default one.
    std::string userProfileFolder() const;

    // The binaryLayouts setting split at ';', blanks trimmed, empties dropped.
    std::vector<std::string> binaryLayoutFiles() const;

private:
    // Runs `use` on the profile store this object is pointed at.
    template <class Use>
    auto withProfile(Use use);

    std::string profilePath_;
};

// A configured (possibly Windows-style) path as a Linux path; see above.
std::string localPath(const std::string& configured);
// The directory part of a path, ending in '/'; "" for "".
std::string directoryOf(const std::string& path);

}  // namespace sb
