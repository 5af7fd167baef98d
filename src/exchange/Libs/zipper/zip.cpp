#include "zip.h"

#include "pathname.h"
#include "unzip.h"
#include "ziperror.h"

#include "exchange/workfolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>

#include <zip.h>

namespace zipper {

namespace {
[[noreturn]] void fail(const char* what, const QString& subject, zip_error_t* err)
{
    throw error(what, subject.toStdString(), err ? zip_error_code_zip(err) : 0,
                err ? zip_error_code_system(err) : 0);
}

} // namespace

zip::zip(const QString& path) : m_path(path)
{
    const QFileInfo target(path);
    // The partial archive beside the target: hidden on Unix, named after the target and the
    // writing process, unique within the process too (two writers of one target never share
    // one). libzip writes its own temporary file next to it ("<partial>.XXXXXX"). What ended
    // processes left is swept by the exports and imports themselves.
    static std::atomic<unsigned> serial{0};
    m_partial = target.absoluteDir().filePath(exchange::partialPrefix(target.fileName()) +
                                              QString::number(QCoreApplication::applicationPid()) +
                                              QLatin1Char('.') + QString::number(++serial));
    // libzip creates nothing before the archive is closed: a folder that cannot take the
    // archive is found now, before the work, not after it.
    {
        QFile probe(m_partial);
        if (!probe.open(QIODevice::WriteOnly | QIODevice::Truncate))
            throw error("Failed to create archive", path.toStdString(), ZIP_ER_OPEN, errno);
        probe.close();
        probe.remove();
    }
    int code = 0;
    m_zip = zip_open(libzipPath(m_partial).constData(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!m_zip) {
        zip_error_t err;
        zip_error_init_with_code(&err, code);
        const int sys = zip_error_code_system(&err);
        zip_error_fini(&err);
        throw error("Failed to create archive", path.toStdString(), code, sys);
    }
}

zip::~zip()
{
    discard();
}

void zip::finishEntry(long long index, Content content, const QString& entryName)
{
    const zip_uint64_t at = zip_uint64_t(index);
    // libzip's own default is the slowest level; match what zip(1) writes by default.
    const bool stored = m_level <= 0 || content == Content::Store;
    const int set =
        stored ? zip_set_file_compression(m_zip, at, ZIP_CM_STORE, 0)
               : zip_set_file_compression(m_zip, at, ZIP_CM_DEFLATE, zip_uint32_t(m_level));
    if (set != 0) fail("Failed to add file to archive", entryName, zip_get_error(m_zip));
    setEntryTimeOf(index, entryName);
}

void zip::setEntryTimeOf(long long index, const QString& entryName)
{
    if (m_entryTime >= 0 &&
        zip_file_set_mtime(m_zip, zip_uint64_t(index), time_t(m_entryTime), 0) != 0)
        fail("Failed to add file to archive", entryName, zip_get_error(m_zip));
}

void zip::addCompressedFrom(const QString& archivePath, const QString& sourceEntry,
                            const QString& entryName)
{
    if (!m_zip)
        throw error("Failed to add file to archive", entryName.toStdString(), ZIP_ER_INVAL, 0);
    struct ::zip*& from = m_sources[archivePath];
    if (!from) {
        int code = 0;
        from = zip_open(libzipPath(archivePath).constData(), ZIP_RDONLY, &code);
        if (!from) {
            m_sources.erase(archivePath);
            throw error("Failed to add file to archive", archivePath.toStdString(), code, 0);
        }
    }
    const QByteArray sourceName = unzip::normalized(sourceEntry).toUtf8();
    const zip_int64_t at = zip_name_locate(from, sourceName.constData(), 0);
    if (at < 0) fail("Failed to add file to archive", sourceEntry, zip_get_error(from));
    zip_source_t* source = zip_source_zip(m_zip, from, zip_uint64_t(at), ZIP_FL_COMPRESSED, 0, -1);
    if (!source) fail("Failed to add file to archive", sourceEntry, zip_get_error(m_zip));
    const QByteArray name = unzip::normalized(entryName).toUtf8();
    const zip_int64_t index = zip_file_add(m_zip, name.constData(), source, ZIP_FL_ENC_UTF_8);
    if (index < 0) {
        zip_source_free(source);
        fail("Failed to add file to archive", entryName, zip_get_error(m_zip));
    }
    // The entry keeps the method its data were written with, so nothing is recompressed.
    zip_stat_t st;
    zip_stat_init(&st);
    if (zip_stat_index(from, zip_uint64_t(at), 0, &st) != 0 || !(st.valid & ZIP_STAT_COMP_METHOD) ||
        zip_set_file_compression(m_zip, zip_uint64_t(index), zip_int32_t(st.comp_method), 0) != 0)
        fail("Failed to add file to archive", entryName, zip_get_error(m_zip));
    setEntryTimeOf(index, entryName);
}

void zip::closeSources()
{
    for (auto& [path, from] : m_sources)
        zip_discard(from);
    m_sources.clear();
}

void zip::addFile(const QString& sourcePath, const QString& entryName, Content content)
{
    if (!m_zip)
        throw error("Failed to add file to archive", entryName.toStdString(), ZIP_ER_INVAL, 0);
    zip_source_t* source = zip_source_file(m_zip, libzipPath(sourcePath).constData(), 0, -1);
    if (!source) fail("Failed to add file to archive", sourcePath, zip_get_error(m_zip));
    const QByteArray name = unzip::normalized(entryName).toUtf8();
    const zip_int64_t index = zip_file_add(m_zip, name.constData(), source, ZIP_FL_ENC_UTF_8);
    if (index < 0) {
        zip_source_free(source);
        fail("Failed to add file to archive", entryName, zip_get_error(m_zip));
    }
    finishEntry(index, content, entryName);
}

void zip::addBytes(const QByteArray& bytes, const QString& entryName, Content content)
{
    if (!m_zip)
        throw error("Failed to add file to archive", entryName.toStdString(), ZIP_ER_INVAL, 0);
    // libzip keeps the buffer until commit, so it gets a copy it frees itself.
    void* copy = nullptr;
    if (!bytes.isEmpty()) {
        copy = std::malloc(size_t(bytes.size()));
        if (!copy)
            throw error("Failed to add file to archive", entryName.toStdString(), ZIP_ER_MEMORY, 0);
        std::memcpy(copy, bytes.constData(), size_t(bytes.size()));
    }
    zip_source_t* source = zip_source_buffer(m_zip, copy, zip_uint64_t(bytes.size()), 1);
    if (!source) {
        std::free(copy);
        fail("Failed to add file to archive", entryName, zip_get_error(m_zip));
    }
    const QByteArray name = unzip::normalized(entryName).toUtf8();
    const zip_int64_t index = zip_file_add(m_zip, name.constData(), source, ZIP_FL_ENC_UTF_8);
    if (index < 0) {
        zip_source_free(source);
        fail("Failed to add file to archive", entryName, zip_get_error(m_zip));
    }
    finishEntry(index, content, entryName);
}

void zip::setCommitProgress(std::function<void(double)> callback)
{
    m_commitProgress = std::move(callback);
    if (!m_zip) return;
    if (m_commitProgress)
        zip_register_progress_callback_with_state(
            m_zip, 0.01,
            [](zip_t*, double share, void* self) {
                static_cast<zip*>(self)->m_commitProgress(share);
            },
            nullptr, this);
    else
        zip_register_progress_callback_with_state(m_zip, 0.01, nullptr, nullptr, nullptr);
}

void zip::commit()
{
    if (!m_zip) throw error("Failed to write archive", m_path.toStdString(), ZIP_ER_INVAL, 0);
    // libzip writes no file for an archive without entries: the target then goes, as it
    // would have had libzip written it in place.
    const bool empty = zip_get_num_entries(m_zip, 0) == 0;
    if (zip_close(m_zip) != 0) {
        zip_error_t* err = zip_get_error(m_zip);
        const int ze = zip_error_code_zip(err);
        const int se = zip_error_code_system(err);
        discard();
        throw error("Failed to write archive", m_path.toStdString(), ze, se);
    }
    m_zip = nullptr;
    closeSources();
    std::error_code ec;
    const std::filesystem::path partial = fsPath(m_partial);
    const std::filesystem::path target = fsPath(m_path);
    if (empty) {
        std::filesystem::remove(target, ec);
        return;
    }
    // One rename replaces the target whole, on Windows as well.
    std::filesystem::rename(partial, target, ec);
    if (ec) {
        const int system = ec.value();
        std::filesystem::remove(partial, ec);
        throw error("Failed to write archive", m_path.toStdString(), ZIP_ER_RENAME, system);
    }
}

void zip::discard()
{
    if (m_zip) {
        zip_discard(m_zip);
        m_zip = nullptr;
    }
    closeSources();
}

} // namespace zipper
