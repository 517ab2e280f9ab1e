// The dialogs on their own: the configuration rules, the run set's filter and
// close question, the Run dialog's lists and version rules, progress and Cancel
// of background work, the Diurna file list, the record property sheet and the
// field help it shows.
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>
#include <QTabWidget>
#include <QtTest>
#include <atomic>
#include <thread>

#include "app/app_soilbench.h"
#include "help/help_tables.h"
#include "records/tellura_control_record.h"
#include "ui/background_run.h"
#include "ui/dialog_configuration.h"
#include "ui/dialog_diurna_output_files.h"
#include "ui/dialog_progress.h"
#include "ui/dialog_run.h"
#include "ui/dialog_run_set.h"
#include "ui/field_help_source.h"
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

private slots:
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
        std::string errors;
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
            QCOMPARE(QString::fromStdString(errors), QString(message));
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
};

QTEST_MAIN(test_ui_dialogs)
#include "test_ui_dialogs.moc"
