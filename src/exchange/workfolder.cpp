#include "workfolder.h"

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

void removeStaleLeftovers(const QString& parent, const QString& prefix)
{
    QDir dir(parent);
    const QStringList names =
        dir.entryList({prefix + QLatin1Char('*')}, QDir::Dirs | QDir::Files | QDir::NoDotAndDotDot |
                                                       QDir::Hidden | QDir::System);
    for (const QString& name : names) {
        // The process id: the digits right after the prefix, up to "_", "." or the end.
        const QStringView rest = QStringView(name).mid(prefix.size());
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

} // namespace exchange
