#include "ui/dialog_option_list.h"
#include "ui/dialog_buttons.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "records/option_list.h"
#include "ui/dialog_errors.h"

namespace sb {
namespace {

// "Crop File (*.100)\n*.100\nAll Files (*.*)\n*.*" -> "Crop File (*.100);;All Files (*.*)".
QString qtFilter(const char* filter) {
    const QStringList parts = QString::fromLatin1(filter).split('\n');
    QStringList out;
    for (int i = 0; i < parts.size(); i += 2) out << parts[i];
    return out.join(QStringLiteral(";;"));
}

std::unique_ptr<tellura_input> copyOf(const option_list& list, const option_record& source) {
    auto record = list.makeRecord();
    static_cast<option_record&>(*record) = source;
    return record;
}

}  // namespace

QString dialog_option_list::titleFor(const option_list& list) { return QString::fromLatin1(list.member().exportFile); }

dialog_option_list::dialog_option_list(option_list& list, int version, field_help_lookup help, QWidget* parent)
    : QDialog(parent), list_(list), version_(version), help_(std::move(help)) {
    setObjectName(QStringLiteral("dialog_option_list"));
    setWindowTitle(QStringLiteral("Edit %1").arg(titleFor(list)));
    names_ = new QListWidget(this);
    names_->setObjectName(QStringLiteral("names"));
    auto* buttons = new QVBoxLayout;
    const std::pair<const char*, void (dialog_option_list::*)()> actions[] = {
        {"Import...", &dialog_option_list::askImport},
        {"Export...", &dialog_option_list::askExport},
        {"Add", &dialog_option_list::askAdd},
        {"Copy", &dialog_option_list::askCopy},
    };
    for (const auto& [label, slot] : actions) {
        auto* b = new QPushButton(QString::fromLatin1(label), this);
        b->setAutoDefault(false);
        connect(b, &QPushButton::clicked, this, slot);
        buttons->addWidget(b);
    }
    auto* del = new QPushButton(QStringLiteral("Delete"), this);
    del->setAutoDefault(false);
    connect(del, &QPushButton::clicked, this, [this] { deleteOption(names_->currentRow()); });
    buttons->addWidget(del);
    buttons->addStretch();

    pageHolder_ = new QVBoxLayout;
    auto* body = new QHBoxLayout;
    body->addWidget(names_, 1);
    body->addLayout(buttons);
    body->addLayout(pageHolder_, 4);

    auto* box = okCancelButtons(this);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(body, 1);
    layout->addWidget(box);
    resize(980, 640);

    connect(names_, &QListWidget::currentRowChanged, this, &dialog_option_list::showOption);
    fillNames(0);
}

void dialog_option_list::fillNames(int select) {
    QSignalBlocker block(names_);
    names_->clear();
    for (size_t i = 0; i < list_.size(); ++i) {
        const option_record& r = list_.recordAt(i);
        names_->addItem(
            QStringLiteral("%1  %2").arg(QString::fromStdString(r.name), QString::fromStdString(r.description)));
    }
    shown_ = -1;
    select = std::min(select, names_->count() - 1);
    names_->setCurrentRow(select);
    showOption(select);
}

bool dialog_option_list::applyCurrent(message_sink& errors) {
    if (!page_ || shown_ < 0 || shown_ >= static_cast<int>(list_.size())) return true;
    option_record& record = list_.recordAt(static_cast<size_t>(shown_));
    table_record row = record.toRow();
    if (!page_->apply(row, errors)) return false;
    record.fromRow(row);
    names_->item(shown_)->setText(
        QStringLiteral("%1  %2").arg(QString::fromStdString(record.name), QString::fromStdString(record.description)));
    return true;
}

void dialog_option_list::showOption(int index) {
    message_sink errors;
    if (!applyCurrent(errors)) {
        // Stay on the option with the bad field.
        QSignalBlocker block(names_);
        names_->setCurrentRow(shown_);
        showErrorsIfAny(this, errors);
        return;
    }
    delete page_;
    page_ = nullptr;
    shown_ = index;
    if (index < 0 || index >= static_cast<int>(list_.size())) return;
    const option_record& record = list_.recordAt(static_cast<size_t>(index));
    const table_record row = record.toRow();
    page_ = new property_page_columns(row, property_page_columns::plain(0, row.columnCount()), help_, this);
    pageHolder_->addWidget(page_);
}

bool dialog_option_list::importFrom(const QString& path, message_sink& errors) {
    if (!applyCurrent(errors)) return false;
    std::string status;
    list_.importFile(path.toStdString(), errors, status);
    errors.note(status);
    fillNames(0);
    return true;
}

bool dialog_option_list::exportTo(const QString& path, message_sink& errors) {
    if (!applyCurrent(errors)) return false;
    return list_.write(path.toStdString(), errors, version_);
}

void dialog_option_list::addOption(const QString& name) {
    message_sink errors;
    applyCurrent(errors);
    list_.addRecord(name.toStdString());
    fillNames(static_cast<int>(list_.size()) - 1);
}

void dialog_option_list::copyOption(int index, const QString& name) {
    message_sink errors;
    if (index < 0 || index >= static_cast<int>(list_.size()) || !applyCurrent(errors)) return;
    auto copy = copyOf(list_, list_.recordAt(static_cast<size_t>(index)));
    copy->name = name.toStdString();
    list_.add(std::move(copy));
    fillNames(static_cast<int>(list_.size()) - 1);
}

void dialog_option_list::deleteOption(int index) {
    if (index < 0 || index >= static_cast<int>(list_.size())) return;
    // The list keeps its records in order and offers no removal of one; it is
    // rebuilt without the deleted option.
    std::vector<std::unique_ptr<tellura_input>> keep;
    for (size_t i = 0; i < list_.size(); ++i)
        if (static_cast<int>(i) != index) keep.push_back(copyOf(list_, list_.recordAt(i)));
    list_.clear();
    for (auto& r : keep) list_.add(std::move(r));
    shown_ = -1;
    fillNames(index);
}

void dialog_option_list::askImport() {
    const QString path =
        QFileDialog::getOpenFileName(this, QStringLiteral("Import"), QString::fromLatin1(list_.member().exportFile),
                                     qtFilter(list_.member().fileFilter));
    if (path.isEmpty()) return;
    message_sink errors;
    importFrom(path, errors);
    showErrorsIfAny(this, errors);
}

void dialog_option_list::askExport() {
    const QString path =
        QFileDialog::getSaveFileName(this, QStringLiteral("Export"), QString::fromLatin1(list_.member().exportFile),
                                     qtFilter(list_.member().fileFilter));
    if (path.isEmpty()) return;
    message_sink errors;
    exportTo(path, errors);
    showErrorsIfAny(this, errors);
}

void dialog_option_list::askAdd() {
    const QString name = QInputDialog::getText(this, QStringLiteral("Add"), QStringLiteral("Name:"));
    if (!name.trimmed().isEmpty()) addOption(name.trimmed().left(static_cast<int>(tellura_input::kMaxNameLength)));
}

void dialog_option_list::askCopy() {
    const int index = names_->currentRow();
    if (index < 0) return;
    const QString name = QInputDialog::getText(this, QStringLiteral("Copy"), QStringLiteral("Name of the copy:"));
    if (!name.trimmed().isEmpty())
        copyOption(index, name.trimmed().left(static_cast<int>(tellura_input::kMaxNameLength)));
}

void dialog_option_list::accept() {
    message_sink errors;
    if (!applyCurrent(errors)) {
        showErrorsIfAny(this, errors);
        return;
    }
    QDialog::accept();
}

}  // namespace sb
