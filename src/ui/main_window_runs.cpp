// The frame's run commands. A run works on a worker thread (background_run)
// with the progress dialog live; the worker opens its own connection to the
// project, since a database connection belongs to the thread that made it.
#include <QApplication>
#include <QFileDialog>

#include "app/app_soilbench.h"
#include "records/tellura_control_record.h"
#include "ui/background_run.h"
#include "ui/dialog_diurna_output_files.h"
#include "ui/dialog_errors.h"
#include "ui/dialog_progress.h"
#include "ui/dialog_run.h"
#include "ui/dialog_run_set.h"
#include "ui/doc_soilbench.h"
#include "ui/main_window.h"

namespace sb {

void main_window::diurnaOutputFiles() {
    dialog_diurna_output_files dialog(settings_, this);
    dialog.exec();
}

void main_window::runOneRecord() {
    if (!doc_ || doc_->currentRow() < 0) return;
    std::string errors;
    tellura_control_record record;
    if (!readControlRecord(doc_->db(), doc_->currentId(), false, record, errors)) {
        showErrorsIfAny(this, errors);
        return;
    }
    dialog_run dialog(record.id(), QString::fromStdString(record.description()), record.blocks, settings_, this);
    if (dialog.exec() != QDialog::Accepted) {
        showErrorsIfAny(this, errors);
        return;
    }
    // TODO(run controller): hand the record, the chosen blocks and the settings to
    // the core's run controller on a background_run with dialog_progress, then
    // show its run log in the "Errors" dialog and refresh the output views.
    errors += "ERROR, the run controller is not in this build yet; nothing was run.\n";
    showErrorsIfAny(this, errors);
}

void main_window::runMultipleRecords() {
    if (!doc_) return;
    dialog_run_set dialog(this);
    if (dialog.exec() != QDialog::Accepted) return;
    // TODO(run controller): run the set (dialog.whereClause(), dialog.stopOnPrecheckError())
    // through the core's run controller on a background_run with dialog_progress.
    showErrorsIfAny(this, "ERROR, the run controller is not in this build yet; nothing was run.\n");
}

void main_window::readBinFile() {
    if (!doc_) return;
    const QString path = QFileDialog::getOpenFileName(this, QStringLiteral("Read .BIN file"), QStringLiteral("varnak_ex.bin"),
                                                      QStringLiteral("Binary Output (*.bin);;All Files (*.*)"));
    if (path.isEmpty()) return;
    // TODO(core): list what the binary reader reads from the file.
    showErrorsIfAny(this, "ERROR, reading a binary file on its own is not in this build yet.\n");
}

}  // namespace sb
