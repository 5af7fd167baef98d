#include "archivekind.h"

#include <catalog/catalog_tree.h>

namespace exchange {

QString archiveKey(int kind)
{
    switch (kind) {
    case 0:
        return QStringLiteral("vobject");
    case 1:
        return QStringLiteral("TX");
    case 2:
        return QStringLiteral("VK");
    case 3:
        return QStringLiteral("OV");
    default:
        return {};
    }
}

QString archiveExtension(int kind)
{
    return kind == 0 ? QStringLiteral("vos") : QStringLiteral("uss");
}

QString archiveKey(es_provider_t* provider)
{
    return archiveKey(edw::libraryKind(provider));
}

QString archiveExtension(es_provider_t* provider)
{
    return archiveExtension(edw::libraryKind(provider));
}

} // namespace exchange
