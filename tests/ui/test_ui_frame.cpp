// The frame: the menus with and without a project, opening a project, record
// navigation and its messages, delete, copy and paste through the clipboard.
#include <algorithm>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QInputDialog>
#include <QMdiArea>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTableView>
#include <QtTest>

#include "app/app_soilbench.h"
#include "records/list_control_record_proxies.h"
#include "records/record_clipboard.h"
#include "ui/command_table.h"
#include "ui/control_record_table_model.h"
#include "ui/dialog_errors.h"
#include "ui/doc_soilbench.h"
#include "ui/main_window.h"
#include "ui/view_control_records.h"
#include "ui_test_support.h"

using namespace sb;
using sbtest_ui::onNextModal;
using sbtest_ui::pressButton;

namespace {

QStringList menuTitles(QMainWindow& w) {
    QStringList titles;
    for (QAction* a : w.menuBar()->actions()) titles << a->text();
    return titles;
}

QMenu* menuNamed(QMainWindow& w, const QString& title) {
    for (QAction* a : w.menuBar()->actions())
        if (a->text() == title) return a->menu();
    return nullptr;
}

// Every action text in a menu and its sub-menus, in order.
QStringList labels(QMenu* menu) {
    QStringList out;
    for (QAction* a : menu->actions()) {
        if (a->isSeparator()) continue;
        if (a->menu()) out << labels(a->menu());
        else if (a->isVisible()) out << a->text();
    }
    return out;
}

// The main window on a new project holding default records of the given IDs.
struct window_on_project {
    const QString path;
    app_soilbench settings;
    main_window w;
    window_on_project(const QString& project, const QString& profile, bool recordList = false)
        : path(project), settings(profile.toStdString()), w((settings.recordList = recordList, settings)) {}
    bool open(const std::vector<int32_t>& ids) {
        return sbtest_ui::makeProject(path, ids).empty() && w.openProject(path);
    }
};

}  // namespace

class test_ui_frame : public QObject {
    Q_OBJECT
    QTemporaryDir dir_;
    QString profile() const { return dir_.filePath("profile.ini"); }

private slots:
    void menusGrowWithAProjectAndShrinkWhenItCloses() {
        app_soilbench settings(profile().toStdString());
        settings.recordList = false;
        main_window w(settings);
        QCOMPARE(w.windowTitle(), QStringLiteral("Soilbench2"));
        const QStringList shortMenu{"&File", "&View", "&Help"};
        QCOMPARE(menuTitles(w), shortMenu);
        QVERIFY(!labels(menuNamed(w, "&File")).contains("&Close"));
        QVERIFY(!w.action(command_id::runOne)->isEnabled());

        const QString path = dir_.filePath("full.sbproj");
        QCOMPARE(QString::fromStdString(sbtest_ui::makeProject(path, {1, 2})), QString());
        QVERIFY(w.openProject(path));
        QCOMPARE(menuTitles(w), (QStringList{"&File", "&Edit", "&View", "&Window", "&Record", "E&xecute", "&Help"}));
        QVERIFY(w.action(command_id::runOne)->isEnabled());
        // The recent-file entry of the project just opened sits above Exit.
        const QStringList file = labels(menuNamed(w, "&File"));
        QCOMPARE(w.recentFileLabels(), QStringList{"&1 " + path});
        QCOMPARE(file[file.size() - 2], "&1 " + path);
        QCOMPARE(file.back(), QStringLiteral("E&xit"));
        w.runCommand(command_id::fileClose);
        QCOMPARE(menuTitles(w), shortMenu);
        QVERIFY(!w.document());
    }

    void everyCommandOfTheTableHasOneHandler() {
        for (const command_def& c : commandTable()) {
            const auto handlers = main_window::commandHandlers();
            const auto count = std::count_if(handlers.begin(), handlers.end(),
                                             [&](const main_window::command_handler& h) { return h.id == c.id; });
            QVERIFY2(count == 1, c.label);
        }
    }

    void recentFilesSurviveARestart() {
        const QString path = dir_.filePath("recent.sbproj");
        QCOMPARE(QString::fromStdString(sbtest_ui::makeProject(path, {1})), QString());
        const std::string profilePath = dir_.filePath("recent.ini").toStdString();
        {
            app_soilbench settings(profilePath);
            main_window w(settings);
            w.loadProfile();
            QVERIFY(w.recentFileLabels().isEmpty());
            QVERIFY(w.openProject(path));
            w.closeProject();
            std::string errors;
            QVERIFY2(w.saveProfile(errors), errors.c_str());
        }
        app_soilbench settings(profilePath);
        main_window w(settings);
        w.loadProfile();
        QCOMPARE(w.recentFileLabels(), QStringList{"&1 " + path});
        // The entry opens its project.
        for (QAction* a : menuNamed(w, "&File")->actions())
            if (a->text() == "&1 " + path) a->trigger();
        QVERIFY(w.document());
    }

    void aServerProjectIsOpenedByItsUrlAndItsPasswordNeverShown() {
        app_soilbench settings(profile().toStdString());
        main_window w(settings);
        const QString url = "postgresql://ann:secret@/soils?host=" + dir_.filePath("no-server");
        QString prompt, shown;
        onNextModal([&](QWidget* m) {
            auto* d = qobject_cast<QInputDialog*>(m);
            prompt = d->windowTitle();
            d->setTextValue(url);
            d->accept();
            onNextModal([&](QWidget* box) {
                shown = qobject_cast<dialog_errors*>(box)->text();
                box->close();
            });
        });
        w.runCommand(command_id::fileOpenServer);
        QCOMPARE(prompt, QStringLiteral("Open PostgreSQL Project"));
        QVERIFY2(shown.startsWith("ERROR, unable to open database: postgresql://ann:****@/soils?host=" +
                                  dir_.filePath("no-server") + "\n"),
                 qPrintable(shown));
        QVERIFY2(!shown.contains("secret"), qPrintable(shown));
        QVERIFY(!w.document());
        QVERIFY(w.recentFileLabels().isEmpty());
    }

    void navigationMovesAndKeepsRecordOnFailure() {
        window_on_project p(dir_.filePath("nav.sbproj"), profile());
        QVERIFY(p.open({10, 20, 30}));
        main_window& w = p.w;
        doc_soilbench& doc = *w.document();
        QCOMPARE(doc.objectName(), QStringLiteral("Soilbench.Document"));
        QCOMPARE(w.recordView()->windowTitle(), QStringLiteral("Sbench - nav.sbproj"));
        QCOMPARE(doc.currentId(), 10);
        w.runCommand(command_id::recordNext);
        QCOMPARE(doc.currentId(), 20);
        w.runCommand(command_id::recordLast);
        QCOMPARE(doc.currentId(), 30);
        w.runCommand(command_id::recordNext);  // past the end: stays, and nothing to report
        QCOMPARE(doc.currentId(), 30);
        QVERIFY(!QApplication::activeModalWidget());
        w.runCommand(command_id::recordFirst);
        QCOMPARE(doc.currentId(), 10);
        w.runCommand(command_id::recordPrevious);
        QCOMPARE(doc.currentId(), 10);

        // Goto asks "Which record number?" starting at 1.
        QString prompt;
        int start = 0;
        onNextModal([&](QWidget* m) {
            auto* d = qobject_cast<QInputDialog*>(m);
            QVERIFY(d);
            prompt = d->labelText();
            start = d->intValue();
            d->setIntValue(3);
            d->accept();
        });
        w.runCommand(command_id::recordGoto);
        QCOMPARE(prompt, QStringLiteral("Which record number?"));
        QCOMPARE(start, 1);
        QCOMPARE(doc.currentId(), 30);
        QCOMPARE(doc.recordNumber(), 3);
        QVERIFY(w.recordView()->table()->currentIndex().row() == 2);

        // Goto ID finds a record by its ID ...
        onNextModal([&](QWidget* m) {
            auto* d = qobject_cast<QInputDialog*>(m);
            prompt = d->labelText();
            d->setIntValue(20);
            d->accept();
        });
        w.runCommand(command_id::recordGotoId);
        QCOMPARE(prompt, QStringLiteral("Which ID?"));
        QCOMPARE(doc.currentId(), 20);

        // ... and says "Not found." for an ID that is not there, keeping the record.
        QString message;
        onNextModal([&](QWidget* m) {
            qobject_cast<QInputDialog*>(m)->setIntValue(25);
            qobject_cast<QInputDialog*>(m)->accept();
            onNextModal([&](QWidget* box) {
                message = qobject_cast<QMessageBox*>(box)->text();
                qobject_cast<QMessageBox*>(box)->accept();
            });
        });
        w.runCommand(command_id::recordGotoId);
        QCOMPARE(message, QStringLiteral("Not found."));
        QCOMPARE(doc.currentId(), 20);
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
        QCOMPARE(QString::fromStdString(sbtest_ui::makeProject(empty, {})), QString());
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
        QVERIFY(w.document()->moveToId(6, errors));

        QString question;
        onNextModal([&](QWidget* m) {
            question = qobject_cast<QMessageBox*>(m)->text();
            QVERIFY(pressButton(m, "No"));
        });
        w.runCommand(command_id::recordDelete);
        QCOMPARE(question, QStringLiteral("Delete record, ID = 6?"));
        QCOMPARE(w.document()->records().rowCount(), 3);

        onNextModal([&](QWidget* m) { QVERIFY(pressButton(m, "Yes")); });
        w.runCommand(command_id::recordDelete);
        w.document()->moveLast(errors);
        QCOMPARE(w.document()->records().rowCount(), 2);
        QVERIFY(!w.document()->moveToId(6, errors));
        tellura_control_record gone;
        errors.clear();
        QVERIFY(!readControlRecord(w.document()->db(), 6, gone, errors));
    }

    void copyThenPasteUnderANewId() {
        window_on_project p(dir_.filePath("paste.sbproj"), profile());
        QVERIFY(p.open({1, 2}));
        main_window& w = p.w;
        std::string errors;
        w.document()->moveToId(2, errors);
        w.runCommand(command_id::editCopy);
        const QMimeData* data = QApplication::clipboard()->mimeData();
        QVERIFY(data->hasFormat(record_clipboard::kMimeType));
        QCOMPARE(data->data(record_clipboard::kMimeType), QByteArray("\x02\x00\x00\x00", 4));

        QString prompt;
        onNextModal([&](QWidget* m) {
            auto* d = qobject_cast<QInputDialog*>(m);
            prompt = d->labelText();
            QCOMPARE(d->intValue(), 2);
            d->setIntValue(77);
            d->accept();
        });
        w.runCommand(command_id::editPaste);
        QCOMPARE(prompt, QStringLiteral("Enter new ID #:"));
        QCOMPARE(w.document()->currentId(), 77);
        tellura_control_record pasted;
        QVERIFY(readControlRecord(w.document()->db(), 77, pasted, errors));
        QCOMPARE(QString::fromStdString(pasted.description()), QStringLiteral("Record 2"));

        // Onto a record the project holds: asked first; No keeps it, Yes replaces it.
        for (const char* answer : {"No", "Yes"}) {
            QString question;
            onNextModal([&](QWidget* m) {
                qobject_cast<QInputDialog*>(m)->setIntValue(1);
                qobject_cast<QInputDialog*>(m)->accept();
                onNextModal([&](QWidget* box) {
                    question = qobject_cast<QMessageBox*>(box)->text();
                    QVERIFY(sbtest_ui::pressButton(box, answer));
                });
            });
            w.runCommand(command_id::editPaste);
            QCOMPARE(question,
                     QStringLiteral("Record ID = 1 exists. Replace it, with its outputs, by the pasted record?"));
            QVERIFY(readControlRecord(w.document()->db(), 1, pasted, errors));
            QCOMPARE(QString::fromStdString(pasted.description()),
                     QString(answer) == "No" ? QStringLiteral("Record 1") : QStringLiteral("Record 2"));
        }
    }

    void pasteOfABadClipboardItemReportsAndChangesNothing() {
        window_on_project p(dir_.filePath("badpaste.sbproj"), profile());
        QVERIFY(p.open({1}));
        main_window& w = p.w;
        auto* data = new QMimeData;
        data->setData(record_clipboard::kMimeType, QByteArray(8, '\1'));
        QApplication::clipboard()->setMimeData(data);
        QString title, text;
        onNextModal([&](QWidget* m) {
            title = m->windowTitle();
            text = qobject_cast<dialog_errors*>(m)->text();
            m->close();
        });
        w.runCommand(command_id::editPaste);
        QCOMPARE(title, QStringLiteral("Errors"));
        QCOMPARE(text, QStringLiteral("Binary item size is invalid.\n"));
        QCOMPARE(w.document()->records().rowCount(), 1);
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
        main_window& w = p.w;
        auto& model = w.document()->records();
        QVERIFY(model.rowCount() <= control_record_table_model::kPageSize + 1);
        QVERIFY(model.canFetchMore({}));
        std::string errors;
        QVERIFY(w.document()->moveToId(2000, errors));  // pages on until the ID turns up
        QCOMPARE(w.document()->recordNumber(), 1000);
        QVERIFY(w.document()->moveLast(errors));
        QCOMPARE(w.document()->currentId(), 3000);
        QCOMPARE(model.rowCount(), 1500);
    }

    void prebuiltListIsReadAfterTheFirstRecordShows() {
        std::vector<int32_t> ids;
        for (int i = 1; i <= 1234; ++i) ids.push_back(i);
        window_on_project p(dir_.filePath("prebuilt.sbproj"), profile(), true);
        QVERIFY(p.open(ids));
        main_window& w = p.w;
        QStringList scans;
        connect(w.document(), &doc_soilbench::scanning, this, [&](const QString& t) { scans << t; });
        auto& model = w.document()->records();
        QCOMPARE(w.document()->currentId(), 1);
        QVERIFY(model.rowCount() < 1234);  // the window is back before the list is read
        QTRY_COMPARE(model.rowCount(), 1234);
        QTRY_COMPARE(scans, (QStringList{"Scanning Records 500", "Scanning Records 1000", ""}));
        QVERIFY(model.complete());
    }
};

QTEST_MAIN(test_ui_frame)
#include "test_ui_frame.moc"
