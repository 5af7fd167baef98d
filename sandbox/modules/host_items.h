#pragma once

// The host's catalog items as its new object API serves them: each has a name, a file and a
// second text (its designation). Reloading an item re-reads its file; what the host did is
// kept in a log that the sandbox application prints and the tests read.

#include "host_state.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace sandbox {

struct CatalogItemInfo
{
    QString name;
    QString path;
    QString secondText;
    int reloads = 0;        // how many times the host reloaded it
    qint64 loadedSize = -1; // bytes read by the last reload; -1 before any
};

// Adds or replaces the item called name.
SANDBOX_HOST_API void add_catalog_item(const QString& name, const QString& path,
                                       const QString& secondText);
SANDBOX_HOST_API QList<CatalogItemInfo> catalog_items();
SANDBOX_HOST_API void clear_catalog_items();
// Without a collection the provider answers with none (a host with no catalog loaded).
SANDBOX_HOST_API void set_item_collection_available(bool available);
// Lines of what the host did: "state <name> = <n>", "reload <name>: <file>, <bytes> bytes,
// <second text>", "reload <name> failed: <reason>".
SANDBOX_HOST_API QStringList item_log();
SANDBOX_HOST_API void clear_item_log();

// Host side of the items for the module objects.
bool item_exists(const QString& name);
QString item_path(const QString& name);
QString item_second_text(const QString& name);
void set_item_state(const QString& name, int state);
// Re-reads the file at key for the item; false (with the reason logged) when it cannot.
bool reload_item(const QString& name, const QString& key, const QString& secondText);
bool item_collection_available();

} // namespace sandbox
