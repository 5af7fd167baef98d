#include "importarchive.h"

#include "Libs/zipper/unzip.h"
#include "Libs/zipper/ziperror.h"
#include "archivekind.h"
#include "document.h"
#include "exchangetexts.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>

namespace exchange {

namespace {

const QString folderPrefix = QStringLiteral("uss_import_");

// Folders left by imports of processes that no longer run (killed, crashed) are removed
// by the next import.
void removeStaleFolders()
{
#if defined(Q_OS_LINUX)
    const QDir temp(QDir::tempPath());
    const QStringList names =
        temp.entryList({folderPrefix + QLatin1Char('*')}, QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& name : names) {
        const QString pid = name.mid(folderPrefix.size()).section(QLatin1Char('_'), 0, 0);
        bool ok = false;
        pid.toLongLong(&ok);
        if (ok && !QFileInfo::exists(QStringLiteral("/proc/") + pid))
            QDir(temp.filePath(name)).removeRecursively();
    }
#endif
}

QString safeSuffix(const QString& entryName)
{
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9]{1,10}$"));
    const QString name = entryName.section(QLatin1Char('\\'), -1).section(QLatin1Char('/'), -1);
    const int dot = int(name.lastIndexOf(QLatin1Char('.')));
    if (dot < 0) return {};
    const QString suffix = name.mid(dot + 1);
    return plain.match(suffix).hasMatch() ? QLatin1Char('.') + suffix : QString();
}

} // namespace

struct ImportArchive::Private
{
    std::unique_ptr<zipper::unzip> zip;
    std::unique_ptr<QTemporaryDir> folder;
    QHash<QString, QString> extracted;
    QHash<QString, std::pair<int, int>> failed; // entry → libzip and system error codes
    int counter = 0;
};

ImportArchive::ImportArchive() : d(std::make_unique<Private>())
{}

ImportArchive::~ImportArchive()
{
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
    d = std::make_unique<Private>();
    m_status = Status::NotExportFile;

    std::optional<ParsedDocument> doc;
    try {
        d->zip = std::make_unique<zipper::unzip>(path);
        const QString name = key + QStringLiteral(".json");
        if (key.isEmpty() || !d->zip->contains(name)) {
            qDebug() << texts::jsonMissing();
            return m_status;
        }
        doc = parseDocument(d->zip->readAll(name, maxDocumentSize));
    } catch (const std::exception& e) {
        qDebug() << e.what();
        d->zip.reset();
        return m_status;
    }
    if (!doc) return m_status;
    m_header = std::move(doc->header);
    m_records = std::move(doc->records);
    if (m_records.empty()) return m_status = Status::NoElements;
    if (m_header.libName != key) return m_status = Status::OtherLibrary;
    return m_status = Status::Ok;
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
    }
    return {};
}

QString ImportArchive::extract(const QString& entryName)
{
    if (entryName.isEmpty() || !d->zip) return {};
    const QString key = zipper::unzip::normalized(entryName);
    if (const auto it = d->extracted.constFind(key); it != d->extracted.cend()) return *it;
    if (const auto it = d->failed.constFind(key); it != d->failed.cend())
        throw zipper::error("Failed to extract entry", key.toStdString(), it->first, it->second);
    // The document's names never decide where a file lands: only names it may refer to are
    // looked up at all, and the file gets a generated name in this import's folder.
    if (!isSafeEntryName(key) || !d->zip->contains(key)) return {};
    if (!d->folder) {
        removeStaleFolders();
        d->folder = std::make_unique<QTemporaryDir>(
            QDir(QDir::tempPath())
                .filePath(folderPrefix + QString::number(QCoreApplication::applicationPid()) +
                          QStringLiteral("_XXXXXX")));
        if (!d->folder->isValid())
            throw zipper::error("Failed to create folder", QDir::tempPath().toStdString(), 0, 0);
    }
    const QString path = d->folder->filePath(QStringLiteral("file") +
                                             QString::number(++d->counter) + safeSuffix(key));
    try {
        d->zip->extract(key, path);
    } catch (const zipper::error& e) {
        d->failed.insert(key, {e.zipError(), e.systemError()});
        throw;
    }
    d->extracted.insert(key, path);
    return path;
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

int ImportArchive::extractedCount() const
{
    return int(d->extracted.size());
}

QString ImportArchive::temporaryFolder() const
{
    return d->folder ? d->folder->path() : QString();
}

} // namespace exchange
