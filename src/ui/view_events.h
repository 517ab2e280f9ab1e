#pragma once
// The event blocks of the current record with their management events.
#include <QWidget>

#include "ui/printable_view.h"

class QTreeWidget;

namespace sb {

class doc_soilbench;

class view_events : public QWidget, public printable_view {
    Q_OBJECT
public:
    explicit view_events(doc_soilbench& doc, QWidget* parent = nullptr);
    QTreeWidget* tree() const { return tree_; }
    void print(QPrinter& printer) override;

public slots:
    void reload();

signals:
    // "Edit Event Blocks..." was pressed: the frame opens the editor.
    void editRequested();

private:
    doc_soilbench& doc_;
    QTreeWidget* tree_;
};

}  // namespace sb
