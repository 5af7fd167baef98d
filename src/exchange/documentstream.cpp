#include "document.h"

#include "fileregistry.h"

#include <catalog/catalog_tree.h>
#include <catalog/esconvert.h>

#include <QDateTime>
#include <QDebug>
#include <QFile>

#include <json/json.h>

#include <charconv>
#include <string>
#include <string_view>

namespace exchange {

namespace {

// Appends text as a JSON string exactly as JsonCpp's writer quotes UTF-8 text: quote,
// backslash and the controls with a short form escaped as such, other controls and everything
// beyond ASCII as lower-case \u escapes of the UTF-16 units (pairs for characters beyond
// the basic plane). False, with out unchanged, for a lone surrogate or a NUL, whose UTF-8
// form JsonCpp treats its own way: the caller hands those to JsonCpp.
bool appendQuoted(std::string& out, const char16_t* text, size_t length)
{
    static const char hex[] = "0123456789abcdef";
    const size_t start = out.size();
    out.reserve(start + length + 2);
    out.push_back('"');
    auto escaped = [&](unsigned unit) {
        const char e[6] = {'\\',
                           'u',
                           hex[(unit >> 12) & 15],
                           hex[(unit >> 8) & 15],
                           hex[(unit >> 4) & 15],
                           hex[unit & 15]};
        out.append(e, 6);
    };
    for (size_t i = 0; i < length; ++i) {
        const char16_t c = text[i];
        if (c >= 0x20 && c < 0x80) {
            if (c == '"' || c == '\\') out.push_back('\\');
            out.push_back(char(c));
            continue;
        }
        switch (c) {
        case 0:
            out.resize(start);
            return false;
        case '\b':
            out.append("\\b", 2);
            continue;
        case '\f':
            out.append("\\f", 2);
            continue;
        case '\n':
            out.append("\\n", 2);
            continue;
        case '\r':
            out.append("\\r", 2);
            continue;
        case '\t':
            out.append("\\t", 2);
            continue;
        default:
            break;
        }
        if (c >= 0xD800 && c <= 0xDFFF) {
            if (c > 0xDBFF || i + 1 == length || text[i + 1] < 0xDC00 || text[i + 1] > 0xDFFF) {
                out.resize(start);
                return false;
            }
            escaped(c);
            escaped(text[++i]);
            continue;
        }
        escaped(c);
    }
    out.push_back('"');
    return true;
}

// Prints the exchange document element by element with exactly the layout of JsonCpp's
// styled writer (three-space indent, " : " after names, members in byte order, every
// non-empty array of objects on lines of its own), without building the value tree of the
// whole document: a catalog of many thousand elements is written in constant memory.
class StyledStream
{
public:
    explicit StyledStream(QFile& file) : m_file(file) {}

    void beginObject()
    {
        withIndent("{");
        m_indent.append(3, ' ');
        m_first = true;
    }
    void endObject()
    {
        m_indent.resize(m_indent.size() - 3);
        withIndent("}");
        m_first = false;
    }
    // The name of the next member; members must come in byte order of their names.
    // Names are plain ASCII identifiers that need no escaping.
    void name(const char* name)
    {
        if (!m_first) put(',');
        m_first = false;
        indent();
        m_buffer.push_back('"');
        m_buffer.append(name);
        m_buffer.append("\" : ");
        m_last = ' ';
    }
    void beginArray()
    {
        withIndent("[");
        m_indent.append(3, ' ');
        m_first = true;
    }
    // Before each element of an array.
    void item()
    {
        if (!m_first) put(',');
        m_first = false;
        indent();
    }
    void endArray()
    {
        m_indent.resize(m_indent.size() - 3);
        withIndent("]");
        m_first = false;
    }
    void emptyArray() { put("[]"); }
    void null() { put("null"); }
    void value(const std::string& text) { put(Json::valueToQuotedString(text.c_str())); }
    void value(const QString& text)
    {
        value(std::u16string_view(reinterpret_cast<const char16_t*>(text.utf16()),
                                  size_t(text.size())));
    }
    void value(const char16_t* text) { value(text ? std::u16string_view(text) : u""); }
    void value(std::u16string_view text)
    {
        if (appendQuoted(m_buffer, text.data(), text.size())) {
            m_last = '"';
            return;
        }
        value(QString::fromUtf16(text.data(), qsizetype(text.size())).toStdString());
    }
    void value(int number) { integer(number, false); }
    void value(unsigned number) { integer(number, false); }
    // A whole number written as a JSON string, as its decimal text would be quoted.
    void quotedInteger(long long number) { integer(number, true); }

    void finish()
    {
        put('\n');
        flush();
    }
    // Writes what was printed so far; false when the file refused it.
    bool flush()
    {
        if (m_buffer.empty()) return m_ok;
        if (m_file.write(m_buffer.data(), qint64(m_buffer.size())) != qint64(m_buffer.size()))
            m_ok = false;
        m_buffer.clear();
        return m_ok;
    }
    bool ok() const { return m_ok; }

private:
    // The styled writer's indentation rule: nothing after a blank (the value follows a name
    // or an indent already), else a new line and the current indent.
    void indent()
    {
        if (m_last) {
            if (m_last == ' ') return;
            if (m_last != '\n') put('\n');
        }
        put(m_indent);
    }
    void withIndent(const std::string& text)
    {
        indent();
        put(text);
    }
    void integer(long long number, bool quoted)
    {
        char digits[24];
        const char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        if (quoted) m_buffer.push_back('"');
        m_buffer.append(digits, size_t(end - digits));
        if (quoted) m_buffer.push_back('"');
        m_last = end[-1];
        if (quoted) m_last = '"';
    }
    void put(char c)
    {
        m_buffer.push_back(c);
        m_last = c;
    }
    void put(const std::string& text)
    {
        if (text.empty()) return;
        m_buffer.append(text);
        m_last = text.back();
    }

    QFile& m_file;
    std::string m_buffer;
    std::string m_indent;
    char m_last = 0;
    bool m_first = true;
    bool m_ok = true;
};

std::u16string_view esView(const char16_t* text)
{
    return text ? std::u16string_view(text) : std::u16string_view();
}

// The catalog's texts are written straight from its UTF-16 strings, without copies.
void attribute(StyledStream& out, es_stdsize_t* element, es_attribute_t* a)
{
    const std::u16string_view name = esView(attribute_GetName(a));
    const int num = attribute_GetNumber(a);
    const std::u16string_view desc = esView(attribute_GetDescription(a));
    const std::u16string_view formula = esView(attribute_GetFormula(a));
    const std::u16string_view measure = esView(attribute_GetMeasure(a));
    const std::u16string_view var = esView(attribute_GetVarName(a));
    const int oldNum = attribute_GetOldNumber(a);

    out.beginObject();
    if (desc != name) {
        out.name("desc");
        out.value(desc);
    }
    if (!formula.empty()) {
        out.name("formula");
        out.value(formula);
    }
    if (!measure.empty()) {
        out.name("measure");
        out.value(measure);
    }
    out.name("name");
    out.value(name);
    out.name("num");
    out.value(num);
    if (oldNum != num) {
        out.name("old-num");
        out.value(oldNum);
    }
    out.name("type");
    out.value(int(attribute_GetType(a)));
    if (formula.empty()) {
        es_value value{};
        stdsize_GetValue(element, a, &value);
        out.name("val");
        switch (value.kind) {
        case ES_VALUE_INT:
            out.quotedInteger(value.i);
            break;
        case ES_VALUE_TEXT:
            out.value(esView(value.s));
            break;
        default:
            out.value(edw::valueToText(value));
            break;
        }
    }
    if (!var.empty()) {
        out.name("var");
        out.value(var);
    }
    out.endObject();
}

void fileMembers(StyledStream& out, const FileRecord& record)
{
    out.name("digest");
    out.value(record.digest);
    out.name("file");
    out.value(record.entry);
    out.name("icon");
    out.value(record.iconEntry);
}

void element(StyledStream& out, es_stdsize_t* e, FileRegistry& registry)
{
    es_folder_t* folder = edw::folderOf(e);
    es_table_t* table = stdsize_GetTable(e);
    out.beginObject();

    out.name("atr");
    const uint32_t attributeCount = table_GetAttributeCount(table);
    if (attributeCount == 0) {
        out.emptyArray();
    } else {
        out.beginArray();
        for (uint32_t i = 0; i < attributeCount; ++i) {
            out.item();
            attribute(out, e, table_GetAttribute(table, i));
        }
        out.endArray();
    }
    out.name("folder");
    out.value(edw::folderPath(folder));
    out.name("id");
    out.value(stdsize_GetID(e));

    // Registry numbers go to the model, then the fragments, then the representation; the
    // members come out in that order too.
    registry.setOwner(e);
    out.name("model");
    es_model_t* model = stdsize_GetModel(e);
    if (model && !model_IsEmpty(model)) {
        const FileRecord& record = registry.model(model);
        out.beginObject();
        fileMembers(out, record);
        out.name("name");
        out.value(model_GetModelName(model));
        out.name("version");
        out.value(int(model_GetVersion(model)));
        out.endObject();
    } else {
        out.null();
    }

    out.name("packet");
    out.value(packet_GetName(folder_GetPacket(folder)));

    out.name("prj");
    es_projections_t* list = stdsize_GetProjections(e);
    const uint32_t projectionCount = projections_GetProjectioCount(list);
    if (projectionCount == 0) {
        out.emptyArray();
    } else {
        out.beginArray();
        for (uint32_t i = 0; i < projectionCount; ++i) {
            es_projection_t* p = projections_GetProjection(list, i);
            const FileRecord& record = registry.fragment(p);
            out.item();
            out.beginObject();
            fileMembers(out, record);
            out.name("name");
            out.value(projection_GetName(p));
            out.name("type");
            out.value(int(projection_GetType(p)));
            out.name("view");
            out.value(int(projection_GetViewType(p)));
            out.endObject();
        }
        out.endArray();
    }

    const void* data = nullptr;
    const size_t size = stdsize_GetRepresentationData(e, &data);
    if (size > 0 && data) {
        const FileRecord& record =
            registry.representation(QByteArray(static_cast<const char*>(data), qsizetype(size)));
        out.name("repPath");
        out.value(record.entry);
    }

    const uint32_t specCount = stdsize_GetSpecificationCount(e);
    if (specCount > 0) {
        out.name("spc");
        out.beginArray();
        for (uint32_t i = 0; i < specCount; ++i) {
            es_spec_t* s = stdsize_GetSpecification(e, i);
            out.item();
            out.beginObject();
            out.name("column");
            const uint32_t columnCount = spec_ColumnCount(s);
            if (columnCount == 0) {
                out.emptyArray();
            } else {
                out.beginArray();
                for (uint32_t c = 0; c < columnCount; ++c) {
                    out.item();
                    out.beginObject();
                    out.name("num");
                    out.value(int(spec_ColumnNumber(s, c)));
                    out.name("val");
                    out.value(spec_ColumnFormula(s, c));
                    out.endObject();
                }
                out.endArray();
            }
            out.name("fPart");
            out.value(int(spec_FirstPart(s)));
            out.name("libName");
            out.value(spec_LibName(s));
            out.name("sPart");
            out.value(int(spec_SecondPart(s)));
            out.name("style");
            out.value(int(spec_Style(s)));
            out.endObject();
        }
        out.endArray();
    }

    out.name("type");
    out.value(stdsize_GetType(e));
    out.endObject();
}

} // namespace

bool writeDocumentFile(const QString& path, const QString& key,
                       const std::vector<es_stdsize_t*>& elements, FileRegistry& registry,
                       const std::function<void(int)>& progress, const QString& exportDate)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
    try {
        StyledStream out(file);
        out.beginObject();
        out.name("comment");
        out.beginObject();
        out.name("encoding");
        out.value(std::string("utf8"));
        out.name("export-date");
        out.value(exportDate.isEmpty() ? QDateTime::currentDateTimeUtc().toString(
                                             QStringLiteral("yyyy.MM.dd HH:mm:ss"))
                                       : exportDate);
        out.name("item-count");
        out.value(unsigned(elements.size()));
        out.name("lib-name");
        out.value(key);
        out.endObject();
        out.name("std-size");
        if (elements.empty()) {
            out.emptyArray();
        } else {
            out.beginArray();
            for (size_t i = 0; i < elements.size(); ++i) {
                if (progress) progress(int(i));
                out.item();
                element(out, elements[i], registry);
                if (!out.flush()) return false;
            }
            out.endArray();
        }
        out.endObject();
        out.finish();
        return out.ok() && file.flush();
    } catch (const std::exception& e) {
        qDebug() << "exchange document:" << e.what();
        return false;
    }
}

} // namespace exchange
