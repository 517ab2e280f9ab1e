#pragma once
// The record list as a table for the record view: one row per record handle
// of the core's lazily built list (record number, ID, last run, description). Rows are
// added as the list grows, by scrolling (a page of handles at a time) or by
// navigation, so a project with a hundred thousand records opens at once.
#include <QAbstractTableModel>
#include <cstdint>
#include <map>
#include <string>

#include "app/message_sink.h"
#include "run/run_history.h"

namespace sb {

class list_control_record_proxies;
class control_record_proxy;
class database;

class control_record_table_model : public QAbstractTableModel {
    Q_OBJECT
public:
    static constexpr int kPageSize = 200;

    explicit control_record_table_model(list_control_record_proxies& list, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

    // Reads the next page of handles; false on a read failure (messages in `errors`).
    bool fetchPage(message_sink& errors);
    // Takes in rows for handles the list gained through navigation.
    void syncRows();
    // Starts again from an emptied list (after a delete, paste or import).
    void reset();
    const control_record_proxy* handleAt(int row) const;
    // Reads every record's latest run from the project's run history, for the
    // "Last Run" column; a history that cannot be read shows no runs.
    void readLastRuns(database& db);
    bool complete() const;

private:
    list_control_record_proxies& list_;
    int rows_ = 0;
    bool exhausted_ = false;  // a page read added nothing
    std::map<int32_t, run_history_entry> lastRuns_;
};

}  // namespace sb
