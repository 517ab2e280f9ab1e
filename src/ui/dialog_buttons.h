#pragma once
// The pieces every editing dialog of the workbench is built from.
#include <initializer_list>

class QDialog;
class QDialogButtonBox;
class QPushButton;
class QVBoxLayout;
class QWidget;

namespace sb {

// "OK" and "Cancel", wired to the dialog's accept() and reject().
QDialogButtonBox* okCancelButtons(QDialog* dialog);

// A list with a row of buttons under it (add, delete, ...).
QVBoxLayout* listWithButtons(QWidget* list, std::initializer_list<QPushButton*> buttons);

}  // namespace sb
