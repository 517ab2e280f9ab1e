#pragma once
// The weather stations of the project: ID, description and the twelve
// monthly climate means (precipitation, its deviation and skew, minimum and
// maximum temperature) that the site file takes, beside the station's
// historical monthly and daily weather. Stations are added and deleted here,
// weather files are read into the shown station's history, and one daily
// record at a time can be deleted.
#include <QDialog>
#include <cstdint>
#include <functional>
#include <set>
#include <string>

class QLineEdit;
class QListWidget;
class QTableWidget;

#include "app/message_sink.h"
#include "records/list_edits.h"

namespace sb {

class database;
class tellura_weather_stations;

class dialog_weather_stations : public QDialog {
    Q_OBJECT
public:
    // The history lists are read from `history` when a station is first shown.
    dialog_weather_stations(tellura_weather_stations& stations, database& history, QWidget* parent = nullptr);

    QListWidget* stationList() const { return list_; }
    QTableWidget* means() const { return means_; }
    QTableWidget* monthlyHistory() const { return monthly_; }
    QTableWidget* dailyHistory() const { return daily_; }
    bool applyShown(message_sink& errors);
    void addStation(int32_t id, const QString& description);
    // The shown station leaves the project when the dialog is saved.
    bool deleteStation(int index, message_sink& errors);
    // The daily record in row `row` of the daily list, after the question
    // ("Delete %ld %04d-%02d-%02d ?") is answered Yes by `confirm`.
    bool deleteDailyRecord(int row, const std::function<bool(const QString&)>& confirm, message_sink& errors);
    // Adds a monthly ("prec/tmin/tmax YEAR v1..v12") or daily weather file to
    // the shown station's history; stored when the dialog is saved.
    bool importWeatherFile(const QString& path, bool daily, message_sink& errors);
    bool save(database& db, message_sink& errors);

public slots:
    void accept() override;

private:
    void showStation(int index);
    void importWeatherFileAsk(bool daily);
    void loadHistory(int index);
    void fillHistory();
    bool askYesNo(const QString& question);

    tellura_weather_stations& stations_;
    database& history_;
    QListWidget* list_;
    QLineEdit* description_;
    QTableWidget* means_;
    QTableWidget* monthly_;
    QTableWidget* daily_;
    int shown_ = -1;
    // Stations by ID, in three parts: the station, its monthly and its daily history.
    enum station_part { kStation, kMonthlyHistory, kDailyHistory };
    list_edits edits_;
    std::set<int32_t> historyLoaded_;
};

}  // namespace sb
