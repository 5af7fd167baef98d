// The import decisions dialog on an archive of N elements (10,000 by default) of which half
// conflict with the catalog and half are new. Times, as medians of several runs:
//   - from the chosen file to the dialog shown (archive read and checked, decisions, library
//     grouping, dialog built, shown and painted), through the import flow itself;
//   - checking showConf (the tree narrowed to the conflicts and painted again);
//   - the action that sets every conflict to "Заменить на импортируемый" (and painted);
// against the whole process `ussctl import --dry-run` of the same catalog and archive, which
// reads, checks and decides the same archive and prints the decisions. Prints the ratios.

#include "exportuss.h"
#include "import_environment.h"
#include "import_uss_dialog.h"

#include "catalog/catalog_tree.h"
#include "catalog/esconvert.h"
#include "synthetic_catalog.h"

#include <esdata/esdata.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPointer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <vector>

namespace {

QTextStream out(stdout);

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0.0 : values[values.size() / 2];
}

// Every element of the catalog, in the catalog's order.
std::vector<es_stdsize_t*> allElements(es_provider_t* provider)
{
    return exchange::collectElements(provider);
}

// The target: the source's copy with every second element changed at another moment
// (conflicts) and the others deleted (new rows).
bool prepareTarget(es_provider_t* target)
{
    const std::vector<es_stdsize_t*> elements = allElements(target);
    const std::u16string stamp = edw::toEs(QStringLiteral("USS_LAST_CHANGE_DATE"));
    for (size_t i = 0; i < elements.size(); ++i) {
        es_stdsize_t* element = elements[i];
        es_table_t* table = stdsize_GetTable(element);
        if (i % 2 == 0) {
            es_attribute_t* attribute = table_FindAttribute(table, stamp.c_str());
            if (!attribute || !stdsize_SetValueS(element, attribute, u"01.01.2001 00:00:00"))
                return false;
        } else if (!table_DeleteStdSize(table, element)) {
            return false;
        }
    }
    return true;
}

struct DialogTimes
{
    double shown = 0, showConf = 0, applyAll = 0;
    int rows = 0;
};

// One run of the import flow up to the decisions dialog, which is then measured and cancelled.
DialogTimes timeDialog(es_provider_t* target, const QString& archive)
{
    DialogTimes times;
    QElapsedTimer clock;
    exchange::ImportEnvironment environment = exchange::defaultImportEnvironment();
    environment.openFile = [&](QWidget*, const QString&, const QString&, const QString&) {
        clock.start(); // the user has chosen the file
        return archive;
    };
    environment.hostVersion = [] { return QStringLiteral("23.1"); };
    environment.message = [](QWidget*, QMessageBox::Icon, const QString& text) {
        out << "unexpected message: " << text << Qt::endl;
    };

    struct Watch : QObject
    {
        std::function<void(QWidget*)> shown;
        bool eventFilter(QObject* o, QEvent* e) override
        {
            if (e->type() == QEvent::Show && o->objectName() == QLatin1String("ImportUssDialog"))
                shown(static_cast<QWidget*>(o));
            return false;
        }
    } watch;
    watch.shown = [&](QWidget* widget) {
        QPointer<QWidget> dialog = widget;
        QTimer::singleShot(0, [&, dialog] {
            if (!dialog) return;
            dialog->repaint(); // painted as the user first sees it
            times.shown = double(clock.nsecsElapsed()) / 1e6;
            auto* decisions = static_cast<exchange::ImportUssDialog*>(dialog.data());
            times.rows = decisions->decisions()->rowTotal();

            auto* showConf = dialog->findChild<QCheckBox*>(QStringLiteral("showConf"));
            clock.start();
            showConf->setChecked(true);
            dialog->repaint();
            times.showConf = double(clock.nsecsElapsed()) / 1e6;
            showConf->setChecked(false);
            dialog->repaint();

            auto* replaceAll =
                dialog->findChild<QAction*>(QStringLiteral("replaceAllImportedAction"));
            clock.start();
            replaceAll->trigger();
            dialog->repaint();
            times.applyAll = double(clock.nsecsElapsed()) / 1e6;
            static_cast<QDialog*>(dialog.data())->reject();
        });
    };
    qApp->installEventFilter(&watch);
    exchange::runUssImport(target, nullptr, environment);
    qApp->removeEventFilter(&watch);
    return times;
}

double timeDryRun(const QString& ussctl, const QString& catalog, const QString& archive, int* lines)
{
    QProcess process;
    QElapsedTimer clock;
    clock.start();
    process.start(ussctl, {"import", "--dry-run", catalog, archive});
    process.waitForFinished(-1);
    const double ms = double(clock.nsecsElapsed()) / 1e6;
    if (process.exitCode() != 0)
        out << "ussctl failed: " << QString::fromLocal8Bit(process.readAllStandardError())
            << Qt::endl;
    *lines = int(process.readAllStandardOutput().count('\n'));
    return ms;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    int elements = 10000;
    int runs = 3;
    const QStringList args = app.arguments();
    for (int i = 1; i + 1 < args.size(); i += 2) {
        if (args[i] == "--elements") elements = args[i + 1].toInt();
        if (args[i] == "--runs") runs = std::max(1, args[i + 1].toInt());
    }
    const QString ussctl = QCoreApplication::applicationDirPath() + "/ussctl";
    if (!QFile::exists(ussctl)) {
        out << "ussctl not found beside the bench: " << ussctl << Qt::endl;
        return 2;
    }

    QTemporaryDir work;
    const QString sourcePath = work.filePath("source.db");
    const QString targetPath = work.filePath("target.db");
    const QString archive = work.filePath("colleague.uss");
    out << "generating " << elements << " elements..." << Qt::endl;
    gen::Options options;
    options.catalogPath = sourcePath;
    options.elements = elements;
    options.distinctFiles = 20;
    options.fileSize = 2048;
    const gen::Result generated = gen::generateCatalog(options);
    if (!generated.ok) {
        out << "cannot generate: " << generated.error << Qt::endl;
        return 2;
    }
    {
        es_provider_t* source = esx_OpenCatalog(edw::toEs(sourcePath).c_str(), u"user_tx", false);
        const bool exported = source && ExportUss::Export(archive, allElements(source), false);
        if (source) esx_CloseCatalog(source);
        if (!exported || !QFile::copy(sourcePath, targetPath)) {
            out << "cannot export the source catalog" << Qt::endl;
            return 2;
        }
    }
    es_provider_t* target = esx_OpenCatalog(edw::toEs(targetPath).c_str(), u"user_tx", false);
    if (!target || !prepareTarget(target)) {
        out << "cannot prepare the target catalog" << Qt::endl;
        return 2;
    }

    std::vector<double> dry, shown, showConf, applyAll;
    int lines = 0, rows = 0;
    for (int run = 0; run < runs; ++run) {
        dry.push_back(timeDryRun(ussctl, targetPath, archive, &lines));
        const DialogTimes times = timeDialog(target, archive);
        shown.push_back(times.shown);
        showConf.push_back(times.showConf);
        applyAll.push_back(times.applyAll);
        rows = times.rows;
    }
    esx_CloseCatalog(target);

    const double base = median(dry);
    out << QStringLiteral("archive of %1 elements, %2 rows in the dialog, %3 lines of dry run")
               .arg(elements)
               .arg(rows)
               .arg(lines)
        << Qt::endl;
    out << QStringLiteral("ussctl import --dry-run      %1 ms (median of %2)")
               .arg(base, 0, 'f', 1)
               .arg(runs)
        << Qt::endl;
    auto line = [&](const char* what, double ms, double aim) {
        const double ratio = base > 0 ? ms / base : 0;
        out << QStringLiteral("%1 %2 ms  %3x dry run (aim %4x) %5")
                   .arg(QString::fromLatin1(what), -28)
                   .arg(ms, 0, 'f', 1)
                   .arg(ratio, 0, 'f', 3)
                   .arg(aim)
                   .arg(ratio <= aim ? "ok" : "OVER")
            << Qt::endl;
    };
    line("chosen file to dialog shown", median(shown), 1.5);
    line("showConf checked", median(showConf), 0.1);
    line("every conflict replaced", median(applyAll), 0.1);
    return 0;
}
