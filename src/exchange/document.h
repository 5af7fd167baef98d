#pragma once

#include "importrecord.h"

#include <esdata/esdata.h>

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace exchange {

class FileRegistry;

// The exchange document: one JSON object with a header ("comment") and one object per
// element ("std-size"), printed by JsonCpp's styled writer, UTF-8.

// Builds the document of elements for the archive key K. progress is called once per element,
// before it is written, with its index from 0. exportDate is the header's moment
// ("yyyy.MM.dd HH:mm:ss"); empty means now (UTC, whole seconds). Every model, fragment and
// representation met goes into registry. Returns the text, empty on failure.
QByteArray writeDocument(const QString& key, const std::vector<es_stdsize_t*>& elements,
                         FileRegistry& registry, const std::function<void(int)>& progress,
                         const QString& exportDate = QString());

// The same document written straight into the file at path, element by element, so that its
// size never matters for memory. Byte for byte what writeDocument returns. False when the
// file cannot be written.
bool writeDocumentFile(const QString& path, const QString& key,
                       const std::vector<es_stdsize_t*>& elements, FileRegistry& registry,
                       const std::function<void(int)>& progress,
                       const QString& exportDate = QString());

struct ParsedDocument
{
    DocumentHeader header;
    std::vector<ImportRecord> records;
};

// Bytes beyond which a document is refused before parsing, and elements beyond which it is
// refused after the split: together they bound the memory an import's records take. The
// export writer refuses to write a document past either, so that every archive it writes can
// be read back.
constexpr qint64 maxDocumentSize = qint64(1) << 30;
constexpr qint64 maxDocumentElements = 2'000'000;

// Parses the document text. A parse error, a member of the wrong type (the texts "not object
// type", "not array type", "not string type", "not int type", logged with the debug log) or a
// file reference that is not a plain relative entry name gives nothing.
std::optional<ParsedDocument> parseDocument(const QByteArray& text);
// The same, letting go of the text once it is parsed, before the records are made.
std::optional<ParsedDocument> parseDocument(QByteArray&& text);

// An entry name the document may refer to: relative, without "..", a drive, a leading
// separator or control characters.
bool isSafeEntryName(const QString& name);

} // namespace exchange
