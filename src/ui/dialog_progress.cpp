#include "ui/dialog_progress.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/background_run.h"

namespace sb {

dialog_progress::dialog_progress(background_run& run, QWidget* parent) : QDialog(parent), run_(run) {
    setObjectName(QStringLiteral("dialog_progress"));
    setWindowTitle(QStringLiteral("Progress"));
    percent_ = new QLabel(QStringLiteral(" 0 %"), this);
    percent_->setObjectName(QStringLiteral("percent"));
    bar_ = new QProgressBar(this);
    bar_->setRange(0, 100);
    bar_->setValue(0);
    text_ = new QLabel(this);
    text_->setObjectName(QStringLiteral("text"));
    status_ = new QLabel(this);
    status_->setObjectName(QStringLiteral("status"));
    cancel_ = new QPushButton(QStringLiteral("Cancel"), this);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(percent_);
    layout->addWidget(bar_);
    layout->addWidget(text_);
    layout->addWidget(status_);
    layout->addWidget(cancel_, 0, Qt::AlignRight);
    setMinimumWidth(420);

    connect(cancel_, &QPushButton::clicked, this, &dialog_progress::requestCancel);
    connect(&run_, &background_run::textChanged, text_, &QLabel::setText);
    connect(&run_, &background_run::statusChanged, status_, &QLabel::setText);
    connect(&run_, &background_run::percentChanged, this, &dialog_progress::setPercent);
    connect(&run_, &background_run::finished, this, &QDialog::accept);
}

QString dialog_progress::percentText() const { return percent_->text(); }
QString dialog_progress::text() const { return text_->text(); }
QString dialog_progress::status() const { return status_->text(); }

void dialog_progress::setPercent(int percent) {
    percent_->setText(QStringLiteral("%1 %").arg(percent, 2));
    bar_->setValue(percent);
}

void dialog_progress::requestCancel() {
    if (!cancel_->isEnabled()) return;
    run_.cancel();
    cancel_->setEnabled(false);
    status_->setText(QStringLiteral("Stopping after the record in hand..."));
}

void dialog_progress::reject() {
    if (run_.running()) {
        requestCancel();
        return;
    }
    QDialog::reject();
}

}  // namespace sb
