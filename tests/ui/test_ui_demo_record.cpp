// The demo set-up read in as a record: a whole run from the Run dialog to the
// chart, through the stand-in model (a small program of ours that writes
// outputs in the model's formats; it is not the model), cancelling hanging
// runs, and the event block editor: an unknown crop keeps it open with the
// core's message, a fixed one is saved and read back, blocks are reordered and
// events deleted through the widgets, and the record's event view shows the
// blocks and opens the editor.
#include <QChartView>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QLineSeries>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QTreeWidget>
#include <QtTest>

#include "app/app_soilbench.h"
#include "modelinput/run_files_import.h"
#include "modeloutput/output_table_text.h"
#include "modeloutput/record_outputs.h"
#include "records/list_control_record_proxies.h"
#include "records/new_project.h"
#include "ui/command_table.h"
#include "ui/control_record_table_model.h"
#include "ui/dialog_event_blocks.h"
#include "ui/dialog_progress.h"
#include "ui/dialog_run.h"
#include "ui/dialog_run_set.h"
#include "ui/doc_soilbench.h"
#include "ui/main_window.h"
#include "ui/output_table_model.h"
#include "ui/view_control_records.h"
#include "ui/view_events.h"
#include "ui/view_output.h"
#include "ui_test_support.h"

using namespace sb;
using namespace sbtest_ui;

class test_ui_demo_record : public QObject {
    Q_OBJECT
    QTemporaryDir dir_;
    QString project_;
    std::unique_ptr<database> db_;
    static constexpr int32_t kRecord = 5;

    // Settings that run the stand-in for the daily release, its outputs kept in "daily".
    app_soilbench runSettings(const char* profile, unsigned timeout) const {
        app_soilbench settings(dir_.filePath(profile).toStdString());
        settings.recordList = false;
        settings.version = kDiurna45;
        settings.modelExecutables[kDiurna45 - 1] = dir_.filePath("model/tellura-standin").toStdString();
        settings.list100Executables[kDiurna45 - 1] = dir_.filePath("model/list100-standin").toStdString();
        settings.runVisible = false;
        settings.runTimeout = timeout;
        settings.outputPath = dir_.filePath("daily").toStdString() + "/";
        settings.runsFolder = dir_.filePath("runs").toStdString();  // not the user's runs folder
        return settings;
    }

    // The record list's "Last Run" cell of a record, as shown or as its tool tip.
    static QString lastRunOf(main_window& w, int32_t id, int role = Qt::DisplayRole) {
        control_record_table_model& model = w.document()->records();
        if (model.headerData(2, Qt::Horizontal, Qt::DisplayRole) != QStringLiteral("Last Run")) return "no column";
        for (int row = 0; row < model.rowCount(); ++row)
            if (model.handleAt(row)->id == id) return model.data(model.index(row, 2), role).toString();
        return "no row";
    }

    // Keeps the text of the report a run ends with, passing over the progress dialog before it.
    static modal_handler reportOf(QString& text) {
        return [&text](QWidget* m) {
            if (qobject_cast<dialog_errors*>(m)) return answer(text)(m);
            onNextModal(reportOf(text));
        };
    }

    // A run of `command` with the stand-in hanging until it is ended: `start`
    // answers the dialog before the run, Cancel is pressed once the progress
    // dialog shows its text. Without Cancel the run would last until its
    // two-minute time limit.
    struct cancelled_run {
        QString progressText, report;
        bool cancelEnabled = false;
        qint64 cancelMs = -1;  // from Cancel to the report
    };
    cancelled_run cancelHangingRun(main_window& w, command_id command, std::function<void(QWidget*)> start) {
        qputenv("SB_STANDIN_MODE", "hang");
        cancelled_run run;
        QElapsedTimer sinceCancel;
        std::function<void(QWidget*)> handle = [&](QWidget* m) {
            if (auto* progress = qobject_cast<dialog_progress*>(m)) {
                if (progress->text().isEmpty() || sinceCancel.isValid()) {
                    onNextModal(handle);  // not started yet, or cancelled and not yet closed: look again
                    return;
                }
                run.progressText = progress->text();
                QTest::qWait(300);  // let the model start and hang
                for (QPushButton* b : progress->findChildren<QPushButton*>())
                    if (b->text() == "Cancel") run.cancelEnabled = b->isEnabled();
                sinceCancel.start();
                sbtest_ui::pressButton(progress, "Cancel");
                onNextModal(handle);
            } else if (auto* e = qobject_cast<dialog_errors*>(m)) {
                run.report = e->text();
                e->accept();
            } else {
                start(m);
                onNextModal(handle);
            }
        };
        onNextModal(handle);
        w.runCommand(command);
        qunsetenv("SB_STANDIN_MODE");
        if (sinceCancel.isValid()) run.cancelMs = sinceCancel.elapsed();
        return run;
    }

    // Record 5's blocks made the demo's as imported (record 1 keeps them),
    // with a second block after them when asked, whatever other slots left:
    // each slot starts from its own blocks and passes in any order.
    std::vector<tellura_event_block> startFromTheDemoBlocks(bool withSecond) {
        std::vector<tellura_event_block> blocks;
        sb::message_sink errors;
        if (!loadEventBlocks(*db_, 1, blocks, errors) || blocks.size() != 1) qWarning("%s", errors.text().c_str());
        if (withSecond && !blocks.empty()) {
            tellura_event_block second = blocks.front();
            second.blockNumber = 2;
            second.description = "Second block";
            second.firstYear = second.outputStartingYear = static_cast<int16_t>(blocks.front().lastYear + 1);
            second.lastYear = static_cast<int16_t>(second.firstYear + 2);
            second.weatherChoice = kWeatherMean;
            blocks.push_back(second);
        }
        if (!saveEventBlocks(*db_, kRecord, blocks, errors)) qWarning("%s", errors.text().c_str());
        return blocks;
    }

    std::vector<tellura_event_block> stored() {
        std::vector<tellura_event_block> blocks;
        sb::message_sink errors;
        if (!loadEventBlocks(*db_, kRecord, blocks, errors)) qWarning("%s", errors.text().c_str());
        return blocks;
    }

    // Presses OK; returns the text of the Errors dialog it showed (empty when none).
    QString pressOk(dialog_event_blocks& d) {
        QString shown;
        modal_watch watch(answer(shown));
        d.accept();
        return shown;
    }

    static void choose(QComboBox* combo, const char* text) {
        const int index = combo->findText(QString::fromUtf8(text));
        QVERIFY2(index >= 0, text);
        combo->setCurrentIndex(index);
    }

private slots:
    void initTestCase() {
        // The demo set-up shipped with the program, read in as record 1.
        project_ = dir_.filePath("run.sbproj");
        sb::message_sink errors;
        db_ = createNewProject(project_.toStdString(), errors);
        QVERIFY(db_);
        QVERIFY2(importRunFiles(*db_, SB_SHARE_DIR "/demo/", "demo.sch", kDiurna45, kRecord, errors),
                 errors.text().c_str());
        // Record 1 (the new project's default record) becomes a runnable copy of it.
        QVERIFY2(copyRecord(*db_, kRecord, 1, errors), errors.text().c_str());
        // The run directory is the model's folder: links to the stand-in in a
        // folder of the test's own, with the shared data beside it as installed.
        QVERIFY(QDir(dir_.path()).mkpath("model"));
        QVERIFY(QFile::link(SB_BIN_DIR "/tellura-standin", dir_.filePath("model/tellura-standin")));
        QVERIFY(QFile::link(SB_BIN_DIR "/list100-standin", dir_.filePath("model/list100-standin")));
        QVERIFY(QDir(dir_.path()).mkpath("share"));
        QVERIFY(QFile::link(SB_SHARE_DIR, dir_.filePath("share/soilbench")));
    }

    void runOneRecordFromTheRunDialogToTheChart() {
        // The demo's record as imported, never run, whatever other slots did.
        startFromTheDemoBlocks(false);
        QVERIFY(db_->execute("DELETE * FROM `Run History` WHERE [ID] = 5").ok());
        app_soilbench settings = runSettings("profile.ini", 60000);
        main_window w(settings);
        w.resize(1200, 800);
        w.show();
        QVERIFY(w.openProject(project_));
        sb::message_sink errors;
        QVERIFY(w.document()->moveToId(5, errors));
        QCOMPARE(lastRunOf(w, 5), QStringLiteral("never run"));
        QCOMPARE(lastRunOf(w, 5, Qt::ToolTipRole), QStringLiteral("Never run"));

        QString heading, report;
        onModals({[&](QWidget* m) {
                      auto* run = qobject_cast<dialog_run*>(m);
                      QVERIFY(run);
                      heading = run->heading();
                      QVERIFY(run->firstYear()->isEnabled());
                      run->accept();
                  },
                  reportOf(report)});
        w.runCommand(command_id::runOne);
        QCOMPARE(heading, QStringLiteral("5 \"Demo cropland\""));
        QVERIFY2(report.contains("Total Elapsed: "), qPrintable(report));
        QVERIFY2(!report.contains("ERROR"), qPrintable(report));
        QCOMPARE(lastRunOf(w, 5), QStringLiteral("good"));
        QVERIFY2(lastRunOf(w, 5, Qt::ToolTipRole).startsWith("Last run good, ended 20"),
                 qPrintable(lastRunOf(w, 5, Qt::ToolTipRole)));

        // The outputs are stored and reach the chart.
        view_output* monthly = w.showOutputView(static_cast<int>(table_id::output_monthly));
        QVERIFY(monthly->model().rowCount() > 0);
        monthly->chooseVariables({"somtc", "aglivc"});
        QCOMPARE(monthly->seriesCount(), 2);
        // Key columns show as whole numbers, values right-aligned.
        const output_table_model& table = monthly->model();
        QCOMPARE(table.data(table.index(0, 0)).toString(), QStringLiteral("1990"));
        QCOMPARE(table.data(table.index(0, 2), Qt::TextAlignmentRole).toInt(), int(Qt::AlignRight | Qt::AlignVCenter));
        auto* series = qobject_cast<QLineSeries*>(monthly->chartView()->chart()->series().first());
        QCOMPARE(series->count(), monthly->model().rowCount());
        const QString csv = dir_.filePath("monthly.csv");
        QVERIFY(monthly->exportTable(csv));
        QFile file(csv);
        QVERIFY(file.open(QIODevice::ReadOnly));
        // The exported table is the record's stored outputs as the command line exports them.
        tellura_control_record stored;
        tellura_outputs storedOutputs;
        QVERIFY(loadControlRecordWithOutputs(w.document()->db(), 5, stored, storedOutputs, errors));
        const QByteArray exported = file.readAll();
        QVERIFY(exported.startsWith("ID,Year,Month,crpval,"));
        QCOMPARE(exported.toStdString(), outputCsv(storedOutputs, table_id::output_monthly));
        QVERIFY(monthly->exportChart(dir_.filePath("chart.png")));
        QVERIFY(QImage(dir_.filePath("chart.png")).width() > 100);
        QVERIFY(w.recordView()->printHtml().contains("<td>Demo cropland</td>"));
    }

    // Cancel ends the hanging model at once, and no further record is started.
    void cancelEndsAHangingRunSetOrSingleRun() {
        app_soilbench settings = runSettings("profile3.ini", 120000);
        main_window w(settings);
        QVERIFY(w.openProject(project_));
        sb::message_sink errors;
        QVERIFY(w.document()->moveToId(5, errors));
        const QStringList before{lastRunOf(w, 1), lastRunOf(w, 5)};
        cancelled_run set = cancelHangingRun(w, command_id::runMultiple, [](QWidget* m) {
            if (auto* d = qobject_cast<dialog_run_set*>(m)) {
                d->setIdList("1-9");
                d->makeWhere();
                d->accept();
            }
        });
        QVERIFY2(set.progressText.startsWith("Running TELLURA #1 Record="), qPrintable(set.progressText));
        QVERIFY2(set.report.contains("Elapsed: "), qPrintable(set.report));
        QVERIFY2(set.report.contains("Fail count=1"), qPrintable(set.report));

        // Of records 1 and 5, only the first in the table ran.
        QVERIFY(w.document()->moveToId(5, errors));
        const QStringList states{lastRunOf(w, 1), lastRunOf(w, 5)};
        QVERIFY2(states == QStringList({"failed", before[1]}) || states == QStringList({before[0], "failed"}),
                 qPrintable(before.join(", ") + " -> " + states.join(", ")));
        cancelled_run one = cancelHangingRun(w, command_id::runOne, [](QWidget* m) {
            if (auto* d = qobject_cast<dialog_run*>(m)) d->accept();
        });
        QCOMPARE(one.progressText, QStringLiteral("Running TELLURA, ID=5"));
        QVERIFY2(one.report.contains("Total Elapsed: "), qPrintable(one.report));
        // The list shows the cancelled run at once, with its message.
        QCOMPARE(lastRunOf(w, 5), QStringLiteral("failed"));
        const QString tip = lastRunOf(w, 5, Qt::ToolTipRole);
        QVERIFY2(tip.startsWith("Last run failed, ended 20") && tip.contains("Process Cancelled/Error"),
                 qPrintable(tip));
        for (const cancelled_run& run : {set, one}) {
            QVERIFY(run.cancelEnabled);
            QVERIFY2(run.report.contains("Process Cancelled/Error"), qPrintable(run.report));
            QVERIFY2(run.cancelMs >= 0 && run.cancelMs < 10000, qPrintable(QString::number(run.cancelMs)));
        }
    }

    void unknownCropIsRefusedThenTheFixedBlockIsSavedAndReadBack() {
        const std::vector<tellura_event_block> before = startFromTheDemoBlocks(false);
        QCOMPARE(stored().size(), size_t(1));
        dialog_event_blocks d(*db_, kRecord, kDiurna45);
        QCOMPARE(d.blockList()->count(), static_cast<int>(before.size()));
        QCOMPARE(d.weatherChoice()->count(), 4);
        QCOMPARE(d.weatherChoice()->itemText(2), QStringLiteral("F From the beginning of an actual weather file"));

        d.addBlock();
        QCOMPARE(d.blockList()->currentRow(), static_cast<int>(before.size()));
        d.description()->setText("Added block");
        d.blockField(dialog_event_blocks::kLastYear)->setValue(before.back().lastYear + 3);
        choose(d.weatherChoice(), weatherChoiceText(kWeatherMean));
        d.addEvent();
        d.eventField(dialog_event_blocks::kYear)->setValue(2);
        d.eventField(dialog_event_blocks::kMonth)->setValue(4);
        choose(d.eventType(), "CROP");
        // The item offers the project's crops and takes any typed name.
        QVERIFY(d.eventItem()->count() > 0);
        const QString crop = d.eventItem()->itemText(0);
        d.eventItem()->setEditText("NOSUCH");
        d.parameter(0)->setValue(1.5);

        const QString refused = pressOk(d);
        QVERIFY2(refused.contains("ERROR, unknown crop \"NOSUCH\" selected in event for year 2, month 4.\n"),
                 qPrintable(refused));
        QCOMPARE(d.result(), int(QDialog::Rejected));
        QCOMPARE(stored(), before);  // nothing was written

        d.eventItem()->setEditText(crop);
        const QString shown = pressOk(d);
        QVERIFY2(!shown.contains("ERROR"), qPrintable(shown));
        QCOMPARE(d.result(), int(QDialog::Accepted));
        const std::vector<tellura_event_block> after = stored();
        QCOMPARE(after.size(), before.size() + 1);
        QVERIFY(after == d.blocks());
        const tellura_event_block& added = after.back();
        QCOMPARE(added.description, std::string("Added block"));
        QCOMPARE(added.blockNumber, static_cast<int16_t>(after.size()));
        QCOMPARE(added.weatherChoice, static_cast<uint8_t>(kWeatherMean));
        QCOMPARE(added.events.size(), size_t(1));
        const tellura_event& event = added.events[0];
        QCOMPARE(QString::fromStdString(event.item), crop);
        QVERIFY(event.type == kEventCrop && event.year == 2 && event.month == 4 && event.parameter1 == 1.5f);
    }

    void blocksAreReorderedAndAnEventIsDeleted() {
        const std::vector<tellura_event_block> before = startFromTheDemoBlocks(true);
        QCOMPARE(stored().size(), size_t(2));
        dialog_event_blocks d(*db_, kRecord, kDiurna45);

        // The first block with more than one event loses its second.
        size_t first = 0;
        while (first < before.size() && before[first].events.size() < 2) ++first;
        QVERIFY(first < before.size());
        d.blockList()->setCurrentRow(static_cast<int>(first));
        d.eventList()->setCurrentRow(1);
        d.deleteEvent();
        QCOMPARE(d.eventList()->count(), static_cast<int>(before[first].events.size()) - 1);

        // The last block moves up one place.
        const int last = static_cast<int>(before.size()) - 1;
        d.blockList()->setCurrentRow(last);
        d.moveBlockUp();
        QCOMPARE(d.blockList()->currentRow(), last - 1);
        QCOMPARE(d.description()->text(), QString::fromStdString(before.back().description));
        d.moveBlockUp();  // and on to the top when there is room
        QCOMPARE(d.blockList()->currentRow(), std::max(last - 2, 0));

        std::vector<tellura_event_block> expected = before;
        expected[first].events.erase(expected[first].events.begin() + 1);
        std::rotate(expected.begin() + std::max(last - 2, 0), expected.begin() + last, expected.end());
        for (size_t i = 0; i < expected.size(); ++i) {
            expected[i].blockNumber = static_cast<int16_t>(i + 1);  // numbered in the new order
            for (size_t j = 0; j < expected[i].events.size(); ++j)
                expected[i].events[j].order = static_cast<int16_t>(j + 1);
        }

        const QString shown = pressOk(d);
        QVERIFY2(!shown.contains("ERROR"), qPrintable(shown));
        QCOMPARE(d.result(), int(QDialog::Accepted));
        const std::vector<tellura_event_block> after = stored();
        QCOMPARE(after.size(), expected.size());
        for (size_t i = 0; i < after.size(); ++i) QVERIFY2(after[i] == expected[i], expected[i].description.c_str());
        QVERIFY(after.front().description != before.front().description);
    }

    void theEventViewShowsTheBlocksAndOpensTheEditorAndRedrawsAfterASave() {
        const std::vector<tellura_event_block> before = startFromTheDemoBlocks(true);
        QCOMPARE(stored().size(), size_t(2));
        app_soilbench settings(dir_.filePath("events.ini").toStdString());
        settings.recordList = false;
        settings.version = kDiurna45;
        main_window w(settings);
        QVERIFY(w.openProject(project_));
        sb::message_sink errors;
        QVERIFY(w.document()->moveToId(kRecord, errors));
        w.runCommand(command_id::viewEvents);
        auto* view = w.findChild<view_events*>();
        QVERIFY(view);
        QCOMPARE(view->tree()->topLevelItemCount(), static_cast<int>(before.size()));
        QVERIFY(!before[0].events.empty());
        QCOMPARE(view->tree()->topLevelItem(0)->childCount(), static_cast<int>(before[0].events.size()));
        QCOMPARE(view->tree()->topLevelItem(0)->child(0)->text(0),
                 QString::fromLatin1(eventTypeName(before[0].events[0].type)));
        QPushButton* edit = nullptr;
        for (auto* b : view->findChildren<QPushButton*>())
            if (b->text() == QStringLiteral("Edit Event Blocks...")) edit = b;
        QVERIFY(edit);

        int32_t editedId = 0;
        onNextModal([&](QWidget* m) {
            auto* d = qobject_cast<dialog_event_blocks*>(m);
            if (!d) {
                m->close();
                return;
            }
            editedId = d->windowTitle().section(' ', -1).toInt();
            d->blockList()->setCurrentRow(0);
            d->deleteBlock();
            d->accept();
        });
        edit->click();
        QCOMPARE(editedId, kRecord);
        QCOMPARE(stored().size(), before.size() - 1);
        QCOMPARE(view->tree()->topLevelItemCount(), static_cast<int>(before.size()) - 1);
    }

    void missingWeatherYearsAreWarnedAboutAndTheBlocksStillSaved() {
        const std::vector<tellura_event_block> before = startFromTheDemoBlocks(false);
        QCOMPARE(stored().size(), size_t(1));
        QCOMPARE(before.back().weatherChoice, static_cast<uint8_t>(kWeatherFile));  // the demo's own station
        dialog_event_blocks d(*db_, kRecord, kDiurna45);
        d.blockList()->setCurrentRow(static_cast<int>(before.size()) - 1);
        d.addBlock();
        QCOMPARE(d.weatherId()->value(), before.back().weatherId);
        choose(d.weatherChoice(), weatherChoiceText(kWeatherFile));
        d.blockField(dialog_event_blocks::kFirstYear)->setValue(2100);
        d.blockField(dialog_event_blocks::kLastYear)->setValue(2100);
        d.blockField(dialog_event_blocks::kOutputStartingYear)->setValue(2100);
        const QString shown = pressOk(d);
        const QString block = QString::number(before.size() + 1);
        for (const char* year : {"2100", "2101"})
            QVERIFY2(
                shown.contains(QStringLiteral("historical weather data for year %1 in block %2.").arg(year, block)),
                qPrintable(shown));
        QVERIFY2(!shown.contains("ERROR"), qPrintable(shown));
        QCOMPARE(d.result(), int(QDialog::Accepted));
        QCOMPARE(stored().size(), before.size() + 1);

        // A weather file block without a station is an error and nothing is saved.
        dialog_event_blocks again(*db_, kRecord, kDiurna45);
        again.blockList()->setCurrentRow(static_cast<int>(before.size()));
        again.weatherId()->setValue(0);
        QCOMPARE(pressOk(again), QStringLiteral("ERROR, no weather data specified for event block weather choice.\n"));
        QCOMPARE(again.result(), int(QDialog::Rejected));
        QCOMPARE(stored().back().weatherId, before.back().weatherId);
    }
};

QTEST_MAIN(test_ui_demo_record)
#include "test_ui_demo_record.moc"
