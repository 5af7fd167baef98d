#pragma once

#include <esdata/esdata.h>

#include <QString>

#include <map>

namespace edw {

// The catalog's tree: provider → packets → folders (under each packet's root folder) →
// one table per folder → elements. Every function here is null-safe: a null handle gives an
// empty result.

// Packets of a provider by name.
std::map<QString, es_packet_t*> packets(es_provider_t* provider);
// Child folders of a folder by name.
std::map<QString, es_folder_t*> childFolders(es_folder_t* folder);

// The packet's name followed by the folder names down to folder, joined with "\" — the
// category path from which createElement would reach this folder.
QString categoryPath(es_folder_t* folder);
// The folder names from just below the packet's root folder down to folder, joined with "\".
// Empty for a root folder.
QString folderPath(es_folder_t* folder);

// The folder at path under the packet's root folder, creating what is missing. Parts are
// separated by "\" or "/"; empty parts are dropped, so an empty path is the root folder.
es_folder_t* ensureFolderPath(es_packet_t* packet, const QString& path);
// The child named name of folder (exact match), added when missing.
es_folder_t* findOrAddChildFolder(es_folder_t* folder, const QString& name);
// The packet named name (exact match), added when missing. Null for an empty name.
es_packet_t* findOrAddPacket(es_provider_t* provider, const QString& name);

// The handles above an element.
es_folder_t* folderOf(es_stdsize_t* element);
es_packet_t* packetOf(es_stdsize_t* element);
es_provider_t* providerOf(es_stdsize_t* element);

// Database kind 0..3 of a user catalog from its database name ("user_vo", "user_tx",
// "user_vk", "user_ov", tested in that order as case-sensitive substrings). Throws
// std::runtime_error("Unknown user database") for any other name.
int libraryKind(es_provider_t* provider);
int libraryKind(const QString& databaseName);
// The library identifier with which the catalog of a database kind is opened; empty for an
// unknown kind.
QString libraryIdentifier(int kind);

} // namespace edw
