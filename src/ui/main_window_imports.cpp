// The frame's import commands and the two that take outputs back in: weather
// history and climate means into a station, output values into the record's
// inputs, and a binary output file read on its own.
#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include "app/app_soilbench.h"
#include "app/text_format.h"
#include "modelinput/site_file.h"
#include "modeloutput/binary_layout.h"
#include "modeloutput/binary_output_reader.h"
#include "modeloutput/output_table_text.h"
#include "modeloutput/output_to_input.h"
#include "modeloutput/record_outputs.h"
#include "modeloutput/tellura_output.h"
#include "records/id_list_filter.h"
#include "records/site_archive.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"
#include "ui/dialog_errors.h"
#include "ui/doc_soilbench.h"
#include "ui/main_window.h"

namespace sb {
namespace {

// The station of the current record, loaded with its climate means; null with
// "ERROR, weather station %ld not found.\n" when the project has none of that ID.
tellura_weather_station* currentStation(doc_soilbench& doc, tellura_weather_stations& stations, message_sink& errors) {
    tellura_control_record record;
    if (!loadControlRecord(doc.db(), doc.currentId(), record, errors)) return nullptr;
    loadWeatherStations(doc.db(), stations, errors);
    tellura_weather_station* station = stations.find(record.weatherId());
    if (!station) errors.errorf("ERROR, weather station %ld not found.\n", static_cast<long>(record.weatherId()));
    return station;
}

}  // namespace

namespace {
const QString kArchiveFilter = QStringLiteral("Site archive (*.esa);;All Files (*)");
}

// The archive's records come in beside the project's, with new IDs where the
// project uses theirs; the report lists each changed ID.
void main_window::importSiteArchive() {
    if (!doc_) return;
    const QString path = QFileDialog::getOpenFileName(this, QStringLiteral("Import ES&A"), QString(), kArchiveFilter);
    if (path.isEmpty()) return;
    recordCommand(QStringLiteral("Import ES&A"), [&](message_sink& report) {
        message_sink messages, errors;
        sb::importSiteArchive(doc_->db(), path.toStdString(), messages, errors);
        report.add(messages);
        report.add(errors);
    });
}

void main_window::exportSiteArchive() {
    if (!doc_ || doc_->currentRow() < 0) return;
    bool ok = false;
    const QString ids = QInputDialog::getText(this, QStringLiteral("Export ES&A"),
                                              QStringLiteral("IDs of the records to export, like \"1, 2, 5-9\":"),
                                              QLineEdit::Normal, QString::number(doc_->currentId()), &ok);
    if (!ok || ids.trimmed().isEmpty()) return;
    const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Export ES&A"),
                                                      QStringLiteral("records.esa"), kArchiveFilter);
    if (path.isEmpty()) return;
    recordCommand(QStringLiteral("Export ES&A"), [&](message_sink& report) {
        message_sink messages, errors;
        std::string filter;
        if (id_list_filter::selectionClause(ids.toStdString(), filter, errors))
            sb::exportSiteArchive(doc_->db(), filter, path.toStdString(), messages, errors);
        report.add(messages);
        report.add(errors);
    });
}

void main_window::importWeatherDaily() { importWeatherHistory(QStringLiteral("Weather Daily Records"), true); }

// Monthly history is what weather choice F writes for the monthly releases.
void main_window::importWeatherMonthly() { importWeatherHistory(QStringLiteral("Weather Monthly Records"), false); }

void main_window::importWeatherHistory(const QString& title, bool daily) {
    if (!doc_ || doc_->currentRow() < 0) return;
    const QString path = QFileDialog::getOpenFileName(this, title, QStringLiteral("weather.wth"),
                                                      QStringLiteral("Weather File (*.wth);;All Files (*)"));
    if (path.isEmpty()) return;
    recordCommand(QStringLiteral("Errors"), [&](message_sink& errors) {
        tellura_weather_stations stations;
        tellura_weather_station* station = currentStation(*doc_, stations, errors);
        if (!station) return;
        // The file adds to the history already stored for the station.
        if (daily) {
            loadDailyHistory(doc_->db(), *station, errors);
            if (readDailyWeatherFile(path.toStdString(), *station, errors))
                saveDailyHistory(doc_->db(), *station, errors);
        } else {
            loadMonthlyHistory(doc_->db(), *station, errors);
            if (readMonthlyWeatherFile(path.toStdString(), *station, errors))
                saveMonthlyHistory(doc_->db(), *station, errors);
        }
    });
}

void main_window::importMonthlyAverages() {
    if (!doc_ || doc_->currentRow() < 0) return;
    const QString path =
        QFileDialog::getOpenFileName(this, QStringLiteral("Monthly Weather Averages"), QStringLiteral("sbsite.100"),
                                     QStringLiteral("Site File (*.100);;All Files (*)"));
    if (path.isEmpty()) return;
    recordCommand(QStringLiteral("Errors"), [&](message_sink& errors) {
        tellura_weather_stations stations;
        tellura_weather_station* station = currentStation(*doc_, stations, errors);
        if (!station) return;
        // Only the climate names of the file go anywhere: the record read here is a scratch one.
        tellura_control_record scratch;
        if (importSiteFile(path.toStdString(), scratch, nullptr, station, errors))
            saveWeatherStation(doc_->db(), *station, errors);
    });
}

void main_window::copyOutputToInput() {
    if (!doc_ || doc_->currentRow() < 0) return;
    recordCommand(QStringLiteral("Errors"),
                  [&](message_sink& errors) { sb::copyOutputToInput(doc_->db(), doc_->currentId(), errors); });
}

void main_window::readBinFile() {
    if (!doc_) return;
    const QString path =
        QFileDialog::getOpenFileName(this, QStringLiteral("Read .BIN file"), QStringLiteral("varnak_ex.bin"),
                                     QStringLiteral("Binary Output (*.bin);;All Files (*.*)"));
    if (path.isEmpty()) return;
    // A file on its own says nothing of its output interval: the user does.
    QMessageBox ask(QMessageBox::Question, QStringLiteral("Read .BIN file"),
                    QStringLiteral("Read the records of \"%1\" as annual or as monthly output?").arg(path),
                    QMessageBox::Cancel, this);
    QAbstractButton* annual = ask.addButton(QStringLiteral("Annual"), QMessageBox::AcceptRole);
    QAbstractButton* monthly = ask.addButton(QStringLiteral("Monthly"), QMessageBox::AcceptRole);
    ask.exec();
    if (ask.clickedButton() != annual && ask.clickedButton() != monthly) return;
    message_sink errors;
    tellura_outputs outputs;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const binary_layout_catalogue layouts = loadBinaryLayouts(settings_.binaryLayoutFiles(), errors);
    readWholeBinaryOutput(path.toStdString(), settings_.version, layouts, ask.clickedButton() == monthly, outputs,
                          errors);
    QApplication::restoreOverrideCursor();
    errors.notef("%zu annual and %zu monthly records read from \"%s\".\n", outputs.annual.size(),
                 outputs.monthlyCount(), path.toStdString().c_str());
    // The records read are shown as CSV text under the count.
    errors.note(outputCsv(outputs, table_id::output_annual));
    errors.note(outputCsv(outputs, table_id::output_monthly));
    if (!outputs.soilLayers.empty()) errors.note(outputCsv(outputs, table_id::output_soil_layers));
    showErrorsIfAny(this, errors, QStringLiteral("Read .BIN file"));
}

}  // namespace sb
