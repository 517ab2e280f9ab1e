#pragma once
// Helpers shared by the widget tests (header only: every .cpp here is a test program).
#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTimer>
#include <functional>
#include <memory>
#include <string>

#include "db/database.h"
#include "records/tellura_control_record.h"

namespace sbtest_ui {

// Runs `handler` on the next modal dialog that opens (polled, because the
// dialog is opened by exec() inside the code under test). It looks out for up
// to 30 s: on a busy machine a dialog can take seconds to open, and a look-out
// that gave up early failed tests that were right. One left looking out only
// happens when the expected dialog never opened, so its test fails anyway.
inline void onNextModal(std::function<void(QWidget*)> handler, int triesLeft = 3000) {
    QTimer::singleShot(10, [handler, triesLeft] {
        QWidget* modal = QApplication::activeModalWidget();
        if (modal) {
            handler(modal);
        } else if (triesLeft > 0) {
            onNextModal(handler, triesLeft - 1);
        }
    });
}

// Looks out, for as long as it lives, for the next modal dialog and hands it to
// `handler`. For a dialog that a command may or may not open: it is kept while
// the command runs and ends with it, however slow the machine, so it neither
// misses a late dialog nor is left looking out to catch the next command's.
class modal_watch {
public:
    explicit modal_watch(std::function<void(QWidget*)> handler) : stopped_(std::make_shared<bool>(false)) {
        lookOut(stopped_, std::move(handler));
    }
    ~modal_watch() { *stopped_ = true; }
    modal_watch(const modal_watch&) = delete;
    modal_watch& operator=(const modal_watch&) = delete;

private:
    static void lookOut(std::shared_ptr<bool> stopped, std::function<void(QWidget*)> handler) {
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

// A project file with control records of the given IDs (each a default record
// with its description "Record <id>").
inline std::string makeProject(const QString& path, const std::vector<int32_t>& ids) {
    std::string errors;
    sb::database::create(path.toStdString(), errors);
    auto db = sb::database::open(path.toStdString(), errors);
    if (!db) return errors;
    sb::database_maker maker(*db);
    maker.createAllTables(errors);
    for (int32_t id : ids) {
        sb::tellura_control_record r;
        r.setId(id);
        r.row.setText("Description", "Record " + std::to_string(id));
        sb::writeControlRecord(r, *db, errors);
    }
    return errors;
}

}  // namespace sbtest_ui
