// The frame: the menus with and without a project, opening a project, record
// navigation and its messages, delete, copy and paste through the clipboard.
#include <algorithm>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QInputDialog>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QTableView>
#include <QtTest>

#include "app/app_soilbench.h"
#include "records/list_control_record_proxies.h"
#include "records/record_clipboard.h"
#include "ui/command_table.h"
#include "ui/control_record_table_model.h"
#include "ui/doc_soilbench.h"
#include "ui/main_window.h"
#include "ui/view_control_records.h"
#include "ui_test_support.h"

using namespace sb;
using namespace sbtest_ui;

namespace {

QStringList menuTitles(QMainWindow& w) {
    QStringList titles;
    for (QAction* a : w.menuBar()->actions()) titles << a->text();
    return titles;
}

// Every visible action of the File menu, in order.
QList<QAction*> fileMenu(QMainWindow& w) {
    QList<QAction*> shown;
    for (QAction* a : w.menuBar()->actions().first()->menu()->actions())
        if (!a->isSeparator() && !a->menu() && a->isVisible()) shown << a;
    return shown;
}

// The main window on a new project holding default records of the given IDs.
struct window_on_project {
    const QString path;
    app_soilbench settings;
    main_window w;
    window_on_project(const QString& project, const QString& profile, bool recordList = false)
        : path(project), settings(profile.toStdString()), w((settings.recordList = recordList, settings)) {}
    bool open(const std::vector<int32_t>& ids) { return makeProject(path, ids).empty() && w.openProject(path); }
};

}  // namespace

class test_ui_frame : public QObject {
    Q_OBJECT
    QTemporaryDir dir_;
    QString profile() const { return dir_.filePath("profile.ini"); }

private slots:
    void menusGrowWithAProjectAndItsRecentFileSurvivesARestart() {
        const QString path = dir_.filePath("full.sbproj");
        QCOMPARE(QString::fromStdString(makeProject(path, {1, 2})), QString());
        const std::string profilePath = dir_.filePath("recent.ini").toStdString();
        const QStringList shortMenu{"&File", "&View", "&Help"};
        {
            app_soilbench settings(profilePath);
            settings.recordList = false;
            main_window w(settings);
            w.loadProfile();
            QCOMPARE(w.windowTitle(), QStringLiteral("Soilbench2"));
            QCOMPARE(menuTitles(w), shortMenu);
            QVERIFY(w.recentFileLabels().isEmpty());
            QVERIFY(!w.action(command_id::runOne)->isEnabled());
            QVERIFY(
                std::none_of(fileMenu(w).begin(), fileMenu(w).end(), [](QAction* a) { return a->text() == "&Close"; }));
            QVERIFY(w.openProject(path));
            QCOMPARE(menuTitles(w),
                     (QStringList{"&File", "&Edit", "&View", "&Window", "&Record", "E&xecute", "&Help"}));
            QVERIFY(w.action(command_id::runOne)->isEnabled());
            // The recent-file entry of the project just opened sits above Exit.
            QCOMPARE(w.recentFileLabels(), QStringList{"&1 " + path});
            QCOMPARE(fileMenu(w).at(fileMenu(w).size() - 2)->text(), "&1 " + path);
            QCOMPARE(fileMenu(w).back()->text(), QStringLiteral("E&xit"));
            w.runCommand(command_id::fileClose);
            QCOMPARE(menuTitles(w), shortMenu);
            QVERIFY(!w.document());
            std::string errors;
            QVERIFY2(w.saveProfile(errors), errors.c_str());
        }
        app_soilbench settings(profilePath);
        main_window w(settings);
        w.loadProfile();
        QCOMPARE(w.recentFileLabels(), QStringList{"&1 " + path});
        fileMenu(w).at(fileMenu(w).size() - 2)->trigger();  // the entry opens its project
        QVERIFY(w.document());
    }

    void everyCommandOfTheTableHasOneHandler() {
        const auto handlers = main_window::commandHandlers();
        for (const command_def& c : commandTable())
            QVERIFY2(std::count_if(handlers.begin(), handlers.end(),
                                   [&](const main_window::command_handler& h) { return h.id == c.id; }) == 1,
                     c.label);
    }

    void aServerProjectIsOpenedByItsUrlAndItsPasswordNeverShown() {
        app_soilbench settings(profile().toStdString());
        main_window w(settings);
        const QString url = "postgresql://ann:secret@/soils?host=" + dir_.filePath("no-server");
        QString prompt, shown;
        onModals({[&](QWidget* m) {
                      auto* d = qobject_cast<QInputDialog*>(m);
                      prompt = d->windowTitle();
                      d->setTextValue(url);
                      d->accept();
                  },
                  answer(shown)});
        w.runCommand(command_id::fileOpenServer);
        QCOMPARE(prompt, QStringLiteral("Open PostgreSQL Project"));
        QVERIFY2(shown.startsWith("ERROR, unable to open database: postgresql://ann:****@/soils?host=" +
                                  dir_.filePath("no-server") + "\n"),
                 qPrintable(shown));
        QVERIFY2(!shown.contains("secret"), qPrintable(shown));
        QVERIFY(!w.document());
        QVERIFY(w.recentFileLabels().isEmpty());
    }

    void navigationMovesAndKeepsTheRecordOnFailure() {
        window_on_project p(dir_.filePath("nav.sbproj"), profile());
        QVERIFY(p.open({10, 20, 30}));
        main_window& w = p.w;
        doc_soilbench& doc = *w.document();
        QCOMPARE(doc.objectName(), QStringLiteral("Soilbench.Document"));
        QCOMPARE(w.recordView()->windowTitle(), QStringLiteral("Sbench - nav.sbproj"));
        QCOMPARE(doc.currentId(), 10);
        // Past either end the record stays, and there is nothing to report.
        const std::pair<command_id, int> moves[] = {{command_id::recordNext, 20},
                                                    {command_id::recordLast, 30},
                                                    {command_id::recordNext, 30},
                                                    {command_id::recordFirst, 10},
                                                    {command_id::recordPrevious, 10}};
        for (auto [command, id] : moves) {
            w.runCommand(command);
            QCOMPARE(doc.currentId(), id);
            QVERIFY(!QApplication::activeModalWidget());
        }
        // Goto takes a record number (offering 1), Goto ID an ID; an ID that is
        // not there says "Not found." and keeps the record.
        struct {
            command_id command;
            int typed;
            const char* prompt;
            int offered;  // -1: not checked
            const char* message;
            int id;
        } gotos[] = {{command_id::recordGoto, 3, "Which record number?", 1, "", 30},
                     {command_id::recordGotoId, 20, "Which ID?", -1, "", 20},
                     {command_id::recordGotoId, 25, "Which ID?", -1, "Not found.", 20}};
        for (const auto& g : gotos) {
            QString prompt, message;
            int offered = -1;
            std::vector<modal_handler> steps{typeNumber(g.typed, &prompt, &offered)};
            if (*g.message) steps.push_back(answer(message));
            onModals(steps);
            w.runCommand(g.command);
            QCOMPARE(prompt, QString(g.prompt));
            if (g.offered >= 0) QCOMPARE(offered, g.offered);
            QCOMPARE(message, QString(g.message));
            QCOMPARE(doc.currentId(), g.id);
            QCOMPARE(w.recordView()->table()->currentIndex().row(), doc.recordNumber() - 1);
        }
    }

    void recordZeroAndAnEmptyProjectAreShownAsTheyAre() {
        window_on_project p(dir_.filePath("zero.sbproj"), profile());
        QVERIFY(p.open({0, 3}));
        main_window& w = p.w;
        QCOMPARE(w.document()->records().rowCount(), 1);
        QCOMPARE(w.document()->currentId(), 0);
        w.runCommand(command_id::recordNext);
        QCOMPARE(w.document()->currentId(), 3);

        const QString empty = dir_.filePath("empty.sbproj");
        QCOMPARE(QString::fromStdString(makeProject(empty, {})), QString());
        QVERIFY(w.openProject(empty));
        QCOMPARE(w.document()->records().rowCount(), 0);
        QCOMPARE(w.document()->currentRow(), -1);
        w.runCommand(command_id::recordNext);  // nothing to move to, nothing to report
        w.runCommand(command_id::recordDelete);
        QVERIFY(!QApplication::activeModalWidget());
    }

    void deleteAsksWithTheIdAndRemovesOnYes() {
        window_on_project p(dir_.filePath("delete.sbproj"), profile());
        QVERIFY(p.open({5, 6, 7}));
        main_window& w = p.w;
        std::string errors;
        for (auto [button, rows] : {std::pair{"No", 3}, std::pair{"Yes", 2}}) {
            QVERIFY(w.document()->moveToId(6, errors));
            QString question;
            onNextModal(answer(question, button));
            w.runCommand(command_id::recordDelete);
            QCOMPARE(question, QStringLiteral("Delete record, ID = 6?"));
            w.document()->moveLast(errors);
            QCOMPARE(w.document()->records().rowCount(), rows);
        }
        QVERIFY(!w.document()->moveToId(6, errors));
        tellura_control_record gone;
        errors.clear();
        QVERIFY(!readControlRecord(w.document()->db(), 6, gone, errors));
    }

    void copyThenPasteUnderANewIdOrOverAnAnsweredOne() {
        window_on_project p(dir_.filePath("paste.sbproj"), profile());
        QVERIFY(p.open({1, 2}));
        main_window& w = p.w;
        std::string errors;
        w.document()->moveToId(2, errors);
        w.runCommand(command_id::editCopy);
        const QMimeData* data = QApplication::clipboard()->mimeData();
        QCOMPARE(data->data(record_clipboard::kMimeType), QByteArray("\x02\x00\x00\x00", 4));

        // Under a new ID (the copied one offered); onto a record the project holds
        // only when asked: No keeps it, Yes replaces it.
        struct {
            int typed;
            const char* answer;  // nullptr: not asked
            const char* description;
        } pastes[] = {{77, nullptr, "Record 2"}, {1, "No", "Record 1"}, {1, "Yes", "Record 2"}};
        for (const auto& c : pastes) {
            QString prompt, question;
            int offered = 0;
            std::vector<modal_handler> steps{typeNumber(c.typed, &prompt, &offered)};
            if (c.answer) steps.push_back(answer(question, c.answer));
            onModals(steps);
            w.runCommand(command_id::editPaste);
            QCOMPARE(prompt, QStringLiteral("Enter new ID #:"));
            QCOMPARE(offered, 2);
            QCOMPARE(question, c.answer ? QStringLiteral("Record ID = 1 exists. Replace it, with its outputs, by the "
                                                         "pasted record?")
                                        : QString());
            tellura_control_record pasted;
            QVERIFY(readControlRecord(w.document()->db(), c.typed, pasted, errors));
            QCOMPARE(QString::fromStdString(pasted.description()), QString(c.description));
            if (!c.answer) QCOMPARE(w.document()->currentId(), c.typed);
        }
    }

    void pasteOfABadClipboardItemReportsAndChangesNothing() {
        window_on_project p(dir_.filePath("badpaste.sbproj"), profile());
        QVERIFY(p.open({1}));
        auto* data = new QMimeData;
        data->setData(record_clipboard::kMimeType, QByteArray(8, '\1'));
        QApplication::clipboard()->setMimeData(data);
        QString title, text;
        onNextModal([&](QWidget* m) {
            title = m->windowTitle();
            answer(text)(m);
        });
        p.w.runCommand(command_id::editPaste);
        QCOMPARE(title, QStringLiteral("Errors"));
        QCOMPARE(text, QStringLiteral("Binary item size is invalid.\n"));
        QCOMPARE(p.w.document()->records().rowCount(), 1);
    }

    void errorsDialogShowsAndCopiesTheText() {
        dialog_errors d(QStringLiteral("Errors"), QStringLiteral("ERROR, one.\r\nWARNING, two.\r\n"));
        QCOMPARE(d.text(), QStringLiteral("ERROR, one.\nWARNING, two.\n"));
        QStringList buttons;
        for (auto* b : d.findChildren<QAbstractButton*>()) buttons << b->text();
        buttons.sort();
        QCOMPARE(buttons, (QStringList{"Cancel", "Copy Text", "OK"}));
        QVERIFY(pressButton(&d, "Copy Text"));
        QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("ERROR, one.\nWARNING, two.\n"));
    }

    void largeProjectOpensWithoutReadingEveryRecord() {
        // With the prebuilt list off, opening reads one record and the table
        // holds a page at most: the rest is read as the user scrolls.
        std::vector<int32_t> ids;
        for (int i = 1; i <= 1500; ++i) ids.push_back(i * 2);
        window_on_project p(dir_.filePath("large.sbproj"), profile());
        QVERIFY(p.open(ids));
        auto& model = p.w.document()->records();
        QVERIFY(model.rowCount() <= control_record_table_model::kPageSize + 1);
        QVERIFY(model.canFetchMore({}));
        std::string errors;
        QVERIFY(p.w.document()->moveToId(2000, errors));  // pages on until the ID turns up
        QCOMPARE(p.w.document()->recordNumber(), 1000);
        QVERIFY(p.w.document()->moveLast(errors));
        QCOMPARE(p.w.document()->currentId(), 3000);
        QCOMPARE(model.rowCount(), 1500);
    }

    void prebuiltListIsReadAfterTheFirstRecordShows() {
        std::vector<int32_t> ids;
        for (int i = 1; i <= 1234; ++i) ids.push_back(i);
        window_on_project p(dir_.filePath("prebuilt.sbproj"), profile(), true);
        QVERIFY(p.open(ids));
        QStringList scans;
        connect(p.w.document(), &doc_soilbench::scanning, this, [&](const QString& t) { scans << t; });
        auto& model = p.w.document()->records();
        QCOMPARE(p.w.document()->currentId(), 1);
        QVERIFY(model.rowCount() < 1234);  // the window is back before the list is read
        QTRY_COMPARE(model.rowCount(), 1234);
        QTRY_COMPARE(scans, (QStringList{"Scanning Records 500", "Scanning Records 1000", ""}));
        QVERIFY(model.complete());
    }
};

QTEST_MAIN(test_ui_frame)
#include "test_ui_frame.moc"
