#pragma once
// Helpers shared by the widget tests (header only: every .cpp here is a test program).
#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QPointer>
#include <QTemporaryDir>
#include <QTimer>
#include <functional>
#include <memory>
#include <string>

#include "db/database.h"
#include "records/tellura_control_record.h"
#include "ui/dialog_errors.h"

namespace sbtest_ui {

using modal_handler = std::function<void(QWidget*)>;

// Answers the next modal dialogs in turn, one handler each (polled, because a
// dialog is opened by exec() inside the code under test); a dialog just
// answered may stay the active one for a moment and is not answered twice. It
// looks out for up to 30 s: on a busy machine a dialog can take seconds to
// open. One left looking out only happens when an expected dialog never
// opened, so its test fails anyway.
inline void onModals(std::vector<modal_handler> handlers, QPointer<QWidget> answered = nullptr, int triesLeft = 3000) {
    if (handlers.empty() || triesLeft <= 0) return;
    QTimer::singleShot(10, [handlers, answered, triesLeft]() mutable {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || modal == answered) return onModals(handlers, answered, triesLeft - 1);
        const modal_handler first = handlers.front();
        handlers.erase(handlers.begin());
        first(modal);
        onModals(handlers, modal);
    });
}
inline void onNextModal(modal_handler handler) { onModals({std::move(handler)}); }

// Looks out, for as long as it lives, for the next modal dialog and hands it to
// `handler`. For a dialog that a command may or may not open: it is kept while
// the command runs and ends with it, however slow the machine, so it neither
// misses a late dialog nor is left looking out to catch the next command's.
class modal_watch {
public:
    explicit modal_watch(modal_handler handler) : stopped_(std::make_shared<bool>(false)) {
        lookOut(stopped_, std::move(handler));
    }
    ~modal_watch() { *stopped_ = true; }
    modal_watch(const modal_watch&) = delete;
    modal_watch& operator=(const modal_watch&) = delete;

private:
    static void lookOut(std::shared_ptr<bool> stopped, modal_handler handler) {
        QTimer::singleShot(10, [stopped, handler] {
            if (*stopped) return;
            if (QWidget* modal = QApplication::activeModalWidget()) {
                *stopped = true;
                handler(modal);
            } else {
                lookOut(stopped, handler);
            }
        });
    }
    std::shared_ptr<bool> stopped_;
};

// Presses the button with this text in a dialog or message box.
inline bool pressButton(QWidget* dialog, const QString& text) {
    for (auto* b : dialog->findChildren<QAbstractButton*>())
        if (b->text().remove('&') == QString(text).remove('&')) {
            b->click();
            return true;
        }
    return false;
}

// What a dialog says: an error list's or a message box's text, an input dialog's prompt.
inline QString textOf(QWidget* dialog) {
    if (auto* errors = qobject_cast<sb::dialog_errors*>(dialog)) return errors->text();
    if (auto* box = qobject_cast<QMessageBox*>(dialog)) return box->text();
    if (auto* input = qobject_cast<QInputDialog*>(dialog)) return input->labelText();
    return dialog->windowTitle();
}

// Keeps what the dialog says and presses `button`, or closes it when there is none.
inline modal_handler answer(QString& said, const char* button = nullptr) {
    return [&said, button](QWidget* m) {
        said = textOf(m);
        if (!button || !pressButton(m, button)) m->close();
    };
}

// Types `value` into an input dialog and accepts it; keeps its prompt and the number it offered.
inline modal_handler typeNumber(int value, QString* prompt = nullptr, int* offered = nullptr) {
    return [=](QWidget* m) {
        auto* d = qobject_cast<QInputDialog*>(m);
        if (!d) {
            m->close();
            return;
        }
        if (prompt) *prompt = d->labelText();
        if (offered) *offered = d->intValue();
        d->setIntValue(value);
        d->accept();
    };
}

// A project file with control records of the given IDs (each a default record
// with its description "Record <id>").
inline std::string makeProject(const QString& path, const std::vector<int32_t>& ids) {
    sb::message_sink errors;
    sb::database::create(path.toStdString(), errors);
    auto db = sb::database::open(path.toStdString(), errors);
    if (!db) return errors.text();
    sb::database_maker maker(*db);
    maker.createAllTables(errors);
    for (int32_t id : ids) {
        sb::tellura_control_record r;
        r.setId(id);
        r.row.setText("Description", "Record " + std::to_string(id));
        sb::saveControlRecord(*db, r, errors);
    }
    return errors.text();
}

}  // namespace sbtest_ui
