#pragma once
// "Configure Run Set": which control records a multiple run takes. The user
// types an ID list ("1, 2, 5-9"), builds the SQL filter from it with
// "Make WHERE by ID" (or types any condition into the filter directly), and
// chooses whether a precheck error stops the whole set.
#include <QDialog>

class QCheckBox;
class QLineEdit;

namespace sb {

class dialog_run_set : public QDialog {
    Q_OBJECT
public:
    explicit dialog_run_set(QWidget* parent = nullptr);

    QString idList() const;
    void setIdList(const QString& ids);  // counts as an edit of the list
    QString whereClause() const;
    bool stopOnPrecheckError() const;
    bool idListEdited() const { return idListEdited_; }

public slots:
    void makeWhere();
    void done(int result) override;  // asks before closing with an unbuilt list

private:
    QLineEdit* ids_;
    QLineEdit* where_;
    QCheckBox* stopOnError_;
    bool idListEdited_ = false;
};

}  // namespace sb
