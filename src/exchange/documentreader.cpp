#include "document.h"

#include "exchangetexts.h"

#include <QDebug>

#include <json/json.h>

#include <cstring>
#include <memory>
#include <stdexcept>

namespace exchange {

namespace {

// A member of the wrong type; the text names the type that was expected.
struct TypeMismatch : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

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
        return utf8 ? QString::fromUtf8(begin, size) : QString::fromLocal8Bit(begin, size);
    }
    int integer(const Json::Value& v) const
    {
        // isInt() also refuses numbers out of the range of a 32-bit integer.
        if (!v.isInt()) throw TypeMismatch("not int type");
        return v.asInt();
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
        if (present(v, "version")) m.version = integer(v["version"]);
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

    ImportRecord element(const Json::Value& v) const
    {
        object(v);
        ImportRecord r;
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

bool referencesAreSafe(const ImportRecord& r)
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

// owned, when given, is text itself, released as soon as the tree holds the document.
std::optional<ParsedDocument> parse(const QByteArray& text, QByteArray* owned)
{
    if (text.size() > maxDocumentSize) {
        qDebug() << texts::jsonUnparsable() << "document too large";
        return std::nullopt;
    }
    Json::CharReaderBuilder builder;
    // A worker thread of the pool has a small stack: deep nesting is refused, not followed.
    builder["stackLimit"] = 64;
    builder["failIfExtra"] = true;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value root;
    std::string errors;
    try {
        if (!reader->parse(text.constData(), text.constData() + text.size(), &root, &errors)) {
            qDebug() << texts::jsonUnparsable() << QString::fromStdString(errors);
            return std::nullopt;
        }
        if (owned) *owned = QByteArray();
        Reader r;
        ParsedDocument doc;
        r.object(root);
        const Json::Value& comment = r.object(root["comment"]);
        const Json::Value& encoding = comment["encoding"];
        r.utf8 = encoding.isString() && encoding.asString() == "utf8";
        doc.header.encoding = encoding.isString() ? r.string(encoding) : QString();
        doc.header.libName = r.string(comment["lib-name"]);
        doc.header.exportDate = r.string(comment["export-date"]);
        Json::Value& list = root["std-size"];
        r.array(list);
        doc.records.reserve(list.size());
        // Each element's branch of the tree is freed once it is a record: the tree and all
        // the records of a large document are never held together.
        for (Json::Value& item : list) {
            doc.records.push_back(r.element(item));
            item = Json::Value();
        }
        for (const ImportRecord& record : doc.records) {
            if (!referencesAreSafe(record)) {
                qDebug() << texts::jsonUnparsable() << "unsafe entry name in" << record.id;
                return std::nullopt;
            }
        }
        return doc;
    } catch (const std::exception& e) {
        qDebug() << texts::jsonUnparsable() << e.what();
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

QString ImportRecord::value(const QString& name) const
{
    for (const AttributeRecord& a : atr)
        if (a.name == name) return a.val.value_or(QString());
    return {};
}

} // namespace exchange
