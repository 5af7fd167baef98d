// ussctl: headless use of the catalog store and the exchange core.
#include "commands.h"
#include "common.h"

#include <QCoreApplication>

#include <csignal>
#include <exception>
#include <functional>

namespace {

struct Command
{
    const char* name;
    const char* summary;
    std::function<int(const QStringList&)> run;
};

const QList<Command>& commands()
{
    static const QList<Command> table = {
        {"create", "create an empty catalog of a kind (vo, tx, vk, ov)", ussctl::runCreate},
        {"list", "list packets, folders and elements of a catalog", ussctl::runList},
        {"export", "export elements of a catalog into an exchange archive", ussctl::runExport},
        {"import", "import an exchange archive into a catalog", ussctl::runImport},
        {"verify", "check an exchange archive without a catalog", ussctl::runVerify},
#ifdef USSCTL_WITH_GENERATOR
        {"generate", "fill a new catalog with synthetic elements", ussctl::runGenerate},
#endif
    };
    return table;
}

// Lines of the debug log go to standard error marked as such, apart from the command's own
// messages.
void logLine(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    const char* level = type == QtDebugMsg || type == QtInfoMsg ? "debug" : "warning";
    ussctl::err(QString("ussctl: %1: %2\n").arg(QLatin1String(level), message));
}

QString usage()
{
    QString text = "Usage: ussctl <command> [options] [arguments]\n\nCommands:\n";
    for (const Command& command : commands())
        text += QString("  %1  %2\n").arg(QString(command.name), -9).arg(command.summary);
    text += "\n'ussctl <command> --help' describes a command; 'ussctl --version' tells the "
            "version.\n"
            "Exit codes: 0 success, 1 the operation failed or its input was rejected,\n"
            "2 bad options or arguments, 3 an input file is missing or cannot be opened.\n";
    return text;
}

} // namespace

int main(int argc, char* argv[])
{
#ifdef SIGXFSZ
    // A file-size limit then fails the write with an error that is reported, instead of
    // ending the process without a word.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName("ussctl");
    QCoreApplication::setApplicationVersion(USSCTL_VERSION);
    qInstallMessageHandler(logLine);
    QStringList args = QCoreApplication::arguments().mid(1);
    if (args.isEmpty()) {
        ussctl::err(usage());
        return ussctl::ExitUsage;
    }
    const QString name = args.takeFirst();
    if (name == "--help" || name == "-h" || name == "help") {
        ussctl::out(usage());
        return ussctl::ExitOk;
    }
    if (name == "--version") {
        ussctl::out(QString("ussctl %1\n").arg(USSCTL_VERSION));
        return ussctl::ExitOk;
    }
    for (const Command& command : commands()) {
        if (name != command.name) continue;
        try {
            return command.run(args);
        } catch (const ussctl::CommandError& e) {
            if (e.code() == ussctl::ExitOk) {
                ussctl::out(e.message());
            } else if (!ussctl::alreadyPrinted(e.message())) {
                const QString text = ussctl::forTerminal(e.message());
                ussctl::err(text.startsWith("ussctl") ? text + "\n"
                                                      : "ussctl " + name + ": " + text + "\n");
            }
            return e.code();
        } catch (const std::exception& e) {
            ussctl::err(QString("ussctl %1: %2\n").arg(name, QString::fromUtf8(e.what())));
            return ussctl::ExitFailed;
        }
    }
    ussctl::err(QString("ussctl: unknown command '%1'\n\n").arg(name) + usage());
    return ussctl::ExitUsage;
}
