#include "engsys/drawing_files.h"

#include <string>

namespace edw {
namespace {

wchar_t* keep(std::wstring& buffer, const QString& text)
{
    // Room for the longest path a host accepts, reserved once, so that the address handed to
    // callers stays the same from call to call.
    constexpr size_t longestPath = 32768;
    if (buffer.capacity() < longestPath) buffer.reserve(longestPath);
    // Copy into the reserved room: assigning the converted string itself would move its
    // storage in and change the address.
    const std::wstring converted = text.toStdWString();
    buffer.assign(converted.data(), converted.size());
    return buffer.data();
}

} // namespace

QString existingDrawingTitle(const QString& path)
{
    QString name = path.mid(path.lastIndexOf(QLatin1Char('\\')) + 1);
    if (name.size() >= 4) name.chop(4);
    return QStringLiteral("Чертеж ") + name + QStringLiteral(".cdw уже существует");
}

QString withBackslashes(QString path)
{
    return path.replace(QLatin1Char('/'), QLatin1Char('\\'));
}

wchar_t* keepDirectoryResult(const QString& folder)
{
    static std::wstring buffer;
    return keep(buffer, folder);
}

wchar_t* keepFileSavingResult(const QString& file)
{
    static std::wstring buffer;
    return keep(buffer, file);
}

} // namespace edw
