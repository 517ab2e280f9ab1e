#include "chart_png.h"

#include "app/text_format.h"
#include "modeloutput/output_series.h"

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

// The series asked for; a record without rows of the table has nothing to plot.
bool collect(const sb::tellura_outputs& outputs, const chart_request& request, std::vector<sb::output_series>& series,
             sb::message_sink& errors) {
    sb::table_id table = sb::table_id::output_daily;
    sb::outputTableFromWord(request.table, table);
    if (sb::outputRows(outputs, table).empty()) {
        errors.errorf("ERROR, the record has no stored %s output to plot.\n", request.table.c_str());
        return false;
    }
    return sb::outputSeries(outputs, table, request.variables, series, errors) && !series.empty();
}

}  // namespace

bool renderOutputChart(const sb::tellura_outputs& outputs, const chart_request& request, const std::string& pngPath,
                       sb::message_sink& errors) {
    std::vector<sb::output_series> series;
    if (!collect(outputs, request, series, errors)) return false;
#ifdef SB_HAVE_CHARTS
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        errors.error("ERROR, charts need the graphical libraries, which this program was started without.\n");
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
        errors.errorf("ERROR, unable to write chart \"%s\".\n", pngPath.c_str());
        return false;
    }
    return true;
#else
    (void)pngPath;
    errors.error("ERROR, this build of soilbench has no chart support.\n");
    return false;
#endif
}

}  // namespace sbcli
