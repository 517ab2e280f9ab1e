// The frame: the menus with and without a project, opening a project, record
// navigation and its messages, delete, copy and paste through the clipboard;
// its imports and its commands on stored outputs, through their menus and
// dialogs: run files, monthly weather (menu and station editor), a site
// archive, a binary output file read whole, output values copied into the
// record's soil, and the output view that opens with data.

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QTableView>
#include <QtTest>

#include "app/app_soilbench.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/tellura_output.h"
#include "records/list_control_record_proxies.h"
#include "records/record_clipboard.h"
#include "records/record_ids.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"
#include "ui/command_table.h"
#include "ui/control_record_table_model.h"
#include "ui/dialog_weather_stations.h"
#include "ui/doc_soilbench.h"
#include "ui/main_window.h"
#include "ui/view_control_records.h"
#include "ui/view_output.h"
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

// Typed into the name field: selectFile() leaves a field that has the focus alone.
modal_handler chooseFile(const QString& path) {
    return [path](QWidget* m) {
        auto* name = m->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        QVERIFY(name);
        name->setText(path);
        static_cast<QDialog*>(m)->accept();
    };
}

void writeText(const QString& path, const QByteArray& text) {
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(text) == text.size());
}

}  // namespace

class test_ui_frame : public QObject {
    Q_OBJECT
    QTemporaryDir dir_;
    app_soilbench settings_{dir_.filePath("profile.ini").toStdString()};
    std::unique_ptr<main_window> w_;
    QString path_;

    QString profile() const { return dir_.filePath("profile.ini"); }

    // A new window on a new project file holding default records of these IDs
    // (each naming soil 1 and station 1).
    database& open(const std::vector<int32_t>& ids, bool recordList = false) {
        static int n = 0;
        path_ = dir_.filePath(QStringLiteral("p%1.sbproj").arg(++n));
        settings_.recordList = recordList;
        w_ = std::make_unique<main_window>(settings_);
        if (!makeProject(path_, ids).empty() || !w_->openProject(path_)) qFatal("no project %s", qPrintable(path_));
        return w_->document()->db();
    }

    // Runs the command answering its dialogs in turn; returns the report it ends with.
    QString run(command_id command, std::vector<modal_handler> steps) {
        QString report;
        steps.push_back(answer(report));
        onModals(steps);
        w_->runCommand(command);
        return report;
    }

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
            const QList<QAction*> before = fileMenu(w);  // begin and end of one list, not of two copies
            QVERIFY(std::none_of(before.begin(), before.end(), [](QAction* a) { return a->text() == "&Close"; }));
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
            sb::message_sink errors;
            QVERIFY2(w.saveProfile(errors), errors.text().c_str());
        }
        app_soilbench settings(profilePath);
        main_window w(settings);
        w.loadProfile();
        QCOMPARE(w.recentFileLabels(), QStringList{"&1 " + path});
        fileMenu(w).at(fileMenu(w).size() - 2)->trigger();  // the entry opens its project
        QVERIFY(w.document());
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
        open({10, 20, 30});
        main_window& w = *w_;
        doc_soilbench& doc = *w.document();
        QCOMPARE(w.recordView()->windowTitle(), "Sbench - " + QFileInfo(path_).fileName());
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
        open({0, 3});
        main_window& w = *w_;
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
        open({5, 6, 7});
        main_window& w = *w_;
        sb::message_sink errors;
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
        QVERIFY(!loadControlRecord(w.document()->db(), 6, gone, errors));
    }

    void copyThenPasteUnderANewIdOrOverAnAnsweredOne() {
        open({1, 2});
        main_window& w = *w_;
        sb::message_sink errors;
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
            QVERIFY(loadControlRecord(w.document()->db(), c.typed, pasted, errors));
            QCOMPARE(QString::fromStdString(pasted.description()), QString(c.description));
            if (!c.answer) QCOMPARE(w.document()->currentId(), c.typed);
        }
    }

    void pasteOfABadClipboardItemReportsAndChangesNothing() {
        open({1});
        auto* data = new QMimeData;
        data->setData(record_clipboard::kMimeType, QByteArray(8, '\1'));
        QApplication::clipboard()->setMimeData(data);
        QString title, text;
        onNextModal([&](QWidget* m) {
            title = m->windowTitle();
            answer(text)(m);
        });
        w_->runCommand(command_id::editPaste);
        QCOMPARE(title, QStringLiteral("Errors"));
        QCOMPARE(text, QStringLiteral("Binary item size is invalid.\n"));
        QCOMPARE(w_->document()->records().rowCount(), 1);
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

    void prebuiltListIsReadAfterTheFirstRecordShows() {
        std::vector<int32_t> ids;
        for (int i = 1; i <= 1234; ++i) ids.push_back(i);
        open(ids, true);
        QStringList scans;
        connect(w_->document(), &doc_soilbench::scanning, this, [&](const QString& t) { scans << t; });
        auto& model = w_->document()->records();
        QCOMPARE(w_->document()->currentId(), 1);
        QVERIFY(model.rowCount() < 1234);  // the window is back before the list is read
        QTRY_COMPARE(model.rowCount(), 1234);
        QTRY_COMPARE(scans, (QStringList{"Scanning Records 500", "Scanning Records 1000", ""}));
        QVERIFY(model.complete());
    }

    void runFilesProposeTheNextIdAndAskBeforeReplacing() {
        database& db = open({1, 2});
        settings_.version = kDiurna45;
        struct {
            int proposed, typed;  // typed 0 keeps the proposal
            const char* answer;   // to "replace?"; nullptr: not asked
            const char* description;
            int soil;  // an import's own, past the ones the records name
        } imports[] = {
            {3, 0, nullptr, "Demo cropland", 2}, {4, 2, "No", "Record 2", 1}, {4, 2, "Yes", "Demo cropland", 3}};
        for (const auto& i : imports) {
            int proposed = 0;
            QString question, report;
            std::vector<modal_handler> steps = {chooseFile(SB_SHARE_DIR "/demo/demo.sch"),
                                                typeNumber(i.typed ? i.typed : i.proposed, nullptr, &proposed)};
            if (i.answer) steps.push_back(answer(question, i.answer));
            if (!i.answer || QString(i.answer) == "Yes") steps.push_back(answer(report));
            onModals(steps);
            w_->runCommand(command_id::importRunFiles);
            QCOMPARE(proposed, i.proposed);
            QCOMPARE(question, i.answer ? "Record ID = 2 exists. Replace it, with its outputs, by the imported record?"
                                        : QString());
            tellura_control_record record;
            sb::message_sink errors;
            QVERIFY(loadControlRecord(db, i.typed ? i.typed : 3, record, errors));
            QCOMPARE(record.description(), std::string(i.description));
            QCOMPARE(record.soilId(), i.soil);
        }
    }

    void monthlyWeatherFromTheMenuAndTheStationEditor() {
        database& db = open({1});
        tellura_weather_station station;
        station.id = 1;
        sb::message_sink errors;
        QVERIFY(saveWeatherStation(db, station, errors));
        const QString file = dir_.filePath("monthly.wth");
        writeText(file, "prec 1990 1 2 3 4 5 6 7 8 9 10 11 12\ntmax 1990 5 6 7 8 9 10 11 12 13 14 15 16\n");
        const QString report = run(command_id::importWeatherMonthly, {chooseFile(file)});
        QVERIFY2(report.contains("Imported 12 records from"), qPrintable(report));
        QVERIFY(loadMonthlyHistory(db, station, errors));
        QCOMPARE(station.monthlyYear(1990).monthRecord(3).tmx2m, 7.0f);

        // The editor adds a year to the shown station; a bad file adds nothing; OK stores it.
        writeText(file, "prec 1991 1 1 1 1 1 1 1 1 1 1 1 1\nwind 1991 1\n");
        writeText(dir_.filePath("good.wth"), "prec 1992 1 1 1 1 1 1 1 1 1 1 1 1\n");
        tellura_weather_stations stations;
        QVERIFY(loadWeatherStations(db, stations, errors));
        dialog_weather_stations editor(stations, db);
        QVERIFY(!editor.importWeatherFile(file, false, errors));
        QVERIFY(editor.importWeatherFile(dir_.filePath("good.wth"), false, errors));
        QVERIFY(editor.save(db, errors));
        QVERIFY(loadMonthlyHistory(db, station, errors));
        QCOMPARE(station.monthly.size(), size_t(2));  // 1990 and 1992
    }

    void siteArchiveExportAndImportFromTheMenus() {
        database& from = open({1});
        const QString file = dir_.filePath("one.esa");
        auto exportRecord = [&] {
            return run(command_id::exportEsa, {[](QWidget* m) {
                                                   QCOMPARE(qobject_cast<QInputDialog*>(m)->textValue(), QString("1"));
                                                   static_cast<QDialog*>(m)->accept();
                                               },
                                               chooseFile(file)});
        };
        // The record names soil 1 and station 1, which the project lacks.
        QCOMPARE(exportRecord(),
                 QString("ERROR, record 1 names soil 1, which the project does not hold.\n"
                         "ERROR, record 1 names weather station 1, which the project does not hold.\n"));
        tellura_weather_station station;
        station.id = 1;
        tellura_soil soil;
        soil.setSoilId(1);
        sb::message_sink errors;
        QVERIFY(saveWeatherStation(from, station, errors) && saveSoil(from, soil, errors));
        QCOMPARE(exportRecord(), "Exported 1 record to \"" + file + "\".\n");
        open({1});
        QCOMPARE(run(command_id::importEsa, {chooseFile(file)}),
                 "record 1 -> 2\nsoil 1 -> 2\nweather station 1 -> 2\nImported 1 record from \"" + file + "\".\n");
        QVERIFY(controlRecordExists(w_->document()->db(), 2));
    }

    void readBinFileReadsEveryRecord() {
        open({1});
        writeText(dir_.filePath("small.tsv"), "block\tindex\tname\nplot1\t1\tsomsc\n");
        QByteArray bytes(1, char(75));  // one-byte markers: 75, then "8 data 8" per record, 130 at the end
        for (std::array<float, 2> record : {std::array<float, 2>{1990, 1}, {1991, 2}, {1992, 3}})
            bytes += char(8) + QByteArray(reinterpret_cast<const char*>(record.data()), 8) + char(8);
        writeText(dir_.filePath("small.bin"), bytes + char(130));
        settings_.binaryLayouts = dir_.filePath("small.tsv").toStdString();
        const QString report = run(command_id::readBin, {chooseFile(dir_.filePath("small.bin")),
                                                         [](QWidget* m) { pressButton(m, "Annual"); }});
        QVERIFY2(report.startsWith("3 records read, from years 1990 to 1992.\n3 annual and 0 monthly records read"),
                 qPrintable(report));
    }

    // The values copied are the core's to check; here the command reaches it and shows what it said.
    void copyOutputToInputFillsTheSoilLayers() {
        database& db = open({1});
        tellura_soil soil;
        soil.setSoilId(1);
        soil.layerCount = 1;
        tellura_outputs outputs;
        outputs.monthlyFor(1990, 12).setNumber("aglive(1)", 3.5);
        outputs.soilLayerFor(1).setNumber("Mineral N", 10.0);
        sb::message_sink errors;
        QVERIFY(saveSoil(db, soil, errors) && saveOutputs(db, 1, outputs, errors));
        QCOMPARE(
            run(command_id::copyOutputToInput, {}),
            QStringLiteral("Monthly copied for record.\nSoil 1 took the soil layers of the outputs of record 1.\n"));
    }

    void theOutputViewThatHasDataOpensWithVariablesThatHoldIt() {
        struct {
            bool annual, monthly;
            const char* title;  // nullptr: no view opens
            QStringList chosen;
        } cases[] = {
            {true, true, "Annual Output - ID 1", {"n2oflux", "ppt"}},  // as the year summary fills it
            {false, true, "Monthly Output - ID 1", {"aglivc", "somtc"}},
            {false, false, nullptr, {}},
        };
        for (const auto& c : cases) {
            database& db = open({1});
            tellura_outputs outputs;
            if (c.annual) {
                outputs.annualFor(1990).setNumber("n2oflux", 0.5);
                outputs.annualFor(1990).setNumber("ppt", 1);
            }
            if (c.monthly) outputs.monthlyFor(1990, 1).setNumber("somtc", 2000);
            sb::message_sink errors;
            QVERIFY(saveOutputs(db, 1, outputs, errors));
            view_output* view = w_->showOutputViewWithData();
            QCOMPARE(view ? view->windowTitle() : QString(), QString(c.title));
            if (view) QCOMPARE(view->chosenVariables(), c.chosen);
        }
    }
};

QTEST_MAIN(test_ui_frame)
#include "test_ui_frame.moc"
