#include "filestore.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace esdata {

bool storeFile(const QString& folder, const QString& source, StoredFile& out, QString& error)
{
    QFileInfo info(source);
    if (source.isEmpty() || !info.isFile()) {
        error = QStringLiteral("cannot read file: ") + source;
        return false;
    }
    QFile in(source);
    if (!in.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("cannot read file: ") + source;
        return false;
    }
    QByteArray content = in.readAll();
    in.close();
    out.digest =
        QString::fromLatin1(QCryptographicHash::hash(content, QCryptographicHash::Md5).toHex());
    QString suffix = info.suffix();
    out.name = suffix.isEmpty() ? out.digest : out.digest + QLatin1Char('.') + suffix;
    QString target = folder + QLatin1Char('/') + out.name;
    QFileInfo existing(target);
    if (existing.isFile() && existing.size() == content.size()) return true;
    // Written whole under a temporary name and renamed, so a crash never leaves a short copy
    // under a digest name.
    QSaveFile save(target);
    if (!save.open(QIODevice::WriteOnly) || save.write(content) != content.size() ||
        !save.commit()) {
        error = QStringLiteral("cannot write file: ") + target;
        return false;
    }
    return true;
}

bool readBytes(const QString& path, std::vector<uint8_t>& out)
{
    out.clear();
    if (path.isEmpty() || !QFileInfo(path).isFile()) return false;
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return false;
    QByteArray data = f.readAll();
    out.assign(data.begin(), data.end());
    return true;
}

} // namespace esdata
