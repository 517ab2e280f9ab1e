#pragma once
// The event blocks of one control record and the management events of the
// selected block. Blocks and events are added, deleted and moved; OK checks
// everything with the core's rules, lists the messages in the Errors dialog
// and saves only when none of them is an error.
#include <QDialog>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "app/message_sink.h"
#include "records/option_lists.h"
#include "records/tellura_event_block.h"
#include "records/tellura_weather_station.h"

class QComboBox;
class QDoubleSpinBox;
class QLineEdit;
class QListWidget;
class QSpinBox;

namespace sb {

class database;
class doc_soilbench;

class dialog_event_blocks : public QDialog {
    Q_OBJECT
public:
    // Reads the record's blocks, the project's option lists and stations from `db`.
    dialog_event_blocks(database& db, int32_t recordId, int version, QWidget* parent = nullptr);

    QListWidget* blockList() const { return blockList_; }
    QListWidget* eventList() const { return eventList_; }
    QLineEdit* description() const { return description_; }
    QSpinBox* blockField(int index) const { return blockInts_[static_cast<size_t>(index)]; }
    QDoubleSpinBox* outputInterval() const { return outputInterval_; }
    QComboBox* weatherChoice() const { return weatherChoice_; }
    QSpinBox* weatherId() const { return weatherId_; }
    QSpinBox* eventField(int index) const { return eventInts_[static_cast<size_t>(index)]; }
    QComboBox* eventType() const { return eventType_; }
    QComboBox* eventItem() const { return eventItem_; }
    QDoubleSpinBox* parameter(int index) const { return parameters_[static_cast<size_t>(index)]; }

    // Indexes of blockField(): First Year ... Output Month; of eventField(): Year, Month, Day.
    enum block_int { kFirstYear, kLastYear, kRepeatingYears, kOutputStartingYear, kOutputMonth, kBlockIntCount };
    enum event_int { kYear, kMonth, kDay, kEventIntCount };

    // The blocks as edited, numbered in list order and their events in event order.
    std::vector<tellura_event_block> blocks();
    // The messages of the last OK (empty before).
    const message_sink& messages() const { return messages_; }

public slots:
    void addBlock();
    void deleteBlock();
    void moveBlockUp() { moveBlock(-1); }
    void moveBlockDown() { moveBlock(1); }
    void addEvent();
    void deleteEvent();
    void moveEventUp() { moveEvent(-1); }
    void moveEventDown() { moveEvent(1); }
    void accept() override;

private:
    QWidget* makeBlockPanel();
    QWidget* makeEventPanel();
    void moveBlock(int delta);
    void moveEvent(int delta);
    void showBlock(int index);
    void showEvent(int index);
    void storeBlock();
    void storeEvent();
    void fillItemChoices(int type);
    void refillBlockList();
    // History of the stations that weather-file blocks name, read once for the coverage warnings.
    void loadStationHistories(const std::vector<tellura_event_block>& blocks, message_sink& errors);
    void refillEventList();
    tellura_event_block* shownBlock();
    static QString blockLabel(const tellura_event_block& block);
    static QString eventLabel(const tellura_event& event);

    database& db_;
    int32_t recordId_;
    int64_t changeCount_ = -1;  // the record's change count when its blocks were read
    int version_;
    option_lists options_;
    tellura_weather_stations stations_;
    std::vector<tellura_event_block> blocks_;
    message_sink messages_;
    std::set<int32_t> historyLoaded_;
    int shownBlock_ = -1;
    int shownEvent_ = -1;
    bool showing_ = false;  // fields are being filled: their changes are not edits

    QListWidget* blockList_;
    QListWidget* eventList_;
    QLineEdit* description_;
    std::vector<QSpinBox*> blockInts_;
    QDoubleSpinBox* outputInterval_;
    QComboBox* weatherChoice_;
    QSpinBox* weatherId_;
    std::vector<QSpinBox*> eventInts_;
    QComboBox* eventType_;
    QComboBox* eventItem_;
    std::vector<QDoubleSpinBox*> parameters_;
};

// Opens the editor on the document's current record; the views redraw after a save.
// False when there is no record or the editor was cancelled.
bool editEventBlocks(doc_soilbench& doc, int version, QWidget* parent);

}  // namespace sb
