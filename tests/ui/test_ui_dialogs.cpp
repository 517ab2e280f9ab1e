// The dialogs on their own: the configuration rules, the run
// set's filter and close question, the Run dialog's lists and version rules,
// progress and Cancel of background work, the Diurna file list, the record
// property sheet and the option list and soil editors.
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QtTest>
#include <atomic>
#include <thread>

#include "app/app_soilbench.h"
#include "records/option_list.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "ui/background_run.h"
#include "ui/dialog_configuration.h"
#include "ui/dialog_diurna_output_files.h"
#include "ui/dialog_option_list.h"
#include "ui/dialog_progress.h"
#include "ui/dialog_run.h"
#include "ui/dialog_run_set.h"
#include "ui/dialog_soil_editor.h"
#include "ui/field_help_source.h"
#include "help/help_tables.h"
#include "ui/propsheet_control_record.h"
#include "ui_test_support.h"

using namespace sb;
using sbtest_ui::onNextModal;
using sbtest_ui::pressButton;

namespace {

field_help_lookup echoHelp() {
    return {[](const std::string& name) { return QStringLiteral("help of ") + QString::fromStdString(name); },
            [](const std::string& name) { return QStringLiteral("about ") + QString::fromStdString(name); }};
}

}  // namespace

class test_ui_dialogs : public QObject {
    Q_OBJECT
    QTemporaryDir dir_;

private slots:
    void configurationShowsItsControlsAndKeepsTheRules() {
        app_soilbench settings(dir_.filePath("p.ini").toStdString());
        dialog_configuration d(settings);
        QCOMPARE(d.windowTitle(), QStringLiteral("Configuration"));
        // The form's rows and choices (its own tests check them) reach the widgets.
        auto* version = d.findChild<QComboBox*>();
        QCOMPARE(version->count(), 5);
        QCOMPARE(d.locations()->count(), 10);
        QCOMPARE(d.locations()->item(1)->text().section(':', 0, 0),
                 QStringLiteral("Tellura 4 Agricultural LIST100 executable"));
        version->setCurrentIndex(2);  // re-marks the rows of the chosen version
        QVERIFY(!d.locations()->item(0)->data(Qt::UserRole).toBool());
        QVERIFY(d.locations()->item(4)->data(Qt::UserRole).toBool());

        // 5000001 is refused and the dialog stays open; 0 is taken.
        auto* timeout = d.findChild<QLineEdit*>("runTimeout");
        timeout->setText("5000001");
        d.show();
        onNextModal([](QWidget* m) { qobject_cast<QMessageBox*>(m)->accept(); });
        d.accept();
        QVERIFY(d.isVisible());
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
    }

    void configurationCancelChangesNothingButTheHelpFile() {
        app_soilbench settings(dir_.filePath("p2.ini").toStdString());
        settings.version = kTellura5;  // kept in the profile, not offered in the dialog
        dialog_configuration d(settings);
        QCOMPARE(d.findChild<QComboBox*>()->currentIndex(), 0);
        d.findChild<QLineEdit*>("runTimeout")->setText("12");
        d.editLocation(2, "/opt/model/tellx");
        QCOMPARE(settings.modelExecutables[1], std::string("/opt/model/tellx"));  // lands at once
        d.chooseHelpFile("/opt/help.csv");
        QCOMPARE(d.findChild<QLabel*>("helpFile")->text(), QStringLiteral("/opt/help.csv"));
        d.reject();
        QCOMPARE(settings.runTimeout, 250000u);
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

        // Editing again without building: closing asks, No keeps the dialog open.
        QTest::keyClicks(ids, ", 11");
        d.show();
        QString question;
        onNextModal([&](QWidget* m) {
            question = qobject_cast<QMessageBox*>(m)->text();
            QVERIFY(pressButton(m, "No"));
        });
        d.accept();
        QCOMPARE(question, QStringLiteral("ID list edited but SQL filter not built.  Close anyway?"));
        QVERIFY(d.isVisible());
        onNextModal([&](QWidget* m) { QVERIFY(pressButton(m, "Yes")); });
        d.accept();
        QVERIFY(!d.isVisible());
        QCOMPARE(d.result(), int(QDialog::Accepted));
        // The filter kept is the one built before.
        QVERIFY(d.whereClause().endsWith("AND 9)"));

        // A list that is not IDs is refused with a message and builds nothing.
        dialog_run_set backwards;
        backwards.setIdList("9-5");
        QString refusal;
        onNextModal([&](QWidget* m) {
            refusal = m->findChild<QPlainTextEdit*>() ? m->findChild<QPlainTextEdit*>()->toPlainText() : QString();
            m->close();
        });
        backwards.makeWhere();
        QCOMPARE(refusal,
                 QStringLiteral("ERROR, \"9-5\" in the ID list runs backwards: a range goes from the lower ID to "
                                "the higher.\n"));
        QCOMPARE(backwards.whereClause(), QString());
        QVERIFY(backwards.idListEdited());
    }

    void runDialogMovesBlocksAndKeepsDailyYearsToTheDailyRelease() {
        std::vector<tellura_event_block> blocks(3);
        for (int i = 0; i < 3; ++i) {
            blocks[i].blockNumber = static_cast<int16_t>(i + 1);
            blocks[i].description = "block " + std::to_string(i + 1);
        }
        app_soilbench settings(dir_.filePath("p3.ini").toStdString());
        settings.version = kTellura45;
        {
            dialog_run d(7, "Wheat plot", blocks, settings);
            QCOMPARE(d.windowTitle(), QStringLiteral("Run TELLURA"));
            QCOMPARE(d.heading(), QStringLiteral("7 \"Wheat plot\""));
            QVERIFY(!d.firstYear()->isEnabled());
            QVERIFY(!d.lastYear()->isEnabled());
            QCOMPARE(d.chosen()->count(), 3);
            d.chosen()->setCurrentRow(0);
            QVERIFY(pressButton(&d, "<-Delete"));  // block 1 out
            d.available()->setCurrentRow(0);
            QVERIFY(pressButton(&d, "Add->"));  // and back in, now last
            d.readBinary()->setChecked(true);
            d.accept();
            const auto chosen = d.chosenBlocks();
            QCOMPARE(int(chosen.size()), 3);
            QCOMPARE(int(chosen[0].blockNumber), 2);
            QCOMPARE(int(chosen[2].blockNumber), 1);
            QVERIFY(settings.readBinaryOutput);
        }
        settings.version = kDiurna45;
        dialog_run daily(7, "Wheat plot", blocks, settings);
        QVERIFY(daily.firstYear()->isEnabled());
        daily.firstYear()->setValue(3);
        daily.lastYear()->setValue(5);
        daily.accept();
        QCOMPARE(settings.saveDailyFirstYear, 3);
        QCOMPARE(settings.saveDailyLastYear, 5);

        app_soilbench untouched(dir_.filePath("p4.ini").toStdString());
        untouched.version = kDiurna45;
        dialog_run cancelled(7, "x", blocks, untouched);
        cancelled.firstYear()->setValue(9);
        cancelled.reject();
        QCOMPARE(untouched.saveDailyFirstYear, 1);
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

    void diurnaOutputFilesListsTheTwentyEightFiles() {
        app_soilbench settings(dir_.filePath("p5.ini").toStdString());
        dialog_diurna_output_files d(settings);
        QCOMPARE(d.windowTitle(), QStringLiteral("Diurna Output Files"));
        QCOMPARE(int(d.boxes().size()), 28);
        QCOMPARE(d.boxes()[10]->text(),
                 QStringLiteral("wflux.out - daily water flux through the bottom of soil layers"));
        QCOMPARE(d.boxes()[23]->text(), QStringLiteral("cflows.out - daily carbon flows due to decompostion"));
        QStringList checked;
        for (auto* b : d.boxes())
            if (b->isChecked()) checked << b->objectName();
        QCOMPARE(checked,
                 (QStringList{"wflux.out", "livec.out", "deadc.out", "soilc.out", "tgmonth.out", "summary.out"}));
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
        QCOMPARE(sheet.tabs()->count(), 5);
        QCOMPARE(sheet.tabs()->tabText(1), QStringLiteral("Fixed Parameters"));
        // Every column of both tables has its field on exactly one page.
        int fields = 0;
        for (int p = 0; p < 5; ++p)
            fields +=
                sheet.page(p)->findChildren<QLineEdit*>().size() + sheet.page(p)->findChildren<QCheckBox*>().size();
        QCOMPARE(fields, record.row.columnCount() + record.site.columnCount() - 1);
        // The fixed page groups by initial letter; Dec4 and DEC5(1) both sit under "D".
        QStringList groups;
        for (auto* g : sheet.page(1)->findChildren<QGroupBox*>()) groups << g->title();
        QVERIFY(groups.contains("D") && groups.contains("V") && !groups.contains("Q"));
        // Applying an untouched sheet changes nothing, to the last bit of every float.
        {
            tellura_control_record copy = record;
            std::string none;
            QVERIFY(sheet.applyTo(copy, none));
            QVERIFY(copy.row == record.row);
            QVERIFY(copy.site == record.site);
        }
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
        dec5->setText("0.125");
        std::string errors;
        QVERIFY(sheet.applyTo(record, errors));
        QCOMPARE(record.value("DEC5(1)"), 0.125);

        // A field that is not a number is refused and the record keeps its value.
        dec5->setText("abc");
        errors.clear();
        QVERIFY(!sheet.applyTo(record, errors));
        QCOMPARE(QString::fromStdString(errors), QStringLiteral("ERROR, DEC5(1) is not a number: \"abc\".\n"));
        QCOMPARE(record.value("DEC5(1)"), 0.125);
    }

    void fieldHelpComesFromTheShippedHelpFileForTheVersion() {
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
        auto writeHelp = [&](const char* text) {
            QFile f(own);
            QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
            f.write(QByteArray("Variable,Table,VersionFirst,VersionLast\n") + text);
        };
        writeHelp("DEC5(1),11,1,0,,Own words.\n");
        settings.helpFile = own.toStdString();
        QCOMPARE(makeFieldHelpLookup(settings, kHelpFixed).line("DEC5(1)"), QStringLiteral("[Diurna 4.5] Own words."));
        writeHelp("DEC5(1),11,1,0,,Newer words.\n");
        QFile(own).setFileTime(QDateTime::currentDateTime().addSecs(5), QFileDevice::FileModificationTime);
        QCOMPARE(makeFieldHelpLookup(settings, kHelpFixed).line("DEC5(1)"),
                 QStringLiteral("[Diurna 4.5] Newer words."));
    }

    void optionListEditorAddsEditsExportsAndDeletes() {
        list_tellura_crops crops;
        dialog_option_list d(crops, kTellura4Agricultural, echoHelp());
        d.addOption("CORN");
        d.addOption("WHT");
        QCOMPARE(d.names()->count(), 2);
        auto* biomax = qobject_cast<QLineEdit*>(d.page()->editorFor("biomax"));
        QVERIFY(biomax);
        biomax->setText("123.5");
        d.copyOption(1, "WHT2");
        QCOMPARE(crops.size(), size_t(3));
        QCOMPARE(crops.recordAt(2).value("biomax"), 123.5);
        const QString file = dir_.filePath("crop.100");
        std::string errors;
        QVERIFY(d.exportTo(file, errors));
        d.deleteOption(0);
        QCOMPARE(crops.size(), size_t(2));
        QCOMPARE(QString::fromStdString(crops.recordAt(0).name), QStringLiteral("WHT"));

        // Read back into a fresh list, through the same editor.
        list_tellura_crops again;
        dialog_option_list d2(again, kTellura4Agricultural, echoHelp());
        QVERIFY(d2.importFrom(file, errors));
        QCOMPARE(again.size(), size_t(3));
        QCOMPARE(again.findRecord("WHT2")->value("biomax"), 123.5);
    }

    void soilEditorListsLayersAndRefusesAFifteenth() {
        tellura_soil_list soils;
        TelluraSoils soil;
        soil.setNumber("Soil ID", 4);
        std::string errors;
        QVERIFY(soil.insertLayer(0, errors));
        soil.layers[0].setNumber("Depth", 15);
        soil.layers[0].setNumber("Field Capacity", 0.3);
        soils.soils.push_back(soil);
        dialog_soil_editor d(soils, echoHelp());
        QCOMPARE(d.layerList()->count(), 1);
        QCOMPARE(d.layerList()->item(0)->text(), QStringLiteral("1: 15 cm - afiel=0.3 awilt=0 N=0 P=0 S=0"));
        QCOMPARE(d.waterHolding()->count(), 7);
        QCOMPARE(d.waterHolding()->itemText(3), QStringLiteral("Use Rawls for awilt and afiel (-0.33 bar)"));
        for (int i = 1; i < kMaxSoilLayers; ++i) QVERIFY(d.insertLayer(i, errors));
        QCOMPARE(d.layerList()->count(), 14);
        QVERIFY(!d.insertLayer(0, errors));
        QVERIFY(QString::fromStdString(errors).startsWith("Number of layers is already at maximum"));
        d.waterHolding()->setCurrentIndex(5);
        errors.clear();
        QVERIFY(d.deleteLayer(13, errors));
        QCOMPARE(soils.soils[0].layerCount, 13);
        QCOMPARE(soils.soils[0].number("SWFlag"), 5.0);
    }
};

QTEST_MAIN(test_ui_dialogs)
#include "test_ui_dialogs.moc"
