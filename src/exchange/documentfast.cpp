#include "documentfast.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace exchange {

namespace {

class PlainReader
{
public:
    PlainReader(const char* begin, const char* end) : p(begin), m_end(end) {}

    bool atEnd()
    {
        space();
        return p == m_end;
    }

    bool take(char c)
    {
        space();
        if (p < m_end && *p == c) {
            ++p;
            return true;
        }
        return false;
    }

    bool nullAhead()
    {
        space();
        if (m_end - p >= 4 && std::memcmp(p, "null", 4) == 0) {
            p += 4;
            return true;
        }
        return false;
    }

    // A member name without escapes, and its colon.
    bool name(std::string_view& out)
    {
        space();
        if (p >= m_end || *p != '"') return false;
        const char* start = ++p;
        while (p < m_end && *p != '"') {
            if (*p == '\\') return false;
            ++p;
        }
        if (p >= m_end) return false;
        out = std::string_view(start, size_t(p - start));
        ++p;
        return take(':');
    }

    bool string(QString& out)
    {
        space();
        if (p >= m_end || *p != '"') return false;
        const char* start = ++p;
        while (p < m_end && *p != '"' && *p != '\\')
            ++p;
        if (p >= m_end) return false;
        if (*p == '"') {
            out = QString::fromUtf8(start, qsizetype(p - start));
            ++p;
            return true;
        }
        std::string text(start, size_t(p - start));
        while (p < m_end) {
            const char c = *p++;
            if (c == '"') {
                out = QString::fromUtf8(text.data(), qsizetype(text.size()));
                return true;
            }
            if (c != '\\') {
                text += c;
                continue;
            }
            if (p >= m_end) return false;
            switch (*p++) {
            case '"':
                text += '"';
                break;
            case '\\':
                text += '\\';
                break;
            case '/':
                text += '/';
                break;
            case 'b':
                text += '\b';
                break;
            case 'f':
                text += '\f';
                break;
            case 'n':
                text += '\n';
                break;
            case 'r':
                text += '\r';
                break;
            case 't':
                text += '\t';
                break;
            case 'u':
                if (!codePoint(text)) return false;
                break;
            default:
                return false;
            }
        }
        return false;
    }

    bool optionalString(std::optional<QString>& out)
    {
        if (nullAhead()) {
            out.reset();
            return true;
        }
        out.emplace();
        return string(*out);
    }

    bool integer(int& out)
    {
        space();
        const char* start = p;
        const bool negative = p < m_end && *p == '-';
        if (negative) ++p;
        if (p >= m_end || *p < '0' || *p > '9') return false;
        // Leading zeros and "-0" are left to the tree.
        if (*p == '0' && (negative || (p + 1 < m_end && p[1] >= '0' && p[1] <= '9'))) return false;
        int64_t value = 0;
        while (p < m_end && *p >= '0' && *p <= '9') {
            if (p - start > 11) return false;
            value = value * 10 + (*p++ - '0');
        }
        if (p < m_end && (*p == '.' || *p == 'e' || *p == 'E')) return false;
        if (negative) value = -value;
        if (value < INT_MIN || value > INT_MAX) return false;
        out = int(value);
        return true;
    }

    bool optionalInteger(std::optional<int>& out)
    {
        if (nullAhead()) {
            out.reset();
            return true;
        }
        out.emplace();
        return integer(*out);
    }

    // An object whose members member() reads; each name at most once (a repeated name is
    // left to the tree, where the last one counts). seen collects the members' bits.
    template <class Member> bool object(unsigned& seen, Member&& member)
    {
        seen = 0;
        if (!take('{')) return false;
        if (take('}')) return true;
        for (;;) {
            std::string_view key;
            if (!name(key)) return false;
            const unsigned bit = member(key);
            if (bit == 0 || (seen & bit)) return false;
            seen |= bit;
            if (take(',')) continue;
            return take('}');
        }
    }

    template <class Item> bool array(Item&& item)
    {
        if (!take('[')) return false;
        if (take(']')) return true;
        for (;;) {
            if (!item()) return false;
            if (take(',')) continue;
            return take(']');
        }
    }

private:
    void space()
    {
        while (p < m_end && (*p == ' ' || *p == '\t' || *p == '\n' || *p == '\r'))
            ++p;
    }

    // The four hex digits after "\u", as UTF-8; surrogates and NUL are left to the tree.
    bool codePoint(std::string& text)
    {
        if (m_end - p < 4) return false;
        unsigned cp = 0;
        for (int i = 0; i < 4; ++i) {
            const char h = p[i];
            cp <<= 4;
            if (h >= '0' && h <= '9')
                cp |= unsigned(h - '0');
            else if (h >= 'a' && h <= 'f')
                cp |= unsigned(h - 'a' + 10);
            else if (h >= 'A' && h <= 'F')
                cp |= unsigned(h - 'A' + 10);
            else
                return false;
        }
        p += 4;
        if (cp == 0 || (cp >= 0xd800 && cp <= 0xdfff)) return false;
        if (cp < 0x80) {
            text += char(cp);
        } else if (cp < 0x800) {
            text += char(0xc0 | (cp >> 6));
            text += char(0x80 | (cp & 0x3f));
        } else {
            text += char(0xe0 | (cp >> 12));
            text += char(0x80 | ((cp >> 6) & 0x3f));
            text += char(0x80 | (cp & 0x3f));
        }
        return true;
    }

public:
    const char* p;

private:
    const char* m_end;
};

// A member's bit when read, 0 when its name is unknown or its value is not what it must be.
constexpr unsigned failed = 0;

bool attribute(PlainReader& r, AttributeRecord& a)
{
    unsigned seen = 0;
    const bool read = r.object(seen, [&](std::string_view key) -> unsigned {
        if (key == "name") return r.string(a.name) ? 1u : failed;
        if (key == "num") return r.integer(a.num) ? 2u : failed;
        if (key == "type") return r.integer(a.type) ? 4u : failed;
        if (key == "formula") return r.optionalString(a.formula) ? 8u : failed;
        if (key == "val") return r.optionalString(a.val) ? 16u : failed;
        if (key == "desc") return r.optionalString(a.desc) ? 32u : failed;
        if (key == "old-num") return r.optionalInteger(a.oldNum) ? 64u : failed;
        std::optional<QString> text;
        if (key == "var") {
            if (!r.optionalString(text)) return failed;
            a.var = text.value_or(QString());
            return 128u;
        }
        if (key == "measure") {
            if (!r.optionalString(text)) return failed;
            a.measure = text.value_or(QString());
            return 256u;
        }
        return failed;
    });
    return read && (seen & 7u) == 7u;
}

bool model(PlainReader& r, ModelRecord& m)
{
    unsigned seen = 0;
    const bool read = r.object(seen, [&](std::string_view key) -> unsigned {
        if (key == "name") return r.string(m.name) ? 1u : failed;
        if (key == "file") return r.string(m.file) ? 2u : failed;
        if (key == "icon") return r.string(m.icon) ? 4u : failed;
        if (key == "digest") return r.string(m.digest) ? 8u : failed;
        if (key == "version") {
            // The tree also reads reals and booleans here: such an element is left to it.
            std::optional<int> version;
            if (!r.optionalInteger(version)) return failed;
            m.version = version.value_or(0);
            return 16u;
        }
        return failed;
    });
    return read && (seen & 15u) == 15u;
}

bool projection(PlainReader& r, ProjectionRecord& p)
{
    unsigned seen = 0;
    const bool read = r.object(seen, [&](std::string_view key) -> unsigned {
        if (key == "name") return r.string(p.name) ? 1u : failed;
        if (key == "type") return r.integer(p.type) ? 2u : failed;
        if (key == "view") return r.integer(p.view) ? 4u : failed;
        if (key == "file") return r.string(p.file) ? 8u : failed;
        if (key == "icon") return r.string(p.icon) ? 16u : failed;
        if (key == "digest") return r.string(p.digest) ? 32u : failed;
        return failed;
    });
    return read && seen == 63u;
}

bool column(PlainReader& r, ColumnRecord& c)
{
    unsigned seen = 0;
    const bool read = r.object(seen, [&](std::string_view key) -> unsigned {
        if (key == "num") return r.integer(c.num) ? 1u : failed;
        if (key == "val") return r.string(c.val) ? 2u : failed;
        return failed;
    });
    return read && seen == 3u;
}

bool spec(PlainReader& r, SpecRecord& s)
{
    unsigned seen = 0;
    const bool read = r.object(seen, [&](std::string_view key) -> unsigned {
        if (key == "libName") return r.string(s.libName) ? 1u : failed;
        if (key == "style") return r.integer(s.style) ? 2u : failed;
        if (key == "fPart") return r.integer(s.fPart) ? 4u : failed;
        if (key == "sPart") return r.integer(s.sPart) ? 8u : failed;
        if (key == "column")
            return r.array([&] { return column(r, s.column.emplace_back()); }) ? 16u : failed;
        return failed;
    });
    return read && seen == 31u;
}

} // namespace

bool readPlainElement(const char* begin, const char* end, ImportElement& out)
{
    PlainReader r(begin, end);
    ImportElement record;
    unsigned seen = 0;
    const bool read = r.object(seen, [&](std::string_view key) -> unsigned {
        if (key == "packet") return r.string(record.packet) ? 1u : failed;
        if (key == "folder") return r.string(record.folder) ? 2u : failed;
        if (key == "id") return r.string(record.id) ? 4u : failed;
        if (key == "atr")
            return r.array([&] { return attribute(r, record.atr.emplace_back()); }) ? 8u : failed;
        if (key == "prj")
            return r.array([&] { return projection(r, record.prj.emplace_back()); }) ? 16u : failed;
        if (key == "type") {
            std::optional<QString> type;
            if (!r.optionalString(type)) return failed;
            record.type = type.value_or(QString());
            return 32u;
        }
        if (key == "model") {
            if (r.nullAhead()) return 64u;
            return model(r, record.model.emplace()) ? 64u : failed;
        }
        if (key == "repPath") return r.optionalString(record.repPath) ? 128u : failed;
        if (key == "spc") {
            if (r.nullAhead()) return 256u;
            return r.array([&] { return spec(r, record.spc.emplace_back()); }) ? 256u : failed;
        }
        return failed;
    });
    if (!read || (seen & 31u) != 31u || !r.atEnd()) return false;
    out = std::move(record);
    return true;
}

} // namespace exchange
