#pragma once
// The editor of one management option list (all ten lists use this one
// class; what differs comes from the list's member entry): the list of names
// with Import, Export, Add, Copy and Delete, and one field per column of the
// selected option with the parameter's help.
#include <QDialog>

#include "app/message_sink.h"
#include "ui/property_page_columns.h"

class QListWidget;
class QVBoxLayout;

namespace sb {

class option_list;

class dialog_option_list : public QDialog {
    Q_OBJECT
public:
    // `version` is the model version code exports are written for.
    dialog_option_list(option_list& list, int version, field_help_lookup help, QWidget* parent = nullptr);

    QListWidget* names() const { return names_; }
    property_page_columns* page() const { return page_; }
    static QString titleFor(const option_list& list);

    // What the buttons do once the user has answered their file or name question.
    bool importFrom(const QString& path, message_sink& errors);
    bool exportTo(const QString& path, message_sink& errors);
    void addOption(const QString& name);
    void copyOption(int index, const QString& name);
    void deleteOption(int index);
    // Takes the fields into the selected option; false with messages on a bad field.
    bool applyCurrent(message_sink& errors);

public slots:
    void accept() override;

private:
    void fillNames(int select);
    void showOption(int index);
    void askImport();
    void askExport();
    void askAdd();
    void askCopy();

    option_list& list_;
    int version_;
    field_help_lookup help_;
    QListWidget* names_;
    QVBoxLayout* pageHolder_;
    property_page_columns* page_ = nullptr;
    int shown_ = -1;
};

}  // namespace sb
