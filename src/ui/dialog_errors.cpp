#include "ui/dialog_errors.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <cstdio>

namespace sb {

dialog_errors::dialog_errors(const QString& title, const QString& text, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("dialog_errors"));
    setWindowTitle(title);
    text_ = new QPlainTextEdit(this);
    text_->setReadOnly(true);
    text_->setLineWrapMode(QPlainTextEdit::NoWrap);
    QString shown = text;
    shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text_->setPlainText(shown);

    auto* buttons = new QDialogButtonBox(this);
    auto* copy = buttons->addButton(QStringLiteral("Copy Text"), QDialogButtonBox::ActionRole);
    buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
    connect(copy, &QPushButton::clicked, this, &dialog_errors::copyText);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(text_);
    layout->addWidget(buttons);
    resize(640, 400);
}

QString dialog_errors::text() const { return text_->toPlainText(); }

void dialog_errors::copyText() { QApplication::clipboard()->setText(text_->toPlainText()); }

namespace {
bool errorsToStandardError = false;
}

void setErrorsToStandardError(bool on) { errorsToStandardError = on; }

void showErrorsIfAny(QWidget* parent, const std::string& text, const QString& title) {
    if (text.empty()) return;
    if (errorsToStandardError) {
        std::fprintf(stderr, "%s:\n%s", title.toLocal8Bit().constData(), text.c_str());
        return;
    }
    dialog_errors dialog(title, QString::fromStdString(text), parent);
    dialog.exec();
}

void showErrorsIfAny(QWidget* parent, const message_sink& messages, const QString& title) {
    showErrorsIfAny(parent, messages.text(), title);
}

}  // namespace sb
