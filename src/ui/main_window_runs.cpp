// The frame's run commands. A run works on a worker thread (background_run)
// with the progress dialog live; the worker opens its own connection to the
// project, since a database connection belongs to the thread that made it.
#include <QApplication>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QMessageBox>

#include "app/app_soilbench.h"
#include "app/text_format.h"
#include "db/database.h"
#include "modeloutput/tellura_output.h"
#include "records/tellura_control_record.h"
#include "run/run_controller.h"
#include "ui/background_run.h"
#include "ui/dialog_diurna_output_files.h"
#include "ui/dialog_errors.h"
#include "ui/dialog_progress.h"
#include "ui/dialog_run.h"
#include "ui/dialog_run_set.h"
#include "ui/doc_soilbench.h"
#include "ui/main_window.h"
#include "ui/progress_observer.h"

namespace sb {
namespace {

run_choices choicesFrom(const dialog_run& dialog, const app_soilbench& settings) {
    run_choices choices;
    for (const tellura_event_block& b : dialog.chosenBlocks()) choices.blockOrder.push_back(b.blockNumber);
    choices.saveDailyFirstYear = settings.saveDailyFirstYear;
    choices.saveDailyLastYear = settings.saveDailyLastYear;
    choices.readBinaryOutput = settings.readBinaryOutput;
    return choices;
}

}  // namespace

void main_window::diurnaOutputFiles() {
    dialog_diurna_output_files dialog(settings_, this);
    dialog.exec();
}

void main_window::runInBackground(const std::function<void(run_feedback&)>& work) {
    background_run run;
    dialog_progress progress(run, this);
    run.start(work);
    progress.exec();
    run.wait();
}

// One controller on the window's own connection loads the project once, checks
// the record and, after the Run dialog, stores the outputs; only the model's
// run goes to the worker thread, with the progress dialog live.
void main_window::runOneRecord() {
    if (!doc_ || doc_->currentRow() < 0) return;
    QElapsedTimer clock;
    clock.start();
    std::string runLog;
    message_sink errors;
    tellura_control_record record;
    run_controller controller(doc_->db(), settings_);
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool runnable =
        controller.loadProjectData(errors) && controller.loadAndCheck(doc_->currentId(), record, errors);
    QApplication::restoreOverrideCursor();
    if (runnable) {
        dialog_run dialog(record.id(), QString::fromStdString(record.description()), record.blocks, settings_, this);
        if (dialog.exec() == QDialog::Accepted) {
            const run_feedback* live = nullptr;  // set and read on the worker thread only
            const auto inBackground = [&](const std::function<void()>& modelRun) {
                runInBackground([&](run_feedback& feedback) {
                    feedback.setText(strprintf("Running TELLURA, ID=%ld", static_cast<long>(record.id())));
                    live = &feedback;
                    modelRun();
                });
            };
            // Cancel ends the model at once; the run then fails with the core's message.
            const auto cancelNow = [&live] { return live && live->cancelled(); };
            tellura_outputs outputs;
            controller.runLoadedRecord(record, outputs, choicesFrom(dialog, settings_), runLog, errors, cancelNow,
                                       inBackground);
        }
    }
    appendf(runLog, "Total Elapsed: %.3f seconds\n", static_cast<double>(clock.elapsed()) / 1000.0);
    showErrorsIfAny(this, runReport(errors, runLog));
    doc_->refreshAll();
}

void main_window::runMultipleRecords() {
    if (!doc_) return;
    dialog_run_set dialog(this);
    if (dialog.exec() != QDialog::Accepted) return;
    run_set_options options;
    options.filter = dialog.whereClause().toStdString();
    options.stopOnPrecheckErrors = dialog.stopOnPrecheckError();
    options.jobs = std::max(1, settings_.jobs);
    const std::string path = doc_->path().toStdString();
    const app_soilbench settings = settings_;
    std::string runLog, precheckMessages;
    message_sink errors;
    runInBackground([&, path, settings, options](run_feedback& feedback) {
        auto db = database::open(path, errors);
        if (!db) return;
        run_controller controller(*db, settings);
        progress_observer observer(feedback);
        if (controller.loadProjectData(errors)) controller.runMultipleRecords(options, observer, runLog);
        errors.add(observer);
        precheckMessages = observer.precheckMessages();
    });
    if (!precheckMessages.empty()) {
        dialog_errors stop(QStringLiteral("Don't run TELLURA til this is fixed"),
                           QString::fromStdString(precheckMessages), this);
        stop.exec();
    }
    showErrorsIfAny(this, runReport(errors, runLog));
    doc_->refreshAll();
}

}  // namespace sb
