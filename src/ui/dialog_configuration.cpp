#include "ui/dialog_configuration.h"
#include "ui/dialog_buttons.h"
#include "run/wine_launch.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/configuration_form.h"
#include "run/run_folder.h"
#include "run/wine_launch.h"

namespace sb {

namespace {

// The profiles the dialog offers: the shipped ones and the user's own.
const release_profile_catalogue& offeredProfiles(const app_soilbench& settings) {
    static release_profile_catalogue catalogue;
    catalogue = release_profile_catalogue();
    message_sink problems;  // a profile that cannot be read is simply not offered
    catalogue.load(release_profile_catalogue::shippedFolder(), settings.userProfileFolder(), problems);
    return catalogue;
}

}  // namespace

dialog_configuration::dialog_configuration(app_soilbench& settings, QWidget* parent)
    : QDialog(parent), form_(std::make_unique<configuration_form>(settings, &offeredProfiles(settings))) {
    setObjectName(QStringLiteral("dialog_configuration"));
    setWindowTitle(QString::fromLatin1(configuration_form::kTitle));
    const configuration_form& f = *form_;

    recordList_ = new QCheckBox(QStringLiteral("Prebuild Control Record List"), this);
    recordList_->setChecked(f.recordList);
    runVisible_ = new QCheckBox(QStringLiteral("Run TELLURA in visible console"), this);
    runVisible_->setChecked(f.runVisible);
    runTimeout_ = new QLineEdit(QString::fromStdString(f.runTimeoutText), this);
    runTimeout_->setObjectName(QStringLiteral("runTimeout"));
    helpFile_ = new QLabel(QString::fromStdString(f.helpFileText()), this);
    helpFile_->setObjectName(QStringLiteral("helpFile"));
    helpFile_->setFrameShape(QFrame::StyledPanel);
    auto* helpEdit = new QPushButton(QStringLiteral("Edit"), this);
    helpEdit->setObjectName(QStringLiteral("helpFileEdit"));
    outputPath_ = new QLineEdit(QString::fromStdString(f.outputPath), this);
    outputPath_->setObjectName(QStringLiteral("outputPath"));
    outputPrefix_ = new QLineEdit(QString::fromStdString(f.outputPrefix), this);
    outputPrefix_->setObjectName(QStringLiteral("outputPrefix"));
    version_ = new QComboBox(this);
    for (const std::string& name : f.versionChoices()) version_->addItem(QString::fromStdString(name));
    version_->setCurrentIndex(f.selectedVersionIndex());
    locations_ = new QListWidget(this);
    locations_->setObjectName(QStringLiteral("locations"));
    auto* locationEdit = new QPushButton(QStringLiteral("Edit"), this);
    locationEdit->setObjectName(QStringLiteral("locationEdit"));
    profile_ = new QComboBox(this);
    profile_->setObjectName(QStringLiteral("releaseProfile"));
    readBinary_ = new QCheckBox(QStringLiteral("Read binary output (doesn't work for Daily runs)"), this);
    readBinary_->setChecked(f.readBinaryOutput);
    wineCommand_ = new QLineEdit(QString::fromStdString(f.wineCommand), this);
    wineCommand_->setObjectName(QStringLiteral("wineCommand"));
    winePrefix_ = new QLineEdit(QString::fromStdString(f.winePrefix), this);
    winePrefix_->setObjectName(QStringLiteral("winePrefix"));
    winePrefix_->setPlaceholderText(QString::fromStdString(defaultWinePrefix()));
    runsFolder_ = new QLineEdit(QString::fromStdString(f.runsFolder), this);
    runsFolder_->setObjectName(QStringLiteral("runsFolder"));
    runsFolder_->setPlaceholderText(QString::fromStdString(run_folder::defaultRoot()));
    keepRunFolders_ = new QCheckBox(QStringLiteral("Keep the folders of good runs"), this);
    keepRunFolders_->setObjectName(QStringLiteral("keepRunFolders"));
    keepRunFolders_->setChecked(f.keepRunFolders);
    fillLocations();
    fillProfiles();

    auto* form = new QFormLayout;
    form->addRow(recordList_);
    form->addRow(runVisible_);
    form->addRow(QStringLiteral("Run timeout, milliseconds:"), runTimeout_);
    auto* helpRow = new QHBoxLayout;
    helpRow->addWidget(helpFile_, 1);
    helpRow->addWidget(helpEdit);
    form->addRow(QStringLiteral("Help file location:"), helpRow);
    auto* saveGroup = new QGroupBox(QStringLiteral("Save Diurna output files to:"), this);
    auto* saveForm = new QFormLayout(saveGroup);
    saveForm->addRow(QStringLiteral("Save output path:"), outputPath_);
    saveForm->addRow(QStringLiteral("Save output prefix:"), outputPrefix_);
    form->addRow(saveGroup);
    form->addRow(QStringLiteral("TELLURA executable version:"), version_);
    form->addRow(new QLabel(QStringLiteral("TELLURA executable locations:"), this));
    auto* locationRow = new QHBoxLayout;
    locationRow->addWidget(locations_, 1);
    locationRow->addWidget(locationEdit, 0, Qt::AlignTop);
    form->addRow(locationRow);
    form->addRow(QStringLiteral("Release profile:"), profile_);
    form->addRow(readBinary_);
    form->addRow(QStringLiteral("Wine command (.exe builds):"), wineCommand_);
    form->addRow(QStringLiteral("Wine prefix directory:"), winePrefix_);
    form->addRow(QStringLiteral("Run folders:"), runsFolder_);
    form->addRow(keepRunFolders_);

    auto* buttons = okCancelButtons(this);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    resize(560, 560);

    // Tab order as the controls are listed above (widgets were made in that order,
    // but the Edit buttons sit between their neighbours).
    setTabOrder(recordList_, runVisible_);
    setTabOrder(runVisible_, runTimeout_);
    setTabOrder(runTimeout_, helpEdit);
    setTabOrder(helpEdit, outputPath_);
    setTabOrder(outputPath_, outputPrefix_);
    setTabOrder(outputPrefix_, version_);
    setTabOrder(version_, locations_);
    setTabOrder(locations_, locationEdit);
    setTabOrder(locationEdit, profile_);
    setTabOrder(profile_, readBinary_);
    setTabOrder(readBinary_, wineCommand_);
    setTabOrder(wineCommand_, winePrefix_);
    setTabOrder(winePrefix_, runsFolder_);
    setTabOrder(runsFolder_, keepRunFolders_);

    connect(version_, &QComboBox::currentIndexChanged, this, [this](int index) {
        form_->selectVersion(index);
        fillLocations();
        fillProfiles();
    });
    connect(profile_, &QComboBox::activated, this, [this](int index) { form_->selectProfile(index); });
    connect(locationEdit, &QPushButton::clicked, this, &dialog_configuration::editSelectedLocation);
    connect(locations_, &QListWidget::itemDoubleClicked, this, &dialog_configuration::editSelectedLocation);
    connect(helpEdit, &QPushButton::clicked, this, &dialog_configuration::editHelpFile);
}

dialog_configuration::~dialog_configuration() = default;

void dialog_configuration::fillLocations() {
    const int selected = locations_->currentRow();
    locations_->clear();
    const auto& rows = form_->locationRows();
    for (int i = 0; i < static_cast<int>(rows.size()); ++i) {
        auto* item = new QListWidgetItem(QStringLiteral("%1: %2").arg(QString::fromStdString(rows[i].label),
                                                                      QString::fromStdString(form_->rowPath(i))),
                                         locations_);
        item->setData(Qt::UserRole, rows[i].marked);
        QFont font = item->font();
        font.setBold(rows[i].marked);  // the rows of the chosen version stand out
        item->setFont(font);
    }
    locations_->setCurrentRow(selected);
}

void dialog_configuration::fillProfiles() {
    profile_->clear();
    for (const std::string& choice : form_->profileChoices()) profile_->addItem(QString::fromStdString(choice));
    profile_->setCurrentIndex(form_->selectedProfileIndex());
}

void dialog_configuration::editLocation(int row, const QString& path) {
    form_->editRowPath(row, path.toStdString());
    fillLocations();
}

void dialog_configuration::chooseHelpFile(const QString& path) {
    form_->chooseHelpFile(path.toStdString());
    helpFile_->setText(QString::fromStdString(form_->helpFileText()));
}

void dialog_configuration::editSelectedLocation() {
    const int row = locations_->currentRow();
    if (row < 0) return;
    const QString current = QString::fromStdString(form_->rowPath(row));
    const QString path = QFileDialog::getOpenFileName(this, QString::fromStdString(form_->locationRows()[row].label),
                                                      QFileInfo(current).path());
    if (!path.isEmpty()) editLocation(row, path);
}

void dialog_configuration::editHelpFile() {
    // The chooser's filter is kept as the program has always offered it.
    const QString path = QFileDialog::getOpenFileName(this, QStringLiteral("Help file location"), QString(),
                                                      QString::fromLatin1(configuration_form::kHelpFileFilter));
    if (!path.isEmpty()) chooseHelpFile(path);
}

void dialog_configuration::accept() {
    configuration_form& f = *form_;
    f.recordList = recordList_->isChecked();
    f.runVisible = runVisible_->isChecked();
    f.runTimeoutText = runTimeout_->text().toStdString();
    f.outputPath = outputPath_->text().toStdString();
    f.outputPrefix = outputPrefix_->text().toStdString();
    f.readBinaryOutput = readBinary_->isChecked();
    f.wineCommand = wineCommand_->text().toStdString();
    f.winePrefix = winePrefix_->text().toStdString();
    f.runsFolder = runsFolder_->text().toStdString();
    f.keepRunFolders = keepRunFolders_->isChecked();
    f.selectVersion(version_->currentIndex());
    message_sink errors;
    if (!f.accept(errors)) {
        QMessageBox::warning(this, windowTitle(), QString::fromStdString(errors.text()).trimmed());
        runTimeout_->setFocus();
        runTimeout_->selectAll();
        return;
    }
    QDialog::accept();
}

void dialog_configuration::reject() {
    form_->cancel();
    QDialog::reject();
}

}  // namespace sb
