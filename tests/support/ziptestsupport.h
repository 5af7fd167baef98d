#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <cstdint>
#include <utility>

#ifdef Q_OS_LINUX
#include <sys/resource.h>
#include <unistd.h>
#endif

// Byte-level damage of ZIP files written by the archive layer, for tests of the reader.
namespace ziptest {

inline QByteArray readFile(const QString& path)
{
    QFile f(path);
    f.open(QIODevice::ReadOnly);
    return f.readAll();
}

inline void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    f.open(QIODevice::WriteOnly | QIODevice::Truncate);
    f.write(bytes);
}

inline quint32 get32(const QByteArray& b, qsizetype at)
{
    return quint32(quint8(b[at])) | quint32(quint8(b[at + 1])) << 8 |
           quint32(quint8(b[at + 2])) << 16 | quint32(quint8(b[at + 3])) << 24;
}
inline quint16 get16(const QByteArray& b, qsizetype at)
{
    return quint16(quint8(b[at]) | quint8(b[at + 1]) << 8);
}
inline void put32(QByteArray& b, qsizetype at, quint32 v)
{
    for (int i = 0; i < 4; ++i)
        b[at + i] = char((v >> (8 * i)) & 0xff);
}

// Sets the 32-bit field at localAt of entry `name`'s local header and at centralAt of its
// central header.
inline bool setField(QByteArray& zip, const QByteArray& name, qsizetype localAt,
                     qsizetype centralAt, quint32 value)
{
    bool found = false;
    for (qsizetype i = 0; i + 46 < zip.size(); ++i) {
        const quint32 sig = get32(zip, i);
        if (sig == 0x04034b50 && zip.mid(i + 30, get16(zip, i + 26)) == name) {
            put32(zip, i + localAt, value);
            found = true;
        } else if (sig == 0x02014b50 && zip.mid(i + 46, get16(zip, i + 28)) == name) {
            put32(zip, i + centralAt, value);
            found = true;
        }
    }
    return found;
}

// Sets the declared uncompressed size of entry `name` in its local and central headers.
inline bool setDeclaredSize(QByteArray& zip, const QByteArray& name, quint32 size)
{
    return setField(zip, name, 22, 24, size);
}

// Sets the compressed size of entry `name` in its local and central headers.
inline bool setCompressedSize(QByteArray& zip, const QByteArray& name, quint32 size)
{
    return setField(zip, name, 18, 20, size);
}

// The compressed size of entry `name` as its central header gives it, -1 when there is none.
inline qint64 compressedSize(const QByteArray& zip, const QByteArray& name)
{
    for (qsizetype i = 0; i + 46 < zip.size(); ++i)
        if (get32(zip, i) == 0x02014b50 && zip.mid(i + 46, get16(zip, i + 28)) == name)
            return get32(zip, i + 20);
    return -1;
}

// Where the data of the first entry whose local header is named `name` starts, and its
// compressed size; {-1, 0} when there is none.
inline std::pair<qsizetype, quint32> entryData(const QByteArray& zip, const QByteArray& name)
{
    for (qsizetype i = zip.indexOf("PK\x03\x04"); i >= 0 && i + 30 < zip.size();
         i = zip.indexOf("PK\x03\x04", i + 4)) {
        if (zip.mid(i + 30, get16(zip, i + 26)) == name)
            return {i + 30 + get16(zip, i + 26) + get16(zip, i + 28), get32(zip, i + 18)};
    }
    return {-1, 0};
}

// Flips one byte of the (stored) content `marker` inside the file.
inline bool damage(QByteArray& zip, const QByteArray& marker)
{
    const qsizetype at = zip.indexOf(marker);
    if (at < 0) return false;
    zip[at] = char(zip[at] ^ 0x20);
    return true;
}

// For its lifetime, the process may take no more address space than it has now plus headroom:
// an allocation beyond that fails even on a machine with memory to spare.
class AddressSpaceCeiling
{
public:
    explicit AddressSpaceCeiling(qint64 headroom)
    {
#ifdef Q_OS_LINUX
        QFile statm("/proc/self/statm");
        if (!statm.open(QIODevice::ReadOnly) || getrlimit(RLIMIT_AS, &m_saved) != 0) return;
        const qint64 pages = statm.readAll().split(' ').value(0).toLongLong();
        rlimit lowered = m_saved;
        lowered.rlim_cur = rlim_t(pages * sysconf(_SC_PAGESIZE) + headroom);
        m_active =
            pages > 0 && lowered.rlim_cur < m_saved.rlim_cur && setrlimit(RLIMIT_AS, &lowered) == 0;
#else
        Q_UNUSED(headroom);
#endif
    }
    ~AddressSpaceCeiling()
    {
#ifdef Q_OS_LINUX
        if (m_active) setrlimit(RLIMIT_AS, &m_saved);
#endif
    }
    AddressSpaceCeiling(const AddressSpaceCeiling&) = delete;
    AddressSpaceCeiling& operator=(const AddressSpaceCeiling&) = delete;
    bool active() const
    {
        return m_active;
    }

private:
    bool m_active = false;
#ifdef Q_OS_LINUX
    rlimit m_saved{};
#endif
};

} // namespace ziptest
