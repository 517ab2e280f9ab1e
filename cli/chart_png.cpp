#include "chart_png.h"

#include "app/text_format.h"

#ifdef SB_HAVE_CHARTS
#include <QApplication>
#include <QChart>
#include <QChartView>
#include <QLineSeries>
#include <QPixmap>
#include <QValueAxis>
#endif

namespace sbcli {
namespace {

struct point_series {
    std::string name;
    std::vector<std::pair<double, double>> points;  // (time in years, value)
};

// Time of a record in fractional years: mid-month and mid-day, so points sit in their period.
bool collect(const sb::tellura_outputs& outputs, const chart_request& request, std::vector<point_series>& series,
             std::string& errors) {
    std::vector<std::pair<double, const sb::table_record*>> rows;
    if (request.table == "annual") {
        for (const auto& r : outputs.annual) rows.emplace_back(r.year(), &r);
    } else if (request.table == "monthly") {
        for (const auto* r : outputs.monthlyInOrder()) rows.emplace_back(r->year() + (r->month() - 0.5) / 12.0, r);
    } else {
        for (const auto& r : outputs.daily) rows.emplace_back(r.year() + (r.julianDay() - 0.5) / 365.0, &r);
    }
    if (rows.empty()) {
        sb::appendf(errors, "ERROR, the record has no stored %s output to plot.\n", request.table.c_str());
        return false;
    }
    bool ok = true;
    for (const auto& name : request.variables) {
        int column = rows.front().second->column(name);
        if (column < 0 || column < 3) {
            sb::appendf(errors, "ERROR, \"%s\" is not a variable of the %s output.\n", name.c_str(),
                        request.table.c_str());
            ok = false;
            continue;
        }
        point_series s{rows.front().second->def().fields()[static_cast<size_t>(column)].name, {}};
        for (const auto& [time, row] : rows) s.points.emplace_back(time, row->number(column));
        series.push_back(std::move(s));
    }
    return ok && !series.empty();
}

}  // namespace

bool renderOutputChart(const sb::tellura_outputs& outputs, const chart_request& request, const std::string& pngPath,
                       std::string& errors) {
    std::vector<point_series> series;
    if (!collect(outputs, request, series, errors)) return false;
#ifdef SB_HAVE_CHARTS
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        errors += "ERROR, charts need the graphical libraries, which this program was started without.\n";
        return false;
    }
    auto* chart = new QChart;
    chart->setTitle(QString::fromStdString(request.title));
    for (const auto& s : series) {
        auto* line = new QLineSeries;
        line->setName(QString::fromStdString(s.name));
        for (const auto& [x, y] : s.points) line->append(x, y);
        chart->addSeries(line);
    }
    chart->createDefaultAxes();
    if (auto axes = chart->axes(Qt::Horizontal); !axes.isEmpty()) {
        auto* x = static_cast<QValueAxis*>(axes.first());
        x->setLabelFormat("%.0f");
        x->setTitleText("Year");
    }
    chart->legend()->setAlignment(Qt::AlignBottom);
    QChartView view(chart);
    view.setRenderHint(QPainter::Antialiasing);
    view.resize(request.width, request.height);
    QPixmap pixmap = view.grab();
    if (!pixmap.save(QString::fromStdString(pngPath), "PNG")) {
        sb::appendf(errors, "ERROR, unable to write chart \"%s\".\n", pngPath.c_str());
        return false;
    }
    return true;
#else
    (void)pngPath;
    errors += "ERROR, this build of soilbench has no chart support.\n";
    return false;
#endif
}

}  // namespace sbcli
