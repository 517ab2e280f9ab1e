#pragma once
// Progress of a run set: a percentage label (" 0 %" at the start), a bar,
// two status lines and "Cancel". Cancel asks the running work to stop; the
// work stops after the record in hand (or the model run is cut short).
#include <QDialog>

class QLabel;
class QProgressBar;
class QPushButton;

namespace sb {

class background_run;

class dialog_progress : public QDialog {
    Q_OBJECT
public:
    explicit dialog_progress(background_run& run, QWidget* parent = nullptr);

    QString percentText() const;
    QString text() const;
    QString status() const;

public slots:
    void setPercent(int percent);
    void requestCancel();

protected:
    void reject() override;  // Escape and the close box cancel too; the dialog closes when the work ends

private:
    background_run& run_;
    QLabel* percent_;
    QProgressBar* bar_;
    QLabel* text_;
    QLabel* status_;
    QPushButton* cancel_;
};

}  // namespace sb
