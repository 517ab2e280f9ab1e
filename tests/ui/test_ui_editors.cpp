// Editing commands of the frame end to end: option lists saved whole with
// their members' error titles, weather stations and soils written back, the
// record property sheet saved, and the About box.
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QTableWidget>
#include <QtTest>

#include "app/app_soilbench.h"
#include "records/option_list.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"
#include "ui/command_table.h"
#include "ui/dialog_errors.h"
#include "ui/dialog_option_list.h"
#include "ui/dialog_soil_editor.h"
#include "ui/dialog_weather_stations.h"
#include "ui/doc_soilbench.h"
#include "ui/main_window.h"
#include "ui/propsheet_control_record.h"
#include "ui_test_support.h"

using namespace sb;
using sbtest_ui::onNextModal;

class test_ui_editors : public QObject {
    Q_OBJECT
    QTemporaryDir dir_;
    std::unique_ptr<app_soilbench> settings_;
    std::unique_ptr<main_window> window_;

    database& db() { return window_->document()->db(); }

    // Runs a command whose first modal dialog is handled by `edit`; returns
    // the title and text of an error list shown after it (empty when none).
    std::pair<QString, QString> runEditor(command_id id, std::function<void(QWidget*)> edit) {
        std::pair<QString, QString> shown;
        onNextModal([&, edit](QWidget* m) {
            edit(m);
            onNextModal([&](QWidget* next) {
                if (auto* e = qobject_cast<dialog_errors*>(next)) shown = {e->windowTitle(), e->text()};
                next->close();
            }, 30);
        });
        window_->runCommand(id);
        QTest::qWait(400);  // let the look-out for a message end before the next command
        return shown;
    }

private slots:
    void init() {
        static int n = 0;
        const QString path = dir_.filePath(QStringLiteral("editors%1.sbproj").arg(++n));
        QCOMPARE(QString::fromStdString(sbtest_ui::makeProject(path, {1, 2})), QString());
        settings_ = std::make_unique<app_soilbench>(dir_.filePath("profile.ini").toStdString());
        settings_->recordList = false;
        window_ = std::make_unique<main_window>(*settings_);
        QVERIFY(window_->openProject(path));
    }

    void cropsAreSavedWholeAndDuplicatesReportedUnderTheirTitle() {
        auto shown = runEditor(command_id::editCrops, [](QWidget* m) {
            auto* d = qobject_cast<dialog_option_list*>(m);
            QVERIFY(d);
            d->addOption("CORN");
            d->addOption("OATS");
            d->accept();
        });
        QCOMPARE(shown.first, QString());
        list_tellura_crops crops;
        std::string errors;
        QVERIFY(crops.loadFromDatabase(db(), errors));
        QCOMPARE(crops.size(), size_t(2));

        // A second "CORN" breaks the table's key: the save stops there and says so.
        shown = runEditor(command_id::editCrops, [](QWidget* m) {
            auto* d = qobject_cast<dialog_option_list*>(m);
            QCOMPARE(d->names()->count(), 2);
            d->addOption("CORN");
            d->accept();
        });
        QCOMPARE(shown.first, QStringLiteral("CROP Save Errors"));
        QVERIFY2(shown.second.startsWith("ERROR, unable to insert into table Crops\n"), qPrintable(shown.second));
    }

    void grazeTakesTwoOptionsOfOneNameAndTheEditMenuOrderMapsToTheRightList() {
        auto shown = runEditor(command_id::editGraze, [](QWidget* m) {
            auto* d = qobject_cast<dialog_option_list*>(m);
            QCOMPARE(d->windowTitle(), QStringLiteral("Edit graze.100"));
            d->addOption("GL");
            d->addOption("GL");
            d->accept();
        });
        QCOMPARE(shown.first, QString());
        list_tellura_graze graze;
        std::string errors;
        QVERIFY(graze.loadFromDatabase(db(), errors));
        QCOMPARE(graze.size(), size_t(2));
        runEditor(command_id::editOmad, [](QWidget* m) {
            QCOMPARE(m->windowTitle(), QStringLiteral("Edit omad.100"));
            m->close();
        });
        runEditor(command_id::editTreeRemoval, [](QWidget* m) {
            QCOMPARE(m->windowTitle(), QStringLiteral("Edit trem.100"));
            m->close();
        });
    }

    void weatherStationMeansAreWrittenBack() {
        runEditor(command_id::editWeatherStations, [](QWidget* m) {
            auto* d = qobject_cast<dialog_weather_stations*>(m);
            QVERIFY(d);
            d->addStation(42, "Hill farm");
            d->means()->item(0, 6)->setText("81.5");  // July precipitation
            d->means()->item(4, 0)->setText("-2.25");  // January maximum temperature
            d->accept();
        });
        tellura_weather_station_list stations;
        std::string errors;
        QVERIFY(loadWeatherStations(db(), stations, errors));
        const auto* s = stations.find(42);
        QVERIFY(s);
        QCOMPARE(s->description, std::string("Hill farm"));
        QCOMPARE(s->means[6].precip, 81.5f);
        QCOMPARE(s->means[0].tmx2m, -2.25f);
    }

    void soilLayersAreWrittenBack() {
        TelluraSoils soil;
        soil.setNumber("Soil ID", 9);
        soil.setText("Name", "Loam");
        std::string errors;
        QVERIFY(writeSoil(soil, db(), errors));
        runEditor(command_id::editSoils, [](QWidget* m) {
            auto* d = qobject_cast<dialog_soil_editor*>(m);
            QVERIFY(d);
            std::string e;
            QVERIFY(d->insertLayer(0, e));
            QVERIFY(d->insertLayer(1, e));
            d->waterHolding()->setCurrentIndex(2);
            d->accept();
        });
        tellura_soil_list soils;
        QVERIFY(soils.load(db(), errors));
        QCOMPARE(soils.find(9)->layerCount, 2);
        QCOMPARE(soils.find(9)->number("SWFlag"), 2.0);
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
        std::string errors;
        QVERIFY(readControlRecord(db(), 1, false, r, errors));
        QCOMPARE(r.description(), std::string("Edited"));
        QCOMPARE(r.site.number("SNOW"), 12.5);
        QCOMPARE(window_->document()->currentId(), 1);
    }

    void aboutShowsTheBuildDate() {
        QString text;
        onNextModal([&](QWidget* m) {
            text = qobject_cast<QMessageBox*>(m)->text();
            m->close();
        });
        window_->runCommand(command_id::about);
        QVERIFY2(text.contains(QStringLiteral("Build Date: ") + QString::fromLatin1(__DATE__)), qPrintable(text));
    }
};

QTEST_MAIN(test_ui_editors)
#include "test_ui_editors.moc"
