#pragma once
// The soils of the project: the list of soils, the soil's own fields with
// its water-holding option, and its layers ("%d: %d cm - ..." lines) with
// insert and delete and one field per column of the selected layer. Soils
// are added and deleted here, and a layer file replaces the shown soil's layers.
#include <QDialog>
#include <cstdint>
#include <string>

#include "app/message_sink.h"
#include "ui/property_page_columns.h"

class QComboBox;
class QListWidget;
class QVBoxLayout;

#include "records/list_edits.h"

namespace sb {

class database;
class tellura_soil;
class tellura_soils;

class dialog_soil_editor : public QDialog {
    Q_OBJECT
public:
    dialog_soil_editor(tellura_soils& soils, field_help_lookup help, QWidget* parent = nullptr);

    QListWidget* soilList() const { return soilList_; }
    QListWidget* layerList() const { return layers_; }
    QComboBox* waterHolding() const { return swflag_; }

    // The layer buttons; messages (e.g. "Number of layers is already at maximum") to `errors`.
    bool insertLayer(int position, message_sink& errors);
    bool deleteLayer(int position, message_sink& errors);
    // The soil buttons. A new soil takes an ID no other soil has ("Soil ID %ld
    // is already in the project." otherwise) and is selected; a deleted soil
    // leaves the project when the dialog is saved.
    bool addSoil(int32_t id, const QString& name, message_sink& errors);
    bool deleteSoil(int index, message_sink& errors);
    int32_t unusedSoilId() const;
    // Reads a layer file into the shown soil (the core's messages on a bad file).
    bool importLayerFile(const QString& path, message_sink& errors);
    // Takes the shown fields into the soil; false with messages on a bad field.
    bool applyShown(message_sink& errors);
    // Deletes the deleted soils and writes every soil the dialog changed, in one session.
    bool save(database& db, message_sink& errors);

public slots:
    void accept() override;

private:
    void showSoil(int index);
    void showLayer(int position);
    void fillLayers(int select);
    void addSoilButton();
    void deleteSoilButton();
    void importLayerFileButton();
    static QString soilListText(const tellura_soil& soil);

    tellura_soils& soils_;
    field_help_lookup help_;
    QListWidget* soilList_;
    QComboBox* swflag_;
    QListWidget* layers_;
    QVBoxLayout* soilHolder_;
    QVBoxLayout* layerHolder_;
    property_page_columns* soilPage_ = nullptr;
    property_page_columns* layerPage_ = nullptr;
    int soil_ = -1;
    int layer_ = -1;
    list_edits edits_;  // soils by position in the list: the user may change a soil's ID
};

}  // namespace sb
