#include "ui/control_record_table_model.h"

#include <QColor>

#include "app/text_format.h"
#include "records/list_control_record_proxies.h"
#include "run/record_status.h"

namespace sb {
namespace {

const char* const kHeaders[] = {"Record", "ID", "Last Run", "Description"};
constexpr int kColumnCount = static_cast<int>(std::size(kHeaders));
constexpr int kLastRunColumn = 2;
constexpr int kDescriptionColumn = 3;

// "good, ended 2024-05-01T08:15:02.123Z" and the run's message below.
QString lastRunToolTip(record_state state, const run_history_entry& run) {
    if (state == record_state::never) return QStringLiteral("Never run");
    std::string text = strprintf("Last run %s, ", recordStateText(state));
    if (run.finished()) text += "ended " + run.ended;
    else
        text += "started " + run.started + (state == record_state::running ? ", not finished yet" : ", never finished");
    // A run going on has only the message for the case it never finishes.
    if (!run.message.empty() && state != record_state::running) text += "\n" + std::string(trim(run.message));
    return QString::fromStdString(text);
}

// The handle's label is "%5ld %5ld %s"; the description is what follows the two numbers.
QString descriptionOf(const control_record_proxy& h) {
    const std::string numbers = strprintf("%5ld %5ld ", static_cast<long>(h.recordNumber), static_cast<long>(h.id));
    return h.label.size() >= numbers.size() ? QString::fromStdString(h.label.substr(numbers.size())) : QString();
}

}  // namespace

control_record_table_model::control_record_table_model(list_control_record_proxies& list, QObject* parent)
    : QAbstractTableModel(parent), list_(list) {
    syncRows();
}

const control_record_proxy* control_record_table_model::handleAt(int row) const {
    return row >= 0 && row < rows_ ? list_.at(row + 1) : nullptr;
}

bool control_record_table_model::complete() const { return exhausted_ || list_.complete(); }

int control_record_table_model::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows_; }

int control_record_table_model::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumnCount;
}

QVariant control_record_table_model::data(const QModelIndex& index, int role) const {
    const control_record_proxy* h = index.isValid() ? handleAt(index.row()) : nullptr;
    if (!h) return {};
    if (role == Qt::TextAlignmentRole)
        return index.column() >= kLastRunColumn ? QVariant(Qt::AlignLeft | Qt::AlignVCenter)
                                                : QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (index.column() == kLastRunColumn) {
        auto last = lastRuns_.find(h->id);
        const run_history_entry* run = last == lastRuns_.end() ? nullptr : &last->second;
        const record_state state = lastRunState(run);
        if (role == Qt::DisplayRole) return QString::fromLatin1(recordStateText(state));
        if (role == Qt::ToolTipRole) return lastRunToolTip(state, run ? *run : run_history_entry());
        if (role == Qt::ForegroundRole && state == record_state::failed) return QColor(Qt::red);
        return {};
    }
    if (role == Qt::ToolTipRole) return QString::fromStdString(h->label);
    if (role != Qt::DisplayRole) return {};
    switch (index.column()) {
        case 0:
            return h->recordNumber;
        case 1:
            return h->id;
        case kDescriptionColumn:
            return descriptionOf(*h);
        default:
            return {};
    }
}

QVariant control_record_table_model::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal || section >= kColumnCount) return {};
    return QString::fromLatin1(kHeaders[section]);
}

bool control_record_table_model::canFetchMore(const QModelIndex& parent) const {
    return !parent.isValid() && !complete();
}

void control_record_table_model::fetchMore(const QModelIndex& parent) {
    if (parent.isValid()) return;
    message_sink errors;
    if (!fetchPage(errors)) exhausted_ = true;  // a broken table shows as far as it could be read
}

bool control_record_table_model::fetchPage(message_sink& errors) {
    if (complete()) return true;
    const int before = rows_;
    const control_record_proxy* from = list_.at(rows_);
    if (!from && rows_ == 0) {
        if (!list_.first(errors)) return false;
        from = list_.at(1);
    }
    const size_t held = list_.size();
    const size_t before_errors = errors.count();
    list_.forward(from, kPageSize, errors);
    if (errors.count() != before_errors) return false;
    syncRows();
    if (rows_ == before && list_.size() == held) exhausted_ = true;
    return true;
}

void control_record_table_model::syncRows() {
    // Handles are numbered 1..n without gaps: navigation and paging only ever
    // step from a handle the list holds. The document reads the first record
    // before the model is made, so no unread placeholder handle is shown.
    int held = rows_;
    while (list_.at(held + 1)) ++held;
    if (held == rows_) return;
    beginInsertRows({}, rows_, held - 1);
    rows_ = held;
    endInsertRows();
}

void control_record_table_model::readLastRuns(database& db) {
    std::map<int32_t, run_history_entry> lastRuns;
    message_sink ignored;  // no history read: every record shows as never run
    sb::readLastRuns(db, lastRuns, ignored);
    lastRuns_ = std::move(lastRuns);
    if (rows_ > 0) emit dataChanged(index(0, kLastRunColumn), index(rows_ - 1, kLastRunColumn));
}

void control_record_table_model::reset() {
    beginResetModel();
    rows_ = 0;
    exhausted_ = false;
    endResetModel();
    syncRows();
}

}  // namespace sb
