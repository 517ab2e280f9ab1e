#pragma once
// The weather stations of the project: ID, description and the twelve
// monthly climate means (precipitation, its deviation and skew, minimum and
// maximum temperature) that the site file takes.
#include <QDialog>
#include <set>

class QLineEdit;
class QListWidget;
class QTableWidget;

namespace sb {

class database;
class tellura_weather_station_list;

class dialog_weather_stations : public QDialog {
    Q_OBJECT
public:
    dialog_weather_stations(tellura_weather_station_list& stations, QWidget* parent = nullptr);

    QListWidget* stationList() const { return list_; }
    QTableWidget* means() const { return means_; }
    bool applyShown(std::string& errors);
    void addStation(int32_t id, const QString& description);
    bool save(database& db, std::string& errors);

public slots:
    void accept() override;

private:
    void showStation(int index);

    tellura_weather_station_list& stations_;
    QListWidget* list_;
    QLineEdit* description_;
    QTableWidget* means_;
    int shown_ = -1;
    std::set<int32_t> changed_;
};

}  // namespace sb
