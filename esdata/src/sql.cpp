#include "sql.h"

#include <charconv>
#include <string>

#include "text.h"

namespace esdata {

void throwSql(sqlite3* db, const char* what)
{
    throw SqlError(std::string(what) + ": " + (db ? sqlite3_errmsg(db) : "no database"));
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
        throw SqlError(text);
    }
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
