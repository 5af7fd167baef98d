#include "exportuss.h"

#include "Libs/zipper/zip.h"
#include "archivekind.h"
#include "document.h"
#include "exchangetexts.h"
#include "fileregistry.h"
#include "workfolder.h"

#include <catalog/catalog_tree.h>
#include <catalog/notify.h>

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <optional>

namespace exchange {

namespace {

void collectFolder(es_folder_t* folder, std::vector<es_stdsize_t*>& out)
{
    es_table_t* table = folder_GetTable(folder);
    const uint32_t count = table_GetStdSizeCount(table);
    for (uint32_t i = 0; i < count; ++i)
        if (es_stdsize_t* element = table_GetStdSize(table, i)) out.push_back(element);
    const uint32_t children = folder_GetChildFolderCount(folder);
    for (uint32_t i = 0; i < children; ++i)
        collectFolder(folder_GetChildFolder(folder, i), out);
}

} // namespace

std::vector<es_stdsize_t*> collectElements(es_provider_t* provider)
{
    std::vector<es_stdsize_t*> out;
    const uint32_t count = provider_GetPacketCount(provider);
    for (uint32_t i = 0; i < count; ++i)
        collectFolder(packet_GetRootFolder(provider_GetPacket(provider, i)), out);
    return out;
}

} // namespace exchange

using namespace exchange;

namespace {

const QString folderPrefix = QString::fromUtf16(exportFolderPrefix);

// Closes the indicator and removes the working folder however the export ends, and the
// shared parent with it when no other export is using it.
class ExportSession
{
public:
    explicit ExportSession(edw::IProgress& progress) : m_progress(progress) {}
    ~ExportSession()
    {
        m_progress.end();
        if (m_folder.isEmpty()) return;
        QDir(m_folder).removeRecursively();
        QDir().rmdir(QFileInfo(m_folder).absolutePath());
    }
    void setFolder(const QString& folder) { m_folder = folder; }

private:
    edw::IProgress& m_progress;
    QString m_folder;
};

} // namespace

namespace {

// Entries below this size are stored uncompressed.
constexpr qint64 smallEntry = 512;

zipper::zip::Content contentOf(qint64 size)
{
    return size < smallEntry ? zipper::zip::Content::Store : zipper::zip::Content::Compress;
}

// A file deflated into one of the part archives.
struct PartEntry
{
    QString source;
    QString entry;
    qint64 size = 0;
};

// Two lists of about the same bytes: the largest first, each to the lighter list. The same
// entries always give the same split, so the archive stays reproducible.
std::array<std::vector<const PartEntry*>, 2> splitInTwo(const std::vector<PartEntry>& entries)
{
    std::vector<const PartEntry*> order;
    for (const PartEntry& entry : entries)
        order.push_back(&entry);
    std::stable_sort(order.begin(), order.end(),
                     [](const PartEntry* a, const PartEntry* b) { return a->size > b->size; });
    std::array<std::vector<const PartEntry*>, 2> split;
    std::array<qint64, 2> bytes{0, 0};
    for (const PartEntry* entry : order) {
        const int p = bytes[1] < bytes[0] ? 1 : 0;
        split[p].push_back(entry);
        bytes[p] += entry->size;
    }
    return split;
}

} // namespace

QString ExportUss::workingFolder()
{
    std::error_code ec;
    const std::filesystem::path temp = std::filesystem::temp_directory_path(ec);
    const QString base = ec ? QDir::tempPath() : QString::fromStdString(temp.string());
    return QDir(base).filePath(QStringLiteral("uss_export"));
}

bool ExportUss::Export(const QString& path, const std::vector<es_stdsize_t*>& elements,
                       bool previousVersion)
{
    return Export(path, elements, previousVersion, edw::nullProgress());
}

bool ExportUss::Export(const QString& path, const std::vector<es_stdsize_t*>& elements,
                       bool previousVersion, edw::IProgress& progress, const Options& options)
{
    if (elements.empty()) return false;
    const QString key = archiveKey(edw::providerOf(elements.front()));
    const int range = int(elements.size()) * 2;

    progress.begin(texts::exportCaption(), range);
    ExportSession session(progress);

    // An archive the import would refuse is never written: it would look like a backup and
    // bring nothing back.
    if (qint64(elements.size()) > maxDocumentElements) {
        qDebug().noquote() << "export: more than" << maxDocumentElements
                           << "elements in one archive";
        edw::messenger().critical(QString(), texts::jsonFailed());
        return false;
    }

    // Each export works in a folder of its own under the shared parent, so exports running
    // at the same time (other threads, other processes) never touch each other's files.
    const QString parent = workingFolder();
    sweepLeftovers(QFileInfo(path).absolutePath());
    // Another export that ends may remove the empty parent between the two steps: try again.
    std::optional<QTemporaryDir> own;
    for (int attempt = 0; attempt < 3 && !(own && own->isValid()); ++attempt) {
        QDir().mkpath(parent);
        own.emplace(workFolderTemplate(parent, folderPrefix));
    }
    if (!own->isValid()) {
        qDebug() << "export working folder:" << own->errorString();
        edw::messenger().critical(QString(), texts::jsonFailed());
        return false;
    }
    // The session removes it however the export ends, after the archive has been written.
    own->setAutoRemove(false);
    const QString folder = own->path();
    session.setFolder(folder);

    FileRegistry registry(key, previousVersion, folder);

    QElapsedTimer sinceKeepAlive;
    sinceKeepAlive.start();
    auto keepAlive = [&] {
        if (sinceKeepAlive.elapsed() > 3000) {
            progress.keepAlive();
            sinceKeepAlive.restart();
        }
    };

    // One moment for the whole export: the document's header and every entry's time, so
    // that exports of the same catalog at the same moment are byte-identical.
    const QString dateFormat = QStringLiteral("yyyy.MM.dd HH:mm:ss");
    QDateTime moment = QDateTime::currentDateTimeUtc();
    QString exportDate = moment.toString(dateFormat);
    if (!options.exportDate.isEmpty()) {
        exportDate = options.exportDate;
        const QDateTime given = QDateTime::fromString(exportDate, dateFormat);
        if (given.isValid()) moment = QDateTime(given.date(), given.time(), Qt::UTC);
    }

    // The archive first: a target folder that cannot take it is told before any work.
    std::unique_ptr<zipper::zip> archive;
    try {
        archive = std::make_unique<zipper::zip>(path);
        archive->setCompressionLevel(options.compressionLevel);
        archive->setEntryTime(moment.toSecsSinceEpoch());
    } catch (const std::exception& e) {
        qDebug() << e.what();
        edw::messenger().critical(QString(), texts::archiveFailed());
        return false;
    }

    double position = 0.0;
    // The document goes to a file of the working folder and is streamed into the archive
    // like every other file: its size never has to fit in memory.
    const QString documentPath = QDir(folder).filePath(QStringLiteral("document.json"));
    const bool written = writeDocumentFile(
        documentPath, key, elements, registry,
        [&](int index) {
            // Only odd indexes advance: this phase fills about a quarter of the range, and
            // the file phase spreads the rest from where this one stopped.
            if (index % 2 == 1) position += 1.0;
            progress.setValue(int(position));
            keepAlive();
        },
        exportDate);
    if (!written) {
        edw::messenger().critical(QString(), texts::jsonFailed());
        return false;
    }
    if (QFileInfo(documentPath).size() > maxDocumentSize) {
        qDebug().noquote() << "export: the document exceeds" << maxDocumentSize << "bytes";
        edw::messenger().critical(QString(), texts::jsonFailed());
        return false;
    }

    const QString documentEntry = key + QStringLiteral(".json");
    const auto& records = registry.records();
    // A stored file that has gone is named with its element, before any entry is written.
    for (const auto& [digest, record] : records) {
        if (record.sourcePath.isEmpty() || QFileInfo(record.sourcePath).isFile()) continue;
        edw::messenger().critical(QString(),
                                  texts::fileMissing(record.packet, record.id, record.sourcePath));
        return false;
    }

    // The large entries are deflated on two threads into two part archives of the working
    // folder; the archive then takes their compressed data as they are. Deflate is most of
    // an export's time and the parts keep both processors busy.
    std::map<QString, QString> partOf; // entry name -> part archive
    if (options.compressionLevel > 0) {
        std::vector<PartEntry> large{{documentPath, documentEntry, QFileInfo(documentPath).size()}};
        for (const auto& [digest, record] : records) {
            if (record.sourcePath.isEmpty()) continue;
            const qint64 size = QFileInfo(record.sourcePath).size();
            if (contentOf(size) == zipper::zip::Content::Compress)
                large.push_back({record.sourcePath, record.entry, size});
        }
        const std::array<QString, 2> parts{QDir(folder).filePath(QStringLiteral("part1.zip")),
                                           QDir(folder).filePath(QStringLiteral("part2.zip"))};
        const auto split = splitInTwo(large);
        // Each part tells its own failure: the one holding the document fails as the
        // document's entry would have.
        std::array<QString, 2> failure;
        auto writePart = [&](int p, bool keepingAlive) {
            try {
                zipper::zip part(parts[p]);
                part.setCompressionLevel(options.compressionLevel);
                for (const PartEntry* entry : split[p])
                    part.addFile(entry->source, entry->entry);
                if (keepingAlive) part.setCommitProgress([&](double) { keepAlive(); });
                part.commit();
            } catch (const std::exception& e) {
                failure[p] = QString::fromUtf8(e.what());
            }
        };
        std::future<void> second = std::async(std::launch::async, [&] { writePart(1, false); });
        writePart(0, true);
        second.wait();
        for (int p = 0; p < 2; ++p) {
            if (failure[p].isEmpty()) continue;
            qDebug().noquote() << failure[p];
            const bool holdsDocument =
                std::any_of(split[p].begin(), split[p].end(),
                            [&](const PartEntry* entry) { return entry->entry == documentEntry; });
            if (holdsDocument) edw::messenger().critical(QString(), texts::jsonAddFailed());
            return false;
        }
        for (int p = 0; p < 2; ++p)
            for (const PartEntry* entry : split[p])
                partOf[entry->entry] = parts[p];
    }

    try {
        if (partOf.count(documentEntry))
            archive->addCompressedFrom(partOf[documentEntry], documentEntry, documentEntry);
        else
            archive->addFile(documentPath, documentEntry);
    } catch (const std::exception& e) {
        qDebug() << e.what();
        edw::messenger().critical(QString(), texts::jsonAddFailed());
        return false;
    }

    const double step =
        records.empty() ? 0.0 : (range - position) / (2.0 * double(records.size())) + 0.001;
    try {
        for (const auto& [digest, record] : records) {
            // Deflating a few hundred bytes saves a few dozen and costs a whole compressor
            // setup: small entries, such as the representations, are stored as they are.
            if (const auto part = partOf.find(record.entry); part != partOf.end())
                archive->addCompressedFrom(part->second, record.entry, record.entry);
            else if (!record.sourcePath.isEmpty())
                archive->addFile(record.sourcePath, record.entry,
                                 contentOf(QFileInfo(record.sourcePath).size()));
            else
                archive->addBytes(record.content, record.entry, contentOf(record.content.size()));
            position += step;
            progress.setValue(int(position));
            // Icons are PNG pictures, compressed already.
            if (!record.icon.isEmpty())
                archive->addBytes(record.icon, record.iconEntry, zipper::zip::Content::Store);
            position += step;
            progress.setValue(int(position));
            keepAlive();
        }
        // The files are compressed while the archive is written out.
        archive->setCommitProgress([&](double) { keepAlive(); });
        archive->commit();
    } catch (const std::exception& e) {
        qDebug() << e.what();
        return false;
    }
    return true;
}
