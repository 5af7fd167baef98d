#include "headless_run.h"

#include "export_calls.h"
#include "headless_editor.h"
#include "headless_export.h"
#include "headless_import.h"
#include "headless_update.h"

#include "host_calls.h"
#include "main_window.h"
#include "marlouss_library.h"
#include "modal_script.h"

#include <QAbstractButton>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

#include <functional>

namespace sandbox {
namespace {

QJsonObject json(const QString& text)
{
    return QJsonDocument::fromJson(text.toUtf8()).object();
}

// Answer for the file choosers: go to folder, then press the accepting button.
ModalScript::Answer acceptIn(const QString& folder, bool* titleSeen, const QString& title)
{
    return [folder, titleSeen, title](QWidget* dialog) {
        *titleSeen = dialog->windowTitle() == title;
        auto* chooser = qobject_cast<QFileDialog*>(dialog);
        if (chooser && chooser->fileMode() == QFileDialog::Directory) chooser->setDirectory(folder);
        auto* box = dialog->findChild<QDialogButtonBox*>(QStringLiteral("buttonBox"));
        if (!box) return;
        for (QAbstractButton* button : box->buttons()) {
            if (box->buttonRole(button) == QDialogButtonBox::AcceptRole) {
                button->click();
                return;
            }
        }
    };
}

class Run
{
public:
    Run(MarloUssLibrary& library, MainWindow& window, const QString& shots)
        : m_library(library), m_window(window), m_script(shots)
    {}

    // One call: its line, whether it behaved, and what went wrong.
    void step(const std::function<CallResult()>& call,
              const std::function<QString(const CallResult&)>& verdict)
    {
        const CallResult result = call();
        noteExportCalled(result.line);
        QStringList problems = m_script.takeProblems();
        if (const int unanswered = m_script.takeUnanswered())
            problems << QStringLiteral("%1 expected dialog(s) did not appear").arg(unanswered);
        const QString wrong = verdict(result);
        if (!wrong.isEmpty()) problems << wrong;
        const QString line =
            (problems.isEmpty() ? QStringLiteral("[ok]     ") : QStringLiteral("[FAILED] ")) +
            result.line + (problems.isEmpty() ? QString() : " — " + problems.join("; "));
        QTextStream(stdout) << line << Qt::endl;
        m_window.log(line);
        if (!problems.isEmpty()) ++m_failures;
    }

    ModalScript& script() { return m_script; }
    int failures() const { return m_failures; }

private:
    MarloUssLibrary& m_library;
    MainWindow& m_window;
    ModalScript m_script;
    int m_failures = 0;
};

QString expectValue(const CallResult& result, qint64 value)
{
    return result.value == value ? QString() : QStringLiteral("expected %1").arg(value);
}

} // namespace

int runHeadless(MarloUssLibrary& library, MainWindow& window, const QString& workFolder,
                const QString& shotFolder)
{
    Run run(library, window, shotFolder);
    ModalScript& script = run.script();
    const quintptr handle = window.winId();

    // Identity: the same constant text every time.
    const void* firstName = nullptr;
    run.step([&] { return callLibraryName(library); },
             [&](const CallResult& r) {
                 firstName = r.pointer;
                 return r.text == "marlouss" ? QString() : QStringLiteral("expected \"marlouss\"");
             });
    run.step([&] { return callLibraryName(library); },
             [&](const CallResult& r) {
                 return r.pointer == firstName ? QString()
                                               : QStringLiteral("expected the same pointer");
             });

    // Command identifiers from the calling library's description.
    const QString engsysLibrary = writeSampleCommandLibrary(workFolder + "/engsys");
    struct CommandCase
    {
        QString library, command;
        unsigned int id, idcat;
    };
    const QList<CommandCase> commands = {
        {engsysLibrary, "pipe", 12, 5},
        {engsysLibrary, "valve", 7, 0xFFFFFFFFu},
        {engsysLibrary, "unknown", 0xFFFFFFFFu, 0xFFFFFFFFu},
        {workFolder + "/missing/engsys_vk.rtw", "pipe", 0xFFFFFFFFu, 0xFFFFFFFFu},
    };
    for (const CommandCase& c : commands) {
        unsigned int id = 0, idcat = 0;
        run.step([&] { return callCommandId(library, c.library, c.command, &id, &idcat); },
                 [&](const CallResult&) {
                     return id == c.id && idcat == c.idcat ? QString()
                                                           : QStringLiteral("unexpected ids");
                 });
    }

    // Section choice: pick the third section; close without a choice; a record of another
    // version is refused with a message.
    script.expect("select-part", ModalScript::check("partButton3", "okButton"));
    run.step([&] { return callSelectPart(library, handle, selectPartRequest()); },
             [&](const CallResult& r) {
                 const QJsonObject record = json(r.text);
                 const QJsonObject sent = json(QString::fromUtf8(selectPartRequest()));
                 if (r.value != 1 || record["curPart"].toString() != "Отопление (ОВ)")
                     return QStringLiteral("expected 1 with curPart \"Отопление (ОВ)\"");
                 if (record["parts"] != sent["parts"] || record["version"] != sent["version"])
                     return QStringLiteral("parts or version changed");
                 return QString();
             });
    script.expect(QString(), ModalScript::close());
    run.step([&] { return callSelectPart(library, handle, selectPartRequest()); },
             [&](const CallResult& r) { return expectValue(r, 0); });
    script.expect("select-part-version", ModalScript::click("okButton"));
    run.step([&] { return callSelectPart(library, handle, selectPartRequest(2)); },
             [&](const CallResult& r) { return expectValue(r, 0); });

    // The drawing exists: create another one; then close the question.
    script.expect("save-cdw", ModalScript::click("createButton"));
    run.step([&] { return callSaveCdw(library, QStringLiteral("D:\\work\\plan.cdw")); },
             [&](const CallResult& r) { return expectValue(r, 2); });
    script.expect(QString(), ModalScript::close());
    run.step([&] { return callSaveCdw(library, QStringLiteral("plan.cdw")); },
             [&](const CallResult& r) { return expectValue(r, 3); });

    // Folder and file choosers.
    const QString drawings = QDir(workFolder).absoluteFilePath("drawings");
    QDir().mkpath(drawings);
    QFile::remove(drawings + "/plan.cdw");
    bool titled = false;
    script.expect(
        "choose-directory",
        acceptIn(drawings, &titled, QStringLiteral("Выберите папку для сохранения чертежа ГРАИС")));
    run.step([&] { return callChooseDirectory(library); },
             [&](const CallResult& r) {
                 if (!titled) return QStringLiteral("unexpected title");
                 return QDir::cleanPath(r.text) == drawings
                            ? QString()
                            : QStringLiteral("expected \"%1\"").arg(drawings);
             });

    const QString expectedFile = QString(drawings + "/plan.cdw").replace('/', '\\');
    const void* firstFile = nullptr;
    script.expect("file-saving",
                  acceptIn(drawings, &titled, QStringLiteral("Укажите имя файла для записи")));
    run.step([&] { return callFileSaving(library, drawings + "/plan.cdw"); },
             [&](const CallResult& r) {
                 firstFile = r.pointer;
                 if (!titled) return QStringLiteral("unexpected title");
                 return r.text == expectedFile
                            ? QString()
                            : QStringLiteral("expected \"%1\"").arg(expectedFile);
             });
    script.expect(QString(), ModalScript::close());
    run.step([&] { return callFileSaving(library, drawings + "/plan.cdw"); },
             [&](const CallResult& r) {
                 if (!r.text.isEmpty()) return QStringLiteral("expected an empty path");
                 if (r.pointer != firstFile ||
                     QString::fromWCharArray(static_cast<const wchar_t*>(firstFile)) != "")
                     return QStringLiteral("expected the first result's buffer to be reused");
                 return QString();
             });

    // The selection panel's callback hands a non-zero last argument back untouched.
    run.step([&] { return callPointCallback(library, 7); },
             [&](const CallResult& r) { return expectValue(r, 7); });

    // The drawing update and the medium dialogs.
    runUpdateCalls(library, window, script, workFolder,
                   [&run](const auto& call, const auto& verdict) { run.step(call, verdict); });

    run.step([&] { return runHeadlessEditor(library, window, script, workFolder, shotFolder); },
             [](const CallResult& r) { return r.value ? QStringLiteral("see above") : QString(); });

    run.step([&] { return runHeadlessExport(library, window, script, workFolder, shotFolder); },
             [](const CallResult& r) { return r.value ? QStringLiteral("see above") : QString(); });
    run.step([&] { return runHeadlessImport(library, window, script, workFolder, shotFolder); },
             [](const CallResult& r) { return r.value ? QStringLiteral("see above") : QString(); });

    // The job calls every export the public header declares.
    for (const QString& name : exportsNotCalled())
        run.step(
            [&name] {
                CallResult result;
                result.line = name + QStringLiteral(" (declared in marlouss.h)");
                return result;
            },
            [](const CallResult&) { return QStringLiteral("never called"); });

    QTextStream(stdout) << (run.failures()
                                ? QStringLiteral("%1 call(s) did not behave").arg(run.failures())
                                : QStringLiteral("every export behaved"))
                        << "; pictures: " << script.shots().join(", ") << Qt::endl;
    return run.failures();
}

} // namespace sandbox
