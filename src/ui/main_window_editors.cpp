// The frame's editing commands: the record's property sheet, the option
// lists, soils and weather stations.
#include <QApplication>
#include <QStatusBar>

#include "app/app_soilbench.h"
#include "help/help_tables.h"
#include "modeloutput/record_outputs.h"
#include "modeloutput/tellura_output.h"
#include "records/option_list.h"
#include "records/tellura_control_record.h"
#include "records/tellura_soil.h"
#include "records/tellura_weather_station.h"
#include "ui/dialog_errors.h"
#include "ui/dialog_option_list.h"
#include "ui/dialog_soil_editor.h"
#include "ui/dialog_weather_stations.h"
#include "ui/doc_soilbench.h"
#include "ui/field_help_source.h"
#include "ui/main_window.h"
#include "ui/propsheet_control_record.h"

namespace sb {

// A help file that could not be read leaves every field with "Not Found: ";
// the status bar says why, so the user is not left guessing.
void main_window::noteHelpProblems() {
    const std::string messages = fieldHelpLoadMessages(settings_);
    if (!messages.empty()) statusBar()->showMessage(QString::fromStdString(messages).section('\n', 0, 0).trimmed());
}

void main_window::editRecord() {
    if (!doc_ || doc_->currentRow() < 0) return;
    message_sink errors;
    tellura_control_record record;
    tellura_outputs outputs;
    if (!loadControlRecordWithOutputs(doc_->db(), doc_->currentId(), record, outputs, errors)) {
        showErrorsIfAny(this, errors);
        return;
    }
    noteHelpProblems();
    propsheet_control_record sheet(record, makeFieldHelpLookup(settings_, kHelpFixed),
                                   makeFieldHelpLookup(settings_, kHelpSite), this);
    if (sheet.exec() != QDialog::Accepted) {
        showErrorsIfAny(this, errors);
        return;
    }
    recordCommand(QStringLiteral("Errors"), [&](message_sink& e) {
        e.add(errors);
        saveControlRecordWithOutputs(doc_->db(), record, outputs, e);
    });
    message_sink ignored;
    doc_->moveToId(record.id(), ignored);
}

void main_window::editOptionList(int kind) {
    if (!doc_) return;
    auto list = makeOptionList(static_cast<option_kind>(kind));
    message_sink errors;
    list->loadFromDatabase(doc_->db(), errors);
    showErrorsIfAny(this, errors);
    noteHelpProblems();
    // Help tables number the option files in member order, from 1.
    dialog_option_list dialog(*list, settings_.version, makeFieldHelpLookup(settings_, kHelpCrop + kind), this);
    if (dialog.exec() != QDialog::Accepted) return;
    recordCommand(QString::fromLatin1(list->member().saveErrorTitle),
                  [&](message_sink& e) { list->saveToDatabase(doc_->db(), e); });
}

void main_window::editSoils() {
    if (!doc_) return;
    tellura_soils soils;
    message_sink errors;
    soils.load(doc_->db(), errors);
    showErrorsIfAny(this, errors);
    dialog_soil_editor dialog(soils, makeFieldHelpLookup(settings_, kHelpSite), this);
    if (dialog.exec() != QDialog::Accepted) return;
    recordCommand(QStringLiteral("Errors"), [&](message_sink& e) { dialog.save(doc_->db(), e); });
}

void main_window::editWeatherStations() {
    if (!doc_) return;
    tellura_weather_stations stations;
    message_sink errors;
    loadWeatherStations(doc_->db(), stations, errors);
    showErrorsIfAny(this, errors);
    dialog_weather_stations dialog(stations, doc_->db(), this);
    if (dialog.exec() != QDialog::Accepted) return;
    recordCommand(QStringLiteral("Errors"), [&](message_sink& e) { dialog.save(doc_->db(), e); });
}

}  // namespace sb
