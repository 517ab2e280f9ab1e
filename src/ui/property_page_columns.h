#pragma once
// A page of one edit field per column of a table row, straight from the table
// catalogue: text columns get a text field, yes/no columns a check box, number
// columns a number field. Columns can be shown in titled groups. A help line
// under the fields shows the focused parameter's help for the current model
// version, and each field's tool tip its description.
#include <QWidget>
#include <functional>
#include <string>
#include <vector>

#include "app/message_sink.h"
#include "db/table_record.h"

class QLabel;
class QLineEdit;
class QCheckBox;

namespace sb {

// Help for a parameter name: the help line under the fields ("Not Found: NAME"
// when there is none) and the tool tip of its field (the parameter's
// description; empty when there is none). Either may be left empty.
struct field_help_lookup {
    std::function<QString(const std::string& name)> line;
    std::function<QString(const std::string& name)> toolTip;
};

class property_page_columns : public QWidget {
    Q_OBJECT
public:
    struct group {
        QString title;             // empty: no group box
        std::vector<int> columns;  // catalogue positions, shown in this order
    };

    property_page_columns(const table_record& values, std::vector<group> groups, field_help_lookup help,
                          QWidget* parent = nullptr);

    // Columns first..last-1 grouped by the initial letter of their names.
    static std::vector<group> byInitialLetter(const database_maker_table& def, int first, int last);
    static std::vector<group> plain(int first, int last);

    // Copies the fields into the row; false with messages for fields that are not numbers.
    bool apply(table_record& row, message_sink& errors) const;
    // The edit widget of a column (a QLineEdit or a QCheckBox); nullptr when not on this page.
    QWidget* editorFor(const std::string& column) const;
    QString helpText() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct field {
        int column;
        QLineEdit* edit = nullptr;
        QCheckBox* check = nullptr;
    };
    const database_maker_table& def_;
    std::vector<field> fields_;
    field_help_lookup help_;
    QLabel* helpLine_;
};

}  // namespace sb
