#include "ui/propsheet_control_record.h"
#include "ui/dialog_buttons.h"

#include <QDialogButtonBox>
#include <QMessageBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include "records/tellura_control_record.h"

namespace sb {
namespace {

constexpr int kRowPages = 3;

}  // namespace

QStringList propsheet_control_record::pageTitles() {
    return {QStringLiteral("Site and Control"), QStringLiteral("Fixed Parameters"), QStringLiteral("Run Control"),
            QStringLiteral("Site Data"), QStringLiteral("Daily Parameters")};
}

propsheet_control_record::propsheet_control_record(tellura_control_record& record, field_help_lookup fixedHelp,
                                                   field_help_lookup siteHelp, QWidget* parent)
    : QDialog(parent), record_(record) {
    setObjectName(QStringLiteral("propsheet_control_record"));
    setWindowTitle(QStringLiteral("Control Record, ID = %1").arg(record.id()));
    const auto& row = tableDef(table_id::control_records);
    const auto& site = tableDef(table_id::site_data);
    // Page boundaries are named columns, so a column added to the catalogue lands on its page.
    const int fixedFirst = row.fieldIndex("Hydric") + 1;
    const int runFirst = row.fieldIndex("Organic Matter Decomposition Model");
    const int rowEnd = static_cast<int>(row.fields().size());
    const int siteFirst = site.fieldIndex("ID") + 1;  // the site row's ID is the record's own
    const int dailyFirst = site.fieldIndex("TIMSTEP");
    const int siteEnd = static_cast<int>(site.fields().size());

    const QStringList titles = pageTitles();
    const std::vector<std::vector<property_page_columns::group>> groups = {
        property_page_columns::plain(0, fixedFirst),
        property_page_columns::byInitialLetter(row, fixedFirst, runFirst),
        property_page_columns::plain(runFirst, rowEnd),
        property_page_columns::plain(siteFirst, dailyFirst),
        property_page_columns::plain(dailyFirst, siteEnd),
    };
    tabs_ = new QTabWidget(this);
    for (size_t i = 0; i < groups.size(); ++i) {
        const table_record& values = i < kRowPages ? static_cast<const table_record&>(record.row) : record.site;
        auto* page = new property_page_columns(values, groups[i], i == 1 ? fixedHelp : siteHelp, tabs_);
        pages_.push_back(page);
        tabs_->addTab(page, titles[static_cast<int>(i)]);
    }
    auto* buttons = okCancelButtons(this);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs_);
    layout->addWidget(buttons);
    resize(860, 640);
}

bool propsheet_control_record::applyTo(tellura_control_record& record, message_sink& errors) const {
    control_record_row row = record.row;
    site_data_row site = record.site;
    bool ok = true;
    for (size_t i = 0; i < pages_.size(); ++i)
        ok = pages_[i]->apply(i < kRowPages ? static_cast<table_record&>(row) : site, errors) && ok;
    if (!ok) return false;
    const int32_t id = static_cast<int32_t>(row.number(std::string_view("ID")));
    record.row = row;
    record.site = site;
    record.setId(id);  // the site row follows the record's ID
    record.modified = true;
    return true;
}

void propsheet_control_record::accept() {
    message_sink errors;
    if (!applyTo(record_, errors)) {
        QMessageBox::warning(this, windowTitle(), QString::fromStdString(errors.text()).trimmed());
        return;
    }
    QDialog::accept();
}

}  // namespace sb
