#include "headless_export.h"

#include "export_calls.h"
#include "host_state.h"
#include "main_window.h"
#include "marlouss_library.h"
#include "modal_script.h"
#include "sample_catalog.h"

#include <esdata/esdata.h>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLibrary>
#include <QLineEdit>
#include <QTextStream>
#include <QTimer>
#include <QtEndian>

#include <vector>

namespace sandbox {
namespace {

std::vector<wchar_t> wide(const QString& text)
{
    std::vector<wchar_t> out(size_t(text.size()) + 1, L'\0');
    text.toWCharArray(out.data());
    return out;
}

template <typename F> F resolve(const MarloUssLibrary& library, const char* name)
{
    QLibrary loaded(library.path());
    return reinterpret_cast<F>(loaded.resolve(name));
}

using Answer = std::function<void(QWidget*)>;

// The save dialog: the file name typed, then accepted.
Answer saveAs(const QString& path)
{
    return [path](QWidget* dialog) {
        auto* chooser = qobject_cast<QFileDialog*>(dialog);
        if (!chooser) return void(dialog->close());
        chooser->setDirectory(QFileInfo(path).absolutePath());
        if (auto* name = chooser->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")))
            name->setText(path);
        QMetaObject::invokeMethod(chooser, "accept", Qt::QueuedConnection);
    };
}

QString labelText(QWidget* dialog, const QString& name)
{
    auto* label = dialog->findChild<QLabel*>(name);
    return label ? label->text() : QString();
}

class ExportRuns
{
public:
    ExportRuns(MarloUssLibrary& library, MainWindow& window, ModalScript& script,
               const QString& work)
        : m_library(library), m_window(window), m_script(script),
          m_folder(work + QStringLiteral("/exports"))
    {
        QDir(m_folder).removeRecursively();
        QDir().mkpath(m_folder);
    }

    QString file(const QString& name) const { return m_folder + "/" + name; }

    // A message box: its text must be the expected one, then OK.
    Answer told(const QString& text)
    {
        return [this, text](QWidget* box) {
            bool seen = false;
            for (const QLabel* label : box->findChildren<QLabel*>())
                seen = seen || label->text() == text;
            if (!seen) m_problems << QStringLiteral("expected the message \"%1\"").arg(text);
            if (auto* ok = box->findChild<QAbstractButton*>(QStringLiteral("okButton")))
                ok->click();
        };
    }
    Answer act(std::function<void(QWidget*)> body)
    {
        return [body](QWidget* dialog) { body(dialog); };
    }
    void problem(const QString& text) { m_problems << text; }

    // One call: whether it wrote what it should.
    bool run(const QString& title, const std::function<CallResult()>& call, bool writes,
             const QString& archive = {})
    {
        const QList<bool> noticesBefore = long_operation_notices();
        const CallResult result = call();
        set_theme(theme_light);
        QStringList problems = m_script.takeProblems();
        problems << m_problems;
        m_problems.clear();
        if (const int unanswered = m_script.takeUnanswered())
            problems << QStringLiteral("%1 expected dialog(s) did not appear").arg(unanswered);
        if (result.value != (writes ? 1 : 0))
            problems << QStringLiteral("expected %1").arg(writes ? "true" : "false");
        QStringList entries;
        if (!archive.isEmpty()) {
            entries = archiveEntries(archive);
            if (writes && entries.isEmpty())
                problems << QStringLiteral("no archive at %1").arg(archive);
            if (!writes && QFileInfo::exists(archive))
                problems << QStringLiteral("an archive was left at %1").arg(archive);
        }
        const QList<bool> notices = long_operation_notices().mid(noticesBefore.size());
        if (writes && notices != QList<bool>{true, false})
            problems << QStringLiteral("the host was not told of the long operation");

        QString line =
            (problems.isEmpty() ? QStringLiteral("[ok]     ") : QStringLiteral("[FAILED] ")) +
            title + ": " + result.line;
        if (!problems.isEmpty()) line += " — " + problems.join("; ");
        if (writes && !entries.isEmpty())
            line += QStringLiteral("\n    %1: %2 entries\n      %3")
                        .arg(QDir::toNativeSeparators(archive))
                        .arg(entries.size())
                        .arg(entries.join("\n      "));
        QTextStream(stdout) << line << Qt::endl;
        m_window.log(line);
        return problems.isEmpty();
    }

private:
    MarloUssLibrary& m_library;
    MainWindow& m_window;
    ModalScript& m_script;
    QString m_folder;
    QStringList m_problems;
};

} // namespace

CallResult callExportAll(const MarloUssLibrary& library, quintptr window, es_provider_t* provider)
{
    CallResult result;
    const auto run = resolve<decltype(&uss_export_all)>(library, "uss_export_all");
    if (!run) {
        result.line = QStringLiteral("uss_export_all: not exported by the library");
        result.value = -1;
        return result;
    }
    result.value = run(provider, window);
    noteExportCalled(QStringLiteral("uss_export_all()"));
    result.line = QStringLiteral("uss_export_all(catalog, window 0x%1) -> %2")
                      .arg(window, 0, 16)
                      .arg(result.value ? "true" : "false");
    return result;
}

CallResult callExportFromList(const MarloUssLibrary& library, const QString& list,
                              const QString& separator, es_provider_t* provider)
{
    CallResult result;
    const auto run = resolve<decltype(&uss_export_from_list)>(library, "uss_export_from_list");
    if (!run) {
        result.line = QStringLiteral("uss_export_from_list: not exported by the library");
        result.value = -1;
        return result;
    }
    const auto text = wide(list), sep = wide(separator);
    result.value = run(text.data(), sep.data(), provider);
    noteExportCalled(QStringLiteral("uss_export_from_list()"));
    result.line = QStringLiteral("uss_export_from_list(\"%1\", \"%2\", catalog) -> %3")
                      .arg(list, separator, result.value ? "true" : "false");
    return result;
}

QStringList archiveEntries(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QByteArray data = file.readAll();
    // The end record lies in the last 64 KiB + 22 bytes.
    const qsizetype end = data.lastIndexOf(QByteArray("PK\x05\x06", 4));
    if (end < 0 || end + 22 > data.size()) return {};
    const auto u16 = [&](qsizetype at) {
        return qFromLittleEndian<quint16>(data.constData() + at);
    };
    const auto u32 = [&](qsizetype at) {
        return qFromLittleEndian<quint32>(data.constData() + at);
    };
    const int count = u16(end + 10);
    qsizetype at = u32(end + 16);
    QStringList entries;
    for (int i = 0; i < count; ++i) {
        if (at + 46 > data.size() || u32(at) != 0x02014b50) return {};
        const quint32 size = u32(at + 24);
        const int nameLength = u16(at + 28);
        const QString name = QString::fromUtf8(data.constData() + at + 46, nameLength);
        entries << QStringLiteral("%1 (%2 bytes)").arg(name).arg(size);
        at += 46 + nameLength + u16(at + 30) + u16(at + 32);
    }
    return entries;
}

CallResult runHeadlessExport(MarloUssLibrary& library, MainWindow& window, ModalScript& script,
                             const QString& workFolder, const QString& shotFolder)
{
    Q_UNUSED(shotFolder);
    ExportRuns runs(library, window, script, workFolder);
    es_provider_t* provider = window.provider();
    const quintptr handle = window.winId();
    int failures = 0;

    // Everything: the filter narrows the tree to one packet for a picture, then all is chosen.
    const QString all = runs.file(QStringLiteral("all.uss"));
    script.expect(QStringLiteral("export-dialog-light"), runs.act([&](QWidget* d) {
        if (auto* filter = d->findChild<QLineEdit*>(QStringLiteral("m_lineEdit_filter")))
            filter->setText(QStringLiteral("Отвод"));
        d->grab().save(QDir(shotFolder).filePath(QStringLiteral("export-dialog-filter.png")));
        if (auto* filter = d->findChild<QLineEdit*>(QStringLiteral("m_lineEdit_filter")))
            filter->clear();
        if (auto* box = d->findChild<QCheckBox*>(QStringLiteral("checkBox_SelectAll")))
            box->click();
        // Models and fragments go through the host's save in the earlier format.
        if (auto* box = d->findChild<QCheckBox*>(QStringLiteral("checkBox_PrevVer")))
            box->setChecked(true);
        const int total = elementCount(provider);
        const QString label = labelText(d, QStringLiteral("m_label"));
        if (label != QStringLiteral("Элементы для экспорта (%1/%1)").arg(total))
            runs.problem(QStringLiteral("the label read \"%1\"").arg(label));
        d->grab().save(QDir(shotFolder).filePath(QStringLiteral("export-dialog-chosen.png")));
        QTimer::singleShot(0, d, [d] {
            if (auto* ok = d->findChild<QAbstractButton*>(QStringLiteral("okButton"))) ok->click();
        });
    }));
    script.expect({}, saveAs(all));
    script.expect({}, runs.told(QStringLiteral("Экспорт пользовательских элементов завершен")));
    failures += !runs.run(
        "export all, previous version", [&] { return callExportAll(library, handle, provider); },
        true, all);

    // The dialog in the dark theme, left with Cancel: nothing is asked or written.
    set_theme(theme_dark);
    script.expect(QStringLiteral("export-dialog-dark"), ModalScript::click("cancelButton"));
    failures += !runs.run(
        "export all, cancelled (dark)", [&] { return callExportAll(library, handle, provider); },
        false);

    // A list of two elements of two packets.
    const QString listed = runs.file(QStringLiteral("list.uss"));
    script.expect({}, saveAs(listed));
    script.expect({}, runs.told(QStringLiteral("Экспорт пользовательских элементов завершен")));
    failures += !runs.run(
        "export from a list",
        [&] {
            return callExportFromList(library,
                                      QStringLiteral("ПЭ_Трубы;PE100-SDR11-63;ПЭ_Задвижки;ZDV-50"),
                                      QStringLiteral(";"), provider);
        },
        true, listed);

    // An odd list and a list that finds nothing: false, no dialog, no message.
    failures += !runs.run(
        "export from an odd list",
        [&] {
            return callExportFromList(library,
                                      QStringLiteral("ПЭ_Трубы;PE100-SDR11-63;ПЭ_Задвижки"),
                                      QStringLiteral(";"), provider);
        },
        false);
    failures += !runs.run(
        "export from a list that finds nothing",
        [&] {
            return callExportFromList(library,
                                      QStringLiteral("ПЭ_Нет|PE100-SDR11-63|ПЭ_Трубы|NONE"),
                                      QStringLiteral("|"), provider);
        },
        false);

    // A catalog without elements: the message, and nothing written.
    const QString emptyPath = workFolder + QStringLiteral("/exports/empty.db");
    const std::u16string emptyFile = emptyPath.toStdU16String();
    es_provider_t* empty = esx_OpenCatalog(emptyFile.c_str(), u"user_tx", true);
    script.expect(QStringLiteral("export-empty-catalog"),
                  runs.told(QStringLiteral("Каталог не содержит пользовательских элементов")));
    failures += !runs.run(
        "export all of an empty catalog", [&] { return callExportAll(library, handle, empty); },
        false);
    if (empty) esx_CloseCatalog(empty);

    CallResult result;
    result.value = failures;
    result.line = QStringLiteral("uss_export_all, uss_export_from_list: 6 scripted runs, "
                                 "host told of %1 long operation(s), %2 message round(s)")
                      .arg(long_operation_notices().count(true))
                      .arg(processed_message_rounds());
    return result;
}

} // namespace sandbox
