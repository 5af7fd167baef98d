#include "host_items.h"

#include <QFile>

namespace sandbox {
namespace {

struct ItemsState
{
    QList<CatalogItemInfo> items;
    QStringList log;
    bool collection = true;
};

ItemsState& state()
{
    static ItemsState s;
    return s;
}

CatalogItemInfo* find(const QString& name)
{
    for (CatalogItemInfo& item : state().items)
        if (item.name == name) return &item;
    return nullptr;
}

} // namespace

void add_catalog_item(const QString& name, const QString& path, const QString& secondText)
{
    if (CatalogItemInfo* item = find(name)) {
        item->path = path;
        item->secondText = secondText;
        return;
    }
    state().items.append({name, path, secondText});
}

QList<CatalogItemInfo> catalog_items()
{
    return state().items;
}

void clear_catalog_items()
{
    state() = ItemsState();
}

void set_item_collection_available(bool available)
{
    state().collection = available;
}

bool item_collection_available()
{
    return state().collection;
}

QStringList item_log()
{
    return state().log;
}

void clear_item_log()
{
    state().log.clear();
}

bool item_exists(const QString& name)
{
    return find(name) != nullptr;
}

QString item_path(const QString& name)
{
    const CatalogItemInfo* item = find(name);
    return item ? item->path : QString();
}

QString item_second_text(const QString& name)
{
    const CatalogItemInfo* item = find(name);
    return item ? item->secondText : QString();
}

void set_item_state(const QString& name, int value)
{
    state().log << QStringLiteral("state %1 = %2").arg(name).arg(value);
}

bool reload_item(const QString& name, const QString& key, const QString& secondText)
{
    CatalogItemInfo* item = find(name);
    if (!item) return false;
    // The host's keys may carry either separator.
    QFile file(QString(key).replace(u'\\', u'/'));
    if (!file.open(QIODevice::ReadOnly)) {
        state().log << QStringLiteral("reload %1 failed: %2").arg(name, file.errorString());
        return false;
    }
    const QByteArray content = file.readAll();
    item->loadedSize = content.size();
    item->secondText = secondText;
    ++item->reloads;
    state().log << QStringLiteral("reload %1: %2, %3 bytes, %4")
                       .arg(name, key)
                       .arg(content.size())
                       .arg(secondText);
    return true;
}

} // namespace sandbox
