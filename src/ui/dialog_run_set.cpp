#include "ui/dialog_run_set.h"
#include "ui/dialog_buttons.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include "records/id_list_filter.h"
#include "ui/dialog_errors.h"

namespace sb {

dialog_run_set::dialog_run_set(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("dialog_run_set"));
    setWindowTitle(QStringLiteral("Configure Run Set"));

    ids_ = new QLineEdit(this);
    ids_->setObjectName(QStringLiteral("recordIds"));
    auto* idsLabel = new QLabel(QStringLiteral("Record IDs:"), this);
    idsLabel->setBuddy(ids_);
    auto* hint = new QLabel(QStringLiteral("Like: \"1, 2, 5-9\""), this);
    auto* make = new QPushButton(QStringLiteral("Make WHERE by ID"), this);
    make->setAutoDefault(false);
    where_ = new QLineEdit(this);
    where_->setObjectName(QStringLiteral("whereClause"));
    auto* whereLabel = new QLabel(QStringLiteral("SQL WHERE clause for [Control Records]"), this);
    whereLabel->setBuddy(where_);
    stopOnError_ = new QCheckBox(QStringLiteral("Stop if any precheck errors"), this);

    auto* buttons = okCancelButtons(this);

    auto* grid = new QGridLayout(this);
    grid->addWidget(idsLabel, 0, 0);
    grid->addWidget(ids_, 0, 1);
    grid->addWidget(hint, 0, 2);
    grid->addWidget(make, 1, 1, Qt::AlignLeft);
    grid->addWidget(whereLabel, 2, 0, 1, 3);
    grid->addWidget(where_, 3, 0, 1, 3);
    grid->addWidget(stopOnError_, 4, 0, 1, 3);
    grid->addWidget(buttons, 5, 0, 1, 3);
    setMinimumWidth(520);

    connect(ids_, &QLineEdit::textEdited, this, [this] { idListEdited_ = true; });
    connect(make, &QPushButton::clicked, this, &dialog_run_set::makeWhere);
}

QString dialog_run_set::idList() const { return ids_->text(); }

void dialog_run_set::setIdList(const QString& ids) {
    ids_->setText(ids);
    idListEdited_ = true;
}

QString dialog_run_set::whereClause() const { return where_->text(); }
bool dialog_run_set::stopOnPrecheckError() const { return stopOnError_->isChecked(); }

void dialog_run_set::makeWhere() {
    message_sink errors;
    const std::string clause = id_list_filter::whereClause(ids_->text().toStdString(), errors);
    if (!errors.empty()) {
        // The list stays as typed, marked unbuilt, for the user to correct.
        showErrorsIfAny(this, errors, windowTitle());
        return;
    }
    where_->setText(QString::fromStdString(clause));
    idListEdited_ = false;
}

void dialog_run_set::done(int result) {
    if (idListEdited_) {
        const auto answer =
            QMessageBox::question(this, windowTitle(), QString::fromLatin1(id_list_filter::kUnbuiltQuestion),
                                  QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
        if (answer != QMessageBox::Yes) return;
    }
    QDialog::done(result);
}

}  // namespace sb
