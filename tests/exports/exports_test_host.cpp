// A small host for the dialog exports: loads the library by file name from its own folder,
// publishes its window as the host's main window, calls each dialog export once and closes
// whatever dialog comes up. Prints one line per export: "<export> <result> shown=<0|1>".

#include "host_state.h"
#include "marlouss/marlouss.h"

#include <QApplication>
#include <QLibrary>
#include <QPointer>
#include <QTextStream>
#include <QTimer>
#include <QWidget>

namespace {

int g_shown = 0;

// Closes every modal dialog that comes up and counts it.
void watchDialogs(QTimer& timer)
{
    QObject::connect(&timer, &QTimer::timeout, [] {
        static QPointer<QWidget> last;
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || !modal->isVisible() || modal == last) return;
        last = modal;
        ++g_shown;
        modal->close();
    });
    timer.start(20);
}

void report(const char* name, const QString& result)
{
    QTextStream(stdout) << name << ' ' << result << " shown=" << g_shown << Qt::endl;
    g_shown = 0;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QWidget window;
    window.setWindowTitle("host");
    window.resize(400, 300);
    window.show();
    sandbox::set_main_window(window.winId());

    QLibrary library(QCoreApplication::applicationDirPath() + "/libMarloUss.so");
    if (!library.load()) {
        QTextStream(stderr) << library.errorString() << Qt::endl;
        return 2;
    }
    auto selectPart = reinterpret_cast<decltype(&engsys_select_part_dialog)>(
        library.resolve("engsys_select_part_dialog"));
    auto saveCdw =
        reinterpret_cast<decltype(&OPEN_SAVE_CDW_DIALOG)>(library.resolve("OPEN_SAVE_CDW_DIALOG"));
    auto chooseDirectory = reinterpret_cast<decltype(&OPEN_CHOSE_DIRECTORY_DIALOG)>(
        library.resolve("OPEN_CHOSE_DIRECTORY_DIALOG"));
    auto fileSaving = reinterpret_cast<decltype(&OPEN_FILE_SAVING_DIALOG)>(
        library.resolve("OPEN_FILE_SAVING_DIALOG"));
    if (!selectPart || !saveCdw || !chooseDirectory || !fileSaving) return 3;

    QTimer timer;
    watchDialogs(timer);

    const char* result = "untouched";
    const bool accepted =
        selectPart(window.winId(), R"({"version":1,"curPart":"","parts":["А","Б"]})", &result);
    report("engsys_select_part_dialog", QString::number(accepted) + " " + result);

    wchar_t drawing[] = L"D:\\work\\plan.cdw";
    report("OPEN_SAVE_CDW_DIALOG", QString::number(saveCdw(drawing)));

    const wchar_t* folder = chooseDirectory();
    report("OPEN_CHOSE_DIRECTORY_DIALOG",
           folder ? "\"" + QString::fromWCharArray(folder) + "\"" : QStringLiteral("null"));

    wchar_t file[] = L"/tmp/plan.cdw";
    const wchar_t* chosen = fileSaving(file, 0, 0, 0);
    report("OPEN_FILE_SAVING_DIALOG",
           chosen ? "\"" + QString::fromWCharArray(chosen) + "\"" : QStringLiteral("null"));

    auto updateNotice = reinterpret_cast<decltype(&uss_show_update_dialog)>(
        library.resolve("uss_show_update_dialog"));
    auto medium =
        reinterpret_cast<decltype(&engsys_medium_dialog)>(library.resolve("engsys_medium_dialog"));
    if (!updateNotice || !medium) return 3;
    bool popup = false;
    report("uss_show_update_dialog",
           QString::number(updateNotice(window.winId(), L"Обновление", L"Найдено 2", &popup)));
    const char* record = "untouched";
    const bool applied = medium(window.winId(), true, false,
                                R"({"version":1,"sysName":"Т1","prefix":"Т"})", &record);
    report("engsys_medium_dialog", QString::number(applied) + " " + record);
    return 0;
}
