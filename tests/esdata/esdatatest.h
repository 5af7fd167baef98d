// Helpers shared by the catalog store tests.
#ifndef TESTS_ESDATA_ESDATATEST_H
#define TESTS_ESDATA_ESDATATEST_H

#include "esdata/esdata.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>

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

// The packet of that name, added when there is none yet.
inline es_packet_t* packetNamed(es_provider_t* p, const char16_t* name)
{
    for (uint32_t i = 0; i < provider_GetPacketCount(p); ++i)
        if (std::u16string(packet_GetName(provider_GetPacket(p, i))) == name)
            return provider_GetPacket(p, i);
    return provider_AddPacket(p, name);
}

// Packet, folder and an element in one call; null on any failure.
inline es_stdsize_t* addElement(es_provider_t* p, const char16_t* packet, const char16_t* folder,
                                const char16_t* id)
{
    es_folder_t* f = folder_AddChildFolder(packet_GetRootFolder(packetNamed(p, packet)), folder);
    return table_AddStdSize(folder_GetTable(f), id);
}

// Runs sql on a connection of its own, as another program would: the first column of every row
// it gave, or "failed: <message>" alone when a statement failed.
inline QStringList runSql(const QString& db, const char* sql)
{
    QStringList rows;
    sqlite3* h = nullptr;
    char* error = nullptr;
    auto row = [](void* out, int, char** values, char**) {
        static_cast<QStringList*>(out)->append(QString::fromUtf8(values[0] ? values[0] : ""));
        return 0;
    };
    if (sqlite3_open(db.toUtf8().constData(), &h) != SQLITE_OK ||
        sqlite3_exec(h, sql, row, &rows, &error) != SQLITE_OK)
        rows = QStringList{"failed: " + QString::fromUtf8(error ? error : sqlite3_errmsg(h))};
    sqlite3_free(error);
    sqlite3_close(h);
    return rows;
}

inline bool execSql(const QString& db, const char* sql)
{
    return !runSql(db, sql).value(0).startsWith("failed: ");
}

// Element id of the catalog's first packet.
inline es_stdsize_t* findElement(es_provider_t* p, const char16_t* id)
{
    return packet_FindStdSize(provider_GetPacket(p, 0), id);
}

// One whole element in its folder "folder <id>": attributes A0.. valued base plus their index, a
// model holding "model <base>", one projection per view holding "view <base + k>" and 512 bytes
// of representation; null as soon as a write fails.
inline es_stdsize_t* writeElement(es_provider_t* p, const QString& dir, const char16_t* packet,
                                  const QString& id, int attributes, int base, int views)
{
    es_packet_t* pk = packetNamed(p, packet);
    if (!pk) return nullptr;
    // Stops at the first failure, so that the error told is that of the failed write.
    const std::u16string ident = u16(id);
    es_folder_t* f = folder_AddChildFolder(packet_GetRootFolder(pk), (u"folder " + ident).c_str());
    es_stdsize_t* e = f ? table_AddStdSize(folder_GetTable(f), ident.c_str()) : nullptr;
    if (!e) return nullptr;
    for (int a = 0; a < attributes; ++a) {
        es_attribute_t* at = table_AddAttribute(
            stdsize_GetTable(e), u16("A" + QString::number(a)).c_str(), u"", ES_ATTR_INT);
        if (!at || !stdsize_SetValueI(e, at, base + a)) return nullptr;
    }
    const QString model = dir + "/model.m3d";
    writeFile(model, "model " + QByteArray::number(base));
    if (!model_SetModelEx(stdsize_GetModel(e), u16(model).c_str(), nullptr, u"m", base))
        return nullptr;
    for (int k = 0; k < views; ++k) {
        const QString frw = dir + "/v" + QString::number(k) + ".frw";
        writeFile(frw, "view " + QByteArray::number(base + k));
        if (!projections_AddProjectionEx(stdsize_GetProjections(e), u"v", u16(frw).c_str(),
                                         nullptr, 1, u"", 0))
            return nullptr;
    }
    const QByteArray repr(512, char('a' + base % 26));
    return stdsize_SetRepresentationData(e, repr.constData(), size_t(repr.size())) ? e : nullptr;
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
