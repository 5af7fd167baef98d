#pragma once

#include "importrecord.h"

#include <esdata/esdata.h>

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace exchange {

// An exchange archive opened for import into one catalog: the checked document, its records
// (the elements themselves are kept in a file of the import's temporary folder and read back
// one at a time with element()), and the extraction of the entries they name into a temporary
// folder of this import (removed with the object).
//
//   exchange::ImportArchive archive;
//   if (archive.open(path, provider) != exchange::ImportArchive::Status::Ok)
//       show(archive.errorText());
//   ... decide (importdecision.h), then write with ImportWorker (importworker.h)
class ImportArchive
{
public:
    enum class Status
    {
        Ok,
        NotExportFile, // not a ZIP archive, no document for the target's kind, a bad document
        NoElements,    // the document holds no element
        OtherLibrary,  // lib-name is not the target's key
        // The elements could not be kept in the import's temporary folder (a full disk, a
        // folder that cannot be created); detailText() says why.
        TemporaryFailed,
    };

    ImportArchive();
    ~ImportArchive();
    ImportArchive(const ImportArchive&) = delete;
    ImportArchive& operator=(const ImportArchive&) = delete;

    // Reads and checks the archive at path for the target catalog, in this order: the document
    // K + ".json" (K of the target) is found and well formed; it holds records; its lib-name
    // is K. Throws std::runtime_error("Unknown user database") for a target of unknown kind.
    Status open(const QString& path, es_provider_t* target);
    // The same for an archive key K given directly.
    Status open(const QString& path, const QString& key);

    Status status() const { return m_status; }
    // The user's message for the status; empty for Ok.
    QString errorText() const;
    // What exactly was refused, where more can be said: the kind of catalog an archive of
    // another kind was written from, or why the archive could not be read. Empty otherwise.
    QString detailText() const { return m_detail; }

    const DocumentHeader& header() const { return m_header; }
    ImportRecords& records() { return m_records; }
    const ImportRecords& records() const { return m_records; }
    // The whole element of a record of this archive, read back from the temporary folder; the
    // record may have been copied or moved since. Safe from several threads at once. Throws
    // std::runtime_error when the temporary folder cannot give it.
    ImportElement element(const ImportRecord& record) const;
    // For tests: from the next open(), keeping the elements fails once they take more than
    // bytes, the way a full disk fails it; negative for no bound.
    void setStoreLimit(qint64 bytes);

    // Extracts the entry once and returns the path of the extracted file; a second request
    // for the same name gives the same path. Empty for an empty name or a name that the
    // archive does not hold. Throws zipper::error when the entry is damaged (CRC, size,
    // limits); nothing of it is left behind then.
    //
    // handOver passes the extracted file to the hand-over function, when one is set, and the
    // entry is found from then on at the path that function gives (the file may have moved).
    QString extract(const QString& entryName, bool handOver = false);
    // Where extracted files asked for with handOver go: the function gets the extracted file
    // and gives the path the file is to be found at, or an empty text to leave it where it is.
    // It runs on the thread that extracted the file.
    void setHandOver(std::function<QString(const QString& path)> handOver);
    // The bytes of the entry, read into memory without a file of their own (for data that
    // ends up in memory anyway). Nothing for an empty name or a name that the archive does
    // not hold. Throws zipper::error when the entry is damaged, as extract does.
    std::optional<QByteArray> read(const QString& entryName);
    // Reads the entry to its end with every check of extract() and keeps nothing. False for
    // an empty name, an unsafe one or one that the archive does not hold; throws
    // zipper::error when the entry is damaged.
    bool check(const QString& entryName);
    // An entry that the writes of a record will ask for, with or without hand-over.
    struct Prefetch
    {
        QString entryName;
        bool handOver = false;
    };
    // The entries that the writes of record `record` will ask for, in their order.
    using PrefetchList = std::function<std::vector<Prefetch>(size_t record)>;
    // Extracts the entries of records 0 to count - 1 on a thread of its own, in that order,
    // keeping a bounded number of records ahead of the record last passed to advance();
    // extract() then finds them ready or waits for the one under way. entriesOf is called on
    // that thread, one record at a time; what it throws ends the prefetch. A damaged entry is
    // remembered and fails extract() as it would have by itself. Replaces a prefetch still
    // running.
    void prefetch(size_t count, PrefetchList entriesOf);
    // The writes have reached record `record`.
    void advance(size_t record);
    // Stops the prefetch and waits for it; extract() goes on working alone.
    void stopPrefetch();

    // How many entries were actually extracted so far.
    int extractedCount() const;
    // The temporary folder of this import; empty before a document was read.
    QString temporaryFolder() const;

private:
    bool startStore();
    std::optional<DocumentHeader> readDocument(const QString& name);

    struct Private;
    std::unique_ptr<Private> d;
    Status m_status = Status::NotExportFile;
    QString m_detail;
    DocumentHeader m_header;
    ImportRecords m_records;
};

} // namespace exchange
