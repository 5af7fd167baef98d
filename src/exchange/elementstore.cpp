#include "elementstore.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace exchange {

namespace {

// Texts as UTF-8 behind their length, an absent one as a length of its own; numbers as they
// lie in memory (the file never leaves the process that wrote it).
constexpr std::uint32_t absent = 0xFFFFFFFFu;

// Bytes held back before they go to the file.
constexpr size_t bufferBytes = size_t(1) << 20;

class Writer
{
public:
    explicit Writer(std::string& out) : m_out(out) {}

    void number(std::int32_t n) { m_out.append(reinterpret_cast<const char*>(&n), sizeof n); }
    void count(size_t n) { number(std::int32_t(n)); }
    void text(const QString& s)
    {
        const QByteArray utf8 = s.toUtf8();
        const auto size = std::uint32_t(utf8.size());
        m_out.append(reinterpret_cast<const char*>(&size), sizeof size);
        m_out.append(utf8.constData(), size_t(utf8.size()));
    }
    void text(const std::optional<QString>& s)
    {
        if (s) {
            text(*s);
            return;
        }
        m_out.append(reinterpret_cast<const char*>(&absent), sizeof absent);
    }
    void flag(bool on) { m_out.push_back(on ? 1 : 0); }

private:
    std::string& m_out;
};

// Reads what Writer wrote; anything short or out of place is a damaged file.
class Reader
{
public:
    Reader(const char* data, size_t size) : m_data(data), m_size(size) {}

    std::int32_t number()
    {
        std::int32_t n = 0;
        std::memcpy(&n, take(sizeof n), sizeof n);
        return n;
    }
    size_t count()
    {
        const std::int32_t n = number();
        // Every counted item takes a byte at least.
        if (n < 0 || size_t(n) > m_size - m_pos) damaged();
        return size_t(n);
    }
    std::optional<QString> optionalText()
    {
        std::uint32_t size = 0;
        std::memcpy(&size, take(sizeof size), sizeof size);
        if (size == absent) return std::nullopt;
        const char* bytes = take(size);
        return QString::fromUtf8(bytes, qsizetype(size));
    }
    QString text()
    {
        std::optional<QString> s = optionalText();
        if (!s) damaged();
        return std::move(*s);
    }
    bool flag() { return *take(1) != 0; }
    bool atEnd() const { return m_pos == m_size; }
    [[noreturn]] static void damaged() { throw std::runtime_error("damaged element store"); }

private:
    const char* take(size_t n)
    {
        if (n > m_size - m_pos) damaged();
        const char* at = m_data + m_pos;
        m_pos += n;
        return at;
    }

    const char* m_data;
    size_t m_size;
    size_t m_pos = 0;
};

void put(Writer& w, const ImportElement& e)
{
    w.text(e.packet);
    w.text(e.folder);
    w.text(e.id);
    w.text(e.type);
    w.count(e.atr.size());
    for (const AttributeRecord& a : e.atr) {
        w.text(a.name);
        w.number(a.num);
        w.number(a.type);
        w.text(a.var);
        w.text(a.measure);
        w.text(a.formula);
        w.text(a.val);
        w.text(a.desc);
        w.flag(a.oldNum.has_value());
        if (a.oldNum) w.number(*a.oldNum);
    }
    w.flag(e.model.has_value());
    if (e.model) {
        w.text(e.model->name);
        w.number(e.model->version);
        w.text(e.model->file);
        w.text(e.model->icon);
        w.text(e.model->digest);
    }
    w.count(e.prj.size());
    for (const ProjectionRecord& p : e.prj) {
        w.text(p.name);
        w.number(p.type);
        w.number(p.view);
        w.text(p.file);
        w.text(p.icon);
        w.text(p.digest);
    }
    w.text(e.repPath);
    w.count(e.spc.size());
    for (const SpecRecord& s : e.spc) {
        w.text(s.libName);
        w.number(s.style);
        w.number(s.fPart);
        w.number(s.sPart);
        w.count(s.column.size());
        for (const ColumnRecord& c : s.column) {
            w.number(c.num);
            w.text(c.val);
        }
    }
}

ImportElement get(Reader& r)
{
    ImportElement e;
    e.packet = r.text();
    e.folder = r.text();
    e.id = r.text();
    e.type = r.text();
    e.atr.resize(r.count());
    for (AttributeRecord& a : e.atr) {
        a.name = r.text();
        a.num = r.number();
        a.type = r.number();
        a.var = r.text();
        a.measure = r.text();
        a.formula = r.optionalText();
        a.val = r.optionalText();
        a.desc = r.optionalText();
        if (r.flag()) a.oldNum = r.number();
    }
    if (r.flag()) {
        ModelRecord& m = e.model.emplace();
        m.name = r.text();
        m.version = r.number();
        m.file = r.text();
        m.icon = r.text();
        m.digest = r.text();
    }
    e.prj.resize(r.count());
    for (ProjectionRecord& p : e.prj) {
        p.name = r.text();
        p.type = r.number();
        p.view = r.number();
        p.file = r.text();
        p.icon = r.text();
        p.digest = r.text();
    }
    e.repPath = r.optionalText();
    e.spc.resize(r.count());
    for (SpecRecord& s : e.spc) {
        s.libName = r.text();
        s.style = r.number();
        s.fPart = r.number();
        s.sPart = r.number();
        s.column.resize(r.count());
        for (ColumnRecord& c : s.column) {
            c.num = r.number();
            c.val = r.text();
        }
    }
    if (!r.atEnd()) Reader::damaged();
    return e;
}

} // namespace

ImportRecord ImportRecord::of(const ImportElement& element)
{
    ImportRecord record;
    record.packet = element.packet;
    record.folder = element.folder;
    record.id = element.id;
    record.type = element.type;
    record.author = element.value(authorAttribute);
    record.stamp = element.value(stampAttribute);
    if (element.model) record.modelVersion = element.model->version;
    return record;
}

QString ImportRecord::value(const QString& name) const
{
    if (name == authorAttribute) return author;
    if (name == stampAttribute) return stamp;
    return {};
}

ElementStore::ElementStore() = default;

ElementStore::~ElementStore() = default;

bool ElementStore::open(const QString& path)
{
    m_file.close();
    m_file.setFileName(path);
    m_buffer.clear();
    m_written = 0;
    m_error.clear();
    if (m_file.open(QIODevice::ReadWrite | QIODevice::Truncate)) return true;
    m_error = m_file.errorString();
    return false;
}

bool ElementStore::append(const ImportElement& element, ImportRecord& record)
{
    if (!m_error.isEmpty()) return false;
    const size_t start = m_buffer.size();
    Writer w(m_buffer);
    put(w, element);
    record.offset = m_written + qint64(start);
    record.size = qint64(m_buffer.size() - start);
    return m_buffer.size() < bufferBytes || write();
}

bool ElementStore::flush()
{
    return m_error.isEmpty() && (m_buffer.empty() || write()) && m_file.flush();
}

bool ElementStore::write()
{
    const auto size = qint64(m_buffer.size());
    const bool room = m_limit < 0 || m_written + size <= m_limit;
    if (!room || !m_file.isOpen() || m_file.write(m_buffer.data(), size) != size) {
        m_error = room ? m_file.errorString() : QStringLiteral("No space left on device");
        return false;
    }
    m_written += size;
    m_buffer.clear();
    return true;
}

ImportElement ElementStore::read(const ImportRecord& record) const
{
    if (record.offset < 0 || record.size <= 0 || record.offset + record.size > m_written)
        throw std::runtime_error("element not in the element store");
    QByteArray bytes;
    {
        std::lock_guard lock(m_mutex);
        if (!m_file.seek(record.offset)) throw std::runtime_error("element store cannot be read");
        bytes = m_file.read(record.size);
    }
    if (bytes.size() != record.size) throw std::runtime_error("element store cannot be read");
    Reader r(bytes.constData(), size_t(bytes.size()));
    return get(r);
}

} // namespace exchange
