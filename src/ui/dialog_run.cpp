#include "ui/dialog_run.h"
#include "ui/dialog_buttons.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "app/app_soilbench.h"

namespace sb {
namespace {

QString blockLabel(const tellura_event_block& b) {
    return QStringLiteral("%1: %2 (%3-%4)")
        .arg(b.blockNumber)
        .arg(QString::fromStdString(b.description))
        .arg(b.firstYear)
        .arg(b.lastYear);
}

}  // namespace

dialog_run::dialog_run(int32_t id, const QString& name, const std::vector<tellura_event_block>& blocks,
                       app_soilbench& settings, QWidget* parent)
    : QDialog(parent), settings_(settings), blocks_(blocks) {
    setObjectName(QStringLiteral("dialog_run"));
    setWindowTitle(QStringLiteral("Run TELLURA"));
    heading_ = new QLabel(QStringLiteral("%1 \"%2\"").arg(id).arg(name), this);
    heading_->setObjectName(QStringLiteral("heading"));

    available_ = new QListWidget(this);
    available_->setObjectName(QStringLiteral("available"));
    chosen_ = new QListWidget(this);
    chosen_->setObjectName(QStringLiteral("chosen"));
    for (size_t i = 0; i < blocks_.size(); ++i) {
        auto* item = new QListWidgetItem(blockLabel(blocks_[i]), chosen_);
        item->setData(Qt::UserRole, static_cast<int>(i));
    }
    auto* add = new QPushButton(QStringLiteral("Add->"), this);
    auto* del = new QPushButton(QStringLiteral("<-Delete"), this);
    add->setAutoDefault(false);
    del->setAutoDefault(false);
    auto* moveButtons = new QVBoxLayout;
    moveButtons->addStretch();
    moveButtons->addWidget(add);
    moveButtons->addWidget(del);
    moveButtons->addStretch();
    auto* blocksBox = new QGroupBox(QStringLiteral("Event blocks to run:"), this);
    auto* lists = new QHBoxLayout(blocksBox);
    lists->addWidget(available_);
    lists->addLayout(moveButtons);
    lists->addWidget(chosen_);

    // Only the daily-step release keeps daily output per year.
    const bool daily = settings_.version == kDiurna45;
    first_ = new QSpinBox(this);
    last_ = new QSpinBox(this);
    for (QSpinBox* s : {first_, last_}) {
        s->setRange(-999999, 999999);
        s->setEnabled(daily);
    }
    first_->setValue(settings_.saveDailyFirstYear);
    last_->setValue(settings_.saveDailyLastYear);
    auto* years = new QHBoxLayout;
    years->addWidget(new QLabel(QStringLiteral("Daily output years to save:"), this));
    years->addWidget(first_);
    years->addWidget(new QLabel(QStringLiteral("to"), this));
    years->addWidget(last_);
    years->addStretch();

    binary_ = new QCheckBox(QStringLiteral("Read binary output"), this);
    binary_->setChecked(settings_.readBinaryOutput);

    auto* buttons = okCancelButtons(this);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(heading_);
    layout->addWidget(blocksBox, 1);
    layout->addLayout(years);
    layout->addWidget(binary_);
    layout->addWidget(buttons);
    resize(620, 380);

    connect(add, &QPushButton::clicked, this, &dialog_run::addSelected);
    connect(del, &QPushButton::clicked, this, &dialog_run::deleteSelected);
}

QString dialog_run::heading() const { return heading_->text(); }

void dialog_run::moveCurrent(QListWidget* from, QListWidget* to) {
    const int row = from->currentRow();
    if (row < 0) return;
    to->addItem(from->takeItem(row));
    to->setCurrentRow(to->count() - 1);
}

void dialog_run::addSelected() { moveCurrent(available_, chosen_); }
void dialog_run::deleteSelected() { moveCurrent(chosen_, available_); }

std::vector<tellura_event_block> dialog_run::chosenBlocks() const {
    std::vector<tellura_event_block> out;
    for (int i = 0; i < chosen_->count(); ++i)
        out.push_back(blocks_[static_cast<size_t>(chosen_->item(i)->data(Qt::UserRole).toInt())]);
    return out;
}

void dialog_run::accept() {
    if (settings_.version == kDiurna45) {
        settings_.saveDailyFirstYear = first_->value();
        settings_.saveDailyLastYear = last_->value();
    }
    settings_.readBinaryOutput = binary_->isChecked();
    QDialog::accept();
}

}  // namespace sb
