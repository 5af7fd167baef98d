#include "headless_import.h"

#include "headless_compare.h"

#include "host_state.h"
#include "main_window.h"
#include "marlouss_library.h"
#include "modal_script.h"
#include "sample_catalog.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QLibrary>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPointer>
#include <QProcess>
#include <QTextStream>
#include <QTimer>
#include <QTreeView>

#include <string>

namespace sandbox {
namespace {

using Answer = ModalScript::Answer;

std::u16string es(const QString& text)
{
    return text.toStdU16String();
}

QString text(const char16_t* value)
{
    return value ? QString::fromStdU16String(value) : QString();
}

es_packet_t* packetNamed(es_provider_t* provider, const QString& name)
{
    for (uint32_t i = 0; i < provider_GetPacketCount(provider); ++i) {
        es_packet_t* packet = provider_GetPacket(provider, i);
        if (text(packet_GetName(packet)) == name) return packet;
    }
    return nullptr;
}

es_stdsize_t* find(es_provider_t* provider, const QString& packet, const QString& id)
{
    es_packet_t* p = packetNamed(provider, packet);
    return p ? packet_FindStdSize(p, es(id).c_str()) : nullptr;
}

QString valueOf(es_stdsize_t* element, const QString& name)
{
    if (!element) return {};
    es_value value{};
    stdsize_GetValueByName(element, es(name).c_str(), &value);
    return value.kind == ES_VALUE_TEXT ? text(value.s) : QString();
}

bool setText(es_stdsize_t* element, const QString& name, const QString& value)
{
    es_attribute_t* attribute = table_FindAttribute(stdsize_GetTable(element), es(name).c_str());
    return attribute && stdsize_SetValueS(element, attribute, es(value).c_str());
}

const QString pipes = QStringLiteral("ПЭ_Трубы");
const QString bends = QStringLiteral("ПЭ_Отводы");
const QString valves = QStringLiteral("ПЭ_Задвижки");

// The source: the sample catalog with one element re-made by a later host version and a run
// of further pipes, so that the writing lasts long enough to be paused.
bool prepareSource(es_provider_t* source)
{
    es_stdsize_t* later = find(source, pipes, "PE100-SDR17-110");
    if (!later) return false;
    es_model_t* model = stdsize_GetModel(later);
    if (!model_SetModelEx(model, model_GetModelFile(model), u"", model_GetModelName(model),
                          host_document_version + 9))
        return false;
    setText(later, "USS_LAST_CHANGE_DATE", "20.11.2026 17:05:00");
    es_stdsize_t* model32 = find(source, pipes, "PE100-SDR11-32");
    es_folder_t* folder = folder_GetParentFolder(table_GetFolder(stdsize_GetTable(model32)));
    for (int i = 1; i <= 40; ++i) {
        const QString id = QStringLiteral("PE100-EXTRA-%1").arg(i, 2, 10, QLatin1Char('0'));
        es_folder_t* own = folder_AddChildFolder(folder, es("folder " + id).c_str());
        es_stdsize_t* element = table_AddStdSize(folder_GetTable(own), es(id).c_str());
        if (!element) return false;
        stdsize_SetType(element, u"uss");
        es_table_t* table = folder_GetTable(own);
        es_attribute_t* name = table_AddAttribute(table, u"Name", u"Наименование", ES_ATTR_TEXT);
        es_attribute_t* author = table_AddAttribute(table, u"USS_AUTHOR", u"Автор", ES_ATTR_TEXT);
        es_attribute_t* date =
            table_AddAttribute(table, u"USS_LAST_CHANGE_DATE", u"Дата изменения", ES_ATTR_TEXT);
        stdsize_SetValueS(element, name, es("Труба ПЭ100 " + id).c_str());
        stdsize_SetValueS(element, author, u"sandbox\\colleague");
        stdsize_SetValueS(element, date,
                          es(QStringLiteral("1%1.11.2026 08:00:00").arg(i % 10)).c_str());
    }
    // Two elements changed by a colleague since the target's copy was taken.
    for (const auto& [packet, id] : {std::pair{pipes, "PE100-SDR11-63"}, {bends, "OTV-90-63"}}) {
        es_stdsize_t* element = find(source, packet, id);
        if (!element || !setText(element, "USS_AUTHOR", "sandbox\\colleague") ||
            !setText(element, "USS_LAST_CHANGE_DATE", "21.11.2026 12:00:00"))
            return false;
    }
    return true;
}

// The target: the sample catalog without two elements (new rows) and without the later one.
bool prepareTarget(es_provider_t* target)
{
    for (const auto& [packet, id] :
         {std::pair{bends, "OTV-45-110"}, {valves, "ZDV-50"}, {pipes, "PE100-SDR17-110"}}) {
        es_stdsize_t* element = find(target, packet, id);
        if (!element || !table_DeleteStdSize(stdsize_GetTable(element), element)) return false;
    }
    return true;
}

void sendClick(QWidget* viewport, const QPoint& at)
{
    QMouseEvent press(QEvent::MouseButtonPress, at, viewport->mapToGlobal(at), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QMouseEvent release(QEvent::MouseButtonRelease, at, viewport->mapToGlobal(at), Qt::LeftButton,
                        Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &press);
    QApplication::sendEvent(viewport, &release);
}

// Clicks the cell of the row showing id, in column, as the user would.
bool clickRow(QWidget* dialog, const QString& id, int column)
{
    auto* tree = dialog->findChild<QTreeView*>(QStringLiteral("treeWidget"));
    if (!tree) return false;
    QAbstractItemModel* model = tree->model();
    for (int g = 0; g < model->rowCount(); ++g) {
        const QModelIndex group = model->index(g, 0);
        for (int r = 0; r < model->rowCount(group); ++r) {
            if (model->index(r, 0, group).data().toString() != id) continue;
            const QModelIndex cell = model->index(r, column, group);
            tree->scrollTo(cell);
            sendClick(tree->viewport(), tree->visualRect(cell).center());
            return true;
        }
    }
    return false;
}

QStringList labelTexts(QWidget* dialog)
{
    QStringList texts;
    for (const QLabel* label : dialog->findChildren<QLabel*>())
        if (!label->text().isEmpty()) texts << label->text();
    return texts;
}

// Presses Escape on the progress window as soon as it shows, after taking its picture: the
// worker is then held by the pause until the question is answered.
class PauseOnShow : public QObject
{
public:
    PauseOnShow(const QString& shot) : m_shot(shot) { qApp->installEventFilter(this); }
    ~PauseOnShow() override { qApp->removeEventFilter(this); }
    bool pressed() const { return m_pressed; }
    QString picture() const { return m_picture; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show && !m_pressed &&
            watched->objectName() == QLatin1String("ImportProgressDialog")) {
            m_pressed = true;
            QPointer<QWidget> dialog = static_cast<QWidget*>(watched);
            QTimer::singleShot(0, this, [this, dialog] {
                if (!dialog) return;
                if (dialog->grab().save(m_shot)) m_picture = m_shot;
                QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
                QApplication::sendEvent(dialog, &escape);
            });
        }
        return false;
    }

private:
    QString m_shot;
    QString m_picture;
    bool m_pressed = false;
};

class ImportRuns
{
public:
    ImportRuns(MarloUssLibrary& library, MainWindow& window, ModalScript& script,
               const QString& shots)
        : m_library(library), m_window(window), m_script(script), m_shots(shots)
    {}

    Answer pick(const QString& path)
    {
        return [this, path](QWidget* dialog) {
            auto* chooser = qobject_cast<QFileDialog*>(dialog);
            if (!chooser) {
                m_problems << QStringLiteral("expected the file chooser");
                dialog->close();
                return;
            }
            if (chooser->windowTitle() != QStringLiteral("Импорт пользовательских элементов"))
                m_problems << QStringLiteral("chooser titled \"%1\"").arg(chooser->windowTitle());
            chooser->setDirectory(QFileInfo(path).absolutePath());
            if (auto* name = chooser->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")))
                name->setText(path);
            QMetaObject::invokeMethod(chooser, "accept", Qt::QueuedConnection);
        };
    }

    // A message box whose text must be text; pressed OK.
    Answer told(const QString& expected)
    {
        return [this, expected](QWidget* box) {
            const QStringList texts = labelTexts(box);
            if (!texts.contains(expected))
                m_problems << QStringLiteral("expected \"%1\", saw \"%2\"")
                                  .arg(expected, texts.join(" | "));
            m_told << texts.join(" ");
            if (auto* ok = box->findChild<QAbstractButton*>(QStringLiteral("okButton")))
                ok->click();
        };
    }

    Answer act(std::function<void(QWidget*)> action) { return action; }
    void problem(const QString& text) { m_problems << text; }

    // optional: answers at the end of the script that may be left (a window that was gone
    // before the script looked).
    bool run(const QString& title, es_provider_t* target, bool writes, int theme, int optional = 0)
    {
        set_theme(theme);
        const CallResult result = callImport(m_library, m_window.winId(), target);
        set_theme(theme_light);
        QStringList problems = m_script.takeProblems();
        problems << m_problems;
        m_problems.clear();
        if (const int unanswered = m_script.takeUnanswered() - optional; unanswered > 0)
            problems << QStringLiteral("%1 expected dialog(s) did not appear").arg(unanswered);
        if (result.value != (writes ? 1 : 0))
            problems << QStringLiteral("expected %1").arg(writes ? "true" : "false");
        QString line =
            (problems.isEmpty() ? QStringLiteral("[ok]     ") : QStringLiteral("[FAILED] ")) +
            title + ": " + result.line;
        if (!problems.isEmpty()) line += " — " + problems.join("; ");
        for (const QString& told : m_told)
            line += "\n    told: " + QString(told).replace('\n', ' ');
        m_told.clear();
        QTextStream(stdout) << line << Qt::endl;
        m_window.log(line);
        return problems.isEmpty();
    }

    QString shot(const QString& name) const { return QDir(m_shots).filePath(name + ".png"); }

private:
    MarloUssLibrary& m_library;
    MainWindow& m_window;
    ModalScript& m_script;
    QString m_shots;
    QStringList m_problems;
    QStringList m_told;
};

} // namespace

CallResult callImport(const MarloUssLibrary& library, quintptr window, es_provider_t* provider)
{
    CallResult result;
    QLibrary module(library.path());
    auto import = reinterpret_cast<decltype(&uss_import)>(module.resolve("uss_import"));
    if (!import) {
        result.line = QStringLiteral("uss_import: not exported");
        return result;
    }
    const bool written = import(provider, window, false);
    result.value = written ? 1 : 0;
    result.line = QStringLiteral("uss_import(provider, 0x%1, false) -> %2")
                      .arg(window, 0, 16)
                      .arg(written ? "true" : "false");
    return result;
}

CallResult runHeadlessImport(MarloUssLibrary& library, MainWindow& window, ModalScript& script,
                             const QString& workFolder, const QString& shotFolder)
{
    CallResult summary;
    auto fail = [&](const QString& why) {
        summary.line = QStringLiteral("uss_import(second catalog) runs: ") + why;
        summary.value = 1;
        return summary;
    };
    const QString folder = QDir(workFolder).absoluteFilePath("import");
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    QString error;
    es_provider_t* source = openSampleCatalog(folder + "/source.db", &error);
    if (!source || !prepareSource(source)) return fail("cannot build the source catalog " + error);
    esx_CloseCatalog(source);
    es_provider_t* target = openSampleCatalog(folder + "/second.db", &error);
    if (!target || !prepareTarget(target)) return fail("cannot build the second catalog " + error);

    // The archive, written by the project's command line tool from the source catalog.
    const QString archive = folder + "/colleague.uss";
    const QString ussctl = QCoreApplication::applicationDirPath() + "/ussctl";
    QProcess tool;
    tool.start(ussctl, {"export", folder + "/source.db", archive});
    if (!tool.waitForFinished(60000) || tool.exitCode() != 0)
        return fail("ussctl export failed: " + QString::fromLocal8Bit(tool.readAllStandardError()));

    ImportRuns runs(library, window, script, shotFolder);
    int failures = 0;

    // The full import: a conflict replaced, a new element left out, the writing paused by
    // Escape and resumed with OK.
    script.expect({}, runs.pick(archive));
    // The comparison of a conflict settles it: impButton takes the colleague's pipe.
    script.expect("import-decisions-light", runs.act([&](QWidget* d) {
        if (!clickRow(d, "ZDV-50", 2)) runs.problem("the valve's row not found");
        QTimer::singleShot(0, d, [&runs, d] {
            if (!clickRow(d, "PE100-SDR11-63", 5)) runs.problem("the conflict's row not found");
        });
    }));
    // The comparison is looked at slot by slot and row by row, pictured, then settled.
    CompareExample comparison;
    script.expect(
        {}, runs.act(showCompareExample(shotFolder, "import-compare", "impButton", &comparison)));
    script.expect({}, runs.act([&](QWidget* d) {
        if (auto* ok = d->findChild<QAbstractButton*>("okButton")) ok->click();
    }));
    script.expect("import-question-light", runs.told("Вы действительно хотите прервать импорт "
                                                     "пользовательских элементов?"));
    // The window of the progress may still be up when the script looks again; the finishing
    // text follows.
    const QString done = QStringLiteral("Импорт пользовательских элементов завершен.");
    auto finishOrWait = [&runs, done](QWidget* d) {
        if (d->objectName() == QLatin1String("ImportProgressDialog")) return;
        runs.told(done)(d);
    };
    script.expect({}, finishOrWait);
    script.expect({}, finishOrWait);
    {
        PauseOnShow pause(runs.shot("import-progress-light"));
        const int before = elementCount(target);
        // The second wait is used only when the progress was still up.
        bool ok = runs.run("import with decisions", target, true, theme_light, 1);
        if (!pause.pressed() || pause.picture().isEmpty()) {
            QTextStream(stdout) << "[FAILED] the progress window was not paused" << Qt::endl;
            ok = false;
        }
        es_stdsize_t* replaced = find(target, pipes, "PE100-SDR11-63");
        es_stdsize_t* kept = find(target, bends, "OTV-90-63");
        const int after = elementCount(target);
        // 40 further pipes, one bend and the later pipe; the valve was left out.
        const bool catalogOk = after == before + 42 && !find(target, valves, "ZDV-50") &&
                               valueOf(replaced, "USS_AUTHOR") == "sandbox\\colleague" &&
                               valueOf(kept, "USS_AUTHOR") == "sandbox\\host" &&
                               find(target, pipes, "PE100-SDR17-110");
        QTextStream(stdout) << (catalogOk ? "[ok]     " : "[FAILED] ")
                            << QStringLiteral("second catalog: %1 -> %2 elements, "
                                              "PE100-SDR11-63 by %3, OTV-90-63 by %4")
                                   .arg(before)
                                   .arg(after)
                                   .arg(valueOf(replaced, "USS_AUTHOR"),
                                        valueOf(kept, "USS_AUTHOR"))
                            << Qt::endl;
        failures += !ok || !catalogOk;
        QStringList said{comparison.summary};
        said << comparison.problems;
        QTextStream(stdout) << (comparison.problems.isEmpty() ? "[ok]     " : "[FAILED] ")
                            << said.join(QStringLiteral("; ")) << Qt::endl;
        failures += !comparison.problems.isEmpty();
    }

    // The same archive again, dark: conflicts only, then cancelled; nothing is written.
    script.expect({}, runs.pick(archive));
    script.expect({}, runs.act([&](QWidget* d) {
        if (auto* box = d->findChild<QCheckBox*>("showConf")) box->setChecked(true);
        if (!d->grab().save(runs.shot("import-conflicts-dark")))
            runs.problem("could not save the picture of the conflicts");
        if (auto* cancel = d->findChild<QAbstractButton*>("cancelButton")) cancel->click();
    }));
    failures += !runs.run("import cancelled at the decisions", target, false, theme_dark);

    // An archive of the second catalog's own elements: everything is present and the same.
    const QString own = folder + "/own.uss";
    QProcess again;
    again.start(ussctl, {"export", "--list", pipes + ";PE100-SDR11-32;" + bends + ";OTV-90-63",
                         "--separator", ";", folder + "/second.db", own});
    if (!again.waitForFinished(60000) || again.exitCode() != 0) {
        QTextStream(stdout) << "[FAILED] ussctl export of the second catalog: "
                            << QString::fromLocal8Bit(again.readAllStandardError()) << Qt::endl;
        ++failures;
    } else {
        script.expect({}, runs.pick(own));
        script.expect("import-all-present-dark",
                      runs.told("Все импортируемые элементы присутствуют в базе."));
        failures += !runs.run("import of elements all present", target, false, theme_dark);
    }

    // A file that is no exchange archive.
    const QString notArchive = folder + "/notes.uss";
    QFile notes(notArchive);
    if (notes.open(QIODevice::WriteOnly)) notes.write("no archive");
    notes.close();
    script.expect({}, runs.pick(notArchive));
    script.expect("import-not-archive-light",
                  runs.told("Файл не является файлом экспортированных элементов.\nДля получения "
                            "информации по устранению проблемы нажмите кнопку Справка."));
    failures += !runs.run("import of a file that is no archive", target, false, theme_light);

    esx_CloseCatalog(target);
    summary.line =
        QStringLiteral("uss_import(second catalog) runs: %1 of 4 did not behave").arg(failures);
    summary.value = failures;
    return summary;
}

} // namespace sandbox
