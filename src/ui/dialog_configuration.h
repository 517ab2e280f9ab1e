#pragma once
// The "Configuration" dialog: a mirror of the widget-free configuration form,
// which holds every rule (offered versions, marked rows, timeout range, what
// OK and Cancel change).
#include <QDialog>
#include <memory>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;

namespace sb {

class app_soilbench;
class configuration_form;

class dialog_configuration : public QDialog {
    Q_OBJECT
public:
    explicit dialog_configuration(app_soilbench& settings, QWidget* parent = nullptr);
    ~dialog_configuration() override;

    // What the list's "Edit" button does once the user has chosen a path.
    void editLocation(int row, const QString& path);
    // What the help file "Edit" button does once the user has chosen a file.
    void chooseHelpFile(const QString& path);
    QListWidget* locations() const { return locations_; }

public slots:
    void accept() override;
    void reject() override;

private:
    void fillLocations();
    void editSelectedLocation();
    void editHelpFile();

    std::unique_ptr<configuration_form> form_;
    QCheckBox* recordList_;
    QCheckBox* runVisible_;
    QLineEdit* runTimeout_;
    QLabel* helpFile_;
    QLineEdit* outputPath_;
    QLineEdit* outputPrefix_;
    QComboBox* version_;
    QComboBox* profile_;
    void fillProfiles();
    QListWidget* locations_;
    QCheckBox* readBinary_;
    QLineEdit* wineCommand_;
    QLineEdit* winePrefix_;
    QLineEdit* runsFolder_;
    QCheckBox* keepRunFolders_;
};

}  // namespace sb
