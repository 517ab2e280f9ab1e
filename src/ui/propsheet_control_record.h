#pragma once
// The property sheet of one control record: site and control, the fixed
// parameters in groups by initial letter (as the fixed file's setter groups
// them), run control, the site data and the daily-step parameters. One field
// per column, straight from the table catalogue.
#include <QDialog>
#include <vector>

#include "app/message_sink.h"
#include "ui/property_page_columns.h"

class QTabWidget;

namespace sb {

class tellura_control_record;

class propsheet_control_record : public QDialog {
    Q_OBJECT
public:
    // Fixed-parameter fields take their help from the fixed file's table, all others from the site file's.
    propsheet_control_record(tellura_control_record& record, field_help_lookup fixedHelp, field_help_lookup siteHelp,
                             QWidget* parent = nullptr);

    QTabWidget* tabs() const { return tabs_; }
    property_page_columns* page(int index) const { return pages_[static_cast<size_t>(index)]; }
    // Copies every page into the record; false (and the record unchanged) on a bad field.
    bool applyTo(tellura_control_record& record, message_sink& errors) const;

    static QStringList pageTitles();

public slots:
    void accept() override;

private:
    tellura_control_record& record_;
    QTabWidget* tabs_;
    std::vector<property_page_columns*> pages_;  // the first three edit the row, the last two the site data
};

}  // namespace sb
