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
    std::vector<ImportElement> records;
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

// Reads a document as its text arrives, part by part, so that neither the text nor more than
// a bounded part of it is ever held: elements are parsed in batches as they complete and their
// text let go. Only the plain form the writer gives is read this way (one top object, its
// "comment" before its "std-size", no comments in the text); for anything else, and for a
// document with an error, the feed gives up and the caller reads the text whole with
// parseDocument(), which says what is wrong. The records it gives are those parseDocument()
// gives for the same text.
//
// With a sink, each element goes to the sink as soon as its batch is read and checked, in
// document order, and the feed keeps none: finish() then gives the header alone. What the sink
// throws, other than a std::exception, leaves the feed through feed() or finish().
class DocumentFeed
{
public:
    explicit DocumentFeed(std::function<void(ImportElement&& element)> sink = {});
    ~DocumentFeed();
    DocumentFeed(const DocumentFeed&) = delete;
    DocumentFeed& operator=(const DocumentFeed&) = delete;

    // Takes the next part of the text; false once the feed has given up.
    bool feed(const char* data, size_t size);
    // After the last part: the document, or nothing when the feed gave up.
    std::optional<ParsedDocument> finish();

private:
    struct Private;
    std::unique_ptr<Private> d;
};

// Lets records share the texts they repeat (packet, folder, type and author, up to a bounded
// number of distinct ones) and gives back the room their texts hold beyond their contents.
// The records read the same.
class TextPool
{
public:
    TextPool();
    ~TextPool();
    TextPool(const TextPool&) = delete;
    TextPool& operator=(const TextPool&) = delete;
    void compact(ImportRecord& record);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

// An entry name the document may refer to: relative, without "..", a drive, a leading
// separator or control characters.
bool isSafeEntryName(const QString& name);

} // namespace exchange
