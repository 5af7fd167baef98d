#include "importarchive.h"

#include "Libs/zipper/unzip.h"
#include "Libs/zipper/ziperror.h"
#include "archivekind.h"
#include "document.h"
#include "elementstore.h"
#include "exchangetexts.h"
#include "workfolder.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace exchange {

namespace {

const QString folderPrefix = QString::fromUtf16(importFolderPrefix);

QString safeSuffix(const QString& entryName)
{
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9]{1,10}$"));
    const QString name = entryName.section(QLatin1Char('\\'), -1).section(QLatin1Char('/'), -1);
    const int dot = int(name.lastIndexOf(QLatin1Char('.')));
    if (dot < 0) return {};
    const QString suffix = name.mid(dot + 1);
    return plain.match(suffix).hasMatch() ? QLatin1Char('.') + suffix : QString();
}

// Thrown out of the archive's read once the feed has given up on the document.
struct FeedGaveUp
{
};

// Thrown out of the reading when the element store refuses an element.
struct StoreFailed
{
};

} // namespace

// How many records the prefetch may run ahead of the writes: far enough to keep the writer
// from ever waiting, near enough that a paused or stopped import leaves little done for
// nothing.
constexpr size_t prefetchLead = 256;

struct ImportArchive::Private
{
    struct Entry
    {
        enum State
        {
            Busy,
            Done,
            Failed
        } state = Busy;
        QString path;
        int zipError = 0;
        int systemError = 0;
    };

    std::unique_ptr<zipper::unzip> zip;
    std::unique_ptr<QTemporaryDir> folder;
    ElementStore store;
    qint64 storeLimit = -1;
    // Guards everything below; changed is signalled when an entry is finished, the writes
    // advance or the prefetch is told to stop.
    std::mutex mutex;
    std::condition_variable changed;
    QHash<QString, Entry> entries;
    int counter = 0;
    int extracted = 0;
    size_t writesAt = 0;
    bool stopping = false;
    std::thread prefetcher;
    std::function<QString(const QString&)> handOver;

    // Marks key as being extracted and gives the path it goes to. Called locked.
    QString claim(const QString& key)
    {
        if (!makeFolder())
            throw zipper::error("Failed to create folder", QDir::tempPath().toStdString(), 0, 0);
        entries.insert(key, Entry{});
        return folder->filePath(QStringLiteral("file") + QString::number(++counter) +
                                safeSuffix(key));
    }

    // The temporary folder of this import, made on first use; false when it cannot be.
    bool makeFolder()
    {
        if (folder) return true;
        auto made =
            std::make_unique<QTemporaryDir>(workFolderTemplate(QDir::tempPath(), folderPrefix));
        if (!made->isValid()) return false;
        folder = std::move(made);
        return true;
    }

    // Extracts key (claimed) into path and records the outcome; rethrows a damaged entry's
    // error. Called unlocked, from the prefetch or from a write.
    void run(const QString& key, const QString& path, bool handing)
    {
        Entry done;
        try {
            zip->extract(key, path);
            done.state = Entry::Done;
            done.path = path;
            if (handing && handOver) {
                const QString moved = handOver(path);
                if (!moved.isEmpty()) done.path = moved;
            }
        } catch (const zipper::error& e) {
            done.state = Entry::Failed;
            done.zipError = e.zipError();
            done.systemError = e.systemError();
            finish(key, done);
            throw;
        }
        finish(key, done);
    }

    void finish(const QString& key, const Entry& done)
    {
        {
            std::lock_guard lock(mutex);
            entries.insert(key, done);
            if (done.state == Entry::Done) ++extracted;
        }
        changed.notify_all();
    }
};

ImportArchive::ImportArchive() : d(std::make_unique<Private>())
{}

ImportArchive::~ImportArchive()
{
    stopPrefetch();
    d->zip.reset();
    d->folder.reset();
}

ImportArchive::Status ImportArchive::open(const QString& path, es_provider_t* target)
{
    return open(path, archiveKey(target));
}

ImportArchive::Status ImportArchive::open(const QString& path, const QString& key)
{
    m_records.clear();
    m_header = {};
    stopPrefetch();
    const qint64 storeLimit = d->storeLimit;
    d = std::make_unique<Private>();
    d->storeLimit = storeLimit;
    m_status = Status::NotExportFile;
    m_detail.clear();
    sweepLeftovers(QFileInfo(path).absolutePath());

    std::optional<DocumentHeader> header;
    try {
        d->zip = std::make_unique<zipper::unzip>(path);
        const QString name = key + QStringLiteral(".json");
        if (key.isEmpty() || !d->zip->contains(name)) {
            qDebug().noquote() << texts::jsonMissing();
            for (int kind = 0; !archiveKey(kind).isEmpty(); ++kind) {
                const QString other = archiveKey(kind);
                if (other != key && d->zip->contains(other + QStringLiteral(".json")))
                    m_detail = texts::otherKind(other, key);
            }
            return m_status;
        }
        if (!startStore()) return m_status = Status::TemporaryFailed;
        header = readDocument(name);
        if (header && !d->store.flush()) throw StoreFailed();
    } catch (const StoreFailed&) {
        m_records.clear();
        m_detail = d->store.errorText();
        return m_status = Status::TemporaryFailed;
    } catch (const std::exception& e) {
        m_records.clear();
        m_detail = QString::fromUtf8(e.what());
        d->zip.reset();
        return m_status;
    }
    if (!header) {
        m_records.clear();
        return m_status;
    }
    m_header = std::move(*header);
    if (m_records.empty()) return m_status = Status::NoElements;
    if (m_header.libName != key) return m_status = Status::OtherLibrary;
    return m_status = Status::Ok;
}

bool ImportArchive::startStore()
{
    m_records.clear();
    if (!d->makeFolder()) {
        m_detail = texts::folderNotCreated();
        return false;
    }
    d->store.setLimit(d->storeLimit);
    if (d->store.open(d->folder->filePath(QStringLiteral("elements")))) return true;
    m_detail = d->store.errorText();
    return false;
}

// The document read as it is inflated, never held whole, each element going to the store as
// its batch is read; a document the feed does not read (not of the writer's plain form, or
// with an error) is read again whole, which says what is wrong.
std::optional<DocumentHeader> ImportArchive::readDocument(const QString& name)
{
    TextPool pool;
    auto keep = [this, &pool](ImportElement&& element) {
        ImportRecord record = ImportRecord::of(element);
        if (!d->store.append(element, record)) throw StoreFailed();
        pool.compact(record);
        m_records.push_back(std::move(record));
    };
    {
        DocumentFeed feed(keep);
        try {
            d->zip->read(name, maxDocumentSize, [&feed](const char* data, std::int64_t size) {
                if (!feed.feed(data, size_t(size))) throw FeedGaveUp();
            });
            if (std::optional<ParsedDocument> doc = feed.finish()) return std::move(doc->header);
        } catch (const FeedGaveUp&) {
        }
    }
    if (!startStore()) throw StoreFailed();
    std::optional<ParsedDocument> doc = parseDocument(d->zip->readAll(name, maxDocumentSize));
    if (!doc) return std::nullopt;
    for (ImportElement& element : doc->records) {
        keep(std::move(element));
        element = ImportElement();
    }
    return std::move(doc->header);
}

ImportElement ImportArchive::element(const ImportRecord& record) const
{
    return d->store.read(record);
}

void ImportArchive::setStoreLimit(qint64 bytes)
{
    d->storeLimit = bytes;
}

QString ImportArchive::errorText() const
{
    switch (m_status) {
    case Status::Ok:
        return {};
    case Status::NotExportFile:
        return texts::notExportFile();
    case Status::NoElements:
        return texts::noElements();
    case Status::OtherLibrary:
        return texts::otherLibrary();
    case Status::TemporaryFailed:
        return texts::temporaryFailed(QDir::toNativeSeparators(QDir::tempPath()));
    }
    return {};
}

void ImportArchive::setHandOver(std::function<QString(const QString& path)> handOver)
{
    stopPrefetch();
    d->handOver = std::move(handOver);
}

QString ImportArchive::extract(const QString& entryName, bool handOver)
{
    if (entryName.isEmpty() || !d->zip) return {};
    const QString key = zipper::unzip::normalized(entryName);
    std::unique_lock lock(d->mutex);
    bool present = false;
    for (;;) {
        const auto it = d->entries.constFind(key);
        if (it == d->entries.cend()) {
            if (present) break;
            // The document's names never decide where a file lands: only names it may refer
            // to are looked up at all, and the file gets a generated name in this import's
            // folder. Asked unlocked: the archive answers between the prefetch's reads.
            lock.unlock();
            if (!isSafeEntryName(key) || !d->zip->contains(key)) return {};
            present = true;
            lock.lock();
            continue;
        }
        if (it->state == Private::Entry::Done) return it->path;
        if (it->state == Private::Entry::Failed)
            throw zipper::error("Failed to extract entry", key.toStdString(), it->zipError,
                                it->systemError);
        d->changed.wait(lock);
    }
    const QString path = d->claim(key);
    lock.unlock();
    d->run(key, path, handOver);
    lock.lock();
    return d->entries.value(key).path;
}

void ImportArchive::prefetch(size_t count, PrefetchList entriesOf)
{
    stopPrefetch();
    if (!d->zip || count == 0 || !entriesOf) return;
    {
        std::lock_guard lock(d->mutex);
        d->stopping = false;
        d->writesAt = 0;
    }
    d->prefetcher = std::thread([d = d.get(), count, entriesOf = std::move(entriesOf)] {
        for (size_t record = 0; record < count; ++record) {
            {
                std::unique_lock lock(d->mutex);
                d->changed.wait(lock,
                                [&] { return d->stopping || record < d->writesAt + prefetchLead; });
                if (d->stopping) return;
            }
            std::vector<Prefetch> entries;
            try {
                entries = entriesOf(record);
            } catch (const std::exception& e) {
                qDebug() << e.what();
                return;
            }
            for (const Prefetch& entry : entries) {
                const QString key = zipper::unzip::normalized(entry.entryName);
                if (key.isEmpty() || !isSafeEntryName(key)) continue;
                {
                    std::lock_guard lock(d->mutex);
                    if (d->stopping) return;
                    if (d->entries.contains(key)) continue;
                }
                if (!d->zip->contains(key)) continue;
                QString path;
                {
                    std::lock_guard lock(d->mutex);
                    if (d->stopping) return;
                    if (d->entries.contains(key)) continue;
                    try {
                        path = d->claim(key);
                    } catch (const zipper::error& e) {
                        qDebug() << e.what();
                        return;
                    }
                }
                try {
                    d->run(key, path, entry.handOver);
                } catch (const zipper::error&) {
                    // Remembered: the write that needs the entry fails with it.
                }
            }
        }
    });
}

void ImportArchive::advance(size_t record)
{
    {
        std::lock_guard lock(d->mutex);
        d->writesAt = record;
    }
    d->changed.notify_all();
}

void ImportArchive::stopPrefetch()
{
    if (!d || !d->prefetcher.joinable()) return;
    {
        std::lock_guard lock(d->mutex);
        d->stopping = true;
    }
    d->changed.notify_all();
    d->prefetcher.join();
}

// An entry read into memory is held whole: bounded like the document itself.
constexpr qint64 maxEntryBytes = maxDocumentSize;

std::optional<QByteArray> ImportArchive::read(const QString& entryName)
{
    if (entryName.isEmpty() || !d->zip) return std::nullopt;
    const QString key = zipper::unzip::normalized(entryName);
    if (!isSafeEntryName(key) || !d->zip->contains(key)) return std::nullopt;
    return d->zip->readAll(key, maxEntryBytes);
}

bool ImportArchive::check(const QString& entryName)
{
    if (entryName.isEmpty() || !d->zip) return false;
    const QString key = zipper::unzip::normalized(entryName);
    if (!isSafeEntryName(key) || !d->zip->contains(key)) return false;
    d->zip->check(key);
    return true;
}

int ImportArchive::extractedCount() const
{
    std::lock_guard lock(d->mutex);
    return d->extracted;
}

QString ImportArchive::temporaryFolder() const
{
    std::lock_guard lock(d->mutex);
    return d->folder ? d->folder->path() : QString();
}

} // namespace exchange
