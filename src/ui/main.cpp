// soilbench-gui [PROJECT] [--screenshot FILE] [--version]
// Opens the project when one is named, with the first record's output view
// that has data (annual, else monthly, else daily) beside the record table.
// With --screenshot the main window is drawn so (an empty annual view when the
// record has no output), written to FILE as PNG, and the program ends (exit
// status 0 when the file was written).
#include <QApplication>
#include <QCommandLineParser>
#include <QEventLoop>
#include <QMdiArea>
#include <QTimer>

#include "app/app_soilbench.h"
#include "app/program_version.h"
#include "db/table_catalogue.h"
#include "run/run_folder.h"
#include "ui/dialog_errors.h"
#include "ui/main_window.h"
#include "ui/view_output.h"

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Varnak"));
    QApplication::setApplicationName(QStringLiteral("Soilbench"));
    QApplication::setApplicationDisplayName(QStringLiteral("Soilbench2"));
    QApplication::setApplicationVersion(QString::fromStdString(sb::programVersion()));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Soilbench2: workbench for the Tellura model family"));
    parser.addHelpOption();
    parser.addVersionOption();
    QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                  QStringLiteral("Write the main window to FILE as PNG and exit."),
                                  QStringLiteral("FILE"));
    parser.addOption(screenshot);
    parser.addPositionalArgument(QStringLiteral("PROJECT"), QStringLiteral("Project file to open."));
    parser.process(app);

    if (parser.isSet(screenshot)) sb::setErrorsToStandardError(true);

    sb::app_soilbench settings;
    sb::main_window window(settings);
    window.show();
    // Settings are read once the window is up, and written back at exit.
    window.loadProfile();
    // Run folders that a Soilbench killed mid-run left behind go now.
    sb::message_sink staleErrors;
    sb::run_folder::removeStale(sb::run_folder::rootFor(settings.runsFolder), staleErrors);

    const QStringList projects = parser.positionalArguments();
    if (!projects.isEmpty()) {
        if (!window.openProject(projects.first())) return 1;
        sb::view_output* outputs = window.showOutputViewWithData();
        if (!outputs && parser.isSet(screenshot))
            outputs = window.showOutputView(static_cast<int>(sb::table_id::output_annual));
        if (outputs) window.mdiArea()->tileSubWindows();
    }

    if (parser.isSet(screenshot)) {
        // Let pending layouts (the chart after tiling) settle before drawing.
        QEventLoop settle;
        QTimer::singleShot(150, &settle, &QEventLoop::quit);
        settle.exec();
        const bool written = window.grab().save(parser.value(screenshot), "PNG");
        return written ? 0 : 1;
    }

    const int status = app.exec();
    sb::message_sink errors;
    if (!window.saveProfile(errors)) fprintf(stderr, "%s", errors.text().c_str());
    return status;
}
