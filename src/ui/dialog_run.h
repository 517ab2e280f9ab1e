#pragma once
// "Run TELLURA": the record's heading, the event blocks to run (two lists,
// "Add->" and "<-Delete" move a block between them), the daily output years
// to save (only for the daily-step release) and "Read binary output".
#include <QDialog>
#include <vector>

#include "records/tellura_event_block.h"

class QCheckBox;
class QLabel;
class QListWidget;
class QSpinBox;

namespace sb {

class app_soilbench;

class dialog_run : public QDialog {
    Q_OBJECT
public:
    // `blocks` are the record's event blocks, all chosen on opening.
    dialog_run(int32_t id, const QString& name, const std::vector<tellura_event_block>& blocks, app_soilbench& settings,
               QWidget* parent = nullptr);

    QString heading() const;
    QListWidget* available() const { return available_; }
    QListWidget* chosen() const { return chosen_; }
    QSpinBox* firstYear() const { return first_; }
    QSpinBox* lastYear() const { return last_; }
    QCheckBox* readBinary() const { return binary_; }
    // The blocks to run, in the dialog's order (valid after OK).
    std::vector<tellura_event_block> chosenBlocks() const;

public slots:
    void addSelected();
    void deleteSelected();
    void accept() override;

private:
    static void moveCurrent(QListWidget* from, QListWidget* to);

    app_soilbench& settings_;
    std::vector<tellura_event_block> blocks_;
    QLabel* heading_;
    QListWidget* available_;
    QListWidget* chosen_;
    QSpinBox* first_;
    QSpinBox* last_;
    QCheckBox* binary_;
};

}  // namespace sb
