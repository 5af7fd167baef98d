#include "sql.h"

#include <atomic>
#include <charconv>
#include <string>

#include "text.h"

namespace esdata {

void throwSql(sqlite3* db, const char* what)
{
    const std::string text = std::string(what) + ": " + (db ? sqlite3_errmsg(db) : "no database");
    switch (db ? sqlite3_extended_errcode(db) & 0xff : SQLITE_ERROR) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        throw StoreError(Fault::Locked, std::string(kLockedText) + " (" + text + ")");
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        throw StoreError(Fault::Damaged, "Каталог повреждён (" + text + ")");
    case SQLITE_FULL:
    case SQLITE_IOERR:
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
        throw StoreError(Fault::Write, text);
    default:
        throw StoreError(Fault::Failed, text);
    }
}

namespace {
std::atomic<uint32_t> g_failAt{0};
std::atomic<uint32_t> g_writes{0};
} // namespace

void failWriteAt(uint32_t n)
{
    g_writes = 0;
    g_failAt = n;
}

void writePoint(const char* what)
{
    const uint32_t at = g_failAt.load(std::memory_order_relaxed);
    if (at == 0) return;
    if (++g_writes == at) {
        g_failAt = 0;
        throw StoreError(Fault::Write, std::string("injected write failure: ") + what);
    }
}

bool Query::next()
{
    int rc = sqlite3_step(m_stmt);
    if (rc == SQLITE_ROW) return true;
    if (rc == SQLITE_DONE) return false;
    throwSql(m_db, "step");
}

void exec(sqlite3* db, const char* sql)
{
    char* msg = nullptr;
    if (sqlite3_exec(db, sql, nullptr, nullptr, &msg) != SQLITE_OK) {
        std::string text = msg ? msg : "error";
        sqlite3_free(msg);
        const int code = sqlite3_extended_errcode(db) & 0xff;
        if (code == SQLITE_BUSY || code == SQLITE_LOCKED)
            throw StoreError(Fault::Locked, std::string(kLockedText) + " (" + text + ")");
        throw StoreError(code == SQLITE_CORRUPT || code == SQLITE_NOTADB ? Fault::Damaged
                         : code == SQLITE_FULL || code == SQLITE_IOERR   ? Fault::Write
                                                                         : Fault::Failed,
                         text);
    }
}

void utf8To16(const unsigned char* p, int n, std::u16string& out)
{
    out.resize(static_cast<size_t>(n > 0 ? n : 0));
    char16_t* d = out.data();
    const unsigned char* e = p + (n > 0 ? n : 0);
    while (p < e) {
        unsigned c = *p;
        if (c < 0x80) {
            *d++ = char16_t(c);
            ++p;
            continue;
        }
        int extra = c >= 0xf0 ? 3 : c >= 0xe0 ? 2 : c >= 0xc0 ? 1 : -1;
        if (extra < 0 || e - p <= extra) {
            *d++ = 0xfffd;
            ++p;
            continue;
        }
        unsigned cp = c & (0x3f >> extra);
        bool ok = true;
        for (int k = 1; k <= extra; ++k) {
            if ((p[k] & 0xc0) != 0x80) {
                ok = false;
                break;
            }
            cp = (cp << 6) | (p[k] & 0x3f);
        }
        if (!ok) {
            *d++ = 0xfffd;
            ++p;
            continue;
        }
        p += extra + 1;
        if (cp >= 0x10000) {
            cp -= 0x10000;
            *d++ = char16_t(0xd800 + (cp >> 10));
            *d++ = char16_t(0xdc00 + (cp & 0x3ff));
        } else {
            *d++ = char16_t(cp);
        }
    }
    out.resize(static_cast<size_t>(d - out.data()));
}

void utf16To8(std::u16string_view in, std::string& out)
{
    out.resize(in.size() * 3);
    char* d = out.data();
    for (size_t i = 0; i < in.size(); ++i) {
        unsigned c = in[i];
        if (c < 0x80) {
            *d++ = char(c);
            continue;
        }
        if (c < 0x800) {
            *d++ = char(0xc0 | (c >> 6));
            *d++ = char(0x80 | (c & 0x3f));
            continue;
        }
        if (c >= 0xd800 && c < 0xdc00 && i + 1 < in.size() && in[i + 1] >= 0xdc00 &&
            in[i + 1] < 0xe000) {
            const unsigned cp = 0x10000 + ((c - 0xd800) << 10) + (in[i + 1] - 0xdc00);
            ++i;
            *d++ = char(0xf0 | (cp >> 18));
            *d++ = char(0x80 | ((cp >> 12) & 0x3f));
            *d++ = char(0x80 | ((cp >> 6) & 0x3f));
            *d++ = char(0x80 | (cp & 0x3f));
            continue;
        }
        // A lone surrogate cannot be encoded: it is stored as the replacement character.
        if (c >= 0xd800 && c < 0xe000) c = 0xfffd;
        *d++ = char(0xe0 | (c >> 12));
        *d++ = char(0x80 | ((c >> 6) & 0x3f));
        *d++ = char(0x80 | (c & 0x3f));
    }
    out.resize(size_t(d - out.data()));
}

static std::u16string widen(const char* b, const char* e)
{
    return std::u16string(b, e);
}

std::u16string numberText(int64_t v)
{
    char buf[32];
    auto r = std::to_chars(buf, buf + sizeof buf, v);
    return widen(buf, r.ptr);
}

std::u16string numberText(double v)
{
    char buf[64];
    auto r = std::to_chars(buf, buf + sizeof buf, v);
    return widen(buf, r.ptr);
}

} // namespace esdata
