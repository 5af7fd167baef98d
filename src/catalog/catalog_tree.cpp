#include "catalog_tree.h"

#include "esconvert.h"

#include <QStringList>

#include <array>
#include <stdexcept>

namespace edw {

std::map<QString, es_packet_t*> packets(es_provider_t* provider)
{
    std::map<QString, es_packet_t*> result;
    const uint32_t count = provider_GetPacketCount(provider);
    for (uint32_t i = 0; i < count; ++i) {
        if (es_packet_t* packet = provider_GetPacket(provider, i))
            result.emplace(fromEs(packet_GetName(packet)), packet);
    }
    return result;
}

std::map<QString, es_folder_t*> childFolders(es_folder_t* folder)
{
    std::map<QString, es_folder_t*> result;
    const uint32_t count = folder_GetChildFolderCount(folder);
    for (uint32_t i = 0; i < count; ++i) {
        if (es_folder_t* child = folder_GetChildFolder(folder, i))
            result.emplace(fromEs(folder_GetName(child)), child);
    }
    return result;
}

QString folderPath(es_folder_t* folder)
{
    // The root folder is the one without a parent; its own name is not part of the path.
    QStringList names;
    for (es_folder_t* f = folder; f; f = folder_GetParentFolder(f)) {
        if (!folder_GetParentFolder(f)) break;
        names.prepend(fromEs(folder_GetName(f)));
    }
    return names.join(QLatin1Char('\\'));
}

QString categoryPath(es_folder_t* folder)
{
    if (!folder) return {};
    const QString packetName = fromEs(packet_GetName(folder_GetPacket(folder)));
    const QString below = folderPath(folder);
    return below.isEmpty() ? packetName : packetName + QLatin1Char('\\') + below;
}

es_folder_t* findOrAddChildFolder(es_folder_t* folder, const QString& name)
{
    if (!folder || name.isEmpty()) return nullptr;
    const uint32_t count = folder_GetChildFolderCount(folder);
    for (uint32_t i = 0; i < count; ++i) {
        es_folder_t* child = folder_GetChildFolder(folder, i);
        if (child && fromEs(folder_GetName(child)) == name) return child;
    }
    return folder_AddChildFolder(folder, toEs(name).c_str());
}

es_folder_t* ensureFolderPath(es_packet_t* packet, const QString& path)
{
    es_folder_t* current = packet_GetRootFolder(packet);
    // "\\" alone separates folders: a folder may be named "Ду 1/2".
    for (const QString& part : path.split(QLatin1Char('\\'), Qt::SkipEmptyParts)) {
        if (!current) return nullptr;
        current = findOrAddChildFolder(current, part);
    }
    return current;
}

es_packet_t* findOrAddPacket(es_provider_t* provider, const QString& name)
{
    if (!provider || name.isEmpty()) return nullptr;
    const uint32_t count = provider_GetPacketCount(provider);
    for (uint32_t i = 0; i < count; ++i) {
        es_packet_t* packet = provider_GetPacket(provider, i);
        if (packet && fromEs(packet_GetName(packet)) == name) return packet;
    }
    return provider_AddPacket(provider, toEs(name).c_str());
}

es_folder_t* folderOf(es_stdsize_t* element)
{
    return table_GetFolder(stdsize_GetTable(element));
}

es_packet_t* packetOf(es_stdsize_t* element)
{
    return folder_GetPacket(folderOf(element));
}

es_provider_t* providerOf(es_stdsize_t* element)
{
    return packet_GetProvider(packetOf(element));
}

namespace {

struct LibraryFamily
{
    const char* marker;
    const char* identifier;
};

constexpr std::array<LibraryFamily, 4> families{{
    {"user_vo", "orvik.aec.vobject"},
    {"user_tx", "orvik.aec.engsystx"},
    {"user_vk", "orvik.aec.engsysvk"},
    {"user_ov", "orvik.aec.engsysov"},
}};

} // namespace

int libraryKind(const QString& databaseName)
{
    for (size_t i = 0; i < families.size(); ++i) {
        if (databaseName.contains(QLatin1String(families[i].marker), Qt::CaseSensitive))
            return static_cast<int>(i);
    }
    throw std::runtime_error("Unknown user database");
}

int libraryKind(es_provider_t* provider)
{
    return libraryKind(fromEs(provider_GetDatabaseName(provider)));
}

QString libraryIdentifier(int kind)
{
    if (kind < 0 || kind >= static_cast<int>(families.size())) return {};
    return QLatin1String(families[static_cast<size_t>(kind)].identifier);
}

} // namespace edw
