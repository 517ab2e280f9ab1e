#pragma once
// The list of collected messages shown after a command: a read-only
// multi-line text with "Copy Text", "OK" and "Cancel".
#include <QDialog>
#include <string>

#include "app/message_sink.h"

class QPlainTextEdit;

namespace sb {

class dialog_errors : public QDialog {
    Q_OBJECT
public:
    dialog_errors(const QString& title, const QString& text, QWidget* parent = nullptr);
    QString text() const;

public slots:
    void copyText();  // the whole text to the clipboard

private:
    QPlainTextEdit* text_;
};

// Shows the dialog when `text` is not empty; does nothing otherwise. The
// message text may carry "\r\n" line ends (clipboard messages); shown as lines.
void showErrorsIfAny(QWidget* parent, const std::string& text, const QString& title = QStringLiteral("Errors"));
// A command's messages, as the user reads them.
void showErrorsIfAny(QWidget* parent, const message_sink& messages, const QString& title = QStringLiteral("Errors"));

// For runs without a user (--screenshot): messages go to standard error
// instead of a dialog nobody can close.
void setErrorsToStandardError(bool on);

}  // namespace sb
