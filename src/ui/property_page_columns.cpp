#include "ui/property_page_columns.h"

#include <QCheckBox>
#include <QDoubleValidator>
#include <QEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QVBoxLayout>
#include <map>

#include "app/number_text.h"
#include "app/text_format.h"

namespace sb {
namespace {

// The shortest text that reads back to the same value: a SINGLE column shows
// "7.7", not the double "7.69999981", and re-reading an untouched field
// stores exactly what was there.
QString numberText(double v, int type) {
    return QString::fromStdString(type == kTypeSingle ? shortestSingleText(static_cast<float>(v)) : shortestText(v));
}
constexpr int kFieldsPerRow = 3;  // label-field pairs side by side, so long pages stay short

}  // namespace

property_page_columns::property_page_columns(const table_record& values, std::vector<group> groups,
                                             field_help_lookup help, QWidget* parent)
    : QWidget(parent), def_(values.def()), help_(std::move(help)) {
    auto* inner = new QWidget;
    auto* innerLayout = new QVBoxLayout(inner);
    for (const group& g : groups) {
        QWidget* box = g.title.isEmpty() ? new QWidget(inner) : new QGroupBox(g.title, inner);
        auto* grid = new QGridLayout(box);
        int i = 0;
        for (int column : g.columns) {
            const auto& f = def_.fields()[static_cast<size_t>(column)];
            const QString name = QString::fromStdString(f.name);
            field entry{column};
            QWidget* editor;
            if (f.type == kTypeBit) {
                entry.check = new QCheckBox(box);
                entry.check->setChecked(values.flag(column));
                editor = entry.check;
            } else {
                entry.edit = new QLineEdit(box);
                entry.edit->setText(values.isText(column) ? QString::fromStdString(values.text(column))
                                                          : numberText(values.number(column), f.type));
                if (values.isText(column)) entry.edit->setMaxLength(f.size > 0 ? f.size : 255);
                editor = entry.edit;
            }
            editor->setObjectName(name);
            editor->setProperty("column", name);
            editor->installEventFilter(this);
            auto* label = new QLabel(name, box);
            if (help_.toolTip) {
                const QString tip = help_.toolTip(f.name);
                editor->setToolTip(tip);
                label->setToolTip(tip);
            }
            label->setBuddy(editor);
            grid->addWidget(label, i / kFieldsPerRow, (i % kFieldsPerRow) * 2);
            grid->addWidget(editor, i / kFieldsPerRow, (i % kFieldsPerRow) * 2 + 1);
            fields_.push_back(entry);
            ++i;
        }
        innerLayout->addWidget(box);
    }
    innerLayout->addStretch();
    auto* scroll = new QScrollArea(this);
    scroll->setWidget(inner);
    scroll->setWidgetResizable(true);
    helpLine_ = new QLabel(this);
    helpLine_->setObjectName(QStringLiteral("fieldHelp"));
    helpLine_->setWordWrap(true);
    helpLine_->setFrameShape(QFrame::StyledPanel);
    helpLine_->setMinimumHeight(44);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(scroll, 1);
    layout->addWidget(helpLine_);
}

std::vector<property_page_columns::group> property_page_columns::byInitialLetter(const database_maker_table& def,
                                                                                 int first, int last) {
    std::map<QChar, std::vector<int>> letters;
    for (int c = first; c < last; ++c)
        letters[QChar(def.fields()[static_cast<size_t>(c)].name[0]).toUpper()].push_back(c);
    std::vector<group> groups;
    for (auto& [letter, columns] : letters) groups.push_back({QString(letter), std::move(columns)});
    return groups;
}

std::vector<property_page_columns::group> property_page_columns::plain(int first, int last) {
    group g;
    for (int c = first; c < last; ++c) g.columns.push_back(c);
    return {g};
}

bool property_page_columns::apply(table_record& row, message_sink& errors) const {
    bool ok = true;
    for (const field& f : fields_) {
        if (f.check) {
            row.setFlag(f.column, f.check->isChecked());
        } else if (row.isText(f.column)) {
            row.setText(f.column, f.edit->text().toStdString());
        } else {
            bool number = false;
            const double v = f.edit->text().trimmed().toDouble(&number);
            if (!number) {
                errors.errorf("ERROR, %s is not a number: \"%s\".\n",
                              def_.fields()[static_cast<size_t>(f.column)].name.c_str(),
                              f.edit->text().toStdString().c_str());
                ok = false;
                continue;
            }
            row.setNumber(f.column, v);
        }
    }
    return ok;
}

QWidget* property_page_columns::editorFor(const std::string& column) const {
    const int c = def_.fieldIndex(column);
    for (const field& f : fields_)
        if (f.column == c) return f.check ? static_cast<QWidget*>(f.check) : f.edit;
    return nullptr;
}

QString property_page_columns::helpText() const { return helpLine_->text(); }

bool property_page_columns::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn && help_.line) {
        const std::string name = watched->property("column").toString().toStdString();
        helpLine_->setText(help_.line(name));
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace sb
