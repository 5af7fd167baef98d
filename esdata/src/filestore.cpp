#include "filestore.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>

#if defined(_WIN32)
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

#include <filesystem>
#include <mutex>

namespace esdata {

namespace {

// Import hands the same extracted files to many elements; their digests are remembered by
// path, size and modification time, so each file is hashed once per process.
struct KnownDigest
{
    qint64 size = -1;
    qint64 modified = 0;
    QString digest;
};

std::mutex g_digestMutex;
QHash<QString, KnownDigest> g_digests;

constexpr qint64 kChunk = 1 << 16;

// The file system's own modification stamp: QFileInfo's local time costs a time zone lookup
// per call.
bool stampOf(const QString& path, qint64& stamp)
{
    std::error_code failed;
    const auto time =
        std::filesystem::last_write_time(std::filesystem::path(path.toStdU16String()), failed);
    if (failed) return false;
    stamp = qint64(time.time_since_epoch().count());
    return true;
}

void remember(const QString& path, qint64 size, qint64 modified, const QString& digest)
{
    std::lock_guard lock(g_digestMutex);
    g_digests.insert(path, KnownDigest{size, modified, digest});
}

bool hashFile(const QFileInfo& info, QString& digest)
{
    const QString path = info.absoluteFilePath();
    const qint64 size = info.size();
    qint64 modified = 0;
    if (!stampOf(path, modified)) return false;
    {
        std::lock_guard lock(g_digestMutex);
        auto it = g_digests.constFind(path);
        if (it != g_digests.constEnd() && it->size == size && it->modified == modified) {
            digest = it->digest;
            return true;
        }
    }
    QFile in(path);
    if (!in.open(QIODevice::ReadOnly)) return false;
    QCryptographicHash hash(QCryptographicHash::Md5);
    if (!hash.addData(&in)) return false;
    digest = QString::fromLatin1(hash.result().toHex());
    remember(path, size, modified, digest);
    return true;
}

// Puts the file's data on the disk before a name in the folder refers to it.
bool syncFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite)) return false;
#if defined(_WIN32)
    return FlushFileBuffers(reinterpret_cast<HANDLE>(_get_osfhandle(file.handle())));
#else
    return ::fdatasync(file.handle()) == 0;
#endif
}

// Streams source into target under a temporary name that is renamed at the end, so a crash
// never leaves a short copy under a digest name and memory does not grow with file size.
bool copyFile(const QString& source, const QString& target)
{
    QFile in(source);
    if (!in.open(QIODevice::ReadOnly)) return false;
    QSaveFile save(target);
    if (!save.open(QIODevice::WriteOnly)) return false;
    QByteArray buffer(kChunk, Qt::Uninitialized);
    for (;;) {
        const qint64 got = in.read(buffer.data(), kChunk);
        if (got < 0) return false;
        if (got == 0) break;
        if (save.write(buffer.constData(), got) != got) return false;
    }
    return save.commit();
}

} // namespace

namespace {

// The digest name of source and where it goes in folder; false with a reason when source
// cannot be read.
bool placeOf(const QString& folder, const QFileInfo& info, StoredFile& out, QString& target,
             QString& error)
{
    if (info.filePath().isEmpty() || !info.isFile() || !hashFile(info, out.digest)) {
        error = QStringLiteral("cannot read file: ") + info.filePath();
        return false;
    }
    const QString suffix = info.suffix();
    out.name = suffix.isEmpty() ? out.digest : out.digest + QLatin1Char('.') + suffix;
    target = folder + QLatin1Char('/') + out.name;
    return true;
}

bool alreadyStored(const QString& target, const QFileInfo& source)
{
    const QFileInfo existing(target);
    return existing.isFile() && existing.size() == source.size();
}

} // namespace

bool storeFile(const QString& folder, const QString& source, StoredFile& out, QString& error)
{
    const QFileInfo info(source);
    QString target;
    if (!placeOf(folder, info, out, target, error)) return false;
    if (alreadyStored(target, info)) return true;
    if (!copyFile(source, target)) {
        error = QStringLiteral("cannot write file: ") + target;
        return false;
    }
    return true;
}

bool takeFile(const QString& folder, const QString& source, StoredFile& out, QString& error)
{
    const QFileInfo info(source);
    QString target;
    if (!placeOf(folder, info, out, target, error)) return false;
    if (!alreadyStored(target, info)) {
        qint64 modified = 0;
        std::error_code failed;
        if (syncFile(source))
            std::filesystem::rename(std::filesystem::path(source.toStdU16String()),
                                    std::filesystem::path(target.toStdU16String()), failed);
        else
            failed = std::make_error_code(std::errc::io_error);
        // Another file system, or a file that cannot be synced: copied the safe way.
        if (failed && !copyFile(source, target)) {
            error = QStringLiteral("cannot write file: ") + target;
            return false;
        }
        if (!failed && stampOf(target, modified))
            remember(QFileInfo(target).absoluteFilePath(), info.size(), modified, out.digest);
    }
    QFile::remove(source);
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
