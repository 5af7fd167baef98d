// Thin RAII layer over SQLite statements; SQLite types stay inside the store.
#ifndef ESDATA_SQL_H
#define ESDATA_SQL_H

#include <sqlite3.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace esdata {

// Why a call failed, as esx_LastErrorCode tells it (the ESX_ERROR_ codes).
enum class Fault : int
{
    Failed = 1,
    Locked = 2,
    Damaged = 3,
    Write = 4
};

// A failure the caller can tell apart: a lock held by another program, a damaged catalog, a
// write that did not reach the disk.
class StoreError : public std::runtime_error
{
public:
    StoreError(Fault fault, const std::string& text) : std::runtime_error(text), fault(fault) {}
    Fault fault;
};

using SqlError = StoreError;

// The text every lock failure starts with; callers may recognise it.
inline constexpr const char* kLockedText =
    "Каталог занят другой программой (заблокирован для записи)";

[[noreturn]] void throwSql(sqlite3* db, const char* what);
// Counts one write (a statement that changes the catalog, or a stored file) and fails it when
// it is the one a test asked to fail (esx_TestFailWrite).
void writePoint(const char* what);
void failWriteAt(uint32_t n);
void utf8To16(const unsigned char* p, int n, std::u16string& out);
void utf16To8(std::u16string_view in, std::string& out);

// One execution of a cached prepared statement; resets it when done.
class Query
{
public:
    Query(sqlite3* db, sqlite3_stmt* stmt) : m_db(db), m_stmt(stmt) {}
    ~Query()
    {
        sqlite3_reset(m_stmt);
        sqlite3_clear_bindings(m_stmt);
    }
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    Query& bind(int i, int64_t v)
    {
        check(sqlite3_bind_int64(m_stmt, i, v));
        return *this;
    }
    Query& bindInt(int i, int32_t v)
    {
        check(sqlite3_bind_int(m_stmt, i, v));
        return *this;
    }
    Query& bindReal(int i, double v)
    {
        check(sqlite3_bind_double(m_stmt, i, v));
        return *this;
    }
    // Encoded here into a buffer that lives as long as the query: SQLite would otherwise
    // translate and copy every text with an allocation of its own.
    Query& bind(int i, std::u16string_view v)
    {
        if (i < 1 || i > kTextSlots) {
            check(sqlite3_bind_text16(m_stmt, i, v.data() ? v.data() : u"",
                                      static_cast<int>(v.size() * 2), SQLITE_TRANSIENT));
            return *this;
        }
        std::string& text = m_texts[i - 1];
        utf16To8(v, text);
        check(sqlite3_bind_text(m_stmt, i, text.c_str(), static_cast<int>(text.size()),
                                SQLITE_STATIC));
        return *this;
    }
    Query& bindBlob(int i, const void* data, size_t size)
    {
        if (size == 0)
            check(sqlite3_bind_null(m_stmt, i));
        else
            check(sqlite3_bind_blob64(m_stmt, i, data, size, SQLITE_TRANSIENT));
        return *this;
    }
    Query& bindNull(int i)
    {
        check(sqlite3_bind_null(m_stmt, i));
        return *this;
    }

    // True while a row is available.
    bool next();
    void run()
    {
        if (!sqlite3_stmt_readonly(m_stmt)) writePoint("statement");
        while (next()) {
        }
    }

    int64_t i64(int c) const { return sqlite3_column_int64(m_stmt, c); }
    int32_t i32(int c) const { return sqlite3_column_int(m_stmt, c); }
    double real(int c) const { return sqlite3_column_double(m_stmt, c); }
    int type(int c) const { return sqlite3_column_type(m_stmt, c); }
    bool isNull(int c) const { return type(c) == SQLITE_NULL; }
    std::u16string text(int c) const
    {
        std::u16string out;
        text(c, out);
        return out;
    }
    // The column's text as stored (UTF-8), valid until the next step.
    std::string_view utf8(int c) const
    {
        auto p = reinterpret_cast<const char*>(sqlite3_column_text(m_stmt, c));
        return p ? std::string_view(p, size_t(sqlite3_column_bytes(m_stmt, c)))
                 : std::string_view();
    }
    // Decoded here rather than by SQLite: it saves SQLite a conversion buffer per column.
    void text(int c, std::u16string& out) const
    {
        auto p = sqlite3_column_text(m_stmt, c);
        utf8To16(p, p ? sqlite3_column_bytes(m_stmt, c) : 0, out);
    }
    void blob(int c, std::vector<uint8_t>& out) const
    {
        auto p = static_cast<const uint8_t*>(sqlite3_column_blob(m_stmt, c));
        int n = sqlite3_column_bytes(m_stmt, c);
        if (!p || n <= 0)
            out.clear();
        else
            out.assign(p, p + n);
    }

private:
    void check(int rc)
    {
        if (rc != SQLITE_OK) throwSql(m_db, "bind");
    }
    static constexpr int kTextSlots = 10;
    sqlite3* m_db;
    sqlite3_stmt* m_stmt;
    // Declared last: destroyed after the destructor has cleared the bindings that point here.
    std::string m_texts[kTextSlots];
};

void exec(sqlite3* db, const char* sql);

} // namespace esdata

#endif
