#pragma once

#include <esdata/esdata.h>

#include <QByteArray>
#include <QString>

#include <map>
#include <string>

namespace exchange {

// One file to be stored in the archive beside the document.
struct FileRecord
{
    QString entry;      // archive entry name, empty for the empty record
    QString iconEntry;  // entry name of the icon, empty when there are no icon bytes
    QString sourcePath; // file on disk streamed into the archive
    QByteArray content; // bytes stored when there is no file on disk
    QByteArray icon;    // icon bytes
    QString digest;
    // The first element naming the file, as ("packet", "id"), for messages.
    QString packet, id;
};

// The files of one export, keyed so that a model or fragment met twice (same digest in the
// catalog) is stored once. Numbers for entry names come from one counter shared by models,
// fragments and representations: the first file gets 1.
class FileRegistry
{
public:
    // key is the archive key K. With previousVersion, every model and fragment is first
    // re-saved by the host in the earlier file format into workFolder ("file_" + M + ext);
    // the record then names that copy and carries its recomputed digest.
    FileRegistry(const QString& key, bool previousVersion, const QString& workFolder);

    // The element whose files are asked for next.
    void setOwner(es_stdsize_t* element) { m_owner = element; }
    // The record of the element's model or of a projection; the empty record when the
    // catalog gives no digest.
    const FileRecord& model(es_model_t* model);
    const FileRecord& fragment(es_projection_t* projection);
    // A new record for an element's representation data (never shared).
    const FileRecord& representation(const QByteArray& bytes);

    // Records in the order in which they are written into the archive.
    const std::map<std::string, FileRecord>& records() const { return m_records; }
    int lastNumber() const { return m_counter; }

private:
    const FileRecord& fileRecord(const char* folder, const char* extension, const QString& digest,
                                 const QString& path, const void* icon, size_t iconSize);
    QString convert(const QString& source, const char* extension);

    QString m_key;
    bool m_previousVersion;
    QString m_workFolder;
    int m_counter = 0;
    int m_convertCounter = 0;
    es_stdsize_t* m_owner = nullptr;
    std::map<std::string, FileRecord> m_records;
    FileRecord m_empty;
};

} // namespace exchange
