#include "ui/dialog_weather_stations.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "app/text_format.h"
#include "records/tellura_weather_station.h"
#include "ui/dialog_errors.h"

namespace sb {
namespace {

// The five series in the order the station's text form lists them.
const char* const kSeries[] = {"Precipitation", "Precipitation STD", "Precipitation Skew", "Temperature Min",
                               "Temperature Max"};
float weather_month_means::* const kSeriesField[] = {&weather_month_means::precip, &weather_month_means::prcstd,
                                                     &weather_month_means::prcskw, &weather_month_means::tmn2m,
                                                     &weather_month_means::tmx2m};

}  // namespace

dialog_weather_stations::dialog_weather_stations(tellura_weather_station_list& stations, QWidget* parent)
    : QDialog(parent), stations_(stations) {
    setObjectName(QStringLiteral("dialog_weather_stations"));
    setWindowTitle(QStringLiteral("Weather Stations"));
    list_ = new QListWidget(this);
    for (const auto& s : stations_.stations)
        list_->addItem(QStringLiteral("%1 %2").arg(s.id).arg(QString::fromStdString(s.description)));
    auto* add = new QPushButton(QStringLiteral("Add"), this);
    add->setAutoDefault(false);
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
    right->addWidget(means_, 1);
    auto* left = new QVBoxLayout;
    left->addWidget(list_, 1);
    left->addWidget(add);
    auto* body = new QHBoxLayout;
    body->addLayout(left, 1);
    body->addLayout(right, 4);
    auto* box = new QDialogButtonBox(this);
    box->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    box->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(body, 1);
    layout->addWidget(box);
    resize(1100, 420);

    connect(box, &QDialogButtonBox::accepted, this, &dialog_weather_stations::accept);
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(list_, &QListWidget::currentRowChanged, this, &dialog_weather_stations::showStation);
    connect(add, &QPushButton::clicked, this, [this] {
        bool ok = false;
        const int id = QInputDialog::getInt(this, QStringLiteral("Add"), QStringLiteral("Weather ID:"), 1, 0,
                                            std::numeric_limits<int32_t>::max(), 1, &ok);
        if (ok) addStation(id, QString());
    });
    list_->setCurrentRow(stations_.stations.empty() ? -1 : 0);
}

bool dialog_weather_stations::applyShown(std::string& errors) {
    if (shown_ < 0) return true;
    TelluraWeatherStations& s = stations_.stations[static_cast<size_t>(shown_)];
    bool ok = true;
    for (int r = 0; r < 5; ++r)
        for (int m = 0; m < 12; ++m) {
            bool number = false;
            const float v = means_->item(r, m)->text().trimmed().toFloat(&number);
            if (!number) {
                appendf(errors, "ERROR, %s of month %d is not a number.\n", kSeries[r], m + 1);
                ok = false;
                continue;
            }
            s.means[static_cast<size_t>(m)].*kSeriesField[r] = v;
        }
    s.description = description_->text().toStdString();
    s.hasMeans = true;
    list_->item(shown_)->setText(QStringLiteral("%1 %2").arg(s.id).arg(description_->text()));
    changed_.insert(s.id);
    return ok;
}

void dialog_weather_stations::showStation(int index) {
    std::string errors;
    applyShown(errors);
    showErrorsIfAny(this, errors);
    shown_ = index;
    if (index < 0) return;
    const TelluraWeatherStations& s = stations_.stations[static_cast<size_t>(index)];
    description_->setText(QString::fromStdString(s.description));
    for (int r = 0; r < 5; ++r)
        for (int m = 0; m < 12; ++m)
            means_->setItem(r, m, new QTableWidgetItem(QString::number(s.means[static_cast<size_t>(m)].*kSeriesField[r], 'g', 7)));
}

void dialog_weather_stations::addStation(int32_t id, const QString& description) {
    std::string errors;
    applyShown(errors);
    TelluraWeatherStations s;
    s.id = id;
    s.description = description.toStdString();
    stations_.stations.push_back(s);
    changed_.insert(id);
    list_->addItem(QStringLiteral("%1 %2").arg(id).arg(description));
    list_->setCurrentRow(list_->count() - 1);
}

bool dialog_weather_stations::save(database& db, std::string& errors) {
    bool ok = true;
    for (int32_t id : changed_)
        if (const auto* s = stations_.find(id)) ok = saveWeatherStation(db, *s, errors) && ok;
    return ok;
}

void dialog_weather_stations::accept() {
    std::string errors;
    if (!applyShown(errors)) {
        showErrorsIfAny(this, errors);
        return;
    }
    QDialog::accept();
}

}  // namespace sb
