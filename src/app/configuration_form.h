#pragma once
// What the "Configuration" dialog shows and does, without any widget: the
// desktop dialog only mirrors this object.
//
// - The version drop-down and the executable locations list offer versions 1
//   to 5. Version 6 ("Tellura 5") is never offered; it can be chosen only by
//   editing the profile. When the current version is not offered, the
//   drop-down starts on its first entry, so what the user sees is what OK
//   stores.
// - Two location rows per version: "%s executable" and "%s LIST100 executable";
//   the rows of the version selected in the drop-down are marked.
// - Editing a row's path changes that version's executable field at once;
//   Cancel puts back the paths the dialog opened with.
// - Choosing a help file (filter "*.mdb") sets the help file at once; Cancel
//   does not undo that.
// - "Release profile:" lists the release profiles of the version selected in
//   the drop-down (name and title); each version keeps its own choice while
//   the dialog is open. A version whose profile is not among them shows it
//   first, so what the user sees is what OK stores.
// - OK copies version, binary output, output prefix and path, record list,
//   visible console, run timeout, Wine command and Wine prefix, the runs folder
//   and whether good runs' folders are kept, and every version's release
//   profile back; Cancel changes none of them. A run
//   timeout that is not an integer from 0 to 5000000 refuses OK.
#include <array>
#include <string>
#include <vector>

#include "app/app_soilbench.h"
#include "app/message_sink.h"
#include "app/release_profile_catalogue.h"

namespace sb {

// The dialog's labels, in tab order.
inline constexpr const char* kConfigurationLabels[] = {
    "Prebuild Control Record List",
    "Run TELLURA in visible console",
    "Run timeout, milliseconds:",
    "Help file location:",
    "Edit",
    "Save Diurna output files to:",
    "Save output path:",
    "Save output prefix:",
    "TELLURA executable version:",
    "TELLURA executable locations:",
    "Edit",
    "Release profile:",
    "Read binary output (doesn't work for Daily runs)",
    "Wine command (.exe builds):",
    "Wine prefix directory:",
    "Run folders:",
    "Keep the folders of good runs",
    "OK",
    "Cancel",
};

class configuration_form {
public:
    static constexpr int kOfferedVersions = 5;
    static constexpr const char* kTitle = "Configuration";
    static constexpr const char* kHelpFileFilter = "*.mdb";

    struct location_row {
        std::string label;  // "Tellura 4.5 executable", "Tellura 4.5 LIST100 executable"
        int code;           // version code, 1..5
        bool list100;       // the LIST100 row of the version
        bool marked;        // belongs to the version selected in the drop-down
    };

    // `profiles` offers the release profiles; none when it is null.
    explicit configuration_form(app_soilbench& settings, const release_profile_catalogue* profiles = nullptr);

    // The drop-down: display names of versions 1..5.
    const std::vector<std::string>& versionChoices() const { return versionChoices_; }
    int selectedVersionIndex() const { return selectedIndex_; }
    // Selects a drop-down entry and re-marks the location rows; an index
    // outside the list is ignored.
    void selectVersion(int index);

    // The release profiles of the version selected in the drop-down: "name: title".
    const std::vector<std::string>& profileChoices() const { return profileChoices_; }
    int selectedProfileIndex() const { return selectedProfile_; }
    // Chooses that version's profile; an index outside the list is ignored.
    void selectProfile(int index);
    // The profile chosen for a version code ("" outside 1..6).
    std::string chosenProfile(int code) const;

    const std::vector<location_row>& locationRows() const { return rows_; }
    // The path a row is bound to ("" for a row number outside the list).
    std::string rowPath(int row) const;
    // The list's "Edit" button: the new path lands in the row's version field.
    void editRowPath(int row, const std::string& path);

    // The help file "Edit" button's chooser accepted `path`.
    void chooseHelpFile(const std::string& path);
    const std::string& helpFileText() const { return helpFileText_; }

    // The editable controls, filled from the settings.
    bool recordList;
    bool runVisible;
    std::string runTimeoutText;
    std::string outputPath;
    std::string outputPrefix;
    bool readBinaryOutput;
    std::string wineCommand;
    std::string winePrefix;  // "": the default prefix
    std::string runsFolder;  // "": the default runs folder
    bool keepRunFolders;

    // False, with the validation message in `errors`, when the dialog must
    // stay open (a bad run timeout; an empty Wine command); otherwise the
    // settings take the dialog's values.
    bool accept(message_sink& errors);
    void cancel();

private:
    std::string& rowField(const location_row& row) const;
    void markRows();
    void listProfiles();

    app_soilbench& settings_;
    std::vector<std::string> versionChoices_;
    std::vector<location_row> rows_;
    int selectedIndex_ = 0;
    std::string helpFileText_;
    std::array<std::string, kVersionCount> openedModelPaths_;
    std::array<std::string, kVersionCount> openedList100Paths_;
    const release_profile_catalogue* profiles_;
    std::array<std::string, kVersionCount> chosenProfiles_;
    std::vector<std::string> profileChoices_;
    std::vector<std::string> profileNames_;  // the names behind profileChoices_
    int selectedProfile_ = 0;
};

// The run timeout as typed: true with the value when it is an integer from 0
// to 5000000 (blanks around it allowed).
bool parseRunTimeout(const std::string& text, uint32_t& timeout);

}  // namespace sb
