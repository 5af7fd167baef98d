#pragma once

#include "importrecord.h"

#include <QFile>
#include <QString>

#include <mutex>
#include <string>

namespace exchange {

// The elements of an import, kept in a file of the import's temporary folder in a compact
// form of their own and read back one at a time, so that an import holds only the records of
// its elements in memory however large they are.
//
// Appending is for one thread, before any reading; reading may then go on from several
// threads at once.
class ElementStore
{
public:
    ElementStore();
    ~ElementStore();
    ElementStore(const ElementStore&) = delete;
    ElementStore& operator=(const ElementStore&) = delete;

    // Creates the file at path, empty. False, with errorText(), when it cannot be created.
    bool open(const QString& path);
    // Adds element and notes in record where it lies. False, with errorText(), when the file
    // refuses the write (a full disk); the store is then of no further use.
    bool append(const ImportElement& element, ImportRecord& record);
    // Writes what append() holds back; false, with errorText(), when the file refuses it.
    // Needed before the first read.
    bool flush();
    // The element that record names. Throws std::runtime_error when the file cannot give it.
    ImportElement read(const ImportRecord& record) const;

    QString path() const { return m_file.fileName(); }
    // Why the file could not be created or written; empty when it could.
    QString errorText() const { return m_error; }

    // For tests: a write that would take the file past bytes fails the way a full disk fails
    // it; negative for no bound.
    void setLimit(qint64 bytes) { m_limit = bytes; }

private:
    bool write();

    mutable QFile m_file;
    mutable std::mutex m_mutex;
    std::string m_buffer;
    qint64 m_written = 0;
    qint64 m_limit = -1;
    QString m_error;
};

} // namespace exchange
