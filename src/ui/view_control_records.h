#pragma once
// The control records of the project as a table, read page by page as the
// user scrolls. The current record is the selected row; printing prints the
// rows read so far.
#include <QWidget>

#include "ui/printable_view.h"

class QTableView;

namespace sb {

class doc_soilbench;

class view_control_records : public QWidget, public printable_view {
    Q_OBJECT
public:
    explicit view_control_records(doc_soilbench& doc, QWidget* parent = nullptr);
    QTableView* table() const { return table_; }
    void print(QPrinter& printer) override;
    // The printed page as HTML (also what the print preview shows).
    QString printHtml() const;

signals:
    void editRequested();

private:
    void showCurrent(int row);

    doc_soilbench& doc_;
    QTableView* table_;
};

}  // namespace sb
