// A small host for the dialog exports: loads the library by file name from its own folder,
// publishes its window as the host's main window, calls each dialog export once (or only the
// exports named on the command line, in that order) and closes whatever dialog comes up.
// "--theme N" sets the host's theme first. Prints one line per export:
// "<export> <result> shown=<0|1>", then "<export>.dark <0|1>" (the shown dialog's title bar is
// dark) and, for the choosers, "<export>.texts <name label>|<accept>|<reject>"; last
// "language_changes <n>": how often the application was told its translators changed.

#include "host_state.h"
#include "marlouss/marlouss.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLibrary>
#include <QPointer>
#include <QTextStream>
#include <QTimer>
#include <QWidget>

namespace {

int g_shown = 0;
QString g_dark;
QString g_texts;

// What the user sees of a dialog: is its title bar dark, and the texts of a file chooser.
void look(QWidget* dialog)
{
    if (auto* titleBar = dialog->findChild<QWidget*>("aec_styled_titlebar")) {
        const QImage image = titleBar->grab().toImage();
        g_dark = image.pixelColor(4, 4).lightness() < 128 ? "1" : "0";
    }
    auto* label = dialog->findChild<QLabel*>("fileNameLabel");
    auto* box = dialog->findChild<QDialogButtonBox*>("buttonBox");
    if (!label || !box) return;
    QStringList texts{label->text()};
    for (QDialogButtonBox::ButtonRole role :
         {QDialogButtonBox::AcceptRole, QDialogButtonBox::RejectRole}) {
        for (QAbstractButton* button : box->buttons()) {
            if (box->buttonRole(button) == role) texts << button->text().remove('&');
        }
    }
    g_texts = texts.join('|');
}

// Closes every modal dialog that comes up and counts it.
void watchDialogs(QTimer& timer)
{
    QObject::connect(&timer, &QTimer::timeout, [] {
        static QPointer<QWidget> last;
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || !modal->isVisible() || modal == last) return;
        last = modal;
        ++g_shown;
        look(modal);
        modal->close();
    });
    timer.start(20);
}

void report(const char* name, const QString& result)
{
    QTextStream out(stdout);
    out << name << ' ' << result << " shown=" << g_shown << Qt::endl;
    if (!g_dark.isEmpty()) out << name << ".dark " << g_dark << Qt::endl;
    if (!g_texts.isEmpty()) out << name << ".texts " << g_texts << Qt::endl;
    g_shown = 0;
    g_dark.clear();
    g_texts.clear();
}

// Counts the language changes the application is told of (a translator installed).
struct LanguageChanges : QObject
{
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == qApp && event->type() == QEvent::LanguageChange) ++count;
        return false;
    }
    int count = 0;
};

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
    auto updateNotice = reinterpret_cast<decltype(&uss_show_update_dialog)>(
        library.resolve("uss_show_update_dialog"));
    auto medium =
        reinterpret_cast<decltype(&engsys_medium_dialog)>(library.resolve("engsys_medium_dialog"));
    auto editor = reinterpret_cast<decltype(&uss_create_clone_edit)>(
        library.resolve("uss_create_clone_edit"));
    if (!selectPart || !saveCdw || !chooseDirectory || !fileSaving || !updateNotice || !medium ||
        !editor)
        return 3;

    QStringList wanted = QCoreApplication::arguments().mid(1);
    const qsizetype theme = wanted.indexOf("--theme");
    if (theme >= 0 && theme + 1 < wanted.size()) {
        sandbox::set_theme(wanted.at(theme + 1).toInt());
        wanted.remove(theme, 2);
    }

    LanguageChanges changes;
    app.installEventFilter(&changes);
    QTimer timer;
    watchDialogs(timer);

    // In the order asked for; every export when none is named.
    const QStringList order =
        wanted.isEmpty() ? QStringList{"engsys_select_part_dialog", "OPEN_SAVE_CDW_DIALOG",
                                       "OPEN_CHOSE_DIRECTORY_DIALOG", "OPEN_FILE_SAVING_DIALOG",
                                       "uss_show_update_dialog", "engsys_medium_dialog",
                                       "uss_create_clone_edit"}
                         : wanted;
    for (const QString& name : order) {
        if (name == "engsys_select_part_dialog") {
            const char* result = "untouched";
            const bool accepted = selectPart(
                window.winId(), R"({"version":1,"curPart":"","parts":["А","Б"]})", &result);
            report("engsys_select_part_dialog", QString::number(accepted) + " " + result);
        } else if (name == "OPEN_SAVE_CDW_DIALOG") {
            wchar_t drawing[] = L"D:\\work\\plan.cdw";
            report("OPEN_SAVE_CDW_DIALOG", QString::number(saveCdw(drawing)));
        } else if (name == "OPEN_CHOSE_DIRECTORY_DIALOG") {
            const wchar_t* folder = chooseDirectory();
            report("OPEN_CHOSE_DIRECTORY_DIALOG",
                   folder ? "\"" + QString::fromWCharArray(folder) + "\"" : QStringLiteral("null"));
        } else if (name == "OPEN_FILE_SAVING_DIALOG") {
            wchar_t file[] = L"/tmp/plan.cdw";
            const wchar_t* chosen = fileSaving(file, 0, 0, 0);
            report("OPEN_FILE_SAVING_DIALOG",
                   chosen ? "\"" + QString::fromWCharArray(chosen) + "\"" : QStringLiteral("null"));
        } else if (name == "uss_show_update_dialog") {
            bool popup = false;
            report("uss_show_update_dialog",
                   QString::number(updateNotice(window.winId(), L"Обновление", L"Найдено 2", &popup)));
        } else if (name == "engsys_medium_dialog") {
            const char* record = "untouched";
            const bool applied = medium(window.winId(), true, false,
                                        R"({"version":1,"sysName":"Т1","prefix":"Т"})", &record);
            report("engsys_medium_dialog", QString::number(applied) + " " + record);
        } else if (name == "uss_create_clone_edit") {
            // A new element with nothing to offer: closing the editor writes nothing.
            marlouss_edit_request_t request{};
            request.size = sizeof(request);
            request.parent = window.winId();
            report("uss_create_clone_edit", QString::number(editor(&request)));
        }
    }
    QTextStream(stdout) << "language_changes " << changes.count << Qt::endl;
    return 0;
}
