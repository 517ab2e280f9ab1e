#include "ui/main_window.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDateTime>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QKeySequence>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QStatusBar>
#include <QToolBar>

#include "app/app_soilbench.h"
#include "app/program_version.h"
#include "app/text_format.h"
#include "db/database.h"
#include "db/project_location.h"
#include "modeloutput/output_table_text.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/record_outputs.h"
#include "modeloutput/tellura_output.h"
#include "records/option_member.h"
#include "records/record_clipboard.h"
#include "records/record_ids.h"
#include "records/tellura_control_record.h"
#include "records/tellura_weather_station.h"
#include "ui/control_record_table_model.h"
#include "ui/dialog_configuration.h"
#include "ui/dialog_event_blocks.h"
#include "modelinput/run_files_import.h"
#include "ui/dialog_errors.h"
#include "ui/output_table_model.h"
#include "ui/doc_soilbench.h"
#include "ui/printable_view.h"
#include "ui/system_clipboard.h"
#include "ui/view_control_records.h"
#include "ui/view_events.h"
#include "ui/view_output.h"

namespace sb {
namespace {

QString actionText(const command_def& c) { return QString::fromLatin1(c.label).section('\t', 0, 0); }
QString shortcutText(const command_def& c) { return QString::fromLatin1(c.label).section('\t', 1, 1); }

}  // namespace

main_window::main_window(app_soilbench& settings, QWidget* parent) : QMainWindow(parent), settings_(settings) {
    setObjectName(QStringLiteral("main_window"));
    setWindowTitle(QStringLiteral("Soilbench2"));
    mdi_ = new QMdiArea(this);
    mdi_->setViewMode(QMdiArea::SubWindowView);
    setCentralWidget(mdi_);
    recordLabel_ = new QLabel(this);
    statusBar()->addPermanentWidget(recordLabel_);
    statusBar()->showMessage(QStringLiteral("Ready"));
    createActions();
    rebuildMenus();
    rebuildToolBar();
    resize(1100, 720);
}

main_window::~main_window() = default;

QString main_window::projectFileFilter() {
    // A project is one SQLite file; ".sbproj" is ours and ".db" is what other
    // SQLite tools write. The old "Access Database *.mdb" wording would offer
    // files this build cannot open, so it is not offered here.
    return QStringLiteral("Soilbench project (*.sbproj *.db);;All Files (*)");
}

void main_window::createActions() {
    for (const command_def& c : commandTable()) {
        auto* a = new QAction(actionText(c), this);
        a->setObjectName(QString::fromLatin1(c.label).section('\t', 0, 0));
        const QString shortcut = shortcutText(c);
        if (!shortcut.isEmpty()) a->setShortcut(QKeySequence(shortcut));
        const command_id id = c.id;
        connect(a, &QAction::triggered, this, [this, id] { runCommand(id); });
        actions_[static_cast<size_t>(id)] = a;
    }
    action(command_id::viewToolbar)->setCheckable(true);
    action(command_id::viewToolbar)->setChecked(true);
    action(command_id::viewStatusBar)->setCheckable(true);
    action(command_id::viewStatusBar)->setChecked(true);
    for (int i = 0; i < 4; ++i) {
        recentActions_[i] = new QAction(this);
        connect(recentActions_[i], &QAction::triggered, this, [this, i] { openRecent(i); });
    }
}

void main_window::rebuildMenus() {
    // The menu bar is rebuilt whole when a project opens or closes: the short
    // menu offers only what works without a project.
    auto* bar = new QMenuBar(this);
    const bool full = doc_ != nullptr;
    const auto titles = full ? fullMenuTitles() : shortMenuTitles();
    for (const char* title : titles) {
        QMenu* menu = bar->addMenu(QString::fromLatin1(title));
        QMenu* sub = nullptr;
        for (const command_def& c : commandTable()) {
            if (QString::fromLatin1(c.menu) != QString::fromLatin1(title)) continue;
            if (!full && !c.withoutDocument) continue;
            if (c.id == command_id::exit) {
                // "Recent File": the entries sit just above Exit.
                menu->addSeparator();
                for (QAction* r : recentActions_) menu->addAction(r);
                updateRecentFiles();
            }
            QMenu* target = menu;
            if (*c.submenu) {
                // A menu's commands of one sub-menu stand together in the table.
                if (!sub || sub->title() != QString::fromLatin1(c.submenu))
                    sub = menu->addMenu(QString::fromLatin1(c.submenu));
                target = sub;
            } else if (c.separatorBefore) {
                menu->addSeparator();
            }
            target->addAction(action(c.id));
        }
    }
    setMenuBar(bar);
}

void main_window::rebuildToolBar() {
    auto* tools = addToolBar(QStringLiteral("Standard"));
    tools->setObjectName(QStringLiteral("toolbar"));
    tools->setMovable(false);
    for (command_id id : {command_id::fileNew, command_id::fileOpen, command_id::editCopy, command_id::editPaste,
                          command_id::print, command_id::recordFirst, command_id::recordPrevious,
                          command_id::recordNext, command_id::recordLast, command_id::runOne, command_id::about})
        tools->addAction(action(id));
    connect(action(command_id::viewToolbar), &QAction::toggled, tools, &QToolBar::setVisible);
    connect(action(command_id::viewStatusBar), &QAction::toggled, statusBar(), &QStatusBar::setVisible);
    // Toolbar buttons of commands that need a project are greyed out without one.
    updateStatus();
}

void main_window::updateStatus() {
    const bool open = doc_ != nullptr;
    for (const command_def& c : commandTable())
        if (!c.withoutDocument) action(c.id)->setEnabled(open);
    if (!open) {
        recordLabel_->clear();
        return;
    }
    recordLabel_->setText(QStringLiteral("Record %1, ID = %2").arg(doc_->recordNumber()).arg(doc_->currentId()));
}

void main_window::updateRecentFiles() {
    const auto& files = settings_.recentFiles;
    for (int i = 0; i < 4; ++i) {
        const bool used = i < static_cast<int>(files.size());
        recentActions_[i]->setVisible(used);
        if (used) recentActions_[i]->setText(QStringLiteral("&%1 %2").arg(i + 1).arg(QString::fromStdString(files[i])));
    }
}

void main_window::loadProfile() {
    settings_.loadRecentFiles();
    settings_.loadSettings();
    updateRecentFiles();
}

bool main_window::saveProfile(message_sink& errors) {
    const bool saved = settings_.saveSettings(errors);
    return settings_.saveRecentFiles(errors) && saved;
}

QStringList main_window::recentFileLabels() const {
    QStringList labels;
    for (QAction* a : recentActions_)
        if (a->isVisible()) labels << a->text();
    return labels;
}

void main_window::openRecent(int index) {
    if (index < static_cast<int>(settings_.recentFiles.size()))
        openProject(QString::fromStdString(settings_.recentFiles[static_cast<size_t>(index)]));
}

bool main_window::openProject(const QString& path) {
    message_sink errors;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    auto doc = doc_soilbench::open(path, settings_.recordList, errors);
    QApplication::restoreOverrideCursor();
    if (!doc) {
        showErrorsIfAny(this, errors);
        return false;
    }
    closeProject();
    doc_ = std::move(doc);
    connect(doc_.get(), &doc_soilbench::currentChanged, this, &main_window::updateStatus);
    connect(doc_.get(), &doc_soilbench::scanning, this, [this](const QString& text) {
        if (text.isEmpty()) statusBar()->showMessage(QStringLiteral("Ready"));
        else statusBar()->showMessage(text);
    });
    // A password in a server URL is not kept in the profile: ~/.pgpass or PGPASSWORD give it next time.
    project_location location;
    std::string problem;
    project_location::parse(path.toStdString(), location, problem);
    settings_.addRecentFile(location.withoutPassword());
    rebuildMenus();
    addSubWindow(new view_control_records(*doc_));
    connect(recordView(), &view_control_records::editRequested, this, &main_window::editRecord);
    setWindowTitle(QStringLiteral("Soilbench2 - %1").arg(doc_->title()));
    updateStatus();
    showErrorsIfAny(this, errors);
    return true;
}

bool main_window::newProject(const QString& path) {
    message_sink errors;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    auto doc = doc_soilbench::create(path, settings_.recordList, errors);
    QApplication::restoreOverrideCursor();
    if (!doc) {
        showErrorsIfAny(this, errors);
        return false;
    }
    doc.reset();  // opened again the ordinary way, so both roads end alike
    const bool ok = openProject(path);
    showErrorsIfAny(this, errors);
    return ok;
}

void main_window::closeProject() {
    mdi_->closeAllSubWindows();
    for (QMdiSubWindow* w : mdi_->subWindowList()) delete w;
    doc_.reset();
    setWindowTitle(QStringLiteral("Soilbench2"));
    rebuildMenus();
    updateStatus();
}

void main_window::addSubWindow(QWidget* view) {
    QMdiSubWindow* w = mdi_->addSubWindow(view);
    w->setAttribute(Qt::WA_DeleteOnClose);
    w->resize(mdi_->size() * 0.8);
    w->show();
}

view_control_records* main_window::recordView() const {
    for (QMdiSubWindow* w : mdi_->subWindowList())
        if (auto* v = qobject_cast<view_control_records*>(w->widget())) return v;
    return nullptr;
}

view_output* main_window::showOutputView(int tableId) {
    if (!doc_) return nullptr;
    const auto table = static_cast<table_id>(tableId);
    for (QMdiSubWindow* w : mdi_->subWindowList()) {
        auto* v = qobject_cast<view_output*>(w->widget());
        if (v && v->model().table() == table) {
            mdi_->setActiveSubWindow(w);
            return v;
        }
    }
    auto* view = new view_output(*doc_, table);
    addSubWindow(view);
    return view;
}

view_output* main_window::showOutputViewWithData() {
    if (!doc_ || doc_->currentRow() < 0) return nullptr;
    tellura_outputs outputs;
    message_sink errors;
    if (!loadOutputs(doc_->db(), doc_->currentId(), outputs, errors)) return nullptr;
    if (!outputs.annual.empty()) return showOutputView(static_cast<int>(table_id::output_annual));
    if (outputs.monthlyCount() > 0) return showOutputView(static_cast<int>(table_id::output_monthly));
    if (!outputs.daily.empty()) return showOutputView(static_cast<int>(table_id::output_daily));
    return nullptr;
}

void main_window::recordCommand(const QString& title, const std::function<void(message_sink&)>& work) {
    message_sink errors;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    work(errors);
    QApplication::restoreOverrideCursor();
    showErrorsIfAny(this, errors, title);
    if (doc_) doc_->refreshAll();
}

void main_window::navigate(const std::function<bool(message_sink&)>& move) {
    if (!doc_) return;
    message_sink errors;
    move(errors);  // a failed move keeps the current record
    showErrorsIfAny(this, errors, QString::fromLatin1(kNavigationTitle));
    updateStatus();
}

// What each command does. The option lists are edited in the Edit menu's order.
std::span<const main_window::command_handler> main_window::commandHandlers() {
    static const command_handler handlers[] = {
        {command_id::fileNew, [](main_window& w) { w.fileNew(); }},
        {command_id::importRunFiles, [](main_window& w) { w.importRunFiles(); }},
        {command_id::importWeatherDaily, [](main_window& w) { w.importWeatherDaily(); }},
        {command_id::importWeatherMonthly, [](main_window& w) { w.importWeatherMonthly(); }},
        {command_id::importMonthlyAverages, [](main_window& w) { w.importMonthlyAverages(); }},
        {command_id::importEsa, [](main_window& w) { w.importSiteArchive(); }},
        {command_id::exportEsa, [](main_window& w) { w.exportSiteArchive(); }},
        {command_id::copyOutputToInput, [](main_window& w) { w.copyOutputToInput(); }},
        {command_id::fileOpen, [](main_window& w) { w.fileOpen(); }},
        {command_id::fileOpenServer, [](main_window& w) { w.fileOpenServer(); }},
        {command_id::fileClose, [](main_window& w) { w.closeProject(); }},
        {command_id::configuration, [](main_window& w) { w.configure(); }},
        {command_id::diurnaOutputFiles, [](main_window& w) { w.diurnaOutputFiles(); }},
        {command_id::print, [](main_window& w) { w.printActive(false); }},
        {command_id::printPreview, [](main_window& w) { w.printActive(true); }},
        {command_id::printSetup, [](main_window& w) { w.printSetup(); }},
        {command_id::exit, [](main_window& w) { w.close(); }},
        {command_id::editCopy, [](main_window& w) { w.copyRecord(); }},
        {command_id::editPaste, [](main_window& w) { w.pasteRecord(); }},
        {command_id::editRecord, [](main_window& w) { w.editRecord(); }},
        {command_id::editCrops, [](main_window& w) { w.editOptionList(static_cast<int>(option_kind::crop)); }},
        {command_id::editCultivation,
         [](main_window& w) { w.editOptionList(static_cast<int>(option_kind::cultivation)); }},
        {command_id::editFertilizers,
         [](main_window& w) { w.editOptionList(static_cast<int>(option_kind::fertilizer)); }},
        {command_id::editFires, [](main_window& w) { w.editOptionList(static_cast<int>(option_kind::fire)); }},
        {command_id::editOmad, [](main_window& w) { w.editOptionList(static_cast<int>(option_kind::omad)); }},
        {command_id::editGraze, [](main_window& w) { w.editOptionList(static_cast<int>(option_kind::graze)); }},
        {command_id::editHarvest, [](main_window& w) { w.editOptionList(static_cast<int>(option_kind::harvest)); }},
        {command_id::editIrrigation,
         [](main_window& w) { w.editOptionList(static_cast<int>(option_kind::irrigation)); }},
        {command_id::editTrees, [](main_window& w) { w.editOptionList(static_cast<int>(option_kind::tree)); }},
        {command_id::editTreeRemoval,
         [](main_window& w) { w.editOptionList(static_cast<int>(option_kind::tree_removal)); }},
        {command_id::editSoils, [](main_window& w) { w.editSoils(); }},
        {command_id::editWeatherStations, [](main_window& w) { w.editWeatherStations(); }},
        {command_id::viewEvents, [](main_window& w) { w.showEvents(); }},
        {command_id::viewAnnual, [](main_window& w) { w.showOutputView(static_cast<int>(table_id::output_annual)); }},
        {command_id::viewMonthly, [](main_window& w) { w.showOutputView(static_cast<int>(table_id::output_monthly)); }},
        {command_id::viewDaily, [](main_window& w) { w.showOutputView(static_cast<int>(table_id::output_daily)); }},
        {command_id::viewToolbar, [](main_window&) {}},    // toggled through the action
        {command_id::viewStatusBar, [](main_window&) {}},  // likewise
        {command_id::windowNew, [](main_window& w) { w.newRecordWindow(); }},
        {command_id::windowCascade, [](main_window& w) { w.mdi_->cascadeSubWindows(); }},
        {command_id::windowTile, [](main_window& w) { w.mdi_->tileSubWindows(); }},
        {command_id::windowArrange, [](main_window& w) { w.arrangeIcons(); }},
        {command_id::recordFirst,
         [](main_window& w) { w.navigate([&w](message_sink& e) { return w.doc_->moveFirst(e); }); }},
        {command_id::recordPrevious,
         [](main_window& w) { w.navigate([&w](message_sink& e) { return w.doc_->movePrevious(e); }); }},
        {command_id::recordNext,
         [](main_window& w) { w.navigate([&w](message_sink& e) { return w.doc_->moveNext(e); }); }},
        {command_id::recordLast,
         [](main_window& w) { w.navigate([&w](message_sink& e) { return w.doc_->moveLast(e); }); }},
        {command_id::recordGoto, [](main_window& w) { w.gotoRecord(); }},
        {command_id::recordGotoId, [](main_window& w) { w.gotoId(); }},
        {command_id::recordDelete, [](main_window& w) { w.deleteRecord(); }},
        {command_id::runOne, [](main_window& w) { w.runOneRecord(); }},
        {command_id::runMultiple, [](main_window& w) { w.runMultipleRecords(); }},
        {command_id::readBin, [](main_window& w) { w.readBinFile(); }},
        {command_id::about, [](main_window& w) { w.about(); }},
    };
    return handlers;
}

void main_window::runCommand(command_id id) {
    for (const command_handler& handler : commandHandlers())
        if (handler.id == id) return handler.run(*this);
}

void main_window::showEvents() {
    if (!doc_) return;
    auto* events = new view_events(*doc_);
    connect(events, &view_events::editRequested, this, [this] {
        if (doc_) editEventBlocks(*doc_, settings_.version, this);
    });
    addSubWindow(events);
}

void main_window::newRecordWindow() {
    if (doc_) addSubWindow(new view_control_records(*doc_));
}

void main_window::arrangeIcons() {
    for (QMdiSubWindow* w : mdi_->subWindowList())
        if (w->isMinimized()) w->showMinimized();  // re-lays the icons along the bottom
    mdi_->tileSubWindows();
}

void main_window::fileNew() {
    const QString path = QFileDialog::getSaveFileName(
        this, QStringLiteral("New %1").arg(QString::fromLatin1(doc_soilbench::kTypeDescription)),
        QStringLiteral("Soilbench.sbproj"), projectFileFilter());
    if (!path.isEmpty()) newProject(path);
}

void main_window::importRunFiles() {
    if (!doc_) return;
    // The schedule names the site and weather files; the run directory is its folder.
    const QString schedule = QFileDialog::getOpenFileName(this, QStringLiteral("Run Files"), QString(),
                                                          QStringLiteral("Schedule (*.sch *.evt);;All Files (*)"));
    if (schedule.isEmpty()) return;
    bool ok = false;
    const int newId = QInputDialog::getInt(
        this, QStringLiteral("Run Files"), QString::fromLatin1(record_clipboard::kNewIdPrompt),
        nextFreeRecordId(doc_->db()), std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max(), 1, &ok);
    if (!ok || !confirmReplaceRecord(newId, QStringLiteral("Run Files"), QStringLiteral("imported record"))) return;
    const QFileInfo info(schedule);
    recordCommand(QStringLiteral("Errors"), [&](message_sink& errors) {
        sb::importRunFiles(doc_->db(), info.absolutePath().toStdString() + "/", info.fileName().toStdString(),
                           settings_.version, newId, errors);
    });
    message_sink ignored;
    doc_->moveToId(newId, ignored);
}

void main_window::fileOpen() {
    const QString path = QFileDialog::getOpenFileName(
        this, QStringLiteral("Open %1").arg(QString::fromLatin1(doc_soilbench::kTypeDescription)), QString(),
        projectFileFilter());
    if (!path.isEmpty()) openProject(path);
}

void main_window::fileOpenServer() {
    bool ok = false;
    const QString url = QInputDialog::getText(
        this, QStringLiteral("Open PostgreSQL Project"),
        QStringLiteral("Project URL, postgresql://user@host:port/database\n"
                       "(the password from ~/.pgpass or PGPASSWORD, or written in after the user as user:password@):"),
        QLineEdit::Normal, QStringLiteral("postgresql://"), &ok);
    if (ok && !url.trimmed().isEmpty()) openProject(url.trimmed());
}

void main_window::configure() {
    dialog_configuration dialog(settings_, this);
    dialog.exec();
}

void main_window::printActive(bool preview) {
    QMdiSubWindow* w = mdi_->activeSubWindow();
    if (!w && !mdi_->subWindowList().isEmpty()) w = mdi_->subWindowList().first();
    auto* view = w ? dynamic_cast<printable_view*>(w->widget()) : nullptr;
    if (!view) return;
    if (!printer_) printer_ = std::make_unique<QPrinter>(QPrinter::HighResolution);
    if (preview) {
        QPrintPreviewDialog dialog(printer_.get(), this);
        connect(&dialog, &QPrintPreviewDialog::paintRequested, this, [view](QPrinter* p) { view->print(*p); });
        dialog.exec();
        return;
    }
    QPrintDialog dialog(printer_.get(), this);
    if (dialog.exec() == QDialog::Accepted) view->print(*printer_);
}

void main_window::printSetup() {
    if (!printer_) printer_ = std::make_unique<QPrinter>(QPrinter::HighResolution);
    QPageSetupDialog dialog(printer_.get(), this);
    dialog.exec();
}

void main_window::copyRecord() {
    if (!doc_ || doc_->currentRow() < 0) return;
    recordCommand(QStringLiteral("Errors"), [this](message_sink& errors) {
        tellura_control_record record;
        tellura_outputs outputs;
        if (!loadControlRecordWithOutputs(doc_->db(), doc_->currentId(), record, outputs, errors)) return;
        tellura_weather_stations stations;
        loadWeatherStations(doc_->db(), stations, errors);
        auto items = record_clipboard::makeItems(record, stations);
        appendAnnualOutputText(outputs, items.text);
        putRecordItems(*QApplication::clipboard(), items.idItem, items.text);
    });
}

void main_window::pasteRecord() {
    if (!doc_) return;
    message_sink errors;
    const auto idItem = takeRecordIdItem(*QApplication::clipboard());
    int32_t sourceId = 0;
    if (!record_clipboard::decodeId(idItem, sourceId, errors)) {
        showErrorsIfAny(this, errors);
        return;
    }
    bool ok = false;
    const int newId = QInputDialog::getInt(
        this, QStringLiteral("Paste"), QString::fromLatin1(record_clipboard::kNewIdPrompt), sourceId,
        std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max(), 1, &ok);
    if (!ok || !confirmReplaceRecord(newId, QStringLiteral("Paste"), QStringLiteral("pasted record"))) return;
    recordCommand(QStringLiteral("Errors"), [&](message_sink& e) { sb::pasteRecord(doc_->db(), idItem, newId, e); });
    message_sink ignored;
    doc_->moveToId(newId, ignored);
    updateStatus();
}

bool main_window::confirmReplaceRecord(int32_t id, const QString& title, const QString& replacement) {
    if (!controlRecordExists(doc_->db(), id)) return true;
    const QString question =
        QStringLiteral("Record ID = %1 exists. Replace it, with its outputs, by the %2?").arg(id).arg(replacement);
    return QMessageBox::question(this, title, question, QMessageBox::Yes | QMessageBox::No, QMessageBox::No) ==
           QMessageBox::Yes;
}

void main_window::gotoRecord() {
    if (!doc_) return;
    bool ok = false;
    const int n = QInputDialog::getInt(this, QStringLiteral("Goto"), QStringLiteral("Which record number?"), 1, 1,
                                       std::numeric_limits<int>::max(), 1, &ok);
    if (ok) navigate([this, n](message_sink& e) { return doc_->moveToNumber(n, e); });
}

void main_window::gotoId() {
    if (!doc_) return;
    bool ok = false;
    const int id =
        QInputDialog::getInt(this, QStringLiteral("Goto ID"), QStringLiteral("Which ID?"), 1,
                             std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max(), 1, &ok);
    if (!ok) return;
    message_sink errors;
    const bool found = doc_->moveToId(id, errors);
    showErrorsIfAny(this, errors, QString::fromLatin1(kNavigationTitle));
    if (!found && errors.empty())
        QMessageBox::information(this, QStringLiteral("Goto ID"), QStringLiteral("Not found."));
    updateStatus();
}

void main_window::deleteRecord() {
    if (!doc_ || doc_->currentRow() < 0) return;
    message_sink errors;
    tellura_control_record record;
    loadControlRecord(doc_->db(), doc_->currentId(), record, errors);
    const QString question =
        QString::fromStdString(strprintf("Delete record, ID = %ld?", static_cast<long>(doc_->currentId())));
    if (QMessageBox::question(this, QStringLiteral("Delete"), question, QMessageBox::Yes | QMessageBox::No,
                              QMessageBox::No) != QMessageBox::Yes)
        return;
    const int32_t id = doc_->currentId();
    recordCommand(QStringLiteral("Errors"), [&](message_sink& e) {
        e.add(errors);
        deleteControlRecord(doc_->db(), id, e);
    });
}

void main_window::about() {
    QMessageBox box(this);
    box.setWindowTitle(QStringLiteral("About Soilbench2"));
    box.setObjectName(QStringLiteral("about"));
    // The date shown is that of the sources, not of the build, so that every
    // build of one commit is the same program.
    const std::string date =
        programSourceDate().empty() ? "" : strprintf("Source Date: %s\n", programSourceDate().c_str());
    box.setText(
        QStringLiteral(
            "Soilbench2 version %1\n%2\nDrives the Tellura model family; the model is not part of this program.")
            .arg(QString::fromStdString(programVersion()), QString::fromStdString(date)));
    box.exec();
}

void main_window::closeEvent(QCloseEvent* event) {
    closeProject();
    event->accept();
}

}  // namespace sb
