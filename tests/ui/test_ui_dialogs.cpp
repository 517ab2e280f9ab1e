// The dialogs on their own: the configuration rules, the run set's filter and
// close question, the Run dialog's lists and version rules, progress and Cancel
// of background work, the Diurna file list, the record property sheet and the
// field help it shows. The editing commands of the frame end to end: option
// lists edited, exported and saved whole with their members' error titles,
// weather stations and soils written back, the record property sheet saved,
// and the About box.
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableWidget>
#include <QtTest>
#include <atomic>
#include <thread>

#include "app/app_soilbench.h"
#include "help/help_tables.h"
#include "records/option_list.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"
#include "ui/background_run.h"
#include "ui/command_table.h"
#include "ui/dialog_configuration.h"
#include "ui/dialog_diurna_output_files.h"
#include "ui/dialog_option_list.h"
#include "ui/dialog_progress.h"
#include "ui/dialog_run.h"
#include "ui/dialog_run_set.h"
#include "ui/dialog_soil_editor.h"
#include "ui/dialog_weather_stations.h"
#include "ui/doc_soilbench.h"
#include "ui/field_help_source.h"
#include "ui/main_window.h"
#include "ui/propsheet_control_record.h"
#include "ui_test_support.h"

using namespace sb;
using namespace sbtest_ui;

namespace {

field_help_lookup echoHelp() {
    return {[](const std::string& name) { return QStringLiteral("help of ") + QString::fromStdString(name); },
            [](const std::string& name) { return QStringLiteral("about ") + QString::fromStdString(name); }};
}

}  // namespace

class test_ui_dialogs : public QObject {
    Q_OBJECT
    QTemporaryDir dir_;
    std::unique_ptr<app_soilbench> settings_;
    std::unique_ptr<main_window> window_;

    database& db() { return window_->document()->db(); }

    // Runs a command whose first modal dialog is handled by `edit`; returns
    // the title and text of an error list shown after it (empty when none).
    // Both look-outs last exactly as long as the command.
    std::pair<QString, QString> runEditor(command_id id, modal_handler edit) {
        std::pair<QString, QString> shown;
        std::unique_ptr<modal_watch> afterEdit;
        modal_watch editor([&, edit](QWidget* m) {
            edit(m);
            afterEdit = std::make_unique<modal_watch>([&](QWidget* next) {
                if (auto* e = qobject_cast<dialog_errors*>(next)) shown = {e->windowTitle(), e->text()};
                next->close();
            });
        });
        window_->runCommand(id);
        return shown;
    }

    // Answers the next message box with Yes, keeping its question.
    static void yesTo(QStringList& questions) {
        onNextModal([&questions](QWidget* box) {
            questions << textOf(box);
            pressButton(box, "Yes");
        });
    }

private slots:
    // Every test has a window on a project of its own (the stand-alone dialogs do not use it).
    void init() {
        static int n = 0;
        const QString path = dir_.filePath(QStringLiteral("editors%1.sbproj").arg(++n));
        QCOMPARE(QString::fromStdString(makeProject(path, {1, 2})), QString());
        settings_ = std::make_unique<app_soilbench>(dir_.filePath("profile.ini").toStdString());
        settings_->recordList = false;
        window_ = std::make_unique<main_window>(*settings_);
        QVERIFY(window_->openProject(path));
    }

    void configurationKeepsTheRulesAndCancelPutsThePathsBack() {
        app_soilbench settings(dir_.filePath("p.ini").toStdString());
        dialog_configuration d(settings);
        QCOMPARE(d.windowTitle(), QStringLiteral("Configuration"));
        // The form's rows (its own tests check them) reach the widgets and are re-marked.
        QCOMPARE(d.locations()->item(1)->text().section(':', 0, 0),
                 QStringLiteral("Tellura 4 Agricultural LIST100 executable"));
        d.findChild<QComboBox*>()->setCurrentIndex(2);
        QVERIFY(!d.locations()->item(0)->data(Qt::UserRole).toBool());
        QVERIFY(d.locations()->item(4)->data(Qt::UserRole).toBool());

        // 5000001 is refused and the dialog stays open; 0 is taken.
        auto* timeout = d.findChild<QLineEdit*>("runTimeout");
        timeout->setText("5000001");
        d.show();
        QString refusal;
        onNextModal(answer(refusal));
        d.accept();
        QVERIFY(d.isVisible());
        QCOMPARE(refusal, QStringLiteral("Please enter an integer between 0 and 5000000."));
        QCOMPARE(settings.runTimeout, 250000u);
        timeout->setText("0");
        d.findChild<QLineEdit*>("outputPrefix")->setText("zz");
        d.findChild<QLineEdit*>("runsFolder")->setText(" /data/runs ");
        d.findChild<QCheckBox*>("keepRunFolders")->setChecked(true);
        d.accept();
        QCOMPARE(d.result(), int(QDialog::Accepted));
        QCOMPARE(settings.runTimeout, 0u);
        QCOMPARE(settings.runsFolder, std::string("/data/runs"));
        QVERIFY(settings.keepRunFolders);
        QCOMPARE(settings.version, 3);
        QCOMPARE(settings.outputPrefix, std::string("zz"));

        settings.version = kTellura5;  // kept in the profile, not offered in the dialog
        dialog_configuration cancelled(settings);
        QCOMPARE(cancelled.findChild<QComboBox*>()->currentIndex(), 0);
        cancelled.findChild<QLineEdit*>("runTimeout")->setText("12");
        cancelled.editLocation(2, "/opt/model/tellx");
        QCOMPARE(settings.modelExecutables[1], std::string("/opt/model/tellx"));  // lands at once
        cancelled.chooseHelpFile("/opt/help.csv");
        QCOMPARE(cancelled.findChild<QLabel*>("helpFile")->text(), QStringLiteral("/opt/help.csv"));
        cancelled.reject();
        QCOMPARE(settings.runTimeout, 0u);
        QCOMPARE(settings.version, kTellura5);
        QCOMPARE(settings.modelExecutables[1], std::string("tellura4C\\tellx.exe"));  // Cancel puts paths back
        QCOMPARE(settings.helpFile, std::string("/opt/help.csv"));                    // but not the help file
    }

    void runSetBuildsTheFilterAndAsksBeforeClosingUnbuilt() {
        dialog_run_set d;
        QCOMPARE(d.windowTitle(), QStringLiteral("Configure Run Set"));
        auto* ids = d.findChild<QLineEdit*>("recordIds");
        QTest::keyClicks(ids, "1, 2, 5-9");
        QVERIFY(d.idListEdited());
        QVERIFY(pressButton(&d, "Make WHERE by ID"));
        QCOMPARE(d.whereClause(), QStringLiteral(" (ID IN (1, 2) OR ID BETWEEN 5 AND 9)"));
        QVERIFY(!d.idListEdited());

        // Editing again without building: closing asks; No keeps the dialog open,
        // Yes closes it with the filter built before.
        QTest::keyClicks(ids, ", 11");
        d.show();
        for (const char* button : {"No", "Yes"}) {
            QString question;
            onNextModal(answer(question, button));
            d.accept();
            QCOMPARE(question, QStringLiteral("ID list edited but SQL filter not built.  Close anyway?"));
            QCOMPARE(d.isVisible(), QString(button) == "No");
        }
        QCOMPARE(d.result(), int(QDialog::Accepted));
        QCOMPARE(d.whereClause(), QStringLiteral(" (ID IN (1, 2) OR ID BETWEEN 5 AND 9)"));

        // A list that is not IDs is refused with the core's message and builds nothing.
        dialog_run_set backwards;
        backwards.setIdList("9-5");
        QString refusal;
        onNextModal(answer(refusal));
        backwards.makeWhere();
        QCOMPARE(refusal,
                 QStringLiteral("ERROR, \"9-5\" in the ID list runs backwards: a range goes from the lower ID to "
                                "the higher.\n"));
        QCOMPARE(backwards.whereClause(), QString());
        QVERIFY(backwards.idListEdited());
    }

    void runDialogMovesBlocksAndKeepsDailyYearsToTheDailyRelease() {
        std::vector<tellura_event_block> blocks(3);
        for (int i = 0; i < 3; ++i) blocks[i].blockNumber = static_cast<int16_t>(i + 1);
        app_soilbench settings(dir_.filePath("p3.ini").toStdString());
        settings.version = kTellura45;
        {
            dialog_run d(7, "Wheat plot", blocks, settings);
            QCOMPARE(d.windowTitle(), QStringLiteral("Run TELLURA"));
            QCOMPARE(d.heading(), QStringLiteral("7 \"Wheat plot\""));
            QVERIFY(!d.firstYear()->isEnabled() && !d.lastYear()->isEnabled());
            d.chosen()->setCurrentRow(0);
            QVERIFY(pressButton(&d, "<-Delete"));  // block 1 out
            d.available()->setCurrentRow(0);
            QVERIFY(pressButton(&d, "Add->"));  // and back in, now last
            d.readBinary()->setChecked(true);
            d.accept();
            std::vector<int> order;
            for (const auto& b : d.chosenBlocks()) order.push_back(b.blockNumber);
            QCOMPARE(order, (std::vector<int>{2, 3, 1}));
            QVERIFY(settings.readBinaryOutput);
        }
        // Only the daily release takes the years, and only on OK.
        settings.version = kDiurna45;
        for (bool ok : {false, true}) {
            dialog_run daily(7, "Wheat plot", blocks, settings);
            QVERIFY(daily.firstYear()->isEnabled());
            daily.firstYear()->setValue(3);
            daily.lastYear()->setValue(5);
            ok ? daily.accept() : daily.reject();
            QCOMPARE(settings.saveDailyFirstYear, ok ? 3 : 1);
            QCOMPARE(settings.saveDailyLastYear, ok ? 5 : 1);
        }
    }

    void progressShowsWorkerTextAndCancelStopsIt() {
        background_run run;
        dialog_progress progress(run);
        QCOMPARE(progress.percentText(), QStringLiteral(" 0 %"));
        std::atomic<int> loops{0};
        run.start([&](run_feedback& f) {
            f.setText("Running TELLURA #1 Record=1 ID=5");
            f.setPercent(40);
            while (!f.cancelled()) {
                ++loops;
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
            f.setStatus("stopped");
        });
        QTRY_COMPARE(progress.text(), QStringLiteral("Running TELLURA #1 Record=1 ID=5"));
        QTRY_COMPARE(progress.percentText(), QStringLiteral("40 %"));
        QVERIFY(run.running());
        QVERIFY(pressButton(&progress, "Cancel"));
        QTRY_VERIFY(!run.running());
        QVERIFY(loops > 0);
        QTRY_COMPARE(progress.status(), QStringLiteral("stopped"));
    }

    void diurnaOutputFilesShowAndTakeTheChoice() {
        app_soilbench settings(dir_.filePath("p5.ini").toStdString());
        dialog_diurna_output_files d(settings);
        QCOMPARE(d.windowTitle(), QStringLiteral("Diurna Output Files"));
        QStringList checked;
        for (auto* b : d.boxes())
            if (b->isChecked()) checked << b->objectName();
        QCOMPARE(checked,
                 (QStringList{"wflux.out", "livec.out", "deadc.out", "soilc.out", "tgmonth.out", "summary.out"}));
        QCOMPARE(d.boxes()[10]->text(),
                 QStringLiteral("wflux.out - daily water flux through the bottom of soil layers"));
        d.boxes()[0]->setChecked(true);
        d.boxes()[27]->setChecked(false);
        d.accept();
        QVERIFY(settings.outfileSelected[0]);
        QVERIFY(!settings.outfileSelected[27]);
    }

    void propertySheetEditsEveryColumnWithHelp() {
        tellura_control_record record;
        record.setId(12);
        propsheet_control_record sheet(record, echoHelp(), echoHelp());
        QCOMPARE(sheet.tabs()->tabText(1), QStringLiteral("Fixed Parameters"));
        // Every column of both tables has its field on exactly one page.
        int fields = 0;
        for (int p = 0; p < sheet.tabs()->count(); ++p)
            fields +=
                sheet.page(p)->findChildren<QLineEdit*>().size() + sheet.page(p)->findChildren<QCheckBox*>().size();
        QCOMPARE(fields, record.row.columnCount() + record.site.columnCount() - 1);
        // The fixed page groups by initial letter; Dec4 and DEC5(1) both sit under "D".
        QStringList groups;
        for (auto* g : sheet.page(1)->findChildren<QGroupBox*>()) groups << g->title();
        QVERIFY(groups.contains("D") && groups.contains("V") && !groups.contains("Q"));
        // Applying an untouched sheet changes nothing, to the last bit of every float.
        tellura_control_record copy = record;
        sb::message_sink errors;
        QVERIFY(sheet.applyTo(copy, errors));
        QVERIFY(copy.row == record.row && copy.site == record.site);

        auto* dec5 = qobject_cast<QLineEdit*>(sheet.page(1)->editorFor("DEC5(1)"));
        QVERIFY(dec5);
        QVERIFY(qobject_cast<QCheckBox*>(sheet.page(1)->editorFor("TEXEPP(1)")));  // a yes/no column
        sheet.tabs()->setCurrentIndex(1);
        sheet.show();
        QApplication::setActiveWindow(&sheet);
        QVERIFY(QTest::qWaitForWindowActive(&sheet));
        QCOMPARE(dec5->toolTip(), QStringLiteral("about DEC5(1)"));
        dec5->setFocus();
        QTRY_COMPARE(sheet.page(1)->helpText(), QStringLiteral("help of DEC5(1)"));
        // A number is taken; a field that is not a number is refused and the record keeps its value.
        for (auto [text, message] : {std::pair{"0.125", ""}, {"abc", "ERROR, DEC5(1) is not a number: \"abc\".\n"}}) {
            dec5->setText(text);
            errors.clear();
            QCOMPARE(sheet.applyTo(record, errors), !*message);
            QCOMPARE(QString::fromStdString(errors.text()), QString(message));
            QCOMPARE(record.value("DEC5(1)"), 0.125);
        }
    }

    void fieldHelpComesFromTheShippedHelpFileOrTheUsersOwn() {
        // The help file beside the program (share/SoilbenchHelp.csv of the build tree).
        app_soilbench settings(dir_.filePath("help.ini").toStdString());
        settings.version = kDiurna45;
        const field_help_lookup fixed = makeFieldHelpLookup(settings, kHelpFixed);
        QCOMPARE(fixed.line("DEC5(1)"),
                 QStringLiteral("[Diurna 4.5] Top yearly turnover of the surface slow organic pool."));
        QCOMPARE(fixed.line("NOSUCH"), QStringLiteral("Not Found: NOSUCH"));
        // The field's tool tip describes it; a parameter without help has none.
        QCOMPARE(
            fixed.toolTip("DEC5(1)"),
            QStringLiteral("dec5(1): Top yearly turnover of the surface slow organic pool.\nVersions: Diurna 4.5"));
        QCOMPARE(fixed.toolTip("NOSUCH"), QString());
        // Help is per parameter file: the crop file's prdx(1) is not the tree file's.
        QVERIFY(makeFieldHelpLookup(settings, kHelpCrop).line("prdx(1)").endsWith("of the crop or grass."));

        // A help file chosen in the settings is read instead of the shipped one,
        // and read again when it changes.
        const QString own = dir_.filePath("own-help.csv");
        settings.helpFile = own.toStdString();
        for (const char* words : {"Own words.", "Newer words."}) {
            QFile f(own);
            QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
            f.write(QByteArray("Variable,Table,VersionFirst,VersionLast\nDEC5(1),11,1,0,,") + words + "\n");
            f.close();
            if (QString(words) != "Own words.")
                f.setFileTime(QDateTime::currentDateTime().addSecs(5), QFileDevice::FileModificationTime);
            QCOMPARE(makeFieldHelpLookup(settings, kHelpFixed).line("DEC5(1)"),
                     QStringLiteral("[Diurna 4.5] ") + words);
        }
    }

    void cropsAreEditedExportedAndSavedWholeAndDuplicatesReportedUnderTheirTitle() {
        const QString file = dir_.filePath("crop.100");
        auto shown = runEditor(command_id::editCrops, [&](QWidget* m) {
            auto* d = qobject_cast<dialog_option_list*>(m);
            QVERIFY(d);
            d->addOption("CORN");
            d->addOption("WHT");
            qobject_cast<QLineEdit*>(d->page()->editorFor("biomax"))->setText("123.5");
            d->copyOption(1, "WHT2");
            sb::message_sink errors;
            QVERIFY(d->exportTo(file, errors));
            d->deleteOption(0);
            QCOMPARE(d->names()->count(), 2);
            d->accept();
        });
        QCOMPARE(shown.first, QString());
        list_tellura_crops crops;
        sb::message_sink errors;
        QVERIFY(crops.loadFromDatabase(db(), errors));
        QCOMPARE(crops.size(), size_t(2));
        QCOMPARE(QString::fromStdString(crops.recordAt(0).name), QStringLiteral("WHT"));
        QCOMPARE(crops.findRecord("WHT2")->value("biomax"), 123.5);

        // The exported three read back in place of the two; a second "CORN" breaks
        // the table's key, so the save stops there and says so.
        shown = runEditor(command_id::editCrops, [&](QWidget* m) {
            auto* d = qobject_cast<dialog_option_list*>(m);
            sb::message_sink e;
            QVERIFY(d->importFrom(file, e));
            QCOMPARE(d->names()->count(), 3);
            QCOMPARE(qobject_cast<QLineEdit*>(d->page()->editorFor("biomax"))->text(), QStringLiteral("123.5"));
            d->addOption("CORN");
            d->accept();
        });
        QCOMPARE(shown.first, QStringLiteral("CROP Save Errors"));
        QVERIFY2(shown.second.startsWith("ERROR, unable to insert into table Crops\n"), qPrintable(shown.second));
    }

    void grazeTakesTwoOptionsOfOneNameAndTheEditMenuOrderMapsToTheRightList() {
        auto shown = runEditor(command_id::editGraze, [](QWidget* m) {
            QCOMPARE(m->windowTitle(), QStringLiteral("Edit graze.100"));
            qobject_cast<dialog_option_list*>(m)->addOption("GL");
            qobject_cast<dialog_option_list*>(m)->addOption("GL");
            qobject_cast<dialog_option_list*>(m)->accept();
        });
        QCOMPARE(shown.first, QString());
        list_tellura_graze graze;
        sb::message_sink errors;
        QVERIFY(graze.loadFromDatabase(db(), errors));
        QCOMPARE(graze.size(), size_t(2));
        for (auto [command, title] : {std::pair{command_id::editOmad, "Edit omad.100"},
                                      std::pair{command_id::editTreeRemoval, "Edit trem.100"}}) {
            QString shownTitle;
            runEditor(command, [&](QWidget* m) {
                shownTitle = m->windowTitle();
                m->close();
            });
            QCOMPARE(shownTitle, QString(title));
        }
    }

    void weatherStationMeansAreWrittenBack() {
        runEditor(command_id::editWeatherStations, [](QWidget* m) {
            auto* d = qobject_cast<dialog_weather_stations*>(m);
            QVERIFY(d);
            d->addStation(42, "Hill farm");
            d->means()->item(0, 6)->setText("81.5");       // July precipitation
            d->means()->item(4, 0)->setText("-2.25");      // January maximum temperature
            d->means()->item(1, 2)->setText("30.539165");  // March precipitation STD: eight digits
            d->accept();
        });
        // Shown again and accepted untouched, every mean reads back as it was stored.
        runEditor(command_id::editWeatherStations, [](QWidget* m) {
            auto* d = qobject_cast<dialog_weather_stations*>(m);
            QVERIFY(d);
            d->stationList()->setCurrentItem(d->stationList()->findItems("42 Hill farm", Qt::MatchExactly).first());
            d->accept();
        });
        tellura_weather_stations stations;
        sb::message_sink errors;
        QVERIFY(loadWeatherStations(db(), stations, errors));
        const auto* s = stations.find(42);
        QVERIFY(s);
        QCOMPARE(s->description, std::string("Hill farm"));
        QCOMPARE(s->means[6].precip, 81.5f);
        QCOMPARE(s->means[0].tmx2m, -2.25f);
        QVERIFY(s->means[2].prcstd == 30.539165f);  // exactly: QCOMPARE on floats would forgive the last digits
    }

    void weatherHistoryIsListedAndDaysAndStationsDeleted() {
        sb::message_sink errors;
        tellura_weather_station valley;
        valley.id = 7;
        valley.description = "Valley";
        QVERIFY(readDailyWeatherText("1 1 2001 1 5.5 -1.25 0.5\n2 1 2001 2 6 -2 3.75\n3 1 2001 3 4 -3 0\n",
                                     "valley.wth", valley, errors));
        errors.clear();  // the import's summary of days read
        valley.monthlyYear(2001).monthRecord(1).precip = 30;
        weather_month_record& february = valley.monthlyYear(2001).monthRecord(2);
        february.precip = 42.5f;
        february.tmx2m = 3.25f;
        tellura_weather_station ridge;
        ridge.id = 8;
        ridge.description = "Ridge";
        QVERIFY(saveWeatherStation(db(), valley, errors) && saveWeatherStation(db(), ridge, errors));
        QVERIFY(saveDailyHistory(db(), valley, errors) && saveMonthlyHistory(db(), valley, errors));
        QVERIFY2(errors.empty(), errors.text().c_str());

        QStringList questions, monthlyRow, dailyRow;
        int dailyAfterNo = 0, dailyAfterYes = 0, stationsLeft = 0;
        runEditor(command_id::editWeatherStations, [&](QWidget* m) {
            auto* d = qobject_cast<dialog_weather_stations*>(m);
            QVERIFY(d);
            auto choose = [d](const char* station) {
                d->stationList()->setCurrentItem(d->stationList()->findItems(station, Qt::MatchExactly).first());
            };
            choose("7 Valley");
            QCOMPARE(d->monthlyHistory()->rowCount(), 2);
            for (int c = 0; c < 7; ++c) monthlyRow << d->monthlyHistory()->item(1, c)->text();
            QCOMPARE(d->dailyHistory()->rowCount(), 3);
            for (int c = 0; c < 6; ++c) dailyRow << d->dailyHistory()->item(1, c)->text();
            // Answering No keeps the day; the button asks the same question and Yes deletes it.
            sb::message_sink e;
            QVERIFY(!d->deleteDailyRecord(
                1, [&](const QString& q) { return questions << q, false; }, e));
            dailyAfterNo = d->dailyHistory()->rowCount();
            d->dailyHistory()->selectRow(1);
            yesTo(questions);
            pressButton(d, "Delete Daily Record");
            dailyAfterYes = d->dailyHistory()->rowCount();
            // The other station goes through its button.
            choose("8 Ridge");
            yesTo(questions);
            pressButton(d, "Delete");
            stationsLeft = d->stationList()->count();
            d->accept();
        });
        QCOMPARE(monthlyRow, (QStringList{"2001", "2", "42.5", "0", "0", "0", "3.25"}));
        QCOMPARE(dailyRow, (QStringList{"2001", "1", "2", "3.75", "-2", "6"}));
        QCOMPARE(questions,
                 (QStringList{"Delete 7 2001-01-02 ?", "Delete 7 2001-01-02 ?", "Delete weather station 8 Ridge ?"}));
        QCOMPARE(dailyAfterNo, 3);
        QCOMPARE(dailyAfterYes, 2);
        QCOMPARE(stationsLeft, 1);

        tellura_weather_stations stations;
        QVERIFY(loadWeatherStations(db(), stations, errors));
        QVERIFY(!stations.find(8));
        tellura_weather_station* stored = stations.find(7);
        QVERIFY(stored);
        QVERIFY(loadDailyHistory(db(), *stored, errors) && loadMonthlyHistory(db(), *stored, errors));
        QCOMPARE(stored->daily.size(), size_t(1));
        QCOMPARE(stored->daily[0].days.size(), size_t(2));
        QCOMPARE(int(stored->daily[0].days[0].day), 1);
        QCOMPARE(int(stored->daily[0].days[1].day), 3);
        QCOMPARE(stored->monthly[0].months.size(), size_t(2));  // monthly history untouched
    }

    void soilsAreAddedDeletedAndTakeALayerFileAndLayersUpToTheLimit() {
        sb::message_sink errors;
        for (auto [id, name] : {std::pair{9, "Loam"}, std::pair{12, "Clay"}}) {
            tellura_soil soil;
            soil.setSoilId(id);
            soil.setName(name);
            QVERIFY(saveSoil(db(), soil, errors));
        }
        const QString layerFile = dir_.filePath("soils.in"), longFile = dir_.filePath("long.in");
        QFile file(layerFile);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(
            "0 10 1.3 0.31 0.12 0.8 0.4 0.6 0.2 0.01 0 0.05 6.5\n"
            "10 25 1.4 0.28 0.11 0.2 0.3 0.5 0.25 0.01 0 0.04 6.8\n");
        file.close();
        QFile longOne(longFile);
        QVERIFY(longOne.open(QIODevice::WriteOnly));
        for (int i = 0; i < 15; ++i)
            longOne.write(QStringLiteral("%1 %2 1.3 0.3 0.1\n").arg(i * 5).arg(i * 5 + 5).toLatin1());
        longOne.close();

        QString refused, tooLong, fifteenth;
        QStringList questions, layerTexts;
        int longLayers = 0;
        runEditor(command_id::editSoils, [&](QWidget* m) {
            auto* d = qobject_cast<dialog_soil_editor*>(m);
            QVERIFY(d);
            sb::message_sink e;
            QVERIFY(!d->addSoil(12, "Again", e));
            refused = QString::fromStdString(e.text());
            QCOMPARE(d->unusedSoilId(), 13);
            e.clear();
            QVERIFY(d->addSoil(13, "Sand", e));
            QCOMPARE(d->soilList()->currentItem()->text(), QStringLiteral("13 Sand"));
            QVERIFY2(d->importLayerFile(layerFile, e), e.text().c_str());
            for (int i = 0; i < d->layerList()->count(); ++i) layerTexts << d->layerList()->item(i)->text();
            // Layers up to the limit, then a refusal; the last one deleted again.
            for (int i = 2; i < kMaxSoilLayers; ++i) QVERIFY(d->insertLayer(i, e));
            QVERIFY(!d->insertLayer(0, e));
            fifteenth = QString::fromStdString(e.text());
            e.clear();
            QVERIFY(d->deleteLayer(kMaxSoilLayers - 1, e));
            d->waterHolding()->setCurrentIndex(2);

            // A file of 15 layers into Clay: the core's message, and Clay keeps its layers (none).
            d->soilList()->setCurrentRow(1);
            QVERIFY(!d->importLayerFile(longFile, e));
            tooLong = QString::fromStdString(e.text());
            longLayers = d->layerList()->count();

            // Delete Loam through its button, answering the question Yes.
            d->soilList()->setCurrentRow(0);
            yesTo(questions);
            pressButton(d, "Delete Soil");
            QCOMPARE(d->soilList()->count(), 2);
            QCOMPARE(d->soilList()->item(0)->text(), QStringLiteral("12 Clay"));
            d->accept();
        });
        QCOMPARE(refused, QStringLiteral("Soil ID 12 is already in the project.\n"));
        QCOMPARE(layerTexts, (QStringList{"1: 10 cm - afiel=0.31 awilt=0.12 N=0 P=0 S=0",
                                          "2: 25 cm - afiel=0.28 awilt=0.11 N=0 P=0 S=0"}));
        QVERIFY2(fifteenth.startsWith("Number of layers is already at maximum"), qPrintable(fifteenth));
        QCOMPARE(tooLong, QStringLiteral("ERROR, too many soil layers in soil file \"%1\".\n").arg(longFile));
        QCOMPARE(longLayers, 0);
        QCOMPARE(questions, QStringList{"Delete soil 9 Loam ?"});

        tellura_soils soils;
        QVERIFY(soils.load(db(), errors));
        QVERIFY(!soils.find(9));
        QCOMPARE(soils.find(12)->layerCount, 0);
        const tellura_soil* sand = soils.find(13);
        QVERIFY(sand);
        QCOMPARE(sand->name(), std::string("Sand"));
        QCOMPARE(sand->layerCount, kMaxSoilLayers - 1);
        QCOMPARE(sand->number("SWFlag"), 2.0);
        QCOMPARE(sand->layers[1].depth(), 25);
        QCOMPARE(static_cast<float>(sand->layers[1].value("pH")), 6.8f);
        QCOMPARE(static_cast<float>(sand->layers[0].value("Fraction Of Sand")),
                 0.6f);  // after the evaporation and root columns
    }

    void propertySheetSavesTheRecord() {
        runEditor(command_id::editRecord, [](QWidget* m) {
            auto* sheet = qobject_cast<propsheet_control_record*>(m);
            QVERIFY(sheet);
            qobject_cast<QLineEdit*>(sheet->page(0)->editorFor("Description"))->setText("Edited");
            qobject_cast<QLineEdit*>(sheet->page(3)->editorFor("SNOW"))->setText("12.5");
            sheet->accept();
        });
        tellura_control_record r;
        sb::message_sink errors;
        QVERIFY(loadControlRecord(db(), 1, r, errors));
        QCOMPARE(r.description(), std::string("Edited"));
        QCOMPARE(r.site.number("SNOW"), 12.5);
        QCOMPARE(window_->document()->currentId(), 1);
    }

    void aboutShowsTheVersionAndTheSourceDateNotTheBuildTime() {
        QString text;
        onNextModal(answer(text));
        window_->runCommand(command_id::about);
        QVERIFY2(text.startsWith(QStringLiteral("Soilbench2 version " SB_PROJECT_VERSION)), qPrintable(text));
        const QString date = QStringLiteral(SB_SOURCE_DATE);
        if (!date.isEmpty()) QVERIFY2(text.contains(QStringLiteral("\nSource Date: ") + date + "\n"), qPrintable(text));
        QVERIFY2(!text.contains(QStringLiteral("Build Date")), qPrintable(text));
    }
};

QTEST_MAIN(test_ui_dialogs)
#include "test_ui_dialogs.moc"
