// The frame's imports and its commands on stored outputs, driven through
// their menus and dialogs: run files, monthly weather (menu and station
// editor), a binary output file read whole, output values copied into the
// record and its soil, and the output view that opens with data.
#include <QFile>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QPointer>
#include <QTableWidget>
#include <QtTest>

#include "app/app_soilbench.h"
#include "modeloutput/output_tables.h"
#include "modeloutput/tellura_output.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"
#include "ui/command_table.h"
#include "ui/dialog_errors.h"
#include "ui/dialog_weather_stations.h"
#include "ui/doc_soilbench.h"
#include "ui/main_window.h"
#include "ui/view_output.h"
#include "ui_test_support.h"

using namespace sb;
using sbtest_ui::pressButton;

namespace {

using modal_handler = std::function<void(QWidget*)>;

// Answers the next modal dialogs in turn, one handler each. A dialog just
// answered may still be the active one for a moment: it is not answered twice.
void onModals(std::vector<modal_handler> handlers, QPointer<QWidget> answered = nullptr, int triesLeft = 500) {
    if (handlers.empty()) return;
    QTimer::singleShot(10, [handlers, answered, triesLeft]() mutable {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || modal == answered) {
            if (triesLeft > 0) onModals(handlers, answered, triesLeft - 1);
            return;
        }
        modal_handler first = handlers.front();
        handlers.erase(handlers.begin());
        first(modal);
        onModals(handlers, modal);
    });
}

// The name is typed into the dialog's file name field: selectFile() leaves a
// field that has the focus alone, and a dialog just shown may have given it.
void acceptFile(QFileDialog* d, const QString& path) {
    if (auto* typed = d->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))) typed->setText(path);
    else d->selectFile(path);
    static_cast<QDialog*>(d)->accept();
}

modal_handler chooseFile(const QString& path) {
    return [path](QWidget* m) {
        auto* d = qobject_cast<QFileDialog*>(m);
        QVERIFY(d);
        acceptFile(d, path);
    };
}

// Closes the errors dialog, keeping its text.
modal_handler readErrors(QString& text) {
    return [&text](QWidget* m) {
        auto* e = qobject_cast<dialog_errors*>(m);
        QVERIFY(e);
        text = e->text();
        e->accept();
    };
}

void writeText(const QString& path, const QByteArray& text) {
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(text);
}

// Records of time + three floats in the 1-byte-marker framing.
QByteArray byteMarkedFile(const std::vector<std::array<float, 4>>& records) {
    QByteArray bytes(1, char(75));
    for (const auto& r : records) {
        bytes += char(16);
        bytes += QByteArray(reinterpret_cast<const char*>(r.data()), 16);
        bytes += char(16);
    }
    return bytes + char(130);
}

}  // namespace

class test_ui_imports_and_outputs : public QObject {
    Q_OBJECT
    QTemporaryDir dir_;

    std::unique_ptr<main_window> openWindow(app_soilbench& settings, const QString& project) {
        settings.setProfilePath(dir_.filePath("profile.ini").toStdString());
        settings.recordList = false;
        auto w = std::make_unique<main_window>(settings);
        if (!w->openProject(project)) return nullptr;
        return w;
    }

private slots:
    void runFilesProposeTheNextIdAndAskBeforeReplacing() {
        const QString path = dir_.filePath("runfiles.sbproj");
        QCOMPARE(QString::fromStdString(sbtest_ui::makeProject(path, {1, 2})), QString());
        app_soilbench settings;
        settings.version = kDiurna45;
        auto w = openWindow(settings, path);
        QVERIFY(w);
        const QString schedule = QStringLiteral(SB_SHARE_DIR "/demo/demo.sch");
        struct {
            int proposed;        // one past the highest ID
            int id;              // typed over the proposal; 0 keeps it
            const char* answer;  // to the replace question; nullptr: none asked
            const char* description;
        } imports[] = {{3, 0, nullptr, "Demo cropland"}, {4, 2, "No", "Record 2"}, {4, 2, "Yes", "Demo cropland"}};
        for (const auto& i : imports) {
            int proposed = 0;
            QString question, report;
            std::vector<modal_handler> steps = {chooseFile(schedule), [&](QWidget* m) {
                                                    auto* d = qobject_cast<QInputDialog*>(m);
                                                    QVERIFY(d);
                                                    proposed = d->intValue();
                                                    if (i.id) d->setIntValue(i.id);
                                                    d->accept();
                                                }};
            if (i.answer)
                steps.push_back([&](QWidget* m) {
                    auto* box = qobject_cast<QMessageBox*>(m);
                    QVERIFY(box);
                    question = box->text();
                    QVERIFY(pressButton(m, i.answer));
                });
            if (!i.answer || QString(i.answer) == "Yes") steps.push_back(readErrors(report));
            onModals(steps);
            w->runCommand(command_id::importRunFiles);
            QCOMPARE(proposed, i.proposed);
            if (i.answer)
                QCOMPARE(question,
                         QStringLiteral("Record ID = 2 exists. Replace it, with its outputs, by the imported record?"));
            QVERIFY2(!report.contains("ERROR"), qPrintable(report));
            tellura_control_record record;
            std::string errors;
            QVERIFY(readControlRecord(w->document()->db(), i.id ? i.id : 3, record, errors));
            QCOMPARE(QString::fromStdString(record.description()), QString::fromLatin1(i.description));
        }
        // Each import made its own soil and station, past the IDs records 1 and 2 named.
        tellura_control_record third, second;
        std::string errors;
        QVERIFY(readControlRecord(w->document()->db(), 3, third, errors));
        QVERIFY(readControlRecord(w->document()->db(), 2, second, errors));
        QVERIFY(third.soilId() > 1 && second.soilId() > third.soilId());
        QVERIFY(third.weatherId() > 1 && second.weatherId() > third.weatherId());
    }

    void monthlyWeatherFromTheMenuAndTheStationEditor() {
        const QString path = dir_.filePath("weather.sbproj");
        QCOMPARE(QString::fromStdString(sbtest_ui::makeProject(path, {1})), QString());  // names station 1
        app_soilbench settings;
        auto w = openWindow(settings, path);
        QVERIFY(w);
        std::string errors;
        TelluraWeatherStations station;
        station.id = 1;
        QVERIFY(saveWeatherStation(w->document()->db(), station, errors));
        const QString file = dir_.filePath("monthly.wth");
        writeText(file,
                  "prec 1990 1 2 3 4 5 6 7 8 9 10 11 12\ntmin 1990 -5 -4 -3 -2 -1 0 1 2 3 4 5 6\n"
                  "tmax 1990 5 6 7 8 9 10 11 12 13 14 15 16\n");
        QString report;
        onModals({chooseFile(file), readErrors(report)});
        w->runCommand(command_id::importWeatherMonthly);
        QVERIFY2(report.contains("Imported 12 records from"), qPrintable(report));
        QVERIFY(loadMonthlyHistory(w->document()->db(), station, errors));
        QCOMPARE(station.monthlyYear(1990).monthRecord(3).tmx2m, 7.0f);

        // The station editor reads another year into the shown station; OK stores it.
        writeText(file, "prec 1991 1 1 1 1 1 1 1 1 1 1 1 1\n");
        tellura_weather_station_list stations;
        QVERIFY(loadWeatherStations(w->document()->db(), stations, errors));
        dialog_weather_stations editor(stations, w->document()->db());
        QVERIFY(editor.importWeatherFile(file, false, errors));
        writeText(dir_.filePath("bad.wth"), "wind 1992 1\n");
        QVERIFY(!editor.importWeatherFile(dir_.filePath("bad.wth"), false, errors));
        QCOMPARE(editor.monthlyHistory()->rowCount(), 24);  // the bad file added nothing
        QVERIFY(editor.save(w->document()->db(), errors));
        QVERIFY(loadMonthlyHistory(w->document()->db(), station, errors));
        QCOMPARE(station.monthly.size(), size_t(2));
    }

    void readBinFileReadsEveryRecord() {
        const QString path = dir_.filePath("bin.sbproj");
        QCOMPARE(QString::fromStdString(sbtest_ui::makeProject(path, {1})), QString());
        writeText(dir_.filePath("small.tsv"),
                  "block\tindex\tname\nplot1\t1\tsomsc\nplot2\t1\taglivc\nplot3\t1\tcprodc\n");
        writeText(dir_.filePath("small.bin"),
                  byteMarkedFile({{{1990, 1, 2, 3}}, {{1991, 4, 5, 6}}, {{1992, 7, 8, 9}}}));
        app_soilbench settings;
        settings.version = kDiurna45;
        settings.binaryLayouts = dir_.filePath("small.tsv").toStdString();
        auto w = openWindow(settings, path);
        QVERIFY(w);
        QString report;
        onModals({chooseFile(dir_.filePath("small.bin")), [](QWidget* m) { QVERIFY(pressButton(m, "Annual")); },
                  readErrors(report)});
        w->runCommand(command_id::readBin);
        QVERIFY2(report.startsWith("3 records read, from years 1990 to 1992.\n3 annual and 0 monthly records read"),
                 qPrintable(report));
        QVERIFY2(report.contains("\n0,1992,"), qPrintable(report));
    }

    void copyOutputToInputFillsTheSoilLayers() {
        const QString path = dir_.filePath("copy.sbproj");
        QCOMPARE(QString::fromStdString(sbtest_ui::makeProject(path, {1})), QString());  // names soil 1
        app_soilbench settings;
        auto w = openWindow(settings, path);
        QVERIFY(w);
        database& db = w->document()->db();
        std::string errors;
        TelluraSoils soil;
        soil.setSoilId(1);
        soil.layerCount = 3;
        for (int l = 0; l < 3; ++l) soil.layers[static_cast<size_t>(l)].setNumber("Mineral N", 1.0);
        QVERIFY(writeSoil(soil, db, errors));
        tellura_outputs outputs;
        outputs.monthlyFor(1990, 12).setNumber("aglive(1)", 3.5);
        for (int l : {1, 2}) {
            outputs.soilLayerFor(l).setNumber("Mineral N", 10.0 * l);
            outputs.soilLayerFor(l).setNumber("Initial Relative Water Content", 0.25 * l);
        }
        QVERIFY2(storeOutputs(db, 1, outputs, errors), errors.c_str());

        QString report;
        onModals({readErrors(report)});
        w->runCommand(command_id::copyOutputToInput);
        QCOMPARE(report, QStringLiteral("Monthly copied for record.\n"));
        tellura_soil_list soils;
        QVERIFY(soils.load(db, errors));
        const TelluraSoils* filled = soils.find(1);
        QVERIFY(filled);
        const double mineralN[] = {10, 20, 1};  // layer 3 has no output: kept
        for (size_t l = 0; l < 3; ++l) QCOMPARE(filled->layers[l].number("Mineral N"), mineralN[l]);
        QCOMPARE(filled->layers[1].number("Initial Relative Water Content"), 0.5);
        tellura_control_record record;
        QVERIFY(readControlRecord(db, 1, record, errors));
        QCOMPARE(record.site.number("AGLIVE(1)"), 3.5);
    }

    void theOutputViewThatHasDataOpensWithVariablesThatHoldIt() {
        struct {
            bool annual, monthly, daily;
            const char* title;  // nullptr: no view opens
            QStringList chosen;
        } cases[] = {
            {true, true, true, "Annual Output - ID 1", {"n2oflux", "ppt"}},
            {false, true, true, "Monthly Output - ID 1", {"aglivc", "somtc"}},
            {false, false, true, "Daily Output - ID 1", {"N2Oflux", "CO2resp"}},
            {false, false, false, nullptr, {}},
        };
        int n = 0;
        for (const auto& c : cases) {
            const QString path = dir_.filePath(QStringLiteral("view%1.sbproj").arg(++n));
            QCOMPARE(QString::fromStdString(sbtest_ui::makeProject(path, {1})), QString());
            tellura_outputs outputs;
            // Annual rows as the daily-step release's year summary gives them.
            if (c.annual)
                for (int year : {1990, 1991}) {
                    outputs.annualFor(year).setNumber("n2oflux", 0.1 * year);
                    outputs.annualFor(year).setNumber("ppt", 500);
                }
            if (c.monthly) outputs.monthlyFor(1990, 1).setNumber("somtc", 2000);
            if (c.daily) outputs.daily.emplace_back().setYearDay(1990, 1);
            app_soilbench settings;
            auto w = openWindow(settings, path);
            QVERIFY(w);
            std::string errors;
            QVERIFY(storeOutputs(w->document()->db(), 1, outputs, errors));
            view_output* view = w->showOutputViewWithData();
            QCOMPARE(view ? view->windowTitle() : QString(), c.title ? QString(c.title) : QString());
            if (view) QCOMPARE(view->chosenVariables(), c.chosen);
        }
    }
};

QTEST_MAIN(test_ui_imports_and_outputs)
#include "test_ui_imports_and_outputs.moc"
