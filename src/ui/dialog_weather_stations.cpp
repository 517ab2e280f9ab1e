#include "ui/dialog_weather_stations.h"
#include "ui/dialog_buttons.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QVBoxLayout>

#include "app/number_text.h"
#include "app/text_format.h"
#include "db/database.h"
#include "records/store_session.h"
#include "records/tellura_weather_station.h"
#include "ui/dialog_errors.h"

namespace sb {
namespace {

// The five series in the order the station's text form lists them.
const char* const kSeries[] = {"Precipitation", "Precipitation STD", "Precipitation Skew", "Temperature Min",
                               "Temperature Max"};
float weather_month_means::*const kSeriesField[] = {&weather_month_means::precip, &weather_month_means::prcstd,
                                                    &weather_month_means::prcskw, &weather_month_means::tmn2m,
                                                    &weather_month_means::tmx2m};

// A stored value as the fewest digits that read back as it: the means are
// edited in place and read back from the cells, so a shorter text would change
// a value the user never touched.
QString singleText(float value) { return QString::fromStdString(shortestSingleText(value)); }

// The history lists: the date columns, then one column per stored value.
template <typename Record>
struct history_column {
    const char* heading;
    float Record::*value;
};
const history_column<weather_month_record> kMonthlyColumns[] = {
    {"Precip", &weather_month_record::precip}, {"PrcStd", &weather_month_record::prcstd},
    {"PrcSkw", &weather_month_record::prcskw}, {"TMN2M", &weather_month_record::tmn2m},
    {"TMX2M", &weather_month_record::tmx2m},   {"SolRad", &weather_month_record::solrad},
    {"RHumid", &weather_month_record::rhumid}, {"WindSp", &weather_month_record::windsp}};
const history_column<weather_day_record> kDailyColumns[] = {
    {"Precip", &weather_day_record::precip}, {"TMN2M", &weather_day_record::tmn2m},
    {"TMX2M", &weather_day_record::tmx2m},   {"SolRad", &weather_day_record::solrad},
    {"RHumid", &weather_day_record::rhumid}, {"WindSp", &weather_day_record::windsp}};

template <typename Record, size_t N>
QTableWidget* makeHistoryTable(QStringList headings, const history_column<Record> (&columns)[N], QWidget* parent) {
    for (const auto& c : columns) headings << QString::fromLatin1(c.heading);
    auto* table = new QTableWidget(0, static_cast<int>(headings.size()), parent);
    table->setHorizontalHeaderLabels(headings);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);  // history comes from weather files
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->verticalHeader()->setVisible(false);
    table->verticalHeader()->setDefaultSectionSize(22);
    table->horizontalHeader()->setDefaultSectionSize(70);
    return table;
}

// One history row: the date numbers, then the values.
template <typename Record, size_t N>
void setHistoryRow(QTableWidget* table, int row, std::initializer_list<int> date, const Record& record,
                   const history_column<Record> (&columns)[N]) {
    int column = 0;
    for (int part : date) table->setItem(row, column++, new QTableWidgetItem(QString::number(part)));
    for (const auto& c : columns) table->setItem(row, column++, new QTableWidgetItem(singleText(record.*c.value)));
}

}  // namespace

dialog_weather_stations::dialog_weather_stations(tellura_weather_stations& stations, database& history, QWidget* parent)
    : QDialog(parent), stations_(stations), history_(history) {
    setObjectName(QStringLiteral("dialog_weather_stations"));
    setWindowTitle(QStringLiteral("Weather Stations"));
    list_ = new QListWidget(this);
    for (const auto& s : stations_.stations)
        list_->addItem(QStringLiteral("%1 %2").arg(s.id).arg(QString::fromStdString(s.description)));
    auto* add = new QPushButton(QStringLiteral("Add"), this);
    add->setAutoDefault(false);
    auto* remove = new QPushButton(QStringLiteral("Delete"), this);
    remove->setAutoDefault(false);
    monthly_ = makeHistoryTable({QStringLiteral("Year"), QStringLiteral("Month")}, kMonthlyColumns, this);
    monthly_->setObjectName(QStringLiteral("monthlyHistory"));
    daily_ =
        makeHistoryTable({QStringLiteral("Year"), QStringLiteral("Month"), QStringLiteral("Day")}, kDailyColumns, this);
    daily_->setObjectName(QStringLiteral("dailyHistory"));
    auto* deleteDay = new QPushButton(QStringLiteral("Delete Daily Record"), this);
    deleteDay->setAutoDefault(false);
    auto* importMonthly = new QPushButton(QStringLiteral("Import Monthly Weather File..."), this);
    importMonthly->setAutoDefault(false);
    auto* importDaily = new QPushButton(QStringLiteral("Import Daily Weather File..."), this);
    importDaily->setAutoDefault(false);
    description_ = new QLineEdit(this);
    description_->setMaxLength(80);
    means_ = new QTableWidget(5, 12, this);
    QStringList months;
    for (int m = 1; m <= 12; ++m) months << QString::number(m);
    means_->setHorizontalHeaderLabels(months);
    QStringList series;
    for (const char* s : kSeries) series << QString::fromLatin1(s);
    means_->setVerticalHeaderLabels(series);
    means_->horizontalHeader()->setDefaultSectionSize(62);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Description:"), description_);
    auto* right = new QVBoxLayout;
    right->addLayout(form);
    auto* tabs = new QTabWidget(this);
    tabs->addTab(means_, QStringLiteral("Climate Means"));
    auto* monthlyPage = new QWidget(this);
    auto* monthlyLayout = new QVBoxLayout(monthlyPage);
    monthlyLayout->addWidget(monthly_, 1);
    monthlyLayout->addWidget(importMonthly, 0, Qt::AlignLeft);
    tabs->addTab(monthlyPage, QStringLiteral("Monthly History"));
    auto* dailyPage = new QWidget(this);
    auto* dailyLayout = new QVBoxLayout(dailyPage);
    dailyLayout->addWidget(daily_, 1);
    auto* dailyButtons = new QHBoxLayout;
    dailyButtons->addWidget(importDaily);
    dailyButtons->addWidget(deleteDay);
    dailyButtons->addStretch();
    dailyLayout->addLayout(dailyButtons);
    tabs->addTab(dailyPage, QStringLiteral("Daily History"));
    right->addWidget(tabs, 1);
    auto* left = listWithButtons(list_, {add, remove});
    auto* body = new QHBoxLayout;
    body->addLayout(left, 1);
    body->addLayout(right, 4);
    auto* box = okCancelButtons(this);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(body, 1);
    layout->addWidget(box);
    resize(1100, 520);

    connect(list_, &QListWidget::currentRowChanged, this, &dialog_weather_stations::showStation);
    connect(add, &QPushButton::clicked, this, [this] {
        bool ok = false;
        const int id = QInputDialog::getInt(this, QStringLiteral("Add"), QStringLiteral("Weather ID:"), 1, 0,
                                            std::numeric_limits<int32_t>::max(), 1, &ok);
        if (ok) addStation(id, QString());
    });
    connect(remove, &QPushButton::clicked, this, [this] {
        if (shown_ < 0) return;
        if (!askYesNo(QStringLiteral("Delete weather station %1 ?").arg(list_->item(shown_)->text()))) return;
        message_sink errors;
        deleteStation(shown_, errors);
        showErrorsIfAny(this, errors);
    });
    connect(deleteDay, &QPushButton::clicked, this, [this] {
        message_sink errors;
        deleteDailyRecord(
            daily_->currentRow(), [this](const QString& q) { return askYesNo(q); }, errors);
        showErrorsIfAny(this, errors);
    });
    connect(importMonthly, &QPushButton::clicked, this, [this] { importWeatherFileAsk(false); });
    connect(importDaily, &QPushButton::clicked, this, [this] { importWeatherFileAsk(true); });
    list_->setCurrentRow(stations_.stations.empty() ? -1 : 0);
}

void dialog_weather_stations::importWeatherFileAsk(bool daily) {
    const QString path = QFileDialog::getOpenFileName(
        this, daily ? QStringLiteral("Weather Daily Records") : QStringLiteral("Weather Monthly Records"),
        QStringLiteral("weather.wth"), QStringLiteral("Weather File (*.wth);;All Files (*)"));
    if (path.isEmpty()) return;
    message_sink errors;
    importWeatherFile(path, daily, errors);
    showErrorsIfAny(this, errors);
}

bool dialog_weather_stations::importWeatherFile(const QString& path, bool daily, message_sink& errors) {
    if (shown_ < 0) {
        errors.error("Select a weather station to import into.\n");
        return false;
    }
    tellura_weather_station& s = stations_.stations[static_cast<size_t>(shown_)];
    // A file that does not read cleanly changes nothing of the station's history.
    tellura_weather_station read = s;
    const bool ok = daily ? readDailyWeatherFile(path.toStdString(), read, errors)
                          : readMonthlyWeatherFile(path.toStdString(), read, errors);
    if (!ok) return false;
    s = std::move(read);
    edits_.change(s.id, daily ? kDailyHistory : kMonthlyHistory);
    fillHistory();
    return true;
}

bool dialog_weather_stations::applyShown(message_sink& errors) {
    if (shown_ < 0) return true;
    tellura_weather_station& s = stations_.stations[static_cast<size_t>(shown_)];
    bool ok = true;
    for (int r = 0; r < 5; ++r)
        for (int m = 0; m < 12; ++m) {
            bool number = false;
            const float v = means_->item(r, m)->text().trimmed().toFloat(&number);
            if (!number) {
                errors.errorf("ERROR, %s of month %d is not a number.\n", kSeries[r], m + 1);
                ok = false;
                continue;
            }
            s.means[static_cast<size_t>(m)].*kSeriesField[r] = v;
        }
    s.description = description_->text().toStdString();
    s.hasMeans = true;
    list_->item(shown_)->setText(QStringLiteral("%1 %2").arg(s.id).arg(description_->text()));
    edits_.change(s.id, kStation);
    return ok;
}

void dialog_weather_stations::showStation(int index) {
    message_sink errors;
    applyShown(errors);
    showErrorsIfAny(this, errors);
    shown_ = index;
    if (index < 0) return;
    const tellura_weather_station& s = stations_.stations[static_cast<size_t>(index)];
    description_->setText(QString::fromStdString(s.description));
    for (int r = 0; r < 5; ++r)
        for (int m = 0; m < 12; ++m)
            means_->setItem(r, m, new QTableWidgetItem(singleText(s.means[static_cast<size_t>(m)].*kSeriesField[r])));
    loadHistory(index);
    fillHistory();
}

// History is read the first time a station is shown: a project may hold
// decades of daily weather for every station.
void dialog_weather_stations::loadHistory(int index) {
    tellura_weather_station& s = stations_.stations[static_cast<size_t>(index)];
    if (!historyLoaded_.insert(s.id).second) return;
    message_sink errors;
    loadMonthlyHistory(history_, s, errors);
    loadDailyHistory(history_, s, errors);
    showErrorsIfAny(this, errors);
}

void dialog_weather_stations::fillHistory() {
    monthly_->setRowCount(0);
    daily_->setRowCount(0);
    if (shown_ < 0) return;
    const tellura_weather_station& s = stations_.stations[static_cast<size_t>(shown_)];
    for (const weather_monthly_year& y : s.monthly)
        for (const weather_month_record& m : y.months) {
            const int row = monthly_->rowCount();
            monthly_->insertRow(row);
            setHistoryRow(monthly_, row, {y.year, m.month}, m, kMonthlyColumns);
        }
    for (const weather_daily_year& y : s.daily)
        for (const weather_day_record& d : y.days) {
            const int row = daily_->rowCount();
            daily_->insertRow(row);
            setHistoryRow(daily_, row, {d.year, d.month, d.day}, d, kDailyColumns);
        }
}

bool dialog_weather_stations::deleteDailyRecord(int row, const std::function<bool(const QString&)>& confirm,
                                                message_sink& errors) {
    if (shown_ < 0 || row < 0) {
        errors.error("Select a daily record to delete.\n");
        return false;
    }
    tellura_weather_station& s = stations_.stations[static_cast<size_t>(shown_)];
    for (weather_daily_year& y : s.daily) {
        if (row >= static_cast<int>(y.days.size())) {
            row -= static_cast<int>(y.days.size());
            continue;
        }
        const auto day = y.days.begin() + row;
        if (!confirm(QString::fromStdString(deleteDailyRecordQuestion(s.id, *day)))) return false;
        y.days.erase(day);
        edits_.change(s.id, kDailyHistory);
        fillHistory();
        return true;
    }
    errors.error("Select a daily record to delete.\n");
    return false;
}

bool dialog_weather_stations::deleteStation(int index, message_sink& errors) {
    if (index < 0 || index >= static_cast<int>(stations_.stations.size())) {
        errors.error("Select a weather station to delete.\n");
        return false;
    }
    const int32_t id = stations_.stations[static_cast<size_t>(index)].id;
    edits_.remove(id, id);
    historyLoaded_.erase(id);
    stations_.stations.erase(stations_.stations.begin() + index);
    if (index == shown_) shown_ = -1;  // its fields go with it
    else if (index < shown_) --shown_;
    {
        QSignalBlocker block(list_);
        delete list_->takeItem(index);
    }
    showStation(list_->currentRow());
    return true;
}

bool dialog_weather_stations::askYesNo(const QString& question) {
    return QMessageBox::question(this, windowTitle(), question) == QMessageBox::Yes;
}

void dialog_weather_stations::addStation(int32_t id, const QString& description) {
    message_sink errors;
    applyShown(errors);
    tellura_weather_station s;
    s.id = id;
    s.description = description.toStdString();
    stations_.stations.push_back(s);
    edits_.change(id, kStation);
    list_->addItem(QStringLiteral("%1 %2").arg(id).arg(description));
    list_->setCurrentRow(list_->count() - 1);
}

bool dialog_weather_stations::save(database& db, message_sink& errors) {
    const auto writePart = [&](int id, int part, message_sink& e) {
        const tellura_weather_station* s = stations_.find(id);
        if (!s) return true;
        if (part == kMonthlyHistory) return saveMonthlyHistory(db, *s, e);
        if (part == kDailyHistory) return saveDailyHistory(db, *s, e);
        return saveWeatherStation(db, *s, e);
    };
    return edits_.save(
        db, [&](int32_t id, message_sink& e) { return deleteWeatherStation(db, id, e); }, writePart, errors);
}

void dialog_weather_stations::accept() {
    message_sink errors;
    if (!applyShown(errors)) {
        showErrorsIfAny(this, errors);
        return;
    }
    QDialog::accept();
}

}  // namespace sb
