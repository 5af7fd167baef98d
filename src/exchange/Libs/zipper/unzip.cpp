#include "unzip.h"

#include "pathname.h"
#include "ziperror.h"

#include <QFile>
#include <QFileInfo>

#include <zip.h>

#include <algorithm>
#include <memory>

namespace zipper {

namespace {
constexpr std::int64_t chunkSize = 256 * 1024;
// Memory taken for an entry before its bytes arrive: its declared size may be a lie.
constexpr std::int64_t maxReserve = std::int64_t(64) << 20;

struct FileCloser
{
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};

std::size_t nameHash(const QString& normalizedName)
{
    return qHash(QStringView(normalizedName), 0);
}
} // namespace

QString unzip::normalized(QString entryName)
{
    entryName.replace(QLatin1Char('/'), QLatin1Char('\\'));
    return entryName;
}

unzip::unzip(const QString& path, const limits& bounds) : m_path(path), m_limits(bounds)
{
    int code = 0;
    m_zip = zip_open(libzipPath(path).constData(), ZIP_RDONLY, &code);
    if (!m_zip) {
        zip_error_t err;
        zip_error_init_with_code(&err, code);
        const int sys = zip_error_code_system(&err);
        zip_error_fini(&err);
        throw error("Failed to open archive", path.toStdString(), code, sys);
    }
    const zip_int64_t count = zip_get_num_entries(m_zip, 0);
    // The index numbers entries in 32 bits.
    if (count < 0 || count > std::min<std::int64_t>(m_limits.maxEntries, UINT32_MAX)) {
        zip_discard(m_zip);
        m_zip = nullptr;
        throw error("Too many entries in archive", path.toStdString(), ZIP_ER_INCONS, 0);
    }
    // The whole archive may expand no further than one of its entries may: this also holds
    // an entry whose directory claims a compressed size larger than the archive.
    const std::int64_t onDisk = QFileInfo(path).size();
    m_budget = m_limits.maxTotalBytes;
    if (m_limits.maxRatio > 0 && onDisk < (m_budget - m_limits.ratioFloor) / m_limits.maxRatio)
        m_budget = onDisk * m_limits.maxRatio + m_limits.ratioFloor;
    m_index.reserve(size_t(count));
    for (zip_int64_t i = 0; i < count; ++i) {
        const char* name = zip_get_name(m_zip, zip_uint64_t(i), ZIP_FL_ENC_GUESS);
        if (name) m_index.push_back({nameHash(normalized(QString::fromUtf8(name))), uint32_t(i)});
    }
    std::sort(m_index.begin(), m_index.end());
}

unzip::~unzip()
{
    if (m_zip) zip_discard(m_zip);
}

std::optional<std::uint64_t> unzip::find(const QString& entryName) const
{
    const QString key = normalized(entryName);
    const std::size_t hash = nameHash(key);
    auto it = std::lower_bound(m_index.begin(), m_index.end(), Slot{hash, 0});
    std::lock_guard lock(m_mutex);
    for (; it != m_index.end() && it->hash == hash; ++it) {
        const char* name = zip_get_name(m_zip, it->index, ZIP_FL_ENC_GUESS);
        if (name && normalized(QString::fromUtf8(name)) == key) return it->index;
    }
    return std::nullopt;
}

bool unzip::contains(const QString& entryName) const
{
    return find(entryName).has_value();
}

std::int64_t unzip::declaredSize(const QString& entryName) const
{
    const std::optional<std::uint64_t> index = find(entryName);
    if (!index) return -1;
    std::lock_guard lock(m_mutex);
    zip_stat_t st;
    if (zip_stat_index(m_zip, *index, 0, &st) != 0 || !(st.valid & ZIP_STAT_SIZE)) return -1;
    return std::int64_t(st.size);
}

template <class Sink>
void unzip::readEntry(const QString& entryName, std::int64_t maxBytes, Sink&& sink)
{
    const std::string subject = entryName.toStdString();
    const std::optional<std::uint64_t> it = find(entryName);
    if (!it) throw error("No such entry in archive", subject, ZIP_ER_NOENT, 0);
    std::lock_guard lock(m_mutex);
    zip_stat_t st;
    zip_stat_init(&st);
    if (zip_stat_index(m_zip, *it, 0, &st) != 0) {
        zip_error_t* err = zip_get_error(m_zip);
        throw error("Failed to read entry", subject, zip_error_code_zip(err),
                    zip_error_code_system(err));
    }
    const QString stored = QString::fromUtf8(st.name ? st.name : "");
    if (stored.endsWith(QLatin1Char('/'))) throw error("entry.isFile()", subject, ZIP_ER_INVAL, 0);
    const std::int64_t declared = (st.valid & ZIP_STAT_SIZE) ? std::int64_t(st.size) : -1;
    const std::int64_t compressed =
        (st.valid & ZIP_STAT_COMP_SIZE) ? std::int64_t(st.comp_size) : -1;
    if (declared > maxBytes) throw error("Entry is too large", subject, ZIP_ER_INCONS, 0);

    std::unique_ptr<zip_file_t, FileCloser> file(zip_fopen_index(m_zip, *it, 0));
    if (!file) {
        zip_error_t* err = zip_get_error(m_zip);
        throw error("Failed to open entry", subject, zip_error_code_zip(err),
                    zip_error_code_system(err));
    }
    std::unique_ptr<char[]> buffer(new char[chunkSize]);
    std::int64_t total = 0;
    for (;;) {
        // libzip reports a CRC mismatch only on the read after the last byte, so the loop
        // always runs until a read returns 0.
        const zip_int64_t n = zip_fread(file.get(), buffer.get(), zip_uint64_t(chunkSize));
        if (n < 0) {
            zip_error_t* err = zip_file_get_error(file.get());
            throw error("Failed to read entry", subject, zip_error_code_zip(err),
                        zip_error_code_system(err));
        }
        if (n == 0) break;
        total += n;
        const std::int64_t extracted = (m_extracted += n);
        if (declared >= 0 && total > declared)
            throw error("Entry is longer than declared", subject, ZIP_ER_INCONS, 0);
        if (total > maxBytes) throw error("Entry is too large", subject, ZIP_ER_INCONS, 0);
        if (extracted > m_budget)
            throw error("Archive expands beyond the allowed size", m_path.toStdString(),
                        ZIP_ER_INCONS, 0);
        if (total > m_limits.ratioFloor && compressed >= 0 &&
            total > m_limits.maxRatio * std::max<std::int64_t>(compressed, 1))
            throw error("Entry expands beyond the allowed ratio", subject, ZIP_ER_INCONS, 0);
        sink(buffer.get(), n);
    }
    if (declared >= 0 && total != declared)
        throw error("Entry is shorter than declared", subject, ZIP_ER_INCONS, 0);
}

QByteArray unzip::readAll(const QString& entryName, std::int64_t maxBytes)
{
    QByteArray bytes;
    const std::int64_t declared = declaredSize(entryName);
    if (declared > 0 && declared <= maxBytes)
        bytes.reserve(qsizetype(std::min(declared, maxReserve)));
    readEntry(entryName, maxBytes,
              [&bytes](const char* data, std::int64_t n) { bytes.append(data, qsizetype(n)); });
    return bytes;
}

void unzip::read(const QString& entryName, std::int64_t maxBytes,
                 const std::function<void(const char*, std::int64_t)>& sink)
{
    readEntry(entryName, maxBytes, sink);
}

void unzip::check(const QString& entryName)
{
    readEntry(entryName, m_limits.maxTotalBytes, [](const char*, std::int64_t) {});
}

void unzip::extract(const QString& entryName, const QString& targetPath)
{
    QFile target(targetPath);
    if (!target.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw error("Failed to create file", targetPath.toStdString(), ZIP_ER_OPEN, 0);
    try {
        readEntry(entryName, m_limits.maxTotalBytes, [&](const char* data, std::int64_t n) {
            if (target.write(data, n) != n)
                throw error("Failed to write file", targetPath.toStdString(), ZIP_ER_WRITE, 0);
        });
        if (!target.flush())
            throw error("Failed to write file", targetPath.toStdString(), ZIP_ER_WRITE, 0);
        target.close();
    } catch (...) {
        target.close();
        target.remove();
        throw;
    }
}

} // namespace zipper
