#include "ui/dialog_diurna_output_files.h"
#include "ui/dialog_buttons.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QVBoxLayout>

#include "app/app_soilbench.h"
#include "modelinput/run_directory.h"

namespace sb {

dialog_diurna_output_files::dialog_diurna_output_files(app_soilbench& settings, QWidget* parent)
    : QDialog(parent), settings_(settings) {
    setObjectName(QStringLiteral("dialog_diurna_output_files"));
    setWindowTitle(QStringLiteral("Diurna Output Files"));
    auto* grid = new QGridLayout;
    const auto& files = dailyOutputFiles();
    constexpr int kRows = (kDailyOutputFileCount + 1) / 2;  // two columns of fourteen
    for (int i = 0; i < kDailyOutputFileCount; ++i) {
        const auto& f = files[static_cast<size_t>(i)];
        auto* box = new QCheckBox(
            QStringLiteral("%1 - %2").arg(QString::fromLatin1(f.file), QString::fromLatin1(f.description)), this);
        box->setObjectName(QString::fromLatin1(f.file));
        box->setChecked(settings_.outfileSelected[static_cast<size_t>(i)]);
        grid->addWidget(box, i % kRows, i / kRows);
        boxes_.push_back(box);
    }
    auto* buttons = okCancelButtons(this);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(buttons);
}

void dialog_diurna_output_files::accept() {
    for (size_t i = 0; i < boxes_.size(); ++i) settings_.outfileSelected[i] = boxes_[i]->isChecked();
    QDialog::accept();
}

}  // namespace sb
