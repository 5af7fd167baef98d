#include "workfolder.h"

#include "exportuss.h"
#include "process.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace exchange {

QString workFolderTemplate(const QString& parent, const QString& prefix)
{
    return QDir(parent).filePath(prefix + QString::number(QCoreApplication::applicationPid()) +
                                 QStringLiteral("_XXXXXX"));
}

namespace {

// Removes the entries of parent matching pattern whose process (the digits after the last
// marker in the name) no longer runs.
void removeStale(const QString& parent, const QString& pattern, const QString& marker)
{
    QDir dir(parent);
    const QStringList names = dir.entryList(
        {pattern}, QDir::Dirs | QDir::Files | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    for (const QString& name : names) {
        const qsizetype at = name.lastIndexOf(marker);
        if (at < 0) continue;
        // The process id: the digits right after the marker, up to "_", "." or the end.
        const QStringView rest = QStringView(name).mid(at + marker.size());
        qsizetype digits = 0;
        while (digits < rest.size() && rest[digits].isDigit())
            ++digits;
        if (digits == 0 || (digits < rest.size() && rest[digits] != u'_' && rest[digits] != u'.'))
            continue;
        bool ok = false;
        const long long pid = rest.left(digits).toLongLong(&ok);
        if (!ok || processIsRunning(pid)) continue;
        const QString path = dir.filePath(name);
        if (QFileInfo(path).isDir())
            QDir(path).removeRecursively();
        else
            QFile::remove(path);
    }
}

} // namespace

void removeStaleLeftovers(const QString& parent, const QString& prefix)
{
    removeStale(parent, prefix + QLatin1Char('*'), prefix);
}

QString partialPrefix(const QString& targetFileName)
{
    return QLatin1Char('.') + targetFileName + QStringLiteral(".part-");
}

void sweepLeftovers(const QString& folder)
{
    removeStaleLeftovers(QDir::tempPath(), QString::fromUtf16(importFolderPrefix));
    removeStaleLeftovers(ExportUss::workingFolder(), QString::fromUtf16(exportFolderPrefix));
    if (!folder.isEmpty())
        removeStale(folder, partialPrefix(QStringLiteral("*")) + QLatin1Char('*'),
                    QStringLiteral(".part-"));
}

} // namespace exchange
