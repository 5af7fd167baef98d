// The sandbox host: plays the CAD host for the library. It owns the Qt application, opens a
// catalog, publishes its state to the host modules, loads the library by file name from its
// own folder and calls its exports as the host's libraries would.

#include "headless_run.h"
#include "host_state.h"
#include "main_window.h"
#include "marlouss_library.h"
#include "sample_catalog.h"
#include "sample_libraries.h"

#include <esdata/esdata.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QTextStream>

namespace {

int fail(const QString& text, int code)
{
    QTextStream(stderr) << "marlouss-sandbox: " << text << Qt::endl;
    return code;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("marlouss-sandbox"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Sandbox host of the MarloUss library"));
    parser.addHelpOption();
    const QCommandLineOption catalogOption(
        "catalog", "Catalog database to open (created with sample content on first run).", "path");
    const QCommandLineOption headlessOption(
        "headless", "Call every export with scripted answers and exit (0 when all behaved).");
    const QCommandLineOption shotsOption("shots", "Folder for pictures of the dialogs.", "folder");
    parser.addOptions({catalogOption, headlessOption, shotsOption});
    parser.process(app);

    const QString catalogPath = parser.isSet(catalogOption)
                                    ? parser.value(catalogOption)
                                    : QDir::current().filePath("sandbox-run/sample.db");
    const QString shots = QDir(parser.isSet(shotsOption) ? parser.value(shotsOption)
                                                         : QFileInfo(catalogPath).absolutePath())
                              .absolutePath();
    QDir().mkpath(shots);
    // Host folders (system, user, templates) live beside the catalog.
    const QString work = QFileInfo(catalogPath).absolutePath();
    const QString hostRoot = QDir(work).absoluteFilePath("host");
    for (const auto& [kind, name] : {std::pair{int(sandbox::folder_system), "system"},
                                     std::pair{int(sandbox::folder_user), "user"},
                                     std::pair{int(sandbox::folder_templates), "templates"}}) {
        const QString folder = hostRoot + "/" + name;
        QDir().mkpath(folder);
        sandbox::set_folder(kind, folder);
    }
    sandbox::set_theme(sandbox::theme_light);
    sandbox::writeSampleLibraries(hostRoot + "/system");

    QString error;
    es_provider_t* provider = sandbox::openSampleCatalog(catalogPath, &error);
    if (!provider)
        return fail(QStringLiteral("cannot open the catalog %1: %2").arg(catalogPath, error), 2);

    sandbox::MarloUssLibrary library;
    if (!library.load(QCoreApplication::applicationDirPath()))
        return fail(QStringLiteral("cannot load the library: %1").arg(library.error()), 2);

    sandbox::MainWindow window(library, provider, work);
    window.show();
    sandbox::set_main_window(window.winId());
    QTextStream(stdout) << "catalog " << QFileInfo(catalogPath).absoluteFilePath() << ": "
                        << sandbox::elementCount(provider) << " elements; library "
                        << library.path() << Qt::endl;

    int code = 0;
    if (parser.isSet(headlessOption)) {
        QCoreApplication::processEvents();
        code = sandbox::runHeadless(library, window, work, shots) ? 1 : 0;
        // The host window with the log of the calls just made.
        QCoreApplication::processEvents();
        window.grab().save(QDir(shots).filePath("main-window.png"));
    } else {
        sandbox::set_message_presenter([&window](const QString& text, const QString& caption, int) {
            QMessageBox::information(&window, caption, text);
            return 1;
        });
        code = app.exec();
        sandbox::set_message_presenter({});
    }
    sandbox::set_main_window(0);
    esx_CloseCatalog(provider);
    return code;
}
