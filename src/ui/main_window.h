#pragma once
// The frame: a multi-document window whose document is one project. Its
// menus come from the command table: the short menu while no project is
// open, the full one with a project. Every command that changes records
// shows the wait cursor, collects messages, shows them in the "Errors" list
// and tells every view to redraw.
#include <QMainWindow>
#include <array>
#include <span>
#include <functional>
#include <memory>
#include <string>

#include "app/message_sink.h"
#include "ui/command_table.h"

class QAction;
class QMdiArea;
class QMdiSubWindow;
class QLabel;
class QPrinter;

namespace sb {

class app_soilbench;
class doc_soilbench;
class view_control_records;
class view_output;
class run_feedback;

class main_window : public QMainWindow {
    Q_OBJECT
public:
    explicit main_window(app_soilbench& settings, QWidget* parent = nullptr);
    ~main_window() override;

    // The project file filter of the open and new dialogs. Projects are SQLite
    // files here; the extensions are ours, so the chooser offers them by name.
    static QString projectFileFilter();

    QAction* action(command_id id) const { return actions_[static_cast<size_t>(id)]; }
    // Runs a command as its menu item does.
    void runCommand(command_id id);
    // The window's handler of each command of the command table.
    struct command_handler {
        command_id id;
        void (*run)(main_window&);
    };
    static std::span<const command_handler> commandHandlers();

    bool openProject(const QString& path);
    bool newProject(const QString& path);
    void closeProject();
    doc_soilbench* document() const { return doc_.get(); }
    QMdiArea* mdiArea() const { return mdi_; }
    view_control_records* recordView() const;
    // Opens (or brings forward) the output view of a kind and returns it.
    view_output* showOutputView(int tableId);
    // Opens the current record's output view that has rows (annual, else
    // monthly, else daily); null when it has no stored output.
    view_output* showOutputViewWithData();
    // Recent-file entries as shown in the File menu.
    QStringList recentFileLabels() const;

    app_soilbench& settings() { return settings_; }
    // Start-up, once the window is shown: the recent-file list and every
    // setting from the user's profile.
    void loadProfile();
    // Exit: every setting and the recent-file list back into the profile;
    // false with a message when the profile cannot be written.
    bool saveProfile(message_sink& errors);

    // Title of the messages shown by the navigation commands.
    static constexpr const char* kNavigationTitle = "Cropbench Database";

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void createActions();
    void rebuildMenus();
    void rebuildToolBar();
    void updateStatus();
    void updateRecentFiles();
    void openRecent(int index);
    void addSubWindow(QWidget* view);

    // The pattern every record-changing command follows.
    void recordCommand(const QString& title, const std::function<void(message_sink&)>& work);
    void navigate(const std::function<bool(message_sink&)>& move);

    void fileNew();
    void fileOpen();
    void fileOpenServer();
    void importRunFiles();
    void importWeatherDaily();
    void importWeatherMonthly();
    void importSiteArchive();
    void exportSiteArchive();
    // A weather file chosen by the user, added to the current record's station's history.
    void importWeatherHistory(const QString& title, bool daily);
    void importMonthlyAverages();
    void copyOutputToInput();
    void configure();
    void diurnaOutputFiles();
    void printActive(bool preview);
    void printSetup();
    void copyRecord();
    void pasteRecord();
    // Before a record is written under an ID the project holds: asks whether to
    // replace that record by `replacement` ("pasted record"); false on No.
    bool confirmReplaceRecord(int32_t id, const QString& title, const QString& replacement);
    void editRecord();
    void noteHelpProblems();
    void editOptionList(int kind);
    void editSoils();
    void editWeatherStations();
    void gotoRecord();
    void gotoId();
    void deleteRecord();
    void runOneRecord();
    void runMultipleRecords();
    void readBinFile();
    void about();
    void showEvents();
    void newRecordWindow();
    void arrangeIcons();
    // Runs the work on a worker thread with the progress dialog up until it ends.
    void runInBackground(const std::function<void(run_feedback&)>& work);

    app_soilbench& settings_;
    std::unique_ptr<doc_soilbench> doc_;
    QMdiArea* mdi_;
    QLabel* recordLabel_;
    std::array<QAction*, static_cast<size_t>(command_id::count)> actions_{};
    std::array<QAction*, 4> recentActions_{};
    std::unique_ptr<QPrinter> printer_;
};

}  // namespace sb
