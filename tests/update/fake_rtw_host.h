#pragma once

// A host with catalog items kept in memory, recording what the register asked of it. A host
// failure is raised the way the real host's wrappers raise it: std::system_error.

#include "update/rtw_register.h"

#include <QMap>
#include <QStringList>

#include <system_error>

struct FakeRtwHost : edw::RtwHost
{
    struct Item
    {
        QString path;
        QString secondText;
    };
    QMap<QString, Item> items_;
    QString failPathOf; // the item whose path cannot be read
    QStringList calls;  // "prepare <name>", "reload <key>|<second text>"

    class FakeItem final : public edw::RtwItem
    {
    public:
        FakeItem(FakeRtwHost& host, QString name) : m_host(host), m_name(std::move(name)) {}
        QString filePath() override
        {
            if (m_name == m_host.failPathOf)
                throw std::system_error(int(0x80004005u), std::system_category());
            return m_host.items_[m_name].path;
        }
        QString secondText() override { return m_host.items_[m_name].secondText; }
        void prepareUpdate() override { m_host.calls << QStringLiteral("prepare ") + m_name; }
        void reload(const QString& key, const QString& second) override
        {
            m_host.calls << QStringLiteral("reload %1|%2").arg(key, second);
        }

    private:
        FakeRtwHost& m_host;
        QString m_name;
    };

    class FakeItems final : public edw::RtwItems
    {
    public:
        explicit FakeItems(FakeRtwHost& host) : m_host(host) {}
        std::unique_ptr<edw::RtwItem> find(const QString& name) override
        {
            if (!m_host.items_.contains(name)) return nullptr;
            return std::make_unique<FakeItem>(m_host, name);
        }

    private:
        FakeRtwHost& m_host;
    };

    std::unique_ptr<edw::RtwItems> items() override { return std::make_unique<FakeItems>(*this); }
};
