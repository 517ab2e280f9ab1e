#pragma once
// Which of the 28 optional daily output files the daily-step release writes:
// one check box per file, "file - description".
#include <QDialog>
#include <array>
#include <vector>

class QCheckBox;

namespace sb {

class app_soilbench;

class dialog_diurna_output_files : public QDialog {
    Q_OBJECT
public:
    explicit dialog_diurna_output_files(app_soilbench& settings, QWidget* parent = nullptr);
    const std::vector<QCheckBox*>& boxes() const { return boxes_; }

public slots:
    void accept() override;

private:
    app_soilbench& settings_;
    std::vector<QCheckBox*> boxes_;
};

}  // namespace sb
