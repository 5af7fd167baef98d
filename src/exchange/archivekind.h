#pragma once

#include <esdata/esdata.h>

#include <QString>

namespace exchange {

// The archive's key K for a database kind 0..3: "vobject", "TX", "VK", "OV". K names the
// document entry (K + ".json"), the top folder of every file entry and the document's
// lib-name. Empty for another code.
QString archiveKey(int kind);
// The archive's file extension for a database kind: "vos" for kind 0, "uss" for the others.
QString archiveExtension(int kind);

// Key and extension of a catalog. Both throw std::runtime_error("Unknown user database") when
// the catalog's database name is of no known kind.
QString archiveKey(es_provider_t* provider);
QString archiveExtension(es_provider_t* provider);

} // namespace exchange
