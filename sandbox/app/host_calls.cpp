#include "host_calls.h"

#include "marlouss_library.h"

#include <QDir>
#include <QFile>

#include <vector>

namespace sandbox {
namespace {

std::vector<wchar_t> wide(const QString& text)
{
    std::vector<wchar_t> buffer(static_cast<size_t>(text.size()) + 1, 0);
    text.toWCharArray(buffer.data());
    return buffer;
}

QString hex(unsigned int value)
{
    return QStringLiteral("0x") + QString::number(value, 16).toUpper().rightJustified(8, '0');
}

QString quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

CallResult missing(const char* name)
{
    CallResult result;
    result.line = QString::fromLatin1(name) + QStringLiteral(": not exported by the library");
    result.value = -1;
    return result;
}

} // namespace

QByteArray selectPartRequest(int version, const QString& current)
{
    const char* text =
        R"json({"version": %1, "curPart": "%2", "parts": ["Газоснабжение (ТХ)", )json"
        R"json("Технология (ТХ)", "Отопление (ОВ)", "Вентиляция (ОВ)"]})json";
    return QString::fromUtf8(text).arg(version).arg(current).toUtf8();
}

QString writeSampleCommandLibrary(const QString& folder)
{
    QDir().mkpath(folder);
    QFile description(folder + QStringLiteral("/uss_engsys_tx.xml"));
    if (description.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        description.write(R"(<?xml version="1.0" encoding="utf-8"?>
<commands>
  <command name="pipe" id="5" idcat="12" type="uss"/>
  <command name="valve" id="7" type="uss"/>
</commands>
)");
    }
    // The calling library's own file only has to name the description; it is not read.
    QFile self(folder + QStringLiteral("/engsys_tx.rtw"));
    if (self.open(QIODevice::WriteOnly | QIODevice::Truncate))
        self.write("sandbox engineering library\n");
    return self.fileName();
}

CallResult callLibraryName(const MarloUssLibrary& library)
{
    if (!library.libraryName) return missing("LIBRARYNAMEW");
    CallResult result;
    const wchar_t* name = library.libraryName();
    result.pointer = name;
    result.text = name ? QString::fromWCharArray(name) : QString();
    result.line = QStringLiteral("LIBRARYNAMEW() -> %1 at %2")
                      .arg(quoted(result.text))
                      .arg(quintptr(name), 0, 16);
    return result;
}

CallResult callCommandId(const MarloUssLibrary& library, const QString& libraryFile,
                         const QString& command, unsigned int* id, unsigned int* idcat)
{
    if (!library.getCommandId) return missing("uss_get_command_id");
    CallResult result;
    const auto file = wide(libraryFile);
    const auto name = wide(command);
    library.getCommandId(file.data(), name.data(), id, idcat);
    result.line = QStringLiteral("uss_get_command_id(%1, %2) -> id %3, idcat %4")
                      .arg(quoted(libraryFile), quoted(command), hex(*id), hex(*idcat));
    return result;
}

CallResult callSelectPart(const MarloUssLibrary& library, quintptr window,
                          const QByteArray& request)
{
    if (!library.selectPart) return missing("engsys_select_part_dialog");
    CallResult result;
    const char* answer = nullptr;
    const bool accepted = library.selectPart(window, request.constData(), &answer);
    result.value = accepted;
    result.pointer = answer;
    result.text = accepted && answer ? QString::fromUtf8(answer) : QString();
    result.line = QStringLiteral("engsys_select_part_dialog(window 0x%1, %2) -> %3%4")
                      .arg(window, 0, 16)
                      .arg(QString::fromUtf8(request))
                      .arg(accepted ? 1 : 0)
                      .arg(accepted ? QStringLiteral(", result ") + result.text : QString());
    return result;
}

CallResult callSaveCdw(const MarloUssLibrary& library, const QString& path)
{
    if (!library.saveCdw) return missing("OPEN_SAVE_CDW_DIALOG");
    CallResult result;
    auto text = wide(path);
    result.value = library.saveCdw(text.data());
    result.line =
        QStringLiteral("OPEN_SAVE_CDW_DIALOG(%1) -> %2").arg(quoted(path)).arg(result.value);
    return result;
}

CallResult callChooseDirectory(const MarloUssLibrary& library)
{
    if (!library.chooseDirectory) return missing("OPEN_CHOSE_DIRECTORY_DIALOG");
    CallResult result;
    const wchar_t* folder = library.chooseDirectory();
    result.pointer = folder;
    result.text = folder ? QString::fromWCharArray(folder) : QString();
    result.line = QStringLiteral("OPEN_CHOSE_DIRECTORY_DIALOG() -> %1").arg(quoted(result.text));
    return result;
}

CallResult callFileSaving(const MarloUssLibrary& library, const QString& defaultPath)
{
    if (!library.fileSaving) return missing("OPEN_FILE_SAVING_DIALOG");
    CallResult result;
    auto text = wide(defaultPath);
    const wchar_t* file = library.fileSaving(text.data(), 0, 0, 0);
    result.pointer = file;
    result.text = file ? QString::fromWCharArray(file) : QString();
    result.line = QStringLiteral("OPEN_FILE_SAVING_DIALOG(%1) -> %2 at %3")
                      .arg(quoted(defaultPath), quoted(result.text))
                      .arg(quintptr(file), 0, 16);
    return result;
}

CallResult callPointCallback(const MarloUssLibrary& library, int last)
{
    if (!library.pointCallback) return missing("SelectionPanel::CallBackP");
    CallResult result;
    double x = 125.0, y = 250.0;
    result.value = library.pointCallback(0, &x, &y, nullptr, nullptr, last);
    result.line = QStringLiteral("SelectionPanel::CallBackP(0, 125, 250, null, null, %1) -> %2")
                      .arg(last)
                      .arg(result.value);
    return result;
}

} // namespace sandbox
