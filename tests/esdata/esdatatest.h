// Helpers shared by the catalog store tests.
#ifndef TESTS_ESDATA_ESDATATEST_H
#define TESTS_ESDATA_ESDATATEST_H

#include "esdata/esdata.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <sqlite3.h>

#include <string>

inline std::u16string u16(const QString& s)
{
    return std::u16string(reinterpret_cast<const char16_t*>(s.utf16()),
                          static_cast<size_t>(s.size()));
}

inline QString qs(const char16_t* s)
{
    return s ? QString::fromUtf16(s) : QString();
}

// Opens (creating) a catalog; the caller closes it.
inline es_provider_t* openCatalog(const QString& path, const QString& dbName = "user_tx",
                                  bool create = true)
{
    return esx_OpenCatalog(u16(path).c_str(), u16(dbName).c_str(), create);
}

inline bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

inline QByteArray readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Packet, folder and an element in one call; null on any failure.
inline es_stdsize_t* addElement(es_provider_t* p, const char16_t* packet, const char16_t* folder,
                                const char16_t* id)
{
    es_packet_t* pk = provider_AddPacket(p, packet);
    if (!pk) {
        for (uint32_t i = 0; i < provider_GetPacketCount(p); ++i)
            if (std::u16string(packet_GetName(provider_GetPacket(p, i))) == packet)
                pk = provider_GetPacket(p, i);
    }
    es_folder_t* f = folder_AddChildFolder(packet_GetRootFolder(pk), folder);
    return table_AddStdSize(folder_GetTable(f), id);
}

// Runs sql on a connection of its own, as another program would; true when all of it ran.
inline bool execSql(const QString& db, const char* sql)
{
    sqlite3* h = nullptr;
    const bool ok = sqlite3_open(db.toUtf8().constData(), &h) == SQLITE_OK &&
                    sqlite3_exec(h, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(h);
    return ok;
}

// Element id of the catalog's first packet.
inline es_stdsize_t* findElement(es_provider_t* p, const char16_t* id)
{
    return packet_FindStdSize(provider_GetPacket(p, 0), id);
}

class CatalogGuard
{
public:
    explicit CatalogGuard(es_provider_t* p) : m_p(p) {}
    ~CatalogGuard() { esx_CloseCatalog(m_p); }
    es_provider_t* get() const { return m_p; }

private:
    es_provider_t* m_p;
};

#endif
