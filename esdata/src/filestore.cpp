#include "filestore.h"

#include "sql.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QTemporaryFile>

#if defined(_WIN32)
#include <io.h>
#include <windows.h>
#else
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <filesystem>
#include <mutex>

namespace esdata {

namespace {

constexpr qint64 kChunk = 1 << 16;

// What tells a file unchanged: a digest is reused only while all of it is equal. The change
// time catches a rewrite that kept size and modification time (cp -p, archive extraction, two
// writes within one tick); the inode catches a file replaced by another under the same name.
struct FileKey
{
    quint64 device = 0, inode = 0;
    qint64 size = -1;
    qint64 modifiedNs = 0, changedNs = 0;
    bool operator==(const FileKey&) const = default;
};

bool keyOf(const QString& path, FileKey& key)
{
#if defined(_WIN32)
    Q_UNUSED(path);
    Q_UNUSED(key);
    return false; // no change time to trust: every file is hashed as it is copied
#else
    struct stat st;
    if (::stat(QFile::encodeName(path).constData(), &st) != 0) return false;
    key.device = quint64(st.st_dev);
    key.inode = quint64(st.st_ino);
    key.size = qint64(st.st_size);
    key.modifiedNs = qint64(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    key.changedNs = qint64(st.st_ctim.tv_sec) * 1000000000 + st.st_ctim.tv_nsec;
    return true;
#endif
}

// Import hands the same extracted files to many elements: each is hashed (and copied) once
// while it stays unchanged.
struct KnownDigest
{
    FileKey key;
    QString digest;
};

std::mutex g_digestMutex;
QHash<QString, KnownDigest> g_digests;

bool knownDigest(const QString& path, const FileKey& key, QString& digest)
{
    std::lock_guard lock(g_digestMutex);
    auto it = g_digests.constFind(path);
    if (it == g_digests.constEnd() || !(it->key == key)) return false;
    digest = it->digest;
    return true;
}

void remember(const QString& path, const FileKey& key, const QString& digest)
{
    std::lock_guard lock(g_digestMutex);
    g_digests.insert(path, KnownDigest{key, digest});
}

[[noreturn]] void writeFailed(const QString& what)
{
    throw StoreError(Fault::Write, "cannot write file: " + what.toStdString());
}

bool syncHandle(QFile& file)
{
    if (!file.flush()) return false;
#if defined(_WIN32)
    return FlushFileBuffers(reinterpret_cast<HANDLE>(_get_osfhandle(file.handle())));
#else
    return ::fdatasync(file.handle()) == 0;
#endif
}

// A file of the folder not yet named; removed unless it is named in the end.
class Pending
{
public:
    explicit Pending(const QString& folder) : m_file(folder + QStringLiteral("/.store-XXXXXX"))
    {
        m_file.setAutoRemove(false);
    }
    ~Pending()
    {
        if (!m_named) QFile::remove(m_path.isEmpty() ? m_file.fileName() : m_path);
    }
    QTemporaryFile& file() { return m_file; }
    void adopt(const QString& path) { m_path = path; }
    const QString& path() const { return m_path; }

    // Gives the file its digest name; a file of that name already holds the same bytes.
    void name(const QString& target)
    {
        if (QFileInfo(target).isFile()) return;
        std::error_code failed;
        std::filesystem::rename(std::filesystem::path(m_path.toStdU16String()),
                                std::filesystem::path(target.toStdU16String()), failed);
        if (failed) writeFailed(target);
        m_named = true;
    }

private:
    QTemporaryFile m_file;
    QString m_path;
    bool m_named = false;
};

QString targetOf(const QString& folder, const QString& digest, const QString& suffix)
{
    return folder + QLatin1Char('/') + (suffix.isEmpty() ? digest : digest + '.' + suffix);
}

// Copies source into a pending file of folder, hashing the bytes as they are written.
QString copyHashing(QFile& in, Pending& pending, const QString& folder)
{
    QTemporaryFile& out = pending.file();
    if (!out.open()) writeFailed(folder);
    // Readable by whoever may read the catalog, as the database file is (a temporary file
    // would be its owner's alone).
    out.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    pending.adopt(out.fileName());
    QCryptographicHash hash(QCryptographicHash::Md5);
    QByteArray buffer(kChunk, Qt::Uninitialized);
    for (;;) {
        const qint64 got = in.read(buffer.data(), kChunk);
        if (got < 0)
            throw StoreError(Fault::Failed, "cannot read file: " + in.fileName().toStdString());
        if (got == 0) break;
        hash.addData(QByteArrayView(buffer.constData(), got));
        if (out.write(buffer.constData(), got) != got) writeFailed(out.fileName());
    }
    writePoint("stored file");
    if (!syncHandle(out)) writeFailed(out.fileName());
    out.close();
    return QString::fromLatin1(hash.result().toHex());
}

// Moves source into the folder under a pending name and hashes what arrived there.
bool moveHashing(const QString& source, Pending& pending, const QString& folder, QString& digest)
{
    QTemporaryFile& reserve = pending.file();
    if (!reserve.open()) writeFailed(folder);
    const QString path = reserve.fileName();
    reserve.close();
    pending.adopt(path);
    std::error_code failed;
    std::filesystem::rename(std::filesystem::path(source.toStdU16String()),
                            std::filesystem::path(path.toStdU16String()), failed);
    if (failed) return false; // another file system: copied instead
    QFile in(path);
    if (!in.open(QIODevice::ReadWrite)) writeFailed(path);
    QCryptographicHash hash(QCryptographicHash::Md5);
    if (!hash.addData(&in)) writeFailed(path);
    writePoint("stored file");
    if (!syncHandle(in)) writeFailed(path);
    digest = QString::fromLatin1(hash.result().toHex());
    return true;
}

bool isStoredName(const QString& base)
{
    if (base.size() != 32) return false;
    for (QChar c : base)
        if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'))) return false;
    return true;
}

} // namespace

StoredFile storeFile(const QString& folder, const QString& source, bool move)
{
    const QFileInfo info(source);
    if (source.isEmpty() || !info.isFile())
        throw StoreError(Fault::Failed, "cannot read file: " + source.toStdString());
    const QString path = info.absoluteFilePath();
    const QString suffix = info.suffix();
    StoredFile out;
    // A file the folder already holds was named by the digest of its bytes when it was stored.
    if (isStoredName(info.completeBaseName()) &&
        QFileInfo(info.absolutePath()).canonicalFilePath() ==
            QFileInfo(folder).canonicalFilePath()) {
        out.name = info.fileName();
        out.digest = info.completeBaseName();
        return out;
    }
    if (move) {
        Pending pending(folder);
        if (moveHashing(path, pending, folder, out.digest)) {
            out.name = QFileInfo(targetOf(folder, out.digest, suffix)).fileName();
            pending.name(targetOf(folder, out.digest, suffix));
            return out;
        }
    }
    FileKey before;
    const bool keyed = keyOf(path, before);
    if (keyed && knownDigest(path, before, out.digest)) {
        const QString target = targetOf(folder, out.digest, suffix);
        if (QFileInfo(target).isFile()) {
            out.name = QFileInfo(target).fileName();
            if (move) QFile::remove(path);
            return out;
        }
    }
    QFile in(path);
    if (!in.open(QIODevice::ReadOnly))
        throw StoreError(Fault::Failed, "cannot read file: " + source.toStdString());
    Pending pending(folder);
    out.digest = copyHashing(in, pending, folder);
    FileKey after;
    if (keyed && keyOf(path, after) && after == before) remember(path, after, out.digest);
    const QString target = targetOf(folder, out.digest, suffix);
    pending.name(target);
    out.name = QFileInfo(target).fileName();
    if (move) QFile::remove(path);
    return out;
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
