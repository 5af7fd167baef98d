#include "document.h"

#include "documentfast.h"
#include "documentsplit.h"
#include "exchangetexts.h"

#include <QDebug>
#include <QStringDecoder>
#include <QtConcurrent/QtConcurrentMap>

#include <json/json.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstring>
#include <memory>
#include <numeric>
#include <stdexcept>

namespace exchange {

namespace {

// A member of the wrong type; the text names the type that was expected.
struct TypeMismatch : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

#ifndef Q_OS_WIN
// Windows-1251 from 0x80 on: the code page of the Russian installations the older writers ran
// on. 0x98 has no character.
constexpr char16_t windows1251[128] = {
    0x0402, 0x0403, 0x201a, 0x0453, 0x201e, 0x2026, 0x2020, 0x2021, 0x20ac, 0x2030, 0x0409, 0x2039,
    0x040a, 0x040c, 0x040b, 0x040f, 0x0452, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014,
    0xfffd, 0x2122, 0x0459, 0x203a, 0x045a, 0x045c, 0x045b, 0x045f, 0x00a0, 0x040e, 0x045e, 0x0408,
    0x00a4, 0x0490, 0x00a6, 0x00a7, 0x0401, 0x00a9, 0x0404, 0x00ab, 0x00ac, 0x00ad, 0x00ae, 0x0407,
    0x00b0, 0x00b1, 0x0406, 0x0456, 0x0491, 0x00b5, 0x00b6, 0x00b7, 0x0451, 0x2116, 0x0454, 0x00bb,
    0x0458, 0x0405, 0x0455, 0x0457, 0x0410, 0x0411, 0x0412, 0x0413, 0x0414, 0x0415, 0x0416, 0x0417,
    0x0418, 0x0419, 0x041a, 0x041b, 0x041c, 0x041d, 0x041e, 0x041f, 0x0420, 0x0421, 0x0422, 0x0423,
    0x0424, 0x0425, 0x0426, 0x0427, 0x0428, 0x0429, 0x042a, 0x042b, 0x042c, 0x042d, 0x042e, 0x042f,
    0x0430, 0x0431, 0x0432, 0x0433, 0x0434, 0x0435, 0x0436, 0x0437, 0x0438, 0x0439, 0x043a, 0x043b,
    0x043c, 0x043d, 0x043e, 0x043f, 0x0440, 0x0441, 0x0442, 0x0443, 0x0444, 0x0445, 0x0446, 0x0447,
    0x0448, 0x0449, 0x044a, 0x044b, 0x044c, 0x044d, 0x044e, 0x044f,
};
#endif

// A text of the local 8-bit code page. Outside Windows that code page is UTF-8 whatever the
// archive's writer used, so a text that is not valid UTF-8 is taken as Windows-1251.
QString fromCodePage(const char* begin, qsizetype size)
{
#ifdef Q_OS_WIN
    return QString::fromLocal8Bit(begin, size);
#else
    // Stateless: a text that ends inside a sequence is an error, not a wait for more.
    QStringDecoder utf8(QStringDecoder::Utf8,
                        QStringDecoder::Flag::ConvertInitialBom | QStringDecoder::Flag::Stateless);
    QString text = utf8(QByteArrayView(begin, size));
    if (!utf8.hasError()) return text;
    text.resize(size);
    for (qsizetype i = 0; i < size; ++i) {
        const uchar c = uchar(begin[i]);
        text[i] = QChar(c < 0x80 ? char16_t(c) : windows1251[c - 0x80]);
    }
    return text;
#endif
}

class Reader
{
public:
    bool utf8 = true;

    const Json::Value& object(const Json::Value& v) const
    {
        if (!v.isObject()) throw TypeMismatch("not object type");
        return v;
    }
    const Json::Value& array(const Json::Value& v) const
    {
        if (!v.isArray()) throw TypeMismatch("not array type");
        return v;
    }
    QString string(const Json::Value& v) const
    {
        if (!v.isString()) throw TypeMismatch("not string type");
        const char* begin = nullptr;
        const char* end = nullptr;
        v.getString(&begin, &end);
        const qsizetype size = begin ? qsizetype(end - begin) : 0;
        // Older writers stored the local 8-bit code page and said nothing or something else.
        return utf8 ? QString::fromUtf8(begin, size) : fromCodePage(begin, size);
    }
    int integer(const Json::Value& v) const
    {
        // isInt() also refuses numbers out of the range of a 32-bit integer.
        if (!v.isInt()) throw TypeMismatch("not int type");
        return v.asInt();
    }
    // Read as JsonCpp's asInt() reads a value, unlike the members that must be integers: an
    // integer or a real within the range of int (a real truncated), a boolean as 1 or 0,
    // null as 0.
    int looseInteger(const Json::Value& v) const
    {
        if (v.isNull()) return 0;
        if (v.isBool()) return v.asBool() ? 1 : 0;
        if (v.isInt()) return v.asInt();
        if (v.isDouble()) {
            const double d = v.asDouble();
            if (d >= double(INT_MIN) && d <= double(INT_MAX)) return int(d);
        }
        throw TypeMismatch("not int type");
    }
    static bool present(const Json::Value& object, const char* name)
    {
        const Json::Value* v = object.find(name, name + std::strlen(name));
        return v && !v->isNull();
    }
    std::optional<QString> optionalString(const Json::Value& object, const char* name) const
    {
        if (!present(object, name)) return std::nullopt;
        return string(object[name]);
    }

    AttributeRecord attribute(const Json::Value& v) const
    {
        object(v);
        AttributeRecord a;
        a.name = string(v["name"]);
        a.num = integer(v["num"]);
        a.type = integer(v["type"]);
        a.formula = optionalString(v, "formula");
        a.val = optionalString(v, "val");
        a.var = optionalString(v, "var").value_or(QString());
        a.measure = optionalString(v, "measure").value_or(QString());
        a.desc = optionalString(v, "desc");
        if (present(v, "old-num")) a.oldNum = integer(v["old-num"]);
        return a;
    }

    ModelRecord model(const Json::Value& v) const
    {
        object(v);
        ModelRecord m;
        m.name = string(v["name"]);
        m.file = string(v["file"]);
        m.icon = string(v["icon"]);
        m.digest = string(v["digest"]);
        m.version = looseInteger(v["version"]);
        return m;
    }

    ProjectionRecord projection(const Json::Value& v) const
    {
        object(v);
        ProjectionRecord p;
        p.name = string(v["name"]);
        p.type = integer(v["type"]);
        p.view = integer(v["view"]);
        p.file = string(v["file"]);
        p.icon = string(v["icon"]);
        p.digest = string(v["digest"]);
        return p;
    }

    SpecRecord spec(const Json::Value& v) const
    {
        object(v);
        SpecRecord s;
        s.libName = string(v["libName"]);
        s.style = integer(v["style"]);
        s.fPart = integer(v["fPart"]);
        s.sPart = integer(v["sPart"]);
        for (const Json::Value& c : array(v["column"])) {
            object(c);
            s.column.push_back(ColumnRecord{integer(c["num"]), string(c["val"])});
        }
        return s;
    }

    ImportElement element(const Json::Value& v) const
    {
        object(v);
        ImportElement r;
        r.packet = string(v["packet"]);
        r.folder = string(v["folder"]);
        r.id = string(v["id"]);
        r.type = optionalString(v, "type").value_or(QString());
        for (const Json::Value& a : array(v["atr"]))
            r.atr.push_back(attribute(a));
        if (present(v, "model")) r.model = model(v["model"]);
        for (const Json::Value& p : array(v["prj"]))
            r.prj.push_back(projection(p));
        r.repPath = optionalString(v, "repPath");
        if (present(v, "spc") && v["spc"].isArray())
            for (const Json::Value& s : v["spc"])
                r.spc.push_back(spec(s));
        return r;
    }
};

bool referencesAreSafe(const ImportElement& r)
{
    auto ok = [](const QString& name) { return name.isEmpty() || isSafeEntryName(name); };
    if (r.model && (!ok(r.model->file) || !ok(r.model->icon))) return false;
    for (const ProjectionRecord& p : r.prj)
        if (!ok(p.file) || !ok(p.icon)) return false;
    return !r.repPath || ok(*r.repPath);
}

} // namespace

bool isSafeEntryName(const QString& name)
{
    if (name.isEmpty()) return false;
    for (const QChar c : name)
        if (c.unicode() < 0x20 || c.unicode() == 0x7f) return false;
    QString n = name;
    n.replace(QLatin1Char('/'), QLatin1Char('\\'));
    if (n.startsWith(QLatin1Char('\\')) || n.contains(QLatin1Char(':'))) return false;
    const QStringList parts = n.split(QLatin1Char('\\'));
    for (const QString& part : parts)
        if (part.isEmpty() || part == QLatin1String("..") || part == QLatin1String("."))
            return false;
    return true;
}

namespace {

std::unique_ptr<Json::CharReader> jsonReader(int depth)
{
    Json::CharReaderBuilder builder;
    // A worker thread of the pool has a small stack: deep nesting is refused, not followed.
    builder["stackLimit"] = depth;
    builder["failIfExtra"] = true;
    return std::unique_ptr<Json::CharReader>(builder.newCharReader());
}

constexpr int maxDepth = 64;

// Reads the header into doc and gives the reader for the elements.
Reader header(const Json::Value& root, DocumentHeader& header)
{
    Reader r;
    r.object(root);
    const Json::Value& comment = r.object(root["comment"]);
    const Json::Value& encoding = comment["encoding"];
    r.utf8 = encoding.isString() && encoding.asString() == "utf8";
    header.encoding = encoding.isString() ? r.string(encoding) : QString();
    header.libName = r.string(comment["lib-name"]);
    header.exportDate = r.string(comment["export-date"]);
    return r;
}

// The document text as one tree; a syntax error goes to the debug log.
bool parseTree(const char* begin, const char* end, Json::Value& root)
{
    std::string errors;
    if (jsonReader(maxDepth)->parse(begin, end, &root, &errors)) return true;
    qDebug().noquote() << texts::jsonUnparsable() << QString::fromStdString(errors);
    return false;
}

// More elements than an import may hold records for.
bool tooManyElements()
{
    qDebug().noquote() << texts::jsonUnparsable() << "more elements than" << maxDocumentElements;
    return false;
}

// A JSON tree takes tens of times its text: a document that cannot be split is read whole
// only up to this size. What the writer gives always splits.
constexpr qint64 maxWholeDocumentSize = qint64(64) << 20;

// The whole document as one tree: for documents that cannot be split.
bool parseWhole(const QByteArray& text, QByteArray* owned, ParsedDocument& doc)
{
    Json::Value root;
    if (!parseTree(text.constData(), text.constData() + text.size(), root)) return false;
    if (owned) *owned = QByteArray();
    const Reader r = header(root, doc.header);
    Json::Value& list = root["std-size"];
    r.array(list);
    if (list.size() > maxDocumentElements) return tooManyElements();
    doc.records.reserve(list.size());
    // Each element's branch of the tree is freed once it is a record: the tree and all
    // the records of a large document are never held together.
    for (Json::Value& item : list) {
        doc.records.push_back(r.element(item));
        item = Json::Value();
    }
    return true;
}

// Elements per task of the pool: enough to make a task worth scheduling.
constexpr size_t elementsPerTask = 64;

// Parses the elements at spans of data into out (as many records as spans), spread over the
// pool: only one element's tree per thread exists at a time. False with the first failure in
// document order when an element cannot be read.
bool parseSpans(const char* data, const std::vector<DocumentLayout::Span>& spans, const Reader& r,
                ImportElement* out, QString& failure)
{
    const size_t count = spans.size();
    const size_t tasks = (count + elementsPerTask - 1) / elementsPerTask;
    std::vector<QString> failures(tasks);
    std::atomic<bool> failed = false;
    std::vector<size_t> taskIndexes(tasks);
    std::iota(taskIndexes.begin(), taskIndexes.end(), size_t(0));
    QtConcurrent::blockingMap(taskIndexes, [&](size_t task) {
        if (failed.load()) return;
        // Elements sit two levels down in the document.
        const std::unique_ptr<Json::CharReader> reader = jsonReader(maxDepth - 2);
        const size_t last = std::min(count, (task + 1) * elementsPerTask);
        for (size_t i = task * elementsPerTask; i < last; ++i) {
            const DocumentLayout::Span& span = spans[i];
            if (r.utf8 && readPlainElement(data + span.begin, data + span.end, out[i])) continue;
            Json::Value item;
            std::string itemErrors;
            try {
                if (!reader->parse(data + span.begin, data + span.end, &item, &itemErrors)) {
                    failures[task] = QString::fromStdString(itemErrors);
                } else {
                    out[i] = r.element(item);
                    continue;
                }
            } catch (const std::exception& e) {
                failures[task] = QString::fromUtf8(e.what());
            }
            failed = true;
            return;
        }
    });
    if (!failed.load()) return true;
    for (const QString& f : failures) {
        if (f.isEmpty()) continue;
        failure = f;
        break;
    }
    return false;
}

// The header from the document without its elements, then the elements parsed on their own.
bool parseSplit(const QByteArray& text, const DocumentLayout& layout, ParsedDocument& doc)
{
    // The split stops one past the bound, before the list's end.
    if (layout.elements.size() > size_t(maxDocumentElements)) return tooManyElements();
    const char* data = text.constData();
    std::string skeleton;
    skeleton.reserve(size_t(text.size()) - (layout.list.end - layout.list.begin) + 2);
    skeleton.append(data, layout.list.begin)
        .append("[]")
        .append(data + layout.list.end, size_t(text.size()) - layout.list.end);
    Json::Value root;
    if (!parseTree(skeleton.data(), skeleton.data() + skeleton.size(), root)) return false;
    const Reader r = header(root, doc.header);
    r.array(root["std-size"]);

    doc.records.resize(layout.elements.size());
    QString failure;
    if (parseSpans(data, layout.elements, r, doc.records.data(), failure)) return true;
    qDebug().noquote() << texts::jsonUnparsable() << failure;
    return false;
}

// owned, when given, is text itself, released as soon as the records are made.
std::optional<ParsedDocument> parse(const QByteArray& text, QByteArray* owned)
{
    if (text.size() > maxDocumentSize) {
        qDebug().noquote() << texts::jsonUnparsable() << "document too large";
        return std::nullopt;
    }
    try {
        ParsedDocument doc;
        DocumentLayout layout;
        if (splitDocument(text.constData(), size_t(text.size()), layout)) {
            if (!parseSplit(text, layout, doc)) return std::nullopt;
            if (owned) *owned = QByteArray();
        } else if (text.size() > maxWholeDocumentSize) {
            qDebug().noquote() << texts::jsonUnparsable() << "document too large to read whole";
            return std::nullopt;
        } else if (!parseWhole(text, owned, doc)) {
            return std::nullopt;
        }
        for (const ImportElement& record : doc.records) {
            if (!referencesAreSafe(record)) {
                qDebug().noquote()
                    << texts::jsonUnparsable() << "unsafe entry name in" << record.id;
                return std::nullopt;
            }
        }
        return doc;
    } catch (const std::exception& e) {
        qDebug().noquote() << texts::jsonUnparsable() << e.what();
        return std::nullopt;
    }
}

} // namespace

std::optional<ParsedDocument> parseDocument(const QByteArray& text)
{
    return parse(text, nullptr);
}

std::optional<ParsedDocument> parseDocument(QByteArray&& text)
{
    QByteArray owned = std::move(text);
    return parse(owned, &owned);
}

// Elements collected before a batch is parsed: a few megabytes of text, many tasks for the
// pool.
constexpr size_t feedBatchBytes = size_t(4) << 20;
constexpr size_t feedBatchElements = 2048;

struct DocumentFeed::Private
{
    enum class Stage
    {
        Open,   // before the top object's "{"
        Member, // before a member's name
        First,  // just inside the list
        Item,   // before an element of the list
        Next,   // after an element of the list
        After,  // after a member
        Closed, // after the top object's "}"
    };

    Stage stage = Stage::Open;
    bool failed = false;
    bool listSeen = false;
    std::string text; // the text not yet stepped over, from its first pending element on
    size_t pos = 0;   // how far the text is stepped over
    // Scanning waits until the text reaches this size: a step that ran out of text is tried
    // again only once the text past its start has doubled, so that a long member is not
    // scanned over and over.
    size_t waitFor = 0;
    std::string skeleton; // the document without its elements
    std::vector<DocumentLayout::Span> pending;
    size_t pendingBytes = 0;
    size_t elements = 0;
    Reader reader;
    DocumentHeader header;
    std::vector<ImportElement> records;
    std::function<void(ImportElement&&)> sink;

    bool fail()
    {
        failed = true;
        text = std::string();
        pending.clear();
        records.clear();
        return false;
    }

    // The header as the text before the list gives it, which the elements need to be read.
    bool readHeader()
    {
        const std::string early = skeleton + "]}";
        Json::Value root;
        std::string errors;
        if (!jsonReader(maxDepth)->parse(early.data(), early.data() + early.size(), &root, &errors))
            return false;
        reader = exchange::header(root, header);
        return true;
    }

    // Parses the pending elements into records and lets go of their text.
    bool parsePending()
    {
        if (!pending.empty()) {
            const size_t first = records.size();
            records.resize(first + pending.size());
            QString failure;
            if (!parseSpans(text.data(), pending, reader, records.data() + first, failure))
                return false;
            if (sink) {
                // Checked before any of the batch leaves: the whole reading refuses the
                // document for an unsafe name anyway.
                for (size_t i = first; i < records.size(); ++i)
                    if (!referencesAreSafe(records[i])) return false;
                for (ImportElement& element : records)
                    sink(std::move(element));
                records.clear();
            }
            pending.clear();
            pendingBytes = 0;
        }
        text.erase(0, pos);
        waitFor = waitFor > pos ? waitFor - pos : 0;
        pos = 0;
        return true;
    }

    // Steps over what the text holds, last telling whether more will come; false when the
    // document is not of the form read here.
    bool scan(bool last)
    {
        for (;;) {
            const Stage from = stage;
            const size_t start = pos;
            DocumentScanner s(text.data(), text.size(), pos);
            bool ok = true;
            switch (from) {
            case Stage::Open:
                ok = s.skipSpace() && s.take('{') && s.skipSpace();
                if (ok) stage = s.take('}') ? Stage::Closed : Stage::Member;
                break;
            case Stage::Member: {
                const size_t key = s.pos();
                bool plain = true;
                ok = s.string(plain);
                if (ok && !plain) return false;
                const bool isList = ok && s.keyIs(key, "std-size");
                ok = ok && s.skipSpace() && s.take(':') && s.skipSpace();
                if (!ok) break;
                if (!isList) {
                    ok = s.value();
                    stage = Stage::After;
                } else if (listSeen || s.peek() != '[') {
                    // One list, and one that is a list: anything else is read whole.
                    ok = false;
                } else {
                    s.take('[');
                    stage = Stage::First;
                }
                break;
            }
            case Stage::First:
                ok = s.skipSpace();
                if (ok) stage = s.take(']') ? Stage::After : Stage::Item;
                break;
            case Stage::Item:
                ok = s.value();
                stage = Stage::Next;
                break;
            case Stage::Next:
            case Stage::After: {
                const bool inList = from == Stage::Next;
                ok = s.skipSpace();
                if (!ok) break;
                if (s.take(inList ? ']' : '}'))
                    stage = inList ? Stage::After : Stage::Closed;
                else if (s.take(','))
                    ok = s.skipSpace(), stage = inList ? Stage::Item : Stage::Member;
                else
                    ok = false;
                break;
            }
            case Stage::Closed:
                ok = s.skipSpace();
                if (!ok || !s.atEnd()) return false;
                pos = s.pos();
                return true;
            }
            // A step is taken only when the text goes on past it (a number or a name cut off
            // at the end of a part would read as whole), or at the end of the text.
            if (!ok || (s.atEnd() && !last)) {
                if (last || !s.atEnd()) return false;
                stage = from;
                waitFor = text.size() + std::max<size_t>(text.size() - start, 1);
                return true;
            }
            // The skeleton keeps all but the elements, the list's brackets included.
            const bool inList = from == Stage::First || from == Stage::Item || from == Stage::Next;
            if (!inList)
                skeleton.append(text, start, s.pos() - start);
            else if (stage == Stage::After)
                skeleton.push_back(']');
            if (from == Stage::Member && stage == Stage::First) {
                listSeen = true;
                if (!readHeader()) return false;
            }
            if (from == Stage::Item) {
                pending.push_back({start, s.pos()});
                pendingBytes += s.pos() - start;
                if (++elements > size_t(maxDocumentElements)) return false;
            }
            pos = s.pos();
        }
    }
};

DocumentFeed::DocumentFeed(std::function<void(ImportElement&&)> sink)
    : d(std::make_unique<Private>())
{
    d->sink = std::move(sink);
}

DocumentFeed::~DocumentFeed() = default;

bool DocumentFeed::feed(const char* data, size_t size)
{
    if (d->failed) return false;
    d->text.append(data, size);
    if (d->text.size() < d->waitFor) return true;
    try {
        if (!d->scan(false)) return d->fail();
        if (d->pending.empty() || d->pendingBytes >= feedBatchBytes ||
            d->pending.size() >= feedBatchElements) {
            if (!d->parsePending()) return d->fail();
        }
    } catch (const std::exception&) {
        return d->fail();
    }
    return true;
}

std::optional<ParsedDocument> DocumentFeed::finish()
{
    if (d->failed) return std::nullopt;
    try {
        if (!d->scan(true) || d->stage != Private::Stage::Closed || !d->listSeen ||
            !d->parsePending()) {
            d->fail();
            return std::nullopt;
        }
        // The skeleton read as the whole reading reads it, so that what follows the list is
        // checked as well, and the header it gives must be the one the elements were read by.
        Json::Value root;
        std::string errors;
        const std::string& text = d->skeleton;
        if (!jsonReader(maxDepth)->parse(text.data(), text.data() + text.size(), &root, &errors))
            return std::nullopt;
        ParsedDocument doc;
        const Reader r = header(root, doc.header);
        r.array(root["std-size"]);
        if (r.utf8 != d->reader.utf8 || doc.header.encoding != d->header.encoding ||
            doc.header.libName != d->header.libName ||
            doc.header.exportDate != d->header.exportDate)
            return std::nullopt;
        for (const ImportElement& record : d->records)
            if (!referencesAreSafe(record)) return std::nullopt;
        doc.records = std::move(d->records);
        d->fail();
        return doc;
    } catch (const std::exception&) {
        d->fail();
        return std::nullopt;
    }
}

QString ImportElement::describe() const
{
    auto text = [](const std::optional<QString>& s) {
        return s ? QLatin1Char('"') + *s + QLatin1Char('"') : QStringLiteral("-");
    };
    auto number = [](const std::optional<int>& n) {
        return n ? QString::number(*n) : QStringLiteral("-");
    };
    QStringList parts{packet, folder, id, type, text(repPath)};
    for (const AttributeRecord& a : atr)
        parts << QStringList{QStringLiteral("atr"),   a.name,      QString::number(a.num),
                             QString::number(a.type), a.var,       a.measure,
                             text(a.formula),         text(a.val), text(a.desc),
                             number(a.oldNum)}
                     .join(QLatin1Char('|'));
    if (model)
        parts << QStringList{QStringLiteral("model"),
                             model->name,
                             QString::number(model->version),
                             model->file,
                             model->icon,
                             model->digest}
                     .join(QLatin1Char('|'));
    for (const ProjectionRecord& p : prj)
        parts << QStringList{QStringLiteral("prj"),
                             p.name,
                             QString::number(p.type),
                             QString::number(p.view),
                             p.file,
                             p.icon,
                             p.digest}
                     .join(QLatin1Char('|'));
    for (const SpecRecord& s : spc) {
        QStringList spec{QStringLiteral("spc"), s.libName, QString::number(s.style),
                         QString::number(s.fPart), QString::number(s.sPart)};
        for (const ColumnRecord& c : s.column)
            spec << QString::number(c.num) + QLatin1Char('=') + c.val;
        parts << spec.join(QLatin1Char('|'));
    }
    return parts.join(QLatin1Char('\n'));
}

QString ImportElement::value(const QString& name) const
{
    for (const AttributeRecord& a : atr)
        if (a.name == name) return a.val.value_or(QString());
    return {};
}

} // namespace exchange
