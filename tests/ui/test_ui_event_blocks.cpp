// The event block editor on the demo set-up: an unknown crop keeps it open
// with the core's message, a fixed one is saved and read back, blocks are
// reordered and events deleted through the widgets, and the record's event
// view shows the blocks and opens the editor.
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QTreeWidget>
#include <QtTest>

#include "app/app_soilbench.h"
#include "app/model_version.h"
#include "modelinput/run_files_import.h"
#include "records/new_project.h"
#include "ui/command_table.h"
#include "ui/dialog_event_blocks.h"
#include "ui/doc_soilbench.h"
#include "ui/main_window.h"
#include "ui/view_events.h"
#include "ui_test_support.h"

using namespace sb;
using namespace sbtest_ui;

class test_ui_event_blocks : public QObject {
    Q_OBJECT
    QTemporaryDir dir_;
    std::unique_ptr<database> db_;
    static constexpr int32_t kRecord = 5;

    std::vector<tellura_event_block> stored() {
        std::vector<tellura_event_block> blocks;
        std::string errors;
        if (!loadEventBlocks(*db_, kRecord, blocks, errors)) qWarning("%s", errors.c_str());
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
        std::string errors;
        const std::string path = dir_.filePath("blocks.sbproj").toStdString();
        db_ = createNewProject(path, errors);
        QVERIFY(db_);
        QVERIFY2(importRunFiles(*db_, SB_SHARE_DIR "/demo/", "demo.sch", kDiurna45, kRecord, errors), errors.c_str());
        QVERIFY(!stored().empty());
    }

    void unknownCropIsRefusedThenTheFixedBlockIsSavedAndReadBack() {
        const std::vector<tellura_event_block> before = stored();
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
        const std::vector<tellura_event_block> before = stored();
        QVERIFY(before.size() >= 2);
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
        const std::vector<tellura_event_block> before = stored();
        app_soilbench settings(dir_.filePath("profile.ini").toStdString());
        settings.recordList = false;
        settings.version = kDiurna45;
        main_window w(settings);
        QVERIFY(w.openProject(dir_.filePath("blocks.sbproj")));
        std::string errors;
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
        const std::vector<tellura_event_block> before = stored();
        QVERIFY(!before.empty());
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

QTEST_MAIN(test_ui_event_blocks)
#include "test_ui_event_blocks.moc"
