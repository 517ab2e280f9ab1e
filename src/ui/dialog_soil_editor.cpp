#include "ui/dialog_soil_editor.h"
#include "ui/dialog_buttons.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QFileDialog>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/text_format.h"
#include "db/database.h"
#include "records/soil_layer_file.h"
#include "records/store_session.h"
#include "records/tellura_soil.h"
#include "ui/dialog_errors.h"

namespace sb {

dialog_soil_editor::dialog_soil_editor(tellura_soils& soils, field_help_lookup help, QWidget* parent)
    : QDialog(parent), soils_(soils), help_(std::move(help)) {
    setObjectName(QStringLiteral("dialog_soil_editor"));
    setWindowTitle(QStringLiteral("Soils"));
    soilList_ = new QListWidget(this);
    for (const tellura_soil& s : soils_.soils) soilList_->addItem(soilListText(s));
    auto* addButton = new QPushButton(QStringLiteral("Add Soil"), this);
    auto* deleteButton = new QPushButton(QStringLiteral("Delete Soil"), this);
    auto* importButton = new QPushButton(QStringLiteral("Import Layer File..."), this);
    for (QPushButton* b : {addButton, deleteButton, importButton}) b->setAutoDefault(false);

    swflag_ = new QComboBox(this);
    swflag_->setObjectName(QStringLiteral("SWFlag"));
    for (int i = 0; i < kWaterHoldingOptionCount; ++i) swflag_->addItem(QString::fromLatin1(waterHoldingOptionText(i)));

    layers_ = new QListWidget(this);
    layers_->setObjectName(QStringLiteral("layers"));
    auto* insert = new QPushButton(QStringLiteral("Insert Layer"), this);
    auto* remove = new QPushButton(QStringLiteral("Delete Layer"), this);
    insert->setAutoDefault(false);
    remove->setAutoDefault(false);

    soilHolder_ = new QVBoxLayout;
    layerHolder_ = new QVBoxLayout;
    auto* soilBox = new QGroupBox(QStringLiteral("Soil"), this);
    auto* soilLayout = new QVBoxLayout(soilBox);
    auto* swRow = new QFormLayout;
    swRow->addRow(QStringLiteral("Water-holding option:"), swflag_);
    soilLayout->addLayout(soilHolder_, 1);
    soilLayout->addLayout(swRow);
    auto* layerBox = new QGroupBox(QStringLiteral("Layers"), this);
    auto* layerLayout = new QVBoxLayout(layerBox);
    auto* layerButtons = new QHBoxLayout;
    layerButtons->addWidget(insert);
    layerButtons->addWidget(remove);
    layerLayout->addWidget(layers_, 1);
    layerLayout->addLayout(layerButtons);
    layerLayout->addLayout(layerHolder_, 2);

    layerButtons->addWidget(importButton);
    auto* listColumn = listWithButtons(soilList_, {addButton, deleteButton});
    auto* body = new QHBoxLayout;
    body->addLayout(listColumn, 1);
    body->addWidget(soilBox, 3);
    body->addWidget(layerBox, 3);
    auto* box = okCancelButtons(this);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(body, 1);
    layout->addWidget(box);
    resize(1200, 700);

    connect(soilList_, &QListWidget::currentRowChanged, this, &dialog_soil_editor::showSoil);
    connect(layers_, &QListWidget::currentRowChanged, this, &dialog_soil_editor::showLayer);
    connect(insert, &QPushButton::clicked, this, [this] {
        message_sink errors;
        insertLayer(std::max(0, layers_->currentRow()), errors);
        showErrorsIfAny(this, errors);
    });
    connect(remove, &QPushButton::clicked, this, [this] {
        message_sink errors;
        deleteLayer(layers_->currentRow(), errors);
        showErrorsIfAny(this, errors);
    });
    connect(addButton, &QPushButton::clicked, this, &dialog_soil_editor::addSoilButton);
    connect(deleteButton, &QPushButton::clicked, this, &dialog_soil_editor::deleteSoilButton);
    connect(importButton, &QPushButton::clicked, this, &dialog_soil_editor::importLayerFileButton);
    soilList_->setCurrentRow(soils_.soils.empty() ? -1 : 0);
}

QString dialog_soil_editor::soilListText(const tellura_soil& soil) {
    return QStringLiteral("%1 %2").arg(soil.soilId()).arg(QString::fromStdString(soil.name()));
}

int32_t dialog_soil_editor::unusedSoilId() const {
    int32_t highest = 0;
    for (const tellura_soil& s : soils_.soils) highest = std::max(highest, s.soilId());
    return highest + 1;
}

bool dialog_soil_editor::addSoil(int32_t id, const QString& name, message_sink& errors) {
    if (soils_.find(id)) {
        errors.errorf("Soil ID %ld is already in the project.\n", static_cast<long>(id));
        return false;
    }
    tellura_soil soil;
    soil.setSoilId(id);
    soil.setName(name.toStdString());
    soils_.soils.push_back(soil);
    const int index = static_cast<int>(soils_.soils.size()) - 1;
    edits_.change(index);
    soilList_->addItem(soilListText(soil));
    soilList_->setCurrentRow(index);
    return true;
}

bool dialog_soil_editor::deleteSoil(int index, message_sink& errors) {
    if (index < 0 || index >= static_cast<int>(soils_.soils.size())) {
        errors.error("Unable to delete soil.\n");
        return false;
    }
    // The shown fields belong to the soil going away (or are taken in first).
    if (index != soil_ && !applyShown(errors)) return false;
    edits_.removeAt(soils_.soils[static_cast<size_t>(index)].soilId(), index);
    soils_.soils.erase(soils_.soils.begin() + index);
    soil_ = -1;  // nothing shown is taken in when the list moves on
    delete soilPage_;
    soilPage_ = nullptr;
    layer_ = -1;
    {
        QSignalBlocker block(soilList_);
        delete soilList_->takeItem(index);
    }
    showSoil(soilList_->currentRow());
    return true;
}

bool dialog_soil_editor::importLayerFile(const QString& path, message_sink& errors) {
    if (soil_ < 0 || !applyShown(errors)) return false;
    layer_ = -1;  // the layers shown are replaced
    const bool ok = readSoilLayerFile(path.toStdString(), soils_.soils[static_cast<size_t>(soil_)], errors);
    edits_.change(soil_);
    fillLayers(0);  // also after an error: the layers read before it are kept
    return ok;
}

void dialog_soil_editor::addSoilButton() {
    message_sink errors;
    addSoil(unusedSoilId(), QStringLiteral("New soil"), errors);
    showErrorsIfAny(this, errors);
}

void dialog_soil_editor::deleteSoilButton() {
    const int index = soilList_->currentRow();
    if (index < 0) return;
    const QString question = QStringLiteral("Delete soil %1 ?").arg(soilList_->item(index)->text());
    if (QMessageBox::question(this, windowTitle(), question) != QMessageBox::Yes) return;
    message_sink errors;
    deleteSoil(index, errors);
    showErrorsIfAny(this, errors);
}

void dialog_soil_editor::importLayerFileButton() {
    if (soil_ < 0) return;
    const QString path = QFileDialog::getOpenFileName(this, QStringLiteral("Import Layer File"), QString(),
                                                      QStringLiteral("Soil layer files (*.in);;All files (*)"));
    if (path.isEmpty()) return;
    message_sink errors;
    importLayerFile(path, errors);
    showErrorsIfAny(this, errors);
}

bool dialog_soil_editor::applyShown(message_sink& errors) {
    if (soil_ < 0) return true;
    tellura_soil& soil = soils_.soils[static_cast<size_t>(soil_)];
    bool ok = true;
    if (soilPage_) {
        tellura_soil row = soil;
        ok = soilPage_->apply(row, errors);
        if (ok) static_cast<table_record&>(soil) = row;
    }
    soil.setNumber("SWFlag", swflag_->currentIndex());
    if (layerPage_ && layer_ >= 0 && layer_ < soil.layerCount) {
        soil_layer row = soil.layers[static_cast<size_t>(layer_)];
        if (layerPage_->apply(row, errors)) soil.layers[static_cast<size_t>(layer_)] = row;
        else ok = false;
    }
    edits_.change(soil_);
    return ok;
}

void dialog_soil_editor::showSoil(int index) {
    message_sink errors;
    applyShown(errors);
    showErrorsIfAny(this, errors);
    delete soilPage_;
    soilPage_ = nullptr;
    soil_ = index;
    layer_ = -1;
    if (index < 0) return fillLayers(-1);
    const tellura_soil& soil = soils_.soils[static_cast<size_t>(index)];
    const auto& def = soil.def();
    std::vector<int> columns;
    for (int c = 0; c < static_cast<int>(def.fields().size()); ++c)
        if (c != def.fieldIndex("SWFlag")) columns.push_back(c);  // chosen from its list below
    soilPage_ = new property_page_columns(soil, {{QString(), columns}}, help_, this);
    soilHolder_->addWidget(soilPage_);
    swflag_->setCurrentIndex(static_cast<int>(soil.number("SWFlag")));
    fillLayers(0);
}

void dialog_soil_editor::fillLayers(int select) {
    QSignalBlocker block(layers_);
    layers_->clear();
    delete layerPage_;
    layerPage_ = nullptr;
    layer_ = -1;
    if (soil_ < 0) return;
    const tellura_soil& soil = soils_.soils[static_cast<size_t>(soil_)];
    for (int i = 0; i < soil.layerCount; ++i) layers_->addItem(QString::fromStdString(soil.layerListText(i)));
    select = std::min(select, soil.layerCount - 1);
    layers_->setCurrentRow(select);
    showLayer(select);
}

void dialog_soil_editor::showLayer(int position) {
    message_sink errors;
    if (layerPage_ && soil_ >= 0 && layer_ >= 0) {
        tellura_soil& soil = soils_.soils[static_cast<size_t>(soil_)];
        soil_layer row = soil.layers[static_cast<size_t>(layer_)];
        if (layerPage_->apply(row, errors)) {
            soil.layers[static_cast<size_t>(layer_)] = row;
            layers_->item(layer_)->setText(QString::fromStdString(soil.layerListText(layer_)));
            edits_.change(soil_);
        }
    }
    showErrorsIfAny(this, errors);
    delete layerPage_;
    layerPage_ = nullptr;
    layer_ = position;
    if (soil_ < 0 || position < 0) return;
    const soil_layer& layer = soils_.soils[static_cast<size_t>(soil_)].layers[static_cast<size_t>(position)];
    // Soil ID and Layer Number belong to the soil and the layer's place, not to the user.
    layerPage_ = new property_page_columns(layer, property_page_columns::plain(2, layer.columnCount()), help_, this);
    layerHolder_->addWidget(layerPage_);
}

bool dialog_soil_editor::insertLayer(int position, message_sink& errors) {
    if (soil_ < 0 || !applyShown(errors)) return false;
    tellura_soil& soil = soils_.soils[static_cast<size_t>(soil_)];
    layer_ = -1;  // the fields shown were taken in above
    if (!soil.insertLayer(position, errors)) return false;
    fillLayers(position);
    return true;
}

bool dialog_soil_editor::deleteLayer(int position, message_sink& errors) {
    if (soil_ < 0 || !applyShown(errors)) return false;
    tellura_soil& soil = soils_.soils[static_cast<size_t>(soil_)];
    layer_ = -1;
    if (!soil.deleteLayer(position, errors)) return false;
    fillLayers(std::max(0, position - 1));
    return true;
}

bool dialog_soil_editor::save(database& db, message_sink& errors) {
    return edits_.save(
        db, [&](int32_t id, message_sink& e) { return sb::deleteSoil(db, id, e); },
        [&](int index, int, message_sink& e) { return saveSoil(db, soils_.soils[static_cast<size_t>(index)], e); },
        errors);
}

void dialog_soil_editor::accept() {
    message_sink errors;
    if (!applyShown(errors)) {
        showErrorsIfAny(this, errors);
        return;
    }
    QDialog::accept();
}

}  // namespace sb
