// The frame's imports and its commands on stored outputs, through their menus
// and dialogs: run files, monthly weather (menu and station editor), a binary
// output file read whole, output values copied into the record's soil, and
// the output view that opens with data.
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QtTest>

#include "app/app_soilbench.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/tellura_output.h"
#include "records/record_ids.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"
#include "ui/command_table.h"
#include "ui/dialog_weather_stations.h"
#include "ui/doc_soilbench.h"
#include "ui/main_window.h"
#include "ui/view_output.h"
#include "ui_test_support.h"

using namespace sb;
using namespace sbtest_ui;

namespace {

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

class test_ui_imports_and_outputs : public QObject {
    Q_OBJECT
    QTemporaryDir dir_;
    app_soilbench settings_{dir_.filePath("profile.ini").toStdString()};
    std::unique_ptr<main_window> w_;

    // A window on a new project with records of these IDs (each names soil 1 and station 1).
    database& open(const std::vector<int32_t>& ids) {
        static int n = 0;
        const QString path = dir_.filePath(QStringLiteral("p%1.sbproj").arg(++n));
        makeProject(path, ids);
        settings_.recordList = false;
        w_ = std::make_unique<main_window>(settings_);
        w_->openProject(path);
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
            std::string errors;
            QVERIFY(readControlRecord(db, i.typed ? i.typed : 3, record, errors));
            QCOMPARE(record.description(), std::string(i.description));
            QCOMPARE(record.soilId(), i.soil);
        }
    }

    void monthlyWeatherFromTheMenuAndTheStationEditor() {
        database& db = open({1});
        TelluraWeatherStations station;
        station.id = 1;
        std::string errors;
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
        tellura_weather_station_list stations;
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
        TelluraWeatherStations station;
        station.id = 1;
        TelluraSoils soil;
        soil.setSoilId(1);
        std::string errors;
        QVERIFY(saveWeatherStation(from, station, errors) && writeSoil(soil, from, errors));
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

    void copyOutputToInputFillsTheSoilLayers() {
        database& db = open({1});
        TelluraSoils soil;
        soil.setSoilId(1);
        soil.layerCount = 3;
        for (auto& layer : soil.layers) layer.setNumber("Mineral N", 1.0);
        tellura_outputs outputs;
        outputs.monthlyFor(1990, 12).setNumber("aglive(1)", 3.5);
        for (int l : {1, 2}) outputs.soilLayerFor(l).setNumber("Mineral N", 10.0 * l);
        std::string errors;
        QVERIFY(writeSoil(soil, db, errors) && storeOutputs(db, 1, outputs, errors));
        QCOMPARE(run(command_id::copyOutputToInput, {}), QStringLiteral("Monthly copied for record.\n"));
        tellura_soil_list soils;
        QVERIFY(soils.load(db, errors) && soils.find(1));
        const double mineralN[] = {10, 20, 1};  // layer 3 has no output and keeps its value
        for (size_t l = 0; l < 3; ++l) QCOMPARE(soils.find(1)->layers[l].number("Mineral N"), mineralN[l]);
        tellura_control_record record;
        QVERIFY(readControlRecord(db, 1, record, errors));
        QCOMPARE(record.site.number("AGLIVE(1)"), 3.5);  // the last month's live values become the site's
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
            std::string errors;
            QVERIFY(storeOutputs(db, 1, outputs, errors));
            view_output* view = w_->showOutputViewWithData();
            QCOMPARE(view ? view->windowTitle() : QString(), QString(c.title));
            if (view) QCOMPARE(view->chosenVariables(), c.chosen);
        }
    }
};

QTEST_MAIN(test_ui_imports_and_outputs)
#include "test_ui_imports_and_outputs.moc"
