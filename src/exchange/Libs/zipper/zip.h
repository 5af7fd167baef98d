#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <map>

struct zip;

namespace zipper {

// Writes a new ZIP archive. Entries are collected first and written when commit() runs into
// a hidden partial archive beside the target (".<name>.part-<pid>.<n>"), renamed over the target
// only on success: an archive that is not committed (an error, a stop, a destroyed object,
// a killed process) leaves whatever was at the target before untouched. Partial archives of
// the same target left by processes that no longer run are removed by the next writer.
//
// Files added from disk are streamed from their paths at commit time; nothing of their
// content is held in memory. Names are stored as UTF-8 with "/" turned into "\".
class zip
{
public:
    // Opens path for writing, replacing its content on commit. Throws zipper::error, also
    // when the target's folder cannot take a file.
    explicit zip(const QString& path);
    ~zip(); // discards everything not committed
    zip(const zip&) = delete;
    zip& operator=(const zip&) = delete;

    // How an entry's content is kept: deflated at the archive's level, or stored as it is
    // (content that is compressed already gains nothing from deflate but its cost).
    enum class Content
    {
        Compress,
        Store
    };

    // Adds the file at sourcePath under entryName. Throws "Failed to add file to archive".
    void addFile(const QString& sourcePath, const QString& entryName,
                 Content content = Content::Compress);
    // Adds a copy of bytes under entryName. Throws "Failed to add file to archive".
    void addBytes(const QByteArray& bytes, const QString& entryName,
                  Content content = Content::Compress);

    // Adds the entry sourceEntry of the committed archive at archivePath under entryName,
    // taking its compressed data as they are: no second deflate. The source archive stays
    // open until this one is committed or discarded. Throws "Failed to add file to archive".
    void addCompressedFrom(const QString& archivePath, const QString& sourceEntry,
                           const QString& entryName);

    // The modification time (seconds since the epoch) given to entries added from now on;
    // without it an entry carries its file's time, or the time it was added. A fixed time
    // makes archives of the same content byte-identical.
    void setEntryTime(qint64 secondsSinceEpoch) { m_entryTime = secondsSinceEpoch; }

    // Deflate level 1..9 for entries added from now on (6 when not set, as zip(1) does);
    // 0 stores them uncompressed.
    void setCompressionLevel(int level) { m_level = level; }

    // Called during commit() with the share written so far (0..1), at most every percent;
    // long commits use it to keep their caller responsive.
    void setCommitProgress(std::function<void(double)> callback);

    // Writes the archive and closes it. Throws zipper::error; the target stays as it was.
    void commit();
    // Drops everything; the target stays as it was.
    void discard();

    bool isOpen() const { return m_zip != nullptr; }

private:
    void finishEntry(long long index, Content content, const QString& entryName);
    void setEntryTimeOf(long long index, const QString& entryName);
    void closeSources();

    struct ::zip* m_zip = nullptr;
    QString m_path;
    QString m_partial;
    int m_level = 6;
    qint64 m_entryTime = -1;
    std::map<QString, struct ::zip*> m_sources;
    std::function<void(double)> m_commitProgress;
};

} // namespace zipper
