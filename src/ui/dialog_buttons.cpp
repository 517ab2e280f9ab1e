#include "ui/dialog_buttons.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace sb {

QDialogButtonBox* okCancelButtons(QDialog* dialog) {
    auto* box = new QDialogButtonBox(dialog);
    box->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    box->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
    // Through the virtual slots, so a dialog's own accept() (checks, saving) runs.
    QObject::connect(box, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(box, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return box;
}

QVBoxLayout* listWithButtons(QWidget* list, std::initializer_list<QPushButton*> buttons) {
    auto* column = new QVBoxLayout;
    column->addWidget(list, 1);
    auto* row = new QHBoxLayout;
    for (QPushButton* button : buttons) row->addWidget(button);
    column->addLayout(row);
    return column;
}

}  // namespace sb
