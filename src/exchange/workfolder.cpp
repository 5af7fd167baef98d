#include "workfolder.h"

#include "process.h"

#include <QCoreApplication>
#include <QDir>

namespace exchange {

QString workFolderTemplate(const QString& parent, const QString& prefix)
{
    return QDir(parent).filePath(prefix + QString::number(QCoreApplication::applicationPid()) +
                                 QStringLiteral("_XXXXXX"));
}

void removeStaleWorkFolders(const QString& parent, const QString& prefix)
{
    QDir dir(parent);
    const QStringList names = dir.entryList({prefix + QLatin1Char('*')},
                                            QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden);
    for (const QString& name : names) {
        const QString rest = name.mid(prefix.size());
        const qsizetype separator = rest.indexOf(QLatin1Char('_'));
        if (separator <= 0) continue;
        bool ok = false;
        const long long pid = rest.left(separator).toLongLong(&ok);
        if (ok && !processIsRunning(pid)) QDir(dir.filePath(name)).removeRecursively();
    }
}

} // namespace exchange
