#include "ui/dialog_event_blocks.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "app/text_format.h"
#include "modelinput/weather_file.h"
#include "records/option_list.h"
#include "records/record_changes.h"
#include "ui/dialog_errors.h"
#include "ui/doc_soilbench.h"

namespace sb {

namespace {

// Field labels and ranges of the whole-number fields, in the order of the enums.
struct int_field {
    const char* label;
    int minimum;
    int maximum;
};
constexpr int_field kBlockInts[] = {
    {"First Year", -9999, 9999},           {"Last Year", -9999, 9999}, {"Repeating Years", 1, 9999},
    {"Output Starting Year", -9999, 9999}, {"Output Month", 1, 12},
};
constexpr int_field kEventInts[] = {{"Year", 1, 9999}, {"Month", 1, 12}, {"Day", 1, 31}};
constexpr const char* kParameterLabels[] = {"Parameter 1", "Parameter 2"};

QSpinBox* makeSpin(const int_field& f) {
    auto* spin = new QSpinBox;
    spin->setRange(f.minimum, f.maximum);
    return spin;
}

QDoubleSpinBox* makeDoubleSpin() {
    auto* spin = new QDoubleSpinBox;
    spin->setRange(-1e9, 1e9);
    spin->setDecimals(4);
    return spin;
}

// A row of buttons calling the dialog's slots.
template <typename Target, typename Slot>
QPushButton* addButton(QHBoxLayout* row, const char* text, Target* target, Slot slot) {
    auto* b = new QPushButton(QString::fromUtf8(text));
    b->setAutoDefault(false);
    QObject::connect(b, &QPushButton::clicked, target, slot);
    row->addWidget(b);
    return b;
}

}  // namespace

dialog_event_blocks::dialog_event_blocks(database& db, int32_t recordId, int version, QWidget* parent)
    : QDialog(parent), db_(db), recordId_(recordId), version_(version) {
    setWindowTitle(QStringLiteral("Event Blocks of Record %1").arg(recordId));
    message_sink errors;
    changeCount_ = loadChangeCount(db, recordId);
    loadEventBlocks(db, recordId, blocks_, errors);
    options_.loadAll(db, errors);
    loadWeatherStations(db, stations_, errors);
    // Missing tables or unreadable rows are told, and the editor still opens on what was read.
    showErrorsIfAny(parent, errors);

    auto* panes = new QHBoxLayout;
    panes->addWidget(makeBlockPanel(), 1);
    panes->addWidget(makeEventPanel(), 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &dialog_event_blocks::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &dialog_event_blocks::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(panes);
    layout->addWidget(buttons);

    refillBlockList();
}

QWidget* dialog_event_blocks::makeBlockPanel() {
    auto* box = new QGroupBox(QStringLiteral("Blocks"));
    auto* v = new QVBoxLayout(box);
    blockList_ = new QListWidget;
    v->addWidget(blockList_);
    auto* row = new QHBoxLayout;
    addButton(row, "Add", this, &dialog_event_blocks::addBlock);
    addButton(row, "Delete", this, &dialog_event_blocks::deleteBlock);
    addButton(row, "Up", this, &dialog_event_blocks::moveBlockUp);
    addButton(row, "Down", this, &dialog_event_blocks::moveBlockDown);
    v->addLayout(row);

    auto* form = new QFormLayout;
    description_ = new QLineEdit;
    form->addRow(QStringLiteral("Description"), description_);
    for (const int_field& f : kBlockInts) {
        blockInts_.push_back(makeSpin(f));
        form->addRow(QString::fromUtf8(f.label), blockInts_.back());
    }
    outputInterval_ = makeDoubleSpin();
    form->addRow(QStringLiteral("Output Interval"), outputInterval_);
    weatherChoice_ = new QComboBox;
    for (int c = kWeatherMean; c <= kWeatherContinue; ++c)
        weatherChoice_->addItem(QString::fromUtf8(weatherChoiceText(c)));
    form->addRow(QStringLiteral("Weather Choice"), weatherChoice_);
    weatherId_ = new QSpinBox;
    weatherId_->setRange(0, 2147483647);
    form->addRow(QStringLiteral("Weather ID"), weatherId_);
    v->addLayout(form);

    connect(blockList_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (showing_) return;
        storeBlock();
        showBlock(row);
    });
    return box;
}

QWidget* dialog_event_blocks::makeEventPanel() {
    auto* box = new QGroupBox(QStringLiteral("Events"));
    auto* v = new QVBoxLayout(box);
    eventList_ = new QListWidget;
    v->addWidget(eventList_);
    auto* row = new QHBoxLayout;
    addButton(row, "Add", this, &dialog_event_blocks::addEvent);
    addButton(row, "Delete", this, &dialog_event_blocks::deleteEvent);
    addButton(row, "Up", this, &dialog_event_blocks::moveEventUp);
    addButton(row, "Down", this, &dialog_event_blocks::moveEventDown);
    v->addLayout(row);

    auto* form = new QFormLayout;
    for (const int_field& f : kEventInts) {
        eventInts_.push_back(makeSpin(f));
        form->addRow(QString::fromUtf8(f.label), eventInts_.back());
    }
    eventType_ = new QComboBox;
    for (int t = 1; t <= kEventTypeCount; ++t) eventType_->addItem(QString::fromUtf8(eventTypeName(t)));
    form->addRow(QStringLiteral("Type"), eventType_);
    eventItem_ = new QComboBox;
    eventItem_->setEditable(true);
    eventItem_->lineEdit()->setMaxLength(static_cast<int>(tellura_event::kMaxItemLength));
    form->addRow(QStringLiteral("Item"), eventItem_);
    for (const char* label : kParameterLabels) {
        parameters_.push_back(makeDoubleSpin());
        form->addRow(QString::fromUtf8(label), parameters_.back());
    }
    v->addLayout(form);

    connect(eventList_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (showing_) return;
        storeEvent();
        showEvent(row);
    });
    // Another operation offers the names of its own option list; the typed item stays.
    connect(eventType_, &QComboBox::currentIndexChanged, this, [this](int index) {
        const QString typed = eventItem_->currentText();
        fillItemChoices(index + 1);
        eventItem_->setEditText(typed);
    });
    return box;
}

tellura_event_block* dialog_event_blocks::shownBlock() {
    return shownBlock_ >= 0 && shownBlock_ < static_cast<int>(blocks_.size())
               ? &blocks_[static_cast<size_t>(shownBlock_)]
               : nullptr;
}

QString dialog_event_blocks::blockLabel(const tellura_event_block& b) {
    return QString::fromStdString(strprintf("%d-%d  %s", b.firstYear, b.lastYear, b.description.c_str()));
}

QString dialog_event_blocks::eventLabel(const tellura_event& e) {
    return QString::fromStdString(strprintf("%d  %d  %s %s", e.year, e.month, eventTypeName(e.type), e.item.c_str()));
}

void dialog_event_blocks::fillItemChoices(int type) {
    eventItem_->clear();
    option_kind kind;
    if (!eventItemOptionKind(type, kind)) return;
    const option_list& list = options_.list(kind);
    for (size_t i = 0; i < list.size(); ++i) eventItem_->addItem(QString::fromStdString(list.at(i).name));
}

void dialog_event_blocks::showBlock(int index) {
    shownBlock_ = index;
    showing_ = true;
    const tellura_event_block* b = shownBlock();
    const tellura_event_block empty;
    const tellura_event_block& shown = b ? *b : empty;
    description_->setText(QString::fromStdString(shown.description));
    const int values[] = {shown.firstYear, shown.lastYear, shown.repeatingYears, shown.outputStartingYear,
                          shown.outputMonth};
    for (int i = 0; i < kBlockIntCount; ++i) blockInts_[static_cast<size_t>(i)]->setValue(values[i]);
    outputInterval_->setValue(shown.outputInterval);
    weatherChoice_->setCurrentIndex(shown.weatherChoice - 1);
    weatherId_->setValue(shown.weatherId);
    showing_ = false;
    shownEvent_ = -1;
    refillEventList();
}

void dialog_event_blocks::showEvent(int index) {
    shownEvent_ = index;
    tellura_event_block* b = shownBlock();
    const bool valid = b && index >= 0 && index < static_cast<int>(b->events.size());
    const tellura_event empty;
    const tellura_event& e = valid ? b->events[static_cast<size_t>(index)] : empty;
    showing_ = true;
    const int values[] = {e.year, e.month, e.day};
    for (int i = 0; i < kEventIntCount; ++i) eventInts_[static_cast<size_t>(i)]->setValue(values[i]);
    eventType_->setCurrentIndex(e.type - 1);
    fillItemChoices(e.type);
    eventItem_->setEditText(QString::fromStdString(e.item));
    parameters_[0]->setValue(e.parameter1);
    parameters_[1]->setValue(e.parameter2);
    showing_ = false;
}

void dialog_event_blocks::storeBlock() {
    tellura_event_block* b = shownBlock();
    if (!b) return;
    b->description = description_->text().toStdString();
    auto value = [this](int i) { return static_cast<int16_t>(blockInts_[static_cast<size_t>(i)]->value()); };
    b->firstYear = value(kFirstYear);
    b->lastYear = value(kLastYear);
    b->repeatingYears = value(kRepeatingYears);
    b->outputStartingYear = value(kOutputStartingYear);
    b->outputMonth = static_cast<uint8_t>(value(kOutputMonth));
    b->outputInterval = static_cast<float>(outputInterval_->value());
    b->weatherChoice = static_cast<uint8_t>(weatherChoice_->currentIndex() + 1);
    b->weatherId = weatherId_->value();
    storeEvent();
    if (QListWidgetItem* item = blockList_->item(shownBlock_)) item->setText(blockLabel(*b));
}

void dialog_event_blocks::storeEvent() {
    tellura_event_block* b = shownBlock();
    if (!b || shownEvent_ < 0 || shownEvent_ >= static_cast<int>(b->events.size())) return;
    tellura_event& e = b->events[static_cast<size_t>(shownEvent_)];
    e.year = static_cast<int16_t>(eventInts_[kYear]->value());
    e.month = static_cast<uint8_t>(eventInts_[kMonth]->value());
    e.day = static_cast<uint8_t>(eventInts_[kDay]->value());
    e.type = static_cast<uint8_t>(eventType_->currentIndex() + 1);
    e.item = eventItem_->currentText().trimmed().toStdString();
    e.parameter1 = static_cast<float>(parameters_[0]->value());
    e.parameter2 = static_cast<float>(parameters_[1]->value());
    if (QListWidgetItem* item = eventList_->item(shownEvent_)) item->setText(eventLabel(e));
}

void dialog_event_blocks::refillBlockList() {
    const int keep = shownBlock_ < 0 && !blocks_.empty() ? 0 : std::min<int>(shownBlock_, int(blocks_.size()) - 1);
    showing_ = true;
    blockList_->clear();
    for (const tellura_event_block& b : blocks_) blockList_->addItem(blockLabel(b));
    blockList_->setCurrentRow(keep);
    showing_ = false;
    showBlock(keep);
}

void dialog_event_blocks::refillEventList() {
    const tellura_event_block* b = shownBlock();
    const int count = b ? static_cast<int>(b->events.size()) : 0;
    const int keep = shownEvent_ < 0 && count > 0 ? 0 : std::min(shownEvent_, count - 1);
    showing_ = true;
    eventList_->clear();
    if (b)
        for (const tellura_event& e : b->events) eventList_->addItem(eventLabel(e));
    eventList_->setCurrentRow(keep);
    showing_ = false;
    showEvent(keep);
}

void dialog_event_blocks::addBlock() {
    storeBlock();
    tellura_event_block b;
    // A new block follows the last one, as a schedule's blocks follow each other in time.
    if (!blocks_.empty()) {
        const tellura_event_block& last = blocks_.back();
        b.firstYear = b.lastYear = b.outputStartingYear = static_cast<int16_t>(last.lastYear + 1);
        b.weatherChoice = kWeatherContinue;
        b.weatherId = last.weatherId;
    }
    blocks_.push_back(b);
    shownBlock_ = static_cast<int>(blocks_.size()) - 1;
    refillBlockList();
}

void dialog_event_blocks::deleteBlock() {
    if (!shownBlock()) return;
    blocks_.erase(blocks_.begin() + shownBlock_);
    refillBlockList();
}

void dialog_event_blocks::moveBlock(int delta) {
    const int to = shownBlock_ + delta;
    if (!shownBlock() || to < 0 || to >= static_cast<int>(blocks_.size())) return;
    storeBlock();
    std::swap(blocks_[static_cast<size_t>(shownBlock_)], blocks_[static_cast<size_t>(to)]);
    shownBlock_ = to;
    refillBlockList();
}

void dialog_event_blocks::addEvent() {
    tellura_event_block* b = shownBlock();
    if (!b) return;
    storeEvent();
    b->events.push_back(tellura_event{});
    shownEvent_ = static_cast<int>(b->events.size()) - 1;
    refillEventList();
}

void dialog_event_blocks::deleteEvent() {
    tellura_event_block* b = shownBlock();
    if (!b || shownEvent_ < 0 || shownEvent_ >= static_cast<int>(b->events.size())) return;
    b->events.erase(b->events.begin() + shownEvent_);
    refillEventList();
}

void dialog_event_blocks::moveEvent(int delta) {
    tellura_event_block* b = shownBlock();
    const int to = shownEvent_ + delta;
    if (!b || shownEvent_ < 0 || to < 0 || to >= static_cast<int>(b->events.size())) return;
    storeEvent();
    std::swap(b->events[static_cast<size_t>(shownEvent_)], b->events[static_cast<size_t>(to)]);
    shownEvent_ = to;
    refillEventList();
}

std::vector<tellura_event_block> dialog_event_blocks::blocks() {
    storeBlock();
    std::vector<tellura_event_block> numbered = blocks_;
    for (size_t i = 0; i < numbered.size(); ++i) {
        numbered[i].blockNumber = static_cast<int16_t>(i + 1);
        for (size_t j = 0; j < numbered[i].events.size(); ++j)
            numbered[i].events[j].order = static_cast<int16_t>(j + 1);
    }
    return numbered;
}

void dialog_event_blocks::loadStationHistories(const std::vector<tellura_event_block>& blocks, message_sink& errors) {
    for (const tellura_event_block& b : blocks) {
        tellura_weather_station* station = b.weatherChoice == kWeatherFile ? stations_.find(b.weatherId) : nullptr;
        if (!station || !historyLoaded_.insert(b.weatherId).second) continue;
        loadMonthlyHistory(db_, *station, errors);
        loadDailyHistory(db_, *station, errors);
    }
}

void dialog_event_blocks::accept() {
    const std::vector<tellura_event_block> edited = blocks();
    messages_.clear();
    loadStationHistories(edited, messages_);
    validateEventBlocks(edited, version_, project_option_names(options_), stations_, messages_,
                        checkBlockWeatherCoverage);
    showErrorsIfAny(this, messages_);
    // Warnings are shown and the blocks saved; any error keeps the editor open.
    if (messages_.hasErrors()) return;
    message_sink errors;
    if (!saveEventBlocks(db_, recordId_, edited, errors, changeCount_)) {
        showErrorsIfAny(this, errors);
        return;
    }
    showErrorsIfAny(this, errors);  // saved, perhaps over another user's save
    QDialog::accept();
}

bool editEventBlocks(doc_soilbench& doc, int version, QWidget* parent) {
    if (doc.currentRow() < 0) return false;
    dialog_event_blocks dialog(doc.db(), doc.currentId(), version, parent);
    if (dialog.exec() != QDialog::Accepted) return false;
    doc.refreshAll();
    return true;
}

}  // namespace sb
